// WREN packets byte for byte; WrenAgent against the emulator and a hostile peer: reply checks,
// discarded datagrams, waits that keep the event loop running, the shared packet ID.
#include "app/accessgate.h"
#include "app/log.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "simclient.h"
#include "testtable.h"
#include "wren/wrenagent.h"
#include "wren/wrenheader.h"
#include "wren/wrenpacket.h"

#include <QtTest>

#include <utility>

namespace {

constexpr int kUnansweredTimeoutMs = 150;
constexpr quint32 kPlainAddress = 0x00001000;

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

// A device on loopback that answers the first request with the datagrams of a script, each a
// spoilt copy of the right reply (or the right one sent from a second port), and later ones right.
class HostilePeer
{
public:
    explicit HostilePeer(const QString &script,
                         const QHostAddress &at = QHostAddress(QHostAddress::LocalHost),
                         int delayMs = 0)
        : m_script(script.split(u' ', Qt::SkipEmptyParts))
    {
        m_socket.bind(at, 0);
        m_other.bind(QHostAddress::LocalHost, 0);
        QObject::connect(&m_socket, &QUdpSocket::readyRead, &m_socket, [this, delayMs] {
            const QNetworkDatagram datagram = m_socket.receiveDatagram();
            QTimer::singleShot(delayMs, &m_socket, [this, datagram] { answer(datagram); });
        });
    }
    QUdpSocket m_socket;
    QUdpSocket m_other;

private:
    void answer(const QNetworkDatagram &datagram)
    {
        const QByteArray request = datagram.data();
        QByteArray good = request.left(8) + (request[1] & 0x40 ? hex("DEADBEEF") : request.mid(8));
        good[1] = char(good[1] | 0x08);
        for (const QString &step : std::exchange(m_script, {"good"})) {
            QByteArray reply = good;
            if (step == u"id+1" || step == u"addr+1") {
                const int at = step == u"id+1" ? 2 : 7;
                reply[at] = char(good[at] + 1);
            } else if (step == u"rw" || step == u"noack" || step == u"bus")
                reply[1] = char(good[1] ^ (step == u"rw" ? 0x40 : step == u"noack" ? 0x08 : 0x01));
            else if (step == u"len0" || step == u"runt")
                reply = step == u"runt" ? good.left(3) : good.left(3) + '\0' + good.mid(4, 4);
            else if (step == u"short")
                reply.chop(2);
            else if (step.startsWith(u"ver:"))
                reply[0] = char(step.mid(4).toUInt(nullptr, 16));
            QUdpSocket &from = step == u"other" ? m_other : m_socket;
            from.writeDatagram(reply, datagram.senderAddress(), datagram.senderPort());
        }
    }
    QStringList m_script;
};

} // namespace

class TestWrenAgent : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        logOpen(m_dir.filePath(QStringLiteral("MavixUtility.log")), LOG_DBG);
        QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
    }
    void cleanupTestCase()
    {
        m_sim.stop();
        logClose();
    }
    void init()
    {
        sim()->setFaults(SimFaults());
        sim()->clearAccessLog();
        (void)newErrorMessages();
    }
    void replyTable_data()
    {
        // clang-format off
        // What comes back to the first access; code -1: the data comes back; the WrenError's reason.
        columns<QString, bool, int, QStringList, QString>("script", "isRead", "code", "logged", "reason");

        const QString kReadTimeout = QStringLiteral("WREN send, response to read command is timeout");
        const QString kWrongId = QStringLiteral("WREN Recv, packet ID does not match");
        const QString lack = QStringLiteral("WREN Recv, lack of data packet");
        const QString verType = QStringLiteral("WREN Recv, VerType does is invalid");
        const QString noAck = QStringLiteral("WREN Recv, it's not Acknowledge packet");
        const QString length = QStringLiteral("WREN Recv, length does not match the request");
        const QString rw = QStringLiteral("WREN Recv, invalid R/W flag");
        const QString bus = QStringLiteral("WREN Recv, Bus Error occured");
        const QString foreign = QStringLiteral("WREN Recv, datagram from 127.0.0.1 port %1 is not from the target");
        const auto row = [](const char *name, const QString &script, bool isRead, int code, const QStringList &logged, const QString &reason) {
            QTest::addRow("%s", name) << script << isRead << code << logged << reason;
        };
        const bool read = true;
        row("good read", "good", read, -1, {}, "");
        row("good write", "good", !read, -1, {}, "");
        row("no reply to a write: nothing logged", "", !read, 0, {}, "");
        row("no reply to a read", "", read, 0, {kReadTimeout}, "");
        row("read not sent", "port0", read, 0, {"WREN send, fail to send read command packet"}, "The request could not be sent: Unable to send a message");
        row("write not sent", "port0", !read, 0, {"WREN send, fail to send write command packet"}, "The request could not be sent: Unable to send a message");
        row("device port with nothing listening", "closed", read, 0, {kReadTimeout}, "");
        row("read reply short", "short", read, 2, {lack}, lack);
        row("reply of length 0 to a read of 4", "len0", read, 1, {length}, length);
        row("acknowledge clear", "noack", !read, 1, {noAck}, noAck);
        row("bus error on a read", "bus", read, 3, {bus}, bus);
        for (const char *value : {"00", "EF", "FE", "7F", "F0", "0F"}) row(value, QStringLiteral("ver:%1").arg(value), read, 1, {verType}, verType);
        row("duplicated reply: the copy is dropped by the next access", "good good", read, -1, {kWrongId}, "");
        row("late reply to an earlier request first", "id+1 good", !read, -1, {kWrongId}, "");
        row("reply from another port first", "other good", read, -1, {foreign}, "");
        row("reply with the other R/W bit first", "rw good", !read, -1, {rw}, "");
        row("reply for another address first", "addr+1 good", read, -1, {"WREN Recv, address does not match"}, "");
        row("runt datagram first", "runt good", read, -1, {"WREN Recv, datagram too short for a header"}, "");
        row("only a reply from another port", "other", read, 0, {foreign, kReadTimeout}, "1 datagram(s) discarded: " + foreign);
        row("only foreign replies: counted, each reason once", "id+1 rw id+1", !read, 0, {kWrongId, rw, kWrongId}, "3 datagram(s) discarded: " + kWrongId + "; " + rw);
        // clang-format on
    }
    void replyTable()
    {
        QFETCH(QString, script);
        QFETCH(bool, isRead);
        QFETCH(int, code);
        QFETCH(QStringList, logged);
        QFETCH(QString, reason);

        HostilePeer peer(script);
        WrenAgent agent;
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), peer.m_socket.localPort());
        if (script == u"port0") // the kernel refuses to send to port 0
            agent.setTarget(QHostAddress(QHostAddress::LocalHost), 0);
        if (script == u"closed") { // a port with nothing listening
            agent.setTarget(QHostAddress(QHostAddress::LocalHost), peer.m_other.localPort());
            peer.m_other.close();
        }
        QString thrown;
        QByteArray data;
        QCOMPARE(access(agent, isRead, kUnansweredTimeoutMs, &data, &thrown), code);
        QCOMPARE(thrown, reason.arg(peer.m_other.localPort()));
        QCOMPARE(data, code != -1 ? "" : isRead ? hex("DEADBEEF") : hex("11223344"));
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), peer.m_socket.localPort());
        QCOMPARE(access(agent, true, kUnansweredTimeoutMs, &data), -1); // nothing poisons the next
        QCOMPARE(data, hex("DEADBEEF"));
        QCOMPARE(newErrorMessages(),
                 logged.replaceInStrings("%1", QString::number(peer.m_other.localPort())));
    }
    // The device is reached at the address it is given, in whichever form, after a change of
    // address alone (the same port). This peer answers from the test's thread, so every reply,
    // late or not, comes through the event loop (the emulator's thread gives the quick path).
    void reachesTheTarget_data()
    {
        columns<QString, QString, int>("peerAt", "target", "delayMs");
        QTest::addRow("IPv4 loopback") << "127.0.0.1"
                                       << "127.0.0.1" << 0;
        QTest::addRow("IPv6 loopback, 20 ms late") << "::1"
                                                   << "::1" << 20;
        QTest::addRow("IPv4-mapped form, 150 ms late") << "127.0.0.1"
                                                       << "::ffff:127.0.0.1" << 150;
    }
    void reachesTheTarget()
    {
        QFETCH(QString, peerAt);
        QFETCH(QString, target);
        QFETCH(int, delayMs);
        HostilePeer peer{QStringLiteral("good"), QHostAddress(peerAt), delayMs};
        QVERIFY(peer.m_socket.state() == QAbstractSocket::BoundState);
        WrenAgent agent;
        agent.setTarget(QHostAddress(QStringLiteral("127.0.0.2")), peer.m_socket.localPort());
        agent.setTarget(QHostAddress(target), peer.m_socket.localPort());
        QElapsedTimer clock;
        clock.start();
        QByteArray data;
        QCOMPARE(access(agent, true, 2000, &data), -1);
        QCOMPARE(data, hex("DEADBEEF"));
        QVERIFY(clock.elapsed() >= delayMs && clock.elapsed() < 1000);
    }
    // While an access waits, timers keep firing; an access asked for from one of them is refused at
    // once instead of nesting its wait; abort() ends the wait as a time-out.
    void waitKeepsTheEventLoopRunning()
    {
        WrenAgent agent;
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
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
        QCOMPARE(access(agent, true, 2000), 0);
        QVERIFY(clock.elapsed() >= 1990);
        QVERIFY2(ticks >= 50, qPrintable(QString::number(ticks))); // 100 when never late
        QCOMPARE(nested,
                 QStringLiteral("Another register access is waiting; this one was not sent"));
        QCOMPARE(sim()->accessLog().size(), 1); // the refused one never left
        QVERIFY(!agent.gate()->isBusy());

        QTimer::singleShot(100, agent.gate(), &AccessGate::abort);
        clock.restart();
        QCOMPARE(access(agent, true, 5000, nullptr, &nested), 0);
        QVERIFY(clock.elapsed() < 2000);
        QCOMPARE(nested, QStringLiteral("The wait for the reply was given up"));
    }
    void packetIdIsSharedAndWraps()
    {
        WrenAgent agent;
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
        for (int i = 0; i < 260; ++i)
            QCOMPARE(access(agent, i % 2 == 0, kSimReplyTimeoutMs), -1);
        const QList<SimAccess> log = sim()->accessLog();
        QCOMPARE(log.size(), 260);
        for (int i = 0; i < 260; ++i)
            QCOMPARE(log[i].packetId, quint8(i % 256));
        QCOMPARE(kAccessTimeoutMs, 10000); // what every caller passes
    }
    // The exact bytes of a request, and what a reply is parsed into.
    void requestBytes_data()
    {
        // clang-format off
        // fields: command kind, read, acknowledge, bus error, packet ID, length, address
        columns<QList<qint64>, QByteArray, QByteArray>("fields", "data", "bytes");
        const auto row = [](const char *name, const QList<qint64> &fields, const char *data, const char *bytes) {
            QTest::addRow("%s", name) << fields << hex(data) << hex(bytes);
        };
        row("read of 4 bytes at FFFFFF00 with ID 5", {1, 1, 0, 0, 5, 4, 0xFFFFFF00}, "", "FFC00504FFFFFF00");
        row("address goes most significant byte first", {1, 0, 0, 0, 0, 0, 0x12345678}, "", "FF80000012345678");
        row("command kind 2 is no command", {2, 1, 0, 0, 9, 0, 0x10}, "", "FF40090000000010");
        row("acknowledge and bus error", {1, 0, 1, 1, 9, 0, 0x10}, "", "FF89090000000010");
        row("write with 6 data bytes and length 4 sends 4", {1, 0, 0, 0, 9, 4, 0x10}, "010203040506", "FF80090400000010 01020304");
        row("write with 2 data bytes and length 4 is zero-filled", {1, 0, 0, 0, 9, 4, 0x10}, "0102", "FF80090400000010 01020000");
        // clang-format on
    }
    void requestBytes()
    {
        QFETCH(QList<qint64>, fields);
        QFETCH(QByteArray, data);
        const WrenHeader header{quint32(fields[0]), int(fields[1]),    int(fields[2]),
                                int(fields[3]),     quint8(fields[4]), quint8(fields[5]),
                                quint32(fields[6])};
        for (const bool remote : {false, true}) { // the remote flag never reaches the wire
            const WrenPacket packet =
                fields[1] == 1 ? WrenPacket(header, remote) : WrenPacket(header, data, remote);
            QCOMPARE(packet.remoteFlag(), remote);
            QTEST(packet.toByteArray(), "bytes");
        }
    }
    void parseReply_data()
    {
        // clang-format off
        // header: as parsed, serialised again
        columns<QByteArray, QByteArray, QByteArray>("bytes", "header", "data");
        QTest::addRow("length 4, 10 data bytes: the first 4") << hex("FFC8000400000000 0A0B0C0D0E0F10111213") << hex("FFC8000400000000") << hex("0A0B0C0D");
        QTest::addRow("length 4, 2 data bytes: both") << hex("FFC8070400000000 0A0B") << hex("FFC8070400000000") << hex("0A0B");
        QTest::addRow("7 bytes: all-zero header, no data") << hex("FFC80004000000") << QByteArray(8, '\0') << QByteArray();
        // clang-format on
    }
    void parseReply()
    {
        QFETCH(QByteArray, bytes);
        const WrenPacket reply(bytes, false);
        QTEST(reply.header().toByteArray(), "header");
        QTEST(reply.data(), "data");
    }

private:
    [[nodiscard]] QStringList newErrorMessages()
    {
        QFile file(m_dir.filePath(QStringLiteral("MavixUtility.log")));
        if (!file.open(QIODevice::ReadOnly) || !file.seek(m_logOffset))
            return {};
        const QByteArray text = file.readAll();
        m_logOffset += text.size();
        static const QRegularExpression errorLine(QStringLiteral(R"(\[ ERR\] (.*)$)"),
                                                  QRegularExpression::MultilineOption);
        QStringList messages;
        for (const QRegularExpressionMatch &match : errorLine.globalMatch(QString::fromUtf8(text)))
            messages << match.captured(1);
        return messages;
    }
    MavixSim *sim() const { return m_sim.sim(); }

    SimThread m_sim;
    QTemporaryDir m_dir;
    qint64 m_logOffset = 0;
};

QTEST_GUILESS_MAIN(TestWrenAgent)
#include "tst_wrenagent.moc"
