// The transfer worker: moves bulk data over the device's TCP data port on its own thread. It sends
// a file to the device and records what the device sends into a file and into a display tail that
// the receive dialog drains. Both directions share one connection and each has its own status
// machine. Each run starts from a TransferRun value; the work is done by small parts (FileSender,
// RecvRecorder, DisplayTail, ProgressThrottle). The GUI talks to the worker through queued signals
// and a few guarded calls; the mutex is never held across a wait for the network.
#pragma once

#include "tcp/displaytail.h"
#include "tcp/progressthrottle.h"
#include "tcp/recvrecorder.h"
#include "tcp/threadstatus.h"
#include "tcp/transferrun.h"

#include <QAbstractSocket>
#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QRecursiveMutex>

#include <atomic>

class FileSender;
class QTcpSocket;
class QThread;
class QTimer;

class TCPThread : public QObject
{
    Q_OBJECT

public:
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
    // Bytes the socket may hold unread; beyond it the device is held back by TCP flow control.
    static constexpr qint64 kSocketReadBufferBytes = 4 * 1024 * 1024;
    // Largest single read from the socket.
    static constexpr qsizetype kReadBytes = 256 * 1024;

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

    // How received bytes are shown from now on (TCPOutputOption::kDisplay*), from any thread.
    void setDisplayMode(int mode) { m_displayMode = mode; }
    // Hands the receive dialog at most `maxSize` bytes of display text (-1: all of it), in the
    // current display mode and the run's layout, led by a mark when bytes were skipped since the
    // last call.
    [[nodiscard]] QByteArray takeRecvData(qint64 maxSize);

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
    // What the message area was told about a run, for the dialog of that direction to show.
    void recvReported(const QString &text, bool error);
    void sendReported(const QString &text, bool error);

private:
    [[nodiscard]] bool onWorkerThread() const;
    void failSend(const QString &text, TCPTHREAD_ERROR error);
    void failRecv(const QString &text, TCPTHREAD_ERROR error);
    [[nodiscard]] QString savedText() const;
    void setSendStatus(THREAD_STATUS status);
    void setRecvStatus(THREAD_STATUS status);

    // Connection
    [[nodiscard]] bool connectToDevice(const TransferRun &run);
    void discardDeadSocket();
    void onSocketError(QAbstractSocket::SocketError error);

    // Sending
    [[nodiscard]] bool prepareSendRun(const TransferRun &run);
    void finishSendFile();
    void closeAfterSending();
    void emitSendProgress(bool force);

    // Receiving
    [[nodiscard]] bool prepareRecvRun(const TransferRun &run);
    [[nodiscard]] bool openRecvFile();
    void readAvailable();
    [[nodiscard]] QString recordFailure() const;
    void stopOnRecvFileFailure();
    void emitRecvProgress(bool force);
    void onFlushTimeout();

    mutable QRecursiveMutex m_mutex;
    QTcpSocket *m_socket = nullptr;
    THREAD_STATUS m_recvStatus = TS_STOP;
    THREAD_STATUS m_sendStatus = TS_STOP;
    QDeadlineTimer m_closeDeadline;
    std::atomic<int> m_connectTimeoutMs{kConnectTimeoutMs};
    std::atomic<int> m_writeTimeoutMs{kWriteTimeoutMs};
    std::atomic<int> m_disconnectTimeoutMs{kDisconnectTimeoutMs};
    std::atomic<int> m_closeReserveMs{kCloseReserveMs};
    std::atomic<int> m_displayMode{0};
    bool m_sendStopped = false; // the user stopped the send: unsent bytes are dropped at close

    FileSender *m_sender = nullptr;
    ProgressThrottle m_sendThrottle{kProgressIntervalMs};

    TransferRun m_recvRun;
    RecvRecorder m_recorder;
    DisplayTail m_tail{kRecvTextLimitBytes};
    QByteArray m_readBuffer; // received bytes that are not recorded raw
    qint64 m_recvSize = 0;
    bool m_recvTextSignalled = false;
    ProgressThrottle m_recvThrottle{kProgressIntervalMs};
    QTimer *m_recvProgressDue = nullptr; // sends a figure held back by the throttle
    QTimer *m_flushTimer = nullptr;
};
