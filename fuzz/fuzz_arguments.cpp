// The command line: the argument grammar, the -target: split and the address and port rules it
// leads to. The input is the arguments, separated by NUL bytes.
#include "app/startupoptions.h"
#include "app/validators.h"
#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QStringList arguments;
    for (const QByteArray &part : fuzzBytes(data, size).split('\0'))
        arguments << QString::fromUtf8(part);
    int warnings = 0;
    const StartupOptions options =
        parseStartupArguments(arguments, [&warnings](const QString &) { ++warnings; });
    if (options.serverMode && (options.uiPort < 0 || options.uiPort > 65535))
        __builtin_trap(); // server mode only ever starts on a usable port
    const TargetParts parts = splitTarget(options.target);
    (void)checkTargetAddress(parts.host);
    (void)checkDeviceAddress(parts.host);
    (void)parsePort(parts.udpPort);
    (void)parsePort(parts.tcpPort);
    return 0;
}
