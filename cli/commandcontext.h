// What every command of the tool is given: where to say things, the device's target and the
// register-access agent that follows it, the access time-out and the command's own parsed
// arguments.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

class Console;
class DeviceTarget;
class QCommandLineParser;
class WrenAgent;
struct WrenError;

struct CommandContext
{
    Q_DECLARE_TR_FUNCTIONS(CommandContext)

public:
    Console *console = nullptr;
    const DeviceTarget *target = nullptr;
    WrenAgent *agent = nullptr;
    int timeoutMs = 0;
    QStringList arguments; // the positional arguments after the command's name
    const QCommandLineParser *parser = nullptr;

    // Reports a failed register access as the tabs do (`timeoutText` for a time-out, the agent's
    // reason for any other failure) and returns the exit code for it.
    int accessFailed(const WrenError &error, const QString &timeoutText) const;
    // Reports `text` as an error and returns `exitCode`.
    int refuse(const QString &text, int exitCode) const;
    // The value of --max (0 when not given); refuses anything but a whole number from 1.
    [[nodiscard]] bool maxLength(qint64 *length) const;
};
