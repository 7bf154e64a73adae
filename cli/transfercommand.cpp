#include "cli/transfercommand.h"

#include "app/devicetarget.h"
#include "app/signalwatcher.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/streampath.h"

#include <QCommandLineParser>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <algorithm>
#include <limits>

namespace {

constexpr int kProgressIntervalMs = 250;

QString secondsText(qint64 ms)
{
    return QString::number(double(ms) / 1000.0, 'f', 3);
}

// Megabytes (10^6 bytes) per second; an elapsed time below one millisecond counts as one.
QString rateText(qint64 bytes, qint64 ms)
{
    return QString::number(double(bytes) / 1000.0 / double(std::max<qint64>(ms, 1)), 'f', 1);
}

} // namespace

TransferCommand::TransferCommand(const CommandContext &context, Direction direction,
                                 QObject *parent)
    : QObject(parent), m_context(context), m_direction(direction)
{
}

int TransferCommand::run()
{
    if (!readLimits())
        return m_refusedExitCode;
    m_fileName = m_context.arguments.value(0);
    m_errorsBefore = m_context.console->errorCount();

    // --timeout shortens every wait for the device, on the data port too.
    TransferRunner runner(m_direction, m_context.target->host(), m_context.target->tcpPort(),
                          m_context.timeoutMs);
    runner.setLimits(m_byteLimit, m_timeLimitMs);
    // "-" is standard output for recv and standard input for send, so that the tool fits in a
    // pipeline; a FIFO or a device is written into as it is.
    const bool standardStream = StreamPath::isStandardStream(m_fileName);
    const QString path = standardStream
                             ? QString::fromLatin1(receiving() ? "/dev/stdout" : "/dev/stdin")
                             : m_fileName;
    if (!runner.prepare(path, standardStream))
        return ExitCode::kConnectionOrFile;

    SignalWatcher termination;
    connect(&termination, &SignalWatcher::signalReceived, &runner, &TransferRunner::interrupt);
    QTimer progressTimer;
    if (m_context.console->showsProgress()) {
        connect(&progressTimer, &QTimer::timeout, this, &TransferCommand::showProgress);
        connect(&runner, &TransferRunner::stopped, &progressTimer, &QTimer::stop);
        progressTimer.start(kProgressIntervalMs);
    }
    m_runner = &runner;
    m_result = runner.run();
    m_runner = nullptr;

    m_context.console->endProgress();
    printSummary();
    return exitCode();
}

bool TransferCommand::readLimits()
{
    if (!receiving())
        return true;
    const QCommandLineParser &parser = *m_context.parser;
    const auto limit = [&](const QString &name, qint64 scale, qint64 *value) {
        if (!parser.isSet(name))
            return true;
        bool ok = false;
        const qint64 number = parser.value(name).toLongLong(&ok);
        if (ok && number >= 1 && number <= std::numeric_limits<qint64>::max() / scale) {
            *value = number * scale;
            return true;
        }
        m_refusedExitCode = m_context.refuse(
            tr("--%1 must be a whole number from 1, not %2").arg(name, parser.value(name)),
            ExitCode::kRefusedInput);
        return false;
    };
    return limit(QStringLiteral("bytes"), 1, &m_byteLimit) &&
           limit(QStringLiteral("seconds"), 1000, &m_timeLimitMs);
}

void TransferCommand::showProgress()
{
    const qint64 ms = m_runner->elapsedMs();
    const qint64 bytes = m_runner->bytes();
    const qint64 fileSize = m_runner->fileSize();
    if (receiving()) {
        m_context.console->progress(
            tr("%1 bytes  %2 s  %3 MB/s").arg(bytes).arg(secondsText(ms), rateText(bytes, ms)));
        return;
    }
    QString line = tr("%1 / %2 bytes  %3 s  %4 MB/s")
                       .arg(bytes)
                       .arg(fileSize)
                       .arg(secondsText(ms), rateText(bytes, ms));
    if (bytes > 0 && fileSize > bytes) {
        const qint64 remainingMs = (fileSize - bytes) * ms / bytes;
        line += QStringLiteral("  ") + tr("ETA %1 s").arg(secondsText(remainingMs));
    }
    m_context.console->progress(line);
}

void TransferCommand::printSummary()
{
    const qint64 ms = m_result.elapsedMs;
    if (m_context.console->json()) {
        QJsonObject object{{QStringLiteral("command"),
                            receiving() ? QStringLiteral("recv") : QStringLiteral("send")},
                           {QStringLiteral("file"), m_fileName},
                           {QStringLiteral("bytes"), m_result.bytes},
                           {QStringLiteral("elapsedMs"), ms},
                           {QStringLiteral("interrupted"), m_result.interrupted}};
        if (!receiving())
            object.insert(QStringLiteral("fileSize"), m_result.fileSize);
        if (receiving() && StreamPath::isStandardStream(m_fileName))
            m_context.console->message(QString::fromUtf8(QJsonDocument(object).toJson(
                QJsonDocument::Compact))); // standard output carries the data
        else
            m_context.console->printJson(object);
    }
    if (receiving())
        m_context.console->message(
            tr("%1 bytes received into %2 in %3 s (%4 MB/s)")
                .arg(m_result.bytes)
                .arg(m_fileName, secondsText(ms), rateText(m_result.bytes, ms)));
    else
        m_context.console->message(
            tr("%1 of %2 bytes sent from %3 in %4 s (%5 MB/s)")
                .arg(m_result.bytes)
                .arg(m_result.fileSize)
                .arg(m_fileName, secondsText(ms), rateText(m_result.bytes, ms)));
}

int TransferCommand::exitCode() const
{
    if (receiving() && m_byteLimit > 0 && m_result.bytes >= m_byteLimit)
        return ExitCode::kSuccess;
    if (receiving() && m_byteLimit > 0 && !m_result.interrupted) {
        return m_context.refuse(
            tr("Only %1 of %2 bytes received").arg(m_result.bytes).arg(m_byteLimit),
            ExitCode::kConnectionOrFile);
    }
    if (m_context.console->errorCount() > m_errorsBefore)
        return ExitCode::kConnectionOrFile;
    const bool cutShort = receiving() ? m_byteLimit > 0 : m_result.bytes < m_result.fileSize;
    if (m_result.interrupted && cutShort)
        return ExitCode::kInterrupted;
    return ExitCode::kSuccess;
}
