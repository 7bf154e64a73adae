// The server's command interpreter: each input is one command line, run against mavix-sim on its
// own thread. Lines that name files are run in a scratch folder, and never with a path separator.
#include "fuzzinput.h"
#include "server/commandinterpreter.h"
#include "settings/mavixsetting.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QDir>
#include <QTemporaryDir>

namespace {

struct Bench
{
    Bench()
    {
        fuzzApplication();
        if (!simThread.start() || !scratch.isValid())
            __builtin_trap();
        QDir::setCurrent(scratch.path());
        // The interpreter aims the agent at the program-wide target before each access.
        MavixSetting target;
        target.ipAddress = QStringLiteral("127.0.0.1");
        target.udpPort = simThread.udpPort();
        MavixSetting::setCurrent(target);
        agent.setTarget(QHostAddress::LocalHost, simThread.udpPort());
        interpreter.setAgent(&agent);
        interpreter.setAccessTimeoutMs(200);
    }
    QTemporaryDir scratch;
    SimThread simThread;
    WrenAgent agent;
    CommandInterpreter interpreter;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Bench bench;
    const QByteArray bytes = fuzzBytes(data, size);
    if (bytes.contains('/') || bytes.contains('\\'))
        return 0;
    const QString line = QString::fromUtf8(bytes);
    (void)bench.interpreter.run(CommandInterpreter::withoutTerminator(line));
    // Whatever the line, the agent still talks only to the emulator.
    if (bench.agent.targetPort() != bench.simThread.udpPort() ||
        bench.agent.targetAddress() != QHostAddress(QHostAddress::LocalHost))
        __builtin_trap();
    return 0;
}
