// The receive and send dialogs and the Data(TCP) tab, driven by their widgets against the
// emulator's data port on loopback, with the transfer worker on its own thread.
#include "tcpfixture.h"

#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QTimer>

class TestTcpDialogs : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    // Receive dialog
    void receiveShowsHexAndWritesFile();
    void splitCharacterShownWholeAndTailShownAtEnd();
    void beginPressedTwiceIsRefused();
    void connectFailureIsAnnounced();
    // Send dialog
    void sendReachesDeviceAndFillsBar();
    void stopMidSendReportsLoss();
    void sendRefreshIsThrottled();
    // Tab
    void tabShowsTarget();
    void tabAppliesFormatsAndFlags();
    void tabReportsUnreadableSendFile();
    void tabChoosesFileThroughDialog();

private:
    template <typename T = QWidget> T *child(QWidget *parent, const char *name)
    {
        T *widget = parent->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    [[nodiscard]] bool enabled(QWidget *parent, const char *name)
    {
        return child(parent, name)->isEnabled();
    }
    [[nodiscard]] QString text(QWidget *parent, const char *name)
    {
        return child(parent, name)->property("text").toString();
    }
    // Size, time and rate as a dialog shows them, each with its unit.
    [[nodiscard]] QString figures(QWidget *dialog)
    {
        return QStringLiteral("%1 %2, %3 %4, %5 %6")
            .arg(text(dialog, "SizeTextarea"), text(dialog, "TCPSizeUnitLabel"),
                 text(dialog, "TimeTextarea"), text(dialog, "TCPTimeUnitLabel"),
                 text(dialog, "RateTextarea"), text(dialog, "RateUnitLabel"));
    }
    void click(QWidget *parent, const char *name);
    template <typename Dialog> Dialog *open(const char *button, Dialog *dialog);
    TCPRecvInfoDlg *openRecvDialog() { return open("TCPRecvDlgOpenButton", m_tab->recvDialog()); }
    TCPSendInfoDlg *openSendDialog() { return open("TCPSendDlgOpenButton", m_tab->sendDialog()); }

    TcpFixture m_rig;
    TCPTab *m_tab = nullptr;
};

void TestTcpDialogs::init()
{
    m_rig.start();
    m_tab = new TCPTab;
    m_tab->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_tab));
}

void TestTcpDialogs::cleanup()
{
    delete m_tab;
    m_tab = nullptr;
    m_rig.stop();
}

void TestTcpDialogs::click(QWidget *parent, const char *name)
{
    auto *button = child<QAbstractButton>(parent, name);
    QVERIFY2(button->isEnabled(), name);
    // A check box takes clicks on its box and label only, not on the rest of its cell.
    const QPoint where = qobject_cast<QCheckBox *>(button) ? QPoint(6, button->height() / 2)
                                                           : button->rect().center();
    QTest::mouseClick(button, Qt::LeftButton, {}, where);
}

// The tab's button opens its dialog without blocking.
template <typename Dialog> Dialog *TestTcpDialogs::open(const char *button, Dialog *dialog)
{
    QTest::mouseClick(child(m_tab, button), Qt::LeftButton);
    if (!dialog->isVisible() || dialog->isModal())
        qFatal("%s must open its dialog without blocking", button);
    return dialog;
}

// ---- Receive dialog ----

void TestTcpDialogs::receiveShowsHexAndWritesFile()
{
    constexpr qint64 kBytes = 100000; // 6250 display lines: more than the area keeps
    m_rig.port->setMode(SimDataPort::Mode::Source);
    m_rig.port->setSourceBytes(kBytes);
    m_rig.port->setKeepOpen(true);
    const QString path = m_rig.dir.filePath(QStringLiteral("received.bin"));
    child<QLineEdit>(m_tab, "TCPRecvPathTextarea")->setText(path);
    QCOMPARE(m_rig.model->recvOption()->fileName(), path);

    TCPRecvInfoDlg *dialog = openRecvDialog();
    QVERIFY(child<QCheckBox>(dialog, "DataShowCheckbox")->isChecked());
    QVERIFY(!enabled(dialog, "FormatTextarea"));
    click(dialog, "ShowHexCheckbox");
    QCOMPARE(m_rig.model->recvOption()->displayMode(), TCPOutputOption::kDisplayHex);
    QVERIFY(enabled(dialog, "FormatTextarea"));

    QSignalSpy connected(m_tab, &TCPTab::connectSuccessed);
    click(dialog, "RecvButton");
    QTRY_VERIFY(enabled(dialog, "StopButton"));
    QVERIFY(!enabled(dialog, "RecvButton"));
    QVERIFY(!enabled(m_tab, "TCPRecvOptionGroupBox"));
    QVERIFY(enabled(m_tab, "TCPSendOptionGroupBox"));
    QVERIFY(!enabled(dialog, "FormatTextarea"));
    QCOMPARE(connected.count(), 1);

    QTRY_VERIFY_WITH_TIMEOUT(m_rig.port->totals().complete, kTransferTimeoutMs);
    auto *area = child<QPlainTextEdit>(dialog, "DataTextarea");
    const QByteArray sent = SimDataPort::pattern(0, kBytes);
    const QString expected =
        QString::fromLatin1(renderAll(TCPOutputOption::defaultFormat(), sent, "\n"));
    QTRY_VERIFY_WITH_TIMEOUT(area->toPlainText().endsWith(expected.right(100)), kTransferTimeoutMs);
    click(dialog, "StopButton");
    QTRY_VERIFY(enabled(dialog, "RecvButton"));
    QVERIFY(!enabled(dialog, "StopButton"));
    QVERIFY(enabled(m_tab, "TCPRecvOptionGroupBox"));
    QCOMPARE(m_rig.reports->results, (QStringList{QStringLiteral("Receiving began"),
                                                  QStringLiteral("Receiving finished")}));
    QVERIFY2(figures(dialog).startsWith("100 KBytes, "), qPrintable(figures(dialog)));
    QVERIFY(readFile(path) == sent);

    // The area holds the newest lines only; what it holds is exactly the tail of the stream.
    QCOMPARE(area->blockCount(), TCPRecvInfoDlg::kMaximumLineCount);
    const QString shown = area->toPlainText();
    QVERIFY(shown.size() > 4000 * 48);
    QVERIFY2(expected.endsWith(shown), qPrintable(shown.right(200)));
}

// A character whose bytes arrive in two passes is shown once, whole; an incomplete one left at
// the end of the run is shown as it is rather than kept back.
void TestTcpDialogs::splitCharacterShownWholeAndTailShownAtEnd()
{
    m_rig.port->setMode(SimDataPort::Mode::Echo);
    TCPRecvInfoDlg *recvDialog = openRecvDialog();
    TCPSendInfoDlg *sendDialog = openSendDialog();
    auto *area = child<QPlainTextEdit>(recvDialog, "DataTextarea");
    click(recvDialog, "RecvButton");
    QTRY_VERIFY(enabled(recvDialog, "StopButton"));

    const QByteArray hiragana("\xE3\x81\x82");
    auto sendPiece = [&](const QString &name, const QByteArray &bytes) {
        child<QLineEdit>(m_tab, "TCPSendPathTextarea")->setText(m_rig.file(name, bytes));
        const auto finished = m_rig.reports->results.count(QStringLiteral("Sending finished"));
        click(sendDialog, "SendButton");
        QTRY_COMPARE_WITH_TIMEOUT(m_rig.reports->results.count(QStringLiteral("Sending finished")),
                                  finished + 1, kTransferTimeoutMs);
        QTRY_VERIFY(enabled(sendDialog, "SendButton"));
    };
    sendPiece(QStringLiteral("first.txt"), "x" + hiragana.left(1));
    QTRY_COMPARE(area->toPlainText(), QStringLiteral("x"));
    // Progress refreshes come and go while the rest of the character is still on its way.
    QSignalSpy ticks(recvDialog->findChild<QTimer *>(QStringLiteral("progressTimer")),
                     &QTimer::timeout);
    QTRY_VERIFY(ticks.count() >= 2);
    QCOMPARE(area->toPlainText(), QStringLiteral("x"));

    const QString whole = QString::fromUtf8("x\xE3\x81\x82y\nz");
    sendPiece(QStringLiteral("second.txt"), hiragana.mid(1) + "y\nz" + hiragana.left(2));
    QTRY_COMPARE(area->toPlainText(), whole);

    // Ending the run shows the incomplete character as the decoder's replacement.
    click(recvDialog, "StopButton");
    QTRY_VERIFY(area->toPlainText().size() > whole.size());
    QVERIFY(area->toPlainText().startsWith(whole));
    for (QChar ch : area->toPlainText().mid(whole.size()))
        QCOMPARE(ch, QChar(QChar::ReplacementCharacter));
}

void TestTcpDialogs::beginPressedTwiceIsRefused()
{
    m_rig.port->setMode(SimDataPort::Mode::Source);
    m_rig.port->setSourceRate(200000);
    TCPRecvInfoDlg *dialog = openRecvDialog();
    click(dialog, "RecvButton");
    QTRY_VERIFY(enabled(dialog, "StopButton"));
    auto *area = child<QPlainTextEdit>(dialog, "DataTextarea");
    QTRY_VERIFY(!area->toPlainText().isEmpty());

    dialog->beginReceive(); // what the button does; the button itself is disabled now
    QCOMPARE(m_rig.logCount("[ WRN] Invalid recv status: TS_RUN"), 1);
    QCOMPARE(m_rig.logCount("begin recv thread"), 1);
    QVERIFY(!area->toPlainText().isEmpty());

    // Closing the dialog leaves the receive running: the device goes on sending.
    dialog->close();
    const qint64 sentAtClose = m_rig.port->totals().bytes;
    QTRY_VERIFY(m_rig.port->totals().bytes > sentAtClose + 100000);
    QCOMPARE(m_rig.worker->recvStatus(), TS_RUN);

    dialog = openRecvDialog();
    click(dialog, "StopButton");
    QTRY_VERIFY(enabled(dialog, "RecvButton"));
    QCOMPARE(m_rig.worker->recvStatus(), TS_STOP);
}

void TestTcpDialogs::connectFailureIsAnnounced()
{
    pointWorkerAt(closedPort());
    QSignalSpy failed(m_tab, &TCPTab::connectFailed);
    QSignalSpy succeeded(m_tab, &TCPTab::connectSuccessed);
    TCPRecvInfoDlg *dialog = openRecvDialog();
    click(dialog, "RecvButton");
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, kTransferTimeoutMs);
    QTRY_VERIFY(enabled(dialog, "RecvButton"));
    QCOMPARE(succeeded.count(), 0);
    QCOMPARE(m_rig.reports->errors, QStringList{QStringLiteral("Fail to connect to device")});
    QVERIFY(enabled(m_tab, "TCPRecvOptionGroupBox"));
}

// ---- Send dialog ----

void TestTcpDialogs::sendReachesDeviceAndFillsBar()
{
    constexpr qsizetype kBytes = 4 * 1024 * 1024;
    const QByteArray content = randomBytes(kBytes, 5);
    child<QLineEdit>(m_tab, "TCPSendPathTextarea")->setText(m_rig.file("send.bin", content));

    TCPSendInfoDlg *dialog = openSendDialog();
    auto *bar = child<QProgressBar>(dialog, "sendProgressBar");
    QSignalSpy barValues(bar, &QProgressBar::valueChanged);
    click(dialog, "SendButton");
    QTRY_VERIFY(!enabled(m_tab, "TCPSendOptionGroupBox"));
    QVERIFY(enabled(m_tab, "TCPRecvOptionGroupBox"));
    QTRY_VERIFY_WITH_TIMEOUT(m_rig.reports->results.contains(QStringLiteral("Sending finished")),
                             kTransferTimeoutMs);
    QCOMPARE(m_rig.reports->results.first(), QStringLiteral("Sending began"));
    QVERIFY(enabled(m_tab, "TCPSendOptionGroupBox"));
    QVERIFY(enabled(dialog, "SendButton"));
    QVERIFY(!enabled(dialog, "StopButton"));

    QVERIFY(m_rig.port->waitForConnectionsDone(1, kTransferTimeoutMs));
    QCOMPARE(m_rig.port->totals().bytes, qint64(kBytes));
    // The bar reached the end of the file before the run ended, and was reset after it.
    QVERIFY(std::any_of(barValues.cbegin(), barValues.cend(), [](const QList<QVariant> &change) {
        return change.at(0).toInt() == kBytes;
    }));
    QCOMPARE(bar->value(), bar->minimum() - 1);
    QVERIFY2(figures(dialog).startsWith("4.1943 MBytes, "), qPrintable(figures(dialog)));
    QVERIFY(m_rig.reports->errors.isEmpty());
    // Show Data was on: the first chunk is shown as hex lines.
    QVERIFY(child<QPlainTextEdit>(dialog, "DataTextarea")
                ->toPlainText()
                .startsWith(QString::fromLatin1(content.left(2).toHex(' ').toUpper())));
}

void TestTcpDialogs::stopMidSendReportsLoss()
{
    constexpr qsizetype kBytes = 32 * 1024 * 1024; // far more than the socket buffers hold
    m_rig.port->setStuck(true);
    child<QLineEdit>(m_tab, "TCPSendPathTextarea")
        ->setText(m_rig.file("stopped.bin", randomBytes(kBytes, 7)));

    TCPSendInfoDlg *dialog = openSendDialog();
    click(dialog, "SendButton");
    QTRY_VERIFY(enabled(dialog, "StopButton"));
    QVERIFY(!enabled(m_tab, "TCPSendOptionGroupBox"));
    dialog->beginSend();
    QCOMPARE(m_rig.logCount("[ WRN] Invalid send status: TS_RUN"), 1);

    click(dialog, "StopButton");
    QCOMPARE(m_rig.reports->errors.size(), 1);
    static const QRegularExpression lossPattern(
        QStringLiteral("^loss (\\d+) / (\\d+) bytes \\((.+)%\\)$"));
    const QRegularExpressionMatch match = lossPattern.match(m_rig.reports->errors.first());
    QVERIFY2(match.hasMatch(), qPrintable(m_rig.reports->errors.first()));
    const qint64 loss = match.captured(1).toLongLong();
    QCOMPARE(match.captured(2).toLongLong(), qint64(kBytes));
    QVERIFY(loss > 0 && loss <= kBytes);
    QCOMPARE(match.captured(3), QString::number(double(loss) * 100.0 / double(kBytes), 'g'));

    // The device takes what was already written; the rest of the file never leaves.
    m_rig.port->setStuck(false);
    QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "SendButton"), kTransferTimeoutMs);
    QVERIFY(enabled(m_tab, "TCPSendOptionGroupBox"));
    QVERIFY(m_rig.port->waitForConnectionsDone(1, kTransferTimeoutMs));
    QVERIFY(m_rig.port->totals().bytes < kBytes);
    QCOMPARE(m_rig.reports->errors.size(), 1);
}

// Reports closer than 500 ms refresh the figures once; the last report of a file always does,
// and a new run (time going backwards) starts refreshing at once.
void TestTcpDialogs::sendRefreshIsThrottled()
{
    TCPSendInfoDlg *dialog = openSendDialog();
    auto *size = child<QLineEdit>(dialog, "SizeTextarea");
    const struct
    {
        qint64 sent;
        qint64 elapsedMs;
        const char *shown;
    } reports[] = {
        {100, 100, ""},     {200, 400, ""},     {300, 601, "300"}, {400, 700, "300"},
        {500, 1101, "300"}, {600, 1102, "600"}, {1000, 1150, "1"}, {10, 5, "10"},
    };
    for (const auto &report : reports) {
        dialog->showProgress(report.sent, 1000, report.elapsedMs);
        QVERIFY2(
            size->text() == QLatin1String(report.shown),
            qPrintable(QStringLiteral("after %1 ms: %2").arg(report.elapsedMs).arg(size->text())));
    }
    QCOMPARE(figures(dialog), QStringLiteral("10 Bytes, 0.005 sec, 16 kbps"));
}

// ---- Tab ----

void TestTcpDialogs::tabShowsTarget()
{
    QCOMPARE(text(m_tab, "TCPTargetIPAddressLabel"), QStringLiteral("127.0.0.1"));
    MavixSetting other;
    other.ipAddress = QStringLiteral("127.0.0.2");
    other.tcpDataPort = 2424;
    other.udpPort = 4661;
    m_tab->applyTargetSettingChange(other);
    QCOMPARE(text(m_tab, "TCPTargetIPAddressLabel"), QStringLiteral("127.0.0.2"));
    QCOMPARE(text(m_tab, "TCPTargetTCPPortLabel"), QStringLiteral("2424"));
    QCOMPARE(text(m_tab, "TCPTargetUDPPortLabel"), QStringLiteral("4661"));
}

void TestTcpDialogs::tabAppliesFormatsAndFlags()
{
    auto *field = child<QLineEdit>(m_tab, "TCPRecvFormatTextarea");
    QCOMPARE(field->text(), TCPOutputOption::defaultFormat());
    auto type = [field](const QString &text) {
        field->setFocus();
        field->clear();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    };
    type(QStringLiteral("abc"));
    QCOMPARE(m_rig.reports->errors,
             QStringList{QStringLiteral("Format must include at least one number")});
    QCOMPARE(m_rig.model->recvOption()->format(), TCPOutputOption::defaultFormat());

    // An accepted format reaches the option and the receive dialog's own field.
    type(QStringLiteral("2-2"));
    QCOMPARE(m_rig.model->recvOption()->format(), QStringLiteral("2-2"));
    QCOMPARE(text(m_tab->recvDialog(), "FormatTextarea"), QStringLiteral("2-2"));
    // A format set elsewhere comes back into the tab's field.
    QVERIFY(m_rig.model->setRecvFormat(QStringLiteral("4")));
    QCOMPARE(field->text(), QStringLiteral("4"));

    click(m_tab, "TCPRecvFileTextConvertCheckbox");
    QVERIFY(m_rig.model->recvOption()->useHexFile());
    click(m_tab, "TCPSendFileTextConvertCheckbox");
    QVERIFY(m_rig.model->sendOption()->useHexFile());
    QCOMPARE(m_rig.reports->errors.size(), 1);
}

void TestTcpDialogs::tabReportsUnreadableSendFile()
{
    const QString missing = m_rig.dir.filePath(QStringLiteral("no-such-folder/send.bin"));
    auto *field = child<QLineEdit>(m_tab, "TCPSendPathTextarea");
    field->setText(missing);
    QCOMPARE(m_rig.reports->errors, QStringList{QStringLiteral("File cannot open")});
    QCOMPARE(field->text(), missing);
    QCOMPARE(m_rig.model->sendOption()->fileName(), missing);
}

// The chooser is answered as a user would; a cancelled one leaves the path as it was.
void TestTcpDialogs::tabChoosesFileThroughDialog()
{
    auto choose = [this](const char *button, const QString &title, const QString &fileName) {
        QTimer::singleShot(0, [title, fileName] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return qWarning("no file chooser is open");
            if (dialog->windowTitle() != title)
                qWarning("unexpected chooser title %s", qPrintable(dialog->windowTitle()));
            if (!dialog->nameFilters().contains(QStringLiteral("All format file (*.*)")))
                qWarning("the chooser lacks the all-files filter");
            if (fileName.isEmpty())
                return dialog->reject();
            dialog->selectFile(fileName);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        QTest::mouseClick(child(m_tab, button), Qt::LeftButton);
    };
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*chooser.*")));
    const QString chosen = m_rig.dir.filePath(QStringLiteral("chosen.bin"));
    auto *field = child<QLineEdit>(m_tab, "TCPRecvPathTextarea");
    choose("TCPRecvPathRefferenceButton", QStringLiteral("Select output to"), chosen);
    QTRY_COMPARE(field->text(), chosen);
    QCOMPARE(m_rig.model->recvOption()->fileName(), chosen);
    choose("TCPRecvPathRefferenceButton", QStringLiteral("Select output to"), QString());
    QCOMPARE(field->text(), chosen);

    const QString sendFile = m_rig.file(QStringLiteral("pick.bin"), "abc");
    choose("TCPSendPathRefferenceButton", QStringLiteral("Choose send file"), sendFile);
    QTRY_COMPARE(text(m_tab, "TCPSendPathTextarea"), sendFile);
    QCOMPARE(m_rig.model->sendOption()->fileName(), sendFile);
    QVERIFY(m_rig.reports->errors.isEmpty());
}

QTEST_MAIN(TestTcpDialogs)
#include "tst_tcpdialogs.moc"
