// bench_agent_reads PORT COUNT LENGTH: COUNT register reads of LENGTH bytes at 0 through the tool's
// agent from 127.0.0.1 to the given UDP port, as the command-line tool makes them; prints
// "agent: N reads/s". The baseline of bench_python.py, which starts the emulator.
#include "app/accessgate.h"
#include "app/eventdispatcher.h"
#include "wren/wrenagent.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>

int main(int argc, char *argv[])
{
    preferPlainEventDispatcher();
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const quint16 port = arguments.value(1).toUShort();
    const int count = arguments.value(2).toInt();
    const int length = arguments.value(3).toInt();
    if (port == 0 || count < 1 || length < 1 || length > 255) {
        std::fprintf(stderr, "usage: bench_agent_reads PORT COUNT LENGTH\n");
        return 1;
    }
    WrenAgent agent;
    agent.setTarget(QHostAddress::LocalHost, port);
    QElapsedTimer clock;
    clock.start();
    int failed = 0;
    for (int i = 0; i < count; ++i) {
        AccessGate::Hold hold(agent.gate());
        try {
            (void)agent.read(0, quint8(length), WrenAgent::kAccessTimeoutMs);
        } catch (const WrenError &) {
            ++failed;
        }
    }
    const double seconds = double(clock.nsecsElapsed()) / 1e9;
    std::printf("agent: %.0f reads/s (%d failed)\n", double(count) / seconds, failed);
    return failed == 0 ? 0 : 2;
}
