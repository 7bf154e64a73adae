// The remote-control server against the emulator on loopback: real TCP clients get exact replies;
// device faults, line assembly, many clients, a busy device gate, a port already in use.
#include "app/accessgate.h"
#include "app/log.h"
#include "server/rcclient.h"
#include "server/servertab.h"
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"

#include <QtNetwork>
#include <QtTest>
#include <QtWidgets>

#include <memory>

namespace {

constexpr int kWaitMs = 5000; // only waited out when something is broken

struct Terminal
{
    explicit Terminal(quint16 port)
    {
        QObject::connect(&socket, &QTcpSocket::readyRead, &socket,
                         [this] { got += socket.readAll(); });
        socket.connectToHost(QHostAddress::LocalHost, port);
    }
    bool waitFor(qsizetype size)
    {
        return QTest::qWaitFor([&] { return got.size() >= size; }, kWaitMs);
    }
    QTcpSocket socket;
    QByteArray got;
};

} // namespace

class TestServerTab : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        f = std::make_unique<TabFixture<ServerTab>>();
        QVERIFY(f->start());
        MavixSetting target;
        target.ipAddress = QStringLiteral("127.0.0.1");
        target.udpPort = f->simThread.udpPort();
        MavixSetting::setCurrent(target);
        f->sim()->poke(0x10, hex("01020AFF"));
        f->tab.setAccessTimeoutMs(300);
        f->tab.setPort(0);
        QVERIFY(f->tab.start());
    }
    void cleanup()
    {
        f.reset();
        MavixSetting::setCurrent(MavixSetting());
    }

    void replies_data()
    {
        // clang-format off
        columns<QStringList, QByteArrayList, QByteArrayList>("faults", "segments", "replies");
        const auto row = [](const char *name, const QByteArrayList &segments, const QByteArrayList &replies, const QStringList &faults = {}) { QTest::addRow("%s", name) << faults << segments << replies; };
        row("read 10 4", {"read 10 4\r\n"}, {kDump10});
        row("0x prefix", {"read 0x10 4\n"}, {kDump10});
        row("leading zeros, blanks", {"read  0010   4\r"}, {kDump10});
        row("low 32 bits of address", {"read 100000010 4\r\n"}, {kDump10});
        row("17 bytes, two lines", {"read 0 17\r\n"}, {"OK:\r\n00 : 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 \r\n10 : 01 \r\n" + P});
        row("last byte of the space", {"read FFFFFFFF 1\r\n"}, {"OK:\r\nFFFFFFFF : 00 \r\n" + P});
        row("past the last byte", {"read FFFFFFFF 2\r\n"}, {kInvalidRead});
        row("length 0", {"read 0 0\r\n"}, {kInvalidRead});
        row("length 256", {"read 0 256\r\n"}, {kInvalidRead});
        const QByteArray dumpFile = dir.filePath(QStringLiteral("dump.txt")).toUtf8();
        // the file holds the dump text: "10 : ..."
        row("dump into a file, file written back", {"read 10 4 " + dumpFile + "\r\n", "write 3000 " + dumpFile + "\r\n", "read 3000 4\r\n"}, {kDump10, "", "OK:\r\n3000 : 31 30 20 3A \r\n" + P});
        row("dump file cannot be made", {"read 10 4 /nonexistent/dir/x\r\n"}, {"NG:\r\nread command can not open the file" + P});
        row("write is silent", {"write 1000 DEADBEEF\r\n", "read 1000 4\r\n"}, {"", "OK:\r\n1000 : DE AD BE EF \r\n" + P});
        row("odd digit ignored", {"write 2001 012\r\n", "read 2000 3\r\n"}, {"", "OK:\r\n2000 : 00 01 00 \r\n" + P});
        row("end at FFFF0000", {"write FFFEFFFE 0102\r\n", "read FFFEFFFE 2\r\n"}, {"", "OK:\r\nFFFEFFFE : 01 02 \r\n" + P});
        row("end past FFFF0000", {"write FFFEFFFF 0102\r\n"}, {kInvalidWrite});
        row("256 bytes", {"write 0 " + QByteArray(512, 'A') + "\r\n"}, {kInvalidWrite});
        row("address not hex", {"write zz 12\r\n"}, {kInvalidWrite});
        row("no such file", {"write 0 nosuchfile\r\n"}, {kInvalidWrite});
        row("help", {"help\r\n"}, {"OK:\r\nread <address> <length> [filename]\r\nwrite <address> <data(hex) | filename>\r\nhelp [command]\r\nquit" + P});
        row("help read", {"help read\r\n"}, {"OK:\r\nread <address> <length> [filename]\r\nThis command is used to read the register of the Mavix device.\r\n<address> : register address of the device(00000000 - FFFFFFFF)\r\n<length>  : data length(0 - 255)\r\n[filename]: name of file to be written the read data" + P});
        row("help write", {"help write\r\n"}, {"OK:\r\nwrite <address> <data | filename>\r\nThis command is used to write data into the device register.\r\n<address> : register address of the device(00000000 - FFFFFFFF)\r\n<data>    : data to be written(hex)\r\n<filename>: name of file which has a data to be written\r\n*note | This command can accsess ONLY 00000000 to FFFF0000" + P});
        row("help help", {"help help\r\n"}, {"OK:\r\nhelp [command]\r\nThis command returns the explain of commands.\r\n[command] : name of command" + P});
        row("help quit", {"help quit\r\n"}, {"OK:\r\nquit\r\nDisconnect the server" + P});
        row("help foo", {"help foo\r\n"}, {"NG:invalid help command" + P});
        row("help read extra", {"help read extra\r\n"}, {"NG:invalid help command" + P});
        row("upper case", {"READ 0 4\r\n"}, {kUnknown});
        row("empty line", {"\r\n"}, {kUnknown});
        row("quit with blanks", {"quit   \r\n"}, {"Bye-Bye!\r\n"});
        row("QUIT", {"QUIT\r\n"}, {kUnknown});
        row("typed one key at a time", {"r", "e", "a", "d", " ", "1", "0", " ", "4", "\r\n"}, {"", "", "", "", "", "", "", "", "", kDump10});
        row("CR and LF apart", {"help quit\r", "\n"}, {"OK:\r\nquit\r\nDisconnect the server" + P, kUnknown});
        row("two lines in one segment", {"help\r\nhelp\r\n"}, {kUnknown});
        row("line past 64 KiB", {QByteArray(65537, 'a'), "rest\r\n", "read 10 4\r\n"}, {kUnknown, "", kDump10});
        row("read, no reply", {"read 10 4\r\n"}, {"NG:Mavix device timeout" + P}, {"drop"});
        row("read, bad reply", {"read 10 4\r\n"}, {"NG:Mavix device reply invalid packet" + P}, {"wrong-vertype"});
        row("read, short reply", {"read 10 4\r\n"}, {"NG:Mavix device reply invalid packet" + P}, {"short"});
        row("read, bus error", {"read 10 4\r\n"}, {"NG:Mavix device reply bus error" + P}, {"bus-error"});
        row("read not sent", {"read 10 4\r\n"}, {"NG:Mavix device reply invalid packet" + P}, {"unsent"});
        row("write, no reply", {"write 0 01\r\n"}, {"NG:Server mode, write command is timeout" + P}, {"drop"});
        row("write, bus error", {"write 0 01\r\n"}, {"NG: Mavix device reply bus error" + P}, {"bus-error"});
        row("write, bad reply", {"write 0 01\r\n"}, {"NG:Mavix device won't reply" + P}, {"wrong-vertype"});
        // clang-format on
    }
    void replies()
    {
        QFETCH(QStringList, faults);
        QFETCH(QByteArrayList, segments);
        QFETCH(QByteArrayList, replies);
        if (faults == QStringList{"unsent"}) { // the request cannot be sent
            MavixSetting target = MavixSetting::current();
            target.udpPort = 0;
            MavixSetting::setCurrent(target);
        } else
            f->sim()->setFaults(faultsFrom(faults));
        Terminal client(f->tab.serverPort());
        QVERIFY(client.waitFor(kGreeting.size()));
        QByteArray expected = kGreeting;
        for (int i = 0; i < segments.size(); ++i) {
            client.socket.write(segments.at(i));
            const bool endsLine = segments.at(i).endsWith('\n') || segments.at(i).endsWith('\r');
            expected += segments.at(i) + (endsLine ? "\r\n" : "") + replies.at(i);
            QVERIFY(client.waitFor(expected.size()));
        }
        QCOMPARE(client.got, expected);
    }
    void manyClientsOneAfterAnother()
    {
        f->sim()->setFaults(faultsFrom({"delay:20"}));
        auto vanishing = std::make_unique<Terminal>(f->tab.serverPort());
        QVERIFY(vanishing->waitFor(kGreeting.size()));
        vanishing->socket.write("read 10 4\r\n");
        QVERIFY(vanishing->socket.waitForBytesWritten(kWaitMs));
        vanishing.reset(); // gone before its reply
        std::vector<std::unique_ptr<Terminal>> clients;
        for (int i = 0; i < 50; ++i)
            clients.push_back(std::make_unique<Terminal>(f->tab.serverPort()));
        const QByteArray served = kGreeting + "read 10 4\r\n\r\n" + kDump10;
        for (auto &client : clients) {
            QVERIFY(client->waitFor(kGreeting.size()));
            client->socket.write("read 10 4\r\n");
        }
        for (auto &client : clients) {
            QVERIFY(client->waitFor(served.size()));
            client->socket.write("quit\r\n");
        }
        for (auto &client : clients) {
            QVERIFY(client->waitFor(served.size() + 18));
            QCOMPARE(client->got, served + "quit\r\n\r\nBye-Bye!\r\n");
        }
        QTRY_VERIFY_WITH_TIMEOUT(f->tab.findChildren<RCClient *>().isEmpty(), kWaitMs);
        QTRY_VERIFY(logText().contains(QStringLiteral("Disconnect 0\n")));
        QTRY_VERIFY(logText().endsWith(QStringLiteral("Disconnect 50")));
    }
    void commandsWaitForABusyDevice()
    {
        Terminal client(f->tab.serverPort());
        QVERIFY(client.waitFor(kGreeting.size()));
        auto hold = std::make_unique<AccessGate::Hold>(f->agent.gate());
        client.socket.write("read 10 4\r\n");
        QVERIFY(client.waitFor(kGreeting.size() + 13)); // the echo does not wait for the device
        QVERIFY(!QTest::qWaitFor([&] { return client.got.contains("OK:\r\n"); }, 300));
        QCOMPARE(f->accesses().size(), 0);
        hold.reset();
        QVERIFY(client.waitFor(kGreeting.size() + 13 + kDump10.size()));
        QVERIFY(client.got.endsWith(kDump10));
    }
    void portInUseLogsOneError()
    {
        QTcpServer occupant;
        QVERIFY(occupant.listen(QHostAddress::Any));
        const QString logPath = dir.filePath(QStringLiteral("server.log"));
        logOpen(logPath, LOG_DBG);
        f->tab.setPort(occupant.serverPort());
        QVERIFY(!f->tab.start());
        logClose();
        QFile log(logPath);
        QVERIFY(log.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(log.readAll()).count(QStringLiteral("[ ERR]")), 1);
        QTRY_VERIFY(logText().endsWith(QStringLiteral("Server mode, fail to listen")));
    }

private:
    QString logText() const { return f->tab.findChild<QPlainTextEdit *>()->toPlainText(); }

    const QByteArray P = "\r\nMavixUtil>";
    const QByteArray kGreeting = "OK:Connected\r\nMavixUtil>";
    const QByteArray kDump10 = "OK:\r\n10 : 01 02 0A FF \r\n" + P;
    const QByteArray kInvalidRead = "NG:invalid read command" + P;
    const QByteArray kInvalidWrite = "NG:invalid write command" + P;
    const QByteArray kUnknown = "NG:Unknown Command" + P;
    std::unique_ptr<TabFixture<ServerTab>> f;
    QTemporaryDir dir;
};

QTEST_MAIN(TestServerTab)
#include "tst_servertab.moc"
