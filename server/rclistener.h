// The remote-control listening socket: accepts connections on the server-mode port and hands
// each one over as an RCClient, numbered 0, 1, 2... over the whole run.
#pragma once

#include <QObject>
#include <QPointer>

class AccessGate;
class QTcpServer;
class RCClient;

class RCListener : public QObject
{
    Q_OBJECT

public:
    explicit RCListener(QObject *parent = nullptr);
    ~RCListener() override;

    // Listens on every local IPv4 and IPv6 address; a failure is logged once and returns false.
    bool start(int port);
    void stop();
    // The port actually listened on (the one chosen by the system for port 0), 0 when not.
    [[nodiscard]] quint16 serverPort() const;
    [[nodiscard]] QString errorString() const;

    // Clients wait for their written bytes through this gate.
    void setGate(AccessGate *gate) { m_gate = gate; }

signals:
    void connected(RCClient *handle);

public slots:
    void getConnection();

private:
    QTcpServer *m_server = nullptr;
    quint64 m_nextId = 0;
    QPointer<AccessGate> m_gate;
};
