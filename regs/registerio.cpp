#include "regs/registerio.h"

#include "app/accessgate.h"
#include "regs/registervalue.h"
#include "settings/registerrange.h"
#include "wren/wrenagent.h"

#include <QMap>

#include <algorithm>

RegisterIo::RegisterIo(const RegisterCatalog &catalog, WrenAgent *agent, int timeoutMs)
    : m_catalog(catalog), m_agent(agent), m_timeoutMs(timeoutMs)
{
}

QList<ReadSpan> RegisterIo::plan(const RegisterCatalog &catalog, const QList<int> &entries)
{
    // The catalog's entries are in address order: sorted indexes are sorted addresses.
    QList<int> sorted;
    for (const int index : entries)
        if (RegisterMap::readable(catalog.entry(index).reg.access))
            sorted.append(index);
    std::sort(sorted.begin(), sorted.end());
    sorted.resize(std::unique(sorted.begin(), sorted.end()) - sorted.begin());
    QList<ReadSpan> spans;
    for (const int index : std::as_const(sorted)) {
        const RegisterEntry &e = catalog.entry(index);
        if (!spans.isEmpty()) {
            ReadSpan &last = spans.last();
            if (quint64(last.address) + quint64(last.length) == e.address &&
                last.length + e.reg.size <= kMaxAccessBytes) {
                last.length += e.reg.size;
                last.entries.append(index);
                continue;
            }
        }
        spans.append({e.address, e.reg.size, {index}});
    }
    return spans;
}

QHash<int, quint64> RegisterIo::read(const QList<int> &entries)
{
    QHash<int, quint64> values;
    AccessGate::Hold hold(m_agent->gate());
    for (const ReadSpan &span : plan(m_catalog, entries)) {
        const QByteArray bytes = m_agent->read(span.address, quint8(span.length), m_timeoutMs);
        for (const int index : span.entries) {
            const RegisterEntry &e = m_catalog.entry(index);
            values.insert(index, RegisterValue::fromBytes(
                                     bytes.mid(int(e.address - span.address), e.reg.size)));
        }
    }
    return values;
}

QString RegisterIo::checkWrite(int entry, int field) const
{
    const RegisterEntry &e = m_catalog.entry(entry);
    if (!RegisterMap::writable(e.reg.access))
        return tr("%1 is read-only").arg(e.name());
    if (field >= 0 && !RegisterMap::writable(e.reg.fields.at(field).access))
        return tr("%1.%2 is read-only").arg(e.name(), e.reg.fields.at(field).name);
    const QString area = RegisterRange::checkWrite(e.address, quint32(e.reg.size), m_expert);
    return area.isEmpty() ? QString() : tr("%1: %2").arg(e.name(), area);
}

QString RegisterIo::checkWrites(const QList<FieldWrite> &writes) const
{
    for (const FieldWrite &write : writes)
        if (const QString refusal = checkWrite(write.target.entry, write.target.field);
            !refusal.isEmpty())
            return refusal;
    return {};
}

QList<RegisterChange> RegisterIo::apply(const QList<FieldWrite> &writes)
{
    // Per register, in address order: the writes to it, and whether its other bits must be read.
    QMap<quint32, int> order;
    QHash<int, QList<FieldWrite>> byEntry;
    QList<int> toRead;
    for (const FieldWrite &write : writes) {
        const int index = write.target.entry;
        order.insert(m_catalog.entry(index).address, index);
        byEntry[index].append(write);
    }
    for (const int index : std::as_const(order)) {
        const bool wholeWrite = std::any_of(byEntry[index].cbegin(), byEntry[index].cend(),
                                            [](const FieldWrite &w) { return w.target.field < 0; });
        if (!wholeWrite && RegisterMap::readable(m_catalog.entry(index).reg.access))
            toRead.append(index);
    }
    AccessGate::Hold hold(m_agent->gate());
    const QHash<int, quint64> before = read(toRead);
    QList<RegisterChange> changes;
    for (const int index : std::as_const(order)) {
        const Register &reg = m_catalog.entry(index).reg;
        RegisterChange change{index, std::nullopt, 0};
        if (before.contains(index))
            change.before = before.value(index);
        // A write-only register cannot be read: its other fields take the reset value.
        quint64 value = change.before.value_or(reg.reset.value_or(0));
        for (const FieldWrite &write : byEntry[index])
            value = write.target.field < 0
                        ? write.value
                        : reg.fields.at(write.target.field).insert(value, write.value);
        change.after = value;
        (void)m_agent->write(m_catalog.entry(index).address,
                             RegisterValue::toBytes(value, reg.size), m_timeoutMs);
        changes.append(change);
    }
    return changes;
}

void RegisterIo::writeValues(const QHash<int, quint64> &values)
{
    QMap<quint32, int> order;
    for (auto it = values.cbegin(); it != values.cend(); ++it)
        order.insert(m_catalog.entry(it.key()).address, it.key());
    AccessGate::Hold hold(m_agent->gate());
    quint32 address = 0;
    QByteArray pending;
    const auto flush = [&] {
        if (!pending.isEmpty())
            (void)m_agent->write(address, pending, m_timeoutMs);
        pending.clear();
    };
    for (const int index : std::as_const(order)) {
        const RegisterEntry &e = m_catalog.entry(index);
        if (pending.isEmpty() || quint64(address) + quint64(pending.size()) != e.address ||
            pending.size() + e.reg.size > kMaxAccessBytes) {
            flush();
            address = e.address;
        }
        pending += RegisterValue::toBytes(values.value(index), e.reg.size);
    }
    flush();
}
