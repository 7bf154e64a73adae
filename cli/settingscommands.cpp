#include "cli/settingscommands.h"

#include "app/report.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "settings/mavixsetting.h"
#include "settings/mavixsettingaccess.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"

#include <QCommandLineParser>
#include <QJsonObject>
#include <QRegularExpression>

#include <optional>

namespace {

const QStringList kKeys{QStringLiteral("ip"), QStringLiteral("tcp-port"),
                        QStringLiteral("udp-port"), QStringLiteral("keep-alive")};

// The exit code of a failed sequence: the failed access's, or refused input for a declined change.
int failureCode(const MavixSettingAccess &access)
{
    const std::optional<WrenError> error = access.lastError();
    return error ? ExitCode::forWrenError(*error) : ExitCode::kRefusedInput;
}

QJsonObject settingObject(const MavixSetting &setting)
{
    return {{QStringLiteral("macAddress"), setting.macAddressText()},
            {QStringLiteral("ipAddress"), setting.ipAddress},
            {QStringLiteral("tcpDataPort"), setting.tcpDataPort},
            {QStringLiteral("tcpCommandPort"), setting.tcpCommandPort},
            {QStringLiteral("udpPort"), setting.udpPort},
            {QStringLiteral("tcpMaxSegmentSize"), setting.tcpMaxSegmentSize},
            {QStringLiteral("tcpKeepAliveEnabled"), setting.tcpKeepAliveEnabled},
            {QStringLiteral("tcpKeepAliveBufferNotEmptyMs"), setting.tcpKeepAliveBufferNotEmptyMs},
            {QStringLiteral("tcpKeepAliveBufferEmptyMs"), setting.tcpKeepAliveBufferEmptyMs},
            {QStringLiteral("tcpTimeoutConnectingMs"), setting.tcpTimeoutConnectingMs},
            {QStringLiteral("tcpTimeoutDisconnectMs"), qint64(setting.tcpTimeoutDisconnectMs())},
            {QStringLiteral("tcpReconnectIntervalMs"), setting.tcpReconnectIntervalMs},
            {QStringLiteral("tcpRetransmissionTimerMs"), setting.tcpRetransmissionTimerMs}};
}

void printSetting(const CommandContext &context, const MavixSetting &setting)
{
    if (context.console->json()) {
        QJsonObject object = settingObject(setting);
        object.insert(QStringLiteral("copy"), context.parser->isSet(QStringLiteral("eeprom"))
                                                  ? QStringLiteral("eeprom")
                                                  : QStringLiteral("running"));
        context.console->printJson(object);
        return;
    }
    QString report = setting.textReport();
    static const QRegularExpression lineEnd(QStringLiteral(" ?\r\n"));
    report.replace(lineEnd, QStringLiteral("\n"));
    context.console->print(report + QLatin1Char('\n'));
}

} // namespace

int SettingsCommands::show(const CommandContext &context)
{
    MavixSettingAccess access(context.agent);
    access.setAccessTimeoutMs(context.timeoutMs);
    access.setEEPROMAccess(context.parser->isSet(QStringLiteral("eeprom")));
    const std::optional<QByteArray> image = access.readImage(access.imageBase());
    if (!image)
        return failureCode(access);
    MavixSetting setting;
    setting.decode(*image);
    printSetting(context, setting);
    reportResult(QCoreApplication::translate("GeneralTab", "Reading Mavix setting is successed"));
    return ExitCode::kSuccess;
}

// KEY=VALUE pairs as the General tab's write fields: a key left out keeps the device's value. The
// IP address and ports pass the General tab's five checks, with its messages.
std::optional<MavixSetting> SettingsCommands::recordFrom(const CommandContext &context,
                                                         const MavixSetting &device)
{
    QString ip = device.ipAddress;
    QString tcpPort = QString::number(device.tcpDataPort);
    QString udpPort = QString::number(device.udpPort);
    MavixSetting record = device;
    for (const QString &argument : context.arguments) {
        const QString key = argument.section(QLatin1Char('='), 0, 0);
        const QString value = argument.section(QLatin1Char('='), 1);
        if (!argument.contains(QLatin1Char('=')) || !kKeys.contains(key)) {
            reportError(tr("Unknown setting %1; the settings are %2")
                            .arg(key, kKeys.join(QStringLiteral(", "))));
            return std::nullopt;
        }
        if (key == kKeys[0])
            ip = value;
        else if (key == kKeys[1])
            tcpPort = value;
        else if (key == kKeys[2])
            udpPort = value;
        else if (value == QLatin1String("on") || value == QLatin1String("off"))
            record.tcpKeepAliveEnabled = value == QLatin1String("on");
        else {
            reportError(tr("keep-alive must be on or off, not %1").arg(value));
            return std::nullopt;
        }
    }
    if (!MavixSetting::validateTarget(ip, tcpPort, udpPort, true))
        return std::nullopt;
    record.ipAddress = ip;
    (void)MavixSetting::parsePort(tcpPort, &record.tcpDataPort);
    (void)MavixSetting::parsePort(udpPort, &record.udpPort);
    return record;
}

int SettingsCommands::set(const CommandContext &context)
{
    MavixSettingAccess access(context.agent);
    access.setAccessTimeoutMs(context.timeoutMs);
    access.setEEPROMAccess(context.parser->isSet(QStringLiteral("eeprom")));
    // The GUI asks, with No as the default; a script says yes beforehand or is refused.
    const bool yes = context.parser->isSet(QStringLiteral("yes"));
    access.setUdpPortChangeQuestion([yes] {
        if (!yes)
            reportError(QCoreApplication::translate(
                "GeneralTab", "It is recommended to enable EEPROM Access and rewrite UDP port. If "
                              "you want to continue, please select yes as it is."));
        return yes;
    });

    const std::optional<QByteArray> image = access.readImage(access.imageBase());
    if (!image)
        return failureCode(access);
    MavixSetting device;
    device.decode(*image);
    const std::optional<MavixSetting> record = recordFrom(context, device);
    if (!record)
        return ExitCode::kRefusedInput;
    if (!access.write(*record, *image))
        return failureCode(access);
    printSetting(context, *record);
    return ExitCode::kSuccess;
}
