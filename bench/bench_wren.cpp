// bench_wren: register reads through WrenAgent against a plain blocking POSIX UDP client, both
// talking to the same in-process mavix-sim. Prints accesses per second (median, min, max) for
// reads of 4 and of 255 bytes and the ratio agent/plain; the last line is "ratio: X", the worse
// of the two sizes.
#include "app/eventdispatcher.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int kAccesses = 20000;
constexpr int kRepetitions = 5;
constexpr int kWarmUpAccesses = 1000;
constexpr int kTimeoutMs = 2000;
constexpr quint32 kAddress = 0xFFFFFF00;

struct Figures
{
    double median = 0;
    double min = 0;
    double max = 0;
};

Figures figuresOf(std::vector<double> rates)
{
    std::sort(rates.begin(), rates.end());
    return {rates[rates.size() / 2], rates.front(), rates.back()};
}

QByteArray loadAverage()
{
    QFile file(QStringLiteral("/proc/loadavg"));
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed() : QByteArray("unknown");
}

// Reads through the tool's agent; returns the number of failed accesses.
int agentReads(WrenAgent &agent, quint8 length, int count)
{
    int failed = 0;
    for (int i = 0; i < count; ++i) {
        try {
            if (agent.read(kAddress, length, kTimeoutMs).size() != length)
                ++failed;
        } catch (const WrenError &) {
            ++failed;
        }
    }
    return failed;
}

// The baseline: one blocking socket, sendto and recv, a minimal check of the reply.
class PlainClient
{
public:
    explicit PlainClient(quint16 port)
    {
        m_fd = ::socket(AF_INET, SOCK_DGRAM, 0);
        timeval timeout{kTimeoutMs / 1000, 0};
        ::setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
        m_target.sin_family = AF_INET;
        m_target.sin_port = htons(port);
        m_target.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    }
    ~PlainClient() { ::close(m_fd); }
    PlainClient(const PlainClient &) = delete;
    PlainClient &operator=(const PlainClient &) = delete;

    int reads(quint8 length, int count)
    {
        int failed = 0;
        unsigned char request[8] = {0xFF, 0xC0, 0, length};
        qToBigEndian<quint32>(kAddress, request + 4);
        unsigned char reply[8 + 255 + 1];
        for (int i = 0; i < count; ++i) {
            request[2] = static_cast<unsigned char>(m_id++);
            if (::sendto(m_fd, request, sizeof request, 0,
                         reinterpret_cast<const sockaddr *>(&m_target), sizeof m_target) < 0) {
                ++failed;
                continue;
            }
            const ssize_t got = ::recv(m_fd, reply, sizeof reply, 0);
            if (got != 8 + length || reply[2] != request[2])
                ++failed;
        }
        return failed;
    }

private:
    int m_fd = -1;
    sockaddr_in m_target{};
    unsigned m_id = 0;
};

template <typename Run> double ratePerSecond(Run run, int *failed)
{
    QElapsedTimer clock;
    clock.start();
    *failed += run();
    const qint64 ns = qMax<qint64>(clock.nsecsElapsed(), 1);
    return kAccesses * 1e9 / double(ns);
}

} // namespace

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    SimThread device;
    if (!device.start()) {
        std::fprintf(stderr, "bench_wren: %s\n", qPrintable(device.errorString()));
        return 1;
    }
    device.sim()->setRecording(false);
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), device.udpPort());
    PlainClient plain(device.udpPort());

    std::printf("bench_wren: %d reads x %d runs each, mavix-sim on 127.0.0.1:%u\n", kAccesses,
                kRepetitions, device.udpPort());
    std::printf("load average at start: %s\n", loadAverage().constData());
    double worstRatio = 1e9;
    int failed = 0;
    for (const quint8 length : {quint8(4), quint8(255)}) {
        failed += agentReads(agent, length, kWarmUpAccesses);
        failed += plain.reads(length, kWarmUpAccesses);
        std::vector<double> agentRates;
        std::vector<double> plainRates;
        // Alternate the two clients so that both see the same machine load.
        for (int run = 0; run < kRepetitions; ++run) {
            agentRates.push_back(
                ratePerSecond([&] { return agentReads(agent, length, kAccesses); }, &failed));
            plainRates.push_back(
                ratePerSecond([&] { return plain.reads(length, kAccesses); }, &failed));
        }
        const Figures a = figuresOf(agentRates);
        const Figures p = figuresOf(plainRates);
        const double ratio = a.median / p.median;
        worstRatio = std::min(worstRatio, ratio);
        std::printf("read %3u bytes  agent: median %7.0f/s  min %7.0f  max %7.0f\n", length,
                    a.median, a.min, a.max);
        std::printf("read %3u bytes  plain: median %7.0f/s  min %7.0f  max %7.0f\n", length,
                    p.median, p.min, p.max);
        std::printf("read %3u bytes  ratio agent/plain: %.2f\n", length, ratio);
    }
    std::printf("load average at end: %s\n", loadAverage().constData());
    std::printf("failed accesses: %d\n", failed);
    std::printf("ratio: %.2f\n", worstRatio);
    return failed == 0 ? 0 : 1;
}
