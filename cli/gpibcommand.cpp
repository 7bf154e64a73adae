#include "cli/gpibcommand.h"

#include "app/devicetarget.h"
#include "app/report.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "modules/gpibbridge.h"
#include "wren/wrenagent.h"

#include <QCommandLineParser>
#include <QJsonObject>

#include <optional>

namespace {

// --delimiter names, in the tab's order of delimiter choices.
QStringList delimiters()
{
    return {QStringLiteral("none"), QStringLiteral("cr"), QStringLiteral("lf"),
            QStringLiteral("crlf")};
}

int exitCodeOf(GpibBus::Failure failure)
{
    switch (failure) {
    case GpibBus::Failure::None:
        return ExitCode::kSuccess;
    case GpibBus::Failure::Timeout:
        return ExitCode::kTimeout;
    case GpibBus::Failure::ErrorPacket:
        return ExitCode::kBusError;
    case GpibBus::Failure::BadReply:
        return ExitCode::kBadReply;
    case GpibBus::Failure::Aborted: // Ctrl+C
        return ExitCode::kInterrupted;
    case GpibBus::Failure::Other:
        break;
    }
    return ExitCode::kConnectionOrFile;
}

int accessExitCode(const GpibBridge &bridge)
{
    return ExitCode::forWrenError(
        WrenError{quint32(bridge.lastAccessErrorCode().value_or(WrenError::Timeout)), {}});
}

void printSetting(const CommandContext &context, const GpibModuleSetting &setting)
{
    if (context.console->json())
        context.console->printJson(
            {{QStringLiteral("controllerAddress"), setting.controllerAddress},
             {QStringLiteral("timeoutMs"), qint64(setting.timeoutMs())}});
    else
        context.console->print(QStringLiteral("controller %1\ntimeout-ms %2\n")
                                   .arg(setting.controllerAddress)
                                   .arg(setting.timeoutMs()));
}

void printData(const CommandContext &context, const QByteArray &data)
{
    const bool hex = context.parser->isSet(QStringLiteral("hex"));
    if (context.console->json())
        context.console->printJson({{QStringLiteral("length"), int(data.size())},
                                    {QStringLiteral("data"), QString::fromLatin1(data.toHex())},
                                    {QStringLiteral("text"), QString::fromUtf8(data)}});
    else
        context.console->print(
            (hex ? QString::fromLatin1(data.toHex(' ')) : QString::fromUtf8(data)) +
            QLatin1Char('\n'));
}

int setSetting(const CommandContext &context, GpibBridge &bridge)
{
    const std::optional<GpibModuleSetting> device = bridge.readSetting();
    if (!device)
        return accessExitCode(bridge);
    QString controller = QString::number(device->controllerAddress);
    QString timeout = QString::number(device->timeoutMs());
    for (const QString &argument : context.arguments.mid(1)) {
        const QString key = argument.section(QLatin1Char('='), 0, 0);
        const QString value = argument.section(QLatin1Char('='), 1);
        if (argument.contains(QLatin1Char('=')) && key == QLatin1String("controller"))
            controller = value;
        else if (argument.contains(QLatin1Char('=')) && key == QLatin1String("timeout-ms"))
            timeout = value;
        else
            return context.refuse(GpibCommand::tr("Unknown setting %1; the settings are "
                                                  "controller, timeout-ms")
                                      .arg(key),
                                  ExitCode::kRefusedInput);
    }
    const std::optional<GpibModuleSetting> setting = GpibBridge::parseSetting(controller, timeout);
    if (!setting)
        return ExitCode::kRefusedInput;
    if (!bridge.writeSetting(*setting))
        return accessExitCode(bridge);
    printSetting(context, *setting);
    return ExitCode::kSuccess;
}

} // namespace

int GpibCommand::run(const CommandContext &context)
{
    const QString action = context.arguments.value(0);
    const QCommandLineParser &parser = *context.parser;
    GpibBridge bridge(context.agent);
    bridge.setWaitTimeoutMs(context.timeoutMs);

    if (action == QLatin1String("settings") && context.arguments.size() == 1) {
        const std::optional<GpibModuleSetting> setting = bridge.readSetting();
        if (!setting)
            return accessExitCode(bridge);
        printSetting(context, *setting);
        return ExitCode::kSuccess;
    }
    if (action == QLatin1String("set") && context.arguments.size() > 1)
        return setSetting(context, bridge);

    // Bus transactions: the arguments and options are checked before anything is connected.
    const bool takesAddress = action == QLatin1String("query") || action == QLatin1String("send") ||
                              action == QLatin1String("recv");
    const int wanted =
        action == QLatin1String("clear") ? 1 : (action == QLatin1String("recv") ? 2 : 3);
    if ((!takesAddress && action != QLatin1String("clear")) || context.arguments.size() != wanted)
        return context.refuse(tr("Unknown or incomplete gpib command; see: mavix gpib --help"),
                              ExitCode::kRefusedInput);
    std::optional<GpibBridge::Addresses> addresses;
    if (takesAddress) {
        // Without --controller, the module's own address, as the tab shows it after a read.
        QString controller = parser.value(QStringLiteral("controller"));
        if (!parser.isSet(QStringLiteral("controller"))) {
            const std::optional<GpibModuleSetting> setting = bridge.readSetting();
            if (!setting)
                return accessExitCode(bridge);
            controller = QString::number(setting->controllerAddress);
        }
        addresses = GpibBridge::parseAddresses(controller, context.arguments.value(1));
        if (!addresses)
            return ExitCode::kRefusedInput;
    }
    const QString delimiterName = parser.isSet(QStringLiteral("delimiter"))
                                      ? parser.value(QStringLiteral("delimiter"))
                                      : QStringLiteral("crlf");
    if (!delimiters().contains(delimiterName))
        return context.refuse(
            tr("--delimiter must be crlf, cr, lf or none, not %1").arg(delimiterName),
            ExitCode::kRefusedInput);
    const QByteArray delimiter = GpibBus::delimiterBytes(int(delimiters().indexOf(delimiterName)));
    qint64 maxLength = 0;
    if (!context.maxLength(&maxLength))
        return ExitCode::kRefusedInput;
    const QByteArray message = context.arguments.value(2).toUtf8();
    if (action != QLatin1String("recv") && action != QLatin1String("clear") && message.isEmpty())
        return context.refuse(QCoreApplication::translate("ZELGPIBTab", "GPIB command is empty"),
                              ExitCode::kRefusedInput);

    if (!bridge.connectTo(context.target->host(), context.target->tcpPort()))
        return ExitCode::kConnectionOrFile;
    QByteArray data;
    bool done = false;
    if (action == QLatin1String("clear"))
        done = bridge.interfaceClear();
    else if (action == QLatin1String("send"))
        done = bridge.send(*addresses, message + delimiter);
    else if (action == QLatin1String("recv"))
        done = bridge.receive(*addresses, delimiter, maxLength, &data);
    else
        done = bridge.query(*addresses, message + delimiter, delimiter, maxLength, &data);
    if (!data.isEmpty() ||
        (done && action != QLatin1String("send") && action != QLatin1String("clear")))
        printData(context, data);
    if (bridge.isConnected())
        bridge.disconnectFromModule();
    return done ? ExitCode::kSuccess : exitCodeOf(bridge.lastFailure());
}
