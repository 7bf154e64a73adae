#include "tcp/hextextdecoder.h"

namespace {

int nibbleOf(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    return -1;
}

} // namespace

void HexTextDecoder::decode(const char *text, qsizetype size, QByteArray *out)
{
    for (qsizetype i = 0; i < size; ++i) {
        const int nibble = nibbleOf(text[i]);
        if (nibble < 0)
            continue;
        if (m_highNibble < 0) {
            m_highNibble = nibble;
        } else {
            out->append(char((m_highNibble << 4) | nibble));
            m_highNibble = -1;
        }
    }
}
