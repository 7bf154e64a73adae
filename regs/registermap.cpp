#include "regs/registermap.h"

#include <QRegularExpression>

#include <algorithm>

namespace {

constexpr int kMaxRegisterBytes = 8;

quint64 bitsMask(int width)
{
    return width >= 64 ? ~quint64(0) : (quint64(1) << width) - 1;
}

} // namespace

quint64 RegisterField::mask() const
{
    return bitsMask(width()) << lsb;
}

quint64 RegisterField::extract(quint64 raw) const
{
    return (raw >> lsb) & bitsMask(width());
}

quint64 RegisterField::insert(quint64 raw, quint64 value) const
{
    return (raw & ~mask()) | ((value << lsb) & mask());
}

int Register::fieldIndex(const QString &fieldName) const
{
    for (int i = 0; i < fields.size(); ++i)
        if (fields.at(i).name == fieldName)
            return i;
    return -1;
}

QString MapError::text() const
{
    return line > 0 ? QStringLiteral("%1:%2: %3").arg(file).arg(line).arg(reason)
                    : QStringLiteral("%1: %2").arg(file, reason);
}

MapError RegisterMap::error(int line, const QString &reason) const
{
    return {source, line, reason};
}

std::optional<RegisterAccessMode> RegisterMap::parseAccess(const QString &word)
{
    const QString w = word.trimmed().toLower();
    if (w == QLatin1String("rw") || w == QLatin1String("read-write") ||
        w == QLatin1String("read-writeonce"))
        return RegisterAccessMode::ReadWrite;
    if (w == QLatin1String("ro") || w == QLatin1String("read-only"))
        return RegisterAccessMode::ReadOnly;
    if (w == QLatin1String("wo") || w == QLatin1String("write-only") ||
        w == QLatin1String("writeonce"))
        return RegisterAccessMode::WriteOnly;
    return std::nullopt;
}

QString RegisterMap::accessWord(RegisterAccessMode access)
{
    switch (access) {
    case RegisterAccessMode::ReadOnly:
        return QStringLiteral("ro");
    case RegisterAccessMode::WriteOnly:
        return QStringLiteral("wo");
    case RegisterAccessMode::ReadWrite:
        break;
    }
    return QStringLiteral("rw");
}

std::optional<ValueFormat> RegisterMap::parseFormat(const QString &word)
{
    if (word == QLatin1String("hex"))
        return ValueFormat::Hex;
    if (word == QLatin1String("dec"))
        return ValueFormat::Decimal;
    if (word == QLatin1String("ipv4"))
        return ValueFormat::Ipv4;
    if (word == QLatin1String("mac"))
        return ValueFormat::Mac;
    return std::nullopt;
}

bool RegisterMap::isValidName(const QString &name)
{
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_]*$"));
    return pattern.match(name).hasMatch();
}

std::optional<MapError> RegisterMap::checkRegister(const RegisterBlock &block,
                                                   const Register &reg) const
{
    if (!isValidName(reg.name))
        return error(
            reg.line,
            tr("Register name \"%1\" is not a name (letters, digits and _)").arg(reg.name));
    if (reg.size < 1 || reg.size > kMaxRegisterBytes)
        return error(reg.line, tr("Register %1.%2: size %3 is not 1 to 8 bytes")
                                   .arg(block.name, reg.name)
                                   .arg(reg.size));
    const quint64 address = quint64(block.base) + reg.offset;
    if (address + quint64(reg.size) > quint64(1) << 32)
        return error(
            reg.line,
            tr("Register %1.%2 lies beyond the 32-bit address space").arg(block.name, reg.name));
    const int bits = reg.size * 8;
    if (reg.reset && bits < 64 && *reg.reset >> bits)
        return error(reg.line, tr("Register %1.%2: reset value does not fit %3 bytes")
                                   .arg(block.name, reg.name)
                                   .arg(reg.size));
    quint64 used = 0;
    for (const RegisterField &field : reg.fields) {
        if (!isValidName(field.name))
            return error(
                field.line,
                tr("Field name \"%1\" is not a name (letters, digits and _)").arg(field.name));
        if (field.lsb < 0 || field.msb < field.lsb || field.msb >= bits)
            return error(field.line, tr("Field %1.%2.%3: bits %4:%5 lie outside the register")
                                         .arg(block.name, reg.name, field.name)
                                         .arg(field.msb)
                                         .arg(field.lsb));
        if (used & field.mask())
            return error(
                field.line,
                tr("Field %1.%2.%3 overlaps another field").arg(block.name, reg.name, field.name));
        used |= field.mask();
        for (const NamedValue &value : field.values)
            if (field.width() < 64 && value.value >> field.width())
                return error(field.line, tr("Field %1.%2.%3: value %4 does not fit the field")
                                             .arg(block.name, reg.name, field.name, value.name));
    }
    return std::nullopt;
}

std::optional<MapError> RegisterMap::check()
{
    std::sort(blocks.begin(), blocks.end(),
              [](const RegisterBlock &a, const RegisterBlock &b) { return a.base < b.base; });
    QStringList blockNames;
    struct Span
    {
        quint64 first;
        quint64 end;
        QString name;
        int line;
    };
    QList<Span> spans;
    for (RegisterBlock &block : blocks) {
        if (!isValidName(block.name))
            return error(
                block.line,
                tr("Block name \"%1\" is not a name (letters, digits and _)").arg(block.name));
        if (blockNames.contains(block.name))
            return error(block.line, tr("Block %1 is defined twice").arg(block.name));
        blockNames << block.name;
        std::sort(block.registers.begin(), block.registers.end(),
                  [](const Register &a, const Register &b) { return a.offset < b.offset; });
        QStringList names;
        for (Register &reg : block.registers) {
            std::sort(reg.fields.begin(), reg.fields.end(),
                      [](const RegisterField &a, const RegisterField &b) { return a.lsb > b.lsb; });
            if (std::optional<MapError> failure = checkRegister(block, reg))
                return failure;
            if (names.contains(reg.name))
                return error(reg.line,
                             tr("Register %1.%2 is defined twice").arg(block.name, reg.name));
            names << reg.name;
            const quint64 first = quint64(block.base) + reg.offset;
            spans.append({first, first + quint64(reg.size),
                          block.name + QLatin1Char('.') + reg.name, reg.line});
        }
    }
    std::sort(spans.begin(), spans.end(),
              [](const Span &a, const Span &b) { return a.first < b.first; });
    for (int i = 1; i < spans.size(); ++i)
        if (spans.at(i).first < spans.at(i - 1).end)
            return error(
                spans.at(i).line,
                tr("Register %1 overlaps register %2").arg(spans.at(i).name, spans.at(i - 1).name));
    return std::nullopt;
}
