#include "modules/serialconnectorsession.h"

#include "app/accessgate.h"
#include "modules/receivecap.h"

#include <QTcpSocket>

namespace {

SerialConnectorSession::Result resultOf(AccessGate::WaitResult wait)
{
    switch (wait) {
    case AccessGate::WaitResult::Arrived:
        return SerialConnectorSession::Result::Done;
    case AccessGate::WaitResult::Aborted:
        return SerialConnectorSession::Result::Aborted;
    default:
        return SerialConnectorSession::Result::TimedOut;
    }
}

} // namespace

SerialConnectorSession::SerialConnectorSession(AccessGate *gate, QObject *parent)
    : QObject(parent), m_gate(gate)
{
}

SerialConnectorSession::~SerialConnectorSession() = default;

bool SerialConnectorSession::isConnected() const
{
    return m_socket && m_socket->state() == QAbstractSocket::ConnectedState;
}

SerialConnectorSession::Result SerialConnectorSession::open(const QHostAddress &address,
                                                            quint16 port, int timeoutMs)
{
    AccessGate::Hold hold(m_gate);
    dropSocket();
    m_socket = new QTcpSocket(this);
    QTcpSocket *socket = m_socket;
    // What arrives while nobody receives stays in the system's socket buffer beyond this, and
    // the device's flow control holds the sender back.
    socket->setReadBufferSize(ModuleLimits::kReceiveCapBytes);
    socket->connectToHost(address, port);
    const AccessGate::WaitResult wait =
        m_gate->waitFor(socket, &QAbstractSocket::stateChanged, timeoutMs, [socket] {
            return socket->state() == QAbstractSocket::ConnectedState ||
                   socket->state() == QAbstractSocket::UnconnectedState;
        });
    if (wait == AccessGate::WaitResult::Arrived && isConnected()) {
        connect(socket, &QAbstractSocket::disconnected, this,
                &SerialConnectorSession::onDisconnected);
        connect(socket, &QIODevice::readyRead, this, &SerialConnectorSession::handOver);
        return Result::Done;
    }
    m_errorString = socket->errorString();
    dropSocket();
    return wait == AccessGate::WaitResult::Arrived ? Result::Failed : resultOf(wait);
}

void SerialConnectorSession::close(int timeoutMs)
{
    if (!m_socket)
        return;
    AccessGate::Hold hold(m_gate);
    m_closing = true;
    QTcpSocket *socket = m_socket;
    socket->disconnectFromHost();
    if (socket->state() != QAbstractSocket::UnconnectedState) {
        (void)m_gate->waitFor(socket, &QAbstractSocket::stateChanged, timeoutMs, [socket] {
            return socket->state() == QAbstractSocket::UnconnectedState;
        });
    }
    dropSocket();
    m_closing = false;
}

SerialConnectorSession::Result SerialConnectorSession::send(const QByteArray &bytes, int timeoutMs)
{
    if (!isConnected())
        return Result::NotConnected;
    AccessGate::Hold hold(m_gate);
    QTcpSocket *socket = m_socket;
    if (socket->write(bytes) != bytes.size()) {
        m_errorString = socket->errorString();
        return Result::Failed;
    }
    const AccessGate::WaitResult wait =
        m_gate->waitFor(socket, &QIODevice::bytesWritten, timeoutMs,
                        [socket] { return socket->bytesToWrite() == 0; });
    return resultOf(wait);
}

SerialConnectorSession::Result SerialConnectorSession::receive(qint64 maxLength, int timeoutMs,
                                                               QByteArray *data)
{
    if (!m_socket)
        return Result::NotConnected;
    AccessGate::Hold hold(m_gate);
    QTcpSocket *socket = m_socket;
    // A connection that ends while waiting also ends the wait; its last bytes are still read.
    const AccessGate::WaitResult wait =
        m_gate->waitFor(socket, &QIODevice::readyRead, timeoutMs, [socket] {
            return socket->bytesAvailable() > 0 ||
                   socket->state() != QAbstractSocket::ConnectedState;
        });
    if (wait != AccessGate::WaitResult::Arrived)
        return resultOf(wait);
    if (m_socket != socket || socket->bytesAvailable() == 0) {
        m_errorString = socket->errorString();
        return Result::NotConnected;
    }
    *data = socket->read(maxLength > 0 ? maxLength : ModuleLimits::kReceiveCapBytes);
    return Result::Done;
}

QByteArray SerialConnectorSession::withDelimiter(const QString &text, int delimiter)
{
    static const char *const kEndings[] = {"", "\r", "\n", "\r\n"};
    const bool known = delimiter >= NoDelimiter && delimiter <= CRLF;
    return (text + QLatin1String(known ? kEndings[delimiter] : "")).toUtf8();
}

void SerialConnectorSession::setWatched(bool watched)
{
    m_watched = watched && m_socket;
    // What arrived before the watch began is handed over first, outside the caller's own call.
    if (m_watched)
        QMetaObject::invokeMethod(this, &SerialConnectorSession::handOver, Qt::QueuedConnection);
}

void SerialConnectorSession::handOver()
{
    // Bounded by the socket's read buffer: nothing new is read in while this runs.
    while (m_watched && m_socket && m_socket->bytesAvailable() > 0)
        emit arrived(m_socket->read(ModuleLimits::kReceiveCapBytes));
}

void SerialConnectorSession::dropSocket()
{
    m_watched = false;
    if (!m_socket)
        return;
    disconnect(m_socket, nullptr, this, nullptr);
    m_socket->abort();
    m_socket->deleteLater();
    m_socket = nullptr;
}

void SerialConnectorSession::onDisconnected()
{
    if (m_closing)
        return;
    const bool wasWatched = m_watched;
    handOver();
    // The socket stays while it holds bytes not yet taken by receive().
    if (m_socket && m_socket->bytesAvailable() == 0)
        dropSocket();
    emit closedByPeer(wasWatched);
}
