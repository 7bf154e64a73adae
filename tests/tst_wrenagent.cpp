// WrenAgent against the in-process emulator: every reply check in its order with its log lines,
// signal and WrenError code; the shared packet ID; setTarget keeping or replacing the socket;
// earlier replies joined in front of the current one.
#include "app/log.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "simclient.h"
#include "wren/wrenagent.h"

#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kUnansweredTimeoutMs = 150;
constexpr quint32 kPlainAddress = 0x00001000;

// A read of 4 bytes or a write of 11 22 33 44 at kPlainAddress: the WrenError code it threw, or
// -1 when it returned (its data then in *result).
int access(WrenAgent &agent, bool isRead, int timeoutMs, QByteArray *result = nullptr)
{
    try {
        const QByteArray data = isRead ? agent.read(kPlainAddress, 4, timeoutMs)
                                       : agent.write(kPlainAddress, hex("11223344"), timeoutMs);
        if (result)
            *result = data;
        return -1;
    } catch (const WrenError &error) {
        return int(error.code);
    }
}

} // namespace

class TestWrenAgent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void failureTable_data();
    void failureTable();
    void writeLengthIsTheLowByteOfTheDataSize();
    void unsentDatagram_data();
    void unsentDatagram();
    void bindFailureIsLoggedAndNotThrown();
    void packetIdIsSharedAndWraps();
    void setTargetKeepsOrReplacesTheSocket();
    void earlierReplyIsJoinedInFront_data();
    void earlierReplyIsJoinedInFront();

private:
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
    sim()->poke(kPlainAddress, hex("11223344"));
    (void)newErrorMessages();
}

QStringList TestWrenAgent::newErrorMessages()
{
    QFile file(m_dir.filePath(QStringLiteral("MavixUtility.log")));
    if (!file.open(QIODevice::ReadOnly) || !file.seek(m_logOffset))
        return {};
    const QByteArray text = file.readAll();
    m_logOffset += text.size();
    static const QRegularExpression errorLine(QStringLiteral(R"(\[ ERR\] (.*)$)"));
    QStringList messages;
    for (const QByteArray &line : text.split('\n')) {
        const QRegularExpressionMatch match = errorLine.match(QString::fromUtf8(line));
        if (match.hasMatch())
            messages << match.captured(1);
    }
    return messages;
}

void TestWrenAgent::failureTable_data()
{
    QTest::addColumn<QString>("faults");
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<int>("code"); // -1: the data comes back
    QTest::addColumn<QStringList>("logged");
    QTest::addColumn<QString>("signal"); // the request's ID is 3

    const QString lack = QStringLiteral("WREN Recv, lack of data packet");
    const QString verType = QStringLiteral("WREN Recv, VerType does is invalid");
    const QString noAck = QStringLiteral("WREN Recv, it's not Acknowledge packet");
    const QString wrongId = QStringLiteral("WREN Recv, packet ID does not match");
    const QString rw = QStringLiteral("WREN Recv, invalid R/W flag");
    const QString bus = QStringLiteral("WREN Recv, Bus Error occured");
    const QString read3 = QStringLiteral("readErrorOccured(3)");
    const QString read4 = QStringLiteral("readErrorOccured(4)");
    const QString write3 = QStringLiteral("writeErrorOccured(3)");
    const QString write4 = QStringLiteral("writeErrorOccured(4)");

    QTest::addRow("good read") << "" << true << -1 << QStringList() << "";
    QTest::addRow("good write") << "" << false << -1 << QStringList() << "";
    QTest::addRow("no reply to a write: nothing logged")
        << "drop" << false << 0 << QStringList() << "";
    QTest::addRow("no reply to a read")
        << "drop" << true << 0 << QStringList{"WREN send, response to read command is timeout"}
        << "";
    QTest::addRow("read reply shorter than its length")
        << "short" << true << 2 << QStringList{lack} << read3;
    QTest::addRow("write reply shorter than its length")
        << "short" << false << 2 << QStringList{lack} << write3;
    QTest::addRow("short reply is checked before the header")
        << "short wrong-vertype wrong-id" << true << 2 << QStringList{lack} << read4;
    QTest::addRow("VerType not 0xFF")
        << "wrong-vertype" << true << 1 << QStringList{verType} << read3;
    QTest::addRow("acknowledge bit clear")
        << "no-ack" << false << 1 << QStringList{noAck} << write3;
    QTest::addRow("packet ID differs") << "wrong-id" << true << 1 << QStringList{wrongId} << read4;
    QTest::addRow("read bit set on the reply to a write")
        << "flip-rw" << false << 1 << QStringList{rw} << read3;
    QTest::addRow("read bit clear on the reply to a read")
        << "flip-rw" << true << 1 << QStringList{rw} << write3;
    QTest::addRow("bus error on a read") << "bus-error" << true << 3 << QStringList{bus} << read3;
    QTest::addRow("bus error on a write")
        << "bus-error" << false << 3 << QStringList{bus} << write3;
    QTest::addRow("wrong VerType and wrong ID: two lines, one signal")
        << "wrong-vertype wrong-id" << true << 1 << QStringList{verType, wrongId} << read4;
    QTest::addRow("every header check fails: three lines")
        << "wrong-vertype no-ack wrong-id" << false << 1 << QStringList{verType, noAck, wrongId}
        << write4;
    QTest::addRow("bad header and flipped R/W bit")
        << "no-ack flip-rw" << true << 1 << QStringList{noAck, rw} << write3;
    QTest::addRow("bus error with a wrong ID is a bad reply, not a bus error")
        << "bus-error wrong-id" << false << 1 << QStringList{wrongId} << write4;
    QTest::addRow("bus error with flipped R/W bit")
        << "bus-error flip-rw" << true << 1 << QStringList{rw} << write3;
}

void TestWrenAgent::failureTable()
{
    QFETCH(QString, faults);
    QFETCH(bool, isRead);
    QFETCH(int, code);
    QFETCH(QStringList, logged);
    QFETCH(QString, signal);

    WrenAgent agent;
    targetSim(agent);
    // Move the packet ID away from 0 so that a wrong ID cannot pass by accident.
    for (int i = 0; i < 3; ++i)
        (void)agent.read(kPlainAddress, 1, kSimReplyTimeoutMs);
    sim()->setFaults(faultsFrom(faults.split(u' ', Qt::SkipEmptyParts)));
    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);
    QSignalSpy writeErrors(&agent, &WrenAgent::writeErrorOccured);

    const int timeoutMs = faults == u"drop" ? kUnansweredTimeoutMs : kSimReplyTimeoutMs;
    QByteArray result;
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(access(agent, isRead, timeoutMs, &result), code);
    if (code == int(WrenError::Timeout))
        QVERIFY(clock.elapsed() >= timeoutMs - 5);
    if (code == -1)
        QCOMPARE(result, hex("11223344")); // read back, or echoed
    QCOMPARE(newErrorMessages(), logged);
    QStringList emitted;
    for (const QList<QVariant> &arguments : readErrors)
        emitted << QStringLiteral("readErrorOccured(%1)").arg(arguments[0].value<quint8>());
    for (const QList<QVariant> &arguments : writeErrors)
        emitted << QStringLiteral("writeErrorOccured(%1)").arg(arguments[0].value<quint8>());
    QCOMPARE(emitted.join(u' '), signal);
}

void TestWrenAgent::writeLengthIsTheLowByteOfTheDataSize()
{
    WrenAgent agent;
    targetSim(agent);
    QByteArray data(300, Qt::Uninitialized);
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i);
    QCOMPARE(agent.write(kPlainAddress, data, kSimReplyTimeoutMs), data.left(44));
    QCOMPARE(sim()->accessLog().size(), 1);
    QCOMPARE(sim()->accessLog()[0].length, quint8(300 % 256));
    QCOMPARE(sim()->peek(kPlainAddress, 45), data.left(44) + '\0');
}

void TestWrenAgent::unsentDatagram_data()
{
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<bool>("hasSocket");
    QTest::addRow("write to port 0: logged, the reply still awaited") << false << true;
    QTest::addRow("read to port 0: logged, empty data at once") << true << true;
    QTest::addRow("write before any target") << false << false;
    QTest::addRow("read before any target") << true << false;
}

void TestWrenAgent::unsentDatagram()
{
    QFETCH(bool, isRead);
    QFETCH(bool, hasSocket);

    WrenAgent agent;
    if (hasSocket)
        targetSim(agent);
    // Port 0 is the initial target port, so before any target this leaves the agent without a
    // socket; after one the kernel refuses a datagram to port 0 without it leaving the host.
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
    QCOMPARE(agent.findChildren<QUdpSocket *>().size(), hasSocket ? 1 : 0);
    const SimCounters before = sim()->counters();
    QElapsedTimer clock;
    clock.start();
    QByteArray result("unchanged");
    QCOMPARE(access(agent, isRead, kUnansweredTimeoutMs, &result),
             isRead ? -1 : int(WrenError::Timeout));
    if (isRead)
        QVERIFY(result.isEmpty() && clock.elapsed() < kUnansweredTimeoutMs);
    else if (hasSocket)
        QVERIFY(clock.elapsed() >= kUnansweredTimeoutMs - 5);
    QCOMPARE(newErrorMessages(),
             QStringList{isRead ? "WREN send, fail to send read command packet"
                                : "WREN send, fail to send write command packet"});
    QCOMPARE(sim()->counters().requests + sim()->counters().ignored,
             before.requests + before.ignored); // nothing arrived
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
    targetSim(agent);
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
    for (int i = 0; i < kAccesses; ++i)
        QCOMPARE(access(agent, i % 2 == 0, kSimReplyTimeoutMs), -1);
    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), kAccesses);
    for (int i = 0; i < kAccesses; ++i) {
        QCOMPARE(log[i].packetId, quint8(i % 256));
        QCOMPARE(log[i].direction, i % 2 ? SimAccess::Write : SimAccess::Read);
    }
}

void TestWrenAgent::setTargetKeepsOrReplacesTheSocket()
{
    SimThread other; // a second device, on another port
    QVERIFY2(other.start(), qPrintable(other.errorString()));
    WrenAgent agent;
    targetSim(agent);
    const QPointer<QUdpSocket> first = agent.findChild<QUdpSocket *>();
    const quint16 firstPort = agent.localPort();
    QVERIFY(first && firstPort != 0);

    agent.setTarget(QHostAddress(QStringLiteral("127.0.0.2")), m_sim.udpPort());
    QCOMPARE(agent.targetAddress(), QHostAddress(QStringLiteral("127.0.0.2")));
    QCOMPARE(agent.findChild<QUdpSocket *>(), first.data()); // a new address alone keeps it
    QCOMPARE(agent.localPort(), firstPort);

    agent.setTarget(QHostAddress(QHostAddress::LocalHost), other.udpPort());
    QVERIFY(first.isNull()); // a new port replaces it, and the old one is deleted
    QCOMPARE(agent.findChildren<QUdpSocket *>().size(), 1);
    QVERIFY(agent.localPort() != 0);
    QCOMPARE(access(agent, true, kSimReplyTimeoutMs), -1);
    QCOMPARE(other.sim()->accessLog().size(), 1);
    QCOMPARE(sim()->accessLog().size(), 0);
    QCOMPARE(newErrorMessages(), QStringList());
}

void TestWrenAgent::earlierReplyIsJoinedInFront_data()
{
    QTest::addColumn<bool>("late");
    QTest::addRow("stale copy of the previous reply just before the current one") << false;
    QTest::addRow("late replies to timed-out reads waiting in the socket") << true;
}

void TestWrenAgent::earlierReplyIsJoinedInFront()
{
    QFETCH(bool, late);

    WrenAgent agent;
    targetSim(agent);
    if (late) {
        // Two replies held back past their time-outs, the first one short: it holds the bytes its
        // length announces only when joined with the second.
        sim()->setFaults(faultsFrom({"delay:600", "short"}));
        const quint64 sent = sim()->counters().repliesSent;
        QCOMPARE(access(agent, true, kUnansweredTimeoutMs), int(WrenError::Timeout)); // ID 0
        QCOMPARE(access(agent, true, kUnansweredTimeoutMs), int(WrenError::Timeout)); // ID 1
        QTRY_COMPARE(sim()->counters().repliesSent, sent + 2);
        sim()->setFaults(SimFaults());
        // The emulator serves one thing at a time: once this is answered, both replies are out.
        QVERIFY(RawClient().exchange(readRequest(kPlainAddress, 1), m_sim.udpPort()));
    } else {
        QCOMPARE(access(agent, true, kSimReplyTimeoutMs), -1); // ID 0: the reply to be repeated
        sim()->setFaults(faultsFrom({"stale"}));
    }
    (void)newErrorMessages();
    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);

    QCOMPARE(access(agent, true, kSimReplyTimeoutMs), int(WrenError::BadReply));
    // The earliest header is the one checked: it differs only in its packet ID.
    QCOMPARE(newErrorMessages(), QStringList{"WREN Recv, packet ID does not match"});
    QCOMPARE(readErrors.size(), 1);
    QCOMPARE(readErrors.first().first().value<quint8>(), quint8(0));
}

QTEST_GUILESS_MAIN(TestWrenAgent)
#include "tst_wrenagent.moc"
