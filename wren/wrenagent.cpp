#include "wren/wrenagent.h"

#include "app/accessgate.h"
#include "app/devicetarget.h"
#include "app/log.h"
#include "wren/wrenpacket.h"
#include "wren/wrenreport.h"
#include "wren/wrensocket.h"

#include <QDeadlineTimer>
#include <QPointer>

#include <algorithm>
#include <utility>

namespace {
constexpr quint32 kCommandKindRegister = 1;
// Larger than any reply (header and 255 data bytes); a longer datagram is cut here, which changes
// none of the checks.
constexpr qint64 kMaxDatagramBytes = 2048;
// A device on the local network answers within microseconds: a wait this short on the socket alone
// catches most replies without a round of the event loop, and is far too short for the window to
// notice.
constexpr int kQuickWaitUs = 1000;
constexpr int kDatagramsPerTurn = 64;
constexpr qsizetype kReasonsKept = 8;

// An IPv4 sender as the user knows it, not in the IPv4-mapped form of a dual-stack socket.
QString plainAddress(const QHostAddress &address)
{
    bool isIPv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIPv4);
    return isIPv4 ? QHostAddress(ipv4).toString() : address.toString();
}
} // namespace

WrenAgent::WrenAgent(QObject *parent)
    : QObject(parent), m_gate(new AccessGate(this)),
      m_datagram(kMaxDatagramBytes, Qt::Uninitialized)
{
}

void WrenAgent::setTarget(const QHostAddress &address, quint16 udpPort)
{
    m_targetAddress = address;
    if (udpPort == m_targetPort) {
        if (m_socket)
            m_socket->aim(address, udpPort);
        return;
    }
    if (m_socket) {
        // An access waiting on it further down the stack lets it go on its own.
        if (m_gate->isWaiting())
            m_socket->deleteLater();
        else
            delete m_socket;
        m_socket = nullptr;
    }
    m_targetPort = udpPort;
    m_socket = new WrenSocket(kQuickWaitUs, this);
    if (!m_socket->isBound())
        LOG_ERROR(tr("UDP socket bind error"));
    m_socket->aim(address, udpPort);
}

void WrenAgent::follow(const DeviceTarget *target)
{
    if (m_followed)
        disconnect(m_followed, nullptr, this, nullptr);
    m_followed = target;
    if (!target)
        return;
    const auto aim = [this, target] { setTarget(target->address(), target->udpPort()); };
    connect(target, &DeviceTarget::changed, this, aim);
    connect(target, &QObject::destroyed, this, [this] { m_followed = nullptr; });
    aim();
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
    const WrenHeader header(kCommandKindRegister, 0, 0, 0, id, quint8(data.size()), address);
    const WrenPacket request(header, data, remote);
    send(request);
    return awaitReply(request, timeoutMs);
}

QByteArray WrenAgent::read(quint32 address, quint8 length, int timeoutMs, bool remote)
{
    refuseNestedAccess();
    AccessGate::Hold hold(m_gate);
    const quint8 id = takePacketId();
    const WrenHeader header(kCommandKindRegister, 1, 0, 0, id, length, address);
    const WrenPacket request(header, remote);
    send(request);
    return awaitReply(request, timeoutMs);
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

void WrenAgent::send(const WrenPacket &request)
{
    // Without a target there is no socket: the access fails like an unsent datagram.
    QString why;
    if (!m_socket) {
        why = tr("no target UDP port is set");
    } else {
        if (m_socket->send(request.toByteArray()))
            return;
        why = tr("Unable to send a message");
    }
    LOG_ERROR(request.header().isRead() ? tr("WREN send, fail to send read command packet")
                                        : tr("WREN send, fail to send write command packet"));
    throw WrenError{WrenError::Timeout, tr("The request could not be sent: %1").arg(why), true};
}

QByteArray WrenAgent::awaitReply(const WrenPacket &request, int timeoutMs)
{
    const QPointer<WrenSocket> socket = m_socket;
    // What a peer's datagrams leave here is bounded: a count, and a few distinct reasons.
    qsizetype discarded = 0;
    QStringList reasons;
    const QDeadlineTimer deadline(std::max(timeoutMs, 0), Qt::PreciseTimer);
    // The first read waits on the socket alone for a moment: a device nearby has answered by then,
    // without a round of the event loop.
    bool wait = true;
    for (;;) {
        // A flood gets the event loop a turn between batches, and the deadline holds.
        qint64 size = -1;
        for (int taken = 0; socket && taken < kDatagramsPerTurn &&
                            (size = socket->receive(m_datagram.data(), m_datagram.size(),
                                                    std::exchange(wait, false))) >= 0;
             ++taken) {
            QByteArray bytes(m_datagram.constData(), size);
            const QString why = mismatch(*socket, bytes, request);
            if (why.isEmpty())
                return checkReply(request, WrenPacket(std::move(bytes), false));
            LOG_ERROR(why);
            ++discarded;
            if (reasons.size() < kReasonsKept && !reasons.contains(why))
                reasons << why;
        }
        const qint64 leftMs = deadline.remainingTime();
        if (!socket || leftMs <= 0)
            break;
        socket->setWatching(true);
        const AccessGate::WaitResult result =
            m_gate->waitFor(socket.data(), &WrenSocket::readable, int(leftMs));
        if (socket)
            socket->setWatching(false);
        if (result == AccessGate::WaitResult::Aborted)
            failTimeout(request, givenUpText());
    }
    const QString reason = discarded == 0
                               ? QString()
                               : tr("%n datagram(s) discarded: %1", nullptr, int(discarded))
                                     .arg(reasons.join(QStringLiteral("; ")));
    failTimeout(request, reason);
}

// A plain write time-out is left to the caller to report.
void WrenAgent::failTimeout(const WrenPacket &request, const QString &reason)
{
    if (request.header().isRead())
        LOG_ERROR(tr("WREN send, response to read command is timeout"));
    throw WrenError{WrenError::Timeout, reason};
}

// A datagram belongs to the request when it comes from the target and echoes the request's
// packet ID, R/W bit and address; anything else is late, duplicated or foreign.
QString WrenAgent::mismatch(const WrenSocket &socket, const QByteArray &bytes,
                            const WrenPacket &request) const
{
    if (!socket.senderIsTarget())
        return tr("WREN Recv, datagram from %1 port %2 is not from the target")
            .arg(plainAddress(socket.senderAddress()))
            .arg(socket.senderPort());
    if (bytes.size() < WrenHeader::headerSize())
        return tr("WREN Recv, datagram too short for a header");
    const WrenHeader reply(bytes);
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
        fail(WrenError::ShortReply, {tr("WREN Recv, lack of data packet")});
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
        fail(WrenError::BadReply, bad);
    if (header.isBusError()) {
        LOG_ERROR(tr("WREN Recv, Bus Error occured"));
        fail(WrenError::BusError, {tr("WREN Recv, Bus Error occured")});
    }
    return reply.data();
}

void WrenAgent::fail(quint32 code, const QStringList &reasons)
{
    throw WrenError{code, reasons.join(QStringLiteral("; "))};
}
