#include "app/validators.h"

#include <QStringList>

namespace {

// Unsigned conversion of the whole text: "-1", "1e3" and "0x50" do not convert.
std::optional<quint64> parseUnsigned(const QString &text, int base, quint64 max)
{
    bool ok = false;
    const qulonglong value = text.toULongLong(&ok, base);
    if (!ok || value > max || text.startsWith(QLatin1Char('+')))
        return std::nullopt;
    return value;
}

bool isDecimalOctet(const QString &part)
{
    if (part.isEmpty() || part.size() > 3 || (part.size() > 1 && part.front() == u'0'))
        return false;
    for (const QChar c : part) {
        if (c < u'0' || c > u'9')
            return false;
    }
    return part.toUInt() <= 255;
}

AddressProblem classify(quint32 ipv4)
{
    if (ipv4 == 0)
        return AddressProblem::Unspecified;
    if (ipv4 == 0xFFFFFFFFu)
        return AddressProblem::Broadcast;
    if ((ipv4 >> 28) == 0xE)
        return AddressProblem::Multicast;
    return AddressProblem::None;
}

std::optional<quint32> dottedQuad(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('.'));
    if (parts.size() != 4)
        return std::nullopt;
    quint32 value = 0;
    for (const QString &part : parts) {
        if (!isDecimalOctet(part))
            return std::nullopt;
        value = (value << 8) | part.toUInt();
    }
    return value;
}

} // namespace

std::optional<quint32> parseDisconnectTimeoutMs(const QString &text)
{
    const auto value = parseUnsigned(text, 10, 16677125);
    return value ? std::optional<quint32>(quint32(*value)) : std::nullopt;
}

std::optional<QByteArray> parseMACAddress(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char(':'));
    if (parts.size() != 6)
        return std::nullopt;
    QByteArray mac;
    for (const QString &part : parts) {
        const auto value = parseUnsigned(part, 16, 255);
        if (!value)
            return std::nullopt;
        mac.append(char(*value));
    }
    return mac;
}

std::optional<quint16> parsePort(const QString &text)
{
    const auto value = parseUnsigned(text, 10, 65535);
    return value ? std::optional<quint16>(quint16(*value)) : std::nullopt;
}

std::optional<quint8> parseByte(const QString &text)
{
    const auto value = parseUnsigned(text, 10, 255);
    return value ? std::optional<quint8>(quint8(*value)) : std::nullopt;
}

std::optional<quint32> parseHex32(const QString &text)
{
    const auto value = parseUnsigned(text, 16, 0xFFFFFFFFu);
    return value ? std::optional<quint32>(quint32(*value)) : std::nullopt;
}

AddressProblem checkDeviceAddress(const QString &text)
{
    const std::optional<quint32> value = dottedQuad(text);
    return value ? classify(*value) : AddressProblem::Malformed;
}

std::optional<quint32> parseDeviceAddress(const QString &text)
{
    const std::optional<quint32> value = dottedQuad(text);
    if (!value || classify(*value) != AddressProblem::None)
        return std::nullopt;
    return value;
}

AddressProblem checkTargetAddress(const QString &text)
{
    if (!text.contains(QLatin1Char(':')))
        return checkDeviceAddress(text);
    // Only the IPv6 text form reaches QHostAddress: its IPv4 forms take "0" and "010" as numbers.
    QHostAddress address;
    if (!address.setAddress(text) || address.protocol() != QAbstractSocket::IPv6Protocol)
        return AddressProblem::Malformed;
    if (address == QHostAddress::AnyIPv6)
        return AddressProblem::Unspecified;
    if (address.isMulticast())
        return AddressProblem::Multicast;
    return AddressProblem::None;
}
