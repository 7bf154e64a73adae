// Turns hex text back into bytes for sending a hex format file: every hex digit is a nibble, the
// first of a pair the high one; everything else (blanks, line ends, separators) is skipped. A
// half-built byte waits for its partner in the next chunk.
#pragma once

#include <QByteArray>

class HexTextDecoder
{
public:
    // Appends the completed bytes of `text` to `out`.
    void decode(const char *text, qsizetype size, QByteArray *out);
    void reset() { m_pending.clear(); }

private:
    QByteArray m_pending; // a digit waiting for its partner
};
