// The mavix-sim console program as scripts use it: the port line, the EEPROM file, exit codes,
// signals, refused options, and a fair share for the data port and signals under a flood.
#include "simclient.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <arpa/inet.h>
#include <csignal>
#include <unistd.h>
#include <sys/stat.h>

namespace {

constexpr int kStartTimeoutMs = 10000;

// A running mavix-sim; killed if a test leaves it running.
class SimProcess
{
public:
    ~SimProcess()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(kStartTimeoutMs);
        }
    }

    // Starts it on ports the system picks, unless the arguments name others, and reads the port
    // line; false if it did not come.
    bool start(const QStringList &arguments)
    {
        m_process.start(QStringLiteral(MAVIX_SIM_PATH),
                        QStringList{"--udp-port", "0", "--tcp-port", "0"} + arguments);
        QElapsedTimer clock;
        clock.start();
        while (!m_process.canReadLine() && clock.elapsed() < kStartTimeoutMs &&
               m_process.state() != QProcess::NotRunning)
            m_process.waitForReadyRead(100);
        m_portLine = QString::fromUtf8(m_process.readLine()).trimmed();
        static const QRegularExpression line(
            QStringLiteral(R"(^mavix-sim: udp 127\.0\.0\.1:(\d+) tcp 127\.0\.0\.1:(\d+)$)"));
        const QRegularExpressionMatch match = line.match(m_portLine);
        m_udpPort = match.hasMatch() ? match.captured(1).toUShort() : 0;
        m_tcpPort = match.hasMatch() ? match.captured(2).toUShort() : 0;
        return m_udpPort != 0;
    }
    // Waits for the end: the exit code, or -1 if it did not end normally.
    int finish()
    {
        if (m_process.state() != QProcess::NotRunning)
            m_process.waitForFinished(kStartTimeoutMs);
        if (m_process.state() != QProcess::NotRunning ||
            m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }
    int stopWith(int signalNumber)
    {
        ::kill(pid_t(m_process.processId()), signalNumber);
        return finish();
    }
    QString errors() { return QString::fromUtf8(m_process.readAllStandardError()).trimmed(); }
    QStringList outputLines()
    {
        return QString::fromUtf8(m_process.readAllStandardOutput())
            .split(u'\n', Qt::SkipEmptyParts);
    }
    QByteArray exchange(const QByteArray &datagram, int timeoutMs = kSimReplyTimeoutMs)
    {
        return m_client.bytes(datagram, m_udpPort, timeoutMs);
    }

    QProcess m_process;
    RawClient m_client;
    QString m_portLine;
    quint16 m_udpPort = 0;
    quint16 m_tcpPort = 0;
};

} // namespace

class TestMavixSimProcess : public QObject
{
    Q_OBJECT

private slots:
    void servesUntilASignal_data();
    void servesUntilASignal();
    void portInUseExitsWith2();
    void badOptionExitsWith1_data();
    void badOptionExitsWith1();
    void floodLeavesDataPortAndSignalsServed();
};

void TestMavixSimProcess::servesUntilASignal_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::addRow("SIGINT") << int(SIGINT);
    QTest::addRow("SIGTERM") << int(SIGTERM);
}

void TestMavixSimProcess::servesUntilASignal()
{
    QFETCH(int, signalNumber);

    // The running copy boots from the EEPROM file, with the address and ports it was started on.
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("eeprom.bin"));
    QByteArray eeprom = simStartImage(0, 0);
    eeprom.replace(18, 6, hex("020000000099"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(eeprom) == 64);
    file.close();

    SimProcess sim;
    QVERIFY2(sim.start({"--eeprom", path}), qPrintable(sim.m_portLine));
    QByteArray running = simStartImage(sim.m_udpPort, sim.m_tcpPort);
    running.replace(18, 6, hex("020000000099"));
    QCOMPARE(sim.exchange(readRequest(0xFFFFFF00, 64)).toHex(' '),
             (hex("FFC80140FFFFFF00") + running).toHex(' '));
    QCOMPARE(sim.exchange(readRequest(0xFFFFFC00, 64)).mid(8), eeprom);
    QCOMPARE(sim.exchange(writeRequest(0x100, hex("0102"))).left(2), hex("FF88"));
    QCOMPARE(sim.exchange(hex("00"), kSimSilenceMs), QByteArray("none")); // ignored
    QCOMPARE(sim.stopWith(signalNumber), 0);
    QCOMPARE(sim.outputLines(), QStringList{"mavix-sim: totals: 3 requests (2 reads, 1 writes), "
                                            "1 ignored, 0 replies dropped, 0 bus errors, 0 "
                                            "delayed replies over the limit"});
}

void TestMavixSimProcess::portInUseExitsWith2()
{
    QUdpSocket holder;
    QVERIFY(holder.bind(QHostAddress::LocalHost, 0, QAbstractSocket::DontShareAddress));
    const QString port = QString::number(holder.localPort());
    SimProcess sim;
    QVERIFY(!sim.start({"--udp-port", port}));
    QCOMPARE(sim.finish(), 2);
    QCOMPARE(sim.errors(),
             QStringLiteral("mavix-sim: UDP port %1 on 127.0.0.1 is already in use").arg(port));
}

void TestMavixSimProcess::badOptionExitsWith1_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("error");
    QTest::addRow("UDP port too large")
        << QStringList{"--udp-port", "65536"} << "--udp-port must be 0 to 65535, not 65536";
    QTest::addRow("address not an address")
        << QStringList{"--address", "nowhere"} << "--address: nowhere is not an IP address";
    QTest::addRow("drop every 0th")
        << QStringList{"--drop-every", "0"} << "--drop-every must be a whole number from 1, not 0";
    QTest::addRow("negative delay")
        << QStringList{"--delay", "-5"} << "--delay must be 0 to 600000 ms, not -5";
    QTest::addRow("address in octal-looking form")
        << QStringList{"--address", "127.000.0.1"} << "--address: 127.000.0.1 is not an IP address";
    QTest::addRow("address as one number")
        << QStringList{"--address", "2130706433"} << "--address: 2130706433 is not an IP address";
    QTest::addRow("port in hexadecimal")
        << QStringList{"--tcp-port", "0x50"} << "--tcp-port must be 0 to 65535, not 0x50";
    QTest::addRow("missing source file") << QStringList{"--source-file", "/nonexistent/src"}
                                         << "--source-file: cannot read /nonexistent/src";
    QTest::addRow("sink file in a missing folder")
        << QStringList{"--sink-file", "/nonexistent/sink"}
        << "--sink-file: cannot write /nonexistent/sink";
    QTest::addRow("EEPROM file is a FIFO")
        << QStringList{"--eeprom", "FIFO"} << "The EEPROM file FIFO is not a regular file";
    QTest::addRow("range backwards")
        << QStringList{"--bus-error-range", "2000-1000"}
        << "--bus-error-range must be FIRST-LAST in hexadecimal, not 2000-1000";
}

void TestMavixSimProcess::badOptionExitsWith1()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    // Refused before anything is bound.
    QTemporaryDir dir;
    if (arguments.contains(u"FIFO"))
        QCOMPARE(::mkfifo(QFile::encodeName(dir.filePath("FIFO")).constData(), 0600), 0);
    SimProcess sim;
    sim.m_process.setWorkingDirectory(dir.path());
    QVERIFY(!sim.start(arguments));
    QCOMPARE(sim.finish(), 1);
    QCOMPARE(sim.errors(), QStringLiteral("mavix-sim: ") + error);
}

// A thread floods the UDP port (bounded in count and time) while the data port echoes and the
// program ends on SIGTERM.
void TestMavixSimProcess::floodLeavesDataPortAndSignalsServed()
{
    SimProcess sim;
    QVERIFY2(sim.start({"--tcp-mode", "echo", "--verbose"}), qPrintable(sim.m_portLine));
    std::atomic<bool> stop{false};
    std::unique_ptr<QThread> flood(QThread::create([port = sim.m_udpPort, &stop] {
        // A plain connected socket: the cheapest sender, so that requests arrive faster than a
        // reply can be made.
        const int fd = ::socket(AF_INET, SOCK_DGRAM, 0);
        sockaddr_in to{};
        to.sin_family = AF_INET;
        to.sin_port = htons(port);
        to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::connect(fd, reinterpret_cast<const sockaddr *>(&to), sizeof to);
        const QByteArray request = readRequest(0x7000, 255);
        QElapsedTimer clock;
        clock.start();
        for (int i = 0; i < 20000000 && !stop && clock.elapsed() < 8000; ++i)
            ::send(fd, request.constData(), size_t(request.size()), 0);
        ::close(fd);
    }));
    flood->start();
    QTest::qWait(300);
    QTcpSocket data;
    data.connectToHost(QHostAddress::LocalHost, sim.m_tcpPort);
    QVERIFY(data.waitForConnected(2000));
    data.write("ping");
    QTRY_COMPARE_WITH_TIMEOUT(data.bytesAvailable(), qint64(4), 1000);
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(sim.stopWith(SIGTERM), 0);
    QVERIFY(clock.elapsed() < 1000);
    stop = true;
    QVERIFY(flood->wait(10000));
}

QTEST_GUILESS_MAIN(TestMavixSimProcess)
#include "tst_mavixsimprocess.moc"
