// The remote-control server without a window, against the emulator on loopback: real TCP clients
// get exact replies for what they send, in any segmentation; files stay in the server's folder;
// the allow rule and the cap on clients; the order of the queue; a flooding client and one that
// never reads hold nobody else up and hold little memory.
#include "app/accessgate.h"
#include "server/rcclient.h"
#include "server/rclistener.h"
#include "server/rcserver.h"
#include "server/serveroptions.h"
#include "settings/mavixsetting.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "simclient.h"
#include "testtable.h"
#include "wren/wrenagent.h"

#include <QtNetwork>
#include <QtTest>

#include "terminal.h"

#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int kWaitMs = Terminal::kWaitMs;

qint64 residentKiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = status.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return 0;
}

// The echo of a segment that ends a line: the segment, then CR LF.
QByteArray E(const QByteArray &segment)
{
    return segment + "\r\n";
}

} // namespace

class TestRCServer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(dir.isValid());
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        QVERIFY(::mkfifo(QFile::encodeName(dir.filePath(QStringLiteral("fifo"))), 0600) == 0);
        QVERIFY(QFile::link(QStringLiteral("/etc/hostname"), dir.filePath(QStringLiteral("out"))));
        QFile inside(dir.filePath(QStringLiteral("data.bin")));
        QVERIFY(inside.open(QIODevice::WriteOnly) && inside.write("\x11\x22") == 2);
        inside.close();
        QVERIFY(QFile::link(QStringLiteral("data.bin"), dir.filePath(QStringLiteral("in"))));
    }
    void init()
    {
        simThread = std::make_unique<SimThread>();
        QVERIFY(simThread->start());
        agent.setTarget(QHostAddress(QHostAddress::LocalHost), simThread->udpPort());
        simThread->sim()->poke(0x10, hex("01020AFF"));
        server = std::make_unique<RCServer>();
        server->setAgent(&agent);
        server->setAccessTimeoutMs(300);
        server->setPort(0);
        QVERIFY(server->setFileFolder(dir.path()));
        QVERIFY(server->start());
    }
    void cleanup()
    {
        server.reset();
        simThread.reset();
    }

    void replies_data()
    {
        // clang-format off
        columns<QStringList, QByteArrayList, QByteArrayList>("faults", "segments", "expected");
        const auto row = [](const char *name, const QByteArrayList &segments, const QByteArrayList &expected, const QStringList &faults = {}) { QTest::addRow("%s", name) << faults << segments << expected; };
        row("read 10 4", {"read 10 4\r\n"}, {E("read 10 4\r\n") + kDump10});
        row("0x prefix, LF", {"read 0x10 4\n"}, {E("read 0x10 4\n") + kDump10});
        row("leading zeros, blanks, CR", {"read  0000000010   4\r"}, {E("read  0000000010   4\r") + kDump10});
        row("address over 32 bits", {"read 100000010 4\r\n"}, {E("read 100000010 4\r\n") + kInvalidRead});
        row("17 bytes, two lines", {"read 0 17\r\n"}, {E("read 0 17\r\n") + "OK:\r\n00 : 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \r\n10 : 01 \r\n" + P});
        row("last byte of the space", {"read FFFFFFFF 1\r\n"}, {E("read FFFFFFFF 1\r\n") + "OK:\r\nFFFFFFFF : 00 \r\n" + P});
        row("past the last byte", {"read FFFFFFFF 2\r\n"}, {E("read FFFFFFFF 2\r\n") + kInvalidRead});
        row("length 0, 256, +4", {"read 0 0\r\nread 0 256\r\nread 10 +4\r\n"}, {E("read 0 0\r\n") + kInvalidRead + E("read 0 256\r\n") + kInvalidRead + E("read 10 +4\r\n") + kInvalidRead});
        row("write is silent", {"write 1000 DEADBEEF\r\n", "read 1000 4\r\n"}, {E("write 1000 DEADBEEF\r\n"), E("read 1000 4\r\n") + "OK:\r\n1000 : DE AD BE EF \r\n" + P});
        row("odd digit refused", {"write 2000 012\r\n", "read 2000 2\r\n"}, {E("write 2000 012\r\n") + kInvalidWrite, E("read 2000 2\r\n") + "OK:\r\n2000 : 00 00 \r\n" + P});
        row("write address over 32 bits", {"write 100002000 AABB\r\n", "read 2000 2\r\n"}, {E("write 100002000 AABB\r\n") + kInvalidWrite, E("read 2000 2\r\n") + "OK:\r\n2000 : 00 00 \r\n" + P});
        row("end at FFFF0000", {"write FFFEFFFE 0102\r\n", "read FFFEFFFE 2\r\n"}, {E("write FFFEFFFE 0102\r\n"), E("read FFFEFFFE 2\r\n") + "OK:\r\nFFFEFFFE : 01 02 \r\n" + P});
        row("end past FFFF0000", {"write FFFEFFFF 0102\r\n"}, {E("write FFFEFFFF 0102\r\n") + kInvalidWrite});
        row("256 bytes", {"write 0 " + QByteArray(512, 'A') + "\r\n"}, {E("write 0 " + QByteArray(512, 'A') + "\r\n") + kInvalidWrite});
        row("address not hex", {"write zz 12\r\n"}, {E("write zz 12\r\n") + kInvalidWrite});
        row("help", {"help\r\n"}, {E("help\r\n") + "OK:\r\nread <address> <length> [filename]\r\nwrite <address> <data(hex) | filename>\r\nhelp [command]\r\nquit" + P});
        row("help quit, help foo", {"help quit\r\n", "help foo\r\n"}, {E("help quit\r\n") + kHelpQuit, E("help foo\r\n") + "NG:invalid help command" + P});
        row("upper case, empty line", {"READ 0 4\r\n", "\r\n"}, {E("READ 0 4\r\n") + kUnknown, E("\r\n") + kUnknown});
        row("quit with blanks", {"quit   \r\n"}, {E("quit   \r\n") + "Bye-Bye!\r\n"});
        row("quit after blanks", {"  quit\r\n"}, {E("  quit\r\n") + "Bye-Bye!\r\n"});
        row("quitx is no quit", {"quitx\r\n", "quit\r\n"}, {E("quitx\r\n") + kUnknown, E("quit\r\n") + "Bye-Bye!\r\n"});
        row("typed one key at a time", {"r", "e", "a", "d", " ", "1", "0", " ", "4", "\r\n"}, {"r", "e", "a", "d", " ", "1", "0", " ", "4", E("\r\n") + kDump10});
        // Scripts: every line end counts, wherever it falls
        row("batch in one segment", {"write 1000 DEADBEEF\nread 1000 4\nquit\n"}, {E("write 1000 DEADBEEF\n") + E("read 1000 4\n") + "OK:\r\n1000 : DE AD BE EF \r\n" + P + E("quit\n") + "Bye-Bye!\r\n"});
        row("CR, LF, CR LF mixed", {"help quit\rhelp quit\nhelp quit\r\n"}, {E("help quit\r") + kHelpQuit + E("help quit\n") + kHelpQuit + E("help quit\r\n") + kHelpQuit});
        row("CR and LF apart", {"help quit\r", "\n", "help quit\r\n"}, {E("help quit\r") + kHelpQuit, "", E("help quit\r\n") + kHelpQuit});
        row("line split mid-command", {"help q", "uit\r\nhe", "lp quit\r\n"}, {"help q", E("uit\r\n") + kHelpQuit + "he", E("lp quit\r\n") + kHelpQuit});
        row("telnet: CR NUL, negotiation", {QByteArray("\xff\xfd\x03\xff\xfb\x01\xff\xfa\x18\x00xterm\xff\xf0help quit\r\0help quit\r\0", 39)}, {E("help quit\r") + kHelpQuit + E("help quit\r") + kHelpQuit});
        row("line past 64 KiB", {QByteArray(65537, 'a'), "rest\r\n", "read 10 4\r\n"}, {QByteArray(65537, 'a') + kUnknown, E("\r\n"), E("read 10 4\r\n") + kDump10});
        // Files: only regular files inside the server's folder
        row("dump into a file, file written back", {"read 10 4 dump.txt\r\n", "write 3000 sub/../dump.txt\r\n", "write 3000 dump.txt\r\n", "read 3000 4\r\n"}, {E("read 10 4 dump.txt\r\n") + kDump10, E("write 3000 sub/../dump.txt\r\n") + kInvalidWrite, E("write 3000 dump.txt\r\n"), E("read 3000 4\r\n") + "OK:\r\n3000 : 31 30 20 3A \r\n" + P});
        row("link inside the folder", {"write 3000 in\r\n", "read 3000 2\r\n"}, {E("write 3000 in\r\n"), E("read 3000 2\r\n") + "OK:\r\n3000 : 11 22 \r\n" + P});
        row("read into: absolute, .., link out", {"read 10 4 /etc/x\r\n", "read 10 4 ../x\r\n", "read 10 4 out\r\n"}, {E("read 10 4 /etc/x\r\n") + kNoFile, E("read 10 4 ../x\r\n") + kNoFile, E("read 10 4 out\r\n") + kNoFile});
        row("read into: FIFO, folder", {"read 10 4 fifo\r\n", "read 10 4 sub\r\n"}, {E("read 10 4 fifo\r\n") + kNoFile, E("read 10 4 sub\r\n") + kNoFile});
        row("write from: absolute, link out, FIFO, folder, none", {"write 0 /etc/hostname\r\nwrite 0 out\r\nwrite 0 fifo\r\nwrite 0 sub\r\nwrite 0 nosuchfile\r\n"}, {E("write 0 /etc/hostname\r\n") + kInvalidWrite + E("write 0 out\r\n") + kInvalidWrite + E("write 0 fifo\r\n") + kInvalidWrite + E("write 0 sub\r\n") + kInvalidWrite + E("write 0 nosuchfile\r\n") + kInvalidWrite});
        // Device faults
        row("read, no reply", {"read 10 4\r\n"}, {E("read 10 4\r\n") + "NG:Mavix device timeout" + P}, {"drop"});
        row("read, bad reply", {"read 10 4\r\n"}, {E("read 10 4\r\n") + "NG:Mavix device reply invalid packet" + P}, {"wrong-vertype"});
        row("read, bus error", {"read 10 4\r\n"}, {E("read 10 4\r\n") + "NG:Mavix device reply bus error" + P}, {"bus-error"});
        row("write, no reply", {"write 0 01\r\n"}, {E("write 0 01\r\n") + "NG:Server mode, write command is timeout" + P}, {"drop"});
        row("write, bus error", {"write 0 01\r\n"}, {E("write 0 01\r\n") + "NG: Mavix device reply bus error" + P}, {"bus-error"});
        row("write, bad reply", {"write 0 01\r\n"}, {E("write 0 01\r\n") + "NG:Mavix device won't reply" + P}, {"wrong-vertype"});
        // clang-format on
    }
    void replies()
    {
        QFETCH(QStringList, faults);
        QFETCH(QByteArrayList, segments);
        QFETCH(QByteArrayList, expected);
        simThread->sim()->setFaults(faultsFrom(faults));
        Terminal client(server->serverPort());
        QVERIFY(client.waitFor(kGreeting.size()));
        QByteArray all = kGreeting;
        for (int i = 0; i < segments.size(); ++i) {
            client.socket.write(segments.at(i));
            all += expected.at(i);
            QVERIFY2(client.waitFor(all.size()), client.got.constData());
            QTest::qWait(expected.at(i).isEmpty() ? 50 : 0); // nothing comes: give it the chance
        }
        QCOMPARE(client.got, all);
    }

    void allowRule_data()
    {
        columns<QString, bool>("rule", "served");
        QTest::newRow("this host") << "127.0.0.1" << true;
        QTest::newRow("its network") << "10.0.0.0/8,127.0.0.0/8" << true;
        QTest::newRow("another host") << "127.0.0.2" << false;
        QTest::newRow("another network") << "192.168.1.0/24" << false;
    }
    void allowRule()
    {
        QFETCH(QString, rule);
        QFETCH(bool, served);
        std::optional<AllowRule> allow = AllowRule::parse(rule);
        QVERIFY(allow);
        allow->setLoopbackAllowed(false); // as if this computer were another one
        server->setAllowRule(*allow);
        Terminal client(server->serverPort());
        const QByteArray refusal = "NG:Connection from 127.0.0.1 is not allowed. Start the server "
                                   "with -uiallow:127.0.0.1 (or its network) to allow it.\r\n";
        QVERIFY(client.waitFor(served ? kGreeting.size() : refusal.size()));
        QCOMPARE(client.got, served ? kGreeting : refusal);
        if (!served)
            QTRY_COMPARE_WITH_TIMEOUT(client.socket.state(), QAbstractSocket::UnconnectedState,
                                      kWaitMs);
    }
    void allowRuleText_data()
    {
        columns<QString, QString>("text", "described");
        QTest::newRow("networks") << "192.168.1.0/24, 10.0.0.5"
                                  << "loopback, 192.168.1.0/24, 10.0.0.5";
        QTest::newRow("IPv6") << "fd00::/8"
                              << "loopback, fd00::/8";
        for (const char *bad :
             {"", "10.1", "10.0.0.5/", "10.0.0.0/33", "10.0.0.0/+8", "host", "10.0.0.5,,"})
            QTest::newRow(bad) << bad << "";
    }
    void allowRuleText()
    {
        QFETCH(QString, text);
        QFETCH(QString, described);
        const std::optional<AllowRule> rule = AllowRule::parse(text);
        QCOMPARE(rule ? rule->describe() : QString(), described);
    }

    // The start-up options: a malformed value is warned about and changes nothing.
    void serverOptions_data()
    {
        columns<QStringList, QString>("arguments", "result");
        QTest::newRow("none") << QStringList{} << "loopback|";
        QTest::newRow("both") << QStringList{"-uiallow:10.0.0.0/8", "-uiroot:/tmp"}
                              << "loopback, 10.0.0.0/8|/tmp";
        QTest::newRow("bad network") << QStringList{"-uiallow:10.0.0.0/40"}
                                     << "loopback||Server mode, uiallow is invalid: give addresses "
                                        "or networks such as 192.168.1.0/24,10.0.0.5";
        QTest::newRow("no folder") << QStringList{"-uiroot:/nonexistent"}
                                   << "loopback||Server mode, uiroot is not a folder: /nonexistent";
    }
    void serverOptions()
    {
        QFETCH(QStringList, arguments);
        QStringList warnings;
        const ServerOptions options =
            parseServerArguments(QStringList{"MavixUtility"} + arguments,
                                 [&](const QString &text) { warnings << text; });
        QTEST((QStringList{options.allow.describe(), options.folder} + warnings).join('|'),
              "result");
    }

    void clientCap()
    {
        std::vector<std::unique_ptr<Terminal>> clients;
        for (int i = 0; i < 33; ++i)
            clients.push_back(std::make_unique<Terminal>(server->serverPort()));
        const QByteArray full = "NG:Too many clients (32), try again later.\r\n";
        for (int i = 0; i < 33; ++i) {
            QVERIFY(clients[i]->waitFor(i < 32 ? kGreeting.size() : full.size()));
            QCOMPARE(clients[i]->got, i < 32 ? kGreeting : full);
        }
        QTRY_COMPARE_WITH_TIMEOUT(clients[32]->socket.state(), QAbstractSocket::UnconnectedState,
                                  kWaitMs);
        clients[0].reset(); // one leaves: room for one more
        QTRY_COMPARE_WITH_TIMEOUT(server->findChild<RCListener *>()->clientCount(), 31, kWaitMs);
        Terminal late(server->serverPort());
        QVERIFY(late.waitFor(kGreeting.size()));
        QCOMPARE(late.got, kGreeting);
    }

    // Lines that wait for the device run in the order they arrived, whoever sent them; the lines
    // of a client that left meanwhile never run.
    void queueOrder()
    {
        std::vector<std::unique_ptr<Terminal>> clients;
        for (int i = 0; i < 3; ++i) {
            clients.push_back(std::make_unique<Terminal>(server->serverPort()));
            QVERIFY(clients.back()->waitFor(kGreeting.size()));
        }
        simThread->sim()->clearAccessLog();
        auto hold = std::make_unique<AccessGate::Hold>(agent.gate());
        const auto send = [&](int client, const QByteArray &line, qsizetype echoed) {
            clients[client]->socket.write(line);
            return clients[client]->waitFor(kGreeting.size() + echoed);
        };
        QVERIFY(send(2, "write 1000 03\r\n", 17));
        QVERIFY(send(1, "write 1000 AA\r\nwrite 1001 AA\r\n", 17));
        QVERIFY(send(0, "write 1000 01\r\n", 17));
        clients[1].reset(); // gone with two lines unserved
        QTest::qWait(50);
        hold.reset();
        clients[0]->socket.write("read 1000 1\r\n");
        QTRY_VERIFY_WITH_TIMEOUT(clients[0]->got.endsWith("OK:\r\n1000 : 01 \r\n" + P), kWaitMs);
        QCOMPARE(
            describe(simThread->sim()->accessLog()),
            QStringList({"write 00001000 1 [03]", "write 00001000 1 [01]", "read 00001000 1"}));
    }

    // A client that sends lines and never reads the replies is held back by TCP and holds
    // little memory; meanwhile another client is served at once.
    void floodingClientIsHeldBack()
    {
        const qint64 before = residentKiB();
        QTcpSocket flood;
        flood.connectToHost(QHostAddress::LocalHost, server->serverPort());
        QVERIFY(flood.waitForConnected(kWaitMs));
        flood.setReadBufferSize(1); // reads nothing: its receive window fills
        Terminal other(server->serverPort());
        QVERIFY(other.waitFor(kGreeting.size()));
        const QByteArray lines = QByteArray("help\r\n").repeated(200000);
        qint64 queued = 0;
        QElapsedTimer clock;
        clock.start();
        qint64 slowest = 0;
        for (int round = 0; clock.elapsed() < 1500 && round < 1000; ++round) {
            if (flood.bytesToWrite() < 1024 * 1024)
                queued += flood.write(lines);
            const qsizetype got = other.got.size();
            QElapsedTimer trip;
            trip.start();
            other.socket.write("read 10 4\r\n");
            QVERIFY(other.waitFor(got + 13 + kDump10.size()));
            slowest = qMax(slowest, trip.elapsed());
        }
        QVERIFY2(slowest < 1000, QByteArray::number(slowest));
        // The server stopped taking input: most of what was queued is still on this side.
        QVERIFY2(flood.bytesToWrite() > 0, QByteArray::number(queued));
        QVERIFY2(residentKiB() - before < 50 * 1024, QByteArray::number(residentKiB() - before));
    }
    // A client that never reads is dropped once its output stops moving for the send time-out.
    void clientThatNeverReadsIsDropped()
    {
        server->setSendTimeoutMs(300);
        QTcpSocket silent;
        silent.connectToHost(QHostAddress::LocalHost, server->serverPort());
        QVERIFY(silent.waitForConnected(kWaitMs));
        silent.setReadBufferSize(1);
        RCListener *listener = server->findChild<RCListener *>();
        QTRY_COMPARE_WITH_TIMEOUT(listener->clientCount(), 1, kWaitMs);
        const QByteArray lines = QByteArray("help\r\n").repeated(10000);
        for (int round = 0; listener->clientCount() > 0 && round < 1500; ++round) {
            if (silent.bytesToWrite() < 1024 * 1024)
                silent.write(lines);
            QTest::qWait(20);
        }
        QCOMPARE(listener->clientCount(), 0); // within the 30 s the loop allows
    }

private:
    static QStringList describe(const QList<SimAccess> &log)
    {
        QStringList lines;
        for (const SimAccess &access : log) {
            lines << (access.direction == SimAccess::Write
                          ? QStringLiteral("write %1 %2 [%3]")
                                .arg(access.address, 8, 16, QLatin1Char('0'))
                                .arg(access.data.size())
                                .arg(QString::fromLatin1(access.data.toHex()))
                          : QStringLiteral("read %1 %2")
                                .arg(access.address, 8, 16, QLatin1Char('0'))
                                .arg(access.length));
        }
        return lines;
    }

    const QByteArray P = "\r\nMavixUtil>";
    const QByteArray kGreeting = "OK:Connected\r\nMavixUtil>";
    const QByteArray kDump10 = "OK:\r\n10 : 01 02 0A FF \r\n" + P;
    const QByteArray kInvalidRead = "NG:invalid read command" + P;
    const QByteArray kInvalidWrite = "NG:invalid write command" + P;
    const QByteArray kNoFile = "NG:\r\nread command can not open the file" + P;
    const QByteArray kUnknown = "NG:Unknown Command" + P;
    const QByteArray kHelpQuit = "OK:\r\nquit\r\nDisconnect the server" + P;
    QTemporaryDir dir;
    std::unique_ptr<SimThread> simThread;
    WrenAgent agent;
    std::unique_ptr<RCServer> server;
};

QTEST_MAIN(TestRCServer)
#include "tst_rcserver.moc"
