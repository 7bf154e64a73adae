// One remote-control connection: assembles command lines from the byte stream, echoes what it
// receives for a person at a terminal, sends replies and the prompt, and ends the session on
// "quit".
#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

class AccessGate;
class QTcpSocket;
class QTimer;

class RCClient : public QObject
{
    Q_OBJECT

public:
    static constexpr int kSendTimeoutMs = 10000;
    // A line that grows past this without a terminator is dropped and answered as unknown.
    static constexpr qsizetype kMaxLineBytes = 64 * 1024;
    // The echo of a finished line is held this long at most, so that it usually leaves together
    // with the reply: one segment, and one wake-up of the peer instead of two.
    static constexpr int kEchoHoldMs = 20;

    // The client takes the socket over. Waits for written bytes run through `gate` when given.
    RCClient(quint64 id, QTcpSocket *socket, AccessGate *gate, QObject *parent = nullptr);
    ~RCClient() override;

    [[nodiscard]] quint64 id() const { return m_id; }
    [[nodiscard]] bool isDisposed() const { return m_disposed; }

    // Replies
    void sendData(const QByteArray &bytes);
    void sendPrompt();
    // Called once a command line has been served: answers "quit" and ends the session. Returns
    // true when the session ended.
    bool finishCommand(const QString &command);

    static QByteArray prompt() { return QByteArrayLiteral("\r\nMavixUtil>"); }

signals:
    void disconnected();
    void lineReceived(QString str);
    // Something happened that may end a wait for written bytes.
    void sendSettled();

public slots:
    void getPacket();
    void dispose();

private:
    [[nodiscard]] bool waitWritten();
    void sendEcho(const QByteArray &echo, bool endsLine);
    void flushEcho();
    void deleteWhenIdle();

    quint64 m_id = 0;
    QPointer<QTcpSocket> m_socket;
    QPointer<AccessGate> m_gate;
    QByteArray m_line;
    QByteArray m_heldEcho; // echo not yet written; it goes out before anything else
    QTimer *m_echoTimer = nullptr;
    bool m_discarding = false; // the rest of an overlong line is being skipped
    bool m_disposed = false;
    // Calls of ours still on the stack (a line being delivered, a wait for written bytes): the
    // client is deleted only once they have returned.
    int m_busy = 0;
    bool m_deletePending = false;
};
