// WrenAgent against the in-process emulator and a hostile peer on loopback: the reply checks with
// their log lines, signal and WrenError; which datagrams are taken as the reply and which are
// discarded; waits that keep the event loop running; the shared packet ID; setTarget.
#include "app/accessgate.h"
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
#include <QTimer>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int kUnansweredTimeoutMs = 150;
constexpr quint32 kPlainAddress = 0x00001000;
const QString kReadTimeout = QStringLiteral("WREN send, response to read command is timeout");
const QString kWrongId = QStringLiteral("WREN Recv, packet ID does not match");

// A read of 4 bytes or a write of 11 22 33 44 at kPlainAddress: the WrenError code it threw, or
// -1 when it returned (its data then in *result, the error's reason in *reason).
int access(WrenAgent &agent, bool isRead, int timeoutMs, QByteArray *result = nullptr,
           QString *reason = nullptr)
{
    try {
        const QByteArray data = isRead ? agent.read(kPlainAddress, 4, timeoutMs)
                                       : agent.write(kPlainAddress, hex("11223344"), timeoutMs);
        if (result)
            *result = data;
        return -1;
    } catch (const WrenError &error) {
        if (reason)
            *reason = error.reason;
        return int(error.code);
    }
}

// A device that answers the first request with the datagrams of a script (each a spoilt copy of
// the right reply, or one sent from a second port) and every later one correctly.
class HostilePeer
{
public:
    explicit HostilePeer(const QString &script) : m_script(script.split(u' ', Qt::SkipEmptyParts))
    {
        m_socket.bind(QHostAddress::LocalHost, 0);
        m_other.bind(QHostAddress::LocalHost, 0);
        QObject::connect(&m_socket, &QUdpSocket::readyRead, &m_socket, [this] { answer(); });
    }
    quint16 port() const { return m_socket.localPort(); }
    quint16 otherPort() const { return m_other.localPort(); }

private:
    void answer()
    {
        while (m_socket.hasPendingDatagrams()) {
            const QNetworkDatagram request = m_socket.receiveDatagram();
            QByteArray good = request.data().left(8) + hex("DEADBEEF");
            good[1] = char(good[1] | 0x08);
            const QStringList script = m_first ? m_script : QStringList{"good"};
            m_first = false;
            for (const QString &step : script) {
                QByteArray reply = good;
                QUdpSocket *from = &m_socket;
                if (step == u"id+1")
                    reply[2] = char(reply[2] + 1);
                else if (step == u"rw")
                    reply[1] = char(reply[1] ^ 0x40);
                else if (step == u"addr+1")
                    reply[7] = char(reply[7] + 1);
                else if (step == u"len0")
                    reply = reply.left(3) + '\0' + reply.mid(4, 4);
                else if (step == u"runt")
                    reply = reply.left(3);
                else if (step.startsWith(u"ver:"))
                    reply[0] = char(step.mid(4).toUInt(nullptr, 16));
                else if (step == u"other")
                    from = &m_other;
                from->writeDatagram(reply, request.senderAddress(), request.senderPort());
            }
        }
    }

    QStringList m_script;
    bool m_first = true;
    QUdpSocket m_socket;
    QUdpSocket m_other;
};

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
    void replyMatching_data();
    void replyMatching();
    void lateReplyThenGoodReads();
    void unsentRequestFails_data();
    void unsentRequestFails();
    void waitKeepsTheEventLoopRunning();
    void writeLengthIsTheLowByteOfTheDataSize();
    void bindFailureIsLoggedAndNotThrown();
    void packetIdIsSharedAndWraps();
    void setTargetKeepsOrReplacesTheSocket();

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
    const QString rw = QStringLiteral("WREN Recv, invalid R/W flag");
    const QString bus = QStringLiteral("WREN Recv, Bus Error occured");
    const bool read = true;
    QTest::addRow("good read") << "" << read << -1 << QStringList() << "";
    QTest::addRow("good write") << "" << !read << -1 << QStringList() << "";
    QTest::addRow("no reply to a write: nothing logged") << "drop" << !read << 0 << QStringList()
                                                         << "";
    QTest::addRow("no reply to a read") << "drop" << read << 0 << QStringList{kReadTimeout} << "";
    QTest::addRow("read reply short") << "short" << read << 2 << QStringList{lack} << "read 3";
    QTest::addRow("write reply short") << "short" << !read << 2 << QStringList{lack} << "write 3";
    QTest::addRow("short is checked first")
        << "short wrong-vertype" << read << 2 << QStringList{lack} << "read 3";
    QTest::addRow("VerType not 0xFF") << "wrong-vertype" << read << 1 << QStringList{verType}
                                      << "read 3";
    QTest::addRow("acknowledge clear") << "no-ack" << !read << 1 << QStringList{noAck}
                                       << "write 3";
    QTest::addRow("wrong VerType and no ack: two lines, one signal")
        << "wrong-vertype no-ack" << !read << 1 << QStringList{verType, noAck} << "write 3";
    QTest::addRow("bus error on a read") << "bus-error" << read << 3 << QStringList{bus}
                                         << "read 3";
    QTest::addRow("bus error on a write") << "bus-error" << !read << 3 << QStringList{bus}
                                          << "write 3";
    QTest::addRow("bus error on a bad reply is a bad reply")
        << "bus-error no-ack" << read << 1 << QStringList{noAck} << "read 3";
    QTest::addRow("reply with another ID is not ours: discarded, no signal")
        << "wrong-id" << read << 0 << QStringList{kWrongId, kReadTimeout} << "";
    QTest::addRow("reply with flipped R/W bit is not ours") << "flip-rw" << !read << 0
                                                            << QStringList{rw} << "";
    QTest::addRow("stale copy before each reply is discarded")
        << "stale" << read << -1 << QStringList{kWrongId} << "";
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
    (void)newErrorMessages();
    sim()->setFaults(faultsFrom(faults.split(u' ', Qt::SkipEmptyParts)));
    QSignalSpy readErrors(&agent, &WrenAgent::readErrorOccured);
    QSignalSpy writeErrors(&agent, &WrenAgent::writeErrorOccured);

    const int timeoutMs = code == 0 ? kUnansweredTimeoutMs : kSimReplyTimeoutMs;
    QByteArray result;
    QString reason;
    QCOMPARE(access(agent, isRead, timeoutMs, &result, &reason), code);
    if (code == -1)
        QCOMPARE(result, hex("11223344")); // read back, or echoed
    if (code > 0) // the reason shown to the user
        QCOMPARE(reason, logged.join(QStringLiteral("; ")));
    QCOMPARE(newErrorMessages(), logged);
    QStringList emitted;
    for (const QList<QVariant> &arguments : readErrors)
        emitted << QStringLiteral("read %1").arg(arguments[0].value<quint8>());
    for (const QList<QVariant> &arguments : writeErrors)
        emitted << QStringLiteral("write %1").arg(arguments[0].value<quint8>());
    QCOMPARE(emitted.join(u' '), signal);
}

void TestWrenAgent::replyMatching_data()
{
    QTest::addColumn<QString>("script"); // what the peer sends back to the first read
    QTest::addColumn<int>("code");       // of the first read; the second always succeeds
    QTest::addColumn<QStringList>("logged");
    QTest::addColumn<QString>("reason");

    const QString verType = QStringLiteral("WREN Recv, VerType does is invalid");
    const QString length = QStringLiteral("WREN Recv, length does not match the request");
    const QString rw = QStringLiteral("WREN Recv, invalid R/W flag");
    const QString foreign =
        QStringLiteral("WREN Recv, datagram from 127.0.0.1 port %1 is not from the target");
    QTest::addRow("good reply") << "good" << -1 << QStringList() << "";
    QTest::addRow("duplicated reply: the copy is dropped at the next read")
        << "good good" << -1 << QStringList{kWrongId} << "";
    QTest::addRow("late reply to another request first") << "id+1 good" << -1
                                                         << QStringList{kWrongId} << "";
    QTest::addRow("reply from another port first") << "other good" << -1 << QStringList{foreign}
                                                   << "";
    QTest::addRow("reply with flipped R/W bit first") << "rw good" << -1 << QStringList{rw} << "";
    QTest::addRow("reply for another address first")
        << "addr+1 good" << -1 << QStringList{"WREN Recv, address does not match"} << "";
    QTest::addRow("runt datagram first")
        << "runt good" << -1 << QStringList{"WREN Recv, datagram too short for a header"} << "";
    QTest::addRow("only a reply from another port")
        << "other" << 0 << QStringList{foreign, kReadTimeout}
        << "1 datagram(s) discarded: " + foreign;
    QTest::addRow("only foreign replies: counted, each reason once")
        << "id+1 rw id+1" << 0 << QStringList{kWrongId, rw, kWrongId, kReadTimeout}
        << "3 datagram(s) discarded: " + kWrongId + "; " + rw;
    QTest::addRow("silence") << "" << 0 << QStringList{kReadTimeout} << "";
    QTest::addRow("reply of length 0 to a read of 4") << "len0" << 1 << QStringList{length}
                                                      << length;
    for (const char *value : {"00", "EF", "FE", "7F", "F0", "0F"})
        QTest::addRow("VerType %s", value) << QStringLiteral("ver:%1").arg(value) << 1
                                           << QStringList{verType} << verType;
}

void TestWrenAgent::replyMatching()
{
    QFETCH(QString, script);
    QFETCH(int, code);
    QFETCH(QStringList, logged);
    QFETCH(QString, reason);

    HostilePeer peer(script);
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), peer.port());
    QString thrown;
    QByteArray data;
    QCOMPARE(access(agent, true, kUnansweredTimeoutMs, &data, &thrown), code);
    QCOMPARE(thrown, reason.arg(peer.otherPort()));
    QCOMPARE(access(agent, true, kUnansweredTimeoutMs, &data), -1); // nothing poisons the next
    QCOMPARE(data, hex("DEADBEEF"));
    for (QString &line : logged)
        line = line.arg(peer.otherPort());
    QCOMPARE(newErrorMessages(), logged);
}

// A reply that arrives after its time-out is dropped by the next access, which goes on waiting.
void TestWrenAgent::lateReplyThenGoodReads()
{
    WrenAgent agent;
    targetSim(agent);
    sim()->setFaults(faultsFrom({"delay:400"}));
    const quint64 sent = sim()->counters().repliesSent;
    QCOMPARE(access(agent, true, kUnansweredTimeoutMs), 0);
    QTRY_COMPARE(sim()->counters().repliesSent, sent + 1);
    sim()->setFaults(SimFaults());
    QTest::qWait(50); // the late reply is queued on the agent's socket
    for (int i = 0; i < 3; ++i)
        QCOMPARE(access(agent, true, kSimReplyTimeoutMs), -1);
    QCOMPARE(newErrorMessages(), (QStringList{kReadTimeout, kWrongId}));
}

void TestWrenAgent::unsentRequestFails_data()
{
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<bool>("hasSocket");
    QTest::addColumn<QString>("reason");
    const QString refused = QStringLiteral("The request could not be sent: ");
    QTest::addRow("write to port 0") << false << true << refused;
    QTest::addRow("read to port 0") << true << true << refused;
    QTest::addRow("write before any target") << false << false << refused + "no target is set";
    QTest::addRow("read before any target") << true << false << refused + "no target is set";
}

void TestWrenAgent::unsentRequestFails()
{
    QFETCH(bool, isRead);
    QFETCH(bool, hasSocket);
    QFETCH(QString, reason);

    WrenAgent agent;
    if (hasSocket)
        targetSim(agent);
    // Port 0 is the initial target port, so before any target this leaves the agent without a
    // socket; after one the kernel refuses a datagram to port 0 without it leaving the host.
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
    const SimCounters before = sim()->counters();
    QElapsedTimer clock;
    clock.start();
    QString thrown;
    QCOMPARE(access(agent, isRead, 5000, nullptr, &thrown), 0);
    QVERIFY(clock.elapsed() < 1000); // failed at once, nothing awaited
    QVERIFY2(hasSocket ? thrown.startsWith(reason) && thrown.size() > reason.size()
                       : thrown == reason,
             qPrintable(thrown));
    QCOMPARE(newErrorMessages(),
             QStringList{isRead ? "WREN send, fail to send read command packet"
                                : "WREN send, fail to send write command packet"});
    QCOMPARE(sim()->counters().requests + sim()->counters().ignored,
             before.requests + before.ignored); // nothing arrived
}

// While an access waits, timers keep firing; an access asked for from one of them is refused at
// once instead of nesting its wait; abort() ends the wait as a time-out.
void TestWrenAgent::waitKeepsTheEventLoopRunning()
{
    WrenAgent agent;
    targetSim(agent);
    sim()->setFaults(faultsFrom({"drop"}));
    int ticks = 0;
    QString nested;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        if (++ticks == 1)
            QCOMPARE(access(agent, false, 5000, nullptr, &nested), 0);
    });
    timer.start(20);
    QElapsedTimer clock;
    clock.start();
    const quint64 requests = sim()->counters().requests;
    QCOMPARE(access(agent, true, 2000), 0);
    QVERIFY(clock.elapsed() >= 1990);
    QVERIFY2(ticks >= 50, qPrintable(QString::number(ticks))); // 100 when never late
    QCOMPARE(nested, QStringLiteral("Another register access is waiting; this one was not sent"));
    QCOMPARE(sim()->counters().requests, requests + 1); // the refused one never left
    QVERIFY(!agent.gate()->isBusy());

    QString reason;
    QTimer::singleShot(100, agent.gate(), &AccessGate::abort);
    clock.restart();
    QCOMPARE(access(agent, true, 5000, nullptr, &reason), 0);
    QVERIFY(clock.elapsed() < 2000);
    QCOMPARE(reason, QStringLiteral("The wait for the reply was given up"));
}

void TestWrenAgent::writeLengthIsTheLowByteOfTheDataSize()
{
    WrenAgent agent;
    targetSim(agent);
    QByteArray data(300, Qt::Uninitialized);
    for (int i = 0; i < data.size(); ++i)
        data[i] = char(i);
    QCOMPARE(agent.write(kPlainAddress, data, kSimReplyTimeoutMs), data.left(44));
    QCOMPARE(sim()->accessLog()[0].length, quint8(44));
    QCOMPARE(sim()->peek(kPlainAddress, 45), data.left(44) + '\0');
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
    QCOMPARE(agent.localPort(), quint16(0));
    QCOMPARE(agent.targetPort(), m_sim.udpPort());
}

void TestWrenAgent::packetIdIsSharedAndWraps()
{
    WrenAgent agent;
    targetSim(agent);
    for (int i = 0; i < 260; ++i)
        QCOMPARE(access(agent, i % 2 == 0, kSimReplyTimeoutMs), -1);
    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), 260);
    for (int i = 0; i < 260; ++i)
        QCOMPARE(log[i].packetId, quint8(i % 256));
    QCOMPARE(kAccessTimeoutMs, 10000); // what every caller passes
}

void TestWrenAgent::setTargetKeepsOrReplacesTheSocket()
{
    SimThread other; // a second device, on another port
    QVERIFY2(other.start(), qPrintable(other.errorString()));
    WrenAgent agent;
    targetSim(agent);
    const QPointer<QUdpSocket> first = agent.findChild<QUdpSocket *>();
    const quint16 firstPort = agent.localPort();
    agent.setTarget(QHostAddress(QStringLiteral("127.0.0.2")), m_sim.udpPort());
    QCOMPARE(agent.findChild<QUdpSocket *>(), first.data()); // a new address alone keeps it
    QCOMPARE(agent.localPort(), firstPort);

    agent.setTarget(QHostAddress(QHostAddress::LocalHost), other.udpPort());
    QVERIFY(first.isNull()); // a new port replaces it, and the old one is deleted
    QCOMPARE(access(agent, true, kSimReplyTimeoutMs), -1);
    QCOMPARE(other.sim()->accessLog().size(), 1);
    QCOMPARE(sim()->accessLog().size(), 0);
}

QTEST_GUILESS_MAIN(TestWrenAgent)
#include "tst_wrenagent.moc"
