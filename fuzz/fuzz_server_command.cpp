// The server's command interpreter: each input is one command line, run against mavix-sim on its
// own thread. Files are named relative to the server's file folder, a scratch folder inside
// another one; whatever the line, nothing appears beside it.
#include "fuzzinput.h"
#include "server/commandinterpreter.h"
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
        if (!simThread.start() || !outside.isValid() ||
            !QDir(outside.path()).mkdir(QLatin1String(kInner)))
            __builtin_trap();
        QDir::setCurrent(outside.path());
        agent.setTarget(QHostAddress::LocalHost, simThread.udpPort());
        interpreter.setAgent(&agent);
        FileFolder folder;
        if (!folder.setPath(outside.filePath(QLatin1String(kInner))))
            __builtin_trap();
        interpreter.setFileFolder(folder);
        interpreter.setAccessTimeoutMs(200);
    }
    static constexpr char kInner[] = "inner";
    QTemporaryDir outside; // the working directory; the folder is inside: nothing else may appear
    SimThread simThread;
    WrenAgent agent;
    CommandInterpreter interpreter;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Bench bench;
    const QByteArray bytes = fuzzBytes(data, size);
    // Absolute names are refused too, but a fault there would write anywhere: they are left out.
    if (bytes.contains(" /"))
        return 0;
    const QString line = QString::fromUtf8(bytes);
    (void)bench.interpreter.run(CommandInterpreter::withoutTerminator(line));
    // Whatever the line, no file appears outside the folder (names with ".." or "/" included).
    if (QDir(bench.outside.path())
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System | QDir::Hidden) !=
        QStringList{QLatin1String(Bench::kInner)})
        __builtin_trap();
    // Whatever the line, the agent still talks only to the emulator.
    if (bench.agent.targetPort() != bench.simThread.udpPort() ||
        bench.agent.targetAddress() != QHostAddress(QHostAddress::LocalHost))
        __builtin_trap();
    return 0;
}
