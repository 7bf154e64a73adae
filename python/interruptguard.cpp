#include "python/interruptguard.h"

#include "app/signalwatcher.h"

#include "python/pybind.h"

#include <csignal>

InterruptGuard::InterruptGuard(bool mainThread, const std::function<void()> &onSignal)
{
    if (!mainThread)
        return;
    m_watcher = std::make_unique<SignalWatcher>();
    QObject::connect(m_watcher.get(), &SignalWatcher::signalReceived, m_watcher.get(),
                     [this, onSignal](int signalNumber) {
                         if (m_signal == 0)
                             m_signal = signalNumber;
                         onSignal();
                     });
}

InterruptGuard::~InterruptGuard() = default;

void InterruptGuard::finish()
{
    m_watcher.reset(); // the interpreter's handlers are back
    if (m_signal == 0)
        return;
    const int signalNumber = m_signal;
    m_signal = 0;
    (void)std::raise(signalNumber);
    if (PyErr_CheckSignals() != 0)
        throw pybind11::error_already_set();
}
