#include "cli/settingscommands.h"

#include "app/report.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "settings/mavixsetting.h"
#include "wren/wrenagent.h"
#include "wren/wrenerror.h"

#include <QCommandLineParser>
#include <QJsonObject>
#include <QRegularExpression>

#include <optional>

namespace {

QString readTimeoutText()
{
    return QCoreApplication::translate("GeneralTab",
                                       "Response to reading Mavix Setting is timeout");
}

quint32 imageBase(const CommandContext &context)
{
    return context.parser->isSet(QStringLiteral("eeprom")) ? MavixSetting::kEepromBase
                                                           : MavixSetting::kRunningBase;
}

std::optional<QByteArray> readImage(const CommandContext &context, int *exitCode)
{
    try {
        return context.agent->read(imageBase(context), MavixSetting::kImageSize, context.timeoutMs);
    } catch (const WrenError &error) {
        *exitCode = context.accessFailed(error, readTimeoutText());
        return std::nullopt;
    }
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
    int exitCode = ExitCode::kSuccess;
    const std::optional<QByteArray> image = readImage(context, &exitCode);
    if (!image)
        return exitCode;
    MavixSetting setting;
    setting.decode(*image);
    printSetting(context, setting);
    reportResult(QCoreApplication::translate("GeneralTab", "Reading Mavix setting is successed"));
    return ExitCode::kSuccess;
}

int SettingsCommands::set(const CommandContext &context)
{
    Q_UNUSED(context)
    return ExitCode::kRefusedInput;
}
