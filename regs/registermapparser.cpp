#include <toml++/toml.h>

#include "regs/registermapparser.h"

#include "regs/ipxactimport.h"

#include <QFile>

#include <algorithm>

#include <string_view>

namespace {

// Thrown inside this file only, turned into a MapError at the top.
struct Refusal
{
    int line;
    QString reason;
};

QString qs(std::string_view text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

int lineOf(const toml::node &node)
{
    return int(node.source().begin.line);
}

QString text(const toml::node &node, const QString &key)
{
    if (const std::optional<std::string_view> value = node.value<std::string_view>())
        return qs(*value);
    throw Refusal{lineOf(node), RegisterMapParser::tr("%1 must be a text in quotes").arg(key)};
}

// A whole number from 0 to max, as a TOML integer or as a text ("0xFFFF_FFFF_FFFF_FFFF" for
// values that TOML's signed integers cannot hold).
quint64 number(const toml::node &node, const QString &key, quint64 max)
{
    std::optional<quint64> value;
    if (const std::optional<int64_t> integer = node.value_exact<int64_t>()) {
        if (*integer >= 0)
            value = quint64(*integer);
    } else if (const std::optional<std::string_view> typed = node.value<std::string_view>()) {
        QString digits = qs(*typed).remove(QLatin1Char('_'));
        bool ok = false;
        const quint64 parsed = digits.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)
                                   ? digits.mid(2).toULongLong(&ok, 16)
                                   : digits.toULongLong(&ok, 10);
        if (ok)
            value = parsed;
    }
    if (!value || *value > max)
        throw Refusal{
            lineOf(node),
            RegisterMapParser::tr("%1 must be a whole number from 0 to %2").arg(key).arg(max)};
    return *value;
}

RegisterAccessMode access(const toml::node &node)
{
    const QString word = text(node, QStringLiteral("access"));
    if (const std::optional<RegisterAccessMode> mode = RegisterMap::parseAccess(word))
        return *mode;
    throw Refusal{lineOf(node),
                  RegisterMapParser::tr("Unknown access \"%1\" (rw, ro or wo)").arg(word)};
}

ValueFormat format(const toml::node &node)
{
    const QString word = text(node, QStringLiteral("format"));
    if (const std::optional<ValueFormat> value = RegisterMap::parseFormat(word))
        return *value;
    throw Refusal{lineOf(node),
                  RegisterMapParser::tr("Unknown format \"%1\" (hex, dec, ipv4 or mac)").arg(word)};
}

[[noreturn]] void unknownKey(const toml::key &key, const QString &where)
{
    throw Refusal{int(key.source().begin.line),
                  RegisterMapParser::tr("Unknown key \"%1\" in %2").arg(qs(key.str()), where)};
}

// "7:4", "3" or 3.
void parseBits(const toml::node &node, RegisterField &field)
{
    if (node.is_integer()) {
        field.lsb = field.msb = int(number(node, QStringLiteral("bits"), 63));
        return;
    }
    const QStringList parts = text(node, QStringLiteral("bits")).split(QLatin1Char(':'));
    bool msbOk = false;
    bool lsbOk = parts.size() <= 2;
    field.msb = parts.value(0).trimmed().toInt(&msbOk);
    field.lsb = parts.size() == 2 ? parts.at(1).trimmed().toInt(&lsbOk) : field.msb;
    if (!msbOk || !lsbOk)
        throw Refusal{lineOf(node),
                      RegisterMapParser::tr("bits must be \"MSB:LSB\" or one bit number")};
}

RegisterField parseField(const QString &name, const toml::table &table, bool *ownAccess)
{
    RegisterField field;
    *ownAccess = false;
    field.name = name;
    field.line = lineOf(table);
    bool hasBits = false;
    for (auto &&[key, node] : table) {
        const std::string_view k = key.str();
        if (k == "bits") {
            parseBits(node, field);
            hasBits = true;
        } else if (k == "access") {
            field.access = access(node);
            *ownAccess = true;
        } else if (k == "format") {
            field.format = format(node);
        } else if (k == "description") {
            field.description = text(node, QStringLiteral("description"));
        } else if (k == "values" && node.is_table()) {
            for (auto &&[valueKey, valueNode] : *node.as_table()) {
                const QString valueName = qs(valueKey.str());
                if (!RegisterMap::isValidName(valueName))
                    throw Refusal{int(valueKey.source().begin.line),
                                  RegisterMapParser::tr("Value name \"%1\" is not a name "
                                                        "(letters, digits and _)")
                                      .arg(valueName)};
                field.values.append(
                    {valueName, number(valueNode, valueName, ~quint64(0)), QString()});
            }
            std::sort(field.values.begin(), field.values.end(),
                      [](const NamedValue &a, const NamedValue &b) { return a.value < b.value; });
        } else {
            unknownKey(key, RegisterMapParser::tr("field %1").arg(name));
        }
    }
    if (!hasBits)
        throw Refusal{field.line, RegisterMapParser::tr("Field %1 has no bits").arg(name)};
    return field;
}

Register parseRegister(const QString &name, const toml::table &table)
{
    Register reg;
    reg.name = name;
    reg.line = lineOf(table);
    bool hasOffset = false;
    QList<bool> ownAccess;
    for (auto &&[key, node] : table) {
        const std::string_view k = key.str();
        if (node.is_table()) {
            reg.fields.append(parseField(qs(k), *node.as_table(), &ownAccess.emplace_back()));
        } else if (k == "offset") {
            reg.offset = quint32(number(node, QStringLiteral("offset"), 0xFFFFFFFFu));
            hasOffset = true;
        } else if (k == "size") {
            reg.size = int(number(node, QStringLiteral("size"), 0xFF));
        } else if (k == "access") {
            reg.access = access(node);
        } else if (k == "reset") {
            reg.reset = number(node, QStringLiteral("reset"), ~quint64(0));
        } else if (k == "format") {
            reg.format = format(node);
        } else if (k == "description") {
            reg.description = text(node, QStringLiteral("description"));
        } else {
            unknownKey(key, RegisterMapParser::tr("register %1").arg(name));
        }
    }
    if (!hasOffset)
        throw Refusal{reg.line, RegisterMapParser::tr("Register %1 has no offset").arg(name)};
    // A field without an access of its own has its register's.
    for (int i = 0; i < reg.fields.size(); ++i)
        if (!ownAccess.at(i))
            reg.fields[i].access = reg.access;
    return reg;
}

RegisterBlock parseBlock(const QString &name, const toml::table &table)
{
    RegisterBlock block;
    block.name = name;
    block.line = lineOf(table);
    bool hasBase = false;
    for (auto &&[key, node] : table) {
        const std::string_view k = key.str();
        if (node.is_table()) {
            block.registers.append(parseRegister(qs(k), *node.as_table()));
        } else if (k == "base") {
            block.base = quint32(number(node, QStringLiteral("base"), 0xFFFFFFFFu));
            hasBase = true;
        } else if (k == "description") {
            block.description = text(node, QStringLiteral("description"));
        } else {
            unknownKey(key, RegisterMapParser::tr("block %1").arg(name));
        }
    }
    if (!hasBase)
        throw Refusal{block.line, RegisterMapParser::tr("Block %1 has no base").arg(name)};
    return block;
}

} // namespace

MapResult RegisterMapParser::parse(const QByteArray &text, const QString &fileName)
{
    RegisterMap map;
    map.source = fileName;
    try {
        const toml::table root =
            toml::parse(std::string_view(text.constData(), size_t(text.size())));
        for (auto &&[key, node] : root) {
            if (!node.is_table())
                unknownKey(key, tr("the map (a block is a [table])"));
            map.blocks.append(parseBlock(qs(key.str()), *node.as_table()));
        }
    } catch (const toml::parse_error &error) {
        return MapError{fileName, int(error.source().begin.line), qs(error.description())};
    } catch (const Refusal &refusal) {
        return MapError{fileName, refusal.line, refusal.reason};
    }
    if (std::optional<MapError> failure = map.check())
        return *failure;
    return map;
}

MapResult RegisterMapParser::load(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return MapError{fileName, 0, tr("Cannot read the file: %1").arg(file.errorString())};
    const QByteArray text = file.readAll();
    if (text.trimmed().startsWith('<'))
        return IpxactImport::parse(text, fileName);
    return parse(text, fileName);
}
