// The hex dump typed into the Control(UDP) tab: parsed into bytes, and those bytes shown as a
// dump again, which must parse back to the same bytes.
#include "fuzzinput.h"
#include "settings/registerrange.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<QByteArray> bytes =
        RegisterRange::parseDump(QString::fromUtf8(fuzzBytes(data, size)));
    if (!bytes || bytes->isEmpty())
        return 0;
    const QString shown = RegisterRange::formatDump(0x1000, *bytes, false);
    if (RegisterRange::parseDump(shown) != bytes)
        __builtin_trap();
    // A dump printed with its addresses reads back the same.
    if (RegisterRange::parseDump(RegisterRange::formatDump(0xFFFFFFF0, *bytes, true)) != bytes)
        __builtin_trap();
    return 0;
}
