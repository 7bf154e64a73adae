#include "wren/wrensocket.h"

#include <QSocketNotifier>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <net/if.h>
#include <netinet/in.h>
#include <unistd.h>

namespace {

int openSocket()
{
    const int fd = ::socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int no = 0;
    ::setsockopt(fd, IPPROTO_IPV6, IPV6_V6ONLY, &no, sizeof no);
    return fd;
}

int familyOf(int fd)
{
    sockaddr_storage local{};
    socklen_t length = sizeof local;
    return fd >= 0 && ::getsockname(fd, reinterpret_cast<sockaddr *>(&local), &length) == 0
               ? local.ss_family
               : AF_UNSPEC;
}

// The interface index of an IPv6 scope given by name or number; 0 when there is no such one.
quint32 scopeIndex(const QString &scope)
{
    bool isNumber = false;
    const quint32 index = scope.toUInt(&isNumber);
    return isNumber ? index : ::if_nametoindex(scope.toLatin1().constData());
}

} // namespace

WrenSocket::WrenSocket(int quickWaitUs, QObject *parent) : QObject(parent), m_fd(openSocket())
{
    if (m_fd < 0)
        return;
    // Broadcast addresses are allowed, as on any UDP socket of the program.
    const int yes = 1;
    ::setsockopt(m_fd, SOL_SOCKET, SO_BROADCAST, &yes, sizeof yes);
    const timeval quickWait{quickWaitUs / 1000000, quickWaitUs % 1000000};
    ::setsockopt(m_fd, SOL_SOCKET, SO_RCVTIMEO, &quickWait, sizeof quickWait);
    sockaddr_storage any{};
    any.ss_family = sa_family_t(familyOf(m_fd));
    const socklen_t length = any.ss_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    ::bind(m_fd, reinterpret_cast<const sockaddr *>(&any), length);
    m_notifier = new QSocketNotifier(m_fd, QSocketNotifier::Read, this);
    m_notifier->setEnabled(false);
    connect(m_notifier, &QSocketNotifier::activated, this, &WrenSocket::readable);
}

WrenSocket::~WrenSocket()
{
    // The notifier must let go of the descriptor before it is closed.
    delete m_notifier;
    if (m_fd >= 0)
        ::close(m_fd);
}

quint16 WrenSocket::localPort() const
{
    sockaddr_storage local{};
    socklen_t length = sizeof local;
    if (m_fd < 0 || ::getsockname(m_fd, reinterpret_cast<sockaddr *>(&local), &length) != 0)
        return 0;
    return local.ss_family == AF_INET6
               ? qFromBigEndian(reinterpret_cast<const sockaddr_in6 *>(&local)->sin6_port)
               : qFromBigEndian(reinterpret_cast<const sockaddr_in *>(&local)->sin_port);
}

void WrenSocket::aim(const QHostAddress &address, quint16 port)
{
    m_target = {};
    m_targetLength = 0;
    bool isIPv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIPv4);
    const int family = familyOf(m_fd);
    if (family == AF_INET && isIPv4) {
        auto *to = reinterpret_cast<sockaddr_in *>(&m_target);
        to->sin_family = AF_INET;
        to->sin_port = qToBigEndian(port);
        to->sin_addr.s_addr = qToBigEndian(ipv4);
        m_targetLength = sizeof *to;
    } else if (family == AF_INET6 &&
               (isIPv4 || address.protocol() == QAbstractSocket::IPv6Protocol)) {
        auto *to = reinterpret_cast<sockaddr_in6 *>(&m_target);
        to->sin6_family = AF_INET6;
        to->sin6_port = qToBigEndian(port);
        if (isIPv4) {
            // A dual-stack socket reaches an IPv4 device at its IPv4-mapped address ::ffff:a.b.c.d.
            to->sin6_addr.s6_addr[10] = 0xff;
            to->sin6_addr.s6_addr[11] = 0xff;
            const quint32 network = qToBigEndian(ipv4);
            std::memcpy(&to->sin6_addr.s6_addr[12], &network, sizeof network);
        } else {
            const Q_IPV6ADDR ipv6 = address.toIPv6Address();
            std::memcpy(&to->sin6_addr, &ipv6, sizeof ipv6);
            if (!address.scopeId().isEmpty() &&
                (to->sin6_scope_id = scopeIndex(address.scopeId())) == 0)
                return;
        }
        m_targetLength = sizeof *to;
    }
}

bool WrenSocket::send(const QByteArray &datagram) const
{
    if (m_fd < 0 || m_targetLength == 0)
        return false;
    // A datagram leaves whole or not at all.
    for (;;) {
        if (::sendto(m_fd, datagram.constData(), size_t(datagram.size()), 0,
                     reinterpret_cast<const sockaddr *>(&m_target), m_targetLength) >= 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}

qint64 WrenSocket::receive(char *buffer, qint64 capacity, bool wait)
{
    for (;;) {
        m_senderLength = sizeof m_sender;
        const ssize_t size = ::recvfrom(m_fd, buffer, size_t(capacity), wait ? 0 : MSG_DONTWAIT,
                                        reinterpret_cast<sockaddr *>(&m_sender), &m_senderLength);
        if (size >= 0 || errno != EINTR)
            return size;
    }
}

bool WrenSocket::senderIsTarget() const
{
    if (m_senderLength != m_targetLength || m_sender.ss_family != m_target.ss_family)
        return false;
    if (m_target.ss_family == AF_INET) {
        const auto *from = reinterpret_cast<const sockaddr_in *>(&m_sender);
        const auto *to = reinterpret_cast<const sockaddr_in *>(&m_target);
        return from->sin_port == to->sin_port && from->sin_addr.s_addr == to->sin_addr.s_addr;
    }
    const auto *from = reinterpret_cast<const sockaddr_in6 *>(&m_sender);
    const auto *to = reinterpret_cast<const sockaddr_in6 *>(&m_target);
    return from->sin6_port == to->sin6_port &&
           std::memcmp(&from->sin6_addr, &to->sin6_addr, sizeof to->sin6_addr) == 0;
}

QHostAddress WrenSocket::senderAddress() const
{
    return QHostAddress(reinterpret_cast<const sockaddr *>(&m_sender));
}

quint16 WrenSocket::senderPort() const
{
    return m_sender.ss_family == AF_INET6
               ? qFromBigEndian(reinterpret_cast<const sockaddr_in6 *>(&m_sender)->sin6_port)
               : qFromBigEndian(reinterpret_cast<const sockaddr_in *>(&m_sender)->sin_port);
}

void WrenSocket::setWatching(bool watching)
{
    if (m_notifier)
        m_notifier->setEnabled(watching);
}
