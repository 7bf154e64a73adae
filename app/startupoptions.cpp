#include "app/startupoptions.h"

#include "app/log.h"
#include "app/validators.h"

#include <QCoreApplication>
#include <QDir>
#include <QHostAddress>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

constexpr char kExpert[] = "-expert";
constexpr char kUiPort[] = "-uiport:";
constexpr char kLog[] = "-l";
constexpr char kLogLevel[] = "-l:";
constexpr char kTarget[] = "-target:";

void readUiPort(const QString &argument, StartupOptions &options,
                const std::function<void(const QString &)> &invalidPortWarning)
{
    // The whole rest must be a port in decimal: "80x", "0x50" or "1e3" would otherwise start a
    // server on a port the user did not ask for.
    const QString value = argument.mid(int(sizeof kUiPort) - 1);
    const std::optional<quint16> port = parsePort(value);
    if (!port) {
        invalidPortWarning(value);
        return;
    }
    options.uiPort = *port;
    options.serverMode = true;
}

void readLogLevel(const QString &argument, StartupOptions &options)
{
    int threshold = 0;
    if (std::sscanf(argument.toLocal8Bit().constData(), "-l:%d", &threshold) != 1)
        return;
    options.logThreshold = threshold;
    if (threshold >= 0)
        options.loggingRequested = true;
}

} // namespace

StartupOptions
parseStartupArguments(const QStringList &arguments,
                      const std::function<void(const QString &value)> &invalidPortWarning)
{
    StartupOptions options;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (argument == QLatin1String(kExpert))
            options.expert = true;
        else if (argument.startsWith(QLatin1String(kUiPort)))
            readUiPort(argument, options, invalidPortWarning);
        else if (argument == QLatin1String(kLog))
            options.loggingRequested = true;
        else if (argument.startsWith(QLatin1String(kLogLevel)))
            readLogLevel(argument, options);
        else if (argument.startsWith(QLatin1String(kTarget)))
            options.target = argument.mid(int(sizeof kTarget) - 1);
    }
    return options;
}

QString openRequestedLog(const StartupOptions &options, const QString &path)
{
    if (!options.loggingRequested || logOpen(path, options.logThreshold))
        return QString();
    const QString reason = QString::fromLocal8Bit(std::strerror(errno));
    return QCoreApplication::translate("main", "Cannot open the log file %1: %2")
        .arg(QDir::current().absoluteFilePath(path), reason);
}

TargetParts splitTarget(const QString &text)
{
    TargetParts parts;
    // A bare IPv6 address ("::1") is the host alone; ports after an IPv6 host need brackets.
    if (text.count(QLatin1Char(':')) > 1 && !text.startsWith(QLatin1Char('[')) &&
        QHostAddress(text).protocol() == QAbstractSocket::IPv6Protocol) {
        parts.host = text;
        return parts;
    }
    QString rest = text;
    if (rest.startsWith(QLatin1Char('['))) {
        const qsizetype close = rest.indexOf(QLatin1Char(']'));
        if (close < 0) {
            parts.host = rest;
            return parts;
        }
        parts.host = rest.mid(1, close - 1);
        rest = rest.mid(close + 1);
        if (rest.startsWith(QLatin1Char(':')))
            rest.remove(0, 1);
    } else {
        const qsizetype colon = rest.indexOf(QLatin1Char(':'));
        parts.host = rest.left(colon);
        rest = colon < 0 ? QString() : rest.mid(colon + 1);
    }
    const QStringList ports = rest.split(QLatin1Char(':'));
    parts.udpPort = ports.value(0);
    parts.tcpPort = ports.mid(1).join(QLatin1Char(':'));
    return parts;
}
