// The receive and send dialogs and the Data(TCP) tab, driven by their widgets against the
// emulator's data port on loopback, with the transfer worker on its own thread.
#include "tcpfixture.h"

#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

class TestTcpDialogs : public QObject
{
    Q_OBJECT

public slots:
    void openedInShell(const QUrl &url) { m_opened << url; }

private slots:
    void init();
    void cleanup();
    void receiveShowsAndSavesFormatAlike();
    void failureShownInsideDialog_data();
    void failureShownInsideDialog();
    void splitCharacterShownWhole();
    void sendReachesDeviceAndFillsBar();
    void stopOnStuckDeviceReportsLossOnce();
    void sendRefreshIsThrottled();
    void pathCheckedWhenEditingFinished_data();
    void pathCheckedWhenEditingFinished();
    void choosersAndOpen();

private:
    template <typename T = QWidget> T *child(QWidget *parent, const char *name)
    {
        T *widget = parent->findChild<T *>(QLatin1String(name));
        return widget ? widget : (qFatal("no widget %s", name), nullptr);
    }
    bool enabled(QWidget *w, const char *name) { return child(w, name)->isEnabled(); }
    QString text(QWidget *w, const char *name)
    {
        return child(w, name)->property("text").toString();
    }
    void click(QWidget *parent, const char *name)
    {
        auto *button = child<QAbstractButton>(parent, name);
        QVERIFY2(button->isEnabled(), name);
        // A check box takes clicks on its box and label only.
        QTest::mouseClick(button, Qt::LeftButton, {},
                          qobject_cast<QCheckBox *>(button) ? QPoint(6, button->height() / 2)
                                                            : button->rect().center());
    }
    void type(const char *field, const QString &text)
    {
        auto *edit = child<QLineEdit>(m_tab, field);
        edit->setFocus();
        edit->clear();
        QTest::keyClicks(edit, text);
    }
    // The tab's buttons open the dialogs without blocking.
    QDialog *open(bool sending)
    {
        QTest::mouseClick(child(m_tab, sending ? "TCPSendDlgOpenButton" : "TCPRecvDlgOpenButton"),
                          Qt::LeftButton);
        QDialog *dialog =
            sending ? static_cast<QDialog *>(m_tab->sendDialog()) : m_tab->recvDialog();
        return dialog->isVisible() ? dialog : nullptr;
    }

    TcpFixture m_rig;
    TCPTab *m_tab = nullptr;
    QList<QUrl> m_opened;
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
    m_rig.stop();
}

// The format's separator is the same in the data area and in the file.
void TestTcpDialogs::receiveShowsAndSavesFormatAlike()
{
    m_rig.port->setMode(SimDataPort::Mode::Source);
    m_rig.port->setSourceBytes(10);
    const QString path = m_rig.dir.filePath("received.txt");
    type("TCPRecvPathTextarea", path);
    type("TCPRecvFormatTextarea", "1\u00b71");
    QTest::keyClick(child(m_tab, "TCPRecvFormatTextarea"), Qt::Key_Return);
    click(m_tab, "TCPRecvFileTextConvertCheckbox");
    QDialog *dialog = open(false);
    click(dialog, "ShowHexCheckbox");
    QSignalSpy connected(m_tab, &TCPTab::connectSuccessed);
    click(dialog, "RecvButton");
    QTRY_VERIFY(!enabled(m_tab, "TCPRecvOptionGroupBox"));
    QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "RecvButton"), kTransferTimeoutMs);
    QCOMPARE(connected.count(), 1);
    QTRY_COMPARE(child<QPlainTextEdit>(dialog, "DataTextarea")->toPlainText().trimmed(),
                 "7A\u00b748\n21\u00b79A\nE2\u00b7B3\n83\u00b70D\n67\u00b79D");
    QCOMPARE(readFile(path),
             "7A\u00b748\r\n21\u00b79A\r\nE2\u00b7B3\r\n83\u00b70D\r\n67\u00b79D\r\n");
    const QString end = "The device closed the connection. 40 bytes were saved to " + path + ".";
    QCOMPARE(m_rig.reports->results, (QStringList{"Receiving began", end, "Receiving finished"}));
    QCOMPARE(text(dialog, "FileLabel"), "Saving to " + path + "\n" + end);
    QCOMPARE(text(dialog, "ErrorLabel") + text(dialog, "SizeTextarea"), "10");
}

// The dialog of the failed run says why, and no blue "finished" follows the red line.
void TestTcpDialogs::failureShownInsideDialog_data()
{
    QTest::addColumn<bool>("sending");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("reason"); // %1: the file, or the port that refuses
    QTest::addRow("device refuses the connection")
        << false << ""
        << "Fail to connect to device: 127.0.0.1:%1 (Connection refused)";
    QTest::addRow("receive folder missing")
        << false << "gone/r.bin"
        << "Receive file cannot open: %1 (No such file or directory)";
    QTest::addRow("send file missing") << true << "gone.bin"
                                       << "Send file cannot open: %1 (No such file or directory)";
    QTest::addRow("no send file") << true << ""
                                  << "Send file cannot open: no send file is chosen";
}

void TestTcpDialogs::failureShownInsideDialog()
{
    QFETCH(bool, sending);
    QFETCH(QString, file);
    QFETCH(QString, reason);
    const quint16 refused = closedPort();
    const QString path = file.isEmpty() ? QString() : m_rig.dir.filePath(file);
    if (!sending && file.isEmpty())
        pointWorkerAt(refused);
    sending ? m_rig.model->setSendFileName(path) : m_rig.model->setRecvFileName(path);
    QSignalSpy failed(m_tab, &TCPTab::connectFailed);
    QDialog *dialog = open(sending);
    click(dialog, sending ? "SendButton" : "RecvButton");
    if (reason.contains("%1"))
        reason = reason.arg(file.isEmpty() ? QString::number(refused) : path);
    QTRY_COMPARE_WITH_TIMEOUT(text(dialog, "ErrorLabel"), reason, kTransferTimeoutMs);
    QTRY_VERIFY(enabled(dialog, sending ? "SendButton" : "RecvButton"));
    QCOMPARE(m_rig.reports->errors, QStringList{reason});
    QCOMPARE(m_rig.reports->results, QStringList{sending ? "Sending began" : "Receiving began"});
    QCOMPARE(m_rig.logCount("[ ERR] " + reason.toUtf8()), 1);
    QCOMPARE(failed.count(), reason.startsWith("Fail to connect") ? 1 : 0);
    QTRY_VERIFY(!m_rig.worker->hasSocket());
}

// A character whose bytes arrive in two passes is shown once, whole; one left incomplete at the
// end of the run is shown as it is.
void TestTcpDialogs::splitCharacterShownWhole()
{
    m_rig.port->setMode(SimDataPort::Mode::Echo);
    QDialog *recvDialog = open(false);
    QDialog *sendDialog = open(true);
    auto *area = child<QPlainTextEdit>(recvDialog, "DataTextarea");
    click(recvDialog, "RecvButton");
    QTRY_VERIFY(enabled(recvDialog, "StopButton"));
    QCOMPARE(text(recvDialog, "FileLabel"), "Nothing is being saved: Save To is empty.");
    auto sendPiece = [&](const QString &name, const QByteArray &bytes) {
        m_rig.model->setSendFileName(m_rig.file(name, bytes));
        const auto finished = m_rig.reports->results.count("Sending finished");
        click(sendDialog, "SendButton");
        QTRY_COMPARE_WITH_TIMEOUT(m_rig.reports->results.count("Sending finished"), finished + 1,
                                  kTransferTimeoutMs);
    };
    sendPiece("first.txt", "x\xE3");
    QTRY_COMPARE(area->toPlainText(), "x");
    QSignalSpy ticks(recvDialog->findChild<QTimer *>("progressTimer"), &QTimer::timeout);
    QTRY_VERIFY(ticks.count() >= 2); // refreshes come while the rest is on its way
    QCOMPARE(area->toPlainText(), "x");
    sendPiece("second.txt", "\x81\x82y\nz\xE3");
    QTRY_COMPARE(area->toPlainText(), "x\u3042y\nz");
    click(recvDialog, "StopButton");
    QTRY_COMPARE(area->toPlainText(), "x\u3042y\nz\ufffd");
}

void TestTcpDialogs::sendReachesDeviceAndFillsBar()
{
    type("TCPSendPathTextarea", m_rig.file("send.bin", QByteArray(4194304, '\x01')));
    QDialog *dialog = open(true);
    auto *bar = child<QProgressBar>(dialog, "sendProgressBar");
    QSignalSpy barValues(bar, &QProgressBar::valueChanged);
    click(dialog, "SendButton");
    QTRY_VERIFY(!enabled(m_tab, "TCPSendOptionGroupBox"));
    QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "SendButton"), kTransferTimeoutMs);
    QCOMPARE(m_rig.reports->results, (QStringList{"Sending began", "Sending finished"}));
    QVERIFY(enabled(m_tab, "TCPSendOptionGroupBox"));
    QVERIFY(m_rig.port->waitForConnectionsDone(1, kTransferTimeoutMs));
    QCOMPARE(m_rig.port->totals().bytes, 4194304);
    QCOMPARE(barValues.last().at(0).toInt(), 4194304);
    QCOMPARE(bar->value(), -1); // reset once the run has ended
    QCOMPARE(text(dialog, "SizeTextarea"), "4.1943");
    QCOMPARE(text(dialog, "FileLabel"), "Sending " + m_rig.dir.filePath("send.bin"));
    QVERIFY(child<QPlainTextEdit>(dialog, "DataTextarea")->toPlainText().startsWith("01 01 01"));
}

// Stop reaches the worker at once although the device takes nothing; a second stop reports
// nothing more, and no time-out follows.
void TestTcpDialogs::stopOnStuckDeviceReportsLossOnce()
{
    m_rig.port->setStuck(true);
    type("TCPSendPathTextarea", m_rig.file("stopped.bin", QByteArray(32000000, 'x')));
    auto *dialog = static_cast<TCPSendInfoDlg *>(open(true));
    click(dialog, "SendButton");
    QTRY_VERIFY(enabled(dialog, "StopButton"));
    click(dialog, "StopButton");
    QVERIFY(!enabled(dialog, "StopButton"));
    dialog->stopSend();
    QCOMPARE(m_rig.logCount("[ WRN] Invalid send status: TS_STOPPING"), 1);
    QVERIFY2(m_rig.reports->errors.join('|').contains(
                 QRegularExpression("^loss [1-9][0-9]* / 32000000 bytes \\([1-9][0-9.]*%\\)$")),
             qPrintable(m_rig.reports->errors.join('|')));
    QTRY_VERIFY_WITH_TIMEOUT(enabled(dialog, "SendButton"), 3000); // still stuck
    QCOMPARE(m_rig.reports->errors.size(), 1);
}

// Reports closer than 500 ms refresh the figures once; the last report of a file always does,
// and a new run (time going backwards) refreshes at once.
void TestTcpDialogs::sendRefreshIsThrottled()
{
    auto *dialog = static_cast<TCPSendInfoDlg *>(open(true));
    const QList<std::tuple<qint64, qint64, const char *>> reports = {
        {100, 100, ""},     {200, 400, ""},     {300, 601, "300"}, {400, 700, "300"},
        {500, 1101, "300"}, {600, 1102, "600"}, {1000, 1150, "1"}, {10, 5, "10"}};
    for (const auto &[sent, elapsedMs, shown] : reports) {
        dialog->showProgress(sent, 1000, elapsedMs);
        QCOMPARE(text(dialog, "SizeTextarea"), QString::fromLatin1(shown));
    }
    QCOMPARE(text(dialog, "RateTextarea") + text(dialog, "RateUnitLabel"), "16kbps");
}

// Typing says nothing and touches no file; the name is checked once editing is finished.
void TestTcpDialogs::pathCheckedWhenEditingFinished_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");  // %1: the path, %2: its folder
    QTest::addColumn<QString>("result"); // blue
    const QByteArray recv("TCPRecvPathTextarea"), send("TCPSendPathTextarea");
    QTest::addRow("Save To: new file") << recv << "new.bin"
                                       << ""
                                       << "";
    QTest::addRow("Save To: missing folder")
        << recv << "gone/new.bin"
        << "File cannot open: %1 (the folder %2 does not exist)"
        << "";
    QTest::addRow("Save To: emptied") << recv << ""
                                      << ""
                                      << "Save To is empty: received data will not be saved.";
    QTest::addRow("Send File: existing") << send << "old.bin"
                                         << ""
                                         << "";
    QTest::addRow("Send File: missing") << send << "new.bin"
                                        << "File cannot open: %1 (No such file or directory)"
                                        << "";
    QTest::addRow("Send File: emptied") << send << ""
                                        << "Send file is not chosen."
                                        << "";
}

void TestTcpDialogs::pathCheckedWhenEditingFinished()
{
    QFETCH(QByteArray, field);
    QFETCH(QString, name);
    QFETCH(QString, error);
    QFETCH(QString, result);
    QTemporaryDir folder;
    QVERIFY(QFile(folder.filePath("old.bin")).open(QIODevice::WriteOnly));
    const QString path = name.isEmpty() ? QString() : folder.filePath(name);
    type(field, path.isEmpty() ? "x" : path);
    if (path.isEmpty())
        QTest::keyClick(child(m_tab, field), Qt::Key_Backspace);
    QVERIFY(m_rig.reports->errors.isEmpty() && m_rig.reports->results.isEmpty());
    QTest::keyClick(child(m_tab, field), Qt::Key_Return);
    QTest::keyClick(child(m_tab, field), Qt::Key_Return); // checked once only
    QCOMPARE(m_rig.reports->errors, error.isEmpty()
                                        ? QStringList()
                                        : QStringList{error.arg(path, folder.filePath("gone"))});
    QCOMPARE(m_rig.reports->results, result.isEmpty() ? QStringList() : QStringList{result});
    QCOMPARE(QDir(folder.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList{"old.bin"});
}

// Choosers are answered as a user would; a cancelled one leaves the path. Open takes a relative
// path from the working folder.
void TestTcpDialogs::choosersAndOpen()
{
    auto choose = [this](const char *button, const QString &title, const QString &fileName) {
        QTimer::singleShot(0, [title, fileName] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog || dialog->windowTitle() != title ||
                !dialog->nameFilters().contains("All format file (*.*)"))
                return qWarning("not the expected chooser");
            if (fileName.isEmpty())
                return dialog->reject();
            dialog->selectFile(fileName);
            QMetaObject::invokeMethod(dialog, "accept");
        });
        QTest::mouseClick(child(m_tab, button), Qt::LeftButton);
    };
    QTest::failOnWarning(QRegularExpression(".*chooser.*"));
    const QString chosen = m_rig.dir.filePath("chosen.bin");
    choose("TCPRecvPathRefferenceButton", "Select output to", chosen);
    QTRY_COMPARE(m_rig.model->recvOption()->fileName(), chosen);
    choose("TCPRecvPathRefferenceButton", "Select output to", QString());
    QCOMPARE(text(m_tab, "TCPRecvPathTextarea"), chosen);
    const QString sendFile = m_rig.file("pick.bin", "abc");
    choose("TCPSendPathRefferenceButton", "Choose send file", sendFile);
    QTRY_COMPARE(m_rig.model->sendOption()->fileName(), sendFile);
    QVERIFY(m_rig.reports->errors.isEmpty());

    QDesktopServices::setUrlHandler("file", this, "openedInShell");
    type("TCPSendPathTextarea", "relative.bin");
    click(m_tab, "TCPSendPathOpenButton");
    QDesktopServices::unsetUrlHandler("file");
    QCOMPARE(m_opened, QList<QUrl>{QUrl::fromLocalFile(QDir::current().filePath("relative.bin"))});
}

QTEST_MAIN(TestTcpDialogs)
#include "tst_tcpdialogs.moc"
