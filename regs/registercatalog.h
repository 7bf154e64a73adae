// The registers a front end knows: the device's built-in map and the maps loaded beside it, as one
// list by address, with lookup by name ("block.register" or "block.register.field") and by
// pattern. The window, mavix and scripts all read registers through it.
#pragma once

#include "regs/registermap.h"
#include "regs/registermapparser.h"

#include <QCoreApplication>
#include <QStringList>

struct RegisterEntry
{
    QString block;
    Register reg;
    quint32 address = 0;
    QString source; // the map it came from

    [[nodiscard]] QString name() const { return block + QLatin1Char('.') + reg.name; }
};

// A register and, when named, one of its fields (-1: the whole register).
struct RegisterTarget
{
    int entry = -1;
    int field = -1;
};

class RegisterCatalog
{
    Q_DECLARE_TR_FUNCTIONS(RegisterCatalog)

public:
    // Files named in this variable (separated by ':') are loaded by every front end.
    static constexpr char kMapsVariable[] = "MAVIX_MAPS";

    RegisterCatalog(); // with the built-in map

    // Adds a map beside the others; refused (and nothing added) when one of its block names is
    // taken or one of its registers overlaps a loaded one.
    [[nodiscard]] std::optional<MapError> add(const RegisterMap &map);
    [[nodiscard]] std::optional<MapError> loadFile(const QString &fileName);
    [[nodiscard]] static QStringList environmentMaps();

    [[nodiscard]] const QList<RegisterMap> &maps() const { return m_maps; }
    [[nodiscard]] const QList<RegisterEntry> &entries() const { return m_entries; }
    [[nodiscard]] const RegisterEntry &entry(int index) const { return m_entries.at(index); }

    // NAME or NAME.FIELD; aliases are followed. Empty with *error set when nothing has the name.
    [[nodiscard]] std::optional<RegisterTarget> resolve(const QString &name, QString *error) const;
    // Entries whose name matches: all for an empty pattern, a block or register name and what it
    // holds, or a wildcard pattern ("settings.*port*").
    [[nodiscard]] QList<int> match(const QString &pattern) const;
    [[nodiscard]] int indexOf(const QString &registerName) const;

private:
    void rebuild();

    QList<RegisterMap> m_maps;
    QList<RegisterEntry> m_entries;
    QHash<QString, int> m_byName;
};
