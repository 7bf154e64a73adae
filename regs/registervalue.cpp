#include "regs/registervalue.h"

#include <QHostAddress>
#include <QStringList>
#include <QtEndian>

namespace {

constexpr int kMacBytes = 6;

bool fits(quint64 value, int widthBits)
{
    return widthBits >= 64 || (value >> widthBits) == 0;
}

std::optional<quint64> parseNumber(const QString &text)
{
    bool ok = false;
    quint64 value = 0;
    if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
        value = text.mid(2).remove(QLatin1Char('_')).toULongLong(&ok, 16);
    else if (text.startsWith(QLatin1String("0b"), Qt::CaseInsensitive))
        value = text.mid(2).remove(QLatin1Char('_')).toULongLong(&ok, 2);
    else if (!text.startsWith(QLatin1Char('+')) && !text.startsWith(QLatin1Char('-')))
        value = text.toULongLong(&ok, 10);
    return ok ? std::optional<quint64>(value) : std::nullopt;
}

std::optional<quint64> parseMac(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != kMacBytes)
        return std::nullopt;
    quint64 value = 0;
    for (const QString &part : parts) {
        bool ok = false;
        const uint octet = part.toUInt(&ok, 16);
        if (!ok || part.size() > 2 || octet > 0xFF)
            return std::nullopt;
        value = (value << 8) | octet;
    }
    return value;
}

} // namespace

quint64 RegisterValue::fromBytes(const QByteArray &bytes)
{
    quint64 value = 0;
    for (const char byte : bytes)
        value = (value << 8) | quint8(byte);
    return value;
}

QByteArray RegisterValue::toBytes(quint64 value, int size)
{
    QByteArray bytes(size, '\0');
    for (int i = size - 1; i >= 0; --i) {
        bytes[i] = char(value & 0xFF);
        value >>= 8;
    }
    return bytes;
}

QString RegisterValue::format(quint64 value, int widthBits, ValueFormat format,
                              const QList<NamedValue> &names)
{
    for (const NamedValue &named : names)
        if (named.value == value)
            return named.name;
    switch (format) {
    case ValueFormat::Decimal:
        return QString::number(value);
    case ValueFormat::Ipv4:
        if (widthBits == 32)
            return QHostAddress(quint32(value)).toString();
        break;
    case ValueFormat::Mac:
        if (widthBits == kMacBytes * 8) {
            const QByteArray bytes = toBytes(value, kMacBytes);
            return QString::fromLatin1(bytes.toHex(':').toUpper());
        }
        break;
    case ValueFormat::Hex:
        break;
    }
    return QStringLiteral("0x") +
           QStringLiteral("%1").arg(value, (widthBits + 3) / 4, 16, QLatin1Char('0')).toUpper();
}

QString RegisterValue::format(const Register &reg, quint64 raw)
{
    return format(raw, reg.size * 8, reg.format);
}

QString RegisterValue::format(const RegisterField &field, quint64 raw)
{
    return format(field.extract(raw), field.width(), field.format, field.values);
}

std::optional<quint64> RegisterValue::parse(const QString &text, int widthBits, ValueFormat format,
                                            const QList<NamedValue> &names, QString *error)
{
    const QString typed = text.trimmed();
    for (const NamedValue &named : names)
        if (named.name == typed)
            return named.value;
    std::optional<quint64> value = parseNumber(typed);
    if (!value && format == ValueFormat::Ipv4 && widthBits == 32) {
        QHostAddress address;
        bool ok = false;
        if (address.setAddress(typed) && address.protocol() == QHostAddress::IPv4Protocol &&
            typed.count(QLatin1Char('.')) == 3)
            value = address.toIPv4Address(&ok);
    }
    if (!value && format == ValueFormat::Mac && widthBits == kMacBytes * 8)
        value = parseMac(typed);
    if (!value) {
        QStringList known;
        for (const NamedValue &named : names)
            known << named.name;
        *error = known.isEmpty() ? tr("\"%1\" is not a number").arg(typed)
                                 : tr("\"%1\" is neither a number nor one of: %2")
                                       .arg(typed, known.join(QLatin1String(", ")));
        return std::nullopt;
    }
    if (!fits(*value, widthBits)) {
        *error = tr("%1 does not fit %2 bits").arg(typed).arg(widthBits);
        return std::nullopt;
    }
    return value;
}
