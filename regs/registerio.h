// Reads and writes named registers through the one register-access agent, for every front end.
// Reads gather neighbouring registers into as few accesses as possible (up to 255 bytes each),
// never touching a byte no register names; field writes are read-modify-write, one read and one
// write per register. Each call is one device operation under the agent's access gate. Failed
// accesses throw WrenError.
#pragma once

#include "regs/registercatalog.h"

#include <QCoreApplication>
#include <QHash>
#include <QList>

#include <optional>

class WrenAgent;

// One access that reads registers side by side.
struct ReadSpan
{
    quint32 address = 0;
    int length = 0;
    QList<int> entries;
};

// A value for a register (field -1) or one of its fields.
struct FieldWrite
{
    RegisterTarget target;
    quint64 value = 0;
};

struct RegisterChange
{
    int entry = -1;
    std::optional<quint64> before; // empty when the register could not be read first
    quint64 after = 0;
};

class RegisterIo
{
    Q_DECLARE_TR_FUNCTIONS(RegisterIo)

public:
    static constexpr int kMaxAccessBytes = 255;

    RegisterIo(const RegisterCatalog &catalog, WrenAgent *agent, int timeoutMs);

    // Writes into the device's own area (the top 64 KiB) only in expert mode.
    void setExpert(bool expert) { m_expert = expert; }

    // The accesses that read `entries` (the readable ones).
    [[nodiscard]] static QList<ReadSpan> plan(const RegisterCatalog &catalog,
                                              const QList<int> &entries);
    // Raw values by entry.
    [[nodiscard]] QHash<int, quint64> read(const QList<int> &entries);

    // Why these writes are not allowed (read-only, expert area), or an empty text.
    [[nodiscard]] QString checkWrites(const QList<FieldWrite> &writes) const;
    // Read-modify-write of fields and whole registers, in address order.
    QList<RegisterChange> apply(const QList<FieldWrite> &writes);
    // Whole values (a snapshot) written back, neighbours in one access.
    void writeValues(const QHash<int, quint64> &values);

private:
    [[nodiscard]] QString checkWrite(int entry, int field) const;

    const RegisterCatalog &m_catalog;
    WrenAgent *m_agent;
    int m_timeoutMs;
    bool m_expert = false;
};
