#include "wren/wrenagent.h"

#include "app/accessgate.h"
#include "app/log.h"
#include "wren/wrenpacket.h"

#include <QUdpSocket>

namespace {
constexpr quint32 kCommandKindRegister = 1;
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
    const quint8 id = takePacketId();
    const WrenHeader header(qint8(WrenHeader::kVerType), kCommandKindRegister, 0, 0, 0, id,
                            quint8(data.size()), address);
    const WrenPacket request(header, data, remote);
    if (!send(request))
        LOG_ERROR(tr("WREN send, fail to send write command packet"));
    // A write time-out is left to the caller to report.
    if (!m_socket || !m_socket->waitForReadyRead(timeoutMs))
        throw WrenError{WrenError::Timeout, {}};
    return checkReply(request, receivePending());
}

QByteArray WrenAgent::read(quint32 address, quint8 length, int timeoutMs, bool remote)
{
    const quint8 id = takePacketId();
    const WrenHeader header(qint8(WrenHeader::kVerType), kCommandKindRegister, 1, 0, 0, id, length,
                            address);
    const WrenPacket request(header, remote);
    if (m_socket)
        m_socket->flush();
    if (!send(request)) {
        LOG_ERROR(tr("WREN send, fail to send read command packet"));
        return {};
    }
    if (!m_socket->waitForReadyRead(timeoutMs)) {
        LOG_ERROR(tr("WREN send, response to read command is timeout"));
        throw WrenError{WrenError::Timeout, {}};
    }
    return checkReply(request, receivePending());
}

quint8 WrenAgent::takePacketId()
{
    return quint8(m_packetIdCounter++);
}

bool WrenAgent::send(const WrenPacket &request)
{
    // Without a target there is no socket: the access fails like an unsent datagram.
    if (!m_socket)
        return false;
    return m_socket->writeDatagram(request.toByteArray(), m_targetAddress, m_targetPort) != -1;
}

QByteArray WrenAgent::receivePending()
{
    // Every queued datagram is joined: a late reply to an earlier, timed-out request comes first
    // and its header is the one checked. pendingDatagramSize() is -1 once the queue is empty, so
    // it serves as the "has pending" test too and saves a system call per access.
    QByteArray buffer;
    for (qint64 size = m_socket->pendingDatagramSize(); size >= 0;
         size = m_socket->pendingDatagramSize()) {
        const qsizetype offset = buffer.size();
        buffer.resize(offset + size);
        const qint64 got = m_socket->readDatagram(buffer.data() + offset, size);
        if (got < 0) {
            buffer.truncate(offset);
            break; // the datagram could not be taken: stop rather than spin on it
        }
        buffer.truncate(offset + got);
    }
    return buffer;
}

QByteArray WrenAgent::checkReply(const WrenPacket &request, QByteArray received)
{
    const WrenPacket reply(std::move(received), false);
    const WrenHeader &header = reply.header();
    if (header.length() > reply.data().size()) {
        LOG_ERROR(tr("WREN Recv, lack of data packet"));
        fail(reply, WrenError::ShortReply);
    }
    bool bad = false;
    if (header.verType() < WrenHeader::kVerType) {
        LOG_ERROR(tr("WREN Recv, VerType does is invalid"));
        bad = true;
    }
    if (!header.isAck()) {
        LOG_ERROR(tr("WREN Recv, it's not Acknowledge packet"));
        bad = true;
    }
    if (header.packetId() != request.header().packetId()) {
        LOG_ERROR(tr("WREN Recv, packet ID does not match"));
        bad = true;
    }
    if (header.isRead() != request.header().isRead()) {
        LOG_ERROR(tr("WREN Recv, invalid R/W flag"));
        fail(reply, WrenError::BadReply);
    }
    if (bad)
        fail(reply, WrenError::BadReply);
    if (header.isBusError()) {
        LOG_ERROR(tr("WREN Recv, Bus Error occured"));
        fail(reply, WrenError::BusError);
    }
    return reply.data();
}

void WrenAgent::fail(const WrenPacket &reply, quint32 code)
{
    // The signal follows the reply's R/W bit, not the request's.
    if (reply.header().isRead())
        emit readErrorOccured(reply.header().packetId());
    else
        emit writeErrorOccured(reply.header().packetId());
    throw WrenError{code, {}};
}
