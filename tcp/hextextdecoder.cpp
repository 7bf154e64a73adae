#include "tcp/hextextdecoder.h"

#include <cctype>

void HexTextDecoder::decode(const char *text, qsizetype size, QByteArray *out)
{
    QByteArray digits = m_pending;
    digits.reserve(m_pending.size() + size);
    for (qsizetype i = 0; i < size; ++i) {
        if (std::isxdigit(static_cast<unsigned char>(text[i])))
            digits.append(text[i]);
    }
    // An odd digit at the end is the high nibble of a byte that the next chunk completes.
    m_pending = digits.size() % 2 ? digits.right(1) : QByteArray();
    digits.truncate(digits.size() - m_pending.size());
    out->append(QByteArray::fromHex(digits));
}
