// A hostile peer against the bridge modules, on loopback: how big the emulator grows under a flood
// of garbage on its GPIB port, and how long the window's event loop stalls while the serial tab
// sits connected under a flood and then receives and shows it.
//
// Emulator: random bytes into mavix-sim's GPIB port (up to 256 MiB), once by a peer that reads the
// replies (for 20 s: each unit is served one by one) and once by one that never reads (it sends
// until the emulator holds it back for 2 s).
// Baseline: the emulator's resident size right after its start. Goal: under 100 MB.
// Window: the ZEL-RS232C tab connected on DCE while a peer pushes up to 256 MiB into DTE; then
// Receive with (Ignore) and Show As Hex. A 10 ms timer on the GUI thread records how late each tick
// comes. Baseline: the same timer with nothing going on. Goal: no stall over 100 ms.
// clazy:excludeall=lambda-in-connect
#include "modules/zelrs232ctab.h"
#include "wren/wrenagent.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QTimer>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <thread>

namespace {

constexpr qint64 kFloodBytes = 256LL * 1024 * 1024;
constexpr int kChunk = 65536;

qint64 statusKb(qint64 pid, const char *field)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(int(qstrlen(field))).trimmed().split(' ').value(0).toLongLong();
    return -1;
}

// A blocking socket to 127.0.0.1:port whose sends give up after `stallSeconds` held back.
int connectTo(quint16 port, int stallSeconds)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    timeval timeout{stallSeconds, 0};
    ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &timeout, sizeof timeout);
    if (::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) != 0) {
        ::close(fd);
        return -1;
    }
    return fd;
}

// Sends up to kFloodBytes of random bytes for at most `seconds`; returns how many the peer took.
qint64 flood(int fd, int seconds = 60)
{
    QElapsedTimer clock;
    clock.start();
    QByteArray chunk(kChunk, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(chunk.data()), kChunk / 4);
    qint64 sent = 0;
    while (sent < kFloodBytes && clock.elapsed() < seconds * 1000) {
        const ssize_t n = ::send(fd, chunk.constData(), size_t(kChunk), MSG_NOSIGNAL);
        if (n <= 0)
            break;
        sent += n;
    }
    return sent;
}

struct Sim
{
    QProcess process;
    quint16 udpPort = 0, tcpPort = 0, dcePort = 0;
    explicit Sim(const QStringList &options)
    {
        process.start(QStringLiteral(MAVIX_SIM_PATH),
                      QStringList{"--address", "127.0.0.1", "--udp-port", "0", "--tcp-port", "0"} +
                          options);
        for (int i = 0; i < 50 && (udpPort == 0 || (options.contains("--rs232c") && !dcePort));
             ++i) {
            process.waitForReadyRead(200);
            while (process.canReadLine()) {
                const QList<QByteArray> words = process.readLine().simplified().split(' ');
                if (words.value(1) == "udp") {
                    udpPort = words.value(2).split(':').value(1).toUShort();
                    tcpPort = words.value(4).split(':').value(1).toUShort();
                } else if (words.value(1) == "rs232c") {
                    dcePort = words.value(5).split(':').value(1).toUShort();
                }
            }
        }
    }
    ~Sim() { process.terminate(), process.waitForFinished(5000); }
};

void emulatorFlood()
{
    Sim sim({"--gpib"});
    const qint64 pid = sim.process.processId();
    const qint64 baseline = statusKb(pid, "VmRSS:");

    // A peer that drains the replies: every garbage unit is served.
    int fd = connectTo(sim.tcpPort, 30);
    std::atomic<bool> done{false};
    std::thread reader([&] {
        char sink[kChunk];
        while (!done.load() && ::recv(fd, sink, sizeof sink, MSG_DONTWAIT) != 0)
            std::this_thread::sleep_for(std::chrono::microseconds(200));
    });
    QElapsedTimer clock;
    clock.start();
    const qint64 drained = flood(fd, 20);
    done = true;
    reader.join();
    ::close(fd);
    const qint64 afterReading = statusKb(pid, "VmHWM:");
    std::printf("emulator, peer reads replies: %lld MiB served in %.1f s, peak RSS %.1f MB\n",
                static_cast<long long>(drained >> 20), double(clock.elapsed()) / 1000,
                double(afterReading) / 1024);

    // A peer that never reads: held back once the emulator's bounded buffers are full.
    fd = connectTo(sim.tcpPort, 2);
    const qint64 held = flood(fd);
    const qint64 afterHeld = statusKb(pid, "VmHWM:");
    ::close(fd);
    std::printf("emulator, peer never reads: %lld KiB taken before it was held back, peak RSS "
                "%.1f MB\n",
                static_cast<long long>(held >> 10), double(afterHeld) / 1024);
    std::printf("emulator baseline RSS %.1f MB; peak / baseline %.2f (goal: peak < 100 MB)\n",
                double(baseline) / 1024, double(std::max(afterReading, afterHeld)) / baseline);
}

// The longest lateness of a 10 ms tick while `work` runs the event loop for `ms`.
qint64 longestStall(int ms, const std::function<void()> &work = {})
{
    QElapsedTimer clock;
    qint64 last = 0, longest = 0;
    QTimer tick;
    tick.setInterval(10);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        longest = std::max(longest, now - last - 10);
        last = now;
    });
    clock.start();
    tick.start();
    if (work)
        QTimer::singleShot(0, &tick, work);
    QElapsedTimer total;
    total.start();
    while (total.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return longest;
}

void windowFlood()
{
    Sim sim({"--rs232c"});
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), sim.udpPort);
    ZELRS232CTab tab;
    tab.setAgent(&agent);
    tab.setTimeouts(2000, 2000);
    tab.show();
    const auto button = [&](const char *name) { return tab.findChild<QPushButton *>(name); };
    button("ZELRS232cRead")->click();
    tab.findChild<QComboBox *>("ZELRS232cConnectorComboBox")->setCurrentIndex(1);
    button("ZELRS232cConnectButton")->click();
    tab.findChild<QCheckBox *>("ZELRS232cShowAsHexCheckBox")->setChecked(true);

    const qint64 idle = longestStall(1000);
    std::atomic<qint64> pushed{0};
    std::thread pusher([&] {
        const int fd = connectTo(sim.tcpPort, 3);
        pushed = flood(fd, 5);
        ::close(fd);
    });
    const qint64 duringFlood = longestStall(6000);
    pusher.join();
    const qint64 rss = statusKb(QCoreApplication::applicationPid(), "VmRSS:");
    qint64 clickMs = 0;
    const qint64 duringReceive = longestStall(6000, [&] {
        QElapsedTimer click;
        click.start();
        button("ZELRS232cReceiveButton")->click();
        clickMs = click.elapsed();
    });
    std::printf("window: the Receive click itself took %lld ms\n", static_cast<long long>(clickMs));
    std::printf("window: %lld MiB pushed at DTE while the tab sat connected on DCE; RSS then "
                "%.1f MB\n",
                static_cast<long long>(pushed.load() >> 20), double(rss) / 1024);
    std::printf("window: longest stall idle %lld ms (baseline), during the flood %lld ms, "
                "receive and show as hex %lld ms; worst / baseline %.1f (goal: < 100 ms)\n",
                static_cast<long long>(idle), static_cast<long long>(duringFlood),
                static_cast<long long>(duringReceive),
                double(std::max(duringFlood, duringReceive)) / double(std::max<qint64>(idle, 1)));
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    emulatorFlood();
    windowFlood();
    return 0;
}
