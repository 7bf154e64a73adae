// The transfer worker on its own thread against the emulator's data port on loopback: whole files
// out and in, hex text both ways, stopping, a stuck device, a device that goes away, display
// back-pressure, and the refusals of both status machines with their log lines.
#include "reportcollector.h"

#include "app/appmodel.h"
#include "app/log.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/hexlayout.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <memory>

namespace {

constexpr int kTransferTimeoutMs = 20000;
constexpr qint64 kLargeFileBytes = 64 * 1024 * 1024;

QByteArray randomBytes(qint64 size, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    generator.fillRange(reinterpret_cast<quint32 *>(bytes.data()), size / 4);
    for (qint64 i = size / 4 * 4; i < size; ++i)
        bytes[i] = char(generator.bounded(256));
    return bytes;
}

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

QByteArray renderAll(const QString &format, const QByteArray &bytes, const char *lineEnd)
{
    qint64 position = 0;
    return HexLayout::parse(format).render(bytes, &position, lineEnd);
}

} // namespace

class TestTcpThread : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();

    void sendsFileIntact_data();
    void sendsFileIntact();
    void sendsHexTextFile_data();
    void sendsHexTextFile();
    void stopMidSendKeepsEveryCountedByte();
    void sendsAndReceivesOverOneConnection();
    void sendDisplayStopsAt64KiB();
    void stuckDeviceTimesOutOnce();
    void receivesEveryByteUntilDeviceCloses_data();
    void receivesEveryByteUntilDeviceCloses();
    void stopReceivingClosesTheConnection();
    void displayBackPressureKeepsItsBound();
    void refusesWhatTheStatusForbids_data();
    void refusesWhatTheStatusForbids();
    void connectRefusedIsReported();
    void unopenableFilesAreReported_data();
    void unopenableFilesAreReported();

private:
    void startPort();
    void pointWorkerAt(quint16 port);
    [[nodiscard]] bool waitForSendStop();
    [[nodiscard]] bool waitForRecvStop();
    [[nodiscard]] QByteArray newLog() const;
    [[nodiscard]] int logCount(const QByteArray &line) const;
    void takeDisplay();

    QTemporaryDir m_dir;
    QString m_logPath;
    qint64 m_logStart = 0;
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<ReportCollector> m_reports;
    QThread *m_thread = nullptr;
    TCPThread *m_worker = nullptr;
    std::unique_ptr<SimDataPort> m_port;

    // What the worker announced, recorded on this thread.
    QList<THREAD_STATUS> m_sendStatuses;
    QList<THREAD_STATUS> m_recvStatuses;
    QList<TCPTHREAD_ERROR> m_errors;
    qint64 m_lastSent = -1;
    qint64 m_lastRecv = -1;
    int m_writeFinished = 0;
    QByteArray m_sentText;
    qint64 m_sentTextBytes = 0;
    bool m_sentTextContiguous = true;
    bool m_drainDisplay = true;
    QByteArray m_display;
    qsizetype m_largestTake = 0;
};

void TestTcpThread::initTestCase()
{
    QVERIFY(m_dir.isValid());
    m_logPath = m_dir.filePath("MavixUtility.log");
    logOpen(m_logPath, LOG_DBG);
    m_model = std::make_unique<AppModel>();
}

void TestTcpThread::cleanupTestCase()
{
    m_model.reset();
    logClose();
}

void TestTcpThread::init()
{
    m_logStart = QFileInfo(m_logPath).size();
    m_reports = std::make_unique<ReportCollector>();
    m_sendStatuses.clear();
    m_recvStatuses.clear();
    m_errors.clear();
    m_lastSent = m_lastRecv = -1;
    m_writeFinished = 0;
    m_sentText.clear();
    m_sentTextBytes = 0;
    m_sentTextContiguous = true;
    m_drainDisplay = true;
    m_display.clear();
    m_largestTake = 0;

    TCPOutputOption *recv = m_model->recvOption();
    TCPOutputOption *send = m_model->sendOption();
    recv->setDisplayMode(TCPOutputOption::kDisplayOff);
    recv->setUseHexFile(false);
    QVERIFY(recv->setFormat(TCPOutputOption::defaultFormat()));
    QVERIFY(recv->setFileName(QString()));
    send->setShowData(false);
    send->setUseHexFile(false);
    QVERIFY(send->setFormat(TCPOutputOption::defaultFormat()));

    m_thread = new QThread;
    m_thread->start();
    m_worker = new TCPThread(m_thread);
    QCOMPARE(TCPThread::instance(), m_worker);
    connect(m_worker, &TCPThread::sendStatusChanged, this,
            [this](THREAD_STATUS, THREAD_STATUS status) { m_sendStatuses << status; });
    connect(m_worker, &TCPThread::recvStatusChanged, this,
            [this](THREAD_STATUS, THREAD_STATUS status) { m_recvStatuses << status; });
    connect(m_worker, &TCPThread::errorOccured, this,
            [this](TCPTHREAD_ERROR error) { m_errors << error; });
    connect(m_worker, &TCPThread::sendProgress, this,
            [this](qint64 sent, qint64, qint64) { m_lastSent = sent; });
    connect(m_worker, &TCPThread::recvProgress, this, [this](qint64 size) { m_lastRecv = size; });
    connect(m_worker, &TCPThread::writeFinished, this, [this] { ++m_writeFinished; });
    connect(m_worker, &TCPThread::sendStringAdded, this,
            [this](const QString &text, bool, qint64 from, qint64 bytes) {
                m_sentTextContiguous = m_sentTextContiguous && from == m_sentTextBytes;
                m_sentText += text.toLatin1();
                m_sentTextBytes += bytes;
            });
    connect(m_worker, &TCPThread::recvStringAdded, this, [this] {
        if (m_drainDisplay)
            takeDisplay();
    });
}

void TestTcpThread::cleanup()
{
    if (QTest::currentTestFailed())
        qInfo("worker log of the failed case:\n%s", newLog().constData());
    if (m_worker->recvStatus() == TS_RUN)
        m_worker->stopReceiving();
    if (m_worker->sendStatus() == TS_RUN)
        m_worker->stopSending();
    if (m_port)
        m_port->setStuck(false);
    QTRY_VERIFY_WITH_TIMEOUT(!m_worker->hasSocket(), kTransferTimeoutMs);
    m_thread->quit();
    QVERIFY(m_thread->wait(kTransferTimeoutMs));
    delete m_worker;
    m_worker = nullptr;
    QCOMPARE(TCPThread::instance(), nullptr);
    delete m_thread;
    m_thread = nullptr;
    m_port.reset();
    m_reports.reset();
    QCOMPARE(logCount("[ ERR] Invalid"), 0);
    QCOMPARE(logCount("socket is not null"), 0);
}

void TestTcpThread::startPort()
{
    m_port = std::make_unique<SimDataPort>();
    const quint16 port = m_port->start(QHostAddress::LocalHost, 0);
    QVERIFY2(port != 0, qPrintable(m_port->errorString()));
    pointWorkerAt(port);
}

void TestTcpThread::pointWorkerAt(quint16 port)
{
    MavixSetting target;
    target.ipAddress = QStringLiteral("127.0.0.1");
    target.tcpDataPort = port;
    MavixSetting::setCurrent(target);
}

bool TestTcpThread::waitForSendStop()
{
    return QTest::qWaitFor(
        [this] { return !m_sendStatuses.isEmpty() && m_sendStatuses.last() == TS_STOP; },
        kTransferTimeoutMs);
}

bool TestTcpThread::waitForRecvStop()
{
    return QTest::qWaitFor(
        [this] { return !m_recvStatuses.isEmpty() && m_recvStatuses.last() == TS_STOP; },
        kTransferTimeoutMs);
}

QByteArray TestTcpThread::newLog() const
{
    QFile file(m_logPath);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_logStart))
        return {};
    return file.readAll();
}

int TestTcpThread::logCount(const QByteArray &line) const
{
    return int(newLog().count(line));
}

void TestTcpThread::takeDisplay()
{
    const QByteArray taken = m_worker->takeRecvData(-1);
    m_largestTake = std::max(m_largestTake, taken.size());
    m_display += taken;
}

// ---- Sending ----

void TestTcpThread::sendsFileIntact_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addRow("random 8 MiB") << qint64(8 * 1024 * 1024);
    QTest::addRow("one chunk and one byte") << qint64(1025);
    QTest::addRow("one byte") << qint64(1);
    QTest::addRow("empty file") << qint64(0);
}

void TestTcpThread::sendsFileIntact()
{
    QFETCH(qint64, size);
    startPort();
    const QByteArray bytes = randomBytes(size, quint32(size));
    const QString path = m_dir.filePath("send.bin");
    QVERIFY(writeFile(path, bytes));
    QVERIFY(m_model->setSendFileName(path));

    m_worker->beginSendThread();
    QTRY_COMPARE_WITH_TIMEOUT(m_writeFinished, 1, kTransferTimeoutMs);
    QVERIFY(waitForSendStop());
    QCOMPARE(m_sendStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_RUN, TS_STOPPING, TS_STOP}));
    QCOMPARE(m_lastSent, size);
    QVERIFY(m_port->waitForConnectionsDone(1, kTransferTimeoutMs));
    const SimDataPort::Totals totals = m_port->totals();
    QCOMPARE(totals.bytes, size);
    QCOMPARE(totals.sha256, QCryptographicHash::hash(bytes, QCryptographicHash::Sha256));
    QVERIFY(m_errors.isEmpty());
    QVERIFY(m_reports->errors.isEmpty());
    // The connection outlives the last byte by the one-second reservation.
    QCOMPARE(logCount("reserve to close socket [after 1000msec]"), 1);
    QCOMPARE(logCount("send status changed: TS_STOPPING -> TS_STOP"), 1);
    QCOMPARE(logCount("send file closed"), 1);
}

void TestTcpThread::sendsHexTextFile_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("bytes");

    const QByteArray random = randomBytes(5000, 5);
    QTest::addRow("receive-side hex text, CR LF lines")
        << renderAll(TCPOutputOption::defaultFormat(), random, "\r\n") << random;
    QTest::addRow("mixed case with separators")
        << renderAll("[4]-2;", random, "\n").toLower() << random;
    QTest::addRow("blanks, junk and a lone nibble")
        << QByteArray("0A 0b\r\nz1") << QByteArray::fromHex("0a0b");
    QTest::addRow("no digit at all") << QByteArray(3000, ' ') << QByteArray();
}

void TestTcpThread::sendsHexTextFile()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, bytes);
    startPort();
    const QString path = m_dir.filePath("send.hex");
    const QString sunk = m_dir.filePath("sunk.bin");
    QVERIFY(writeFile(path, text));
    m_port->setSinkFile(sunk);
    QVERIFY(m_model->setSendFileName(path));
    m_model->setSendUseHexFile(true);

    m_worker->beginSendThread();
    QVERIFY(waitForSendStop());
    QCOMPARE(m_writeFinished, 1);
    QCOMPARE(m_lastSent, text.size()); // counted in file bytes
    QVERIFY(m_port->waitForConnectionsDone(1, kTransferTimeoutMs));
    QCOMPARE(readFile(sunk), bytes);
    QVERIFY(m_reports->errors.isEmpty());
}

void TestTcpThread::stopMidSendKeepsEveryCountedByte()
{
    startPort();
    const QString path = m_dir.filePath("large.bin");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(kLargeFileBytes));
    file.close();
    QVERIFY(m_model->setSendFileName(path));
    m_port->setStuck(true); // holds the sender in its write wait until the stop is made

    m_worker->beginSendThread();
    QTRY_VERIFY_WITH_TIMEOUT(m_port->totals().connected, kTransferTimeoutMs);
    QTRY_COMPARE(m_sendStatuses.value(1), TS_RUN);
    m_worker->stopSending();
    QCOMPARE(m_worker->sendStatus(), TS_STOPPING);
    m_port->setStuck(false);
    QVERIFY(waitForSendStop());

    QCOMPARE(m_sendStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_RUN, TS_STOPPING, TS_STOP}));
    QCOMPARE(m_writeFinished, 0);
    QVERIFY(m_port->waitForConnectionsDone(1, kTransferTimeoutMs));
    const qint64 received = m_port->totals().bytes;
    QVERIFY(received > 0);
    QVERIFY(received < kLargeFileBytes);
    QCOMPARE(received % TCPThread::kChunkBytes, 0);
    QCOMPARE(m_lastSent, received); // the last figure shown is what the device got
    QCOMPARE(logCount("stop sending"), 1);
    QVERIFY(m_reports->errors.isEmpty());
}

// Both directions share the connection: an echoing device returns the file while it is sent.
void TestTcpThread::sendsAndReceivesOverOneConnection()
{
    startPort();
    m_port->setMode(SimDataPort::Mode::Echo);
    const QByteArray bytes = randomBytes(16 * 1024 * 1024, 21);
    const QString path = m_dir.filePath("echo.bin");
    const QString back = m_dir.filePath("back.bin");
    QVERIFY(writeFile(path, bytes));
    QVERIFY(m_model->setSendFileName(path));
    QVERIFY(m_model->setRecvFileName(back));

    m_worker->beginRecvThread();
    QTRY_COMPARE(m_recvStatuses.value(1), TS_RUN);
    m_worker->beginSendThread();
    QVERIFY(waitForSendStop());
    QCOMPARE(m_writeFinished, 1);
    QTRY_COMPARE_WITH_TIMEOUT(m_lastRecv, bytes.size(), kTransferTimeoutMs);
    QVERIFY(m_worker->hasSocket()); // the receiver keeps the connection
    m_worker->stopReceiving();
    QVERIFY(waitForRecvStop());
    QVERIFY(readFile(back) == bytes);
    QVERIFY(m_reports->errors.isEmpty());
}

void TestTcpThread::sendDisplayStopsAt64KiB()
{
    startPort();
    const QByteArray bytes = randomBytes(70000, 9);
    const QString path = m_dir.filePath("shown.bin");
    QVERIFY(writeFile(path, bytes));
    QVERIFY(m_model->setSendFileName(path));
    QVERIFY(m_model->setSendFormat("2-2"));
    m_model->sendOption()->setShowData(true);

    m_worker->beginSendThread();
    QVERIFY(waitForSendStop());
    QCOMPARE(m_sentTextBytes, TCPThread::kSendDisplayLimitBytes);
    QVERIFY(m_sentTextContiguous);
    QCOMPARE(m_sentText, renderAll("2-2", bytes.left(TCPThread::kSendDisplayLimitBytes), "\n"));
    QCOMPARE(m_lastSent, bytes.size());
}

// Takes the real ten-second write time-out; run by the slow entry of the test list.
void TestTcpThread::stuckDeviceTimesOutOnce()
{
    if (qEnvironmentVariableIsEmpty("MAVIX_SLOW_TESTS"))
        QSKIP("waits for the real 10 s write time-out; set MAVIX_SLOW_TESTS=1 to run it");
    startPort();
    const QString path = m_dir.filePath("large.bin");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(kLargeFileBytes));
    file.close();
    QVERIFY(m_model->setSendFileName(path));
    m_port->setStuck(true);

    QElapsedTimer timer;
    timer.start();
    m_worker->beginSendThread();
    QTRY_COMPARE_WITH_TIMEOUT(m_errors, QList<TCPTHREAD_ERROR>{TTE_SEND_ERROR},
                              TCPThread::kWriteTimeoutMs + 5000);
    QVERIFY(timer.elapsed() >= TCPThread::kWriteTimeoutMs - 100);
    QTRY_COMPARE(m_reports->errors, QStringList{QStringLiteral("TCP write is timeout")});
    QTRY_COMPARE(m_worker->sendStatus(), TS_STOPPING);
    m_port->setStuck(false); // lets the close finish without a second wait
    QVERIFY(waitForSendStop());
    QCOMPARE(m_sendStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_RUN, TS_STOPPING, TS_STOP}));
    QCOMPARE(m_writeFinished, 0);
    QCOMPARE(logCount("TCP write is timeout"), 1);
    QCOMPARE(m_errors.size(), 1);
}

// ---- Receiving ----

void TestTcpThread::receivesEveryByteUntilDeviceCloses_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<bool>("toFile");
    QTest::addColumn<bool>("hexFile");
    QTest::addColumn<int>("displayMode");
    QTest::addColumn<QString>("format");

    const QString standard = TCPOutputOption::defaultFormat();
    QTest::addRow("raw file, display off, 3 MiB and a bit")
        << qint64(3 * 1024 * 1024 + 123) << true << false << TCPOutputOption::kDisplayOff
        << standard;
    QTest::addRow("hex file in format [4] 2-2;, display off")
        << qint64(512 * 1024 + 7) << true << true << TCPOutputOption::kDisplayOff
        << QStringLiteral("[4] 2-2;");
    QTest::addRow("raw file with text display")
        << qint64(200 * 1024 + 3) << true << false << TCPOutputOption::kDisplayText << standard;
    QTest::addRow("hex file and hex display in format 8")
        << qint64(100 * 1024 + 5) << true << true << TCPOutputOption::kDisplayHex
        << QStringLiteral("8");
    QTest::addRow("display only, no file")
        << qint64(64 * 1024 + 1) << false << false << TCPOutputOption::kDisplayHex << standard;
}

void TestTcpThread::receivesEveryByteUntilDeviceCloses()
{
    QFETCH(qint64, size);
    QFETCH(bool, toFile);
    QFETCH(bool, hexFile);
    QFETCH(int, displayMode);
    QFETCH(QString, format);

    startPort();
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(size);
    const QString path = toFile ? m_dir.filePath("recv.out") : QString();
    QVERIFY(m_model->setRecvFileName(path));
    m_model->setRecvUseHexFile(hexFile);
    QVERIFY(m_model->setRecvFormat(format));
    m_model->recvOption()->setDisplayMode(displayMode);

    m_worker->beginRecvThread();
    QVERIFY(waitForRecvStop());
    takeDisplay();

    QCOMPARE(m_recvStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_RUN, TS_STOP}));
    QCOMPARE(m_errors, QList<TCPTHREAD_ERROR>{TTE_CONNECT_ERROR});
    QTRY_COMPARE(m_reports->errors.size(), 1);
    QVERIFY2(m_reports->errors.first().startsWith("TCP error occured: "),
             qPrintable(m_reports->errors.first()));
    QCOMPARE(m_lastRecv, size);
    const QByteArray sent = SimDataPort::pattern(0, size);
    const QByteArray hexText = renderAll(format, sent, "\r\n");
    if (toFile)
        QCOMPARE(readFile(path), hexFile ? hexText : sent);
    // The display shows the stream from its start; what the socket still held when the device
    // closed goes to the file, and to the display only as far as its buffer has room.
    if (displayMode == TCPOutputOption::kDisplayText)
        QVERIFY(!m_display.isEmpty() && sent.startsWith(m_display));
    else if (displayMode == TCPOutputOption::kDisplayHex)
        QVERIFY(!m_display.isEmpty() && hexText.startsWith(m_display));
    else
        QVERIFY(m_display.isEmpty());
    QVERIFY(m_largestTake <= TCPThread::kRecvTextLimitBytes);
    QCOMPARE(logCount("recv file closed"), toFile ? 1 : 0);
}

void TestTcpThread::stopReceivingClosesTheConnection()
{
    startPort();
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(-1);
    m_port->setSourceRate(4 * 1024 * 1024);
    const QString path = m_dir.filePath("endless.bin");
    QVERIFY(m_model->setRecvFileName(path));

    m_worker->beginRecvThread();
    QTRY_VERIFY_WITH_TIMEOUT(m_lastRecv > 256 * 1024, kTransferTimeoutMs);
    m_worker->stopReceiving();
    QVERIFY(waitForRecvStop());
    QTRY_VERIFY(!m_worker->hasSocket());
    QVERIFY(m_port->waitForConnectionsDone(1, kTransferTimeoutMs));

    QCOMPARE(m_recvStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_RUN, TS_STOP}));
    QVERIFY(m_errors.isEmpty());
    const QByteArray got = readFile(path);
    QCOMPARE(got.size(), m_lastRecv);
    QCOMPARE(got, SimDataPort::pattern(0, got.size()));
    QCOMPARE(logCount("stop receiving"), 1);
    QCOMPARE(logCount("socket closed"), 1);
}

void TestTcpThread::displayBackPressureKeepsItsBound()
{
    startPort();
    m_port->setMode(SimDataPort::Mode::Source);
    m_port->setSourceBytes(-1);
    m_model->recvOption()->setDisplayMode(TCPOutputOption::kDisplayHex);
    m_drainDisplay = false; // a slow dialog: it takes the text on its own timer only

    QTimer slowDialog;
    connect(&slowDialog, &QTimer::timeout, this, [this] { takeDisplay(); });
    slowDialog.start(20);
    m_worker->beginRecvThread();
    QTRY_VERIFY_WITH_TIMEOUT(m_display.size() > 40000, kTransferTimeoutMs);
    m_worker->stopReceiving();
    QVERIFY(waitForRecvStop());
    slowDialog.stop();
    takeDisplay();

    QVERIFY2(m_largestTake <= TCPThread::kRecvTextLimitBytes,
             qPrintable(QString::number(m_largestTake)));
    // Held back, not dropped: the text is that of every byte received.
    QCOMPARE(m_display, renderAll(TCPOutputOption::defaultFormat(),
                                  SimDataPort::pattern(0, m_lastRecv), "\r\n"));
}

void TestTcpThread::refusesWhatTheStatusForbids_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<QByteArray>("warning");

    QTest::addRow("begin sending twice")
        << "send twice" << QByteArray("Invalid send status: TS_RUN");
    QTest::addRow("begin receiving twice")
        << "recv twice" << QByteArray("Invalid recv status: TS_RUN");
    QTest::addRow("close while receiving")
        << "close while receiving"
        << QByteArray("tcp recv is running. so cancel to close socket: send[TS_STOP] recv[TS_RUN]");
    QTest::addRow("close while sending")
        << "close while sending"
        << QByteArray("tcp send is running. so cancel to close socket: send[TS_RUN] recv[TS_STOP]");
    QTest::addRow("stop sending while stopped")
        << "stop sending" << QByteArray("Invalid send status: TS_STOP");
    QTest::addRow("stop receiving while stopped")
        << "stop receiving" << QByteArray("Invalid recv status: TS_STOP");
    QTest::addRow("close without a socket") << "close" << QByteArray("already socket closed");
}

void TestTcpThread::refusesWhatTheStatusForbids()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, warning);

    startPort();
    const QString path = m_dir.filePath("large.bin");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(kLargeFileBytes));
    file.close();
    QVERIFY(m_model->setSendFileName(path));
    const bool sending = action.contains("send");
    if (sending)
        m_port->setStuck(true); // keeps the send running
    else
        m_port->setMode(SimDataPort::Mode::Source);

    // Requests made while the send loop runs reach the worker in one of the loop's event turns;
    // the stuck device holds the loop until the request is queued, then lets it go on.
    if (action == "send twice") {
        m_worker->beginSendThread();
        QTRY_VERIFY_WITH_TIMEOUT(m_port->totals().connected, kTransferTimeoutMs);
        QTRY_COMPARE(m_sendStatuses.value(1), TS_RUN);
        m_worker->beginSendThread();
        m_port->setStuck(false);
    } else if (action == "recv twice") {
        m_worker->beginRecvThread();
        m_worker->beginRecvThread();
    } else if (action == "close while receiving") {
        m_worker->beginRecvThread();
        QTRY_COMPARE(m_recvStatuses.value(1), TS_RUN);
        m_worker->closeSocket();
    } else if (action == "close while sending") {
        m_worker->beginSendThread();
        QTRY_VERIFY_WITH_TIMEOUT(m_port->totals().connected, kTransferTimeoutMs);
        QTRY_COMPARE(m_sendStatuses.value(1), TS_RUN);
        m_worker->closeSocket();
        m_port->setStuck(false);
    } else if (action == "stop sending") {
        m_worker->stopSending();
    } else if (action == "stop receiving") {
        m_worker->stopReceiving();
    } else {
        m_worker->closeSocket();
    }
    QTRY_COMPARE(logCount("[ WRN] " + warning), 1);
    if (action.startsWith("close while"))
        QVERIFY(m_worker->hasSocket());
    if (action == "send twice" || action == "close while sending")
        QCOMPARE(m_worker->sendStatus(), TS_RUN);
    if (action == "recv twice" || action == "close while receiving")
        QCOMPARE(m_worker->recvStatus(), TS_RUN);
    QCOMPARE(logCount("[ WRN]"), 1);
}

void TestTcpThread::connectRefusedIsReported()
{
    quint16 closedPort = 0;
    {
        QTcpServer server; // a port that was free a moment ago and is closed again
        QVERIFY(server.listen(QHostAddress::LocalHost, 0));
        closedPort = server.serverPort();
    }
    pointWorkerAt(closedPort);

    m_worker->beginRecvThread();
    QVERIFY(waitForRecvStop());
    QCOMPARE(m_recvStatuses, (QList<THREAD_STATUS>{TS_STARTING, TS_STOP}));
    QCOMPARE(m_errors, QList<TCPTHREAD_ERROR>{TTE_CONNECT_ERROR});
    QTRY_COMPARE(m_reports->errors, QStringList{QStringLiteral("Fail to connect to device")});
    QTRY_VERIFY(!m_worker->hasSocket());
    QCOMPARE(logCount("[ ERR] Fail to connect to device"), 1);
}

void TestTcpThread::unopenableFilesAreReported_data()
{
    QTest::addColumn<bool>("sending");
    QTest::addColumn<QString>("message");
    QTest::addRow("send file removed after it was chosen") << true << "Send file cannot open";
    QTest::addRow("receive folder removed after it was chosen")
        << false << "Receive file cannot open";
}

void TestTcpThread::unopenableFilesAreReported()
{
    QFETCH(bool, sending);
    QFETCH(QString, message);
    startPort();
    QTemporaryDir folder(m_dir.filePath("gone-XXXXXX"));
    const QString path = folder.filePath("file.bin");
    QVERIFY(writeFile(path, "x"));
    QVERIFY(sending ? m_model->setSendFileName(path) : m_model->setRecvFileName(path));
    QVERIFY(folder.remove());

    if (sending)
        m_worker->beginSendThread();
    else
        m_worker->beginRecvThread();
    QVERIFY(sending ? waitForSendStop() : waitForRecvStop());
    QCOMPARE(sending ? m_sendStatuses : m_recvStatuses,
             (QList<THREAD_STATUS>{TS_STARTING, TS_STOP}));
    QTRY_COMPARE(m_reports->errors, QStringList{message});
    QVERIFY(!m_worker->hasSocket());
    QCOMPARE(m_port->totals().connections, 0);
}

QTEST_GUILESS_MAIN(TestTcpThread)
#include "tst_tcpthread.moc"
