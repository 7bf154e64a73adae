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
    m_backPressureTimer = new QTimer(this);
    m_recvProgressDue = new QTimer(this);
    m_fileChunk.resize(kChunkBytes);
    m_recvChunk.resize(kChunkBytes);
    g_instance = this;
    moveToThread(thread);
    connect(m_flushTimer, &QTimer::timeout, this, &TCPThread::onRecvFileFlushTimeout);
    m_flushTimer->setInterval(kFlushIntervalMs);
    m_backPressureTimer->setSingleShot(true);
    m_backPressureTimer->setInterval(kBackPressureRetryMs);
    connect(m_backPressureTimer, &QTimer::timeout, this, &TCPThread::reserveRecvData);
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

TCPOutputOption *TCPThread::recvOption()
{
    AppModel *model = AppModel::instance();
    return model ? model->recvOption() : nullptr;
}

TCPOutputOption *TCPThread::sendOption()
{
    AppModel *model = AppModel::instance();
    return model ? model->sendOption() : nullptr;
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
        m_backPressureTimer->stop();
        m_recvProgressDue->stop();
    }
    if (status == TS_STOP) {
        if (m_socket)
            disconnect(m_socket, &QTcpSocket::readyRead, this, &TCPThread::reserveRecvData);
        if (m_recvFile.isOpen()) {
            writeRecvBlock();
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
    const bool connected = socket->waitForConnected(kConnectTimeoutMs);
    lock.relock();
    if (connected) {
        connect(socket, &QAbstractSocket::errorOccurred, this, &TCPThread::onSocketError);
        return true;
    }
    reserveCloseSocket(0);
    reportError(tr("Fail to connect to device"));
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
        const HexLayout layout = recvOption() ? recvOption()->layout() : HexLayout();
        if (layout.bytesPerLine() > 0)
            readAvailable(layout, true);
    }
    reportError(QStringLiteral("%1: %2").arg(tr("TCP error occured"), errorString));
    emit errorOccured(TTE_CONNECT_ERROR);
    emitRecvProgress(true);
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
    lock.unlock();
    // Both directions are stopped and the socket's signals are cut, so nothing else touches the
    // socket while this thread waits for the device to take the last bytes.
    socket->disconnectFromHost();
    if (socket->state() != QAbstractSocket::UnconnectedState)
        socket->waitForDisconnected(kDisconnectTimeoutMs);
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
    m_sentSize = 0;
    m_elapsedTimer.start();
    m_displayedSize = 0;
    m_lastSendProgressMs = -1;
    m_reportedSentSize = -1;
    m_queuedBytes = 0;
    m_hexDecoder.reset();
    TCPOutputOption *option = sendOption();
    const QString name = option ? option->fileName() : QString();
    m_sendFile.setFileName(name);
    if (name.isEmpty() || !m_sendFile.open(QIODevice::ReadOnly)) {
        reportError(tr("Send file cannot open"));
        setSendStatus(TS_STOP);
        return false;
    }
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
        if (sendOption() && sendOption()->showData() && m_displayedSize < kSendDisplayLimitBytes)
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
        emit sendStringAdded(QString::fromLatin1(text), true, bytesFrom, covered);
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

// Waits until the system has taken every queued byte; each wait that sees no progress for the
// write time-out ends the run.
bool TCPThread::handOverBatch(qint64 *batchFileBytes)
{
    QTcpSocket *socket = nullptr;
    {
        QMutexLocker lock(&m_mutex);
        socket = m_socket;
    }
    if (socket) {
        socket->flush();
        while (socket->bytesToWrite() > 0) {
            if (!socket->waitForBytesWritten(kWriteTimeoutMs)) {
                if (sendStatus() == TS_RUN) {
                    reportError(tr("TCP write is timeout"));
                    emit errorOccured(TTE_SEND_ERROR);
                }
                return false;
            }
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
        reportError(tr("File size does not match the send size."));
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
    m_closeDeadline = nowMsec() + kCloseReserveMs;
    reserveCloseSocket(kCloseReserveMs);
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
    if (!recvOption() || recvOption()->bytesPerLine() == 0) {
        reportError(tr("Format must include at least one number"));
        return;
    }
    if (!prepareRecvRun())
        return;
    if (!connectToDevice()) {
        setRecvStatus(TS_STOP);
        return;
    }
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
    m_recvBlock.resize(0);
    m_recvBlock.reserve(kRecvFileBlockBytes + 4 * kChunkBytes);
    m_lastRecvWriteMsec = 0;
    m_reportedRecvSize = -1;
    m_recvProgressTimer.start();
    const QString name = recvOption()->fileName();
    if (name.isEmpty())
        return true; // receive for display only
    m_recvFile.setFileName(name);
    // Unbuffered: the bytes are gathered into large blocks here, not in 16 KiB pieces by QFile.
    if (!m_recvFile.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered)) {
        reportError(tr("Receive file cannot open"));
        setRecvStatus(TS_STOP);
        return false;
    }
    return true;
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
    const HexLayout layout = recvOption() ? recvOption()->layout() : HexLayout();
    if (layout.bytesPerLine() == 0) {
        LOG_ERROR("Format must include at least one number");
        return;
    }
    readAvailable(layout, false);
}

// One pass over the bytes the socket holds. While the display is on, a chunk is read only as far
// as its text still fits the display buffer; when nothing fits the pass ends and resumes once the
// dialog has taken text. A final pass after the connection ended (`draining`) keeps reading for
// the file and shows what still fits.
void TCPThread::readAvailable(const HexLayout &layout, bool draining)
{
    TCPOutputOption *option = recvOption();
    int displayMode = option ? option->displayMode() : TCPOutputOption::kDisplayOff;
    const bool hexFile = option && option->useHexFile();
    const bool toFile = m_recvFile.isOpen();
    const qint64 sizeBefore = m_recvSize;
    bool textAdded = false;
    while (m_socket->bytesAvailable() > 0) {
        qsizetype want = kChunkBytes;
        if (displayMode != TCPOutputOption::kDisplayOff) {
            want = displayRoom(layout, displayMode, want);
            if (want == 0 && draining) {
                displayMode = TCPOutputOption::kDisplayOff;
                want = kChunkBytes;
            } else if (want == 0) {
                m_backPressureTimer->start();
                break;
            }
        }
        const char *chunk = nullptr;
        const qint64 received = readChunk(want, toFile && !hexFile, &chunk);
        if (received <= 0) {
            LOG_ERROR("Invalid received data.");
            break;
        }
        const qint64 position = m_recvSize;
        m_recvSize += received;
        if (displayMode == TCPOutputOption::kDisplayText) {
            m_recvText.append(chunk, received);
            textAdded = true;
        } else if (displayMode == TCPOutputOption::kDisplayHex) {
            qint64 textPosition = position;
            layout.render(chunk, received, &textPosition,
                          QByteArrayView(TCPOutputOption::kRecvLineEnd), &m_recvText);
            textAdded = true;
        }
        if (toFile)
            storeRecvChunk(chunk, received, hexFile ? &layout : nullptr, position);
    }
    if (toFile && m_recvSize != sizeBefore)
        m_lastRecvWriteMsec = nowMsec();
    if (textAdded)
        emit recvStringAdded();
    emitRecvProgress(draining);
}

qsizetype TCPThread::displayRoom(const HexLayout &layout, int displayMode, qsizetype want) const
{
    const qsizetype room = std::max<qsizetype>(0, kRecvTextLimitBytes - m_recvText.size());
    qsizetype fits = displayMode == TCPOutputOption::kDisplayHex
                         ? layout.bytesFitting(m_recvSize, want, room,
                                               qsizetype(sizeof(TCPOutputOption::kRecvLineEnd) - 1))
                         : std::min(want, room);
    // A format whose text for one byte is longer than the whole buffer still shows something.
    if (fits == 0 && m_recvText.isEmpty())
        fits = 1;
    return fits;
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
void TCPThread::storeRecvChunk(const char *chunk, qsizetype size, const HexLayout *hexLayout,
                               qint64 position)
{
    if (hexLayout)
        hexLayout->render(chunk, size, &position, QByteArrayView(TCPOutputOption::kRecvLineEnd),
                          &m_recvBlock);
    if (m_recvBlock.size() >= kRecvFileBlockBytes)
        writeRecvBlock();
}

void TCPThread::writeRecvBlock()
{
    if (m_recvBlock.isEmpty() || !m_recvFile.isOpen())
        return;
    const qint64 written = m_recvFile.write(m_recvBlock);
    if (written != m_recvBlock.size())
        LOG_ERROR(QStringLiteral("recv file write failed: %1").arg(m_recvFile.errorString()));
    m_recvBlock.resize(0);
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
    QByteArray result;
    if (maxSize < 0 || maxSize >= m_recvText.size()) {
        result.swap(m_recvText);
    } else {
        result = m_recvText.left(maxSize);
        m_recvText.remove(0, maxSize);
    }
    if (!result.isEmpty() && m_recvStatus == TS_RUN)
        reserveRecvData();
    if (maxSize >= 0 && result.size() > maxSize)
        LOG_WARN(QStringLiteral("Invalid buf size: maxSize[%1] result[%2]")
                     .arg(maxSize)
                     .arg(result.size()));
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
    writeRecvBlock();
    if (m_lastRecvWriteMsec < 1 || nowMsec() - m_lastRecvWriteMsec <= kFlushIntervalMs)
        return;
    if (m_recvFile.isOpen()) {
        LOG_INFO_MSG("flush recv file");
        m_recvFile.flush();
    }
    m_lastRecvWriteMsec = 0;
}
