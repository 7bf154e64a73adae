// The mavix-sim console program as scripts use it: the port line, the settings image and the
// EEPROM file, fault options on the wire, the verbose lines, exit codes and signals.
#include "simclient.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

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
    void faultOption_data();
    void faultOption();
    void verbosePrintsOneLinePerRequest();
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
                                            "1 ignored, 0 replies dropped, 0 bus errors"});
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
    QTest::addRow("range backwards")
        << QStringList{"--bus-error-range", "2000-1000"}
        << "--bus-error-range must be FIRST-LAST in hexadecimal, not 2000-1000";
}

void TestMavixSimProcess::badOptionExitsWith1()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, error);

    // Refused before anything is bound.
    SimProcess sim;
    QVERIFY(!sim.start(arguments));
    QCOMPARE(sim.finish(), 1);
    QCOMPARE(sim.errors(), QStringLiteral("mavix-sim: ") + error);
}

void TestMavixSimProcess::faultOption_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("reply"); // "none": no reply, "any": whatever comes back

    QTest::addRow("every reply fault at once")
        << QStringList{"--wrong-vertype", "--no-ack", "--wrong-id", "--flip-rw", "--short-reply"}
        << hex("EF80 06 02 00007000 00");
    QTest::addRow("--bus-error") << QStringList{"--bus-error"} << hex("FFC9 05 02 00007000 0000");
    QTest::addRow("--bus-error-range")
        << QStringList{"--bus-error-range", "7001-7001"} << hex("FFC9 05 02 00007000 0000");
    QTest::addRow("--drop-every 1") << QStringList{"--drop-every", "1"} << QByteArray("none");
    QTest::addRow("--delay 100") << QStringList{"--delay", "100"}
                                 << hex("FFC8 05 02 00007000 0000");
    QTest::addRow("--random-replies") << QStringList{"--random-replies"} << QByteArray("any");
}

void TestMavixSimProcess::faultOption()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, reply);

    SimProcess sim;
    QVERIFY2(sim.start(options), qPrintable(sim.m_portLine));
    QElapsedTimer clock;
    clock.start();
    const QByteArray got = sim.exchange(readRequest(0x7000, 2, 5),
                                        reply == "none" ? kSimSilenceMs : kSimReplyTimeoutMs);
    if (reply == "any")
        QVERIFY(got != "none"); // whatever it holds, one datagram comes back
    else
        QCOMPARE(got.toHex(' '), reply.toHex(' '));
    if (options.first() == u"--delay")
        QVERIFY(clock.elapsed() >= 95);
    QCOMPARE(sim.stopWith(SIGTERM), 0);
}

void TestMavixSimProcess::verbosePrintsOneLinePerRequest()
{
    SimProcess sim;
    QVERIFY2(sim.start({"--verbose"}), qPrintable(sim.m_portLine));
    QVERIFY(sim.exchange(readRequest(0xFFFFFF00, 64, 1)) != "none");
    QVERIFY(sim.exchange(writeRequest(0xFFFFFC00, hex("00"), 2)) != "none");
    QCOMPARE(sim.stopWith(SIGTERM), 0);
    const QStringList lines = sim.outputLines();
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0], QStringLiteral("read  0xFFFFFF00 length 64 id 1: ok"));
    QCOMPARE(lines[1], QStringLiteral("write 0xFFFFFC00 length 1 id 2: bus error"));
    QVERIFY(lines[2].startsWith(u"mavix-sim: totals:"));
}

QTEST_GUILESS_MAIN(TestMavixSimProcess)
#include "tst_mavixsimprocess.moc"
