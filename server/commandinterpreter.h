// The remote-control command language: read, write, help and quit, one line at a time, answered
// with "OK:"/"NG:" replies. Runs the device accesses through the agent; knows nothing of sockets.
#pragma once

#include "server/filefolder.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QString>
#include <QStringList>

class WrenAgent;

class CommandInterpreter
{
    Q_DECLARE_TR_FUNCTIONS(CommandInterpreter)

public:
    enum class Outcome { None, Succeeded, Failed };

    // What a line led to: the bytes to send, the lines for the server's log view, and whether the
    // command counts as a successful or failed device transmission.
    struct Result
    {
        QByteArray reply;
        bool prompt = true;
        QStringList logLines;
        Outcome outcome = Outcome::None;
    };

    // Protocol limits
    static constexpr int kMaxReadLength = 255;
    static constexpr int kMaxWriteSize = 255;
    static constexpr quint64 kWriteLimit = 0xFFFF0000; // the top 64 KiB is out of reach
    static constexpr int kDumpBytesPerLine = 16;

    void setAgent(WrenAgent *agent) { m_agent = agent; }
    // The folder whose files read and write may name.
    void setFileFolder(const FileFolder &folder) { m_folder = folder; }
    [[nodiscard]] const FileFolder &fileFolder() const { return m_folder; }
    // Time-out of each device access; tests shorten it.
    void setAccessTimeoutMs(int timeoutMs) { m_accessTimeoutMs = timeoutMs; }

    // The line as the session delivered it, terminator included, minus that terminator.
    [[nodiscard]] static QString withoutTerminator(const QString &line);
    // The first word of a command line (words are separated by spaces), empty when there is none.
    [[nodiscard]] static QStringView firstWord(QStringView command);
    // One command line without its terminator.
    [[nodiscard]] Result run(const QString &command) const;

    [[nodiscard]] static QByteArray dump(quint32 address, const QByteArray &data);

private:
    [[nodiscard]] Result read(const QStringList &words) const;
    [[nodiscard]] Result write(const QStringList &words) const;
    [[nodiscard]] static Result help(const QStringList &words);
    [[nodiscard]] static Result unknown();
    [[nodiscard]] static Result invalidWrite(Outcome outcome = Outcome::None);

    WrenAgent *m_agent = nullptr;
    int m_accessTimeoutMs = 10000;
    FileFolder m_folder;
};
