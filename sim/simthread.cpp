#include "sim/simthread.h"

#include "sim/mavixsim.h"

SimThread::~SimThread()
{
    stop();
}

bool SimThread::start(const SimOptions &options)
{
    stop();
    m_thread.setObjectName(QStringLiteral("mavix-sim"));
    m_thread.start();
    m_sim = new MavixSim;
    m_sim->moveToThread(&m_thread);
    // The emulator and its sockets die on their own thread, just before it ends.
    QObject::connect(&m_thread, &QThread::finished, m_sim, &QObject::deleteLater);
    bool started = false;
    MavixSim *sim = m_sim;
    QMetaObject::invokeMethod(
        sim, [sim, &options, &started] { started = sim->start(options); },
        Qt::BlockingQueuedConnection);
    m_startError = m_sim->startError();
    m_errorString = m_sim->errorString();
    if (!started)
        stop();
    return started;
}

void SimThread::stop()
{
    if (!m_sim)
        return;
    QMetaObject::invokeMethod(m_sim, &MavixSim::stop, Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
    m_sim = nullptr;
}

QHostAddress SimThread::address() const
{
    return m_sim ? m_sim->address() : QHostAddress();
}

quint16 SimThread::udpPort() const
{
    return m_sim ? m_sim->udpPort() : 0;
}

quint16 SimThread::tcpPort() const
{
    return m_sim ? m_sim->tcpPort() : 0;
}
