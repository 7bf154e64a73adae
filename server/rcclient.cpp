#include "server/rcclient.h"

#include "app/log.h"
#include "server/allowrule.h"
#include "server/commandinterpreter.h"

#include <QTcpSocket>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace {

// Telnet commands: interpret-as-command, and those that one option byte follows.
constexpr uchar kIac = 0xFF;
constexpr uchar kSubBegin = 250;
constexpr uchar kSubEnd = 240;
constexpr uchar kFirstOptionCommand = 251; // WILL, WONT, DO, DONT

} // namespace

RCClient::RCClient(quint64 id, QTcpSocket *socket, QObject *parent)
    : QObject(parent), m_id(id), m_socket(socket)
{
    m_peer = QStringLiteral("%1:%2")
                 .arg(AllowRule::plain(socket->peerAddress()).toString())
                 .arg(socket->peerPort());
    // The socket lives and dies with its session rather than piling up under the server.
    socket->setParent(this);
    // Qt stops reading the connection once this much waits, and TCP holds the sender back.
    socket->setReadBufferSize(kReadBufferBytes);
    connect(socket, &QTcpSocket::readyRead, this, &RCClient::getPacket);
    connect(socket, &QTcpSocket::disconnected, this, &RCClient::dispose);
    connect(socket, &QTcpSocket::bytesWritten, this, &RCClient::outputMoved);
    m_echoTimer = new QTimer(this);
    m_echoTimer->setSingleShot(true);
    m_echoTimer->setInterval(kEchoHoldMs);
    connect(m_echoTimer, &QTimer::timeout, this, &RCClient::flushEcho);
    m_sendTimer = new QTimer(this);
    m_sendTimer->setSingleShot(true);
    connect(m_sendTimer, &QTimer::timeout, this, [this] {
        if (!m_disposed)
            LOG_ERROR(tr("Server to Client, fail to send"));
        if (m_socket)
            m_socket->abort();
        dispose();
        deleteLater();
    });
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
    if (!m_heldEcho.isEmpty()) {
        m_echoTimer->stop();
        write(std::exchange(m_heldEcho, {}) + bytes);
        return;
    }
    write(bytes);
}

void RCClient::sendPrompt()
{
    sendData(prompt());
}

bool RCClient::finishCommand(const QString &command)
{
    flushEcho(); // a command answered by silence leaves its echo here
    if (CommandInterpreter::firstWord(CommandInterpreter::withoutTerminator(command)) !=
        QLatin1String("quit")) {
        m_serving = false;
        // New bytes bring readyRead(); only those already here need a nudge.
        if (m_socket && (m_inputAt < m_input.size() || m_socket->bytesAvailable() > 0))
            resumeLater();
        return false;
    }
    if (m_disposed)
        return true;
    write(QByteArrayLiteral("Bye-Bye!\r\n"));
    dispose();
    LOG_INFO_MSG(tr("Server mode, quit command successed"));
    return true;
}

// Takes input up to the end of one line, which is then handed out; the rest waits until that line
// has been served.
void RCClient::getPacket()
{
    while (mayTakeInput()) {
        if (m_inputAt >= m_input.size()) {
            m_input = m_socket->read(qMin<qint64>(m_socket->bytesAvailable(), kReadChunkBytes));
            m_inputAt = 0;
            if (m_input.isEmpty())
                return;
        }
        QByteArray echo;
        bool ended = false;
        while (!ended && m_inputAt < m_input.size()) {
            takeRun(echo);
            if (m_inputAt < m_input.size())
                ended = take(m_input.at(m_inputAt++), echo);
        }
        if (!ended) {
            // Echoed as it comes, for a person typing; behind a held echo, to keep the order.
            if (!m_heldEcho.isEmpty())
                m_heldEcho += echo;
            else if (!echo.isEmpty())
                write(echo);
            continue;
        }
        // The echo of a line that is about to run waits for the reply, or for kEchoHoldMs.
        m_heldEcho += echo;
        if (!m_echoTimer->isActive())
            m_echoTimer->start();
        m_serving = true;
        // Converted whole, so that a character split across two segments survives.
        const QString command = QString::fromUtf8(std::exchange(m_line, {}));
        emit lineReceived(command);
        return;
    }
}

// Ordinary bytes are taken (or, in an overlong line, skipped) a run at a time; take() sees line
// ends, telnet commands and the byte that makes a line overlong.
void RCClient::takeRun(QByteArray &echo)
{
    if (m_telnet != Telnet::Data || m_afterCr)
        return;
    const qsizetype limit =
        m_discarding ? m_input.size()
                     : std::min(m_input.size(), m_inputAt + kMaxLineBytes - m_line.size());
    qsizetype end = m_inputAt;
    while (end < limit) {
        const char byte = m_input.at(end);
        if (byte == '\r' || byte == '\n' || uchar(byte) == kIac)
            break;
        ++end;
    }
    if (!m_discarding) {
        const QByteArrayView run(m_input.constData() + m_inputAt, end - m_inputAt);
        m_line += run;
        echo += run;
    }
    m_inputAt = end;
}

bool RCClient::take(char byte, QByteArray &echo)
{
    const auto value = uchar(byte);
    switch (m_telnet) {
    case Telnet::Command:
        m_telnet = value >= kFirstOptionCommand && value != kIac ? Telnet::Option
                   : value == kSubBegin                          ? Telnet::Sub
                                                                 : Telnet::Data;
        if (value != kIac)
            return false; // a doubled IAC stands for the byte itself
        break;
    case Telnet::Option:
        m_telnet = Telnet::Data;
        return false;
    case Telnet::Sub:
        if (value == kIac)
            m_telnet = Telnet::SubCommand;
        return false;
    case Telnet::SubCommand:
        m_telnet = value == kSubEnd ? Telnet::Data : Telnet::Sub;
        return false;
    case Telnet::Data:
        if (value == kIac) {
            m_telnet = Telnet::Command;
            return false;
        }
        break;
    }
    if (std::exchange(m_afterCr, false) && (byte == '\n' || byte == '\0'))
        return false; // the rest of a CR LF or CR NUL that ended a line already
    if (byte == '\r') {
        // CR LF and CR NUL are one terminator; they usually come in the same segment.
        const bool more = m_inputAt < m_input.size();
        const char next = more ? m_input.at(m_inputAt) : '\0';
        if (next == '\n' || (more && next == '\0'))
            ++m_inputAt;
        m_afterCr = !more;
        return endLine(next == '\n' ? QByteArrayLiteral("\r\n") : QByteArrayLiteral("\r"), echo);
    }
    if (byte == '\n')
        return endLine(QByteArrayLiteral("\n"), echo);
    if (m_discarding)
        return false;
    m_line += byte;
    echo += byte;
    if (m_line.size() <= kMaxLineBytes)
        return false;
    // Dropped whole, up to its terminator; the empty command is answered as unknown.
    m_line.clear();
    m_discarding = true;
    return true;
}

bool RCClient::endLine(const QByteArray &terminator, QByteArray &echo)
{
    echo += terminator + QByteArrayLiteral("\r\n");
    if (std::exchange(m_discarding, false))
        return false;
    m_line += terminator;
    return true;
}

bool RCClient::mayTakeInput() const
{
    return !m_disposed && m_socket && !m_serving &&
           m_socket->bytesToWrite() + m_heldEcho.size() <= kMaxPendingOutput;
}

void RCClient::write(const QByteArray &bytes)
{
    if (m_disposed || !m_socket || bytes.isEmpty())
        return;
    if (m_socket->write(bytes) != bytes.size()) {
        LOG_ERROR(tr("Server to Client, fail to send"));
        dispose();
        return;
    }
    // Handed to the system now, without waiting: the peer has it one event-loop turn sooner.
    m_socket->flush();
    if (m_socket && m_socket->bytesToWrite() > 0 && !m_sendTimer->isActive())
        m_sendTimer->start(m_sendTimeoutMs);
}

void RCClient::flushEcho()
{
    m_echoTimer->stop();
    write(std::exchange(m_heldEcho, {}));
}

// Output left: the clock starts again while some is pending, and input taken again once there
// is room.
void RCClient::outputMoved()
{
    if (!m_socket || m_disposed)
        return;
    if (m_socket->bytesToWrite() == 0)
        m_sendTimer->stop();
    else
        m_sendTimer->start(m_sendTimeoutMs);
    if (mayTakeInput() && (m_inputAt < m_input.size() || m_socket->bytesAvailable() > 0))
        resumeLater();
}

void RCClient::resumeLater()
{
    QMetaObject::invokeMethod(this, &RCClient::getPacket, Qt::QueuedConnection);
}

void RCClient::dispose()
{
    if (m_disposed)
        return;
    m_disposed = true;
    m_echoTimer->stop();
    emit disconnected();
    if (m_socket) {
        disconnect(m_socket, &QTcpSocket::readyRead, this, &RCClient::getPacket);
        disconnect(m_socket, &QTcpSocket::disconnected, this, &RCClient::dispose);
        if (m_socket->state() != QAbstractSocket::UnconnectedState) {
            // The last bytes ("Bye-Bye!") leave first, within the send time-out.
            connect(m_socket, &QTcpSocket::disconnected, this, &QObject::deleteLater);
            m_socket->disconnectFromHost();
            if (m_socket->state() != QAbstractSocket::UnconnectedState) {
                m_sendTimer->start(m_sendTimeoutMs);
                return;
            }
        }
    }
    deleteLater();
}
