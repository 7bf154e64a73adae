// The one register-access client: sends one WREN request over UDP, waits for the reply that belongs
// to it (through the access gate, so the window keeps painting), checks it in a fixed order and
// returns its data or throws WrenError.
#pragma once

#include "wren/wrenerror.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QStringList>

class AccessGate;
class DeviceTarget;
class WrenPacket;
class WrenSocket;

// Time-out every caller passes to an access.
inline constexpr int kAccessTimeoutMs = 10000;

class WrenAgent : public QObject
{
    Q_OBJECT

public:
    static constexpr int kAccessTimeoutMs = ::kAccessTimeoutMs;

    explicit WrenAgent(QObject *parent = nullptr);

    // Target: a new port replaces the socket, a new address alone keeps it.
    void setTarget(const QHostAddress &address, quint16 udpPort);
    [[nodiscard]] QHostAddress targetAddress() const { return m_targetAddress; }
    [[nodiscard]] quint16 targetPort() const { return m_targetPort; }
    // Aims the agent at `target` now and whenever it changes: the one road by which the program's
    // target reaches the agent. Null stops following.
    void follow(const DeviceTarget *target);
    // Local port of the current socket, 0 while there is none or it is unbound.
    [[nodiscard]] quint16 localPort() const;

    // The gate every device operation of the program goes through (owned by the agent): register
    // accesses here, module exchanges and server commands in their own code.
    [[nodiscard]] AccessGate *gate() const { return m_gate; }

    // Accesses; both wait for at most timeoutMs and throw WrenError when no good reply came. An
    // access asked for while another one waits is refused (WrenError::Timeout, nothing sent).
    QByteArray write(quint32 address, const QByteArray &data, int timeoutMs, bool remote = false);
    QByteArray read(quint32 address, quint8 length, int timeoutMs, bool remote = false);

private:
    [[nodiscard]] quint8 takePacketId();
    void refuseNestedAccess();
    void send(const WrenPacket &request);
    QByteArray awaitReply(const WrenPacket &request, int timeoutMs);
    [[noreturn]] void failTimeout(const WrenPacket &request, const QString &reason);
    // Why a datagram is not the reply to `request`; empty when it is.
    [[nodiscard]] QString mismatch(const WrenSocket &socket, const QByteArray &bytes,
                                   const WrenPacket &request) const;
    QByteArray checkReply(const WrenPacket &request, const WrenPacket &reply);
    [[noreturn]] static void fail(quint32 code, const QStringList &reasons);

    AccessGate *m_gate = nullptr;
    quint32 m_packetIdCounter = 0;
    WrenSocket *m_socket = nullptr;
    QHostAddress m_targetAddress{QHostAddress::LocalHost};
    const DeviceTarget *m_followed = nullptr;
    quint16 m_targetPort = 0;
    // Reused by every access: a datagram is read here and only its bytes are copied out.
    QByteArray m_datagram;
};
