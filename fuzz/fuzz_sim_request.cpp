// The emulator's request parser: each input is one datagram to mavix-sim, which must answer or
// ignore it and stay up.
#include "fuzzinput.h"
#include "sim/mavixsim.h"

#include <QNetworkDatagram>
#include <QUdpSocket>

namespace {

struct Bench
{
    Bench()
    {
        fuzzApplication();
        if (!sim.start(SimOptions::anyPort()))
            __builtin_trap();
        (void)client.bind(QHostAddress::LocalHost, 0);
    }
    MavixSim sim;
    QUdpSocket client;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Bench bench;
    (void)bench.client.writeDatagram(fuzzBytes(data, size), QHostAddress::LocalHost,
                                     bench.sim.udpPort());
    // Loopback delivers at once: a few turns of the event loop serve the datagram.
    for (int turn = 0; turn < 3; ++turn)
        QCoreApplication::processEvents();
    while (bench.client.hasPendingDatagrams())
        (void)bench.client.receiveDatagram();
    return 0;
}
