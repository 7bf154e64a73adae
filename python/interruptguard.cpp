#include "python/interruptguard.h"

#include "app/signalwatcher.h"
#include "python/pybind.h"

#include <csignal>

namespace {

// What the guard in charge does on a signal: guards never nest (one wait at a time on the main
// thread).
const std::function<void()> *g_onSignal = nullptr;
int g_signal = 0;

// One watcher for the process, made on the main thread and kept: arming it for each wait costs
// two system calls, where a new one would cost a socket pair and a notifier.
SignalWatcher *watcher()
{
    static SignalWatcher *made = [] {
        auto *w = new SignalWatcher(nullptr, false);
        QObject::connect(w, &SignalWatcher::signalReceived, w, [](int signalNumber) {
            if (g_signal == 0)
                g_signal = signalNumber;
            if (g_onSignal)
                (*g_onSignal)();
        });
        return w;
    }();
    return made;
}

} // namespace

InterruptGuard::InterruptGuard(bool mainThread, std::function<void()> onSignal)
    : m_onSignal(std::move(onSignal))
{
    if (!mainThread || g_onSignal)
        return;
    g_signal = 0;
    g_onSignal = &m_onSignal;
    m_armed = watcher()->arm();
    if (!m_armed)
        g_onSignal = nullptr;
}

InterruptGuard::~InterruptGuard()
{
    if (m_armed) {
        watcher()->disarm();
        g_onSignal = nullptr;
    }
}

void InterruptGuard::finish()
{
    if (!m_armed)
        return;
    watcher()->disarm(); // the interpreter's handlers are back
    g_onSignal = nullptr;
    m_armed = false;
    const int signalNumber = g_signal;
    g_signal = 0;
    if (signalNumber == 0)
        return;
    (void)std::raise(signalNumber);
    if (PyErr_CheckSignals() != 0)
        throw pybind11::error_already_set();
}
