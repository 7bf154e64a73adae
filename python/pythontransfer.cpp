#include "python/pythontransfer.h"

#include "app/appmodel.h"
#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"
#include "wren/wrenagent.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace {
// The closing sequence's own limit: the worker gives a stuck device its time-out to take the rest.
constexpr int kCloseReserveMs = 1000;
constexpr int kSocketCloseStepMs = 10;
} // namespace

PythonTransfer::PythonTransfer(Direction direction, const QString &host, quint16 port,
                               int timeoutMs, QObject *parent)
    : QObject(parent), m_direction(direction), m_host(host), m_port(port), m_timeoutMs(timeoutMs)
{
}

void PythonTransfer::setLimits(qint64 bytes, qint64 ms)
{
    m_byteLimit = bytes;
    m_timeLimitMs = ms;
}

// The file is named through the application model as the TCP tab names it, with the same check.
// Nothing is shown: the whole bandwidth goes to the file.
bool PythonTransfer::prepare(const QString &fileName)
{
    m_fileName = fileName;
    AppModel &model = m_model;
    if (receiving()) {
        model.recvOption()->setDisplayMode(TCPOutputOption::kDisplayOff);
        model.setRecvFileName(fileName);
        m_run = TransferRun::of(*model.recvOption(), m_host, m_port);
        return model.checkRecvFile();
    }
    model.sendOption()->setShowData(false);
    model.setSendFileName(fileName);
    if (!model.checkSendFile())
        return false;
    m_run = TransferRun::of(*model.sendOption(), m_host, m_port);
    m_fileSize = QFileInfo(fileName).isFile() ? QFile(fileName).size() : -1;
    return true;
}

TransferResult PythonTransfer::run()
{
    QThread thread;
    TCPThread worker(&thread);
    m_worker = &worker;
    if (m_timeoutMs != WrenAgent::kAccessTimeoutMs)
        worker.setTimeouts(m_timeoutMs, m_timeoutMs, m_timeoutMs);
    connect(&worker, &TCPThread::recvProgress, this, &PythonTransfer::onRecvProgress);
    connect(&worker, &TCPThread::sendProgress, this,
            [this](qint64 sentSize, qint64 fileSize, qint64) {
                m_bytes = sentSize;
                m_fileSize = fileSize;
            });
    connect(&worker, receiving() ? &TCPThread::recvStatusChanged : &TCPThread::sendStatusChanged,
            this, &PythonTransfer::onStatusChanged);

    thread.start();
    m_clock.start();
    if (receiving())
        worker.beginRecvThread(m_run);
    else
        worker.beginSendThread(m_run);
    m_loop.exec();
    waitForSocketClose();
    // A send is done when the device has taken the bytes: the connection's orderly close.
    if (!receiving() && !m_interrupted && m_stoppedAtMs >= 0)
        m_stoppedAtMs = m_clock.elapsed();
    thread.quit();
    thread.wait();
    m_worker = nullptr;

    TransferResult result{m_fileName, m_bytes,
                          m_stoppedAtMs >= 0 ? m_stoppedAtMs : m_clock.elapsed(), m_fileSize,
                          m_interrupted};
    keepOnlyByteLimit(result);
    // The bytes the file holds, which on a failed write (a full disk) are fewer than received.
    const QFileInfo info(m_fileName);
    if (receiving() && info.isFile())
        result.bytes = std::min(result.bytes, info.size());
    return result;
}

void PythonTransfer::interrupt()
{
    m_interrupted = true;
    stop();
    if (!m_worker)
        m_loop.quit();
}

void PythonTransfer::stop()
{
    m_stopRequested = true;
    if (!m_running || !m_worker)
        return; // a stop before the run began is carried out once it runs
    if (receiving())
        m_worker->stopReceiving();
    else
        QMetaObject::invokeMethod(m_worker, &TCPThread::stopSending, Qt::QueuedConnection);
}

void PythonTransfer::onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status)
{
    Q_UNUSED(oldStatus)
    if (status == TS_RUN) {
        m_running = true;
        m_clock.restart();
        // The time limit counts from the connection on, as the figures' time does.
        if (m_timeLimitMs > 0)
            QTimer::singleShot(m_timeLimitMs, Qt::PreciseTimer, this, &PythonTransfer::stop);
        if (m_stopRequested)
            stop();
    } else if (status == TS_STOPPING || status == TS_STOP) {
        if (m_stoppedAtMs < 0 && m_running)
            m_stoppedAtMs = m_clock.elapsed();
        m_running = false;
        if (status == TS_STOP)
            m_loop.quit();
    }
}

void PythonTransfer::onRecvProgress(qint64 recvSize)
{
    m_bytes = recvSize;
    if (m_byteLimit > 0 && recvSize >= m_byteLimit && !m_stopRequested)
        stop();
}

// Both directions are stopped once the status is TS_STOP, but the socket may still be closing.
void PythonTransfer::waitForSocketClose()
{
    QElapsedTimer waited;
    waited.start();
    while (m_worker->hasSocket() && waited.elapsed() < m_timeoutMs + kCloseReserveMs) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, kSocketCloseStepMs);
        QThread::msleep(kSocketCloseStepMs);
    }
}

// The worker reads what the socket holds in chunks, so a receive stopped at its byte limit may
// have written a little more: the file keeps exactly the bytes asked for.
void PythonTransfer::keepOnlyByteLimit(TransferResult &result) const
{
    if (!receiving() || m_byteLimit < 0 || result.bytes < m_byteLimit)
        return;
    QFile file(m_fileName);
    if (file.size() > m_byteLimit)
        (void)file.resize(m_byteLimit);
    result.bytes = m_byteLimit;
}
