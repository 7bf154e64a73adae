// Settings of one direction of the TCP data transfer: the file, the display flags, whether the
// file is hex text, and the output format that lays bytes out as hex text. The GUI edits it; the
// transfer worker reads it from its own thread, so every member is guarded.
#pragma once

#include "tcp/hexlayout.h"

#include <QByteArray>
#include <QFile>
#include <QMutex>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>

class TCPOutputOption : public QObject
{
    Q_OBJECT

public:
    // Kinds
    static constexpr int kKindRecv = 0;
    static constexpr int kKindSend = 1;
    // Display modes of the receive option; the send option uses kDisplayOff / kDisplayHex.
    static constexpr int kDisplayOff = 0;
    static constexpr int kDisplayText = 1;
    static constexpr int kDisplayHex = 2;
    // Line ends of the hex text: the receive side writes CR LF, the send display a bare LF.
    static constexpr char kRecvLineEnd[] = "\r\n";
    static constexpr char kSendLineEnd[] = "\n";

    static QString defaultFormat();

    TCPOutputOption(int kind, QObject *parent = nullptr);

    [[nodiscard]] int kind() const { return m_kind; }

    // Display
    [[nodiscard]] int displayMode() const { return m_displayMode.load(); }
    void setDisplayMode(int mode) { m_displayMode.store(mode); }
    [[nodiscard]] bool showData() const { return displayMode() != kDisplayOff; }
    void setShowData(bool flag) { setDisplayMode(flag ? kDisplayHex : kDisplayOff); }

    // Hex text file: the send file is hex text / the receive file is written as hex text.
    [[nodiscard]] bool useHexFile() const { return m_useHexFile.load(); }
    void setUseHexFile(bool flag) { m_useHexFile.store(flag); }

    // Format
    [[nodiscard]] QString format() const;
    // Parses and applies `text`; the reason when it is refused (the old format stays then).
    [[nodiscard]] std::optional<QString> setFormat(const QString &text);
    [[nodiscard]] int bytesPerLine() const;
    [[nodiscard]] HexLayout layout() const;

    // File
    [[nodiscard]] QString fileName() const;
    // Stores the name without touching the file; checkFile() looks at it when editing is done.
    void setFileName(const QString &name);
    // Whether the file can be used as the transfer will use it, found without creating,
    // truncating or removing anything, and what to tell the user: why not, or (an empty
    // receive file) that nothing will be saved.
    struct FileCheck
    {
        bool usable = true;
        QString message;
    };
    [[nodiscard]] FileCheck checkFile() const;

    // Bytes a UTF-8 character takes, from its first byte: 0 for a continuation byte, -1 for a
    // byte that cannot start one.
    [[nodiscard]] static int utf8CharLength(char leadByte);

signals:
    void formatChanged();

private:
    [[nodiscard]] QString problemWith(const QString &name) const;

    const int m_kind;
    std::atomic<int> m_displayMode{kDisplayOff};
    std::atomic<bool> m_useHexFile{false};
    mutable QMutex m_mutex; // guards the layout and the file name
    HexLayout m_layout;
    QFile m_file;
};
