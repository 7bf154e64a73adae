#include "app/accessgate.h"

AccessGate::AccessGate(QObject *parent) : QObject(parent) {}

AccessGate::Hold::Hold(AccessGate *gate) : m_gate(gate)
{
    if (++m_gate->m_holds == 1)
        emit m_gate->busyChanged(true);
}

AccessGate::Hold::~Hold()
{
    if (--m_gate->m_holds == 0)
        emit m_gate->busyChanged(false);
}

void AccessGate::abort()
{
    if (isWaiting())
        emit abortRequested();
}

AccessGate::WaitResult AccessGate::runLoop(QEventLoop &loop, WaitResult &result, int timeoutMs)
{
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    connect(&timer, &QTimer::timeout, &loop, [&] {
        result = WaitResult::TimedOut;
        loop.quit();
    });
    connect(this, &AccessGate::abortRequested, &loop, [&] {
        result = WaitResult::Aborted;
        loop.quit();
    });
    timer.start(qMax(0, timeoutMs));
    ++m_waits;
    loop.exec();
    --m_waits;
    return result;
}
