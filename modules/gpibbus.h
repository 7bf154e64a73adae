// The GPIB bus as the program drives it through the ZEL-GPIB module on the TCP data connection:
// one request unit, one reply unit per exchange, and the three transactions built from exchanges
// (send a message, receive a message, Interface Clear). Every wait goes through the access gate,
// so the window keeps painting and no other device operation starts meanwhile.
#pragma once

#include "modules/gpibunit.h"

#include <QByteArray>
#include <QObject>

#include <functional>

class AccessGate;
class QTcpSocket;

class GpibBus : public QObject
{
    Q_OBJECT

public:
    enum class Failure { None, Timeout, ErrorPacket, BadReply, Other, Aborted }; // Aborted: Esc
    Q_ENUM(Failure)

    // Each exchange waits this long for its request to leave and again for the reply.
    static constexpr int kWaitTimeoutMs = 10000;
    static constexpr quint32 kNoAddress = 0xFFFFFFFF;

    // The socket and the gate are not owned.
    GpibBus(QTcpSocket *socket, AccessGate *gate, QObject *parent = nullptr);

    // Time-outs
    void setWaitTimeoutMs(int ms) { m_waitTimeoutMs = ms; }
    [[nodiscard]] int waitTimeoutMs() const { return m_waitTimeoutMs; }

    // Delimiter choices by index: 0 none, 1 CR, 2 LF, 3 CR LF.
    [[nodiscard]] static QByteArray delimiterBytes(int index);

    // Transactions; each stops at the first failed exchange.
    // The controller talks, the target listens; the last message byte is sent with END.
    [[nodiscard]] Failure send(quint32 controller, quint32 target, const QByteArray &message);
    // The target talks, the controller listens, until the delimiter (removed from the data), END
    // or maxLength bytes (0: up to ModuleLimits::kReceiveCapBytes).
    [[nodiscard]] Failure receive(quint32 controller, quint32 target, const QByteArray &delimiter,
                                  qint64 maxLength, QByteArray *data);
    [[nodiscard]] Failure interfaceClear();

    // Bus-state memory. A receive from the talker to the listener that the bus is still addressed
    // for sends no addressing at all: on IEEE-488 a talker and a listener stay addressed until
    // the next addressing or Interface Clear, and ATN stays released after the data-mode bus
    // control. Any other receive, and every send, addresses in full.
    void resetBusState();
    [[nodiscard]] bool isAddressedFor(quint32 talker, quint32 listener) const
    {
        return m_addressed && m_talker == talker && m_listener == listener;
    }

signals:
    // Anything that may end a wait: bytes written or arrived, a state change, an error.
    void socketActivity();

private:
    [[nodiscard]] Failure exchange(const GpibUnit &request, GpibUnit *reply = nullptr);
    [[nodiscard]] Failure waitUntil(const std::function<bool()> &done);
    [[nodiscard]] Failure address(quint32 talker, quint32 listener);
    [[nodiscard]] Failure enterDataMode();
    [[nodiscard]] bool isConnected() const;

    QTcpSocket *m_socket = nullptr;
    AccessGate *m_gate = nullptr;
    int m_waitTimeoutMs = kWaitTimeoutMs;

    // Bus-state memory: the last talker and listener addressed, whether that addressing is still
    // in force, and whether ATN has been released since.
    quint32 m_talker = kNoAddress;
    quint32 m_listener = kNoAddress;
    bool m_addressed = false;
    bool m_dataMode = false;
};
