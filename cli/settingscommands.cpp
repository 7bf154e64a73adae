#include "cli/settingscommands.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "settings/mavixsetting.h"
#include "settings/mavixsettingaccess.h"
#include "settings/mavixsettingfields.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"

#include <QCommandLineParser>
#include <QJsonObject>
#include <QRegularExpression>

#include <optional>

namespace {

// The keys of `set` and the Detail tab's fields they fill. The MAC address has none: the write
// sequence never reaches it.
struct Key
{
    const char *name;
    QString MavixSettingFields::*field;
};
constexpr Key kKeys[] = {
    {"ip", &MavixSettingFields::ipAddress},
    {"tcp-port", &MavixSettingFields::tcpDataPort},
    {"udp-port", &MavixSettingFields::udpPort},
    {"command-port", &MavixSettingFields::tcpCommandPort},
    {"max-segment-size", &MavixSettingFields::tcpMaxSegmentSize},
    {"keep-alive", nullptr}, // on or off
    {"keep-alive-busy-ms", &MavixSettingFields::tcpKeepAliveBufferNotEmptyMs},
    {"keep-alive-idle-ms", &MavixSettingFields::tcpKeepAliveBufferEmptyMs},
    {"connect-timeout-ms", &MavixSettingFields::tcpTimeoutConnectingMs},
    {"disconnect-timeout-ms", &MavixSettingFields::tcpTimeoutDisconnectMs},
    {"reconnect-interval-ms", &MavixSettingFields::tcpReconnectIntervalMs},
    {"retransmission-timer-ms", &MavixSettingFields::tcpRetransmissionTimerMs},
};

const Key *findKey(const QString &name)
{
    for (const Key &key : kKeys)
        if (name == QLatin1String(key.name))
            return &key;
    return nullptr;
}

QString keyNames()
{
    QStringList names;
    for (const Key &key : kKeys)
        names << QLatin1String(key.name);
    return names.join(QStringLiteral(", "));
}

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
    AccessGate::Hold hold(context.agent->gate());
    MavixSettingAccess access(context.agent);
    access.setAccessTimeoutMs(context.timeoutMs);
    access.setEEPROMAccess(context.parser->isSet(QStringLiteral("eeprom")));
    const std::optional<QByteArray> image = access.readImage(access.imageBase());
    if (!image)
        return failureCode(access);
    MavixSetting setting;
    if (const std::optional<QString> problem = setting.decode(*image)) {
        reportError(*problem);
        return ExitCode::kBadReply;
    }
    printSetting(context, setting);
    reportResult(QCoreApplication::translate("GeneralTab", "Reading Mavix setting is successed"));
    return ExitCode::kSuccess;
}

// KEY=VALUE pairs fill the Detail tab's fields, which start from the device's values: a key left
// out keeps the device's value. The address and ports pass the General tab's checks, then every
// field the Detail tab's, with their messages.
std::optional<MavixSetting> SettingsCommands::recordFrom(const CommandContext &context,
                                                         const MavixSetting &device)
{
    MavixSettingFields fields = MavixSettingFields::from(device);
    for (const QString &argument : context.arguments) {
        const QString name = argument.section(QLatin1Char('='), 0, 0);
        const QString value = argument.section(QLatin1Char('='), 1);
        const Key *key = argument.contains(QLatin1Char('=')) ? findKey(name) : nullptr;
        if (!key) {
            reportError(tr("Unknown setting %1; the settings are %2").arg(name, keyNames()));
            return std::nullopt;
        }
        if (key->field) {
            fields.*(key->field) = value;
        } else if (value == QLatin1String("on") || value == QLatin1String("off")) {
            fields.tcpKeepAliveEnabled = value == QLatin1String("on");
        } else {
            reportError(tr("keep-alive must be on or off, not %1").arg(value));
            return std::nullopt;
        }
    }
    // The General tab's checks first, for their precise words about the address and ports.
    if (!MavixSetting::validateWriteFields(fields.ipAddress, fields.tcpDataPort, fields.udpPort,
                                           true))
        return std::nullopt;
    return fields.toRecord(device);
}

int SettingsCommands::set(const CommandContext &context)
{
    // The whole sequence is one device operation, as in the General tab.
    AccessGate::Hold hold(context.agent->gate());
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
    if (const std::optional<QString> problem = device.decode(*image)) {
        reportError(*problem);
        return ExitCode::kBadReply;
    }
    const std::optional<MavixSetting> record = recordFrom(context, device);
    if (!record)
        return ExitCode::kRefusedInput;
    if (!access.write(*record, *image))
        return failureCode(access);
    printSetting(context, *record);
    return ExitCode::kSuccess;
}
