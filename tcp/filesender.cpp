#include "tcp/filesender.h"

#include "tcp/tcpoutputoption.h"
#include "tcp/transferrun.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

FileSender::FileSender(QObject *parent) : QObject(parent), m_stallTimer(new QTimer(this))
{
    m_stallTimer->setSingleShot(true);
    connect(m_stallTimer, &QTimer::timeout, this, [this] {
        if (m_socket && m_socket->bytesToWrite() > 0)
            emit stalled();
    });
}

bool FileSender::open(const TransferRun &run)
{
    m_file.close();
    m_file.setFileName(run.fileName);
    m_hexFile = run.hexFile;
    m_showData = run.displayMode != TCPOutputOption::kDisplayOff;
    m_layout = run.layout;
    m_decoder.reset();
    m_shownText.resetState();
    m_sent = m_queuedFileBytes = m_queuedPayload = m_writtenPayload = m_displayed = 0;
    m_batchEnds.clear();
    m_atEnd = false;
    if (run.fileName.isEmpty() || !m_file.open(QIODevice::ReadOnly))
        return false;
    m_fileSize = m_file.size();
    m_chunk.resize(kChunkBytes);
    return true;
}

QString FileSender::openFailureText() const
{
    const QString reason =
        m_file.fileName().isEmpty()
            ? tr("no send file is chosen")
            : QStringLiteral("%1 (%2)").arg(m_file.fileName(), m_file.errorString());
    return QStringLiteral("%1: %2").arg(tr("Send file cannot open"), reason);
}

void FileSender::start(QTcpSocket *socket, int writeTimeoutMs)
{
    m_socket = socket;
    m_throttle.restart();
    m_stallTimer->setInterval(writeTimeoutMs);
    connect(socket, &QTcpSocket::bytesWritten, this, &FileSender::onBytesWritten,
            Qt::UniqueConnection);
    // From the event loop, so that the caller finishes starting the run first.
    QMetaObject::invokeMethod(
        this, [this] { onBytesWritten(0); }, Qt::QueuedConnection);
}

void FileSender::stop()
{
    m_stallTimer->stop();
    if (m_socket)
        disconnect(m_socket, nullptr, this, nullptr);
    m_socket = nullptr;
    m_file.close();
}

void FileSender::onBytesWritten(qint64 bytes)
{
    if (!m_socket)
        return;
    m_writtenPayload += bytes;
    const qint64 sentBefore = m_sent;
    while (!m_batchEnds.isEmpty() && m_batchEnds.constFirst().payload <= m_writtenPayload)
        m_sent = m_batchEnds.takeFirst().fileBytes;
    if (m_sent != sentBefore)
        emitProgress(false);
    if (!m_socket)
        return;
    if (m_atEnd && m_batchEnds.isEmpty()) {
        stop();
        emit finished();
        return;
    }
    if (!m_atEnd && m_socket->bytesToWrite() < kBatchBytes)
        queueBatch();
    if (m_socket && m_socket->bytesToWrite() > 0)
        m_stallTimer->start(); // the system took something, or there is something new
}

// Reads and queues one batch. A batch of hex text may turn into no bytes at all: it is taken at
// once.
void FileSender::queueBatch()
{
    const qint64 payloadBefore = m_queuedPayload;
    while (m_queuedPayload - payloadBefore < kBatchBytes) {
        const qint64 fileBytes = m_file.read(m_chunk.data(), kChunkBytes);
        if (fileBytes <= 0) {
            m_atEnd = true;
            break;
        }
        QByteArrayView payload(m_chunk.constData(), fileBytes);
        if (m_hexFile) {
            m_payload.resize(0);
            m_decoder.decode(m_chunk.constData(), fileBytes, &m_payload);
            payload = m_payload;
        }
        if (m_showData && m_displayed < kDisplayLimitBytes)
            show(fileBytes, payload);
        if (!payload.isEmpty() && m_socket->write(payload.data(), payload.size()) < 0)
            return; // the connection is gone; its error has been reported
        m_queuedPayload += payload.size();
        m_queuedFileBytes += fileBytes;
    }
    m_batchEnds.append({m_queuedPayload, m_queuedFileBytes});
    if (m_queuedPayload == m_writtenPayload) // nothing is waiting for the system
        QMetaObject::invokeMethod(
            this, [this] { onBytesWritten(0); }, Qt::QueuedConnection);
}

void FileSender::show(qint64 fileBytes, QByteArrayView payload)
{
    const qint64 budget = kDisplayLimitBytes - m_displayed;
    QByteArray text;
    qint64 covered = 0;
    if (m_hexFile) {
        covered = std::min(fileBytes, budget);
        text = QByteArray(m_chunk.constData(), covered);
    } else {
        covered = std::min<qint64>(payload.size(), budget);
        qint64 position = m_displayed;
        m_layout.render(payload.data(), covered, &position,
                        QByteArrayView(TCPOutputOption::kSendLineEnd), &text);
    }
    const qint64 from = m_queuedFileBytes;
    m_displayed += covered;
    if (!text.isEmpty())
        emit shown(m_shownText.decode(text), from, covered);
}

void FileSender::sendLastProgress()
{
    emitProgress(true);
}

void FileSender::emitProgress(bool force)
{
    if (m_throttle.take(m_sent, force))
        emit progressed(m_sent, m_fileSize, m_throttle.elapsedMs());
}
