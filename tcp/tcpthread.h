// The transfer worker: moves bulk data over the device's TCP data port on its own thread. It sends
// a file to the device and records what the device sends into a file and into a display buffer
// that the receive dialog drains. Both directions share one connection and each has its own
// status machine. The GUI talks to it through queued signals and a few guarded calls; the mutex
// is never held across a blocking socket wait, so those calls never wait for the network.
// Recording never waits for the display: the display keeps only the newest bytes and counts the
// ones it skipped.
#pragma once

#include "tcp/hexlayout.h"
#include "tcp/hextextdecoder.h"
#include "tcp/threadstatus.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QElapsedTimer>
#include <QFile>
#include <QObject>
#include <QRecursiveMutex>

#include <atomic>

class QTcpSocket;
class QThread;
class QTimer;
class TCPOutputOption;

class TCPThread : public QObject
{
    Q_OBJECT

public:
    // Transfer
    static constexpr qint64 kChunkBytes = 1024;
    // Queued chunks are handed to the system in batches of this size.
    static constexpr qint64 kSendBatchBytes = 64 * 1024;
    static constexpr qint64 kSendDisplayLimitBytes = 65536;
    // The newest received bytes kept for the display; older ones are skipped and counted.
    static constexpr qsizetype kRecvTextLimitBytes = 4095;
    // Time-outs and delays
    static constexpr int kConnectTimeoutMs = 10000;
    static constexpr int kWriteTimeoutMs = 10000;
    static constexpr int kDisconnectTimeoutMs = 10000;
    static constexpr int kCloseReserveMs = 1000;
    static constexpr int kFlushIntervalMs = 1000;
    // Progress signals are spaced so that a fast transfer does not flood the GUI's event queue;
    // the last figure of a run is always sent.
    static constexpr int kProgressIntervalMs = 50;
    // Waits for the device are cut into slices of this length so that a stop is seen at once.
    static constexpr int kStopPollMs = 20;
    // Bytes the socket may hold unread; beyond it the device is held back by TCP flow control.
    static constexpr qint64 kSocketReadBufferBytes = 4 * 1024 * 1024;
    // Received bytes are gathered and written to the receive file in blocks of this size.
    static constexpr qsizetype kRecvFileBlockBytes = 256 * 1024;

    explicit TCPThread(QThread *thread, QObject *parent = nullptr);
    ~TCPThread() override;
    TCPThread(const TCPThread &) = delete;
    TCPThread &operator=(const TCPThread &) = delete;

    // Replaces the connect, write and close time-outs (the constants above by default).
    void setTimeouts(int connectMs, int writeMs, int disconnectMs);
    // Replaces how long a finished send waits before it closes the socket.
    void setCloseReserveMs(int ms) { m_closeReserveMs = ms; }

    // The registered worker, or null when none exists.
    [[nodiscard]] static TCPThread *instance();

    // Status, callable from any thread
    [[nodiscard]] THREAD_STATUS recvStatus() const;
    [[nodiscard]] THREAD_STATUS sendStatus() const;
    [[nodiscard]] bool hasSocket() const;

    // Hands the receive dialog at most `maxSize` bytes of display text (-1: all of it), rendered
    // in the current display mode and led by a mark when bytes were skipped since the last call.
    [[nodiscard]] QByteArray takeRecvData(qint64 maxSize);

    // Socket close, callable from any thread; the work is done on the worker thread.
    void reserveCloseSocket(int msec);
    Q_INVOKABLE void closeSocket();

signals:
    void sendStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void recvStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void writeFinished();
    void sendStringAdded(QString, bool formatted, qint64 bytesFrom, qint64 bytes);
    void recvStringAdded();
    void sendProgress(qint64 sentSize, qint64 fileSize, qint64 elpasedMsec);
    void recvProgress(qint64 recvSize);
    void errorOccured(TCPTHREAD_ERROR error);
    // What the message area was told about a run, for the dialog of that direction to show.
    void recvReported(const QString &text, bool error);
    void sendReported(const QString &text, bool error);

public slots:
    void onBytesWritten(qint64);
    void reserveRecvData();
    void onSocketError(QAbstractSocket::SocketError error);
    void beginSendThread();
    void stopSending();
    void beginRecvThread();
    void stopReceiving();
    void recvData();
    void onReserveCloseSocketTimeout();
    void onRecvFileFlushTimeout();

private:
    [[nodiscard]] bool onWorkerThread() const;
    void failSend(const QString &text, TCPTHREAD_ERROR error);
    void failRecv(const QString &text, TCPTHREAD_ERROR error);
    [[nodiscard]] QString savedText() const;

    // Status machines
    void setSendStatus(THREAD_STATUS status);
    void setRecvStatus(THREAD_STATUS status);

    // Connection
    [[nodiscard]] bool connectToDevice();
    void discardDeadSocket();

    // Sending
    [[nodiscard]] bool prepareSendRun();
    void runSendLoop();
    void giveEventLoopATurn();
    [[nodiscard]] QByteArrayView toPayload(qint64 fileBytes);
    void showSentChunk(qint64 fileBytes, QByteArrayView payload, qint64 bytesFrom);
    [[nodiscard]] bool queueToSocket(QByteArrayView payload);
    bool handOverBatch(qint64 *batchFileBytes);
    void finishSendFile();
    void closeAfterSending();
    void emitSendProgress(bool force);

    // Receiving
    [[nodiscard]] bool prepareRecvRun();
    [[nodiscard]] bool openRecvFile();
    void readAvailable(const HexLayout &layout, bool draining);
    void keepForDisplay(const char *chunk, qsizetype size, qint64 position);
    [[nodiscard]] qint64 readChunk(qsizetype want, bool intoBlock, const char **chunk);
    [[nodiscard]] bool storeRecvChunk(const char *chunk, qsizetype size, const HexLayout *hexLayout,
                                      qint64 position);
    [[nodiscard]] bool writeRecvBlock();
    void stopOnRecvFileFailure();
    void emitRecvProgress(bool force);

    mutable QRecursiveMutex m_mutex;
    qint64 m_sentSize = 0;
    qint64 m_displayedSize = 0;
    QElapsedTimer m_elapsedTimer;
    bool m_recvDataReserved = false;
    qint64 m_recvSize = 0;
    QByteArray m_recvText;      // the newest received bytes, not yet taken for display
    qint64 m_recvTextStart = 0; // stream position of the first of them
    qint64 m_skippedBytes = 0;  // bytes never shown since the last take
    bool m_recvTextSignalled = false;
    QTcpSocket *m_socket = nullptr;
    THREAD_STATUS m_recvStatus = TS_STOP;
    THREAD_STATUS m_sendStatus = TS_STOP;
    qint64 m_closeDeadline = 0;
    QTimer *m_flushTimer = nullptr;
    qint64 m_lastRecvWriteMsec = 0;
    std::atomic<int> m_connectTimeoutMs{kConnectTimeoutMs};
    std::atomic<int> m_writeTimeoutMs{kWriteTimeoutMs};
    std::atomic<int> m_disconnectTimeoutMs{kDisconnectTimeoutMs};
    std::atomic<int> m_closeReserveMs{kCloseReserveMs};
    bool m_sendStopped = false; // the user stopped the send: unsent bytes are dropped at close

    // Send run
    QFile m_sendFile;
    qint64 m_sendFileSize = 0;
    bool m_sendHexFile = false;
    HexLayout m_sendLayout;
    HexTextDecoder m_hexDecoder;
    QByteArray m_fileChunk;   // one chunk read from the send file
    QByteArray m_hexPayload;  // the chunk's bytes when the file is hex text
    qint64 m_queuedBytes = 0; // bytes queued in the socket since the last hand-over
    qint64 m_lastSendProgressMs = -1;
    qint64 m_reportedSentSize = -1;

    // Receive run
    QFile m_recvFile;
    QByteArray m_recvChunk; // one chunk read from the socket
    QByteArray m_recvBlock; // bytes waiting to be written to the receive file
    qint64 m_savedBytes = 0;
    QString m_recvFileError; // the system's reason for the first failed write
    QElapsedTimer m_recvProgressTimer;
    QTimer *m_recvProgressDue = nullptr; // sends a figure held back by the spacing
    qint64 m_reportedRecvSize = -1;
};
