#include "server/rclistener.h"

#include "app/accessgate.h"
#include "app/log.h"
#include "server/rcclient.h"

#include <QTcpServer>
#include <QTcpSocket>

RCListener::RCListener(QObject *parent) : QObject(parent) {}

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

void RCListener::getConnection()
{
    QTcpSocket *socket = m_server ? m_server->nextPendingConnection() : nullptr;
    if (!socket)
        return;
    // Echo, reply and prompt are small writes in a row: without this the reply waits for the
    // peer's delayed acknowledgement of the echo.
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    auto *client = new RCClient(m_nextId++, socket, m_gate, this);
    emit connected(client);
}
