// The worker's one connection to the device's data port, shared by both directions. It owns the
// socket from the first successful connect until close(), lives on the worker thread and is used
// only there; whether a socket exists can be asked from any thread.
#pragma once

#include <QAbstractSocket>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>

#include <atomic>

class QTcpSocket;

class TcpConnection : public QObject
{
    Q_OBJECT

public:
    // Bytes the socket may hold unread; beyond it the device is held back by TCP flow control.
    static constexpr qint64 kReadBufferBytes = 1024 * 1024;

    explicit TcpConnection(QObject *parent = nullptr);
    ~TcpConnection() override;
    TcpConnection(const TcpConnection &) = delete;
    TcpConnection &operator=(const TcpConnection &) = delete;

    // Connects unless a socket exists already, waiting up to `timeoutMs`. On failure the socket
    // stays until close() and errorString() names the address and the reason.
    [[nodiscard]] bool open(const QString &host, quint16 port, int timeoutMs);
    // A socket that lost its connection is of no use to a new run: it is dropped at once.
    void dropIfDead();
    // Ends the connection: waits up to `timeoutMs` for the device to take the last bytes, or
    // gives up the unsent ones at once when `dropUnsent`. False when there was no socket.
    bool close(bool dropUnsent, int timeoutMs);

    // Asks for closeDue() after `msec` ms (at once when negative).
    void reserveClose(int msec);
    // Sends what is queued and keeps the connection for `msec` ms, so that the device can take the
    // last bytes, then asks for closeDue(). False when there is no socket.
    bool holdOpen(int msec);
    // While a hold lasts, asks again for closeDue() at its end; true then.
    [[nodiscard]] bool isHeldOpen();

    [[nodiscard]] bool exists() const { return m_exists.load(); }
    [[nodiscard]] QTcpSocket *socket() const { return m_socket; }
    [[nodiscard]] QString errorString() const { return m_error; }

signals:
    void readyRead();
    void closeDue();
    // The socket is gone (closed, aborted or dropped); exists() is false from here on.
    void released();
    // The connection broke (a wait that timed out is reported by whoever waited).
    void failed(QAbstractSocket::SocketError error, const QString &reason);

private:
    void onError(QAbstractSocket::SocketError error);
    void release();

    QTcpSocket *m_socket = nullptr;
    std::atomic<bool> m_exists{false};
    QString m_error;
    QDeadlineTimer m_holdUntil;
};
