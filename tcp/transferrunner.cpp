#include "tcp/transferrunner.h"

#include "tcp/tcpoutputoption.h"
#include "tcp/tcpthread.h"

#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

#include <algorithm>

TransferRunner::TransferRunner(Direction direction, const QString &host, quint16 port,
                               int timeoutMs, QObject *parent)
    : QObject(parent), m_direction(direction), m_host(host), m_port(port), m_timeoutMs(timeoutMs),
      m_closeReserveMs(TCPThread::kCloseReserveMs)
{
}

void TransferRunner::setLimits(qint64 bytes, qint64 ms)
{
    m_byteLimit = bytes;
    m_timeLimitMs = ms;
}

bool TransferRunner::prepare(const QString &path, bool standardStream)
{
    m_standardStream = standardStream;
    m_result.file = path;
    if (receiving()) {
        m_model.recvOption()->setDisplayMode(TCPOutputOption::kDisplayOff);
        m_model.setRecvFileName(path);
        m_run = TransferRun::of(*m_model.recvOption(), m_host, m_port);
        return m_model.checkRecvFile();
    }
    m_model.sendOption()->setShowData(false);
    m_model.setSendFileName(path);
    if (!m_model.checkSendFile())
        return false;
    m_run = TransferRun::of(*m_model.sendOption(), m_host, m_port);
    m_result.fileSize = QFileInfo(path).isFile() ? QFile(path).size() : -1;
    return true;
}

TransferResult TransferRunner::run()
{
    QThread thread;
    TCPThread worker(&thread);
    m_worker = &worker;
    worker.setTimeouts(m_timeoutMs, m_timeoutMs, m_timeoutMs);
    worker.setCloseReserveMs(m_closeReserveMs);
    connect(&worker, &TCPThread::recvProgress, this, &TransferRunner::onRecvProgress);
    connect(
        &worker, &TCPThread::sendProgress, this,
        [this](qint64 sentSize, qint64 fileSize, qint64) { onSendProgress(sentSize, fileSize); });
    connect(&worker, receiving() ? &TCPThread::recvStatusChanged : &TCPThread::sendStatusChanged,
            this, &TransferRunner::onStatusChanged);
    connect(&worker, receiving() ? &TCPThread::recvReported : &TCPThread::sendReported, this,
            &TransferRunner::onReported);

    thread.start();
    m_clock.start();
    if (receiving())
        worker.beginRecvThread(m_run);
    else
        worker.beginSendThread(m_run);
    m_loop.exec();
    emit stopped();
    waitForSocketClose();
    // A send is done when the device has taken the bytes: the connection's orderly close.
    if (!receiving() && !m_result.interrupted && m_stoppedAtMs >= 0)
        m_stoppedAtMs = m_clock.elapsed();
    thread.quit();
    thread.wait();
    m_worker = nullptr;

    m_result.elapsedMs = elapsedMs();
    collectFileFigures();
    return m_result;
}

void TransferRunner::interrupt()
{
    m_result.interrupted = true;
    stop();
    if (!m_worker)
        m_loop.quit();
}

qint64 TransferRunner::elapsedMs() const
{
    return m_stoppedAtMs >= 0 ? m_stoppedAtMs : m_clock.elapsed();
}

void TransferRunner::stop()
{
    m_stopRequested = true;
    if (!m_running || !m_worker)
        return; // a stop before the run began is carried out once it runs
    if (receiving())
        m_worker->stopReceiving();
    else
        QMetaObject::invokeMethod(m_worker, &TCPThread::stopSending, Qt::QueuedConnection);
}

void TransferRunner::onStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status)
{
    Q_UNUSED(oldStatus)
    if (status == TS_RUN) {
        m_running = true;
        m_clock.restart();
        // The time limit counts from the connection on, as the figures' time does.
        if (m_timeLimitMs > 0)
            QTimer::singleShot(m_timeLimitMs, Qt::PreciseTimer, this, &TransferRunner::stop);
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

void TransferRunner::onRecvProgress(qint64 recvSize)
{
    m_result.bytes = recvSize;
    if (m_byteLimit > 0 && recvSize >= m_byteLimit && !m_stopRequested)
        stop();
}

void TransferRunner::onSendProgress(qint64 sentSize, qint64 fileSize)
{
    m_result.bytes = sentSize;
    if (m_result.fileSize >= 0) // a stream has no size until its end
        m_result.fileSize = fileSize;
}

void TransferRunner::onReported(const QString &text, bool error)
{
    if (error && m_result.errorText.isEmpty())
        m_result.errorText = text;
}

// Both directions are stopped once the status is TS_STOP, but the socket may still be closing: the
// worker gives a slow device its time-out to take the rest, after the close reservation.
void TransferRunner::waitForSocketClose()
{
    QEventLoop loop;
    connect(m_worker, &TCPThread::socketClosed, &loop, &QEventLoop::quit);
    QTimer::singleShot(m_timeoutMs + m_closeReserveMs, &loop, &QEventLoop::quit);
    if (m_worker->hasSocket()) // asked after connecting, so that a close in between is not missed
        loop.exec();
}

// What the file holds: the worker reads what the socket holds in chunks, so a receive stopped at
// its byte limit may have written a little more (the file keeps exactly the bytes asked for), and
// on a failed write (a full disk) it holds fewer than were received.
void TransferRunner::collectFileFigures()
{
    if (!receiving()) {
        if (m_result.fileSize < 0 && !m_result.interrupted)
            m_result.fileSize = m_result.bytes; // a stream's size is what it gave
        return;
    }
    const bool regularFile = !m_standardStream && QFileInfo(m_run.fileName).isFile();
    if (m_byteLimit >= 0 && m_result.bytes >= m_byteLimit) {
        QFile file(m_run.fileName);
        if (regularFile && file.size() > m_byteLimit)
            (void)file.resize(m_byteLimit);
        m_result.bytes = m_byteLimit;
    }
    if (regularFile)
        m_result.bytes = std::min(m_result.bytes, QFileInfo(m_run.fileName).size());
}
