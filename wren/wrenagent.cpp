#include "wren/wrenagent.h"

#include "app/accessgate.h"
#include "app/log.h"
#include "wren/wrenpacket.h"
#include "wren/wrenreport.h"

#include <QElapsedTimer>
#include <QNetworkDatagram>
#include <QPointer>
#include <QUdpSocket>

namespace {
constexpr quint32 kCommandKindRegister = 1;

// An IPv4 sender as the user knows it, not in the IPv4-mapped form of a dual-stack socket.
QString plainAddress(const QHostAddress &address)
{
    bool isIPv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIPv4);
    return isIPv4 ? QHostAddress(ipv4).toString() : address.toString();
}
} // namespace

WrenAgent::WrenAgent(QObject *parent) : QObject(parent), m_gate(new AccessGate(this)) {}

void WrenAgent::setTarget(const QHostAddress &address, quint16 udpPort)
{
    m_targetAddress = address;
    if (udpPort == m_targetPort)
        return;
    if (m_socket) {
        disconnect(m_socket, &QUdpSocket::readyRead, nullptr, nullptr);
        m_socket->close();
        // An access waiting on it further down the stack lets it go on its own.
        if (m_gate->isWaiting())
            m_socket->deleteLater();
        else
            delete m_socket;
        m_socket = nullptr;
    }
    m_targetPort = udpPort;
    m_socket = new QUdpSocket(this);
    if (!m_socket->bind(0))
        LOG_ERROR(tr("UDP socket bind error"));
}

quint16 WrenAgent::localPort() const
{
    return m_socket ? m_socket->localPort() : 0;
}

QByteArray WrenAgent::write(quint32 address, const QByteArray &data, int timeoutMs, bool remote)
{
    refuseNestedAccess();
    AccessGate::Hold hold(m_gate);
    const quint8 id = takePacketId();
    const WrenHeader header(qint8(WrenHeader::kVerType), kCommandKindRegister, 0, 0, 0, id,
                            quint8(data.size()), address);
    const WrenPacket request(header, data, remote);
    send(request, tr("WREN send, fail to send write command packet"));
    // A plain write time-out is left to the caller to report.
    return awaitReply(request, timeoutMs, QString());
}

QByteArray WrenAgent::read(quint32 address, quint8 length, int timeoutMs, bool remote)
{
    refuseNestedAccess();
    AccessGate::Hold hold(m_gate);
    const quint8 id = takePacketId();
    const WrenHeader header(qint8(WrenHeader::kVerType), kCommandKindRegister, 1, 0, 0, id, length,
                            address);
    const WrenPacket request(header, remote);
    if (m_socket)
        m_socket->flush();
    send(request, tr("WREN send, fail to send read command packet"));
    return awaitReply(request, timeoutMs, tr("WREN send, response to read command is timeout"));
}

quint8 WrenAgent::takePacketId()
{
    return quint8(m_packetIdCounter++);
}

// Waits never nest: an access asked for from inside another one's wait (a timer, a server session)
// would otherwise hold that one's reply hostage until its own time-out.
void WrenAgent::refuseNestedAccess()
{
    if (!m_gate->isWaiting())
        return;
    const QString reason = tr("Another register access is waiting; this one was not sent");
    LOG_ERROR(reason);
    throw WrenError{WrenError::Timeout, reason};
}

void WrenAgent::send(const WrenPacket &request, const QString &failureLog)
{
    // Without a target there is no socket: the access fails like an unsent datagram.
    if (m_socket &&
        m_socket->writeDatagram(request.toByteArray(), m_targetAddress, m_targetPort) != -1)
        return;
    LOG_ERROR(failureLog);
    const QString why = m_socket ? m_socket->errorString() : tr("no target UDP port is set");
    throw WrenError{WrenError::Timeout, tr("The request could not be sent: %1").arg(why), true};
}

QByteArray WrenAgent::awaitReply(const WrenPacket &request, int timeoutMs,
                                 const QString &timeoutLog)
{
    const QPointer<QUdpSocket> socket = m_socket;
    const auto pending = [&socket] { return socket && socket->hasPendingDatagrams(); };
    QStringList discarded;
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        while (pending()) {
            const QNetworkDatagram datagram = socket->receiveDatagram();
            if (!datagram.isValid())
                break;
            const QString why = mismatch(datagram, request);
            if (why.isEmpty())
                return checkReply(request, WrenPacket(datagram.data(), false));
            LOG_ERROR(why);
            discarded << why;
        }
        const qint64 leftMs = timeoutMs - clock.elapsed();
        if (!socket || leftMs <= 0)
            break;
        const AccessGate::WaitResult result =
            m_gate->waitFor(socket.data(), &QUdpSocket::readyRead, int(leftMs), pending);
        if (result == AccessGate::WaitResult::Aborted) {
            if (!timeoutLog.isEmpty())
                LOG_ERROR(timeoutLog);
            throw WrenError{WrenError::Timeout, givenUpText()};
        }
    }
    if (!timeoutLog.isEmpty())
        LOG_ERROR(timeoutLog);
    const qsizetype count = discarded.size();
    discarded.removeDuplicates();
    const QString reason = count == 0 ? QString()
                                      : tr("%n datagram(s) discarded: %1", nullptr, int(count))
                                            .arg(discarded.join(QStringLiteral("; ")));
    throw WrenError{WrenError::Timeout, reason};
}

// A datagram belongs to the request when it comes from the target and echoes the request's
// packet ID, R/W bit and address; anything else is late, duplicated or foreign.
QString WrenAgent::mismatch(const QNetworkDatagram &datagram, const WrenPacket &request) const
{
    if (!datagram.senderAddress().isEqual(m_targetAddress, QHostAddress::ConvertV4MappedToIPv4) ||
        datagram.senderPort() != int(m_targetPort))
        return tr("WREN Recv, datagram from %1 port %2 is not from the target")
            .arg(plainAddress(datagram.senderAddress()))
            .arg(datagram.senderPort());
    if (datagram.data().size() < WrenHeader::headerSize())
        return tr("WREN Recv, datagram too short for a header");
    const WrenHeader reply(datagram.data());
    const WrenHeader &sent = request.header();
    if (reply.packetId() != sent.packetId())
        return tr("WREN Recv, packet ID does not match");
    if (reply.isRead() != sent.isRead())
        return tr("WREN Recv, invalid R/W flag");
    if (reply.address() != sent.address())
        return tr("WREN Recv, address does not match");
    return {};
}

QByteArray WrenAgent::checkReply(const WrenPacket &request, const WrenPacket &reply)
{
    const WrenHeader &header = reply.header();
    if (header.length() > reply.data().size()) {
        LOG_ERROR(tr("WREN Recv, lack of data packet"));
        fail(reply, WrenError::ShortReply, {tr("WREN Recv, lack of data packet")});
    }
    QStringList bad;
    if (header.length() != request.header().length())
        bad << tr("WREN Recv, length does not match the request");
    if (header.verType() != WrenHeader::kVerType)
        bad << tr("WREN Recv, VerType does is invalid");
    if (!header.isAck())
        bad << tr("WREN Recv, it's not Acknowledge packet");
    for (const QString &line : std::as_const(bad))
        LOG_ERROR(line);
    if (!bad.isEmpty())
        fail(reply, WrenError::BadReply, bad);
    if (header.isBusError()) {
        LOG_ERROR(tr("WREN Recv, Bus Error occured"));
        fail(reply, WrenError::BusError, {tr("WREN Recv, Bus Error occured")});
    }
    return reply.data();
}

void WrenAgent::fail(const WrenPacket &reply, quint32 code, const QStringList &reasons)
{
    // The signal follows the reply's R/W bit, which matches the request's by now.
    if (reply.header().isRead())
        emit readErrorOccured(reply.header().packetId());
    else
        emit writeErrorOccured(reply.header().packetId());
    throw WrenError{code, reasons.join(QStringLiteral("; "))};
}
