// One remote-control connection: assembles command lines from the byte stream, echoes what it
// receives for a person at a terminal, sends replies and the prompt, and ends the session on
// "quit". Nothing here waits: replies are queued on the socket, and a client that stops reading
// them is dropped after a while. Input is taken one line at a time: while a line is being served,
// or while too much output is pending, the socket is not read and TCP holds the sender back.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QPointer>
#include <QString>

class QTcpSocket;
class QTimer;

class RCClient : public QObject
{
    Q_OBJECT

public:
    // Pending output is given this long to move before the client is dropped.
    static constexpr int kSendTimeoutMs = 10000;
    // A line that grows past this without a terminator is dropped and answered as unknown.
    static constexpr qsizetype kMaxLineBytes = 64 * 1024;
    // Input held at most: the socket's read buffer, and the part of it taken but not yet used.
    static constexpr qsizetype kReadBufferBytes = 64 * 1024;
    static constexpr qsizetype kReadChunkBytes = 16 * 1024;
    // Above this much unsent output, no more input is taken.
    static constexpr qsizetype kMaxPendingOutput = 64 * 1024;
    // The echo of a finished line is held this long at most, so that it usually leaves together
    // with the reply: one segment, and one wake-up of the peer instead of two.
    static constexpr int kEchoHoldMs = 20;

    // The client takes the socket over.
    RCClient(quint64 id, QTcpSocket *socket, QObject *parent = nullptr);
    ~RCClient() override;

    [[nodiscard]] quint64 id() const { return m_id; }
    [[nodiscard]] bool isDisposed() const { return m_disposed; }
    // "127.0.0.1:50312"
    [[nodiscard]] QString peer() const { return m_peer; }
    void setSendTimeoutMs(int timeoutMs) { m_sendTimeoutMs = timeoutMs; }

    // Replies
    void sendData(const QByteArray &bytes);
    void sendPrompt();
    // Called once a command line has been served: answers "quit" and ends the session, or takes
    // the next line. Returns true when the session ended.
    bool finishCommand(const QString &command);

    static QByteArray prompt() { return QByteArrayLiteral("\r\nMavixUtil>"); }

signals:
    void disconnected();
    void lineReceived(QString str);

public slots:
    void getPacket();
    void dispose();

private:
    enum class Telnet { Data, Command, Option, Sub, SubCommand };

    // Consumes one byte; true when it ended a line.
    void takeRun(QByteArray &echo);
    bool take(char byte, QByteArray &echo);
    [[nodiscard]] bool endLine(const QByteArray &terminator, QByteArray &echo);
    [[nodiscard]] bool mayTakeInput() const;
    void write(const QByteArray &bytes);
    void flushEcho();
    void outputMoved();
    void resumeLater();

    quint64 m_id = 0;
    QString m_peer;
    QPointer<QTcpSocket> m_socket;
    QByteArray m_input; // taken from the socket, not yet used
    qsizetype m_inputAt = 0;
    QByteArray m_line;
    QByteArray m_heldEcho; // echo not yet written; it goes out before anything else
    QTimer *m_echoTimer = nullptr;
    QTimer *m_sendTimer = nullptr;
    int m_sendTimeoutMs = kSendTimeoutMs;
    Telnet m_telnet = Telnet::Data;
    bool m_afterCr = false;    // an LF or NUL right after a line-ending CR belongs to it
    bool m_discarding = false; // the rest of an overlong line is being skipped
    bool m_serving = false;    // a line was handed out and is not finished yet
    bool m_disposed = false;
};
