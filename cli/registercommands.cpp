#include "cli/registercommands.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "app/signalwatcher.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/streampath.h"
#include "regs/registerwatch.h"
#include "settings/registerrange.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QEventLoop>
#include <QJsonObject>
#include <QTimer>

#include <optional>

namespace {

QString addressText(quint32 address)
{
    return QStringLiteral("%1").arg(address, 8, 16, QLatin1Char('0')).toUpper();
}

QJsonObject dataObject(quint32 address, const QByteArray &data)
{
    return {{QStringLiteral("address"), addressText(address)},
            {QStringLiteral("length"), int(data.size())},
            {QStringLiteral("data"), QString::fromLatin1(data.toHex().toUpper())}};
}

struct Range
{
    quint32 address = 0;
    quint32 length = 0;
};

// ADDR LEN as the Control(UDP) tab reads them; the last byte may be 0xFFFFFFFF, as the server
// allows.
std::optional<Range> readRange(const CommandContext &context, int *exitCode)
{
    Range range;
    QString error = RegisterRange::parseAddress(context.arguments.value(0), &range.address);
    if (error.isEmpty())
        error = RegisterRange::parseLength(context.arguments.value(1), &range.length);
    if (error.isEmpty())
        error = RegisterRange::checkLastByte(range.address, range.length);
    if (error.isEmpty())
        return range;
    *exitCode = context.refuse(error, ExitCode::kRefusedInput);
    return std::nullopt;
}

std::optional<QByteArray> readBytes(const CommandContext &context, const Range &range,
                                    int *exitCode)
{
    AccessGate::Hold hold(context.agent->gate());
    try {
        return context.agent->read(range.address, quint8(range.length), context.timeoutMs);
    } catch (const WrenError &error) {
        *exitCode = context.accessFailed(error, RegisterRange::readTimeoutText());
        return std::nullopt;
    }
}

// The data: hex tokens ("01 02 0A", "CAFEBABE"), or @FILE for a file's raw bytes (@- for
// standard input). No data at all is refused: a write of nothing is never what was meant.
std::optional<QByteArray> writeData(const CommandContext &context, int *exitCode)
{
    const QStringList data = context.arguments.mid(1);
    if (data.isEmpty()) {
        *exitCode =
            context.refuse(RegisterCommands::tr("No data to write: give hex bytes or @FILE"),
                           ExitCode::kRefusedInput);
        return std::nullopt;
    }
    if (data.size() > 1 || !data.first().startsWith(QLatin1Char('@'))) {
        QByteArray bytes;
        if (const QString error = RegisterRange::parseHexTokens(data, &bytes); !error.isEmpty()) {
            *exitCode = context.refuse(error, ExitCode::kRefusedInput);
            return std::nullopt;
        }
        return bytes;
    }
    const QString name = data.first().mid(1);
    if (name.isEmpty()) {
        *exitCode =
            context.refuse(RegisterCommands::tr("No file name after @"), ExitCode::kRefusedInput);
        return std::nullopt;
    }
    QString reason;
    std::optional<QByteArray> bytes =
        StreamPath::readAll(name, RegisterRange::kMaxLength + 1, &reason);
    if (!bytes) {
        *exitCode = context.refuse(RegisterCommands::tr("Cannot read %1: %2").arg(name, reason),
                                   ExitCode::kConnectionOrFile);
        return std::nullopt;
    }
    if (bytes->isEmpty()) {
        *exitCode = context.refuse(RegisterCommands::tr("No data to write: %1 is empty").arg(name),
                                   ExitCode::kRefusedInput);
        return std::nullopt;
    }
    return bytes;
}

} // namespace

int RegisterCommands::read(const CommandContext &context)
{
    int exitCode = ExitCode::kSuccess;
    const std::optional<Range> range = readRange(context, &exitCode);
    if (!range)
        return exitCode;
    const std::optional<QByteArray> bytes = readBytes(context, *range, &exitCode);
    if (!bytes)
        return exitCode;

    const QString outName = context.parser->value(QStringLiteral("out"));
    if (!outName.isEmpty()) {
        if (const QString reason = StreamPath::writeAll(outName, *bytes); !reason.isEmpty())
            return context.refuse(tr("Cannot write %1: %2").arg(outName, reason),
                                  ExitCode::kConnectionOrFile);
    }
    reportResult(RegisterRange::readDoneText());
    if (context.console->json()) {
        QJsonObject object = dataObject(range->address, *bytes);
        if (!outName.isEmpty())
            object.insert(QStringLiteral("file"), outName);
        context.console->printJson(object);
    } else if (outName.isEmpty()) {
        const bool showAddress = !context.parser->isSet(QStringLiteral("no-address"));
        context.console->print(RegisterRange::formatDump(range->address, *bytes, showAddress));
    }
    return ExitCode::kSuccess;
}

int RegisterCommands::write(const CommandContext &context)
{
    int exitCode = ExitCode::kSuccess;
    quint32 address = 0;
    if (const QString error = RegisterRange::parseAddress(context.arguments.value(0), &address);
        !error.isEmpty())
        return context.refuse(error, ExitCode::kRefusedInput);

    const std::optional<QByteArray> bytes = writeData(context, &exitCode);
    if (!bytes)
        return exitCode;
    quint32 length = 0;
    QString error = RegisterRange::parseLength(QString::number(bytes->size()), &length);
    if (error.isEmpty())
        error = RegisterRange::checkWrite(address, length,
                                          context.parser->isSet(QStringLiteral("expert")));
    if (!error.isEmpty())
        return context.refuse(error, ExitCode::kRefusedInput);

    AccessGate::Hold hold(context.agent->gate());
    try {
        (void)context.agent->write(address, *bytes, context.timeoutMs);
    } catch (const WrenError &failure) {
        return context.accessFailed(failure, RegisterRange::writeTimeoutText());
    }
    reportResult(RegisterRange::writeDoneText());
    if (context.console->json())
        context.console->printJson(dataObject(address, *bytes));
    return ExitCode::kSuccess;
}

// Polls the range and prints the dump lines that changed (all of them the first time), or with
// --csv one row a change, until Ctrl+C or a failed access.
int RegisterCommands::watch(const CommandContext &context)
{
    int exitCode = ExitCode::kSuccess;
    const std::optional<Range> range = readRange(context, &exitCode);
    if (!range)
        return exitCode;
    RegisterWatch watcher(context.agent);
    if (const QString error = watcher.watchRange(range->address, int(range->length));
        !error.isEmpty())
        return context.refuse(error, ExitCode::kRefusedInput);
    watcher.setTimeoutMs(context.timeoutMs);
    if (context.parser->isSet(QStringLiteral("interval"))) {
        bool ok = false;
        const int intervalMs = context.parser->value(QStringLiteral("interval")).toInt(&ok);
        if (!ok || intervalMs < 1)
            return context.refuse(tr("--interval must be a whole number of milliseconds from 1, "
                                     "not %1")
                                      .arg(context.parser->value(QStringLiteral("interval"))),
                                  ExitCode::kRefusedInput);
        watcher.setIntervalMs(intervalMs);
    }
    const bool csv = context.parser->isSet(QStringLiteral("csv"));
    if (csv)
        context.console->print(RegisterWatch::csvHeader() + QLatin1Char('\n'));

    QEventLoop loop;
    SignalWatcher termination;
    QObject::connect(&termination, &SignalWatcher::signalReceived, &loop,
                     [&loop] { loop.exit(ExitCode::kSuccess); });
    QObject::connect(&watcher, &RegisterWatch::failed, &loop, [&] {
        loop.exit(context.accessFailed(*watcher.lastError(), RegisterRange::readTimeoutText()));
    });
    std::optional<QByteArray> previous;
    QObject::connect(&watcher, &RegisterWatch::sampled, &loop, [&](const WatchSample &sample) {
        if (csv) {
            if (sample.changed)
                context.console->print(watcher.csvRow(sample) + QLatin1Char('\n'));
            return;
        }
        const QString time = sample.time.toString(QStringLiteral("HH:mm:ss.zzz"));
        const QByteArray &bytes = sample.bytes;
        for (int offset = 0; offset < bytes.size(); offset += RegisterRange::kDumpBytesPerLine) {
            const QByteArray line = bytes.mid(offset, RegisterRange::kDumpBytesPerLine);
            if (previous && previous->mid(offset, RegisterRange::kDumpBytesPerLine) == line)
                continue;
            const quint32 lineAddress = range->address + quint32(offset);
            if (context.console->json()) {
                QJsonObject object = dataObject(lineAddress, line);
                object.insert(QStringLiteral("time"), time);
                context.console->printJson(object);
            } else {
                context.console->print(time + QLatin1Char(' ') +
                                       RegisterRange::formatDump(lineAddress, line, true));
            }
        }
        previous = bytes;
    });
    QTimer::singleShot(0, &watcher, &RegisterWatch::start);
    return loop.exec();
}
