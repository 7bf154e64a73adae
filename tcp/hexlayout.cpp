#include "tcp/hexlayout.h"

#include <algorithm>
#include <limits>

namespace {

// Larger column counts are allowed in the text but clamped when rendering; nobody reads lines
// of a gigabyte, and the sum must stay a positive int.
constexpr qint64 kLargestColumnBytes = 1 << 30;
constexpr qint64 kLargestLineBytes = std::numeric_limits<int>::max();

bool isLeadDigit(QChar c)
{
    return c >= QLatin1Char('1') && c <= QLatin1Char('9');
}

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

} // namespace

HexLayout HexLayout::parse(const QString &text)
{
    HexLayout layout;
    QString literal;
    QByteArray pendingPrefix;
    qint64 lineBytes = 0;
    for (qsizetype i = 0; i < text.size();) {
        if (!isLeadDigit(text.at(i))) {
            literal += text.at(i++);
            continue;
        }
        if (!literal.isEmpty()) {
            layout.m_items << literal;
            pendingPrefix += literal.toUtf8();
            literal.clear();
        }
        const qsizetype begin = i;
        qint64 value = 0;
        while (i < text.size() && isDigit(text.at(i))) {
            value = std::min(value * 10 + text.at(i).unicode() - '0', kLargestColumnBytes);
            ++i;
        }
        layout.m_items << text.mid(begin, i - begin);
        const qint64 bytes = std::min(value, kLargestLineBytes - lineBytes);
        if (bytes > 0) {
            layout.m_columns.append(Column{lineBytes, bytes, pendingPrefix});
            pendingPrefix.clear();
            lineBytes += bytes;
        }
    }
    if (!literal.isEmpty()) {
        layout.m_items << literal;
        pendingPrefix += literal.toUtf8();
    }
    layout.m_trailer = pendingPrefix;
    layout.m_bytesPerLine = int(lineBytes);
    return layout;
}

qsizetype HexLayout::columnAt(qint64 inLine) const
{
    const auto after =
        std::upper_bound(m_columns.cbegin(), m_columns.cend(), inLine,
                         [](qint64 value, const Column &column) { return value < column.start; });
    return qsizetype(after - m_columns.cbegin()) - 1;
}

void HexLayout::render(const char *data, qsizetype size, qint64 *position, QByteArrayView lineEnd,
                       QByteArray *out) const
{
    if (m_bytesPerLine <= 0 || size <= 0)
        return;
    const qint64 inLine = *position % m_bytesPerLine;
    qsizetype column = columnAt(inLine);
    qint64 inColumn = inLine - m_columns.at(column).start;
    // The digits of the whole chunk at once; the columns take their slices of them.
    const QByteArray digits = QByteArray::fromRawData(data, size).toHex().toUpper();
    qsizetype done = 0;
    while (done < size) {
        const Column &current = m_columns.at(column);
        if (inColumn == 0)
            out->append(current.prefix);
        const qsizetype take = qsizetype(std::min<qint64>(current.bytes - inColumn, size - done));
        out->append(digits.constData() + 2 * done, 2 * take);
        done += take;
        inColumn += take;
        if (inColumn < current.bytes)
            break;
        inColumn = 0;
        if (++column == m_columns.size()) {
            out->append(m_trailer);
            out->append(lineEnd);
            column = 0;
        }
    }
    *position += size;
}

QByteArray HexLayout::render(const QByteArray &bytes, qint64 *position,
                             QByteArrayView lineEnd) const
{
    QByteArray out;
    render(bytes.constData(), bytes.size(), position, lineEnd, &out);
    return out;
}

qsizetype HexLayout::bytesFitting(qint64 position, qsizetype maxBytes, qsizetype room,
                                  qsizetype lineEndSize) const
{
    if (m_bytesPerLine <= 0)
        return 0;
    const qint64 inLine = position % m_bytesPerLine;
    qsizetype column = columnAt(inLine);
    qint64 inColumn = inLine - m_columns.at(column).start;
    qsizetype done = 0;
    qsizetype used = 0;
    while (done < maxBytes) {
        const Column &current = m_columns.at(column);
        const qsizetype prefixSize = inColumn == 0 ? current.prefix.size() : 0;
        const qint64 left = current.bytes - inColumn;
        const qsizetype want = qsizetype(std::min<qint64>(left, maxBytes - done));
        const bool endsLine = want == left && column == m_columns.size() - 1;
        const qsizetype tail = endsLine ? m_trailer.size() + lineEndSize : 0;
        const qsizetype cost = prefixSize + 2 * want + tail;
        if (used + cost > room) {
            // Partly: the line end goes with the line's last byte, so that byte stays out.
            qsizetype part = std::max<qsizetype>(0, (room - used - prefixSize) / 2);
            part = std::min(part, endsLine ? want - 1 : want);
            return done + part;
        }
        used += cost;
        done += want;
        if (want < left)
            break;
        inColumn = 0;
        if (++column == m_columns.size())
            column = 0;
    }
    return done;
}
