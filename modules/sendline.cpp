#include "modules/sendline.h"

#include <QRegularExpression>

SendLine::Parsed SendLine::parse(const QString &line, Form form)
{
    return form == Form::Hex ? parseHex(line) : parseText(line);
}

SendLine::Parsed SendLine::parseText(const QString &line)
{
    Parsed parsed;
    QString plain; // the run of characters since the last escape, encoded as one piece
    const auto flush = [&] {
        parsed.bytes += plain.toUtf8();
        plain.clear();
    };
    for (qsizetype at = 0; at < line.size(); ++at) {
        if (line[at] != QLatin1Char('\\')) {
            plain += line[at];
            continue;
        }
        flush();
        const QChar kind = at + 1 < line.size() ? line[at + 1] : QChar();
        const qsizetype escapeAt = at + 1; // 1-based position of the backslash, for the user
        switch (kind.unicode()) {
        case 'r':
            parsed.bytes += '\r';
            break;
        case 'n':
            parsed.bytes += '\n';
            break;
        case 't':
            parsed.bytes += '\t';
            break;
        case '\\':
            parsed.bytes += '\\';
            break;
        case 'x': {
            static const QRegularExpression hexPair(QStringLiteral("^[0-9A-Fa-f]{2}$"));
            const QString digits = line.mid(at + 2, 2);
            if (!hexPair.match(digits).hasMatch())
                return {{}, tr("\\x at position %1 needs two hex digits").arg(escapeAt)};
            const char value = char(digits.toUInt(nullptr, 16));
            parsed.bytes += value;
            at += 2;
            break;
        }
        default:
            return {{},
                    tr("Unknown escape at position %1; use \\r, \\n, \\t, \\\\ or \\xNN")
                        .arg(escapeAt)};
        }
        ++at;
    }
    flush();
    return parsed;
}

SendLine::Parsed SendLine::parseHex(const QString &line)
{
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    static const QRegularExpression hexPairs(QStringLiteral("^([0-9A-Fa-f]{2})+$"));
    Parsed parsed;
    for (const QString &token : line.split(blanks, Qt::SkipEmptyParts)) {
        if (!hexPairs.match(token).hasMatch())
            return {{}, tr("\"%1\" is not a run of hex digit pairs").arg(token)};
        parsed.bytes += QByteArray::fromHex(token.toLatin1());
    }
    return parsed;
}
