#include "server/rclistener.h"

#include "app/log.h"
#include "server/rcclient.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

RCListener::RCListener(QObject *parent) : QObject(parent), m_sendTimeoutMs(RCClient::kSendTimeoutMs)
{
}

RCListener::~RCListener()
{
    stop();
}

bool RCListener::start(int port)
{
    stop();
    m_server = new QTcpServer(this);
    const bool inRange = port >= 0 && port <= 0xFFFF;
    if (!inRange || !m_server->listen(QHostAddress::Any, quint16(port))) {
        LOG_ERROR(tr("Server mode, fail to listen"));
        return false;
    }
    connect(m_server, &QTcpServer::newConnection, this, &RCListener::getConnection);
    return true;
}

void RCListener::stop()
{
    if (!m_server)
        return;
    m_server->close();
    m_server->deleteLater();
    m_server = nullptr;
}

quint16 RCListener::serverPort() const
{
    return m_server && m_server->isListening() ? m_server->serverPort() : 0;
}

QString RCListener::errorString() const
{
    return m_server ? m_server->errorString() : QString();
}

int RCListener::clientCount() const
{
    const QList<RCClient *> clients = findChildren<RCClient *>(Qt::FindDirectChildrenOnly);
    return int(std::count_if(clients.begin(), clients.end(),
                             [](const RCClient *client) { return !client->isDisposed(); }));
}

void RCListener::getConnection()
{
    QTcpSocket *socket = m_server ? m_server->nextPendingConnection() : nullptr;
    if (!socket)
        return;
    const QString peer = AllowRule::plain(socket->peerAddress()).toString();
    if (!m_allow.allows(socket->peerAddress())) {
        // Protocol text, read by a program or a person at a terminal on the other computer.
        refuse(socket, "NG:Connection from " + peer.toUtf8() +
                           " is not allowed. Start the server with -uiallow:" + peer.toUtf8() +
                           " (or its network) to allow it.\r\n");
        emit refused(peer, Refusal::NotAllowed);
        return;
    }
    if (clientCount() >= kMaxClients) {
        refuse(socket, "NG:Too many clients (" + QByteArray::number(kMaxClients) +
                           "), try again later.\r\n");
        emit refused(peer, Refusal::TooManyClients);
        return;
    }
    // Echo, reply and prompt are small writes in a row: without this the reply waits for the
    // peer's delayed acknowledgement of the echo.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    auto *client = new RCClient(m_nextId++, socket, this);
    client->setSendTimeoutMs(m_sendTimeoutMs);
    emit connected(client);
}

// The line goes out and the connection closes without waiting; whatever the peer does, the
// socket is gone after the send time-out.
void RCListener::refuse(QTcpSocket *socket, const QByteArray &line)
{
    socket->setParent(this);
    socket->setReadBufferSize(1);
    connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    QTimer::singleShot(m_sendTimeoutMs, socket, [socket] {
        socket->abort();
        socket->deleteLater();
    });
    socket->write(line);
    socket->disconnectFromHost();
}
