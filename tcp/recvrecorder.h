// Records received bytes into the receive file. The bytes are gathered into large blocks and
// written out when a block is full and whenever the owner asks (each second, at the end); a large
// raw block is written as it came. Hex text is rendered into the block. A write the system cuts
// short is continued, so that a failure (a full disk) always comes with the system's reason; what
// was written stays in the file as it is.
#pragma once

#include "tcp/hexlayout.h"

#include <QByteArray>
#include <QFile>

class RecvRecorder
{
public:
    static constexpr qsizetype kBlockBytes = 1024 * 1024;
    // Raw blocks at least this large are written as they came.
    static constexpr qsizetype kDirectBytes = 64 * 1024;

    // Opens (truncates) the file; false with the reason in errorString().
    [[nodiscard]] bool open(const QString &name, bool hexText, const HexLayout &layout);
    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    [[nodiscard]] bool isRaw() const { return isOpen() && m_layout.bytesPerLine() == 0; }
    // Writes out what is gathered and closes; false when that write failed.
    bool close();

    // Adds received bytes (hex text is rendered from them).
    [[nodiscard]] bool add(const char *data, qsizetype size);
    // The same for a block the socket handed over: a large raw block with nothing gathered before
    // it goes to the file as it is, without a copy.
    [[nodiscard]] bool add(const QByteArray &bytes);
    // Writes the gathered block out.
    [[nodiscard]] bool writeOut();

    [[nodiscard]] QString fileName() const { return m_file.fileName(); }
    [[nodiscard]] qint64 savedBytes() const { return m_saved; }
    [[nodiscard]] QString errorString() const { return m_error; }

private:
    [[nodiscard]] char *space(qsizetype size);
    [[nodiscard]] bool writeAll(const char *data, qsizetype size);

    QFile m_file;
    HexLayout m_layout; // without columns: raw bytes
    QByteArray m_block;
    qsizetype m_used = 0;
    qint64 m_position = 0; // bytes recorded so far, for the hex layout
    qint64 m_saved = 0;
    QString m_error;
};
