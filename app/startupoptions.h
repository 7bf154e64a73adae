// What the command line asks for: expert mode, server mode with its port, logging with its
// threshold, and a device to point the tool at.
#pragma once

#include <QString>
#include <QStringList>

#include <functional>

struct StartupOptions
{
    bool expert = false;
    bool serverMode = false;
    qint32 uiPort = 0;
    bool loggingRequested = false;
    qint32 logThreshold = 0;
    QString target; // text after "-target:", checked by the main window
};

// Reads the arguments after the program name, in order. An unusable "-uiport:" calls
// invalidPortWarning with the value typed after it (the warning box shows it) and changes nothing
// else; arguments that fit no form are ignored.
[[nodiscard]] StartupOptions
parseStartupArguments(const QStringList &arguments,
                      const std::function<void(const QString &value)> &invalidPortWarning);

// Opens the log at the path when the options ask for it. Returns the translated reason when it
// could not be opened (the log then stays off), an empty text otherwise.
[[nodiscard]] QString openRequestedLog(const StartupOptions &options, const QString &path);

// A "-target:" text split into its parts: HOST[:UDPPORT[:TCPPORT]], with an IPv6 host written in
// brackets; a bare IPv6 address is the host alone. Empty parts mean "leave as it is".
struct TargetParts
{
    QString host;
    QString udpPort;
    QString tcpPort;
};
[[nodiscard]] TargetParts splitTarget(const QString &text);
