// bench_cli: the mavix command-line tool against plain baselines, both against one mavix-sim
// process on loopback.
//
//   start-up: a shell loop of 1,000 "mavix read 0 4"   vs  the same loop running /bin/true
//   receive:  "mavix recv FILE --bytes 1 GiB"          vs  bench_tcp's plain receiver (recv() of
//                                                          1 MiB + write()), in a child process
//
// Both sides of each measurement are timed the same way, from the start of the process to its
// end. Receives run three times each, interleaved; the medians are printed, and last the line
// "ratio: X" (mavix's receive rate over the plain receiver's).
#include "app/eventdispatcher.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr int kDefaultProcesses = 1000;
constexpr int kDefaultRuns = 3;
constexpr qint64 kDefaultTransferMiB = 1024;
constexpr int kStartTimeoutMs = 10000;
constexpr int kLoopTimeoutMs = 600000;
constexpr int kTransferTimeoutMs = 300000;

// A mavix-sim process on ports the system picks, sending `sourceBytes` on each connection.
class Emulator
{
public:
    bool start(qint64 sourceBytes)
    {
        m_process.start(QStringLiteral(MAVIX_SIM_PATH),
                        {QStringLiteral("--udp-port"), QStringLiteral("0"),
                         QStringLiteral("--tcp-port"), QStringLiteral("0"),
                         QStringLiteral("--tcp-mode"), QStringLiteral("source"),
                         QStringLiteral("--source-bytes"), QString::number(sourceBytes),
                         QStringLiteral("--no-hash")});
        QElapsedTimer clock;
        clock.start();
        while (!m_process.canReadLine() && clock.elapsed() < kStartTimeoutMs &&
               m_process.state() != QProcess::NotRunning)
            m_process.waitForReadyRead(100);
        static const QRegularExpression portLine(
            QStringLiteral(R"(udp 127\.0\.0\.1:(\d+) tcp 127\.0\.0\.1:(\d+))"));
        const QRegularExpressionMatch ports =
            portLine.match(QString::fromUtf8(m_process.readLine()));
        m_target = QStringLiteral("127.0.0.1:%1:%2").arg(ports.captured(1), ports.captured(2));
        m_tcpPort = ports.captured(2);
        return ports.hasMatch();
    }
    ~Emulator()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(kStartTimeoutMs)) {
            m_process.kill();
            m_process.waitForFinished(kStartTimeoutMs);
        }
    }
    [[nodiscard]] QString target() const { return m_target; }
    [[nodiscard]] QString tcpPort() const { return m_tcpPort; }

private:
    QProcess m_process;
    QString m_target;
    QString m_tcpPort;
};

// Runs a program to its end and returns its wall time in seconds, or -1 when it failed.
double timed(const QString &program, const QStringList &arguments, int timeoutMs)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardOutputFile(QProcess::nullDevice());
    QElapsedTimer clock;
    clock.start();
    process.start(program, arguments);
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished(kStartTimeoutMs);
        return -1;
    }
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 ? seconds : -1;
}

// The shell loop of the issue: `count` runs of `command`, stopping at the first failure.
double shellLoop(int count, const QString &command)
{
    const QString script =
        QStringLiteral("i=0; while [ $i -lt %1 ]; do %2 >/dev/null 2>&1 || exit 1; "
                       "i=$((i+1)); done")
            .arg(count)
            .arg(command);
    return timed(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script}, kLoopTimeoutMs);
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

bool fail(const char *what)
{
    std::fprintf(stderr, "bench_cli: %s\n", what);
    return false;
}

bool measureStartup(const Emulator &emulator, int processes)
{
    const QString mavix = QStringLiteral("'%1' --target %2 read 0 4")
                              .arg(QStringLiteral(MAVIX_CLI_PATH), emulator.target());
    const double tool = shellLoop(processes, mavix);
    const double baseline = shellLoop(processes, QStringLiteral("/bin/true"));
    if (tool < 0 || baseline < 0)
        return fail("start-up loop failed");
    const double toolMs = tool * 1000 / processes;
    const double baselineMs = baseline * 1000 / processes;
    std::printf("start-up: %d processes of \"mavix read 0 4\": %.2f ms each; /bin/true: %.2f ms "
                "each; mavix's own cost %.2f ms per process (goal < 15 ms)\n",
                processes, toolMs, baselineMs, toolMs - baselineMs);
    return true;
}

bool measureReceive(const Emulator &emulator, int runs, qint64 bytes, double *ratio)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("recv.bin"));
    std::vector<double> toolRates;
    std::vector<double> plainRates;
    const QStringList toolArguments{QStringLiteral("--target"), emulator.target(),
                                    QStringLiteral("recv"),     path,
                                    QStringLiteral("--bytes"),  QString::number(bytes)};
    const QStringList plainArguments{QStringLiteral("--child"), QStringLiteral("recv-plain"),
                                     QStringLiteral("--port"),  emulator.tcpPort(),
                                     QStringLiteral("--file"),  path};
    // Each receive starts without the other's file, whose truncation would count against it, and
    // the order alternates, so that neither side always meets the other's write-back.
    const auto receive = [&](const QString &program, const QStringList &arguments) {
        QFile::remove(path);
        const double seconds = timed(program, arguments, kTransferTimeoutMs);
        return seconds > 0 && QFileInfo(path).size() == bytes ? double(bytes) / seconds / 1e6
                                                              : -1.0;
    };
    for (int run = 1; run <= runs; ++run) {
        double tool = -1;
        double plain = -1;
        if (run % 2 == 1) {
            tool = receive(QStringLiteral(MAVIX_CLI_PATH), toolArguments);
            plain = receive(QStringLiteral(BENCH_TCP_PATH), plainArguments);
        } else {
            plain = receive(QStringLiteral(BENCH_TCP_PATH), plainArguments);
            tool = receive(QStringLiteral(MAVIX_CLI_PATH), toolArguments);
        }
        if (tool < 0 || plain < 0)
            return fail(tool < 0 ? "mavix recv failed" : "plain receive failed");
        toolRates.push_back(tool);
        plainRates.push_back(plain);
        std::printf("  run %d  recv  mavix %8.1f MB/s   plain %8.1f MB/s\n", run, tool, plain);
        std::fflush(stdout);
    }
    QFile::remove(path);
    const double tool = median(toolRates);
    const double plain = median(plainRates);
    std::printf("recv %lld MiB: mavix %.1f MB/s, plain receiver %.1f MB/s (medians of %d, order "
                "alternating)\n",
                static_cast<long long>(bytes >> 20), tool, plain, runs);
    *ratio = tool / plain;
    return true;
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption processes(QStringLiteral("processes"),
                                       QStringLiteral("mavix processes in the loop (1000)."),
                                       QStringLiteral("n"), QString::number(kDefaultProcesses));
    const QCommandLineOption runs(QStringLiteral("runs"), QStringLiteral("Receives of each (3)."),
                                  QStringLiteral("n"), QString::number(kDefaultRuns));
    const QCommandLineOption mib(QStringLiteral("mib"), QStringLiteral("MiB received (1024)."),
                                 QStringLiteral("n"), QString::number(kDefaultTransferMiB));
    parser.addOptions({processes, runs, mib});
    parser.addHelpOption();
    parser.process(app);
    const int processCount = std::clamp(parser.value(processes).toInt(), 1, 100000);
    const int runCount = std::clamp(parser.value(runs).toInt(), 1, 99);
    const qint64 bytes = std::clamp<qint64>(parser.value(mib).toLongLong(), 1, 16384) << 20;

    Emulator emulator;
    if (!emulator.start(bytes)) {
        fail("mavix-sim did not start");
        return 1;
    }
    double ratio = 0;
    if (!measureStartup(emulator, processCount) ||
        !measureReceive(emulator, runCount, bytes, &ratio))
        return 1;
    std::printf("ratio: %.2f\n", ratio);
    return 0;
}
