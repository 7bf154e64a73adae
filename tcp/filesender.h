// Sends the run's file over a connected socket, driven by the socket's bytesWritten(): the file is
// read 1024 bytes at a time (hex text turned back into bytes) and queued a batch at a time; the
// next batch follows once the system has taken the last one, and a batch counts as sent then. A
// batch the system takes nothing of for the write time-out stalls the run.
#pragma once

#include "tcp/hexlayout.h"
#include "tcp/hextextdecoder.h"

#include <QByteArray>
#include <QFile>
#include <QObject>

class QTcpSocket;
class QTimer;
struct TransferRun;

class FileSender : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 kChunkBytes = 1024;
    static constexpr qint64 kBatchBytes = 64 * 1024;
    // File bytes shown as sent text at most, when Show Data is on.
    static constexpr qint64 kDisplayLimitBytes = 65536;

    explicit FileSender(QObject *parent = nullptr);

    // Opens the run's file; false with the reason in errorString().
    [[nodiscard]] bool open(const TransferRun &run);
    void start(QTcpSocket *socket, int writeTimeoutMs);
    // Queues nothing more and closes the file.
    void stop();

    [[nodiscard]] qint64 sentBytes() const { return m_sent; }
    [[nodiscard]] qint64 fileSize() const { return m_fileSize; }
    [[nodiscard]] QString errorString() const { return m_file.errorString(); }

signals:
    void shown(const QString &text, qint64 bytesFrom, qint64 bytes);
    void progressed();
    void finished();
    void stalled();

private:
    void onBytesWritten();
    void queueBatch();
    void show(qint64 fileBytes, QByteArrayView payload);

    QFile m_file;
    bool m_hexFile = false;
    bool m_showData = false;
    HexLayout m_layout;
    HexTextDecoder m_decoder;
    QByteArray m_chunk;
    QByteArray m_payload;
    QTcpSocket *m_socket = nullptr;
    QTimer *m_stallTimer = nullptr;
    qint64 m_fileSize = 0;
    qint64 m_sent = 0;
    qint64 m_batchFileBytes = 0; // file bytes queued and not yet taken by the system
    qint64 m_displayed = 0;
    bool m_atEnd = false;
};
