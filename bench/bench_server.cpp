// bench_server: "read 0 16" round trips per second through the remote-control server against
// direct 16-byte reads through WrenAgent, in one run, both against the same in-process mavix-sim
// (its own thread) through the same agent and access gate.
// Server figure: a plain POSIX blocking TCP client (Nagle off) on its own thread sends the line and
// reads up to the prompt, as a script would; the server (RCServer, no window) runs on the main
// thread's event loop. Direct figure: the main thread calls WrenAgent::read in a loop. Both are
// timed over kRoundTrips after a warm-up, kRepetitions times, alternating so that both see the
// same machine load; the median, min and max of each are printed and "ratio: X" = server median /
// direct median.
// Ceiling figure: the same client against a plain POSIX server thread that, for each line, reads 16
// bytes from the same emulator with one blocking UDP request and answers with a reply of the
// server's form: no event loop, no parsing, no log. "ceiling" is its rate over the direct one, the
// most a server in this place reaches on this machine.
// Flood figure: a second client sends kFloodBytes without a line end and never reads, while the
// first runs "read 0 16" round trips; printed are the growth of the process's peak resident
// memory and the slowest round trip. Every run is bounded: a receive time-out per round trip, a
// send time-out for the flood and a limit per run.
#include "app/eventdispatcher.h"
#include "server/rcserver.h"
#include "settings/mavixsetting.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kRoundTrips = 2000;
constexpr int kRepetitions = 11;
constexpr int kWarmUp = 500;
constexpr int kTimeoutMs = 2000;
constexpr int kRunLimitMs = 60000; // a run that takes longer is broken
constexpr qint64 kFloodBytes = qint64(1) << 30;
const char kCommand[] = "read 0 16\r\n";
constexpr std::string_view kPrompt = "\r\nMavixUtil>";

QByteArray loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed() : QByteArray("unknown");
}

// "VmRSS:" or "VmHWM:" of this process in KiB.
qint64 memoryKiB(const char *field)
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith(field))
            return line.mid(int(std::strlen(field))).trimmed().split(' ').value(0).toLongLong();
    }
    return 0;
}

int connectTo(quint16 port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    timeval timeout{kTimeoutMs / 1000, 0};
    ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    const int one = 1;
    ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

// A blocking TCP client, as a script would be: send a line, read up to the prompt.
class LineClient
{
public:
    explicit LineClient(quint16 port) : m_fd(connectTo(port))
    {
        m_ok = m_fd >= 0 && readToPrompt().find("OK:Connected") != std::string::npos;
    }
    ~LineClient()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    LineClient(const LineClient &) = delete;
    LineClient &operator=(const LineClient &) = delete;

    [[nodiscard]] bool ok() const { return m_ok; }

    // Returns the number of failed round trips; the slowest one in *slowestNs when given.
    int roundTrips(int count, const std::atomic<bool> &stop, qint64 *slowestNs = nullptr)
    {
        int failed = 0;
        QElapsedTimer trip;
        for (int i = 0; i < count && !stop; ++i) {
            trip.start();
            if (::send(m_fd, kCommand, sizeof kCommand - 1, 0) < 0) {
                ++failed;
                continue;
            }
            if (readToPrompt().find("OK:\r\n00 : ") == std::string::npos)
                ++failed;
            if (slowestNs)
                *slowestNs = qMax(*slowestNs, trip.nsecsElapsed());
        }
        return failed;
    }

private:
    std::string readToPrompt()
    {
        std::string got;
        char buffer[4096];
        while (got.size() < kPrompt.size() ||
               got.compare(got.size() - kPrompt.size(), kPrompt.size(), kPrompt) != 0) {
            const ssize_t n = ::recv(m_fd, buffer, sizeof buffer, 0);
            if (n <= 0)
                break; // time-out or closed: the caller sees the missing reply
            got.append(buffer, size_t(n));
        }
        return got;
    }

    int m_fd = -1;
    bool m_ok = false;
};

// Runs the client on its own thread while the event loop serves it; rate per second.
double serverRate(LineClient &client, int count, int *failed)
{
    QElapsedTimer clock;
    clock.start();
    int clientFailed = 0;
    std::atomic<bool> stop{false};
    std::thread thread([&] {
        clientFailed = client.roundTrips(count, stop);
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    // A local timer: one left over from an earlier run must not cut a later one short.
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, qApp, &QCoreApplication::quit);
    limit.start(kRunLimitMs);
    QCoreApplication::exec();
    // Cut short: the client stops at its next round trip (each bounded by its receive time-out).
    stop = true;
    thread.join();
    if (!limit.isActive())
        ++*failed; // the run limit struck: count it as a failure of its own
    *failed += clientFailed;
    return count * 1e9 / double(qMax<qint64>(clock.nsecsElapsed(), 1));
}

struct FloodFigures
{
    qint64 sent = 0;
    qint64 peakGrowthKiB = 0;
    qint64 slowestNs = 0;
    int roundTrips = 0;
    bool dropped = false;
};

// One client sends kFloodBytes without a line end and without reading; meanwhile `client` runs
// round trips until the flood ends. The event loop serves both on this thread.
FloodFigures flood(LineClient &client, quint16 port, int *failed)
{
    FloodFigures figures;
    const int floodFd = connectTo(port);
    if (floodFd < 0) {
        ++*failed;
        return figures;
    }
    // The peak is measured from here: the kernel resets it on request.
    QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
    if (clearRefs.open(QIODevice::WriteOnly))
        clearRefs.write("5");
    const qint64 start = memoryKiB("VmRSS:");
    std::atomic<bool> stop{false};
    std::thread flooder([&] {
        const std::string chunk(64 * 1024, 'x');
        while (figures.sent < kFloodBytes && !stop) {
            const ssize_t n = ::send(floodFd, chunk.data(), chunk.size(), MSG_NOSIGNAL);
            if (n <= 0) {
                figures.dropped = n < 0 && errno != EAGAIN && errno != EWOULDBLOCK;
                if (figures.dropped)
                    break;
                continue; // the send time-out: the server holds it back; try again
            }
            figures.sent += n;
        }
        stop = true;
    });
    int clientFailed = 0;
    std::thread roundTripper([&] {
        while (!stop) {
            clientFailed += client.roundTrips(1, stop, &figures.slowestNs);
            ++figures.roundTrips;
        }
        QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, qApp, &QCoreApplication::quit);
    limit.start(kRunLimitMs);
    QCoreApplication::exec();
    stop = true;
    flooder.join();
    roundTripper.join();
    ::close(floodFd);
    if (!limit.isActive())
        ++*failed;
    *failed += clientFailed;
    figures.peakGrowthKiB = memoryKiB("VmHWM:") - start;
    return figures;
}

// A plain blocking server on its own thread: greets, then answers every line with a 16-byte read
// from the device at udpPort (nothing checked but the packet ID) and a reply of the server's form,
// until the client leaves.
class PlainServer
{
public:
    explicit PlainServer(quint16 udpPort)
    {
        m_device.sin_family = AF_INET;
        m_device.sin_port = htons(udpPort);
        m_device.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        if (m_listener < 0 ||
            ::bind(m_listener, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0 ||
            ::listen(m_listener, 1) != 0 ||
            ::getsockname(m_listener, reinterpret_cast<sockaddr *>(&address), &length) != 0)
            return;
        m_port = ntohs(address.sin_port);
        m_thread = std::thread([this] { serve(); });
    }
    ~PlainServer()
    {
        ::shutdown(m_listener, SHUT_RDWR);
        if (m_thread.joinable())
            m_thread.join();
        ::close(m_listener);
    }
    PlainServer(const PlainServer &) = delete;
    PlainServer &operator=(const PlainServer &) = delete;

    [[nodiscard]] quint16 port() const { return m_port; }

private:
    void serve()
    {
        const int fd = ::accept(m_listener, nullptr, nullptr);
        if (fd < 0)
            return;
        const int one = 1;
        ::setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
        const std::string greeting = "OK:Connected" + std::string(kPrompt);
        const std::string reply = std::string(kCommand) +
                                  "\r\nOK:\r\n00 : " + std::string(16 * 3, '0') + "\r\n" +
                                  std::string(kPrompt);
        const int udp = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        timeval timeout{kTimeoutMs / 1000, 0};
        ::setsockopt(udp, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
        bool ok = ::send(fd, greeting.data(), greeting.size(), MSG_NOSIGNAL) > 0;
        char buffer[4096];
        std::string line;
        while (ok) {
            const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
            ok = n > 0;
            line.append(buffer, size_t(std::max<ssize_t>(n, 0)));
            if (line.size() >= 2 && line.compare(line.size() - 2, 2, "\r\n") == 0) {
                line.clear();
                ok = readDevice(udp) && ::send(fd, reply.data(), reply.size(), MSG_NOSIGNAL) > 0;
            }
        }
        ::close(udp);
        ::close(fd);
    }

    bool readDevice(int udp)
    {
        const unsigned char request[8] = {0xFF, 0xC0, static_cast<unsigned char>(m_id++), 16};
        unsigned char reply[8 + 16 + 1];
        return ::sendto(udp, request, sizeof request, 0,
                        reinterpret_cast<const sockaddr *>(&m_device), sizeof m_device) > 0 &&
               ::recv(udp, reply, sizeof reply, 0) == 8 + 16 && reply[2] == request[2];
    }

    sockaddr_in m_device{};
    unsigned m_id = 0;
    int m_listener = -1;
    quint16 m_port = 0;
    std::thread m_thread;
};

double plainRate(LineClient &client, int count, int *failed)
{
    QElapsedTimer clock;
    clock.start();
    const std::atomic<bool> stop{false};
    *failed += client.roundTrips(count, stop);
    return count * 1e9 / double(qMax<qint64>(clock.nsecsElapsed(), 1));
}

double directRate(WrenAgent &agent, int count, int *failed)
{
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < count; ++i) {
        try {
            if (agent.read(0, 16, kTimeoutMs, true).size() != 16)
                ++*failed;
        } catch (const WrenError &) {
            ++*failed;
        }
    }
    return count * 1e9 / double(qMax<qint64>(clock.nsecsElapsed(), 1));
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    SimThread device;
    if (!device.start()) {
        std::fprintf(stderr, "bench_server: %s\n", qPrintable(device.errorString()));
        return 1;
    }
    device.sim()->setRecording(false);
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), device.udpPort());
    RCServer server;
    server.setAgent(&agent);
    server.setPort(0);
    if (!server.start()) {
        std::fprintf(stderr, "bench_server: cannot listen\n");
        return 1;
    }
    std::unique_ptr<LineClient> client;
    std::thread connector([&] { client = std::make_unique<LineClient>(server.serverPort()); });
    // The greeting is sent by the event loop; let it run until the client has it.
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &app, [&] {
        if (client)
            QCoreApplication::quit();
    });
    poll.start(10);
    {
        QTimer limit;
        limit.setSingleShot(true);
        QObject::connect(&limit, &QTimer::timeout, &app, &QCoreApplication::quit);
        limit.start(kRunLimitMs);
        QCoreApplication::exec();
    }
    poll.stop();
    connector.join();
    if (!client || !client->ok()) {
        std::fprintf(stderr, "bench_server: no greeting from the server\n");
        return 1;
    }

    PlainServer plainServer(device.udpPort());
    LineClient plainClient(plainServer.port());
    if (!plainClient.ok()) {
        std::fprintf(stderr, "bench_server: no greeting from the plain server\n");
        return 1;
    }

    std::printf("bench_server: %d round trips x %d runs each, mavix-sim on 127.0.0.1:%u, "
                "server on port %u\n",
                kRoundTrips, kRepetitions, device.udpPort(), server.serverPort());
    std::printf("load average at start: %s\n", loadAverage().constData());
    int failed = 0;
    (void)serverRate(*client, kWarmUp, &failed);
    (void)directRate(agent, kWarmUp, &failed);
    (void)plainRate(plainClient, kWarmUp, &failed);
    std::vector<double> serverRates;
    std::vector<double> directRates;
    std::vector<double> plainRates;
    // Alternate the three so that all see the same machine load.
    for (int run = 0; run < kRepetitions; ++run) {
        serverRates.push_back(serverRate(*client, kRoundTrips, &failed));
        directRates.push_back(directRate(agent, kRoundTrips, &failed));
        plainRates.push_back(plainRate(plainClient, kRoundTrips, &failed));
    }
    const auto [serverMin, serverMax] = std::minmax_element(serverRates.begin(), serverRates.end());
    const auto [directMin, directMax] = std::minmax_element(directRates.begin(), directRates.end());
    std::printf("server  read 0 16: median %7.0f/s  min %7.0f  max %7.0f\n", median(serverRates),
                *serverMin, *serverMax);
    std::printf("direct  read 16 B: median %7.0f/s  min %7.0f  max %7.0f\n", median(directRates),
                *directMin, *directMax);
    const double plain = median(plainRates);
    std::printf("plain   server:    median %7.0f/s (blocking POSIX, no event loop)\n", plain);
    std::printf("ceiling: the plain server reaches ratio %.2f\n", plain / median(directRates));
    const FloodFigures figures = flood(*client, server.serverPort(), &failed);
    std::printf("flood: %lld MiB sent without a line end%s; meanwhile %d round trips\n",
                figures.sent >> 20, figures.dropped ? " (dropped by the server)" : "",
                figures.roundTrips);
    std::printf("flood: peak RSS growth %.1f MB (goal < 50), slowest round trip %.1f ms "
                "(goal < 100)\n",
                double(figures.peakGrowthKiB) * 1024 / 1e6, double(figures.slowestNs) / 1e6);
    std::printf("load average at end: %s\n", loadAverage().constData());
    std::printf("failed round trips: %d\n", failed);
    std::printf("ratio: %.2f\n", median(serverRates) / median(directRates));
    return failed == 0 ? 0 : 1;
}
