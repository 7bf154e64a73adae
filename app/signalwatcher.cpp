#include "app/signalwatcher.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {
// One watcher a process: the handler can reach only static state.
int g_signalSockets[2] = {-1, -1};
// The handlers in place before the watcher, put back when it ends (a host program's own, such as
// an embedding interpreter's).
struct sigaction g_previousInt = {};
struct sigaction g_previousTerm = {};
} // namespace

SignalWatcher::SignalWatcher(QObject *parent, bool armed) : QObject(parent)
{
    if (g_signalSockets[0] >= 0 ||
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, g_signalSockets) != 0)
        return;
    m_notifier = new QSocketNotifier(g_signalSockets[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SignalWatcher::readSignal);
    if (armed && !arm()) {
        delete m_notifier;
        m_notifier = nullptr;
        closeSockets();
    }
}

SignalWatcher::~SignalWatcher()
{
    if (!m_notifier)
        return;
    disarm();
    delete m_notifier;
    closeSockets();
}

bool SignalWatcher::arm()
{
    if (!m_notifier || m_armed)
        return m_armed;
    struct sigaction action = {};
    action.sa_handler = &SignalWatcher::handle;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    if (::sigaction(SIGINT, &action, &g_previousInt) != 0)
        return false;
    if (::sigaction(SIGTERM, &action, &g_previousTerm) != 0) {
        (void)::sigaction(SIGINT, &g_previousInt, nullptr);
        return false;
    }
    m_armed = true;
    return true;
}

void SignalWatcher::disarm()
{
    if (!m_armed)
        return;
    (void)::sigaction(SIGINT, &g_previousInt, nullptr);
    (void)::sigaction(SIGTERM, &g_previousTerm, nullptr);
    m_armed = false;
}

void SignalWatcher::closeSockets()
{
    for (int &fd : g_signalSockets) {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }
}

void SignalWatcher::handle(int signalNumber)
{
    const char number = char(signalNumber);
    [[maybe_unused]] const ssize_t written = ::write(g_signalSockets[0], &number, 1);
}

void SignalWatcher::readSignal()
{
    char number = 0;
    if (::read(g_signalSockets[1], &number, 1) == 1)
        emit signalReceived(number);
}
