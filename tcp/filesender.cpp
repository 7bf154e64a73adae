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
    m_shownText.restart();
    m_sent = m_queuedFileBytes = m_queuedPayload = m_writtenPayload = m_displayed = 0;
    m_batchEnds.clear();
    m_atEnd = false;
    // Unbuffered: a batch is one read of the file, not 16 KiB pieces.
    if (run.fileName.isEmpty() || !m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return false;
    m_fileSize = m_file.size();
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

// Reads and queues one batch: one read of the file and one block for the socket, so that the
// system gets large writes. The display and the hex decoding take the block 1024 bytes at a time,
// as they would take the file. A batch of hex text may turn into no bytes at all: it is taken at
// once.
void FileSender::queueBatch()
{
    QByteArray block(kBatchBytes, Qt::Uninitialized);
    const qint64 fileBytes = m_file.read(block.data(), kBatchBytes);
    if (fileBytes <= 0) {
        m_atEnd = true;
    } else {
        block.truncate(fileBytes);
        if (m_showData)
            showChunks(block);
        const QByteArray payload = m_hexFile ? decoded(block) : block;
        if (!payload.isEmpty() && m_socket->write(payload) < 0)
            return; // the connection is gone; its error has been reported
        m_queuedPayload += payload.size();
        m_queuedFileBytes += fileBytes;
    }
    m_batchEnds.append({m_queuedPayload, m_queuedFileBytes});
    if (m_queuedPayload == m_writtenPayload) // nothing is waiting for the system
        QMetaObject::invokeMethod(
            this, [this] { onBytesWritten(0); }, Qt::QueuedConnection);
}

QByteArray FileSender::decoded(QByteArrayView hexText)
{
    QByteArray bytes;
    bytes.reserve(hexText.size() / 2 + 1);
    m_decoder.decode(hexText.data(), hexText.size(), &bytes);
    return bytes;
}

void FileSender::showChunks(QByteArrayView block)
{
    for (qsizetype at = 0; at < block.size() && m_displayed < kDisplayLimitBytes; at += kChunkBytes)
        show(block.sliced(at, std::min<qsizetype>(kChunkBytes, block.size() - at)),
             m_queuedFileBytes + at);
}

// A chunk of hex text is shown as it stands; bytes are laid out by the output format.
void FileSender::show(QByteArrayView chunk, qint64 from)
{
    const qint64 covered = std::min<qint64>(chunk.size(), kDisplayLimitBytes - m_displayed);
    QByteArray text;
    if (m_hexFile) {
        text = chunk.first(covered).toByteArray();
    } else {
        qint64 position = m_displayed;
        m_layout.render(chunk.data(), covered, &position,
                        QByteArrayView(TCPOutputOption::kSendLineEnd), &text);
    }
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
