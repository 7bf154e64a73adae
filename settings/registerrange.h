// The rules for reading and writing a run of register bytes, shared by the Control(UDP) tab and
// the command-line tool: the typed address and length, the ranges an access may cover, and the
// hex-dump text of a read and of a write. The messages keep the Control(UDP) tab's translation
// context, so both programs say the same in every language.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <optional>

class RegisterRange
{
public:
    static constexpr int kDumpBytesPerLine = 16;
    static constexpr quint32 kMaxLength = 255;

    // Each check returns the message to report, or an empty text when the input is acceptable.
    [[nodiscard]] static QString parseAddress(const QString &text, quint32 *address);
    [[nodiscard]] static QString parseLength(const QString &text, quint32 *length);
    [[nodiscard]] static QString checkRead(quint32 address, quint32 length);
    // The command line's and the server's range: the last byte may be 0xFFFFFFFF.
    [[nodiscard]] static QString checkLastByte(quint32 address, quint32 length);
    // Without expert mode a write must end below 0xFFFF0000, where the device's own settings live.
    [[nodiscard]] static QString checkWrite(quint32 address, quint32 length, bool expert);
    // The bytes of a typed dump, which must hold exactly `length` of them.
    [[nodiscard]] static QString parseData(const QString &text, quint32 length, QByteArray *bytes);
    // The command line's data: each token is a run of hex digit pairs ("0A", "CAFEBABE"); the
    // message names the first token that is not.
    [[nodiscard]] static QString parseHexTokens(const QStringList &tokens, QByteArray *bytes);

    // Dump text: 16 bytes a line, each line optionally led by its address.
    [[nodiscard]] static QString formatDump(quint32 address, const QByteArray &data,
                                            bool showAddress);
    // The bytes of a typed dump; empty when a token is not a hex byte. A line printed with its
    // address carries it before the first ":" token.
    [[nodiscard]] static std::optional<QByteArray> parseDump(const QString &text,
                                                             QString *badToken = nullptr);

    // Outcome messages of an access.
    [[nodiscard]] static QString readTimeoutText();
    [[nodiscard]] static QString readDoneText();
    [[nodiscard]] static QString writeTimeoutText();
    [[nodiscard]] static QString writeDoneText();

private:
    [[nodiscard]] static QString badTokenDetail(const QString &token);
};
