// What a file argument of the tool names: "-" is standard input or output, a FIFO or a device is
// written into as it is (never replaced by a regular file), and a regular file is replaced whole
// or not at all. Opening an input never blocks.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QString>

#include <optional>

class StreamPath
{
    Q_DECLARE_TR_FUNCTIONS(StreamPath)

public:
    [[nodiscard]] static bool isStandardStream(const QString &name)
    {
        return name == QLatin1String("-");
    }
    // Writes `bytes` into what `name` names; the reason on failure, an empty text otherwise.
    [[nodiscard]] static QString writeAll(const QString &name, const QByteArray &bytes);
    // Reads at most `maxBytes` from what `name` names; a FIFO without a writer reads as empty.
    [[nodiscard]] static std::optional<QByteArray> readAll(const QString &name, qint64 maxBytes,
                                                           QString *error);
};
