// A parsed output format: how many bytes make each column and which literal text stands between
// the columns. Renders bytes as upper-case hex text line by line; the position within the line
// is carried by the caller so that a stream split into chunks renders exactly as one block.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>
#include <QStringList>

class HexLayout
{
public:
    // Parses `text`; a layout without any byte column is returned with bytesPerLine() == 0.
    [[nodiscard]] static HexLayout parse(const QString &text);

    [[nodiscard]] QStringList items() const { return m_items; }
    [[nodiscard]] QString format() const { return m_items.join(QString()); }
    [[nodiscard]] int bytesPerLine() const { return m_bytesPerLine; }

    // Rendering. `position` counts the bytes rendered so far in the stream and is advanced.
    void render(const char *data, qsizetype size, qint64 *position, QByteArrayView lineEnd,
                QByteArray *out) const;
    [[nodiscard]] QByteArray render(const QByteArray &bytes, qint64 *position,
                                    QByteArrayView lineEnd) const;

    // The most bytes, up to `maxBytes`, whose text rendered at `position` fits in `room` chars.
    [[nodiscard]] qsizetype bytesFitting(qint64 position, qsizetype maxBytes, qsizetype room,
                                         qsizetype lineEndSize) const;

private:
    struct Column
    {
        qint64 start = 0;  // first byte of the column within the line
        qint64 bytes = 0;  // bytes the column takes
        QByteArray prefix; // literal text written before the column's first byte
    };

    // Column holding line position `inLine`.
    [[nodiscard]] qsizetype columnAt(qint64 inLine) const;

    QStringList m_items;
    QList<Column> m_columns;
    QByteArray m_trailer; // literal text after the last column, written before each line end
    int m_bytesPerLine = 0;
};
