// The agent's reply checks: each input is sent, from the target's address and port, as the reply
// to the read the agent makes next. Byte 2 (the packet ID) is set to the ID the agent will use,
// unless the input's first bit asks for a foreign ID, so that every later check is reached.
#include "app/accessgate.h"
#include "fuzzinput.h"
#include "wren/wrenagent.h"

#include <QNetworkDatagram>
#include <QUdpSocket>

namespace {

struct Peer
{
    Peer()
    {
        fuzzApplication();
        (void)device.bind(QHostAddress::LocalHost, 0);
        agent.setTarget(QHostAddress::LocalHost, device.localPort());
    }
    QUdpSocket device;
    WrenAgent agent;
    quint32 nextId = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Peer peer;
    QByteArray reply = fuzzBytes(data, size);
    if (reply.size() > 2 && !(reply.at(0) & 0x01))
        reply[2] = char(peer.nextId);
    ++peer.nextId;
    (void)peer.device.writeDatagram(reply, QHostAddress::LocalHost, peer.agent.localPort());
    try {
        // A reply needs 16 bytes at 0x1000; nothing else may be accepted.
        const QByteArray read = peer.agent.read(0x1000, 16, 0);
        if (read.size() != 16)
            __builtin_trap();
    } catch (const WrenError &) {
    }
    // The request itself lands at the device; drop it for the next round.
    while (peer.device.hasPendingDatagrams())
        (void)peer.device.receiveDatagram();
    return 0;
}
