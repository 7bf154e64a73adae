// The transfer worker: moves bulk data over the device's TCP data port on its own thread. It sends
// a file to the device and records what the device sends into a file and into a display tail that
// the receive dialog drains. Both directions share one connection and each has its own status
// machine. Each run starts from a TransferRun value; the work is done by parts (TcpConnection,
// FileSender, RecvStream); the worker keeps the statuses and the order of the steps. The GUI talks
// to it through queued signals and a few guarded calls; the mutex guards the statuses only and is
// never held across a wait for the network.
#pragma once

#include "tcp/recvstream.h"
#include "tcp/tcpconnection.h"
#include "tcp/threadstatus.h"
#include "tcp/transferrun.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QObject>
#include <QRecursiveMutex>

#include <atomic>

class FileSender;
class QThread;

class TCPThread : public QObject
{
    Q_OBJECT

public:
    // Time-outs and delays
    static constexpr int kConnectTimeoutMs = 10000;
    static constexpr int kWriteTimeoutMs = 10000;
    static constexpr int kDisconnectTimeoutMs = 10000;
    static constexpr int kCloseReserveMs = 1000;

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
    [[nodiscard]] bool hasSocket() const { return m_connection->exists(); }

    // How received bytes are shown from now on (TCPOutputOption::kDisplay*), from any thread.
    void setDisplayMode(int mode) { m_stream->setDisplayMode(mode); }
    // Hands the receive dialog at most `maxSize` bytes of display text (-1: all of it), in the
    // current display mode and the run's layout, led by a mark when bytes were skipped since the
    // last call.
    [[nodiscard]] QByteArray takeRecvData(qint64 maxSize) { return m_stream->take(maxSize); }

    // Runs and socket close, callable from any thread; the work is done on the worker thread.
    void beginSendThread(const TransferRun &run);
    void beginRecvThread(const TransferRun &run);
    void stopSending();
    void stopReceiving();
    void reserveCloseSocket(int msec);
    void closeSocket();

signals:
    void sendStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void recvStatusChanged(THREAD_STATUS oldStatus, THREAD_STATUS status);
    void writeFinished();
    void sendStringAdded(QString, bool formatted, qint64 bytesFrom, qint64 bytes);
    void recvStringAdded();
    void sendProgress(qint64 sentSize, qint64 fileSize, qint64 elpasedMsec);
    void recvProgress(qint64 recvSize);
    void errorOccured(TCPTHREAD_ERROR error);
    // The socket is gone: hasSocket() is false from here on (for whoever waits for the close).
    void socketClosed();
    // What the message area was told about a run, for the dialog of that direction to show.
    void recvReported(const QString &text, bool error);
    void sendReported(const QString &text, bool error);

private:
    enum class Direction { Send, Recv };

    [[nodiscard]] bool onWorkerThread() const;
    template <typename Call> bool postToWorker(Call call);
    void fail(Direction direction, const QString &text, TCPTHREAD_ERROR error);
    void setSendStatus(THREAD_STATUS status);
    void setRecvStatus(THREAD_STATUS status);

    // Connection
    [[nodiscard]] bool connectToDevice(const TransferRun &run);
    void onSocketError(QAbstractSocket::SocketError error, const QString &reason);

    // Sending
    [[nodiscard]] bool prepareSendRun(const TransferRun &run);
    void finishSendFile();
    void closeAfterSending();

    // Receiving
    [[nodiscard]] bool prepareRecvRun(const TransferRun &run);
    [[nodiscard]] bool openRecvFile();
    void readAvailable();
    void stopOnRecvFileFailure();

    mutable QRecursiveMutex m_mutex; // guards the statuses and the stop flag
    THREAD_STATUS m_recvStatus = TS_STOP;
    THREAD_STATUS m_sendStatus = TS_STOP;
    bool m_sendStopped = false; // the user stopped the send: unsent bytes are dropped at close
    std::atomic<int> m_connectTimeoutMs{kConnectTimeoutMs};
    std::atomic<int> m_writeTimeoutMs{kWriteTimeoutMs};
    std::atomic<int> m_disconnectTimeoutMs{kDisconnectTimeoutMs};
    std::atomic<int> m_closeReserveMs{kCloseReserveMs};

    TcpConnection *m_connection = nullptr;
    FileSender *m_sender = nullptr;
    RecvStream *m_stream = nullptr;
};
