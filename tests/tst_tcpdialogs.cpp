// The receive and send dialogs and the Data(TCP) tab, driven by their widgets against the
// emulator's data port on loopback, with the transfer worker on its own thread.
#include "reportcollector.h"

#include "app/appmodel.h"
#include "app/log.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcprecvinfodlg.h"
#include "tcp/tcpsendinfodlg.h"
#include "tcp/tcptab.h"
#include "tcp/tcpthread.h"

#include <QCheckBox>
#include <QCryptographicHash>
#include <QFileDialog>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <QtTest>

namespace {

constexpr int kTransferTimeoutMs = 20000;
constexpr int kSocketCloseTimeoutMs = 12000;

// The receive display of the default format: sixteen columns of two hex digits, one blank
// between them, one line per sixteen bytes.
QString defaultHexLines(const QByteArray &bytes)
{
    QString text;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        text += QString::asprintf("%02X", quint8(bytes.at(i)));
        text += (i % 16 == 15) ? QLatin1Char('\n') : QLatin1Char(' ');
    }
    if (bytes.size() % 16 != 0)
        text.chop(1);
    return text;
}

QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator generator(seed);
    generator.fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
    return bytes;
}

} // namespace

class TestTcpDialogs : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
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
    void tabRefusesFormatWithoutNumber();
    void tabReportsUnreadableSendFile();
    void tabChoosesFileThroughDialog();

private:
    template <typename T> T *child(QWidget *parent, const char *name)
    {
        T *widget = parent->findChild<T *>(QLatin1String(name));
        if (!widget)
            qFatal("no widget %s", name);
        return widget;
    }
    void click(QWidget *parent, const char *name);
    void setTarget(quint16 port);
    void configureSource(qint64 bytes, qint64 bytesPerSecond);
    [[nodiscard]] QString writeFile(const QString &name, const QByteArray &bytes);
    [[nodiscard]] int logCount(const QString &text) const;
    [[nodiscard]] bool waitForIdleWorker();
    TCPRecvInfoDlg *openRecvDialog();
    TCPSendInfoDlg *openSendDialog();

    QTemporaryDir m_dir;
    QString m_logPath;
    AppModel *m_model = nullptr;
    QThread *m_thread = nullptr;
    TCPThread *m_worker = nullptr;
    SimDataPort *m_port = nullptr;
    quint16 m_portNumber = 0;
    ReportCollector *m_reports = nullptr;
    TCPTab *m_tab = nullptr;
};

void TestTcpDialogs::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_logPath = m_dir.filePath(QStringLiteral("tcpdialogs.log"));
    logOpen(m_logPath, LOG_DBG);
    registerThreadMetaTypes();

    // As at start-up: the model, then the worker on its own thread.
    m_model = new AppModel;
    m_thread = new QThread;
    m_thread->start();
    m_worker = new TCPThread(m_thread);

    m_port = new SimDataPort;
    m_portNumber = m_port->start(QHostAddress::LocalHost, 0);
    QVERIFY2(m_portNumber != 0, qPrintable(m_port->errorString()));
    setTarget(m_portNumber);
    m_reports = new ReportCollector;
}

void TestTcpDialogs::cleanupTestCase()
{
    if (m_worker) {
        QVERIFY(waitForIdleWorker());
        m_thread->quit();
        m_thread->wait();
        delete m_worker;
        delete m_thread;
    }
    if (m_port) {
        m_port->stop();
        delete m_port;
    }
    delete m_reports;
    delete m_model;
    logClose();
}

void TestTcpDialogs::init()
{
    setTarget(m_portNumber);
    m_port->setStuck(false);
    m_port->setSinkFile(QString());
    m_port->setSourceFile(QString());
    m_port->setSourceRate(0);
    m_port->setKeepOpen(false);
    m_port->setHashing(true);
    m_model->setRecvFileName(QString());
    m_model->setSendFileName(QString());
    m_model->setRecvUseHexFile(false);
    m_model->setSendUseHexFile(false);
    QVERIFY(m_model->setRecvFormat(TCPOutputOption::defaultFormat()));
    m_model->recvOption()->setDisplayMode(TCPOutputOption::kDisplayText);
    m_model->sendOption()->setShowData(true);
    m_reports->clear();

    m_tab = new TCPTab;
    m_tab->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_tab));
}

void TestTcpDialogs::cleanup()
{
    delete m_tab;
    m_tab = nullptr;
    QVERIFY(waitForIdleWorker());
}

// Both directions stopped and the shared connection closed, so that the next case starts anew.
bool TestTcpDialogs::waitForIdleWorker()
{
    m_port->setStuck(false);
    if (m_worker->recvStatus() == TS_RUN)
        m_worker->stopReceiving();
    if (m_worker->sendStatus() == TS_RUN)
        QMetaObject::invokeMethod(m_worker, "stopSending", Qt::QueuedConnection);
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < kSocketCloseTimeoutMs) {
        if (m_worker->recvStatus() == TS_STOP && m_worker->sendStatus() == TS_STOP &&
            !m_worker->hasSocket())
            return true;
        QTest::qWait(20);
    }
    return false;
}

void TestTcpDialogs::click(QWidget *parent, const char *name)
{
    QAbstractButton *button = child<QAbstractButton>(parent, name);
    QVERIFY2(button->isEnabled(), name);
    // A check box takes clicks on its box and label only, not on the rest of its cell.
    const QPoint where = qobject_cast<QCheckBox *>(button) ? QPoint(6, button->height() / 2)
                                                           : button->rect().center();
    QTest::mouseClick(button, Qt::LeftButton, {}, where);
}

void TestTcpDialogs::setTarget(quint16 port)
{
    MavixSetting target;
    target.ipAddress = QStringLiteral("127.0.0.1");
    target.tcpDataPort = port;
    MavixSetting::setCurrent(target);
}

void TestTcpDialogs::configureSource(qint64 bytes, qint64 bytesPerSecond)
{
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(bytes);
    m_port->setSourceRate(bytesPerSecond);
    m_port->setKeepOpen(true);
}

QString TestTcpDialogs::writeFile(const QString &name, const QByteArray &bytes)
{
    const QString path = m_dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

int TestTcpDialogs::logCount(const QString &text) const
{
    QFile file(m_logPath);
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return int(QString::fromUtf8(file.readAll()).count(text));
}

TCPRecvInfoDlg *TestTcpDialogs::openRecvDialog()
{
    QTest::mouseClick(child<QPushButton>(m_tab, "TCPRecvDlgOpenButton"), Qt::LeftButton);
    TCPRecvInfoDlg *dialog = m_tab->recvDialog();
    if (!dialog->isVisible() || dialog->isModal())
        qFatal("the receive dialog must be shown without blocking");
    return dialog;
}

TCPSendInfoDlg *TestTcpDialogs::openSendDialog()
{
    QTest::mouseClick(child<QPushButton>(m_tab, "TCPSendDlgOpenButton"), Qt::LeftButton);
    TCPSendInfoDlg *dialog = m_tab->sendDialog();
    if (!dialog->isVisible() || dialog->isModal())
        qFatal("the send dialog must be shown without blocking");
    return dialog;
}

// ---- Receive dialog ----

void TestTcpDialogs::receiveShowsHexAndWritesFile()
{
    constexpr qint64 kBytes = 100000; // 6250 display lines: more than the area keeps
    configureSource(kBytes, 0);
    const QString path = m_dir.filePath(QStringLiteral("received.bin"));
    child<QLineEdit>(m_tab, "TCPRecvPathTextarea")->setText(path);
    QCOMPARE(m_model->recvOption()->fileName(), path);

    TCPRecvInfoDlg *dialog = openRecvDialog();
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Receive Dialog"));
    QVERIFY(child<QCheckBox>(dialog, "DataShowCheckbox")->isChecked());
    QVERIFY(!child<QLineEdit>(dialog, "FormatTextarea")->isEnabled());
    click(dialog, "ShowHexCheckbox");
    QCOMPARE(m_model->recvOption()->displayMode(), TCPOutputOption::kDisplayHex);
    QVERIFY(child<QLineEdit>(dialog, "FormatTextarea")->isEnabled());

    QSignalSpy connected(m_tab, &TCPTab::connectSuccessed);
    auto *recvGroup = child<QGroupBox>(m_tab, "TCPRecvOptionGroupBox");
    click(dialog, "RecvButton");
    QTRY_VERIFY(child<QPushButton>(dialog, "StopButton")->isEnabled());
    QVERIFY(!child<QPushButton>(dialog, "RecvButton")->isEnabled());
    QVERIFY(!recvGroup->isEnabled());
    QVERIFY(child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());
    QVERIFY(!child<QLineEdit>(dialog, "FormatTextarea")->isEnabled());
    QCOMPARE(connected.count(), 1);

    QTRY_VERIFY_WITH_TIMEOUT(m_port->totals().complete, kTransferTimeoutMs);
    auto *area = child<QPlainTextEdit>(dialog, "DataTextarea");
    const QString expected = defaultHexLines(SimDataPort::pattern(0, kBytes));
    QTRY_VERIFY_WITH_TIMEOUT(area->toPlainText().endsWith(expected.right(100)), kTransferTimeoutMs);
    click(dialog, "StopButton");
    QTRY_VERIFY(child<QPushButton>(dialog, "RecvButton")->isEnabled());
    QVERIFY(!child<QPushButton>(dialog, "StopButton")->isEnabled());
    QVERIFY(recvGroup->isEnabled());
    QVERIFY(m_reports->results.contains(QStringLiteral("Receiving began")));
    QVERIFY(m_reports->results.contains(QStringLiteral("Receiving finished")));
    QCOMPARE(child<QLineEdit>(dialog, "SizeTextarea")->text(), QStringLiteral("100"));
    QCOMPARE(child<QLabel>(dialog, "TCPSizeUnitLabel")->text(), QStringLiteral("KBytes"));
    QVERIFY(!child<QLineEdit>(dialog, "TimeTextarea")->text().isEmpty());
    QCOMPARE(child<QLabel>(dialog, "TCPTimeUnitLabel")->text(), QStringLiteral("sec"));
    QVERIFY(!child<QLineEdit>(dialog, "RateTextarea")->text().isEmpty());

    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), SimDataPort::pattern(0, kBytes));

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
    m_port->setMode(SimDataPort::Mode::Echo);
    TCPRecvInfoDlg *recvDialog = openRecvDialog();
    TCPSendInfoDlg *sendDialog = openSendDialog();
    auto *area = child<QPlainTextEdit>(recvDialog, "DataTextarea");
    QVERIFY(!child<QCheckBox>(recvDialog, "ShowHexCheckbox")->isChecked());

    click(recvDialog, "RecvButton");
    QTRY_VERIFY(child<QPushButton>(recvDialog, "StopButton")->isEnabled());

    const QByteArray hiragana("\xE3\x81\x82");
    auto sendPiece = [&](const QString &name, const QByteArray &bytes) {
        child<QLineEdit>(m_tab, "TCPSendPathTextarea")->setText(writeFile(name, bytes));
        const auto finished = m_reports->results.count(QStringLiteral("Sending finished"));
        click(sendDialog, "SendButton");
        QTRY_COMPARE_WITH_TIMEOUT(m_reports->results.count(QStringLiteral("Sending finished")),
                                  finished + 1, kTransferTimeoutMs);
        QTRY_VERIFY(child<QPushButton>(sendDialog, "SendButton")->isEnabled());
    };

    sendPiece(QStringLiteral("first.txt"), "x" + hiragana.left(1));
    QTRY_COMPARE(area->toPlainText(), QStringLiteral("x"));
    // Progress refreshes come and go while the rest of the character is still on its way.
    QSignalSpy ticks(recvDialog->findChild<QTimer *>(QStringLiteral("progressTimer")),
                     &QTimer::timeout);
    QTRY_VERIFY(ticks.count() >= 2);
    QCOMPARE(area->toPlainText(), QStringLiteral("x"));

    sendPiece(QStringLiteral("second.txt"), hiragana.mid(1) + "y\nz" + hiragana.left(2));
    QTRY_COMPARE(area->toPlainText(), QString::fromUtf8("x\xE3\x81\x82y\nz"));

    // Ending the run shows the incomplete character as the decoder's replacement.
    click(recvDialog, "StopButton");
    const QString whole = QString::fromUtf8("x\xE3\x81\x82y\nz");
    QTRY_VERIFY(area->toPlainText().size() > whole.size());
    QVERIFY(area->toPlainText().startsWith(whole));
    for (QChar ch : area->toPlainText().mid(whole.size()))
        QCOMPARE(ch, QChar(QChar::ReplacementCharacter));
}

void TestTcpDialogs::beginPressedTwiceIsRefused()
{
    configureSource(-1, 200000);
    TCPRecvInfoDlg *dialog = openRecvDialog();
    click(dialog, "RecvButton");
    QTRY_VERIFY(child<QPushButton>(dialog, "StopButton")->isEnabled());
    QTRY_VERIFY(!child<QPlainTextEdit>(dialog, "DataTextarea")->toPlainText().isEmpty());

    const QString warning = QStringLiteral("[ WRN] Invalid recv status: TS_RUN");
    const int warningsBefore = logCount(warning);
    const int beginsBefore = logCount(QStringLiteral("begin recv thread"));
    dialog->beginReceive(); // what the button does; the button itself is disabled now
    QCOMPARE(logCount(warning), warningsBefore + 1);
    QVERIFY(!child<QPlainTextEdit>(dialog, "DataTextarea")->toPlainText().isEmpty());
    QCOMPARE(m_worker->recvStatus(), TS_RUN);

    // Closing the dialog leaves the receive running.
    dialog->close();
    QTest::qWait(100);
    QCOMPARE(m_worker->recvStatus(), TS_RUN);
    QCOMPARE(logCount(QStringLiteral("begin recv thread")), beginsBefore);

    dialog = openRecvDialog();
    click(dialog, "StopButton");
    QTRY_VERIFY(child<QPushButton>(dialog, "RecvButton")->isEnabled());
    QCOMPARE(m_worker->recvStatus(), TS_STOP);
}

void TestTcpDialogs::connectFailureIsAnnounced()
{
    QTcpServer probe;
    QVERIFY(probe.listen(QHostAddress::LocalHost, 0));
    const quint16 closedPort = probe.serverPort();
    probe.close();
    setTarget(closedPort);

    QSignalSpy failed(m_tab, &TCPTab::connectFailed);
    QSignalSpy succeeded(m_tab, &TCPTab::connectSuccessed);
    TCPRecvInfoDlg *dialog = openRecvDialog();
    click(dialog, "RecvButton");
    QTRY_COMPARE_WITH_TIMEOUT(failed.count(), 1, kTransferTimeoutMs);
    QTRY_VERIFY(child<QPushButton>(dialog, "RecvButton")->isEnabled());
    QCOMPARE(succeeded.count(), 0);
    QVERIFY(m_reports->errors.contains(QStringLiteral("Fail to connect to device")));
    QVERIFY(child<QGroupBox>(m_tab, "TCPRecvOptionGroupBox")->isEnabled());
}

// ---- Send dialog ----

void TestTcpDialogs::sendReachesDeviceAndFillsBar()
{
    constexpr qsizetype kBytes = 4 * 1024 * 1024;
    m_port->setMode(SimDataPort::Mode::Sink);
    const QByteArray content = randomBytes(kBytes, 5);
    child<QLineEdit>(m_tab, "TCPSendPathTextarea")->setText(writeFile("send.bin", content));
    QVERIFY(m_reports->errors.isEmpty());

    TCPSendInfoDlg *dialog = openSendDialog();
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Send Dialog"));
    auto *bar = child<QProgressBar>(dialog, "sendProgressBar");
    QSignalSpy barValues(bar, &QProgressBar::valueChanged);
    click(dialog, "SendButton");
    QTRY_VERIFY(!child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());
    QVERIFY(child<QGroupBox>(m_tab, "TCPRecvOptionGroupBox")->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(m_reports->results.contains(QStringLiteral("Sending finished")),
                             kTransferTimeoutMs);
    QVERIFY(m_reports->results.contains(QStringLiteral("Sending began")));
    QVERIFY(child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());
    QVERIFY(child<QPushButton>(dialog, "SendButton")->isEnabled());
    QVERIFY(!child<QPushButton>(dialog, "StopButton")->isEnabled());

    QVERIFY(m_port->waitForConnectionsDone(m_port->totals().connections, kTransferTimeoutMs));
    const SimDataPort::Totals totals = m_port->totals();
    QCOMPARE(totals.bytes, qint64(kBytes));
    QCOMPARE(totals.sha256, QCryptographicHash::hash(content, QCryptographicHash::Sha256));

    // The bar reached the end of the file before the run ended, and was reset after it.
    bool reachedEnd = false;
    for (const QList<QVariant> &change : barValues)
        reachedEnd = reachedEnd || change.at(0).toInt() == kBytes;
    QVERIFY(reachedEnd);
    QCOMPARE(bar->value(), bar->minimum() - 1);
    QCOMPARE(child<QLineEdit>(dialog, "SizeTextarea")->text(), QStringLiteral("4.1943"));
    QCOMPARE(child<QLabel>(dialog, "TCPSizeUnitLabel")->text(), QStringLiteral("MBytes"));
    QVERIFY(m_reports->errors.isEmpty());
    // Show Data was on: the first chunk is shown as hex lines.
    QVERIFY(child<QPlainTextEdit>(dialog, "DataTextarea")
                ->toPlainText()
                .startsWith(
                    QString::asprintf("%02X %02X", quint8(content.at(0)), quint8(content.at(1)))));
}

void TestTcpDialogs::stopMidSendReportsLoss()
{
    constexpr qsizetype kBytes = 32 * 1024 * 1024; // far more than the socket buffers hold
    m_port->setMode(SimDataPort::Mode::Sink);
    m_port->setStuck(true);
    child<QLineEdit>(m_tab, "TCPSendPathTextarea")
        ->setText(writeFile("stopped.bin", randomBytes(kBytes, 7)));

    TCPSendInfoDlg *dialog = openSendDialog();
    click(dialog, "SendButton");
    QTRY_VERIFY(child<QPushButton>(dialog, "StopButton")->isEnabled());
    QVERIFY(!child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());

    const QString warning = QStringLiteral("[ WRN] Invalid send status: TS_RUN");
    const int warningsBefore = logCount(warning);
    dialog->beginSend();
    QCOMPARE(logCount(warning), warningsBefore + 1);

    click(dialog, "StopButton");
    QCOMPARE(m_reports->errors.size(), 1);
    static const QRegularExpression lossPattern(
        QStringLiteral("^loss (\\d+) / (\\d+) bytes \\((.+)%\\)$"));
    const QRegularExpressionMatch match = lossPattern.match(m_reports->errors.first());
    QVERIFY2(match.hasMatch(), qPrintable(m_reports->errors.first()));
    const qint64 loss = match.captured(1).toLongLong();
    QCOMPARE(match.captured(2).toLongLong(), qint64(kBytes));
    QVERIFY(loss > 0 && loss <= kBytes);
    QCOMPARE(match.captured(3), QString::number(double(loss) * 100.0 / double(kBytes), 'g'));

    // The device takes what was already written; the rest of the file never leaves.
    m_port->setStuck(false);
    QTRY_VERIFY_WITH_TIMEOUT(child<QPushButton>(dialog, "SendButton")->isEnabled(),
                             kTransferTimeoutMs);
    QVERIFY(child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());
    QVERIFY(m_port->waitForConnectionsDone(m_port->totals().connections, kTransferTimeoutMs));
    QVERIFY(m_port->totals().bytes < kBytes);
    QVERIFY(!m_reports->errors.contains(QStringLiteral("TCP write is timeout")));
}

// Reports closer than 500 ms refresh the figures once; the last report of a file always does,
// and a new run (time going backwards) starts refreshing at once.
void TestTcpDialogs::sendRefreshIsThrottled()
{
    TCPSendInfoDlg *dialog = openSendDialog();
    auto *size = child<QLineEdit>(dialog, "SizeTextarea");
    auto *unit = child<QLabel>(dialog, "TCPSizeUnitLabel");
    struct Report
    {
        qint64 sent;
        qint64 elapsedMs;
        const char *shown;
    };
    const Report reports[] = {
        {100, 100, ""},     {200, 400, ""},     {300, 601, "300"}, {400, 700, "300"},
        {500, 1101, "300"}, {600, 1102, "600"}, {1000, 1150, "1"}, {10, 5, "10"},
    };
    for (const Report &report : reports) {
        dialog->showProgress(report.sent, 1000, report.elapsedMs);
        QVERIFY2(
            size->text() == QLatin1String(report.shown),
            qPrintable(QStringLiteral("after %1 ms: %2").arg(report.elapsedMs).arg(size->text())));
    }
    QCOMPARE(unit->text(), QStringLiteral("Bytes"));
    QCOMPARE(child<QLineEdit>(dialog, "TimeTextarea")->text(), QStringLiteral("0.005"));
    QCOMPARE(child<QLineEdit>(dialog, "RateTextarea")->text(), QStringLiteral("16"));
    QCOMPARE(child<QLabel>(dialog, "RateUnitLabel")->text(), QStringLiteral("kbps"));
}

// ---- Tab ----

void TestTcpDialogs::tabShowsTarget()
{
    QCOMPARE(child<QLabel>(m_tab, "TCPTargetIPAddressLabel")->text(), QStringLiteral("127.0.0.1"));
    QCOMPARE(child<QLabel>(m_tab, "TCPTargetTCPPortLabel")->text(), QString::number(m_portNumber));

    MavixSetting other;
    other.ipAddress = QStringLiteral("127.0.0.2");
    other.tcpDataPort = 2424;
    other.udpPort = 4661;
    m_tab->applyTargetSettingChange(other);
    QCOMPARE(child<QLabel>(m_tab, "TCPTargetIPAddressLabel")->text(), QStringLiteral("127.0.0.2"));
    QCOMPARE(child<QLabel>(m_tab, "TCPTargetTCPPortLabel")->text(), QStringLiteral("2424"));
    QCOMPARE(child<QLabel>(m_tab, "TCPTargetUDPPortLabel")->text(), QStringLiteral("4661"));

    QCOMPARE(child<QPushButton>(m_tab, "TCPRecvDlgOpenButton")->text(),
             QStringLiteral("Receive\nDialog"));
    QCOMPARE(child<QPushButton>(m_tab, "TCPSendDlgOpenButton")->text(),
             QStringLiteral("Send\nDialog"));
    QCOMPARE(child<QPushButton>(m_tab, "TCPRecvPathRefferenceButton")->text(),
             QStringLiteral("..."));
    QCOMPARE(child<QCheckBox>(m_tab, "TCPRecvFileTextConvertCheckbox")->text(),
             QStringLiteral("Save As Hex Format File"));
    QCOMPARE(child<QCheckBox>(m_tab, "TCPSendFileTextConvertCheckbox")->text(),
             QStringLiteral("Use Hex Format File"));
}

void TestTcpDialogs::tabRefusesFormatWithoutNumber()
{
    auto *field = child<QLineEdit>(m_tab, "TCPRecvFormatTextarea");
    QCOMPARE(field->text(), TCPOutputOption::defaultFormat());

    field->setFocus();
    field->clear();
    QTest::keyClicks(field, QStringLiteral("abc"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(m_reports->errors,
             QStringList{QStringLiteral("Format must include at least one number")});
    QCOMPARE(m_model->recvOption()->format(), TCPOutputOption::defaultFormat());

    // An accepted format reaches the option and the receive dialog's own field.
    field->clear();
    QTest::keyClicks(field, QStringLiteral("2-2"));
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(m_model->recvOption()->format(), QStringLiteral("2-2"));
    QCOMPARE(child<QLineEdit>(m_tab->recvDialog(), "FormatTextarea")->text(),
             QStringLiteral("2-2"));

    // A format set elsewhere comes back into the tab's field.
    QVERIFY(m_model->setRecvFormat(QStringLiteral("4")));
    QCOMPARE(field->text(), QStringLiteral("4"));

    // The check boxes set the hex-file flags.
    click(m_tab, "TCPRecvFileTextConvertCheckbox");
    QVERIFY(m_model->recvOption()->useHexFile());
    click(m_tab, "TCPSendFileTextConvertCheckbox");
    QVERIFY(m_model->sendOption()->useHexFile());
    QCOMPARE(m_reports->errors.size(), 1);
}

void TestTcpDialogs::tabReportsUnreadableSendFile()
{
    const QString missing = m_dir.filePath(QStringLiteral("no-such-folder/send.bin"));
    auto *field = child<QLineEdit>(m_tab, "TCPSendPathTextarea");
    field->setText(missing);
    QCOMPARE(m_reports->errors, QStringList{QStringLiteral("File cannot open")});
    QCOMPARE(field->text(), missing);
    QCOMPARE(m_model->sendOption()->fileName(), missing);

    // Sending it anyway is refused by the worker, and the dialog is ready again.
    TCPSendInfoDlg *dialog = openSendDialog();
    click(dialog, "SendButton");
    QTRY_VERIFY(m_reports->errors.contains(QStringLiteral("Send file cannot open")));
    QTRY_VERIFY(m_reports->results.contains(QStringLiteral("Sending finished")));
    QVERIFY(child<QPushButton>(dialog, "SendButton")->isEnabled());
    QVERIFY(child<QGroupBox>(m_tab, "TCPSendOptionGroupBox")->isEnabled());
}

// The chooser is answered as a user would; a cancelled one leaves the path as it was.
void TestTcpDialogs::tabChoosesFileThroughDialog()
{
    const QString chosen = m_dir.filePath(QStringLiteral("chosen.bin"));
    auto answer = [](const QString &title, const QString &fileName) {
        QTimer::singleShot(0, [title, fileName] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            if (!dialog) {
                qWarning("no file chooser is open");
                return;
            }
            if (dialog->windowTitle() != title)
                qWarning("unexpected chooser title %s", qPrintable(dialog->windowTitle()));
            if (!dialog->nameFilters().contains(QStringLiteral("All format file (*.*)")))
                qWarning("the chooser lacks the all-files filter");
            if (fileName.isEmpty()) {
                dialog->reject();
                return;
            }
            dialog->selectFile(fileName);
            QMetaObject::invokeMethod(dialog, "accept");
        });
    };
    auto *field = child<QLineEdit>(m_tab, "TCPRecvPathTextarea");
    answer(QStringLiteral("Select output to"), chosen);
    QTest::mouseClick(child<QPushButton>(m_tab, "TCPRecvPathRefferenceButton"), Qt::LeftButton);
    QTRY_COMPARE(field->text(), chosen);
    QCOMPARE(m_model->recvOption()->fileName(), chosen);

    answer(QStringLiteral("Select output to"), QString());
    QTest::mouseClick(child<QPushButton>(m_tab, "TCPRecvPathRefferenceButton"), Qt::LeftButton);
    QCOMPARE(field->text(), chosen);

    const QString sendFile = writeFile(QStringLiteral("pick.bin"), "abc");
    answer(QStringLiteral("Choose send file"), sendFile);
    QTest::mouseClick(child<QPushButton>(m_tab, "TCPSendPathRefferenceButton"), Qt::LeftButton);
    QTRY_COMPARE(child<QLineEdit>(m_tab, "TCPSendPathTextarea")->text(), sendFile);
    QCOMPARE(m_model->sendOption()->fileName(), sendFile);
    QVERIFY(m_reports->errors.isEmpty());
}

QTEST_MAIN(TestTcpDialogs)
#include "tst_tcpdialogs.moc"
