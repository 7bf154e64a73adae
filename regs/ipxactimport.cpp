#include "regs/ipxactimport.h"

#include <QXmlStreamReader>

namespace {

struct Refusal
{
    int line;
    QString reason;
};

class Reader
{
public:
    explicit Reader(const QByteArray &xml) : m_xml(xml) {}

    QList<RegisterBlock> blocks()
    {
        QList<RegisterBlock> result;
        while (!m_xml.atEnd()) {
            m_xml.readNext();
            if (m_xml.isStartElement() && m_xml.name() == QLatin1String("addressBlock"))
                result.append(block());
        }
        if (m_xml.hasError())
            throw Refusal{line(), m_xml.errorString()};
        return result;
    }

private:
    int line() const { return int(m_xml.lineNumber()); }
    bool is(const char *name) const { return m_xml.name() == QLatin1String(name); }
    QString leaf() { return m_xml.readElementText().trimmed(); }

    // 4096, 0x1000, 'h1000 or 16'h1000.
    quint64 number(quint64 max)
    {
        const int at = line();
        QString text = leaf().remove(QLatin1Char('_'));
        int base = 10;
        if (text.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
            text = text.mid(2);
            base = 16;
        } else if (const int tick = text.indexOf(QLatin1Char('\'')); tick >= 0) {
            const QChar radix = tick + 1 < text.size() ? text.at(tick + 1).toLower() : QChar();
            base = radix == QLatin1Char('h') ? 16 : radix == QLatin1Char('b') ? 2 : 10;
            text = text.mid(tick + 2);
        }
        bool ok = false;
        const quint64 value = text.toULongLong(&ok, base);
        if (!ok || value > max)
            throw Refusal{at,
                          IpxactImport::tr("%1 is not a number from 0 to %2").arg(text).arg(max)};
        return value;
    }

    RegisterAccessMode access()
    {
        const int at = line();
        const QString word = leaf();
        if (const std::optional<RegisterAccessMode> mode = RegisterMap::parseAccess(word))
            return *mode;
        throw Refusal{at, IpxactImport::tr("Unknown access \"%1\"").arg(word)};
    }

    RegisterBlock block()
    {
        RegisterBlock result;
        result.line = line();
        std::optional<RegisterAccessMode> blockAccess;
        QList<bool> ownAccess;
        QList<QList<bool>> fieldOwn;
        while (m_xml.readNextStartElement()) {
            if (is("name"))
                result.name = leaf();
            else if (is("description"))
                result.description = leaf();
            else if (is("baseAddress"))
                result.base = quint32(number(0xFFFFFFFFu));
            else if (is("access"))
                blockAccess = access();
            else if (is("register"))
                result.registers.append(reg(&ownAccess.emplace_back(), &fieldOwn.emplace_back()));
            else
                m_xml.skipCurrentElement();
        }
        for (int i = 0; blockAccess && i < result.registers.size(); ++i)
            if (!ownAccess.at(i))
                inheritAccess(result.registers[i], *blockAccess, fieldOwn.at(i));
        return result;
    }

    // The first <value> inside <reset> (2009) or <resets><reset> (2014).
    std::optional<quint64> reset()
    {
        std::optional<quint64> value;
        while (m_xml.readNextStartElement()) {
            if (is("value") && !value)
                value = number(~quint64(0));
            else if (is("reset") && !value)
                value = reset();
            else
                m_xml.skipCurrentElement();
        }
        return value;
    }

    // A register or field without an access of its own takes the one of what holds it.
    static void inheritAccess(Register &r, RegisterAccessMode mode, const QList<bool> &fieldOwn)
    {
        r.access = mode;
        for (int i = 0; i < r.fields.size(); ++i)
            if (!fieldOwn.value(i))
                r.fields[i].access = mode;
    }

    Register reg(bool *ownAccess, QList<bool> *fieldOwn)
    {
        Register result;
        result.line = line();
        *ownAccess = false;
        int sizeBits = 32;
        while (m_xml.readNextStartElement()) {
            if (is("name")) {
                result.name = leaf();
            } else if (is("description")) {
                result.description = leaf();
            } else if (is("addressOffset")) {
                result.offset = quint32(number(0xFFFFFFFFu));
            } else if (is("size")) {
                const int sizeLine = line();
                sizeBits = int(number(64));
                if (sizeBits % 8 || sizeBits == 0)
                    throw Refusal{sizeLine, IpxactImport::tr("Register size of %1 bits is not "
                                                             "whole bytes")
                                                .arg(sizeBits)};
            } else if (is("access")) {
                result.access = access();
                *ownAccess = true;
            } else if (is("reset") || is("resets")) {
                result.reset = reset();
            } else if (is("field")) {
                result.fields.append(field(&fieldOwn->emplace_back()));
            } else {
                m_xml.skipCurrentElement();
            }
        }
        result.size = sizeBits / 8;
        inheritAccess(result, result.access, *fieldOwn);
        return result;
    }

    RegisterField field(bool *ownAccess)
    {
        RegisterField result;
        result.line = line();
        *ownAccess = false;
        int width = 1;
        while (m_xml.readNextStartElement()) {
            if (is("name")) {
                result.name = leaf();
            } else if (is("description")) {
                result.description = leaf();
            } else if (is("bitOffset")) {
                result.lsb = int(number(63));
            } else if (is("bitWidth")) {
                width = int(number(64));
            } else if (is("access")) {
                result.access = access();
                *ownAccess = true;
            } else if (is("enumeratedValues")) {
                while (m_xml.readNextStartElement()) {
                    if (is("enumeratedValue"))
                        result.values.append(namedValue());
                    else
                        m_xml.skipCurrentElement();
                }
            } else {
                m_xml.skipCurrentElement();
            }
        }
        result.msb = result.lsb + width - 1;
        return result;
    }

    NamedValue namedValue()
    {
        NamedValue result;
        while (m_xml.readNextStartElement()) {
            if (is("name"))
                result.name = leaf();
            else if (is("value"))
                result.value = number(~quint64(0));
            else if (is("description"))
                result.description = leaf();
            else
                m_xml.skipCurrentElement();
        }
        return result;
    }

    QXmlStreamReader m_xml;
};

} // namespace

MapResult IpxactImport::parse(const QByteArray &xml, const QString &fileName)
{
    RegisterMap map;
    map.source = fileName;
    try {
        Reader reader(xml);
        map.blocks = reader.blocks();
    } catch (const Refusal &refusal) {
        return MapError{fileName, refusal.line, refusal.reason};
    }
    if (map.blocks.isEmpty())
        return MapError{fileName, 0, tr("No address block found")};
    if (std::optional<MapError> failure = map.check())
        return *failure;
    return map;
}
