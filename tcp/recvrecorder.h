// Records received bytes into the receive file. The bytes are gathered into large blocks and
// written out when a block is full and whenever the owner asks (each second, at the end): raw bytes
// are read straight into the block, hex text is rendered into it. A write the system cuts short is
// continued, so that a failure (a full disk) always comes with the system's reason; what was
// written stays in the file as it is.
#pragma once

#include "tcp/hexlayout.h"

#include <QByteArray>
#include <QFile>

class RecvRecorder
{
public:
    static constexpr qsizetype kBlockBytes = 1024 * 1024;

    // Opens (truncates) the file; false with the reason in errorString().
    [[nodiscard]] bool open(const QString &name, bool hexText, const HexLayout &layout);
    [[nodiscard]] bool isOpen() const { return m_file.isOpen(); }
    [[nodiscard]] bool isRaw() const { return isOpen() && m_layout.bytesPerLine() == 0; }
    // Writes out what is gathered and closes; false when that write failed.
    bool close();

    // Room for `size` raw bytes at the end of the block, to read into; commit() keeps what came.
    [[nodiscard]] char *space(qsizetype size);
    [[nodiscard]] bool commit(qsizetype size);
    // Adds bytes that are not in the block yet (hex text is rendered from them).
    [[nodiscard]] bool add(const char *data, qsizetype size);
    // Writes the gathered block out.
    [[nodiscard]] bool writeOut();

    [[nodiscard]] QString fileName() const { return m_file.fileName(); }
    [[nodiscard]] qint64 savedBytes() const { return m_saved; }
    [[nodiscard]] QString errorString() const { return m_error; }

private:
    QFile m_file;
    HexLayout m_layout; // without columns: raw bytes
    QByteArray m_block;
    qsizetype m_used = 0;
    qint64 m_position = 0; // bytes recorded so far, for the hex layout
    qint64 m_saved = 0;
    QString m_error;
};
