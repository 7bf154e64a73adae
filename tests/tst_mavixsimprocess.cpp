// The mavix-sim console program as scripts use it: the port line, a read of the settings image,
// fault options on the wire, the EEPROM file across runs, exit codes and signals.
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>
#include <QUdpSocket>

#include <csignal>
#include <memory>
#include <optional>

namespace {

constexpr int kStartTimeoutMs = 10000;
constexpr int kReplyTimeoutMs = 5000;
constexpr int kSilenceMs = 300;

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray request(quint8 flags, quint8 id, quint8 length, quint32 address,
                   const QByteArray &data = {})
{
    QByteArray bytes(8, Qt::Uninitialized);
    bytes[0] = char(0xFF);
    bytes[1] = char(flags);
    bytes[2] = char(id);
    bytes[3] = char(length);
    qToBigEndian<quint32>(address, bytes.data() + 4);
    return bytes + data;
}

// One datagram out, the first datagram back, or nothing within the time-out.
std::optional<QByteArray> exchange(const QByteArray &datagram, quint16 port,
                                   int timeoutMs = kReplyTimeoutMs)
{
    QUdpSocket socket;
    socket.bind(QHostAddress::LocalHost, 0);
    socket.writeDatagram(datagram, QHostAddress::LocalHost, port);
    if (!socket.waitForReadyRead(timeoutMs))
        return std::nullopt;
    QByteArray reply(qMax<qint64>(socket.pendingDatagramSize(), 0), Qt::Uninitialized);
    socket.readDatagram(reply.data(), reply.size());
    return reply;
}

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

    // Starts it and reads the port line; false if it did not come.
    bool start(const QStringList &arguments)
    {
        m_process.start(QStringLiteral(MAVIX_SIM_PATH), arguments);
        if (!m_process.waitForStarted(kStartTimeoutMs))
            return false;
        QElapsedTimer clock;
        clock.start();
        while (!m_process.canReadLine() && clock.elapsed() < kStartTimeoutMs)
            m_process.waitForReadyRead(100);
        if (!m_process.canReadLine())
            return false;
        m_portLine = QString::fromUtf8(m_process.readLine()).trimmed();
        static const QRegularExpression line(
            QStringLiteral(R"(^mavix-sim: udp 127\.0\.0\.1:(\d+) tcp 127\.0\.0\.1:(\d+)$)"));
        const QRegularExpressionMatch match = line.match(m_portLine);
        m_udpPort = match.hasMatch() ? match.captured(1).toUShort() : 0;
        m_tcpPort = match.hasMatch() ? match.captured(2).toUShort() : 0;
        return m_udpPort != 0;
    }
    // Sends the signal and waits for the end; the exit code, or -1 if it did not end normally.
    int stopWith(int signalNumber)
    {
        ::kill(pid_t(m_process.processId()), signalNumber);
        if (!m_process.waitForFinished(kStartTimeoutMs) ||
            m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        return m_process.exitCode();
    }
    QString output() { return QString::fromUtf8(m_process.readAllStandardOutput()); }

    QProcess m_process;
    QString m_portLine;
    quint16 m_udpPort = 0;
    quint16 m_tcpPort = 0;
};

struct Finished
{
    int exitCode = -1;
    QString errors;
};

// Runs it to its end, for the cases where it refuses to start.
Finished runToEnd(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral(MAVIX_SIM_PATH), arguments);
    Finished finished;
    if (!process.waitForFinished(kStartTimeoutMs)) {
        process.kill();
        process.waitForFinished(kStartTimeoutMs);
        return finished;
    }
    finished.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    finished.errors = QString::fromUtf8(process.readAllStandardError());
    return finished;
}

} // namespace

class TestMavixSimProcess : public QObject
{
    Q_OBJECT

private slots:
    void servesTheSettingsImageOnAnyPort();
    void portLineShowsTheGivenTcpPort();
    void signalPrintsTotalsAndEnds_data();
    void signalPrintsTotalsAndEnds();
    void portInUseExitsWith2();
    void badOptionExitsWith1_data();
    void badOptionExitsWith1();
    void faultOption_data();
    void faultOption();
    void verbosePrintsOneLinePerRequest();
    void eepromFileKeptAcrossRuns();
};

void TestMavixSimProcess::servesTheSettingsImageOnAnyPort()
{
    SimProcess sim;
    QVERIFY2(sim.start({"--udp-port", "0", "--tcp-port", "0"}), qPrintable(sim.m_portLine));
    const auto reply = exchange(request(0xC0, 1, 64, 0xFFFFFF00), sim.m_udpPort);
    QVERIFY(reply);
    QCOMPARE(reply->size(), 8 + 64);
    QCOMPARE(reply->left(8), hex("FFC80140FFFFFF00"));
    const QByteArray image = reply->mid(8);
    QCOMPARE(image.mid(18, 6), hex("0200C0A80010"));
    QCOMPARE(image.mid(24, 4), hex("7F000001"));
    QCOMPARE(qFromBigEndian<quint16>(image.constData() + 34), sim.m_udpPort);
    QCOMPARE(sim.stopWith(SIGTERM), 0);
    QVERIFY(sim.output().contains(u"totals: 1 requests (1 reads, 0 writes)"));
}

void TestMavixSimProcess::portLineShowsTheGivenTcpPort()
{
    SimProcess sim;
    QVERIFY2(sim.start({"--udp-port", "0", "--tcp-port", "2424"}), qPrintable(sim.m_portLine));
    QCOMPARE(sim.m_tcpPort, quint16(2424));
    const auto reply = exchange(request(0xC0, 1, 2, 0xFFFFFF1C), sim.m_udpPort);
    QVERIFY(reply);
    QCOMPARE(reply->mid(8), hex("0978"));
}

void TestMavixSimProcess::signalPrintsTotalsAndEnds_data()
{
    QTest::addColumn<int>("signalNumber");
    QTest::addRow("SIGINT") << int(SIGINT);
    QTest::addRow("SIGTERM") << int(SIGTERM);
}

void TestMavixSimProcess::signalPrintsTotalsAndEnds()
{
    QFETCH(int, signalNumber);

    SimProcess sim;
    QVERIFY2(sim.start({"--udp-port", "0"}), qPrintable(sim.m_portLine));
    QVERIFY(exchange(request(0x80, 1, 2, 0x100, hex("0102")), sim.m_udpPort));
    QVERIFY(!exchange(hex("00"), sim.m_udpPort, kSilenceMs)); // ignored
    QCOMPARE(sim.stopWith(signalNumber), 0);
    const QString output = sim.output();
    QVERIFY2(output.contains(u"mavix-sim: totals: 1 requests (0 reads, 1 writes), 1 ignored, 0 "
                             u"replies dropped, 0 bus errors"),
             qPrintable(output));
}

void TestMavixSimProcess::portInUseExitsWith2()
{
    QUdpSocket holder;
    QVERIFY(holder.bind(QHostAddress::LocalHost, 0, QAbstractSocket::DontShareAddress));
    const QString port = QString::number(holder.localPort());
    const Finished finished = runToEnd({"--udp-port", port});
    QCOMPARE(finished.exitCode, 2);
    QVERIFY2(finished.errors.contains(
                 QStringLiteral("UDP port %1 on 127.0.0.1 is already in use").arg(port)),
             qPrintable(finished.errors));
}

void TestMavixSimProcess::badOptionExitsWith1_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named");
    QTest::addRow("UDP port too large") << QStringList{"--udp-port", "65536"} << "--udp-port";
    QTest::addRow("TCP port not a number") << QStringList{"--tcp-port", "24a"} << "--tcp-port";
    QTest::addRow("address not an address") << QStringList{"--address", "nowhere"} << "--address";
    QTest::addRow("drop every 0th") << QStringList{"--drop-every", "0"} << "--drop-every";
    QTest::addRow("negative delay") << QStringList{"--delay", "-5"} << "--delay";
    QTest::addRow("range backwards")
        << QStringList{"--bus-error-range", "2000-1000"} << "--bus-error-range";
}

void TestMavixSimProcess::badOptionExitsWith1()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);

    // Refused before anything is bound, so the default port is never touched.
    const Finished finished = runToEnd(arguments);
    QCOMPARE(finished.exitCode, 1);
    QVERIFY2(finished.errors.contains(named), qPrintable(finished.errors));
}

void TestMavixSimProcess::faultOption_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("reply"); // empty: no reply

    QTest::addRow("--wrong-vertype")
        << QStringList{"--wrong-vertype"} << hex("EFC8 05 02 00007000 0000");
    QTest::addRow("--no-ack") << QStringList{"--no-ack"} << hex("FFC0 05 02 00007000 0000");
    QTest::addRow("--wrong-id") << QStringList{"--wrong-id"} << hex("FFC8 06 02 00007000 0000");
    QTest::addRow("--flip-rw") << QStringList{"--flip-rw"} << hex("FF88 05 02 00007000 0000");
    QTest::addRow("--short-reply") << QStringList{"--short-reply"} << hex("FFC8 05 02 00007000 00");
    QTest::addRow("--bus-error") << QStringList{"--bus-error"} << hex("FFC9 05 02 00007000 0000");
    QTest::addRow("--bus-error-range")
        << QStringList{"--bus-error-range", "7001-7001"} << hex("FFC9 05 02 00007000 0000");
    QTest::addRow("--bus-error-range elsewhere")
        << QStringList{"--bus-error-range", "8000-8FFF"} << hex("FFC8 05 02 00007000 0000");
    QTest::addRow("--drop-every 1") << QStringList{"--drop-every", "1"} << QByteArray();
    QTest::addRow("--delay 100") << QStringList{"--delay", "100"}
                                 << hex("FFC8 05 02 00007000 0000");
    QTest::addRow("--random-replies") << QStringList{"--random-replies"} << QByteArray("any");
}

void TestMavixSimProcess::faultOption()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, reply);

    SimProcess sim;
    QVERIFY2(sim.start(options + QStringList{"--udp-port", "0"}), qPrintable(sim.m_portLine));
    QElapsedTimer clock;
    clock.start();
    const auto got = exchange(request(0xC0, 5, 2, 0x7000), sim.m_udpPort,
                              reply.isEmpty() ? kSilenceMs : kReplyTimeoutMs);
    if (reply.isEmpty()) {
        QVERIFY(!got);
    } else if (reply == "any") {
        QVERIFY(got); // whatever it holds, one datagram comes back
    } else {
        QVERIFY(got);
        QCOMPARE(got->toHex(' '), reply.toHex(' '));
    }
    if (options.first() == u"--delay")
        QVERIFY(clock.elapsed() >= 95);
    QCOMPARE(sim.stopWith(SIGTERM), 0);
}

void TestMavixSimProcess::verbosePrintsOneLinePerRequest()
{
    SimProcess sim;
    QVERIFY2(sim.start({"--udp-port", "0", "--verbose"}), qPrintable(sim.m_portLine));
    QVERIFY(exchange(request(0xC0, 1, 64, 0xFFFFFF00), sim.m_udpPort));
    QVERIFY(exchange(request(0x80, 2, 1, 0xFFFFFC00, hex("00")), sim.m_udpPort));
    QCOMPARE(sim.stopWith(SIGTERM), 0);
    const QStringList lines = sim.output().split(u'\n', Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), 3);
    QCOMPARE(lines[0], QStringLiteral("read  0xFFFFFF00 length 64 id 1: ok"));
    QCOMPARE(lines[1], QStringLiteral("write 0xFFFFFC00 length 1 id 2: bus error"));
    QVERIFY(lines[2].startsWith(u"mavix-sim: totals:"));
}

void TestMavixSimProcess::eepromFileKeptAcrossRuns()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("eeprom.bin"));
    const QStringList arguments = {"--udp-port", "0", "--eeprom", path};
    {
        SimProcess sim;
        QVERIFY2(sim.start(arguments), qPrintable(sim.m_portLine));
        QCOMPARE(exchange(request(0x80, 1, 1, 0xFFFFFCFF, hex("00")), sim.m_udpPort)->at(1),
                 char(0x88));
        QCOMPARE(exchange(request(0x80, 2, 4, 0xFFFFFC18, hex("0A000001")), sim.m_udpPort)->at(1),
                 char(0x88));
        QCOMPARE(exchange(request(0x80, 3, 1, 0xFFFFFCFF, hex("FF")), sim.m_udpPort)->at(1),
                 char(0x88));
        QCOMPARE(sim.stopWith(SIGINT), 0);
    }
    QCOMPARE(QFile(path).size(), 64);
    SimProcess sim;
    QVERIFY2(sim.start(arguments), qPrintable(sim.m_portLine));
    const auto eeprom = exchange(request(0xC0, 1, 4, 0xFFFFFC18), sim.m_udpPort);
    QVERIFY(eeprom);
    QCOMPARE(eeprom->mid(8), hex("0A000001"));
    QCOMPARE(sim.stopWith(SIGTERM), 0);
}

QTEST_GUILESS_MAIN(TestMavixSimProcess)
#include "tst_mavixsimprocess.moc"
