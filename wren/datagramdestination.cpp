#include "wren/datagramdestination.h"

#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <netinet/in.h>

void DatagramDestination::aim(qintptr fd, const QHostAddress &address, quint16 port)
{
    clear();
    sockaddr_storage local{};
    socklen_t localLength = sizeof local;
    if (fd < 0 || ::getsockname(int(fd), reinterpret_cast<sockaddr *>(&local), &localLength) != 0 ||
        !address.scopeId().isEmpty())
        return;
    bool isIPv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIPv4);
    if (local.ss_family == AF_INET && isIPv4) {
        auto *to = reinterpret_cast<sockaddr_in *>(&m_address);
        *to = {};
        to->sin_family = AF_INET;
        to->sin_port = qToBigEndian(port);
        to->sin_addr.s_addr = qToBigEndian(ipv4);
        m_length = sizeof *to;
    } else if (local.ss_family == AF_INET6 &&
               (isIPv4 || address.protocol() == QAbstractSocket::IPv6Protocol)) {
        auto *to = reinterpret_cast<sockaddr_in6 *>(&m_address);
        *to = {};
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
        }
        m_length = sizeof *to;
    }
}

bool DatagramDestination::send(qintptr fd, const char *data, qsizetype size) const
{
    // A datagram leaves whole or not at all.
    for (;;) {
        if (::sendto(int(fd), data, size_t(size), 0, reinterpret_cast<const sockaddr *>(&m_address),
                     m_length) >= 0)
            return true;
        if (errno != EINTR)
            return false;
    }
}
