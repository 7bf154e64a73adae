#include "tcp/tcpthread.h"

#include "app/log.h"
#include "app/report.h"
#include "tcp/filesender.h"
#include "tcp/recvstream.h"
#include "tcp/tcpconnection.h"

#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace {

std::atomic<TCPThread *> g_instance{nullptr};

void warnInvalid(const char *direction, THREAD_STATUS status)
{
    LOG_WARN(QStringLiteral("Invalid %1 status: %2")
                 .arg(QLatin1String(direction), threadStatusText(status)));
}

} // namespace

TCPThread::TCPThread(QThread *thread, QObject *parent)
    : QObject(parent), m_connection(new TcpConnection(this)), m_sender(new FileSender(this)),
      m_stream(new RecvStream(this))
{
    registerThreadMetaTypes();
    g_instance = this;
    moveToThread(thread);
    connect(m_connection, &TcpConnection::failed, this, &TCPThread::onSocketError);
    connect(m_connection, &TcpConnection::closeDue, this, &TCPThread::closeSocket);
    connect(m_connection, &TcpConnection::released, this, &TCPThread::socketClosed);
    connect(m_sender, &FileSender::shown, this,
            [this](const QString &text, qint64 from, qint64 bytes) {
                emit sendStringAdded(text, true, from, bytes);
            });
    connect(m_sender, &FileSender::progressed, this, &TCPThread::sendProgress);
    connect(m_sender, &FileSender::finished, this, &TCPThread::finishSendFile);
    connect(m_sender, &FileSender::stalled, this, [this] {
        fail(Direction::Send, tr("TCP write is timeout"), TTE_SEND_ERROR);
        closeAfterSending();
    });
    connect(m_stream, &RecvStream::textAdded, this, &TCPThread::recvStringAdded);
    connect(m_stream, &RecvStream::progressed, this, &TCPThread::recvProgress);
    connect(m_stream, &RecvStream::writeFailed, this, &TCPThread::stopOnRecvFileFailure);
}

TCPThread::~TCPThread()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_STOP)
        LOG_ERROR(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(m_recvStatus)));
    if (m_sendStatus != TS_STOP)
        LOG_ERROR(QStringLiteral("Invalid send status: %1").arg(threadStatusText(m_sendStatus)));
    if (m_connection->exists())
        LOG_ERROR("socket is not null");
    TCPThread *self = this;
    g_instance.compare_exchange_strong(self, nullptr);
}

TCPThread *TCPThread::instance()
{
    return g_instance.load();
}

bool TCPThread::onWorkerThread() const
{
    return QThread::currentThread() == thread();
}

// Called off the worker thread, a call is posted to it; true when it was.
template <typename Call> bool TCPThread::postToWorker(Call call)
{
    if (onWorkerThread())
        return false;
    QMetaObject::invokeMethod(this, call, Qt::QueuedConnection);
    return true;
}

void TCPThread::setTimeouts(int connectMs, int writeMs, int disconnectMs)
{
    m_connectTimeoutMs = connectMs;
    m_writeTimeoutMs = writeMs;
    m_disconnectTimeoutMs = disconnectMs;
}

// A failure ends the run: the message area and the dialog of that direction say why.
void TCPThread::fail(Direction direction, const QString &text, TCPTHREAD_ERROR error)
{
    reportError(text);
    if (direction == Direction::Send)
        emit sendReported(text, true);
    else
        emit recvReported(text, true);
    emit errorOccured(error);
}

THREAD_STATUS TCPThread::recvStatus() const
{
    QMutexLocker lock(&m_mutex);
    return m_recvStatus;
}

THREAD_STATUS TCPThread::sendStatus() const
{
    QMutexLocker lock(&m_mutex);
    return m_sendStatus;
}

void TCPThread::setSendStatus(THREAD_STATUS status)
{
    QMutexLocker lock(&m_mutex);
    const THREAD_STATUS old = m_sendStatus;
    if (status == old)
        return;
    m_sendStatus = status;
    LOG_INFO_MSG(QStringLiteral("send status changed: %1 -> %2")
                     .arg(threadStatusText(old), threadStatusText(status)));
    if (status != TS_RUN)
        QMetaObject::invokeMethod(m_sender, &FileSender::stop,
                                  onWorkerThread() ? Qt::DirectConnection : Qt::QueuedConnection);
    emit sendStatusChanged(old, status);
}

void TCPThread::setRecvStatus(THREAD_STATUS status)
{
    QMutexLocker lock(&m_mutex);
    const THREAD_STATUS old = m_recvStatus;
    if (status == old)
        return;
    m_recvStatus = status;
    LOG_INFO_MSG(QStringLiteral("recv status changed: %1 -> %2")
                     .arg(threadStatusText(old), threadStatusText(status)));
    m_stream->setRunning(status == TS_RUN);
    if (status == TS_STOP) {
        disconnect(m_connection, &TcpConnection::readyRead, this, nullptr);
        if (m_stream->isFileOpen()) {
            if (!m_stream->closeFile())
                fail(Direction::Recv, m_stream->writeFailureText(), TTE_RECV_ERROR);
            LOG_INFO_MSG("recv file closed");
        }
    }
    emit recvStatusChanged(old, status);
}

// Both directions share one connection. The wait for the device runs without the lock held.
bool TCPThread::connectToDevice(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    const auto idle = [](THREAD_STATUS status) {
        return status == TS_STOP || status == TS_STARTING;
    };
    if (idle(m_sendStatus) && idle(m_recvStatus))
        m_connection->dropIfDead();
    lock.unlock();
    if (m_connection->open(run.host, run.port, m_connectTimeoutMs))
        return true;
    lock.relock();
    reserveCloseSocket(0);
    const QString text =
        QStringLiteral("%1: %2").arg(tr("Fail to connect to device"), m_connection->errorString());
    reportError(text);
    if (m_sendStatus == TS_STARTING)
        emit sendReported(text, true);
    if (m_recvStatus == TS_STARTING)
        emit recvReported(text, true);
    emit errorOccured(TTE_CONNECT_ERROR);
    return false;
}

void TCPThread::onSocketError(QAbstractSocket::SocketError error, const QString &reason)
{
    QMutexLocker lock(&m_mutex);
    // Bytes the socket took in before the connection ended still belong in the file.
    if (m_recvStatus == TS_RUN)
        readAvailable();
    const QString failure = QStringLiteral("%1: %2").arg(tr("TCP error occured"), reason);
    if (m_recvStatus == TS_RUN) {
        const RecvStream::End end =
            m_stream->endAtBreak(error == QAbstractSocket::RemoteHostClosedError, failure);
        if (end.failed) {
            fail(Direction::Recv, end.text, end.error);
        } else {
            reportResult(end.text);
            emit recvReported(end.text, false);
        }
    }
    if (m_sendStatus == TS_RUN)
        fail(Direction::Send, failure, TTE_CONNECT_ERROR);
    setRecvStatus(TS_STOP);
    setSendStatus(TS_STOP);
    reserveCloseSocket(0);
}

void TCPThread::reserveCloseSocket(int msec)
{
    if (postToWorker([this, msec] { reserveCloseSocket(msec); }))
        return;
    m_connection->reserveClose(msec);
}

void TCPThread::closeSocket()
{
    if (postToWorker(&TCPThread::closeSocket))
        return;
    QMutexLocker lock(&m_mutex);
    if (!m_connection->exists()) {
        LOG_WARN("already socket closed");
        return;
    }
    if (m_sendStatus == TS_STOPPING) {
        if (m_connection->isHeldOpen())
            return;
        setSendStatus(TS_STOP);
    }
    if (m_sendStatus != TS_STOP || m_recvStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("tcp %1 is running. so cancel to close socket: send[%2] recv[%3]")
                     .arg(QLatin1String(m_sendStatus != TS_STOP ? "send" : "recv"),
                          threadStatusText(m_sendStatus), threadStatusText(m_recvStatus)));
        return;
    }
    const bool dropUnsent = m_sendStopped;
    m_sendStopped = false;
    lock.unlock();
    // Both directions are stopped, so nothing else touches the connection while this thread
    // waits for the device to take the last bytes. After a stop the unsent bytes are given up at
    // once, as the loss report told the user.
    m_connection->close(dropUnsent, m_disconnectTimeoutMs);
}

void TCPThread::beginSendThread(const TransferRun &run)
{
    if (postToWorker([this, run] { beginSendThread(run); }))
        return;
    LOG_INFO_MSG("begin send thread");
    if (!prepareSendRun(run))
        return;
    if (!connectToDevice(run)) {
        setSendStatus(TS_STOP);
        return;
    }
    QMutexLocker lock(&m_mutex);
    setSendStatus(TS_RUN);
    m_sender->start(m_connection->socket(), m_writeTimeoutMs);
}

bool TCPThread::prepareSendRun(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus != TS_STOP) {
        warnInvalid("send", m_sendStatus);
        return false;
    }
    setSendStatus(TS_STARTING);
    m_sendStopped = false;
    if (!m_sender->open(run)) {
        fail(Direction::Send, m_sender->openFailureText(), TTE_SEND_ERROR);
        setSendStatus(TS_STOP);
        return false;
    }
    emit sendReported(tr("Sending %1").arg(run.fileName), false);
    return true;
}

void TCPThread::finishSendFile()
{
    if (m_sender->sentBytes() != m_sender->fileSize())
        fail(Direction::Send, tr("File size does not match the send size."), TTE_SEND_ERROR);
    m_sender->sendLastProgress();
    emit writeFinished();
    closeAfterSending();
}

void TCPThread::closeAfterSending()
{
    m_sender->sendLastProgress();
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus == TS_RUN)
        setSendStatus(TS_STOPPING);
    if (!m_connection->holdOpen(m_closeReserveMs))
        setSendStatus(TS_STOP);
}

// The status changes at once, on the caller's thread, so that the caller sees the stop taken; the
// close follows on the worker thread.
void TCPThread::stopSending()
{
    LOG_INFO_MSG("stop sending");
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus != TS_RUN) {
        warnInvalid("send", m_sendStatus);
        return;
    }
    m_sendStopped = true;
    setSendStatus(TS_STOPPING);
    QMetaObject::invokeMethod(this, &TCPThread::closeAfterSending, Qt::QueuedConnection);
}

void TCPThread::beginRecvThread(const TransferRun &run)
{
    if (postToWorker([this, run] { beginRecvThread(run); }))
        return;
    LOG_INFO_MSG("begin recv thread");
    if (run.layout.bytesPerLine() == 0) {
        reportError(tr("Format must include at least one number"));
        return;
    }
    if (!prepareRecvRun(run))
        return;
    if (!connectToDevice(run)) {
        setRecvStatus(TS_STOP);
        return;
    }
    if (!openRecvFile())
        return;
    QMutexLocker lock(&m_mutex);
    connect(m_connection, &TcpConnection::readyRead, this, &TCPThread::readAvailable,
            Qt::UniqueConnection);
    setRecvStatus(TS_RUN);
    // Bytes that arrived while only sending are waiting already.
    if (m_connection->socket()->bytesAvailable() > 0)
        QMetaObject::invokeMethod(this, &TCPThread::readAvailable, Qt::QueuedConnection);
}

bool TCPThread::prepareRecvRun(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_STOP) {
        warnInvalid("recv", m_recvStatus);
        return false;
    }
    setRecvStatus(TS_STARTING);
    emit recvReported(m_stream->start(run), false);
    return true;
}

// Only once the connection stands: a run that cannot connect leaves the file as it was.
bool TCPThread::openRecvFile()
{
    QMutexLocker lock(&m_mutex);
    if (m_stream->openFile())
        return true;
    fail(Direction::Recv, m_stream->openFailureText(), TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    if (m_sendStatus == TS_STOP)
        reserveCloseSocket(0);
    return false;
}

// A failed write to the file ends the receive.
void TCPThread::readAvailable()
{
    QMutexLocker lock(&m_mutex);
    QTcpSocket *socket = m_connection->socket();
    if (m_recvStatus != TS_RUN || !socket)
        return;
    if (!m_stream->readFrom(socket))
        stopOnRecvFileFailure();
}

void TCPThread::stopOnRecvFileFailure()
{
    const QString reason = m_stream->writeFailureText();
    m_stream->sendLastProgress();
    fail(Direction::Recv, reason, TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    reserveCloseSocket(0);
}

void TCPThread::stopReceiving()
{
    if (postToWorker(&TCPThread::stopReceiving))
        return;
    LOG_INFO_MSG("stop receiving");
    {
        QMutexLocker lock(&m_mutex);
        if (m_recvStatus != TS_RUN) {
            warnInvalid("recv", m_recvStatus);
            return;
        }
        m_stream->sendLastProgress();
        setRecvStatus(TS_STOP);
    }
    closeSocket();
}
