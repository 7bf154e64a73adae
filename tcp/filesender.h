// Sends the run's file over a connected socket, driven by the socket's bytesWritten(): the file is
// read and queued a batch at a time (hex text turned back into bytes), the next batch while the
// system still has the last one to take, so that it never runs dry. A batch's
// file bytes count as sent once the system has taken all of it. When the system takes nothing for
// the write time-out the run stalls.
#pragma once

#include "app/utf8piecedecoder.h"
#include "tcp/hexlayout.h"
#include "tcp/hextextdecoder.h"
#include "tcp/progressthrottle.h"

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QObject>

class QTcpSocket;
class QTimer;
struct TransferRun;

class FileSender : public QObject
{
    Q_OBJECT

public:
    static constexpr qint64 kChunkBytes = 1024;
    // The socket writes one queued block each time the system can take more; a block as large as
    // the system's largest send buffer (4 MiB on Linux) lets each of those writes fill it.
    static constexpr qint64 kBatchBytes = 4 * 1024 * 1024;
    // File bytes shown as sent text at most, when Show Data is on.
    static constexpr qint64 kDisplayLimitBytes = 65536;
    // Progress figures are spaced so that a fast transfer does not flood the GUI's event queue.
    static constexpr int kProgressIntervalMs = 50;

    explicit FileSender(QObject *parent = nullptr);

    // Opens the run's file; false with the reason in openFailureText().
    [[nodiscard]] bool open(const TransferRun &run);
    [[nodiscard]] QString openFailureText() const;
    void start(QTcpSocket *socket, int writeTimeoutMs);
    // Queues nothing more and closes the file.
    void stop();
    // Sends the figure the throttle still holds (the last one of a run always shows).
    void sendLastProgress();

    [[nodiscard]] qint64 sentBytes() const { return m_sent; }
    [[nodiscard]] qint64 fileSize() const { return m_fileSize; }

signals:
    void shown(const QString &text, qint64 bytesFrom, qint64 bytes);
    void progressed(qint64 sentBytes, qint64 fileSize, qint64 elapsedMs);
    void finished();
    void stalled();

private:
    void onBytesWritten(qint64 bytes);
    void queueBatch();
    [[nodiscard]] QByteArray decoded(QByteArrayView hexText);
    void showChunks(QByteArrayView block);
    void show(QByteArrayView chunk, qint64 from);
    void emitProgress(bool force);

    QFile m_file;
    bool m_hexFile = false;
    bool m_showData = false;
    HexLayout m_layout;
    HexTextDecoder m_decoder;
    // A character of a hex text file may be split between two chunks: it is shown once whole.
    Utf8PieceDecoder m_shownText;
    QTcpSocket *m_socket = nullptr;
    QTimer *m_stallTimer = nullptr;
    qint64 m_fileSize = 0;
    qint64 m_sent = 0;
    qint64 m_queuedFileBytes = 0; // file bytes read and queued so far
    qint64 m_queuedPayload = 0;   // bytes queued so far
    qint64 m_writtenPayload = 0;  // bytes the system has taken so far
    struct BatchEnd
    {
        qint64 payload;
        qint64 fileBytes;
    };
    QList<BatchEnd> m_batchEnds; // batches not yet taken in full
    qint64 m_displayed = 0;
    bool m_atEnd = false;
    ProgressThrottle m_throttle{kProgressIntervalMs};
};
