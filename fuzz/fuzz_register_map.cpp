// A register map file as a user or a tool chain writes it (TOML or IP-XACT): parsed and checked,
// and a map that stands is added beside the built-in one and read back as a snapshot.
#include "fuzzinput.h"
#include "regs/ipxactimport.h"
#include "regs/registercatalog.h"
#include "regs/registermapparser.h"
#include "regs/registersnapshot.h"
#include "regs/registervalue.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray text = fuzzBytes(data, size);
    const MapResult result = text.trimmed().startsWith('<')
                                 ? IpxactImport::parse(text, QStringLiteral("fuzz.xml"))
                                 : RegisterMapParser::parse(text, QStringLiteral("fuzz.toml"));
    RegisterCatalog catalog;
    (void)RegisterSnapshot::parse(catalog, text, QStringLiteral("fuzz.toml"));
    const RegisterMap *map = std::get_if<RegisterMap>(&result);
    if (!map || catalog.add(*map))
        return 0;
    SnapshotValues values;
    for (int i = 0; i < catalog.entries().size(); ++i) {
        const Register &reg = catalog.entry(i).reg;
        const quint64 raw = RegisterValue::fromBytes(QByteArray(reg.size, '\xA5'));
        values.insert(i, raw);
        for (const RegisterField &field : reg.fields)
            (void)RegisterValue::format(field, raw);
    }
    // A snapshot of the map reads back the same values.
    const QByteArray snapshot = RegisterSnapshot::format(catalog, values, QStringLiteral("fuzz"));
    const SnapshotResult back = RegisterSnapshot::parse(catalog, snapshot, QStringLiteral("s"));
    const SnapshotValues *read = std::get_if<SnapshotValues>(&back);
    if (!read || *read != values)
        __builtin_trap();
    return 0;
}
