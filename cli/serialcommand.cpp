#include "cli/serialcommand.h"

#include "app/accessgate.h"
#include "app/report.h"
#include "app/signalwatcher.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "modules/serialbridge.h"
#include "wren/wrenagent.h"

#include <QCommandLineParser>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

#include <optional>

namespace {

using namespace Rs232c;

// Value names of `set` and `settings`, in the order of the tab's items.
QStringList bauds()
{
    return {QStringLiteral("460800"), QStringLiteral("230400"), QStringLiteral("115200"),
            QStringLiteral("57600"),  QStringLiteral("36400"),  QStringLiteral("19200"),
            QStringLiteral("9600"),   QStringLiteral("4800"),   QStringLiteral("2400"),
            QStringLiteral("1200")};
}
QStringList dataBits()
{
    return {QStringLiteral("8"), QStringLiteral("7"), QStringLiteral("6"), QStringLiteral("5")};
}
QStringList stopBits()
{
    return {QStringLiteral("1"), QStringLiteral("2")};
}
QStringList parities()
{
    return {QStringLiteral("none"), QStringLiteral("mark"), QStringLiteral("space"),
            QStringLiteral("odd"), QStringLiteral("even")};
}
QStringList flows()
{
    return {QStringLiteral("manual"), QStringLiteral("auto-ignore"),
            QStringLiteral("auto-consider")};
}
QStringList onOff()
{
    return {QStringLiteral("off"), QStringLiteral("on")};
}
const std::array<const char *, kLineCount> kLineNames{
    {"rts", "cts", "dtr", "ri", "dsr", "txd", "rxd", "cd"}};

const char *connectorName(Connector connector)
{
    return connector == Connector::Dte ? "dte" : "dce";
}

std::optional<Connector> connectorOf(const QString &name)
{
    if (name == QLatin1String("dte"))
        return Connector::Dte;
    if (name == QLatin1String("dce"))
        return Connector::Dce;
    return std::nullopt;
}

int accessExitCode(const SerialBridge &bridge)
{
    return ExitCode::forWrenError(
        WrenError{quint32(bridge.lastAccessErrorCode().value_or(WrenError::Timeout)), {}});
}

int dataExitCode(const SerialBridge &bridge)
{
    return bridge.lastResult() == SerialConnectorSession::Result::TimedOut
               ? ExitCode::kTimeout
               : ExitCode::kConnectionOrFile;
}

QString nameAt(const QStringList &names, int index)
{
    return names.value(index, QString::number(index));
}

void printConfig(const CommandContext &context, const Rs232cConfig &config)
{
    QJsonObject object{{QStringLiteral("baud"), nameAt(bauds(), config.baudIndex)},
                       {QStringLiteral("data-bits"), nameAt(dataBits(), config.dataWidthIndex)},
                       {QStringLiteral("stop-bits"), nameAt(stopBits(), config.stopBitIndex)},
                       {QStringLiteral("parity"), nameAt(parities(), config.parityIndex)}};
    QStringList lines{QStringLiteral("baud %1").arg(nameAt(bauds(), config.baudIndex)),
                      QStringLiteral("data-bits %1").arg(nameAt(dataBits(), config.dataWidthIndex)),
                      QStringLiteral("stop-bits %1").arg(nameAt(stopBits(), config.stopBitIndex)),
                      QStringLiteral("parity %1").arg(nameAt(parities(), config.parityIndex))};
    for (const Connector connector : {Connector::Dte, Connector::Dce}) {
        const Rs232cConnectorSetting &setting = config.connectors[size_t(connector)];
        const QString name = QLatin1String(connectorName(connector));
        object.insert(name + QLatin1String("-flow"), nameAt(flows(), setting.flowType));
        object.insert(name + QLatin1String("-wait"), setting.wait);
        object.insert(name + QLatin1String("-port"), qint64(setting.tcpPort));
        lines << QStringLiteral("%1-flow %2").arg(name, nameAt(flows(), setting.flowType))
              << QStringLiteral("%1-wait %2").arg(name, nameAt(onOff(), setting.wait))
              << QStringLiteral("%1-port %2").arg(name).arg(setting.tcpPort);
    }
    // Each line as the device reports it (both connectors see it alike).
    const Rs232cConnectorSetting &dte = config.connectors[size_t(Connector::Dte)];
    for (const LineBits &bits : kLineTable) {
        const QString name = QLatin1String(kLineNames[size_t(bits.line)]);
        object.insert(name, bool(dte.lines[size_t(bits.line)]));
        lines << QStringLiteral("%1 %2").arg(name, nameAt(onOff(), dte.lines[size_t(bits.line)]));
    }
    if (context.console->json())
        context.console->printJson(object);
    else
        context.console->print(lines.join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

// One KEY=VALUE into the configuration; the ports go to *ports. False with the error reported.
bool apply(const QString &argument, Rs232cConfig *config,
           std::array<std::optional<quint16>, 2> *ports)
{
    const QString key = argument.section(QLatin1Char('='), 0, 0);
    const QString value = argument.section(QLatin1Char('='), 1).remove(QLatin1Char(','));
    const auto choose = [&](const QStringList &names, int *index) {
        *index = int(names.indexOf(value));
        if (*index >= 0)
            return true;
        reportError(SerialCommand::tr("%1 must be one of %2, not %3")
                        .arg(key, names.join(QStringLiteral(", ")), value));
        return false;
    };
    if (argument.contains(QLatin1Char('=')) && key == QLatin1String("baud"))
        return choose(bauds(), &config->baudIndex);
    if (key == QLatin1String("data-bits"))
        return choose(dataBits(), &config->dataWidthIndex);
    if (key == QLatin1String("stop-bits"))
        return choose(stopBits(), &config->stopBitIndex);
    if (key == QLatin1String("parity"))
        return choose(parities(), &config->parityIndex);
    for (const Connector connector : {Connector::Dte, Connector::Dce}) {
        Rs232cConnectorSetting &setting = config->connector(connector);
        const QString prefix = QLatin1String(connectorName(connector)) + QLatin1Char('-');
        int index = 0;
        if (key == prefix + QLatin1String("flow"))
            return choose(flows(), &setting.flowType);
        if (key == prefix + QLatin1String("wait")) {
            const bool known = choose(onOff(), &index);
            setting.wait = index == 1;
            return known;
        }
        if (key == prefix + QLatin1String("port")) {
            quint16 port = 0;
            if (!MavixSetting::parsePort(value, &port)) {
                reportError(QCoreApplication::translate("ZELRS232CTab",
                                                        "TCP Port number must be 0 to 65535"));
                return false;
            }
            (*ports)[size_t(connector)] = port;
            return true;
        }
    }
    // Output lines, each switched at the connector that drives it.
    for (const LineBits &bits : kLineTable) {
        if (key != QLatin1String(kLineNames[size_t(bits.line)]) ||
            !isOutput(bits.line, bits.driver))
            continue;
        int index = 0;
        const bool known = choose(onOff(), &index);
        config->connector(bits.driver).lines[size_t(bits.line)] = index == 1;
        return known;
    }
    reportError(SerialCommand::tr("Unknown setting %1; the settings are baud, data-bits, "
                                  "stop-bits, parity, dte-flow, dce-flow, dte-wait, dce-wait, "
                                  "dte-port, dce-port, rts, dtr, cts, ri, dsr, cd")
                    .arg(key));
    return false;
}

} // namespace

int SerialCommand::run(const CommandContext &context)
{
    const QString action = context.arguments.value(0);
    if (action == QLatin1String("settings") && context.arguments.size() == 1)
        return show(context);
    if (action == QLatin1String("set") && context.arguments.size() > 1)
        return set(context);
    if ((action == QLatin1String("send") && context.arguments.size() == 3) ||
        ((action == QLatin1String("recv") || action == QLatin1String("monitor")) &&
         context.arguments.size() == 2))
        return data(context, action);
    return context.refuse(tr("Unknown or incomplete serial command; see: mavix serial --help"),
                          ExitCode::kRefusedInput);
}

int SerialCommand::show(const CommandContext &context)
{
    SerialBridge bridge(context.agent);
    bridge.setTimeouts(context.timeoutMs, context.timeoutMs);
    if (!bridge.read(context.parser->isSet(QStringLiteral("eeprom"))))
        return accessExitCode(bridge);
    printConfig(context, bridge.config());
    return ExitCode::kSuccess;
}

// Starts from the device's values: a key left out keeps them. Every key is checked before anything
// is written.
int SerialCommand::set(const CommandContext &context)
{
    AccessGate::Hold hold(context.agent->gate());
    const bool eeprom = context.parser->isSet(QStringLiteral("eeprom"));
    SerialBridge bridge(context.agent);
    bridge.setTimeouts(context.timeoutMs, context.timeoutMs);
    if (!bridge.read(eeprom))
        return accessExitCode(bridge);
    Rs232cConfig config = bridge.config();
    std::array<std::optional<quint16>, 2> ports;
    for (const QString &argument : context.arguments.mid(1))
        if (!apply(argument, &config, &ports))
            return ExitCode::kRefusedInput;
    // The lines just read are inputs too; only outputs are written, as the tab does.
    bridge.config() = config;
    const auto portOf = [&](Connector connector) {
        return ports[size_t(connector)].value_or(quint16(config.connector(connector).tcpPort));
    };
    if (!bridge.write(eeprom, Connector::Dte, portOf(Connector::Dte)))
        return accessExitCode(bridge);
    if (ports[size_t(Connector::Dce)] &&
        !bridge.write(eeprom, Connector::Dce, portOf(Connector::Dce)))
        return accessExitCode(bridge);
    printConfig(context, bridge.config());
    return ExitCode::kSuccess;
}

int SerialCommand::data(const CommandContext &context, const QString &action)
{
    const std::optional<Connector> connector = connectorOf(context.arguments.value(1));
    if (!connector)
        return context.refuse(
            tr("The connector must be dte or dce, not %1").arg(context.arguments.value(1)),
            ExitCode::kRefusedInput);
    const QCommandLineParser &parser = *context.parser;
    qint64 maxLength = 0;
    if (!context.maxLength(&maxLength))
        return ExitCode::kRefusedInput;
    // TEXT, @FILE or - (standard input), sent as they are.
    QByteArray bytes;
    if (action == QLatin1String("send")) {
        const QString source = context.arguments.value(2);
        if (source == QLatin1String("-") || source.startsWith(QLatin1Char('@'))) {
            QFile file;
            const bool opened = source == QLatin1String("-") ? file.open(stdin, QIODevice::ReadOnly)
                                                             : (file.setFileName(source.mid(1)),
                                                                file.open(QIODevice::ReadOnly));
            if (!opened)
                return context.refuse(tr("File cannot open: %1").arg(source),
                                      ExitCode::kConnectionOrFile);
            bytes = file.readAll();
        } else {
            bytes = source.toUtf8();
        }
    }

    const bool hex = parser.isSet(QStringLiteral("hex"));
    const auto print = [&](const QByteArray &data) {
        if (context.console->json())
            context.console->printJson(
                {{QStringLiteral("connector"), QLatin1String(connectorName(*connector))},
                 {QStringLiteral("length"), int(data.size())},
                 {QStringLiteral("data"), QString::fromLatin1(data.toHex())}});
        else if (hex)
            context.console->print(QString::fromLatin1(data.toHex(' ')) + QLatin1Char('\n'));
        else
            context.console->print(QString::fromUtf8(data));
    };

    SerialBridge bridge(context.agent);
    bridge.setTimeouts(context.timeoutMs, context.timeoutMs);
    if (!bridge.readRunningPorts())
        return accessExitCode(bridge);
    if (!bridge.connectTo(*connector))
        return dataExitCode(bridge);
    int exitCode = ExitCode::kSuccess;
    if (action == QLatin1String("send")) {
        if (!bridge.send(*connector, bytes))
            exitCode = dataExitCode(bridge);
    } else if (action == QLatin1String("recv")) {
        QByteArray received;
        if (bridge.receive(*connector, maxLength, &received)) {
            print(received);
            if (!context.console->json() && !hex && !received.endsWith('\n'))
                context.console->print(QStringLiteral("\n"));
        } else {
            exitCode = dataExitCode(bridge);
        }
    } else {
        // Ctrl+C gives up the wait in progress, which ends the monitor.
        SignalWatcher termination;
        QObject::connect(&termination, &SignalWatcher::signalReceived, context.agent->gate(),
                         &AccessGate::abort);
        if (!bridge.monitor(*connector, print))
            exitCode = dataExitCode(bridge);
    }
    if (bridge.isConnected(*connector))
        bridge.disconnectFrom(*connector);
    return exitCode;
}
