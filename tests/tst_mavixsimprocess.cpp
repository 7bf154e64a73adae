// The mavix-sim console program as scripts use it: the port line, the EEPROM file, exit codes,
// signals, refused options, and a fair share for the data port and signals under a flood.
#include "simclient.h"
#include "testtable.h"

#include <QtNetwork>
#include <QtTest>

#include <arpa/inet.h>
#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// A running mavix-sim on ports the system picks (unless the arguments name others); killed if a
// test leaves it running.
struct SimProcess
{
    explicit SimProcess(const QStringList &arguments, const QString &folder = QString())
    {
        process.setWorkingDirectory(folder);
        process.start(QStringLiteral(MAVIX_SIM_PATH),
                      QStringList{"--udp-port", "0", "--tcp-port", "0"} + arguments);
        const QDeadlineTimer deadline(10000);
        while (!process.canReadLine() && !deadline.hasExpired() &&
               process.state() != QProcess::NotRunning)
            process.waitForReadyRead(100);
        portLine = QString::fromUtf8(process.readLine()).trimmed();
        static const QRegularExpression line(
            QStringLiteral(R"(^mavix-sim: udp 127\.0\.0\.1:(\d+) tcp 127\.0\.0\.1:(\d+)$)"));
        const QRegularExpressionMatch match = line.match(portLine);
        udpPort = match.captured(1).toUShort();
        tcpPort = match.captured(2).toUShort();
    }
    ~SimProcess() { process.kill(), process.waitForFinished(10000); }
    // The exit code once it ended, -1 if it did not end normally.
    int finish(int signalNumber = 0)
    {
        if (signalNumber)
            ::kill(pid_t(process.processId()), signalNumber);
        process.waitForFinished(10000);
        const bool ended = process.state() == QProcess::NotRunning;
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    QByteArray exchange(const QByteArray &datagram, int timeoutMs = kSimReplyTimeoutMs)
    {
        return RawClient().bytes(datagram, udpPort, timeoutMs);
    }

    QProcess process;
    QString portLine;
    quint16 udpPort = 0;
    quint16 tcpPort = 0;
};

} // namespace

class TestMavixSimProcess : public QObject
{
    Q_OBJECT

private slots:
    void servesUntilASignal_data()
    {
        QTest::addColumn<int>("signalNumber");
        QTest::addRow("SIGINT") << int(SIGINT);
        QTest::addRow("SIGTERM") << int(SIGTERM);
    }
    // The running copy boots from the EEPROM file (its MAC here), with the ports it was started on.
    void servesUntilASignal()
    {
        QFETCH(int, signalNumber);
        QTemporaryDir dir;
        const QByteArray eeprom = simStartImage(0, 0).replace(18, 6, hex("020000000099"));
        QFile file(dir.filePath(QStringLiteral("eeprom.bin")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(eeprom) == 64);
        file.close();
        SimProcess sim({"--eeprom", file.fileName()});
        QCOMPARE(sim.exchange(readRequest(0xFFFFFF12, 6)).mid(8), hex("020000000099"));
        QCOMPARE(sim.exchange(writeRequest(0x100, hex("0102"))).left(2), hex("FF88"));
        QCOMPARE(sim.exchange(hex("00"), kSimSilenceMs), QByteArray("none")); // ignored
        QCOMPARE(sim.finish(signalNumber), 0);
        QCOMPARE(
            sim.process.readAllStandardOutput(),
            "mavix-sim: totals: 2 requests (1 reads, 1 writes), 1 ignored, 0 replies dropped, 0 "
            "bus errors, 0 delayed replies over the limit\n");
    }
    // Refused before anything is bound; "PORT" stands for a UDP port another socket holds.
    void refusedAtStart_data()
    {
        // clang-format off
        columns<QString, int, QString>("arguments", "exitCode", "error");
        QTest::addRow("--udp-port PORT") << "--udp-port PORT" << 2 << "UDP port PORT on 127.0.0.1 is already in use";
        QTest::addRow("--udp-port 65536") << "--udp-port 65536" << 1 << "--udp-port must be 0 to 65535, not 65536";
        QTest::addRow("--address 127.000.0.1") << "--address 127.000.0.1" << 1 << "--address: 127.000.0.1 is not an IP address";
        QTest::addRow("--delay -5") << "--delay -5" << 1 << "--delay must be 0 to 600000 ms, not -5";
        QTest::addRow("--bus-error-range 2000-1000") << "--bus-error-range 2000-1000" << 1 << "--bus-error-range must be FIRST-LAST in hexadecimal, not 2000-1000";
        QTest::addRow("--source-file /nonexistent/src") << "--source-file /nonexistent/src" << 1 << "--source-file: cannot read /nonexistent/src";
        QTest::addRow("--sink-file /nonexistent/sink") << "--sink-file /nonexistent/sink" << 1 << "--sink-file: cannot write /nonexistent/sink";
        QTest::addRow("--eeprom FIFO") << "--eeprom FIFO" << 1 << "The EEPROM file FIFO is not a regular file";
        // clang-format on
    }
    void refusedAtStart()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, error);
        QUdpSocket holder;
        QVERIFY(holder.bind(QHostAddress::LocalHost, 0, QAbstractSocket::DontShareAddress));
        const QString port = QString::number(holder.localPort());
        QTemporaryDir dir;
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath("FIFO")).constData(), 0600), 0);
        SimProcess sim(arguments.replace(QLatin1String("PORT"), port).split(u' '), dir.path());
        QTEST(sim.finish(), "exitCode");
        QCOMPARE(sim.process.readAllStandardError().trimmed(),
                 "mavix-sim: " + error.replace(QLatin1String("PORT"), port).toUtf8());
    }
    // A thread floods the UDP port, faster than replies can be made and bounded in count and time,
    // while the data port echoes and the program ends on SIGTERM.
    void floodLeavesDataPortAndSignalsServed()
    {
        SimProcess sim({"--tcp-mode", "echo", "--verbose"});
        std::atomic<bool> stop{false};
        std::unique_ptr<QThread> flood(QThread::create([port = sim.udpPort, &stop] {
            const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
            sockaddr_in to{};
            to.sin_family = AF_INET;
            to.sin_port = htons(port);
            to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            ::connect(fd, reinterpret_cast<const sockaddr *>(&to), sizeof to);
            const QByteArray request = readRequest(0x7000, 255);
            const QDeadlineTimer deadline(8000);
            for (int i = 0; i < 20000000 && !stop && !deadline.hasExpired(); ++i)
                ::send(fd, request.constData(), size_t(request.size()), 0);
            ::close(fd);
        }));
        flood->start();
        QTest::qWait(300);
        QTcpSocket data;
        data.connectToHost(QHostAddress::LocalHost, sim.tcpPort);
        QVERIFY(data.waitForConnected(2000));
        data.write("ping");
        QTRY_COMPARE_WITH_TIMEOUT(data.bytesAvailable(), qint64(4), 1000);
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(sim.finish(SIGTERM), 0);
        QVERIFY(clock.elapsed() < 1000);
        stop = true;
        QVERIFY(flood->wait(10000));
    }
};

QTEST_GUILESS_MAIN(TestMavixSimProcess)
#include "tst_mavixsimprocess.moc"
