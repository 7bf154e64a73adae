#include "tcp/tcpconnection.h"

#include "app/log.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>

TcpConnection::TcpConnection(QObject *parent) : QObject(parent) {}

TcpConnection::~TcpConnection()
{
    if (m_socket)
        m_socket->abort();
}

bool TcpConnection::open(const QString &host, quint16 port, int timeoutMs)
{
    if (m_socket)
        return true;
    m_socket = new QTcpSocket(this);
    m_exists = true;
    m_error.clear();
    m_socket->setReadBufferSize(kReadBufferBytes);
    m_socket->connectToHost(host, port, QIODevice::ReadWrite);
    if (!m_socket->waitForConnected(timeoutMs)) {
        m_error = QStringLiteral("%1:%2 (%3)").arg(host).arg(port).arg(m_socket->errorString());
        return false;
    }
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &TcpConnection::onError);
    connect(m_socket, &QIODevice::readyRead, this, &TcpConnection::readyRead);
    return true;
}

void TcpConnection::dropIfDead()
{
    if (!m_socket || m_socket->state() == QAbstractSocket::ConnectedState)
        return;
    m_socket->disconnect();
    m_socket->abort();
    release();
}

bool TcpConnection::close(bool dropUnsent, int timeoutMs)
{
    if (!m_socket)
        return false;
    m_socket->disconnect();
    if (dropUnsent && m_socket->bytesToWrite() > 0) {
        m_socket->abort();
    } else {
        m_socket->disconnectFromHost();
        if (m_socket->state() != QAbstractSocket::UnconnectedState)
            m_socket->waitForDisconnected(timeoutMs);
    }
    m_socket->close();
    release();
    return true;
}

void TcpConnection::release()
{
    delete m_socket;
    m_socket = nullptr;
    m_exists = false;
    LOG_INFO_MSG("socket closed");
    emit released();
}

void TcpConnection::onError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::SocketTimeoutError)
        return;
    emit failed(error, m_socket ? m_socket->errorString() : QString());
}

void TcpConnection::reserveClose(int msec)
{
    const int delayMs = std::max(msec, 0);
    LOG_INFO_MSG(QStringLiteral("reserve to close socket [after %1msec]").arg(delayMs));
    QTimer::singleShot(delayMs, this, [this] {
        LOG_INFO_MSG("socket close reservation timed out.");
        emit closeDue();
    });
}

bool TcpConnection::holdOpen(int msec)
{
    if (!m_socket)
        return false;
    LOG_INFO_MSG("flush socket");
    m_socket->flush();
    m_holdUntil.setRemainingTime(msec);
    reserveClose(msec);
    return true;
}

bool TcpConnection::isHeldOpen()
{
    if (m_holdUntil.hasExpired())
        return false;
    reserveClose(int(m_holdUntil.remainingTime()));
    return true;
}
