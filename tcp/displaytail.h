// The newest received bytes, kept for the display: one unbroken run of at most `limit` bytes.
// Whatever falls out of it or never reaches it is counted as skipped, so that recording never
// waits for the display.
#pragma once

#include "tcp/hexlayout.h"

#include <QByteArray>

class DisplayTail
{
public:
    explicit DisplayTail(qsizetype limit) : m_limit(limit) {}

    void clear();
    // Keeps the bytes at stream `position`; a gap since the last kept byte counts as skipped.
    void keep(const char *data, qsizetype size, qint64 position);
    [[nodiscard]] bool isEmpty() const { return m_bytes.isEmpty(); }
    [[nodiscard]] qint64 skipped() const { return m_skipped; }

    // Hands out at most `maxSize` bytes of display text (-1: all), led by `skipMark` when bytes
    // were skipped since the last call; as hex text in `layout` when it has columns, else as they
    // came. `lineEnd` ends the hex lines.
    [[nodiscard]] QByteArray take(qint64 maxSize, const HexLayout &layout, QByteArrayView lineEnd,
                                  const QByteArray &skipMark);

private:
    qsizetype m_limit;
    QByteArray m_bytes;
    qint64 m_start = 0; // stream position of the first kept byte
    qint64 m_skipped = 0;
};
