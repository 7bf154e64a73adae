#include "tcp/displaytail.h"

#include <algorithm>
#include <limits>

void DisplayTail::clear()
{
    m_bytes.clear();
    m_start = 0;
    m_skipped = 0;
}

void DisplayTail::keep(const char *data, qsizetype size, qint64 position)
{
    if (size > m_limit) { // only the newest part could stay
        data += size - m_limit;
        position += size - m_limit;
        size = m_limit;
    }
    const qint64 end = m_start + m_bytes.size();
    if (position != end) {
        m_skipped += m_bytes.size() + (position - end);
        m_bytes.resize(0);
        m_start = position;
    }
    m_bytes.append(data, size);
    const qsizetype excess = m_bytes.size() - m_limit;
    if (excess > 0) {
        m_bytes.remove(0, excess);
        m_start += excess;
        m_skipped += excess;
    }
}

QByteArray DisplayTail::take(qint64 maxSize, const HexLayout &layout, QByteArrayView lineEnd,
                             const QByteArray &skipMark)
{
    const qsizetype limit = maxSize < 0 ? std::numeric_limits<qsizetype>::max() : maxSize;
    QByteArray result;
    if (m_skipped > 0) {
        if (skipMark.size() > limit)
            return result;
        result = skipMark;
        m_skipped = 0;
    }
    const qsizetype room = limit - result.size();
    qsizetype bytes = std::min<qsizetype>(m_bytes.size(), room);
    if (layout.bytesPerLine() > 0) {
        bytes = layout.bytesFitting(m_start, m_bytes.size(), room, lineEnd.size());
        // A format whose text for one byte is longer than the whole buffer still shows something.
        if (bytes == 0 && result.isEmpty() && room >= m_limit)
            bytes = std::min<qsizetype>(1, m_bytes.size());
        qint64 position = m_start;
        layout.render(m_bytes.constData(), bytes, &position, lineEnd, &result);
    } else {
        result.append(m_bytes.constData(), bytes);
    }
    m_bytes.remove(0, bytes);
    m_start += bytes;
    return result;
}
