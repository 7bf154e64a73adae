// The hex dump typed into the Control(UDP) tab: parsed into bytes, and those bytes shown as a
// dump again, which must parse back to the same bytes.
#include "fuzzinput.h"
#include "settings/udptab.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::optional<QByteArray> bytes =
        UDPTab::parseDump(QString::fromUtf8(fuzzBytes(data, size)));
    if (!bytes || bytes->isEmpty())
        return 0;
    const QString shown = UDPTab::formatDump(0x1000, *bytes, false);
    if (UDPTab::parseDump(shown) != bytes)
        __builtin_trap();
    (void)UDPTab::formatDump(0xFFFFFFF0, *bytes, true);
    return 0;
}
