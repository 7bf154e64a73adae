// Where the agent's requests go, as the system's socket address for the agent's socket, made once
// per target instead of once per datagram: Qt's writeDatagram() builds and frees two address
// objects for every request, which is a measurable part of a register access on loopback.
// Destinations it cannot express plainly (an IPv6 scope, a family the socket does not speak) are
// left to Qt.
#pragma once

#include <QHostAddress>

#include <sys/socket.h>

class DatagramDestination
{
public:
    // Aims at address:port for a socket whose descriptor is `fd`; invalid when the address is one
    // to leave to Qt.
    void aim(qintptr fd, const QHostAddress &address, quint16 port);
    void clear() { m_length = 0; }
    [[nodiscard]] bool isValid() const { return m_length > 0; }

    // Sends one datagram; false when the system refused it (nothing was sent).
    [[nodiscard]] bool send(qintptr fd, const char *data, qsizetype size) const;

private:
    sockaddr_storage m_address{};
    socklen_t m_length = 0;
};
