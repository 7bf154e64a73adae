// The remote-control server without any window: the listener, the sessions, one queue of command
// lines and the interpreter. Lines from every client wait in that queue and run one at a time, in
// arrival order, each holding the access gate, and never inside another device operation's wait.
// Each client has at most one line in the queue; the rest waits in its socket.
#pragma once

#include "server/allowrule.h"
#include "server/commandinterpreter.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

class RCClient;
class RCListener;
class WrenAgent;

class RCServer : public QObject
{
    Q_OBJECT

public:
    explicit RCServer(QObject *parent = nullptr);
    ~RCServer() override;

    // Set-up
    void setAgent(WrenAgent *agent);
    void setPort(int port) { m_port = port; }
    void setAllowRule(const AllowRule &rule);
    [[nodiscard]] const AllowRule &allowRule() const { return m_allow; }
    // The folder of the files that read and write name; the working directory when empty. False
    // (and the folder unchanged) when it does not exist.
    bool setFileFolder(const QString &path);
    [[nodiscard]] QString fileFolder() const { return m_interpreter.fileFolder().path(); }
    // Time-outs of each device access and of a client's pending output; tests shorten them.
    void setAccessTimeoutMs(int timeoutMs) { m_interpreter.setAccessTimeoutMs(timeoutMs); }
    void setSendTimeoutMs(int timeoutMs);

    bool start();
    // The port listened on (the system's choice when started with port 0), 0 when not listening.
    [[nodiscard]] quint16 serverPort() const;

    // Queues one line of `client`, terminator included.
    void enqueue(RCClient *client, const QString &text);

signals:
    // A line for the server's log view.
    void logLine(const QString &line);
    void transmissionSuccessed();
    void transmissionFailed();

private:
    struct PendingLine
    {
        QPointer<RCClient> client;
        QString text;
    };

    void addClient(RCClient *client);
    void scheduleNext();
    void runNext();
    void execute(const PendingLine &line);

    WrenAgent *m_agent = nullptr;
    RCListener *m_listener = nullptr;
    int m_port = 0;
    AllowRule m_allow;
    CommandInterpreter m_interpreter;
    QList<PendingLine> m_queue;
    int m_running = 0; // a command is being served
    bool m_scheduled = false;
};
