// Ctrl+C during a wait for the device. While the interpreter's lock is released no Python code can
// run its SIGINT handler, so for the time of a wait a SignalWatcher takes SIGINT and SIGTERM and
// gives up the wait at once (`onSignal`); afterwards the interpreter's handlers are back and the
// signal is raised again for them, so that Ctrl+C becomes KeyboardInterrupt as everywhere in
// Python. Only on the interpreter's main thread, the one its signal handlers run on.
#pragma once

#include <functional>

class InterruptGuard
{
public:
    InterruptGuard(bool mainThread, std::function<void()> onSignal);
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard &) = delete;
    InterruptGuard &operator=(const InterruptGuard &) = delete;

    // Ends the watch, with the interpreter's lock held: a caught signal is raised again, and the
    // Python exception its handler raised (KeyboardInterrupt) is thrown.
    void finish();

private:
    std::function<void()> m_onSignal;
    bool m_armed = false;
};
