#include "settings/registerrange.h"

#include "settings/mavixsetting.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QStringList>

namespace {

// Writes must end below this address unless expert mode is on.
constexpr quint32 kProtectedStart = 0xFFFF0001;

} // namespace

QString RegisterRange::parseAddress(const QString &addressText, quint32 *address)
{
    if (!MavixSetting::parseHex32(addressText, address))
        return QCoreApplication::translate("UDPTab", "Set register address 8 character hex number");
    return {};
}

QString RegisterRange::parseLength(const QString &lengthText, quint32 *length)
{
    quint8 value = 0;
    if (!MavixSetting::parseByte(lengthText, &value))
        return QCoreApplication::translate("UDPTab", "Data length must be 0 to 255");
    *length = value;
    return {};
}

QString RegisterRange::checkRead(quint32 address, quint32 length)
{
    if (address > 0xFFFFFFFFu - length)
        return QCoreApplication::translate("UDPTab", "Accessible range is 0x0 to 0xffffffff");
    return {};
}

QString RegisterRange::checkLastByte(quint32 address, quint32 length)
{
    if (length > 0 && address > 0xFFFFFFFFu - (length - 1))
        return QCoreApplication::translate("UDPTab", "Accessible range is 0x0 to 0xffffffff");
    return {};
}

QString RegisterRange::checkWrite(quint32 address, quint32 length, bool expert)
{
    if (!expert && address >= kProtectedStart - length)
        return QCoreApplication::translate("UDPTab",
                                           "Writing in domain after 0xFFFF0000 is not permitted");
    // 2^32 - length in 32 bits: 0 for a length of 0, so a zero-length write is allowed only at 0.
    const quint32 endOfSpace = quint32(0) - length;
    if (endOfSpace < address)
        return QCoreApplication::translate("UDPTab",
                                           "Writing in domain after 0xFFFFFFFF is not permitted");
    return {};
}

QString RegisterRange::parseData(const QString &dataText, quint32 length, QByteArray *bytes)
{
    QString badToken;
    const std::optional<QByteArray> parsed = parseDump(dataText, &badToken);
    if (!parsed)
        return QCoreApplication::translate("UDPTab",
                                           "Written data is specified in hex number with a space") +
               badTokenDetail(badToken);
    if (quint32(parsed->size()) != length)
        return QCoreApplication::translate("UDPTab", "Written data length does not match") +
               QCoreApplication::translate("UDPTab", " (%1 bytes typed, Data Length %2)")
                   .arg(parsed->size())
                   .arg(length);
    *bytes = *parsed;
    return {};
}

QString RegisterRange::parseHexTokens(const QStringList &tokens, QByteArray *bytes)
{
    static const QRegularExpression hexPairs(QStringLiteral("^([0-9A-Fa-f]{2})+$"));
    QByteArray parsed;
    for (const QString &token : tokens) {
        if (!hexPairs.match(token).hasMatch())
            return QCoreApplication::translate(
                       "UDPTab", "Written data is specified in hex number with a space") +
                   badTokenDetail(token);
        parsed += QByteArray::fromHex(token.toLatin1());
    }
    *bytes = parsed;
    return {};
}

QString RegisterRange::badTokenDetail(const QString &token)
{
    return QCoreApplication::translate("UDPTab", ": \"%1\" is not a hexadecimal byte").arg(token);
}

QString RegisterRange::formatDump(quint32 address, const QByteArray &data, bool showAddress)
{
    QString dump;
    for (int offset = 0; offset < data.size(); offset += kDumpBytesPerLine) {
        if (showAddress) {
            const quint32 lineAddress = address + quint32(offset); // wraps modulo 2^32
            dump += QStringLiteral("%1 : ").arg(lineAddress, 8, 16, QLatin1Char('0')).toUpper();
        }
        dump += QString::fromLatin1(data.mid(offset, kDumpBytesPerLine).toHex(' ').toUpper());
        dump += QLatin1String(" \n");
    }
    return dump;
}

std::optional<QByteArray> RegisterRange::parseDump(const QString &dump, QString *badToken)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    QByteArray bytes;
    const QStringList lines = dump.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        QStringList tokens = line.split(blanks, Qt::SkipEmptyParts);
        const qsizetype separator = tokens.indexOf(QStringLiteral(":"));
        if (separator >= 0)
            tokens = tokens.mid(separator + 1);
        for (const QString &token : tokens) {
            bool ok = false;
            const uint value = token.toUInt(&ok, 16);
            if (!ok || value > 0xFF) {
                if (badToken)
                    *badToken = token;
                return std::nullopt;
            }
            bytes.append(char(value));
        }
    }
    return bytes;
}

QString RegisterRange::readTimeoutText()
{
    return QCoreApplication::translate("UDPTab", "UDP read is timeout");
}

QString RegisterRange::readDoneText()
{
    return QCoreApplication::translate("UDPTab", "UDP read successed");
}

QString RegisterRange::writeTimeoutText()
{
    return QCoreApplication::translate("UDPTab", "UDP writing is timeout");
}

QString RegisterRange::writeDoneText()
{
    return QCoreApplication::translate("UDPTab", "UDP writing successed");
}
