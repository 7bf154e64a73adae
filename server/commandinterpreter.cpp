#include "server/commandinterpreter.h"

#include "app/log.h"
#include "wren/wrenagent.h"

#include <QHash>

#include <algorithm>
#include <optional>

namespace {

// Protocol texts: scripts match them byte for byte, so they are never translated.
const char kHelpList[] = "OK:\r\nread <address> <length> [filename]\r\n"
                         "write <address> <data(hex) | filename>\r\nhelp [command]\r\nquit";
const char kHelpLogLine[] =
    "OK:\r\nread <address> <length> [filename]\r\nwrite <address> <data(hex) | filename>";

const QHash<QString, QByteArray> &helpTexts()
{
    static const QHash<QString, QByteArray> texts = {
        {QStringLiteral("read"),
         "OK:\r\nread <address> <length> [filename]\r\n"
         "This command is used to read the register of the Mavix device.\r\n"
         "<address> : register address of the device(00000000 - FFFFFFFF)\r\n"
         "<length>  : data length(0 - 255)\r\n"
         "[filename]: name of file to be written the read data"},
        {QStringLiteral("write"),
         "OK:\r\nwrite <address> <data | filename>\r\n"
         "This command is used to write data into the device register.\r\n"
         "<address> : register address of the device(00000000 - FFFFFFFF)\r\n"
         "<data>    : data to be written(hex)\r\n"
         "<filename>: name of file which has a data to be written\r\n"
         "*note | This command can accsess ONLY 00000000 to FFFF0000"},
        {QStringLiteral("help"), "OK:\r\nhelp [command]\r\n"
                                 "This command returns the explain of commands.\r\n"
                                 "[command] : name of command"},
        {QStringLiteral("quit"), "OK:\r\nquit\r\nDisconnect the server"},
    };
    return texts;
}

QByteArray readFailureReply(quint32 code)
{
    switch (code) {
    case WrenError::Timeout:
        return QByteArrayLiteral("NG:Mavix device timeout");
    case WrenError::BadReply:
    case WrenError::ShortReply:
        return QByteArrayLiteral("NG:Mavix device reply invalid packet");
    case WrenError::BusError:
        return QByteArrayLiteral("NG:Mavix device reply bus error");
    default:
        return {};
    }
}

bool isHexDigits(QStringView text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
    });
}

// A register address as typed: hex digits, "0x" allowed in front, any number of leading zeros,
// and no more than 32 bits. Nothing is cut off: a wider value is no address.
std::optional<quint32> parseAddress(const QString &word)
{
    QStringView digits(word);
    if (digits.startsWith(u"0x") || digits.startsWith(u"0X"))
        digits = digits.mid(2);
    if (!isHexDigits(digits))
        return std::nullopt;
    while (digits.size() > 1 && digits.front() == u'0')
        digits = digits.mid(1);
    if (digits.size() > 8)
        return std::nullopt;
    return quint32(digits.toULong(nullptr, 16));
}

// A length in plain decimal digits.
std::optional<int> parseLength(const QString &word)
{
    const bool digits = !word.isEmpty() && std::all_of(word.begin(), word.end(), [](QChar c) {
        return c >= u'0' && c <= u'9';
    });
    bool ok = false;
    const int value = digits ? word.toInt(&ok, 10) : 0;
    return ok ? std::optional<int>(value) : std::nullopt;
}

} // namespace

QString CommandInterpreter::withoutTerminator(const QString &line)
{
    return line.endsWith(QLatin1String("\r\n")) ? line.chopped(2)
                                                : line.chopped(qMin(1, int(line.size())));
}

QStringView CommandInterpreter::firstWord(QStringView command)
{
    qsizetype start = 0;
    while (start < command.size() && command.at(start) == u' ')
        ++start;
    const qsizetype end = command.indexOf(u' ', start);
    return command.sliced(start, (end < 0 ? command.size() : end) - start);
}

CommandInterpreter::Result CommandInterpreter::run(const QString &command) const
{
    const QStringList words = command.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    const QString first = words.value(0);
    if (first == QLatin1String("read"))
        return read(words);
    if (first == QLatin1String("write"))
        return write(words);
    if (first == QLatin1String("help"))
        return help(words);
    if (first == QLatin1String("quit"))
        return Result{{}, false, {}, Outcome::None}; // the session answers it
    return unknown();
}

CommandInterpreter::Result CommandInterpreter::unknown()
{
    LOG_ERROR(tr("Server mode, undefined command"));
    const QByteArray reply = QByteArrayLiteral("NG:Unknown Command");
    return Result{reply, true, {QString::fromLatin1(reply)}, Outcome::Failed};
}

CommandInterpreter::Result CommandInterpreter::read(const QStringList &words) const
{
    const std::optional<quint32> parsedAddress = parseAddress(words.value(1));
    const std::optional<int> parsedLength = parseLength(words.value(2));
    const quint32 address = parsedAddress.value_or(0);
    const int length = parsedLength.value_or(0);
    if ((words.size() != 3 && words.size() != 4) || !parsedAddress || !parsedLength || length < 1 ||
        length > kMaxReadLength || quint64(address) + quint64(length) - 1 > 0xFFFFFFFFull) {
        LOG_ERROR(tr("Server mode, invalid read command"));
        return Result{QByteArrayLiteral("NG:invalid read command"), true, {}, Outcome::None};
    }
    QByteArray data;
    try {
        if (!m_agent)
            throw WrenError{WrenError::Timeout, {}};
        data = m_agent->read(address, quint8(length), m_accessTimeoutMs, true);
        // A request that was not sent, or a reply without all the bytes, read nothing usable.
        if (data.size() < length)
            throw WrenError{WrenError::ShortReply, {}};
    } catch (const WrenError &error) {
        // A request that never left read nothing, as a reply without its bytes.
        const QByteArray reply =
            readFailureReply(error.unsent ? WrenError::ShortReply : error.code);
        return Result{reply, !reply.isEmpty(), {}, Outcome::Failed};
    }
    const QByteArray text = dump(address, data.left(length));
    if (words.size() == 4) {
        if (!m_folder.write(words.at(3), text)) {
            return Result{QByteArrayLiteral("NG:\r\nread command can not open the file"),
                          true,
                          {},
                          Outcome::Failed};
        }
    }
    LOG_INFO_MSG(tr("Server mode, read command successed"));
    return Result{QByteArrayLiteral("OK:\r\n") + text, true, {}, Outcome::Succeeded};
}

CommandInterpreter::Result CommandInterpreter::invalidWrite(Outcome outcome)
{
    LOG_ERROR(tr("Server mode, invalid write command"));
    return Result{QByteArrayLiteral("NG:invalid write command"), true, {}, outcome};
}

CommandInterpreter::Result CommandInterpreter::write(const QStringList &words) const
{
    if (words.size() != 3)
        return invalidWrite();
    const std::optional<quint32> address = parseAddress(words.at(1));
    const QString &dataWord = words.at(2);
    QByteArray data;
    if (isHexDigits(dataWord)) {
        // Every digit is written or none: an odd one out is refused, never dropped.
        if (dataWord.size() % 2 != 0)
            return invalidWrite();
        data = QByteArray::fromHex(dataWord.toLatin1());
    } else if (!m_folder.read(dataWord, kMaxWriteSize + 1, &data)) {
        // Not hex: the word names a file in the server's folder whose raw bytes are written. One
        // byte past the limit is enough to refuse it, so a huge file is never loaded.
        return invalidWrite(Outcome::Failed);
    }
    if (!address)
        return invalidWrite(Outcome::Failed);
    if (data.size() > kMaxWriteSize || quint64(*address) + quint64(data.size()) > kWriteLimit)
        return invalidWrite();
    try {
        if (!m_agent)
            throw WrenError{WrenError::Timeout, {}};
        (void)m_agent->write(*address, data, m_accessTimeoutMs, true);
    } catch (const WrenError &error) {
        QByteArray reply;
        if (error.code == WrenError::Timeout) {
            LOG_ERROR(tr("Server mode, write command is timeout"));
            reply = QByteArrayLiteral("NG:Server mode, write command is timeout");
        } else if (error.code == WrenError::BusError) {
            LOG_ERROR(tr("Server mode, Mavix device reply bus error"));
            reply = QByteArrayLiteral("NG: Mavix device reply bus error");
        } else {
            LOG_ERROR(tr("Server mode, Mavix device won't reply"));
            reply = QByteArrayLiteral("NG:Mavix device won't reply");
        }
        return Result{reply, true, {}, Outcome::Failed};
    }
    // A successful write is answered by silence: the next line is simply accepted.
    LOG_INFO_MSG(tr("Server mode, write command successed"));
    return Result{{}, false, {}, Outcome::Succeeded};
}

CommandInterpreter::Result CommandInterpreter::help(const QStringList &words)
{
    if (words.size() > 2 || (words.size() == 2 && !helpTexts().contains(words.at(1)))) {
        LOG_ERROR(tr("Server mode, invalid help command"));
        return Result{QByteArrayLiteral("NG:invalid help command"), true, {}, Outcome::None};
    }
    const QByteArray reply =
        words.size() == 1 ? QByteArray(kHelpList) : helpTexts().value(words.at(1));
    LOG_INFO_MSG(tr("Server mode, help command successed"));
    return Result{reply, true, {QString::fromLatin1(kHelpLogLine)}, Outcome::Succeeded};
}

// Per line: the address in upper-case hex (two digits at least), " : ", each byte as two digits and
// a space, CR LF. Written straight into the text: a dump is part of every read's round trip.
QByteArray CommandInterpreter::dump(quint32 address, const QByteArray &data)
{
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const qsizetype lines = (data.size() + kDumpBytesPerLine - 1) / kDumpBytesPerLine;
    QByteArray text(lines * (8 + 3 + 2) + data.size() * 3, Qt::Uninitialized);
    char *out = text.data();
    for (qsizetype offset = 0; offset < data.size(); offset += kDumpBytesPerLine) {
        char digits[8];
        int count = 0;
        for (quint32 value = address + quint32(offset); value != 0 || count < 2; value >>= 4)
            digits[count++] = kDigits[value & 0xF];
        while (count > 0)
            *out++ = digits[--count];
        *out++ = ' ';
        *out++ = ':';
        *out++ = ' ';
        const qsizetype end = qMin(offset + kDumpBytesPerLine, data.size());
        for (qsizetype at = offset; at < end; ++at) {
            const auto byte = uchar(data.at(at));
            *out++ = kDigits[byte >> 4];
            *out++ = kDigits[byte & 0xF];
            *out++ = ' ';
        }
        *out++ = '\r';
        *out++ = '\n';
    }
    text.truncate(out - text.constData());
    return text;
}
