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
    m_sent = m_batchFileBytes = m_displayed = 0;
    m_atEnd = false;
    if (!m_file.open(QIODevice::ReadOnly))
        return false;
    m_fileSize = m_file.size();
    m_chunk.resize(kChunkBytes);
    return true;
}

void FileSender::start(QTcpSocket *socket, int writeTimeoutMs)
{
    m_socket = socket;
    m_stallTimer->setInterval(writeTimeoutMs);
    connect(socket, &QTcpSocket::bytesWritten, this, &FileSender::onBytesWritten,
            Qt::UniqueConnection);
    // From the event loop, so that the caller finishes starting the run first.
    QMetaObject::invokeMethod(this, &FileSender::queueBatch, Qt::QueuedConnection);
}

void FileSender::stop()
{
    m_stallTimer->stop();
    if (m_socket)
        disconnect(m_socket, nullptr, this, nullptr);
    m_socket = nullptr;
    m_file.close();
}

void FileSender::onBytesWritten()
{
    if (!m_socket)
        return;
    m_stallTimer->start(); // the system took something
    if (m_socket->bytesToWrite() > 0)
        return;
    queueBatch();
}

// Counts the batch the system has taken, then queues the next one; a batch of hex text may turn
// into no bytes at all, so the loop goes on until something is queued or the file ends.
void FileSender::queueBatch()
{
    while (m_socket) {
        m_sent += m_batchFileBytes;
        m_batchFileBytes = 0;
        if (m_atEnd) {
            stop();
            emit finished();
            return;
        }
        qint64 queued = 0;
        while (queued < kBatchBytes) {
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
            queued += payload.size();
            m_batchFileBytes += fileBytes;
        }
        emit progressed();
        if (queued > 0 && m_socket) {
            m_stallTimer->start();
            return;
        }
    }
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
    const qint64 from = m_sent + m_batchFileBytes;
    m_displayed += covered;
    if (!text.isEmpty())
        emit shown(QString::fromUtf8(text), from, covered);
}
