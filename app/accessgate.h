// One device operation at a time, and waits that keep the program alive. A wait runs a local event
// loop until the awaited signal arrives, its time-out passes or abort() gives it up, so the window
// repaints and the logo moves meanwhile; busyChanged() lets the window show that it waits.
#pragma once

#include <QEventLoop>
#include <QObject>
#include <QTimer>

#include <functional>

class AccessGate : public QObject
{
    Q_OBJECT

public:
    enum class WaitResult { Arrived, TimedOut, Aborted };
    Q_ENUM(WaitResult)

    explicit AccessGate(QObject *parent = nullptr);

    // Busy from the start to the end of the outermost Hold.
    [[nodiscard]] bool isBusy() const { return m_holds > 0; }
    [[nodiscard]] bool isWaiting() const { return m_waits > 0; }

    // Marks one device operation (an access, or a sequence of them) for its lifetime. Holds nest on
    // one call stack. Code driven by events (a server session, a timer) must not begin an operation
    // while isBusy(): it runs inside someone else's wait. It tries again after busyChanged(false).
    class Hold
    {
    public:
        explicit Hold(AccessGate *gate);
        ~Hold();
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;

    private:
        AccessGate *m_gate;
    };

    // Waits until `signal` of `sender` is emitted and `ready` (when given) holds, for at most
    // timeoutMs. Returns Arrived at once when `ready` already holds. Waits never nest: one asked
    // for while another runs returns Aborted at once, so the outer one is never held hostage.
    template <typename Func>
    WaitResult waitFor(const typename QtPrivate::FunctionPointer<Func>::Object *sender, Func signal,
                       int timeoutMs, const std::function<bool()> &ready = {});

public slots:
    // Gives up the wait in progress (Esc, closing the window): it returns Aborted.
    void abort();

signals:
    void busyChanged(bool busy);
    void abortRequested();

private:
    WaitResult runLoop(QEventLoop &loop, WaitResult &result, int timeoutMs);

    int m_holds = 0;
    int m_waits = 0;
};

template <typename Func>
AccessGate::WaitResult
AccessGate::waitFor(const typename QtPrivate::FunctionPointer<Func>::Object *sender, Func signal,
                    int timeoutMs, const std::function<bool()> &ready)
{
    if (ready && ready())
        return WaitResult::Arrived;
    if (isWaiting())
        return WaitResult::Aborted;
    QEventLoop loop;
    WaitResult result = WaitResult::TimedOut;
    const QMetaObject::Connection arrived = connect(sender, signal, &loop, [&] {
        if (!ready || ready()) {
            result = WaitResult::Arrived;
            loop.quit();
        }
    });
    runLoop(loop, result, timeoutMs);
    disconnect(arrived);
    return result;
}
