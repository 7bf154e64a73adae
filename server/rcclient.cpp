#include "server/rcclient.h"

#include "app/accessgate.h"
#include "app/log.h"

#include <QStringList>
#include <QTcpSocket>
#include <QTimer>

#include <utility>

RCClient::RCClient(quint64 id, QTcpSocket *socket, AccessGate *gate, QObject *parent)
    : QObject(parent), m_id(id), m_socket(socket), m_gate(gate)
{
    // The socket lives and dies with its session rather than piling up under the server.
    socket->setParent(this);
    connect(socket, &QTcpSocket::readyRead, this, &RCClient::getPacket);
    connect(socket, &QTcpSocket::disconnected, this, &RCClient::dispose);
    connect(socket, &QTcpSocket::bytesWritten, this, &RCClient::sendSettled);
    connect(socket, &QTcpSocket::errorOccurred, this, &RCClient::sendSettled);
    m_echoTimer = new QTimer(this);
    m_echoTimer->setSingleShot(true);
    m_echoTimer->setInterval(kEchoHoldMs);
    connect(m_echoTimer, &QTimer::timeout, this, &RCClient::flushEcho);
}

RCClient::~RCClient()
{
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->disconnectFromHost();
        m_socket->close();
    }
}

void RCClient::sendData(const QByteArray &bytes)
{
    if (m_disposed || !m_socket)
        return;
    if (!m_heldEcho.isEmpty()) {
        m_echoTimer->stop();
        sendData(std::exchange(m_heldEcho, {}) + bytes);
        return;
    }
    if (m_socket->write(bytes) != bytes.size()) {
        LOG_ERROR(tr("Server to Client, fail to send"));
        dispose();
        return;
    }
    if (!waitWritten()) {
        LOG_ERROR(tr("Server to Client, fail to send"));
        dispose();
    }
}

void RCClient::sendPrompt()
{
    sendData(prompt());
}

bool RCClient::finishCommand(const QString &command)
{
    QStringList parts = command.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.isEmpty()) {
        flushEcho();
        return false;
    }
    QString &last = parts.last();
    last.chop(last.endsWith(QLatin1String("\r\n")) ? 2 : 1);
    if (parts.first() != QLatin1String("quit")) {
        flushEcho(); // a command answered by silence leaves its echo here
        return false;
    }
    if (m_disposed || !m_socket)
        return true;
    flushEcho();
    if (m_disposed)
        return true;
    const QByteArray bye = QByteArrayLiteral("Bye-Bye!\r\n");
    if (m_socket->write(bye) != bye.size())
        LOG_ERROR(tr("Server to Client, fail to send"));
    if (!waitWritten())
        LOG_ERROR(tr("Server to Client, fail to send"));
    dispose();
    LOG_INFO_MSG(tr("Server mode, quit command successed"));
    return true;
}

// Only the end of a chunk is looked at: a person types one key at a time, a script sends whole
// lines, and either way a line ends where a chunk ends with CR, LF or CR LF.
void RCClient::getPacket()
{
    if (m_disposed || !m_socket)
        return;
    const QByteArray chunk = m_socket->readAll();
    if (chunk.isEmpty())
        return;
    const bool endsLine = chunk.endsWith('\n') || chunk.endsWith('\r');
    sendEcho(endsLine ? chunk + QByteArrayLiteral("\r\n") : chunk, endsLine && !m_discarding);
    if (m_disposed)
        return;
    if (m_discarding) {
        m_discarding = !endsLine;
        return;
    }
    m_line += chunk;
    if (!endsLine) {
        if (m_line.size() > kMaxLineBytes) {
            // Dropped whole, up to its terminator; the empty command is answered as unknown.
            m_line.clear();
            m_discarding = true;
            emit lineReceived(QString());
        }
        return;
    }
    // Converted whole, so that a character split across two segments survives.
    const QString command = QString::fromUtf8(m_line);
    m_line.clear();
    // The command may run at once, and the session may end while it does.
    ++m_busy;
    emit lineReceived(command);
    --m_busy;
    deleteWhenIdle();
}

// The echo of a line that is about to run waits for the reply, or for kEchoHoldMs; everything
// echoed after it queues behind it, so the bytes keep their order.
void RCClient::sendEcho(const QByteArray &echo, bool endsLine)
{
    if (endsLine || !m_heldEcho.isEmpty()) {
        m_heldEcho += echo;
        if (!m_echoTimer->isActive())
            m_echoTimer->start();
        return;
    }
    if (m_socket->write(echo) != echo.size()) {
        LOG_ERROR(tr("Server to Client, fail to send"));
        dispose();
    }
}

void RCClient::flushEcho()
{
    m_echoTimer->stop();
    if (m_heldEcho.isEmpty() || m_disposed || !m_socket)
        return;
    const QByteArray echo = std::exchange(m_heldEcho, {});
    if (m_socket->write(echo) != echo.size()) {
        LOG_ERROR(tr("Server to Client, fail to send"));
        dispose();
    }
}

void RCClient::dispose()
{
    if (m_disposed)
        return;
    m_disposed = true;
    emit disconnected();
    if (m_socket) {
        disconnect(m_socket, &QTcpSocket::readyRead, this, &RCClient::getPacket);
        disconnect(m_socket, &QTcpSocket::disconnected, this, &RCClient::dispose);
    }
    m_deletePending = true;
    deleteWhenIdle();
    emit sendSettled();
}

bool RCClient::waitWritten()
{
    m_socket->flush();
    if (m_socket->bytesToWrite() == 0)
        return true;
    AccessGate localGate;
    AccessGate *gate = m_gate ? m_gate.data() : &localGate;
    ++m_busy;
    const AccessGate::WaitResult result =
        gate->waitFor(this, &RCClient::sendSettled, kSendTimeoutMs, [this] {
            return m_disposed || !m_socket || m_socket->bytesToWrite() == 0 ||
                   m_socket->state() != QAbstractSocket::ConnectedState;
        });
    --m_busy;
    const bool written = result == AccessGate::WaitResult::Arrived && !m_disposed && m_socket &&
                         m_socket->bytesToWrite() == 0;
    deleteWhenIdle();
    return written;
}

void RCClient::deleteWhenIdle()
{
    if (m_busy == 0 && m_deletePending) {
        m_deletePending = false;
        deleteLater();
    }
}
