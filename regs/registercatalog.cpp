#include "regs/registercatalog.h"

#include "regs/devicemap.h"

#include <QRegularExpression>

#include <algorithm>

RegisterCatalog::RegisterCatalog()
{
    m_maps.append(DeviceMap::map());
    rebuild();
}

std::optional<MapError> RegisterCatalog::add(const RegisterMap &map)
{
    RegisterMap all = map;
    for (const RegisterMap &loaded : std::as_const(m_maps))
        for (const RegisterBlock &block : loaded.blocks) {
            RegisterBlock other = block;
            other.line = 0;
            for (Register &r : other.registers)
                r.line = 0;
            all.blocks.append(other);
        }
    if (std::optional<MapError> failure = all.check())
        return MapError{map.source, failure->line,
                        tr("%1 (with the maps already loaded)").arg(failure->reason)};
    m_maps.append(map);
    rebuild();
    return std::nullopt;
}

std::optional<MapError> RegisterCatalog::loadFile(const QString &fileName)
{
    MapResult result = RegisterMapParser::load(fileName);
    if (const MapError *failure = std::get_if<MapError>(&result))
        return *failure;
    return add(std::get<RegisterMap>(result));
}

QStringList RegisterCatalog::environmentMaps()
{
    return qEnvironmentVariable(kMapsVariable).split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

void RegisterCatalog::rebuild()
{
    m_entries.clear();
    for (const RegisterMap &map : std::as_const(m_maps))
        for (const RegisterBlock &block : map.blocks)
            for (const Register &reg : block.registers)
                m_entries.append({block.name, reg, block.base + reg.offset, map.source});
    std::stable_sort(
        m_entries.begin(), m_entries.end(),
        [](const RegisterEntry &a, const RegisterEntry &b) { return a.address < b.address; });
    m_byName.clear();
    for (int i = 0; i < m_entries.size(); ++i)
        m_byName.insert(m_entries.at(i).name(), i);
}

int RegisterCatalog::indexOf(const QString &registerName) const
{
    QString name = registerName;
    for (const RegisterMap &map : m_maps)
        name = map.aliases.value(name, name);
    return m_byName.value(name, -1);
}

std::optional<RegisterTarget> RegisterCatalog::resolve(const QString &name, QString *error) const
{
    RegisterTarget target;
    target.entry = indexOf(name);
    if (target.entry >= 0)
        return target;
    const int dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot > 0) {
        target.entry = indexOf(name.left(dot));
        if (target.entry >= 0) {
            target.field = entry(target.entry).reg.fieldIndex(name.mid(dot + 1));
            if (target.field >= 0)
                return target;
            *error = tr("Register %1 has no field %2").arg(name.left(dot), name.mid(dot + 1));
            return std::nullopt;
        }
    }
    *error = tr("No register is named %1; see: mavix regs").arg(name);
    return std::nullopt;
}

QList<int> RegisterCatalog::match(const QString &pattern) const
{
    QList<int> result;
    const bool wildcard = pattern.contains(QLatin1Char('*')) || pattern.contains(QLatin1Char('?'));
    const QRegularExpression expression(
        QRegularExpression::wildcardToRegularExpression(wildcard ? pattern : QStringLiteral("*")));
    const int aliased = wildcard || pattern.isEmpty() ? -1 : indexOf(pattern);
    for (int i = 0; i < m_entries.size(); ++i) {
        const QString name = m_entries.at(i).name();
        const bool hit =
            pattern.isEmpty() || i == aliased ||
            (wildcard ? expression.match(name).hasMatch()
                      : name == pattern || name.startsWith(pattern + QLatin1Char('.')) ||
                            m_entries.at(i).block == pattern);
        if (hit)
            result.append(i);
    }
    return result;
}
