#include "modules/monitortext.h"

using Rs232c::Connector;

void MonitorText::setForm(Form form)
{
    if (form == m_form)
        return;
    m_form = form;
    // A line of one form is not continued in the other.
    m_lineFrom = -1;
}

void MonitorText::restart()
{
    m_lineFrom = -1;
    m_anyLine = false;
    m_afterCr.fill(false);
}

QString MonitorText::add(Connector from, const QByteArray &bytes, QTime at)
{
    QString out;
    if (m_timeStamps)
        m_lineFrom = -1; // each piece on its own line, with its time
    if (m_form == Form::Hex) {
        for (const char byte : bytes)
            addHexByte(from, quint8(byte), at, &out);
        return out;
    }
    const QString decoded = m_decoders[size_t(from)].decode(bytes);
    for (const QChar c : decoded)
        addChar(from, c, at, &out);
    return out;
}

void MonitorText::openLine(Connector from, QTime at, QString *out)
{
    if (m_lineFrom == int(from))
        return;
    if (m_anyLine)
        *out += QLatin1Char('\n');
    m_anyLine = true;
    m_lineFrom = int(from);
    m_lineChars = 0;
    m_lineBytes = 0;
    const QLatin1String name(from == Connector::Dte ? "DTE" : "DCE");
    if (m_timeStamps)
        *out += at.toString(QStringLiteral("HH:mm:ss.zzz")) + QLatin1Char(' ');
    *out += name + QLatin1String("> ");
}

// CR, LF and CR LF each end a line; other control characters are shown as \xNN, as the send line
// takes them, and never reach the font engine.
void MonitorText::addChar(Connector from, QChar c, QTime at, QString *out)
{
    bool &afterCr = m_afterCr[size_t(from)];
    const bool wasAfterCr = afterCr;
    afterCr = c == QLatin1Char('\r');
    if (c == QLatin1Char('\r') || c == QLatin1Char('\n')) {
        if (c == QLatin1Char('\n') && wasAfterCr)
            return;
        openLine(from, at, out); // an empty line is still shown as one
        endLine();
        return;
    }
    openLine(from, at, out);
    const ushort code = c.unicode();
    if ((code < 0x20 && code != '\t') || code == 0x7F)
        *out += QStringLiteral("\\x%1").arg(code, 2, 16, QLatin1Char('0'));
    else
        *out += c;
    if (++m_lineChars >= kMaxLineChars)
        endLine();
}

void MonitorText::addHexByte(Connector from, quint8 byte, QTime at, QString *out)
{
    openLine(from, at, out);
    if (m_lineBytes > 0)
        *out += QLatin1Char(' ');
    *out += QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0'));
    if (++m_lineBytes >= kHexBytesPerLine)
        endLine();
}
