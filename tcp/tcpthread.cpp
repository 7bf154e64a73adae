#include "tcp/tcpthread.h"

#include "app/log.h"
#include "app/report.h"
#include "tcp/filesender.h"
#include "tcp/tcpoutputoption.h"

#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>

namespace {

std::atomic<TCPThread *> g_instance{nullptr};

} // namespace

TCPThread::TCPThread(QThread *thread, QObject *parent)
    : QObject(parent), m_sender(new FileSender(this)), m_recvProgressDue(new QTimer(this)),
      m_flushTimer(new QTimer(this))
{
    registerThreadMetaTypes();
    g_instance = this;
    moveToThread(thread);
    m_flushTimer->setInterval(kFlushIntervalMs);
    connect(m_flushTimer, &QTimer::timeout, this, &TCPThread::onFlushTimeout);
    m_recvProgressDue->setSingleShot(true);
    m_recvProgressDue->setInterval(kProgressIntervalMs);
    connect(m_recvProgressDue, &QTimer::timeout, this, [this] {
        QMutexLocker lock(&m_mutex);
        emitRecvProgress(true);
    });
    connect(m_sender, &FileSender::shown, this,
            [this](const QString &text, qint64 from, qint64 bytes) {
                emit sendStringAdded(text, true, from, bytes);
            });
    connect(m_sender, &FileSender::progressed, this, [this] { emitSendProgress(false); });
    connect(m_sender, &FileSender::finished, this, &TCPThread::finishSendFile);
    connect(m_sender, &FileSender::stalled, this, [this] {
        failSend(tr("TCP write is timeout"), TTE_SEND_ERROR);
        closeAfterSending();
    });
}

TCPThread::~TCPThread()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_STOP)
        LOG_ERROR(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(m_recvStatus)));
    if (m_sendStatus != TS_STOP)
        LOG_ERROR(QStringLiteral("Invalid send status: %1").arg(threadStatusText(m_sendStatus)));
    if (m_socket)
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

void TCPThread::setTimeouts(int connectMs, int writeMs, int disconnectMs)
{
    m_connectTimeoutMs = connectMs;
    m_writeTimeoutMs = writeMs;
    m_disconnectTimeoutMs = disconnectMs;
}

// A failure ends the run: the message area and the dialog of that direction say why.
void TCPThread::failSend(const QString &text, TCPTHREAD_ERROR error)
{
    reportError(text);
    emit sendReported(text, true);
    emit errorOccured(error);
}

void TCPThread::failRecv(const QString &text, TCPTHREAD_ERROR error)
{
    reportError(text);
    emit recvReported(text, true);
    emit errorOccured(error);
}

QString TCPThread::savedText() const
{
    if (m_recvRun.fileName.isEmpty())
        return tr("Nothing was saved (Save To is empty).");
    return tr("%1 bytes were saved to %2.").arg(m_recorder.savedBytes()).arg(m_recvRun.fileName);
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

bool TCPThread::hasSocket() const
{
    QMutexLocker lock(&m_mutex);
    return m_socket != nullptr;
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
    if (status == TS_RUN) {
        m_flushTimer->start();
    } else {
        m_flushTimer->stop();
        m_recvProgressDue->stop();
    }
    if (status == TS_STOP) {
        if (m_socket)
            disconnect(m_socket, &QTcpSocket::readyRead, this, nullptr);
        if (m_recorder.isOpen()) {
            if (!m_recorder.close())
                failRecv(recordFailure(), TTE_RECV_ERROR);
            LOG_INFO_MSG("recv file closed");
        }
    }
    emit recvStatusChanged(old, status);
}

// ---- Connection ----

// Both directions share one connection. The wait for the device runs without the lock held.
bool TCPThread::connectToDevice(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    discardDeadSocket();
    if (m_socket)
        return true;
    auto *socket = new QTcpSocket(this);
    socket->setReadBufferSize(kSocketReadBufferBytes);
    m_socket = socket;
    socket->connectToHost(run.host, run.port, QIODevice::ReadWrite);
    lock.unlock();
    const bool connected = socket->waitForConnected(m_connectTimeoutMs);
    lock.relock();
    if (connected) {
        connect(socket, &QAbstractSocket::errorOccurred, this, &TCPThread::onSocketError);
        return true;
    }
    reserveCloseSocket(0);
    const QString text = QStringLiteral("%1: %2:%3 (%4)")
                             .arg(tr("Fail to connect to device"), run.host)
                             .arg(run.port)
                             .arg(socket->errorString());
    reportError(text);
    if (m_sendStatus == TS_STARTING)
        emit sendReported(text, true);
    if (m_recvStatus == TS_STARTING)
        emit recvReported(text, true);
    emit errorOccured(TTE_CONNECT_ERROR);
    return false;
}

// A socket that lost its connection and waits for its reserved close is of no use to a new run.
void TCPThread::discardDeadSocket()
{
    if (!m_socket || m_socket->state() == QAbstractSocket::ConnectedState)
        return;
    if ((m_sendStatus != TS_STOP && m_sendStatus != TS_STARTING) ||
        (m_recvStatus != TS_STOP && m_recvStatus != TS_STARTING))
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    delete m_socket;
    m_socket = nullptr;
    LOG_INFO_MSG("socket closed");
}

void TCPThread::onSocketError(QAbstractSocket::SocketError error)
{
    // A wait that timed out is reported by the code that waited, with what it was waiting for.
    if (error == QAbstractSocket::SocketTimeoutError)
        return;
    QMutexLocker lock(&m_mutex);
    const QString errorString = m_socket ? m_socket->errorString() : QString();
    // Bytes the socket took in before the connection ended still belong in the file.
    if (m_recvStatus == TS_RUN)
        readAvailable();
    const QString failure = QStringLiteral("%1: %2").arg(tr("TCP error occured"), errorString);
    if (m_recvStatus == TS_RUN) {
        emitRecvProgress(true);
        if (!m_recorder.close()) {
            failRecv(recordFailure(), TTE_RECV_ERROR);
        } else if (error == QAbstractSocket::RemoteHostClosedError) {
            const QString text =
                QStringLiteral("%1 %2").arg(tr("The device closed the connection."), savedText());
            reportResult(text);
            emit recvReported(text, false);
        } else {
            failRecv(QStringLiteral("%1. %2").arg(failure, savedText()), TTE_CONNECT_ERROR);
        }
    }
    if (m_sendStatus == TS_RUN)
        failSend(failure, TTE_CONNECT_ERROR);
    setRecvStatus(TS_STOP);
    setSendStatus(TS_STOP);
    reserveCloseSocket(0);
}

void TCPThread::reserveCloseSocket(int msec)
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(
            this, [this, msec] { reserveCloseSocket(msec); }, Qt::QueuedConnection);
        return;
    }
    const int delayMs = std::max(msec, 0);
    LOG_INFO_MSG(QStringLiteral("reserve to close socket [after %1msec]").arg(delayMs));
    QTimer::singleShot(delayMs, this, [this] {
        LOG_INFO_MSG("socket close reservation timed out.");
        closeSocket();
    });
}

void TCPThread::closeSocket()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, &TCPThread::closeSocket, Qt::QueuedConnection);
        return;
    }
    QMutexLocker lock(&m_mutex);
    if (!m_socket) {
        LOG_WARN("already socket closed");
        return;
    }
    if (m_sendStatus == TS_STOPPING) {
        if (!m_closeDeadline.hasExpired()) {
            reserveCloseSocket(int(m_closeDeadline.remainingTime()));
            return;
        }
        setSendStatus(TS_STOP);
    } else if (m_sendStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("tcp send is running. so cancel to close socket: send[%1] recv[%2]")
                     .arg(threadStatusText(m_sendStatus), threadStatusText(m_recvStatus)));
        return;
    }
    if (m_recvStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("tcp recv is running. so cancel to close socket: send[%1] recv[%2]")
                     .arg(threadStatusText(m_sendStatus), threadStatusText(m_recvStatus)));
        return;
    }
    QTcpSocket *socket = m_socket;
    socket->disconnect();
    const bool dropUnsent = m_sendStopped;
    m_sendStopped = false;
    lock.unlock();
    // Both directions are stopped and the socket's signals are cut, so nothing else touches the
    // socket while this thread waits for the device to take the last bytes. After a stop the
    // unsent bytes are given up at once, as the loss report told the user.
    if (dropUnsent && socket->bytesToWrite() > 0) {
        socket->abort();
    } else {
        socket->disconnectFromHost();
        if (socket->state() != QAbstractSocket::UnconnectedState)
            socket->waitForDisconnected(m_disconnectTimeoutMs);
    }
    socket->close();
    lock.relock();
    delete socket;
    m_socket = nullptr;
    LOG_INFO_MSG("socket closed");
}

// ---- Sending ----

void TCPThread::beginSendThread(const TransferRun &run)
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(
            this, [this, run] { beginSendThread(run); }, Qt::QueuedConnection);
        return;
    }
    LOG_INFO_MSG("begin send thread");
    if (!prepareSendRun(run))
        return;
    if (!connectToDevice(run)) {
        setSendStatus(TS_STOP);
        return;
    }
    QMutexLocker lock(&m_mutex);
    setSendStatus(TS_RUN);
    m_sendThrottle.restart();
    m_sender->start(m_socket, m_writeTimeoutMs);
}

bool TCPThread::prepareSendRun(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid send status: %1").arg(threadStatusText(m_sendStatus)));
        return false;
    }
    setSendStatus(TS_STARTING);
    m_sendStopped = false;
    m_sendThrottle.restart();
    if (run.fileName.isEmpty() || !m_sender->open(run)) {
        const QString reason =
            run.fileName.isEmpty()
                ? tr("no send file is chosen")
                : QStringLiteral("%1 (%2)").arg(run.fileName, m_sender->errorString());
        failSend(QStringLiteral("%1: %2").arg(tr("Send file cannot open"), reason), TTE_SEND_ERROR);
        setSendStatus(TS_STOP);
        return false;
    }
    emit sendReported(tr("Sending %1").arg(run.fileName), false);
    return true;
}

void TCPThread::finishSendFile()
{
    if (m_sender->sentBytes() != m_sender->fileSize())
        failSend(tr("File size does not match the send size."), TTE_SEND_ERROR);
    emitSendProgress(true);
    emit writeFinished();
    closeAfterSending();
}

void TCPThread::closeAfterSending()
{
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus == TS_RUN)
        setSendStatus(TS_STOPPING);
    if (!m_socket) {
        setSendStatus(TS_STOP);
        return;
    }
    LOG_INFO_MSG("flush socket");
    m_socket->flush();
    m_closeDeadline.setRemainingTime(m_closeReserveMs);
    reserveCloseSocket(m_closeReserveMs);
}

void TCPThread::emitSendProgress(bool force)
{
    const qint64 sent = m_sender->sentBytes();
    if (m_sendThrottle.take(sent, force))
        emit sendProgress(sent, m_sender->fileSize(), m_sendThrottle.elapsedMs());
}

// The status changes at once, on the caller's thread, so that the caller sees the stop taken; the
// close follows on the worker thread.
void TCPThread::stopSending()
{
    LOG_INFO_MSG("stop sending");
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus != TS_RUN) {
        LOG_WARN(QStringLiteral("Invalid send status: %1").arg(threadStatusText(m_sendStatus)));
        return;
    }
    m_sendStopped = true;
    setSendStatus(TS_STOPPING);
    QMetaObject::invokeMethod(
        this,
        [this] {
            emitSendProgress(true);
            closeAfterSending();
        },
        Qt::QueuedConnection);
}

// ---- Receiving ----

void TCPThread::beginRecvThread(const TransferRun &run)
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(
            this, [this, run] { beginRecvThread(run); }, Qt::QueuedConnection);
        return;
    }
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
    connect(m_socket, &QTcpSocket::readyRead, this, &TCPThread::readAvailable,
            Qt::UniqueConnection);
    setRecvStatus(TS_RUN);
    // Bytes that arrived while only sending are waiting already.
    if (m_socket->bytesAvailable() > 0)
        QMetaObject::invokeMethod(this, &TCPThread::readAvailable, Qt::QueuedConnection);
}

bool TCPThread::prepareRecvRun(const TransferRun &run)
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(m_recvStatus)));
        return false;
    }
    setRecvStatus(TS_STARTING);
    m_recvRun = run;
    m_displayMode = run.displayMode;
    m_recvSize = 0;
    m_tail.clear();
    m_recvTextSignalled = false;
    m_recvThrottle.restart();
    m_readBuffer.resize(kReadBytes);
    if (run.fileName.isEmpty()) {
        emit recvReported(tr("Nothing is being saved: Save To is empty."), false);
        return true; // receive for display only
    }
    emit recvReported(tr("Saving to %1").arg(run.fileName), false);
    return true;
}

// Only once the connection stands: a run that cannot connect leaves the file as it was.
bool TCPThread::openRecvFile()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvRun.fileName.isEmpty())
        return true;
    if (m_recorder.open(m_recvRun.fileName, m_recvRun.hexFile, m_recvRun.layout))
        return true;
    failRecv(QStringLiteral("%1: %2 (%3)")
                 .arg(tr("Receive file cannot open"), m_recvRun.fileName, m_recorder.errorString()),
             TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    if (m_sendStatus == TS_STOP)
        reserveCloseSocket(0);
    return false;
}

// One pass over the bytes the socket holds. Every byte goes to the file at once; the display
// keeps only the newest bytes, so a slow display never holds the device back. A failed write to
// the file ends the receive.
void TCPThread::readAvailable()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_RUN || !m_socket)
        return;
    const bool display = m_displayMode != TCPOutputOption::kDisplayOff;
    const bool raw = m_recorder.isRaw();
    for (qint64 available = m_socket->bytesAvailable(); available > 0;
         available = m_socket->bytesAvailable()) {
        const qsizetype want = qsizetype(std::min<qint64>(available, kReadBytes));
        char *chunk = raw ? m_recorder.space(want) : m_readBuffer.data();
        const qint64 received = m_socket->read(chunk, want);
        if (received <= 0) {
            LOG_ERROR("Invalid received data.");
            break;
        }
        if (display)
            m_tail.keep(chunk, received, m_recvSize);
        m_recvSize += received;
        const bool stored = !m_recorder.isOpen() ? true
                            : raw                ? m_recorder.commit(received)
                                                 : m_recorder.add(chunk, received);
        if (!stored) {
            stopOnRecvFileFailure();
            return;
        }
    }
    if (!m_tail.isEmpty() && !m_recvTextSignalled) {
        m_recvTextSignalled = true;
        emit recvStringAdded();
    }
    emitRecvProgress(false);
}

QString TCPThread::recordFailure() const
{
    LOG_ERROR(QStringLiteral("recv file write failed: %1").arg(m_recorder.errorString()));
    return QStringLiteral("%1: %2 (%3). %4")
        .arg(tr("Receive file cannot be written"), m_recvRun.fileName, m_recorder.errorString(),
             savedText());
}

void TCPThread::stopOnRecvFileFailure()
{
    const QString reason = recordFailure();
    m_recorder.close();
    emitRecvProgress(true);
    failRecv(reason, TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    reserveCloseSocket(0);
}

// A figure held back by the throttle is sent by the progress timer, so the last one always shows.
void TCPThread::emitRecvProgress(bool force)
{
    if (m_recvThrottle.take(m_recvSize, force)) {
        m_recvProgressDue->stop();
        emit recvProgress(m_recvSize);
    } else if (m_recvThrottle.isHeldBack(m_recvSize) && !m_recvProgressDue->isActive()) {
        m_recvProgressDue->start();
    }
}

QByteArray TCPThread::takeRecvData(qint64 maxSize)
{
    QMutexLocker lock(&m_mutex);
    const bool hex = m_displayMode == TCPOutputOption::kDisplayHex;
    const QByteArrayView lineEnd(TCPOutputOption::kRecvLineEnd);
    QByteArray mark;
    if (m_tail.skipped() > 0) {
        const QByteArray around = hex ? lineEnd.toByteArray() : QByteArray(1, '\n');
        mark = around + tr("[%1 bytes skipped]").arg(m_tail.skipped()).toUtf8() + around;
    }
    const QByteArray result =
        m_tail.take(maxSize, hex ? m_recvRun.layout : HexLayout(), lineEnd, mark);
    if (m_tail.isEmpty())
        m_recvTextSignalled = false;
    return result;
}

void TCPThread::stopReceiving()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, &TCPThread::stopReceiving, Qt::QueuedConnection);
        return;
    }
    LOG_INFO_MSG("stop receiving");
    {
        QMutexLocker lock(&m_mutex);
        if (m_recvStatus != TS_RUN) {
            LOG_WARN(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(m_recvStatus)));
            return;
        }
        emitRecvProgress(true);
        setRecvStatus(TS_STOP);
    }
    closeSocket();
}

// Runs every second while receiving: gathered bytes are written out on every tick, so the file
// never lags more than a second behind.
void TCPThread::onFlushTimeout()
{
    QMutexLocker lock(&m_mutex);
    if (!m_recorder.writeOut())
        stopOnRecvFileFailure();
}
