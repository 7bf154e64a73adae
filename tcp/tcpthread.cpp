#include "tcp/tcpthread.h"

#include "app/appmodel.h"
#include "app/log.h"
#include "app/report.h"
#include "settings/mavixsetting.h"
#include "tcp/tcpoutputoption.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <limits>

namespace {

std::atomic<TCPThread *> g_instance{nullptr};

qint64 nowMsec()
{
    return QDateTime::currentMSecsSinceEpoch();
}

} // namespace

TCPThread::TCPThread(QThread *thread, QObject *parent) : QObject(parent)
{
    registerThreadMetaTypes();
    m_flushTimer = new QTimer(this);
    m_recvProgressDue = new QTimer(this);
    m_fileChunk.resize(kChunkBytes);
    m_recvChunk.resize(kChunkBytes);
    g_instance = this;
    moveToThread(thread);
    connect(m_flushTimer, &QTimer::timeout, this, &TCPThread::onRecvFileFlushTimeout);
    m_flushTimer->setInterval(kFlushIntervalMs);
    m_recvProgressDue->setSingleShot(true);
    m_recvProgressDue->setInterval(kProgressIntervalMs);
    connect(m_recvProgressDue, &QTimer::timeout, this, [this] {
        QMutexLocker lock(&m_mutex);
        emitRecvProgress(true);
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
    if (m_recvFile.fileName().isEmpty())
        return tr("Nothing was saved (Save To is empty).");
    return tr("%1 bytes were saved to %2.").arg(m_savedBytes).arg(m_recvFile.fileName());
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

// ---- Status machines ----

void TCPThread::setSendStatus(THREAD_STATUS status)
{
    QMutexLocker lock(&m_mutex);
    const THREAD_STATUS old = m_sendStatus;
    if (status == old)
        return;
    m_sendStatus = status;
    LOG_INFO_MSG(QStringLiteral("send status changed: %1 -> %2")
                     .arg(threadStatusText(old), threadStatusText(status)));
    if (status == TS_STOP && m_sendFile.isOpen()) {
        LOG_INFO_MSG("send file closed");
        m_sendFile.close();
    }
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
            disconnect(m_socket, &QTcpSocket::readyRead, this, &TCPThread::reserveRecvData);
        if (m_recvFile.isOpen()) {
            if (!writeRecvBlock())
                failRecv(m_recvFileError, TTE_RECV_ERROR);
            LOG_INFO_MSG("recv file closed");
            m_recvFile.close();
        }
    }
    emit recvStatusChanged(old, status);
}

// ---- Connection ----

// Both directions share one connection. The wait for the device runs without the lock held, so
// the callers must not hold it either.
bool TCPThread::connectToDevice()
{
    QMutexLocker lock(&m_mutex);
    discardDeadSocket();
    if (m_socket)
        return true;
    const MavixSetting target = MavixSetting::current();
    auto *socket = new QTcpSocket(this);
    socket->setReadBufferSize(kSocketReadBufferBytes);
    m_socket = socket;
    socket->connectToHost(target.ipAddress, target.tcpDataPort, QIODevice::ReadWrite);
    lock.unlock();
    const bool connected = socket->waitForConnected(m_connectTimeoutMs);
    lock.relock();
    if (connected) {
        connect(socket, &QAbstractSocket::errorOccurred, this, &TCPThread::onSocketError);
        return true;
    }
    reserveCloseSocket(0);
    const QString text = QStringLiteral("%1: %2:%3 (%4)")
                             .arg(tr("Fail to connect to device"), target.ipAddress)
                             .arg(target.tcpDataPort)
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
    if (m_sendStatus != TS_STOP && m_sendStatus != TS_STARTING)
        return;
    if (m_recvStatus != TS_STOP && m_recvStatus != TS_STARTING)
        return;
    m_socket->disconnect(this);
    m_socket->abort();
    delete m_socket;
    m_socket = nullptr;
    LOG_INFO_MSG("socket closed");
}

void TCPThread::onBytesWritten(qint64) {}

void TCPThread::onSocketError(QAbstractSocket::SocketError error)
{
    // A wait that timed out is reported by the code that waited, with what it was waiting for.
    if (error == QAbstractSocket::SocketTimeoutError)
        return;
    QMutexLocker lock(&m_mutex);
    const QString errorString = m_socket ? m_socket->errorString() : QString();
    // Bytes the socket took in before the connection ended still belong in the file.
    if (m_recvStatus == TS_RUN && m_socket && m_socket->bytesAvailable() > 0) {
        const TCPOutputOption *option = AppModel::currentRecvOption();
        const HexLayout layout = option ? option->layout() : HexLayout();
        if (layout.bytesPerLine() > 0)
            readAvailable(layout, true);
    }
    const QString failure = QStringLiteral("%1: %2").arg(tr("TCP error occured"), errorString);
    if (m_recvStatus == TS_RUN) {
        emitRecvProgress(true);
        // A device that sends a finite stream ends it by closing: that is how a receive ends.
        if (!writeRecvBlock()) {
            failRecv(m_recvFileError, TTE_RECV_ERROR);
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
    QTimer::singleShot(delayMs, this, &TCPThread::onReserveCloseSocketTimeout);
}

void TCPThread::onReserveCloseSocketTimeout()
{
    LOG_INFO_MSG("socket close reservation timed out.");
    closeSocket();
}

void TCPThread::closeSocket()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, "closeSocket", Qt::QueuedConnection);
        return;
    }
    QMutexLocker lock(&m_mutex);
    if (!m_socket) {
        LOG_WARN("already socket closed");
        return;
    }
    if (m_sendStatus == TS_STOPPING) {
        const qint64 now = nowMsec();
        if (m_closeDeadline > now) {
            reserveCloseSocket(int(m_closeDeadline - now));
            return;
        }
        setSendStatus(TS_STOP);
        m_closeDeadline = 0;
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

void TCPThread::beginSendThread()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, "beginSendThread", Qt::QueuedConnection);
        return;
    }
    LOG_INFO_MSG("begin send thread");
    if (!prepareSendRun())
        return;
    if (!connectToDevice()) {
        setSendStatus(TS_STOP);
        return;
    }
    {
        QMutexLocker lock(&m_mutex);
        setSendStatus(TS_RUN);
        m_elapsedTimer.restart();
    }
    runSendLoop();
}

bool TCPThread::prepareSendRun()
{
    QMutexLocker lock(&m_mutex);
    if (m_sendStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid send status: %1").arg(threadStatusText(m_sendStatus)));
        return false;
    }
    setSendStatus(TS_STARTING);
    m_sendStopped = false;
    m_sentSize = 0;
    m_elapsedTimer.start();
    m_displayedSize = 0;
    m_lastSendProgressMs = -1;
    m_reportedSentSize = -1;
    m_queuedBytes = 0;
    m_hexDecoder.reset();
    TCPOutputOption *option = AppModel::currentSendOption();
    const QString name = option ? option->fileName() : QString();
    m_sendFile.setFileName(name);
    if (name.isEmpty() || !m_sendFile.open(QIODevice::ReadOnly)) {
        const QString reason = name.isEmpty()
                                   ? tr("no send file is chosen")
                                   : QStringLiteral("%1 (%2)").arg(name, m_sendFile.errorString());
        failSend(QStringLiteral("%1: %2").arg(tr("Send file cannot open"), reason), TTE_SEND_ERROR);
        setSendStatus(TS_STOP);
        return false;
    }
    emit sendReported(tr("Sending %1").arg(name), false);
    m_sendFileSize = m_sendFile.size();
    m_sendHexFile = option->useHexFile();
    m_sendLayout = option->layout();
    return true;
}

// The file is read and queued to the socket 1024 bytes at a time; the queued bytes are handed to
// the system a batch at a time, and between batches the event loop gets a turn so that what is
// queued for the worker (a stop, the other direction's reads, socket events) is served although
// the loop runs inside a slot. A chunk is counted as sent once its batch has been handed over.
void TCPThread::runSendLoop()
{
    qint64 batchFileBytes = 0; // file bytes queued in the socket and not yet handed over
    for (;;) {
        const THREAD_STATUS status = sendStatus();
        if (status == TS_STOPPING) {
            handOverBatch(&batchFileBytes);
            break;
        }
        if (status != TS_RUN)
            return;
        const qint64 fileBytes = m_sendFile.read(m_fileChunk.data(), kChunkBytes);
        if (fileBytes <= 0) {
            if (handOverBatch(&batchFileBytes))
                finishSendFile();
            break;
        }
        const QByteArrayView payload = toPayload(fileBytes);
        if (AppModel::currentSendOption() && AppModel::currentSendOption()->showData() &&
            m_displayedSize < kSendDisplayLimitBytes)
            showSentChunk(fileBytes, payload, m_sentSize + batchFileBytes);
        if (!queueToSocket(payload))
            break;
        batchFileBytes += fileBytes;
        if (m_queuedBytes >= kSendBatchBytes) {
            if (!handOverBatch(&batchFileBytes))
                break;
            emitSendProgress(false);
            giveEventLoopATurn();
        }
    }
    emitSendProgress(true);
    closeAfterSending();
}

void TCPThread::giveEventLoopATurn()
{
    QCoreApplication::processEvents(QEventLoop::AllEvents);
}

QByteArrayView TCPThread::toPayload(qint64 fileBytes)
{
    if (!m_sendHexFile)
        return QByteArrayView(m_fileChunk.constData(), fileBytes);
    m_hexPayload.resize(0);
    m_hexDecoder.decode(m_fileChunk.constData(), fileBytes, &m_hexPayload);
    return QByteArrayView(m_hexPayload);
}

void TCPThread::showSentChunk(qint64 fileBytes, QByteArrayView payload, qint64 bytesFrom)
{
    const qint64 budget = kSendDisplayLimitBytes - m_displayedSize;
    QByteArray text;
    qint64 covered = 0;
    if (m_sendHexFile) {
        covered = std::min(fileBytes, budget);
        text = QByteArray(m_fileChunk.constData(), covered);
    } else {
        covered = std::min<qint64>(payload.size(), budget);
        qint64 position = m_displayedSize;
        m_sendLayout.render(payload.data(), covered, &position,
                            QByteArrayView(TCPOutputOption::kSendLineEnd), &text);
    }
    m_displayedSize += covered;
    if (!text.isEmpty())
        emit sendStringAdded(QString::fromUtf8(text), true, bytesFrom, covered);
}

bool TCPThread::queueToSocket(QByteArrayView payload)
{
    QMutexLocker lock(&m_mutex);
    if (!m_socket)
        return false;
    qint64 written = 0;
    while (written < payload.size()) {
        const qint64 accepted = m_socket->write(payload.data() + written, payload.size() - written);
        if (accepted <= 0)
            return false; // the connection is gone; its error has been reported
        written += accepted;
    }
    m_queuedBytes += written;
    return true;
}

// Waits until the system has taken every queued byte, in short slices so that a stop ends the
// wait at once; a wait that sees no progress for the write time-out ends the run.
bool TCPThread::handOverBatch(qint64 *batchFileBytes)
{
    QTcpSocket *socket = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        socket = m_socket;
    }
    if (socket) {
        socket->flush();
        QElapsedTimer sinceProgress;
        sinceProgress.start();
        qint64 pending = socket->bytesToWrite();
        while (pending > 0) {
            if (sendStatus() != TS_RUN)
                return false;
            if (socket->state() != QAbstractSocket::ConnectedState)
                return false; // the connection is gone; its error has been reported
            if (sinceProgress.elapsed() >= m_writeTimeoutMs) {
                failSend(tr("TCP write is timeout"), TTE_SEND_ERROR);
                return false;
            }
            socket->waitForBytesWritten(kStopPollMs);
            if (socket->bytesToWrite() < pending)
                sinceProgress.restart();
            pending = socket->bytesToWrite();
        }
    }
    m_queuedBytes = 0;
    m_sentSize += *batchFileBytes;
    *batchFileBytes = 0;
    return true;
}

void TCPThread::finishSendFile()
{
    if (m_sentSize != m_sendFileSize)
        failSend(tr("File size does not match the send size."), TTE_SEND_ERROR);
    emitSendProgress(true);
    emit writeFinished();
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
    m_closeDeadline = nowMsec() + m_closeReserveMs;
    reserveCloseSocket(m_closeReserveMs);
}

void TCPThread::emitSendProgress(bool force)
{
    const qint64 elapsedMs = m_elapsedTimer.elapsed();
    if (!force && m_lastSendProgressMs >= 0 &&
        elapsedMs - m_lastSendProgressMs < kProgressIntervalMs)
        return;
    if (force && m_reportedSentSize == m_sentSize)
        return;
    m_lastSendProgressMs = elapsedMs;
    m_reportedSentSize = m_sentSize;
    emit sendProgress(m_sentSize, m_sendFileSize, elapsedMs);
}

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
}

// ---- Receiving ----

void TCPThread::beginRecvThread()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, "beginRecvThread", Qt::QueuedConnection);
        return;
    }
    LOG_INFO_MSG("begin recv thread");
    if (!AppModel::currentRecvOption() || AppModel::currentRecvOption()->bytesPerLine() == 0) {
        reportError(tr("Format must include at least one number"));
        return;
    }
    if (!prepareRecvRun())
        return;
    if (!connectToDevice()) {
        setRecvStatus(TS_STOP);
        return;
    }
    if (!openRecvFile())
        return;
    QMutexLocker lock(&m_mutex);
    connect(m_socket, &QTcpSocket::readyRead, this, &TCPThread::reserveRecvData,
            Qt::UniqueConnection);
    setRecvStatus(TS_RUN);
    // Bytes that arrived while only sending are waiting already.
    if (m_socket->bytesAvailable() > 0)
        reserveRecvData();
}

bool TCPThread::prepareRecvRun()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvStatus != TS_STOP) {
        LOG_WARN(QStringLiteral("Invalid recv status: %1").arg(threadStatusText(m_recvStatus)));
        return false;
    }
    setRecvStatus(TS_STARTING);
    m_recvSize = 0;
    m_recvText.clear();
    m_recvTextStart = 0;
    m_skippedBytes = 0;
    m_recvTextSignalled = false;
    m_savedBytes = 0;
    m_recvFileError.clear();
    m_recvBlock.resize(0);
    m_recvBlock.reserve(kRecvFileBlockBytes + 4 * kChunkBytes);
    m_lastRecvWriteMsec = 0;
    m_reportedRecvSize = -1;
    m_recvProgressTimer.start();
    const QString name = AppModel::currentRecvOption()->fileName();
    m_recvFile.setFileName(name);
    if (name.isEmpty()) {
        emit recvReported(tr("Nothing is being saved: Save To is empty."), false);
        return true; // receive for display only
    }
    emit recvReported(tr("Saving to %1").arg(name), false);
    return true;
}

// Only once the connection stands: a run that cannot connect leaves the file as it was.
bool TCPThread::openRecvFile()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvFile.fileName().isEmpty())
        return true;
    // Unbuffered: the bytes are gathered into large blocks here, not in 16 KiB pieces by QFile.
    if (m_recvFile.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        return true;
    failRecv(
        QStringLiteral("%1: %2 (%3)")
            .arg(tr("Receive file cannot open"), m_recvFile.fileName(), m_recvFile.errorString()),
        TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    if (m_sendStatus == TS_STOP)
        reserveCloseSocket(0);
    return false;
}

void TCPThread::reserveRecvData()
{
    QMutexLocker lock(&m_mutex);
    if (m_recvDataReserved)
        return;
    m_recvDataReserved = true;
    QMetaObject::invokeMethod(this, "recvData", Qt::QueuedConnection);
}

void TCPThread::recvData()
{
    QMutexLocker lock(&m_mutex);
    m_recvDataReserved = false;
    if (m_recvStatus != TS_RUN || !m_socket)
        return;
    const TCPOutputOption *option = AppModel::currentRecvOption();
    const HexLayout layout = option ? option->layout() : HexLayout();
    if (layout.bytesPerLine() == 0) {
        LOG_ERROR("Format must include at least one number");
        return;
    }
    readAvailable(layout, false);
}

// One pass over the bytes the socket holds. Every byte goes to the file at once; the display
// keeps only the newest bytes, so a slow display never holds the device back. A failed write to
// the file ends the receive.
void TCPThread::readAvailable(const HexLayout &layout, bool draining)
{
    TCPOutputOption *option = AppModel::currentRecvOption();
    const bool display = option && option->displayMode() != TCPOutputOption::kDisplayOff;
    const bool hexFile = option && option->useHexFile();
    const bool toFile = m_recvFile.isOpen();
    const qint64 sizeBefore = m_recvSize;
    while (m_socket && m_socket->bytesAvailable() > 0) {
        const qint64 available = m_socket->bytesAvailable();
        const char *chunk = nullptr;
        const qint64 received = readChunk(kChunkBytes, toFile && !hexFile, &chunk);
        if (received <= 0) {
            LOG_ERROR("Invalid received data.");
            break;
        }
        const qint64 position = m_recvSize;
        m_recvSize += received;
        // Bytes followed by more than the display keeps would be pushed out at once.
        if (display && available - received < kRecvTextLimitBytes)
            keepForDisplay(chunk, received, position);
        if (toFile && !storeRecvChunk(chunk, received, hexFile ? &layout : nullptr, position)) {
            stopOnRecvFileFailure();
            return;
        }
    }
    if (toFile && m_recvSize != sizeBefore)
        m_lastRecvWriteMsec = nowMsec();
    if (!m_recvText.isEmpty() && !m_recvTextSignalled) {
        m_recvTextSignalled = true;
        emit recvStringAdded();
    }
    emitRecvProgress(draining);
}

// The display buffer holds one unbroken run of the newest bytes; whatever falls out of it or
// never reaches it is counted as skipped.
void TCPThread::keepForDisplay(const char *chunk, qsizetype size, qint64 position)
{
    const qint64 bufferEnd = m_recvTextStart + m_recvText.size();
    if (position != bufferEnd) {
        m_skippedBytes += m_recvText.size() + (position - bufferEnd);
        m_recvText.resize(0);
        m_recvTextStart = position;
    }
    m_recvText.append(chunk, size);
    const qsizetype excess = m_recvText.size() - kRecvTextLimitBytes;
    if (excess > 0) {
        m_recvText.remove(0, excess);
        m_recvTextStart += excess;
        m_skippedBytes += excess;
    }
}

// Reads up to `want` bytes. Raw bytes bound for the file are read straight into the file block,
// which saves copying them once more.
qint64 TCPThread::readChunk(qsizetype want, bool intoBlock, const char **chunk)
{
    if (!intoBlock) {
        *chunk = m_recvChunk.constData();
        return m_socket->read(m_recvChunk.data(), want);
    }
    const qsizetype at = m_recvBlock.size();
    m_recvBlock.resize(at + want);
    const qint64 received = m_socket->read(m_recvBlock.data() + at, want);
    m_recvBlock.resize(at + std::max<qint64>(received, 0));
    *chunk = m_recvBlock.constData() + at;
    return received;
}

// The file block is written out when full, on each flush tick and when the run ends; hex text is
// rendered into it here, raw bytes are there already.
bool TCPThread::storeRecvChunk(const char *chunk, qsizetype size, const HexLayout *hexLayout,
                               qint64 position)
{
    if (hexLayout)
        hexLayout->render(chunk, size, &position, QByteArrayView(TCPOutputOption::kRecvLineEnd),
                          &m_recvBlock);
    return m_recvBlock.size() < kRecvFileBlockBytes || writeRecvBlock();
}

// Writes the gathered block out. A write the system cuts short is continued, so that a failure
// always comes with the system's reason; what was written stays in the file as it is.
bool TCPThread::writeRecvBlock()
{
    if (m_recvBlock.isEmpty() || !m_recvFile.isOpen())
        return true;
    qsizetype done = 0;
    while (done < m_recvBlock.size()) {
        const qint64 written =
            m_recvFile.write(m_recvBlock.constData() + done, m_recvBlock.size() - done);
        if (written <= 0)
            break;
        done += written;
        m_savedBytes += written;
    }
    const bool complete = done == m_recvBlock.size();
    if (!complete) {
        m_recvFileError = QStringLiteral("%1: %2 (%3). %4")
                              .arg(tr("Receive file cannot be written"), m_recvFile.fileName(),
                                   m_recvFile.errorString(), savedText());
        LOG_ERROR(QStringLiteral("recv file write failed: %1").arg(m_recvFile.errorString()));
    }
    m_recvBlock.resize(0);
    return complete;
}

void TCPThread::stopOnRecvFileFailure()
{
    m_recvFile.close();
    emitRecvProgress(true);
    failRecv(m_recvFileError, TTE_RECV_ERROR);
    setRecvStatus(TS_STOP);
    reserveCloseSocket(0);
}

// A figure held back by the spacing is sent by the progress timer, so the last one always shows.
void TCPThread::emitRecvProgress(bool force)
{
    if (m_recvSize == m_reportedRecvSize)
        return;
    if (!force && m_reportedRecvSize >= 0 && m_recvProgressTimer.elapsed() < kProgressIntervalMs) {
        if (!m_recvProgressDue->isActive())
            m_recvProgressDue->start();
        return;
    }
    m_recvProgressDue->stop();
    m_recvProgressTimer.restart();
    m_reportedRecvSize = m_recvSize;
    emit recvProgress(m_recvSize);
}

QByteArray TCPThread::takeRecvData(qint64 maxSize)
{
    QMutexLocker lock(&m_mutex);
    const TCPOutputOption *option = AppModel::currentRecvOption();
    const int mode = option ? option->displayMode() : TCPOutputOption::kDisplayOff;
    const QByteArrayView lineEnd(TCPOutputOption::kRecvLineEnd);
    const qsizetype limit = maxSize < 0 ? std::numeric_limits<qsizetype>::max() : maxSize;
    QByteArray result;
    if (m_skippedBytes > 0) {
        const QByteArray mark =
            mode == TCPOutputOption::kDisplayHex ? lineEnd.toByteArray() : QByteArray(1, '\n');
        const QByteArray text = mark + tr("[%1 bytes skipped]").arg(m_skippedBytes).toUtf8() + mark;
        if (text.size() > limit)
            return result;
        result = text;
        m_skippedBytes = 0;
    }
    const qsizetype room = limit - result.size();
    qsizetype bytes = std::min<qsizetype>(m_recvText.size(), room);
    if (mode == TCPOutputOption::kDisplayHex) {
        const HexLayout layout = option->layout();
        bytes = layout.bytesFitting(m_recvTextStart, m_recvText.size(), room, lineEnd.size());
        // A format whose text for one byte is longer than the whole buffer still shows something.
        if (bytes == 0 && result.isEmpty() && room >= kRecvTextLimitBytes)
            bytes = std::min<qsizetype>(1, m_recvText.size());
        qint64 position = m_recvTextStart;
        layout.render(m_recvText.constData(), bytes, &position, lineEnd, &result);
    } else {
        result.append(m_recvText.constData(), bytes);
    }
    m_recvText.remove(0, bytes);
    m_recvTextStart += bytes;
    if (m_recvText.isEmpty())
        m_recvTextSignalled = false;
    return result;
}

void TCPThread::stopReceiving()
{
    if (!onWorkerThread()) {
        QMetaObject::invokeMethod(this, "stopReceiving", Qt::QueuedConnection);
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

// Runs every second while receiving. Gathered bytes are written out on every tick, so the file
// never lags more than a second behind; the file itself is flushed once after each pause.
void TCPThread::onRecvFileFlushTimeout()
{
    QMutexLocker lock(&m_mutex);
    if (!writeRecvBlock()) {
        stopOnRecvFileFailure();
        return;
    }
    if (m_lastRecvWriteMsec < 1 || nowMsec() - m_lastRecvWriteMsec <= kFlushIntervalMs)
        return;
    if (m_recvFile.isOpen()) {
        LOG_INFO_MSG("flush recv file");
        m_recvFile.flush();
    }
    m_lastRecvWriteMsec = 0;
}
