// The agent's UDP socket: a plain system socket rather than a QUdpSocket. Qt keeps its sockets
// non-blocking, so every reply cost a poll() before the read and Qt's datagram read on top, about
// a tenth of a register access on loopback. This socket blocks for a moment in recvfrom() for the
// reply a nearby device sends at once, and leaves longer waits to the event loop through a notifier
// that is on only while an access waits. The target's socket address is made once per target.
#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QObject>

#include <sys/socket.h>

class QSocketNotifier;

class WrenSocket : public QObject
{
    Q_OBJECT

public:
    // A dual-stack socket (IPv4 alone where the system has no IPv6) on a port the system picks; a
    // receive that waits blocks for at most quickWaitUs.
    explicit WrenSocket(int quickWaitUs, QObject *parent = nullptr);
    ~WrenSocket() override;
    WrenSocket(const WrenSocket &) = delete;
    WrenSocket &operator=(const WrenSocket &) = delete;

    [[nodiscard]] bool isBound() const { return localPort() != 0; }
    [[nodiscard]] quint16 localPort() const;

    // Where send() goes. An address this socket cannot reach (an IPv6 one on an IPv4 socket, an
    // unknown scope) makes every send fail.
    void aim(const QHostAddress &address, quint16 port);
    // Sends one datagram whole; false when the system refused it (nothing was sent).
    [[nodiscard]] bool send(const QByteArray &datagram) const;

    // Reads one datagram into buffer, cut at capacity: waits for the quick wait when `wait`, else
    // takes only what is there. Its size, or -1 when none came.
    qint64 receive(char *buffer, qint64 capacity, bool wait);
    // The sender of the datagram received last.
    [[nodiscard]] bool senderIsTarget() const;
    [[nodiscard]] QHostAddress senderAddress() const;
    [[nodiscard]] quint16 senderPort() const;

    // While watching, readable() is emitted by the event loop as long as a datagram waits.
    void setWatching(bool watching);

signals:
    void readable();

private:
    int m_fd = -1;
    QSocketNotifier *m_notifier = nullptr;
    sockaddr_storage m_target{};
    socklen_t m_targetLength = 0;
    sockaddr_storage m_sender{};
    socklen_t m_senderLength = 0;
};
