// The remote-control listening socket: accepts connections on the server-mode port and hands
// each one over as an RCClient, numbered 0, 1, 2... over the whole run. A peer outside the allow
// rule, or one over the cap on clients, gets one "NG:" line and is disconnected without a number.
#pragma once

#include "server/allowrule.h"

#include <QObject>

class QTcpServer;
class QTcpSocket;
class RCClient;

class RCListener : public QObject
{
    Q_OBJECT

public:
    enum class Refusal { NotAllowed, TooManyClients };
    Q_ENUM(Refusal)

    static constexpr int kMaxClients = 32;

    explicit RCListener(QObject *parent = nullptr);
    ~RCListener() override;

    // Listens on every local IPv4 and IPv6 address; a failure is logged once and returns false.
    bool start(int port);
    void stop();
    // The port actually listened on (the one chosen by the system for port 0), 0 when not.
    [[nodiscard]] quint16 serverPort() const;
    [[nodiscard]] QString errorString() const;

    void setAllowRule(const AllowRule &rule) { m_allow = rule; }
    [[nodiscard]] const AllowRule &allowRule() const { return m_allow; }
    // Time-out of the clients' pending output; tests shorten it.
    void setSendTimeoutMs(int timeoutMs) { m_sendTimeoutMs = timeoutMs; }
    // Sessions not yet ended.
    [[nodiscard]] int clientCount() const;

signals:
    void connected(RCClient *handle);
    void refused(const QString &peer, RCListener::Refusal reason);

public slots:
    void getConnection();

private:
    void refuse(QTcpSocket *socket, const QByteArray &line);

    QTcpServer *m_server = nullptr;
    quint64 m_nextId = 0;
    AllowRule m_allow;
    int m_sendTimeoutMs;
};
