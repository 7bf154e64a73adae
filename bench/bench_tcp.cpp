// bench_tcp: the TCP data transfer worker against plain POSIX code, over loopback to the
// emulator's data port, 1 GiB each way.
//
//   receive: TCPThread (display off) writing a file  vs  recv() of 1 MiB + write()
//   send:    TCPThread reading a file               vs  read()+send() of 1024 bytes, and of 1 MiB
//
// Each side of each measurement runs in a child process of its own (this program started again
// with --child), so that its peak resident memory is its own; the emulator runs in this process.
// The files are kept in memory (/dev/shm) where there is one. Five runs each, interleaved; the
// medians are printed, and last the line "ratio: recv=X send=Y" (TCPThread over the plain receiver,
// and over the 1024-byte sender). Progress lambdas capture locals by reference; their context
// object is a local declared after those locals, so every connection ends before what it writes to.
// clazy:excludeall=lambda-in-connect
#include "app/appmodel.h"
#include "app/eventdispatcher.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/filesender.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <map>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr qint64 kDefaultTransferMiB = 1024;
constexpr int kDefaultRuns = 5;
constexpr int kChildTimeoutMs = 180000;
constexpr qint64 kPlainRecvBytes = 1024 * 1024;

struct ChildResult
{
    bool ok = false;
    double seconds = 0;
    qint64 bytes = 0;
    qint64 peakRssKb = 0;
    QString error;
};

// ---- Child side ----

qint64 peakRssKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong();
    }
    return -1;
}

void printResult(double seconds, qint64 bytes)
{
    std::printf("result seconds=%.6f bytes=%lld rss_kb=%lld\n", seconds,
                static_cast<long long>(bytes), static_cast<long long>(peakRssKb()));
    std::fflush(stdout);
}

int connectLoopback(quint16 port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (fd < 0 || ::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        if (fd >= 0)
            ::close(fd);
        return -1;
    }
    return fd;
}

// Files and sockets alike; a closed peer gives EPIPE, not a signal (SIGPIPE is ignored in main).
bool writeAll(int fd, const char *data, qint64 size)
{
    while (size > 0) {
        const ssize_t n = ::write(fd, data, size_t(size));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        data += n;
        size -= n;
    }
    return true;
}

int plainReceive(quint16 port, const QString &path)
{
    std::vector<char> buffer(kPlainRecvBytes);
    QElapsedTimer timer;
    timer.start();
    const int out =
        ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    const int fd = connectLoopback(port);
    if (out < 0 || fd < 0)
        return 1;
    qint64 total = 0;
    for (;;) {
        const ssize_t n = ::recv(fd, buffer.data(), buffer.size(), 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        if (!writeAll(out, buffer.data(), n))
            return 1;
        total += n;
    }
    ::close(out);
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    ::close(fd);
    printResult(seconds, total);
    return 0;
}

int plainSend(quint16 port, const QString &path, qint64 chunkBytes)
{
    std::vector<char> buffer(static_cast<size_t>(chunkBytes));
    QElapsedTimer timer;
    timer.start();
    const int in = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    const int fd = connectLoopback(port);
    if (in < 0 || fd < 0)
        return 1;
    qint64 total = 0;
    for (;;) {
        const ssize_t n = ::read(in, buffer.data(), buffer.size());
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        if (!writeAll(fd, buffer.data(), n))
            return 1;
        total += n;
    }
    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    ::close(in);
    ::close(fd);
    printResult(seconds, total);
    return 0;
}

// Runs TCPThread as the program does: on its own thread, driven by queued calls, the options in
// the application model, the run aimed at the target.
int toolTransfer(bool receiving, quint16 port, const QString &path)
{
    AppModel model;
    MavixSetting target;
    target.ipAddress = QStringLiteral("127.0.0.1");
    target.tcpDataPort = port;
    TCPOutputOption *option = receiving ? model.recvOption() : model.sendOption();
    option->setDisplayMode(TCPOutputOption::kDisplayOff);
    option->setUseHexFile(false);
    option->setFileName(path);
    if (!option->checkFile().usable)
        return 1;

    QThread thread;
    thread.start();
    auto *worker = new TCPThread(&thread);
    QElapsedTimer timer;
    double seconds = -1;
    qint64 bytes = 0;
    QObject scope; // the connections end with this function, before the locals they update do
    if (receiving) {
        QObject::connect(worker, &TCPThread::recvProgress, &scope,
                         [&](qint64 size) { bytes = size; });
        QObject::connect(worker, &TCPThread::recvStatusChanged, &scope,
                         [&](THREAD_STATUS, THREAD_STATUS status) {
                             if (status == TS_STOP && seconds < 0)
                                 seconds = double(timer.nsecsElapsed()) / 1e9;
                         });
    } else {
        QObject::connect(worker, &TCPThread::sendProgress, &scope,
                         [&](qint64 sent, qint64, qint64) { bytes = sent; });
        QObject::connect(worker, &TCPThread::writeFinished, &scope,
                         [&] { seconds = double(timer.nsecsElapsed()) / 1e9; });
    }
    // Finished once the worker has closed its socket (after the send's one-second reservation).
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, qApp, [&] {
        if (seconds >= 0 && !worker->hasSocket() && worker->sendStatus() == TS_STOP &&
            worker->recvStatus() == TS_STOP)
            QCoreApplication::quit();
    });
    poll.start(10);
    QTimer::singleShot(kChildTimeoutMs, qApp, [] { QCoreApplication::exit(2); });
    timer.start();
    const TransferRun run = TransferRun::of(*option, target.ipAddress, target.tcpDataPort);
    if (receiving)
        worker->beginRecvThread(run);
    else
        worker->beginSendThread(run);
    const int code = QCoreApplication::exec();
    thread.quit();
    thread.wait();
    delete worker;
    if (code != 0)
        return code;
    printResult(seconds, bytes);
    return 0;
}

int runChild(const QString &kind, quint16 port, const QString &path)
{
    if (kind == QLatin1String("recv-tool"))
        return toolTransfer(true, port, path);
    if (kind == QLatin1String("recv-plain"))
        return plainReceive(port, path);
    if (kind == QLatin1String("send-tool"))
        return toolTransfer(false, port, path);
    if (kind == QLatin1String("send-plain-1k"))
        return plainSend(port, path, FileSender::kChunkBytes);
    if (kind == QLatin1String("send-plain-1m"))
        return plainSend(port, path, 1024 * 1024);
    return 1;
}

// ---- Parent side ----

struct Measurement
{
    QString kind;
    QString label;
    bool receiving = false;
    std::vector<double> rates; // MB/s
    std::vector<qint64> rssKb;
};

ChildResult runOnce(const QString &kind, quint16 port, const QString &path)
{
    ChildResult result;
    QProcess child;
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(),
                {QStringLiteral("--child"), kind, QStringLiteral("--port"), QString::number(port),
                 QStringLiteral("--file"), path});
    if (!child.waitForFinished(kChildTimeoutMs + 10000)) {
        child.kill();
        child.waitForFinished();
        result.error = QStringLiteral("child did not finish");
        return result;
    }
    const QByteArray out = child.readAllStandardOutput();
    if (child.exitCode() != 0 || !out.startsWith("result ")) {
        result.error = QStringLiteral("child failed (%1): %2")
                           .arg(child.exitCode())
                           .arg(QString::fromUtf8(out));
        return result;
    }
    for (const QByteArray &field : out.trimmed().split(' ')) {
        const QByteArray value = field.mid(field.indexOf('=') + 1);
        if (field.startsWith("seconds="))
            result.seconds = value.toDouble();
        else if (field.startsWith("bytes="))
            result.bytes = value.toLongLong();
        else if (field.startsWith("rss_kb="))
            result.peakRssKb = value.toLongLong();
    }
    result.ok = result.seconds > 0;
    return result;
}

bool makeSendFile(const QString &path, qint64 transferBytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    const QByteArray block = SimDataPort::pattern(0, SimDataPort::kPatternPeriodBytes);
    for (qint64 done = 0; done < transferBytes; done += block.size()) {
        if (file.write(block) != block.size())
            return false;
    }
    return true;
}

template <typename T> T median(std::vector<T> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? T() : values[values.size() / 2];
}

int runParent(int runs, qint64 transferBytes)
{
    // In memory where the system has it: the disk's writeback would otherwise decide the figures
    // of both sides, run by run.
    const QString memory = QStringLiteral("/dev/shm");
    QTemporaryDir dir(QFileInfo(memory).isWritable()
                          ? memory + QStringLiteral("/bench_tcp-XXXXXX")
                          : QDir::tempPath() + QStringLiteral("/bench_tcp-XXXXXX"));
    if (!dir.isValid())
        return 1;
    const QString sendPath = dir.filePath(QStringLiteral("send.bin"));
    const QString recvPath = dir.filePath(QStringLiteral("recv.bin"));
    if (!makeSendFile(sendPath, transferBytes)) {
        std::fprintf(stderr, "bench_tcp: cannot write %s\n", qPrintable(sendPath));
        return 1;
    }

    SimDataPort port;
    port.setHashing(false); // a hash would make the emulator the slower end
    const quint16 portNumber = port.start(QHostAddress::LocalHost, 0);
    if (portNumber == 0) {
        std::fprintf(stderr, "bench_tcp: %s\n", qPrintable(port.errorString()));
        return 1;
    }

    std::vector<Measurement> measurements{
        {QStringLiteral("recv-tool"), QStringLiteral("recv  TCPThread, display off"), true, {}, {}},
        {QStringLiteral("recv-plain"), QStringLiteral("recv  plain, 1 MiB reads"), true, {}, {}},
        {QStringLiteral("send-tool"), QStringLiteral("send  TCPThread"), false, {}, {}},
        {QStringLiteral("send-plain-1k"),
         QStringLiteral("send  plain, 1024-byte chunks"),
         false,
         {},
         {}},
        {QStringLiteral("send-plain-1m"),
         QStringLiteral("send  plain, 1 MiB chunks"),
         false,
         {},
         {}},
    };
    std::printf("bench_tcp: %lld MiB each over loopback to the emulator's data port, %d runs, "
                "files in %s\n",
                static_cast<long long>(transferBytes >> 20), runs, qPrintable(dir.path()));
    int connections = 0;
    for (int run = 1; run <= runs; ++run) {
        for (Measurement &m : measurements) {
            port.setMode(m.receiving ? SimDataPort::Mode::Source : SimDataPort::Mode::Sink);
            port.setSourceBytes(transferBytes);
            const ChildResult result =
                runOnce(m.kind, portNumber, m.receiving ? recvPath : sendPath);
            ++connections;
            if (!result.ok || !port.waitForConnectionsDone(connections, kChildTimeoutMs)) {
                std::fprintf(stderr, "bench_tcp: %s: %s\n", qPrintable(m.kind),
                             qPrintable(result.error.isEmpty() ? QStringLiteral("no connection end")
                                                               : result.error));
                return 1;
            }
            const qint64 moved = m.receiving ? QFileInfo(recvPath).size() : port.totals().bytes;
            if (moved != transferBytes || result.bytes != transferBytes) {
                std::fprintf(stderr, "bench_tcp: %s moved %lld bytes (reported %lld)\n",
                             qPrintable(m.kind), static_cast<long long>(moved),
                             static_cast<long long>(result.bytes));
                return 1;
            }
            QFile::remove(recvPath);
            const double rate = double(transferBytes) / result.seconds / 1e6;
            m.rates.push_back(rate);
            m.rssKb.push_back(result.peakRssKb);
            std::printf("  run %d  %-32s %8.1f MB/s  peak RSS %6.1f MB\n", run, qPrintable(m.label),
                        rate, double(result.peakRssKb) / 1024.0);
            std::fflush(stdout);
        }
    }
    port.stop();
    QFile::remove(sendPath);

    std::map<QString, double> rateOf;
    std::printf("medians:\n");
    for (const Measurement &m : measurements) {
        rateOf[m.kind] = median(m.rates);
        std::printf("  %-38s %8.1f MB/s  peak RSS %6.1f MB (largest %6.1f MB)\n",
                    qPrintable(m.label), rateOf[m.kind], double(median(m.rssKb)) / 1024.0,
                    double(*std::max_element(m.rssKb.begin(), m.rssKb.end())) / 1024.0);
    }
    const double recvRatio = rateOf["recv-tool"] / rateOf["recv-plain"];
    const double sendRatio = rateOf["send-tool"] / rateOf["send-plain-1k"];
    std::printf("send TCPThread / plain 1 MiB chunks: %.2f\n",
                rateOf["send-tool"] / rateOf["send-plain-1m"]);
    std::printf("ratio: recv=%.2f send=%.2f\n", recvRatio, sendRatio);
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    std::signal(SIGPIPE, SIG_IGN);
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption child(QStringLiteral("child"), QStringLiteral("Run one side."),
                                   QStringLiteral("kind"));
    const QCommandLineOption port(QStringLiteral("port"), QStringLiteral("Data port."),
                                  QStringLiteral("port"));
    const QCommandLineOption file(QStringLiteral("file"), QStringLiteral("File."),
                                  QStringLiteral("path"));
    const QCommandLineOption runs(QStringLiteral("runs"), QStringLiteral("Runs of each (5)."),
                                  QStringLiteral("n"), QString::number(kDefaultRuns));
    const QCommandLineOption mib(QStringLiteral("mib"), QStringLiteral("MiB each way (1024)."),
                                 QStringLiteral("n"), QString::number(kDefaultTransferMiB));
    parser.addOptions({child, port, file, runs, mib});
    parser.process(app);
    if (parser.isSet(child))
        return runChild(parser.value(child), quint16(parser.value(port).toUInt()),
                        parser.value(file));
    const int runCount = std::clamp(parser.value(runs).toInt(), 1, 99);
    const qint64 megabytes = std::clamp<qint64>(parser.value(mib).toLongLong(), 1, 16384);
    return runParent(runCount, megabytes << 20);
}
