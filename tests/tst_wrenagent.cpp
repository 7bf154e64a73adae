// WrenAgent against the in-process emulator: every reply check in its order with its log lines,
// signal and WrenError code; the shared packet ID; setTarget keeping or replacing the socket;
// stale replies joined in front of the current one.
#include "app/log.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUdpSocket>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kAnsweredTimeoutMs = 5000; // only waited out if the emulator is broken
constexpr int kUnansweredTimeoutMs = 150;
constexpr quint32 kPlainAddress = 0x00001000;

SimFaults faultsFrom(const QStringList &names)
{
    SimFaults faults;
    for (const QString &name : names) {
        if (name == u"drop")
            faults.dropEveryNth = 1;
        else if (name == u"wrong-vertype")
            faults.wrongVerType = true;
        else if (name == u"no-ack")
            faults.ackClear = true;
        else if (name == u"wrong-id")
            faults.wrongPacketId = true;
        else if (name == u"flip-rw")
            faults.flipReadWrite = true;
        else if (name == u"short")
            faults.shortReply = true;
        else if (name == u"bus-error")
            faults.busError = true;
        else if (name == u"bus-error-range") {
            faults.busErrorRange = true;
            faults.busErrorFirst = kPlainAddress + 2;
            faults.busErrorLast = kPlainAddress + 2;
        } else
            qFatal("unknown fault %s", qPrintable(name));
    }
    return faults;
}

struct LogLine
{
    QString level;
    QString message;
};

} // namespace

class TestWrenAgent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void readAndWriteRoundTrip();
    void writeLengthIsTheLowByteOfTheDataSize();
    void failureTable_data();
    void failureTable();
    void sendFailure_data();
    void sendFailure();
    void accessBeforeAnyTarget();
    void bindFailureIsLoggedAndNotThrown();
    void packetIdIsSharedAndWraps();
    void setTarget_data();
    void setTarget();
    void staleReplyIsJoinedInFront();
    void lateReplyToATimedOutReadSpoilsTheNextOne();

private:
    [[nodiscard]] QList<LogLine> newLogLines();
    [[nodiscard]] QStringList newErrorMessages();
    void targetSim(WrenAgent &agent) const
    {
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
    }
    MavixSim *sim() const { return m_sim.sim(); }

    SimThread m_sim;
    QTemporaryDir m_dir;
    qint64 m_logOffset = 0;
};

void TestWrenAgent::initTestCase()
{
    QVERIFY(m_dir.isValid());
    logOpen(m_dir.filePath(QStringLiteral("MavixUtility.log")), LOG_DBG);
    QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
}

void TestWrenAgent::cleanupTestCase()
{
    m_sim.stop();
    logClose();
}

void TestWrenAgent::init()
{
    sim()->setFaults(SimFaults());
    sim()->clearAccessLog();
    (void)newLogLines();
}

QList<LogLine> TestWrenAgent::newLogLines()
{
    QFile file(m_dir.filePath(QStringLiteral("MavixUtility.log")));
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_logOffset))
        return {};
    const QByteArray text = file.readAll();
    m_logOffset += text.size();
    static const QRegularExpression line(QStringLiteral(R"(\[\s*(\w+)\] (.*)$)"));
    QList<LogLine> lines;
    for (const QByteArray &raw : text.split('\n')) {
        const QRegularExpressionMatch match = line.match(QString::fromUtf8(raw));
        if (match.hasMatch())
            lines.append({match.captured(1), match.captured(2)});
    }
    return lines;
}

QStringList TestWrenAgent::newErrorMessages()
{
    QStringList messages;
    for (const LogLine &line : newLogLines()) {
        if (line.level == u"ERR")
            messages.append(line.message);
    }
    return messages;
}

void TestWrenAgent::readAndWriteRoundTrip()
{
    WrenAgent agent;
    targetSim(agent);
    const QByteArray data = QByteArray::fromHex("DEADBEEF0102");
    QCOMPARE(agent.write(kPlainAddress, data, kAnsweredTimeoutMs), data); // echoed
    QCOMPARE(agent.read(kPlainAddress, 6, kAnsweredTimeoutMs), data);
    QCOMPARE(agent.read(kPlainAddress, 0, kAnsweredTimeoutMs), QByteArray());
    QCOMPARE(agent.read(0xFFFFFF18, 4, kAnsweredTimeoutMs, true), QByteArray::fromHex("7F000001"));
    QCOMPARE(newErrorMessages(), QStringList());

    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), 4);
    QCOMPARE(log[0].direction, SimAccess::Write);
    QCOMPARE(log[0].length, quint8(6));
    QCOMPARE(log[1].direction, SimAccess::Read);
    QCOMPARE(log[3].address, 0xFFFFFF18u);
}

void TestWrenAgent::writeLengthIsTheLowByteOfTheDataSize()
{
    WrenAgent agent;
    targetSim(agent);
    QByteArray data(300, Qt::Uninitialized);
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i);
    const QByteArray echoed = agent.write(kPlainAddress, data, kAnsweredTimeoutMs);
    QCOMPARE(echoed, data.left(44));
    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), 1);
    QCOMPARE(log[0].length, quint8(300 % 256));
    QCOMPARE(log[0].data, data.left(44));
    QCOMPARE(sim()->peek(kPlainAddress + 44, 1), QByteArray(1, '\0'));
}

void TestWrenAgent::failureTable_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<int>("code"); // -1: the data comes back
    QTest::addColumn<QStringList>("logged");
    QTest::addColumn<QString>("signal");     // "read", "write" or empty
    QTest::addColumn<int>("signalIdOffset"); // reply ID minus request ID

    const QString read = QStringLiteral("read");
    const QString write = QStringLiteral("write");
    const QString none;
    const QString lack = QStringLiteral("WREN Recv, lack of data packet");
    const QString verType = QStringLiteral("WREN Recv, VerType does is invalid");
    const QString noAck = QStringLiteral("WREN Recv, it's not Acknowledge packet");
    const QString wrongId = QStringLiteral("WREN Recv, packet ID does not match");
    const QString rw = QStringLiteral("WREN Recv, invalid R/W flag");
    const QString bus = QStringLiteral("WREN Recv, Bus Error occured");

    QTest::addRow("good read") << QStringList() << true << -1 << QStringList() << none << 0;
    QTest::addRow("good write") << QStringList() << false << -1 << QStringList() << none << 0;
    QTest::addRow("no reply to a write: nothing logged")
        << QStringList{"drop"} << false << 0 << QStringList() << none << 0;
    QTest::addRow("no reply to a read")
        << QStringList{"drop"} << true << 0
        << QStringList{"WREN send, response to read command is timeout"} << none << 0;
    QTest::addRow("read reply shorter than its length")
        << QStringList{"short"} << true << 2 << QStringList{lack} << read << 0;
    QTest::addRow("write reply shorter than its length")
        << QStringList{"short"} << false << 2 << QStringList{lack} << write << 0;
    QTest::addRow("short reply is checked before the header")
        << QStringList{"short", "wrong-vertype", "wrong-id"} << true << 2 << QStringList{lack}
        << read << 1;
    QTest::addRow("VerType not 0xFF")
        << QStringList{"wrong-vertype"} << true << 1 << QStringList{verType} << read << 0;
    QTest::addRow("acknowledge bit clear")
        << QStringList{"no-ack"} << false << 1 << QStringList{noAck} << write << 0;
    QTest::addRow("packet ID differs")
        << QStringList{"wrong-id"} << true << 1 << QStringList{wrongId} << read << 1;
    QTest::addRow("read bit set on the reply to a write")
        << QStringList{"flip-rw"} << false << 1 << QStringList{rw} << read << 0;
    QTest::addRow("read bit clear on the reply to a read")
        << QStringList{"flip-rw"} << true << 1 << QStringList{rw} << write << 0;
    QTest::addRow("bus error on a read")
        << QStringList{"bus-error"} << true << 3 << QStringList{bus} << read << 0;
    QTest::addRow("bus error on a write")
        << QStringList{"bus-error"} << false << 3 << QStringList{bus} << write << 0;
    QTest::addRow("bus error in an address range")
        << QStringList{"bus-error-range"} << true << 3 << QStringList{bus} << read << 0;
    QTest::addRow("wrong VerType and wrong ID: two lines, one signal")
        << QStringList{"wrong-vertype", "wrong-id"} << true << 1 << QStringList{verType, wrongId}
        << read << 1;
    QTest::addRow("every header check fails: three lines")
        << QStringList{"wrong-vertype", "no-ack", "wrong-id"} << false << 1
        << QStringList{verType, noAck, wrongId} << write << 1;
    QTest::addRow("bad header and flipped R/W bit")
        << QStringList{"no-ack", "flip-rw"} << true << 1 << QStringList{noAck, rw} << write << 0;
    QTest::addRow("bus error with a wrong ID is a bad reply, not a bus error")
        << QStringList{"bus-error", "wrong-id"} << false << 1 << QStringList{wrongId} << write << 1;
    QTest::addRow("bus error with flipped R/W bit")
        << QStringList{"bus-error", "flip-rw"} << true << 1 << QStringList{rw} << write << 0;
}

void TestWrenAgent::failureTable()
{
    QFETCH(QStringList, faults);
    QFETCH(bool, isRead);
    QFETCH(int, code);
    QFETCH(QStringList, logged);
    QFETCH(QString, signal);
    QFETCH(int, signalIdOffset);

    WrenAgent agent;
    targetSim(agent);
    // Move the packet ID away from 0 so that a wrong ID cannot pass by accident.
    for (int i = 0; i < 3; ++i)
        (void)agent.read(kPlainAddress, 1, kAnsweredTimeoutMs);
    (void)newLogLines();
    sim()->setFaults(faultsFrom(faults));
    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);
    QSignalSpy writeErrors(&agent, &WrenAgent::writeErrorOccured);

    const int timeoutMs = faults.contains(u"drop") ? kUnansweredTimeoutMs : kAnsweredTimeoutMs;
    const QByteArray data = QByteArray::fromHex("11223344");
    int thrown = -1;
    QByteArray result;
    QElapsedTimer clock;
    clock.start();
    try {
        result = isRead ? agent.read(kPlainAddress, 4, timeoutMs)
                        : agent.write(kPlainAddress, data, timeoutMs);
    } catch (const WrenError &error) {
        thrown = int(error.code);
    }
    QCOMPARE(thrown, code);
    if (code == WrenError::Timeout)
        QVERIFY(clock.elapsed() >= timeoutMs - 5);
    if (code == -1)
        QCOMPARE(result.size(), 4);
    QCOMPARE(newErrorMessages(), logged);

    const quint8 requestId = 3;
    QCOMPARE(readErrors.size(), signal == u"read" ? 1 : 0);
    QCOMPARE(writeErrors.size(), signal == u"write" ? 1 : 0);
    if (!signal.isEmpty()) {
        const QSignalSpy &spy = signal == u"read" ? readErrors : writeErrors;
        QCOMPARE(spy.first().first().value<quint8>(), quint8(requestId + signalIdOffset));
    }
}

void TestWrenAgent::sendFailure_data()
{
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<QString>("logged");
    QTest::addRow("write: logged, then the reply is still awaited")
        << false << QStringLiteral("WREN send, fail to send write command packet");
    QTest::addRow("read: logged, empty data at once")
        << true << QStringLiteral("WREN send, fail to send read command packet");
}

void TestWrenAgent::sendFailure()
{
    QFETCH(bool, isRead);
    QFETCH(QString, logged);

    WrenAgent agent;
    targetSim(agent);
    // The kernel refuses a datagram to port 0, so the send fails without leaving the host.
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
    QVERIFY(agent.localPort() != 0);
    const SimCounters before = sim()->counters();
    QElapsedTimer clock;
    clock.start();
    int thrown = -1;
    QByteArray result("unchanged");
    try {
        result = isRead ? agent.read(kPlainAddress, 4, kUnansweredTimeoutMs)
                        : agent.write(kPlainAddress, "abcd", kUnansweredTimeoutMs);
    } catch (const WrenError &error) {
        thrown = int(error.code);
    }
    if (isRead) {
        QCOMPARE(thrown, -1);
        QCOMPARE(result, QByteArray());
        QVERIFY(clock.elapsed() < kUnansweredTimeoutMs);
    } else {
        QCOMPARE(thrown, int(WrenError::Timeout));
        QVERIFY(clock.elapsed() >= kUnansweredTimeoutMs - 5);
    }
    QCOMPARE(newErrorMessages(), QStringList{logged});
    QCOMPARE(sim()->counters().requests, before.requests); // nothing arrived
    QCOMPARE(sim()->counters().ignored, before.ignored);
}

void TestWrenAgent::accessBeforeAnyTarget()
{
    // Port 0 is the initial target port: no socket exists yet, and an access fails like an
    // unsent datagram instead of crashing.
    WrenAgent agent;
    QCOMPARE(agent.targetAddress(), QHostAddress(QHostAddress::LocalHost));
    QCOMPARE(agent.targetPort(), quint16(0));
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
    QCOMPARE(agent.localPort(), quint16(0));
    QVERIFY(agent.findChildren<QUdpSocket *>().isEmpty());
    QCOMPARE(agent.read(kPlainAddress, 4, kUnansweredTimeoutMs), QByteArray());
    QVERIFY_THROWS_EXCEPTION(WrenError, agent.write(kPlainAddress, "ab", kUnansweredTimeoutMs));
    QCOMPARE(newErrorMessages(), (QStringList{"WREN send, fail to send read command packet",
                                              "WREN send, fail to send write command packet"}));
}

void TestWrenAgent::bindFailureIsLoggedAndNotThrown()
{
    WrenAgent agent;
    // Cap the descriptor count at the lowest free descriptor, so the new socket cannot be made.
    rlimit saved{};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &saved), 0);
    const int lowestFree = open("/dev/null", O_RDONLY);
    QVERIFY(lowestFree >= 0);
    close(lowestFree);
    rlimit capped = saved;
    capped.rlim_cur = rlim_t(lowestFree);
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &capped), 0);
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &saved), 0);

    QCOMPARE(newErrorMessages(), QStringList{"UDP socket bind error"});
    QCOMPARE(agent.findChildren<QUdpSocket *>().size(), 1); // the unbound socket stays
    QCOMPARE(agent.localPort(), quint16(0));
    QCOMPARE(agent.targetPort(), m_sim.udpPort());
}

void TestWrenAgent::packetIdIsSharedAndWraps()
{
    WrenAgent agent;
    targetSim(agent);
    constexpr int kAccesses = 260;
    for (int i = 0; i < kAccesses; ++i) {
        if (i % 2)
            (void)agent.write(kPlainAddress, QByteArray(1, char(i)), kAnsweredTimeoutMs);
        else
            (void)agent.read(kPlainAddress, 1, kAnsweredTimeoutMs);
    }
    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), kAccesses);
    for (int i = 0; i < kAccesses; ++i) {
        QCOMPARE(log[i].packetId, quint8(i % 256));
        QCOMPARE(log[i].direction, i % 2 ? SimAccess::Write : SimAccess::Read);
    }
    QCOMPARE(log[256].packetId, quint8(0));
}

void TestWrenAgent::setTarget_data()
{
    QTest::addColumn<QString>("newAddress");
    QTest::addColumn<bool>("newPort");
    QTest::addRow("same port, new address keeps the socket") << "127.0.0.2" << false;
    QTest::addRow("same port, same address keeps the socket") << "127.0.0.1" << false;
    QTest::addRow("new port replaces the socket") << "127.0.0.1" << true;
    QTest::addRow("new port and new address replace the socket") << "127.0.0.3" << true;
}

void TestWrenAgent::setTarget()
{
    QFETCH(QString, newAddress);
    QFETCH(bool, newPort);

    SimThread other; // a second device, on another port
    QVERIFY2(other.start(), qPrintable(other.errorString()));
    WrenAgent agent;
    targetSim(agent);
    QPointer<QUdpSocket> before = agent.findChild<QUdpSocket *>();
    QVERIFY(before);
    const quint16 localBefore = agent.localPort();
    QVERIFY(localBefore != 0);

    const quint16 port = newPort ? other.udpPort() : m_sim.udpPort();
    agent.setTarget(QHostAddress(newAddress), port);
    QCOMPARE(agent.targetAddress(), QHostAddress(newAddress));
    QCOMPARE(agent.targetPort(), port);
    QCOMPARE(agent.findChildren<QUdpSocket *>().size(), 1);
    if (newPort) {
        QVERIFY(before.isNull()); // deleted, not left for later
        QVERIFY(agent.localPort() != 0);
    } else {
        QCOMPARE(agent.findChild<QUdpSocket *>(), before.data());
        QCOMPARE(agent.localPort(), localBefore);
    }
    // Whatever the socket, the next access reaches the device listening there, if any.
    if (newAddress == u"127.0.0.1") {
        MavixSim *target = newPort ? other.sim() : sim();
        target->clearAccessLog();
        (void)agent.read(kPlainAddress, 2, kAnsweredTimeoutMs);
        QCOMPARE(target->accessLog().size(), 1);
    }
    QCOMPARE(newErrorMessages(), QStringList());
}

void TestWrenAgent::staleReplyIsJoinedInFront()
{
    WrenAgent agent;
    targetSim(agent);
    const quint64 sentBefore = sim()->counters().repliesSent;
    (void)agent.read(kPlainAddress, 4, kAnsweredTimeoutMs); // ID 0: the reply to be repeated
    SimFaults faults;
    faults.staleReply = true;
    sim()->setFaults(faults);
    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);

    QVERIFY_THROWS_EXCEPTION(WrenError, agent.read(kPlainAddress, 4, kAnsweredTimeoutMs));
    QTRY_COMPARE(sim()->counters().repliesSent, sentBefore + 1 + 2);
    // The stale header is the one checked: it differs only in its packet ID.
    QCOMPARE(newErrorMessages(), QStringList{"WREN Recv, packet ID does not match"});
    QCOMPARE(readErrors.size(), 1);
    QCOMPARE(readErrors.first().first().value<quint8>(), quint8(0));
}

void TestWrenAgent::lateReplyToATimedOutReadSpoilsTheNextOne()
{
    WrenAgent agent;
    targetSim(agent);
    SimFaults faults;
    faults.delayMs = 3 * kUnansweredTimeoutMs;
    sim()->setFaults(faults);
    try {
        (void)agent.read(kPlainAddress, 4, kUnansweredTimeoutMs); // ID 0
        QFAIL("the delayed reply was not awaited out");
    } catch (const WrenError &error) {
        QCOMPARE(error.code, WrenError::Timeout);
    }
    // The late reply arrives and waits in the agent's socket.
    QUdpSocket *socket = agent.findChild<QUdpSocket *>();
    QVERIFY(socket);
    QTRY_VERIFY(socket->hasPendingDatagrams());
    sim()->setFaults(SimFaults());
    (void)newLogLines();

    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);
    try {
        (void)agent.read(kPlainAddress, 4, kAnsweredTimeoutMs); // ID 1
        QFAIL("the late reply was taken for the current one");
    } catch (const WrenError &error) {
        QCOMPARE(error.code, WrenError::BadReply);
    }
    QCOMPARE(newErrorMessages(), QStringList{"WREN Recv, packet ID does not match"});
    QCOMPARE(readErrors.size(), 1);
    QCOMPARE(readErrors.first().first().value<quint8>(), quint8(0));
}

QTEST_GUILESS_MAIN(TestWrenAgent)
#include "tst_wrenagent.moc"
