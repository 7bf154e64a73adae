#include "cli/commandline.h"

#include "app/devicetarget.h"
#include "app/hostlookup.h"
#include "app/startupoptions.h"
#include "cli/commandcontext.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/gpibcommand.h"
#include "cli/mapcommands.h"
#include "cli/registercommands.h"
#include "cli/serialcommand.h"
#include "cli/settingscommands.h"
#include "cli/transfercommand.h"
#include "regs/registercatalog.h"
#include "settings/mavixsetting.h"
#include "wren/wrenagent.h"

#include <QCommandLineParser>
#include <QHostAddress>
#include <QRegularExpression>

#include <algorithm>
#include <csignal>
#include <unistd.h>

namespace {

constexpr char kTargetVariable[] = "MAVIX_TARGET";
// Put before a negative number so that the option parser takes it for an argument.
constexpr QChar kNumberMark = QChar(0x1F);

// Ctrl+C (or SIGTERM) during any wait of a command ends the tool at once with 128 + the signal;
// the commands that must close something first (transfers, watch) install their own watcher.
void exitOnInterrupt(int signalNumber)
{
    ::_exit(128 + signalNumber);
}

void installInterruptExit()
{
    struct sigaction action = {};
    action.sa_handler = &exitOnInterrupt;
    sigemptyset(&action.sa_mask);
    (void)::sigaction(SIGINT, &action, nullptr);
    (void)::sigaction(SIGTERM, &action, nullptr);
}

int runTransfer(const CommandContext &context, TransferCommand::Direction direction)
{
    TransferCommand transfer(context, direction);
    return transfer.run();
}

} // namespace

CommandLine::CommandLine()
    : m_target(QStringLiteral("target"),
               tr("The device to talk to (default %1:%2:%3); the environment variable %4 sets "
                  "it too.")
                   .arg(MavixSetting().ipAddress)
                   .arg(MavixSetting().udpPort)
                   .arg(MavixSetting().tcpDataPort)
                   .arg(QLatin1String(kTargetVariable)),
               QStringLiteral("HOST[:UDP[:TCP]]")),
      m_timeout(
          QStringLiteral("timeout"),
          tr("Time-out of each wait for the device in milliseconds: a register reply; on the data "
             "port the connection, a write and the close (default %1).")
              .arg(WrenAgent::kAccessTimeoutMs),
          QStringLiteral("MS")),
      m_json(QStringLiteral("json"), tr("Print each result as one JSON object on a line.")),
      m_help(QStringList(QStringLiteral("h")) << QStringLiteral("help"),
             tr("Show this help; after a command, the command's help."))
{
    const QCommandLineOption eepromRead(QStringLiteral("eeprom"),
                                        tr("Read the EEPROM copy instead of the running copy."));
    const QCommandLineOption eepromWrite(QStringLiteral("eeprom"),
                                         tr("Write the EEPROM copy instead of the running copy."));
    const QStringList address{QStringLiteral("ADDR"),
                              tr("Register address, hexadecimal (up to 8 digits).")};
    const QStringList length{QStringLiteral("LEN"), tr("Number of bytes, 0 to 255.")};
    const QStringList file{QStringLiteral("FILE"), tr("The file.")};
    const QCommandLineOption map(QStringLiteral("map"),
                                 tr("Load a register map beside the built-in one (repeatable); the "
                                    "environment variable %1 names more, separated by ':'.")
                                     .arg(QLatin1String(RegisterCatalog::kMapsVariable)),
                                 QStringLiteral("FILE"));
    const QCommandLineOption expert(
        QStringLiteral("expert"),
        tr("Allow writes into the top 64 KiB of the address space (expert mode)."));
    const QStringList snapshot{QStringLiteral("SNAPSHOT"), tr("A file written by mavix dump.")};
    using Direction = TransferCommand::Direction;
    m_commands = {
        {QStringLiteral("read"),
         QStringLiteral("ADDR LEN [--out FILE]"),
         tr("Read LEN bytes at ADDR and print them as a hex dump, 16 bytes a line."),
         {{QStringLiteral("out"), tr("Write the raw bytes into FILE instead."),
           QStringLiteral("FILE")},
          {QStringLiteral("no-address"), tr("Leave out the address at the head of each line.")}},
         {address, length},
         2,
         2,
         &RegisterCommands::read},
        {QStringLiteral("write"),
         QStringLiteral("ADDR HEX|@FILE"),
         tr("Write hex bytes separated by blanks, or the raw bytes of FILE, at ADDR."),
         {{QStringLiteral("expert"),
           tr("Allow writes into the top 64 KiB of the address space (expert mode).")}},
         {address,
          {QStringLiteral("DATA"), tr("Hex bytes (01 02 0a ...) or @ and a file name."),
           QStringLiteral("HEX|@FILE")}},
         1,
         -1,
         &RegisterCommands::write},
        {QStringLiteral("settings"),
         QStringLiteral("[--eeprom]"),
         tr("Show the device's network settings as the General tab does."),
         {eepromRead},
         {},
         0,
         0,
         &SettingsCommands::show},
        {QStringLiteral("set"),
         QStringLiteral("[--eeprom] [--yes] KEY=VALUE ..."),
         tr("Change settings with the checks of the General and Detail tabs and the General tab's "
            "write sequence. Keys: ip, tcp-port, udp-port, command-port, max-segment-size, "
            "keep-alive (on or off), keep-alive-busy-ms, keep-alive-idle-ms, connect-timeout-ms, "
            "disconnect-timeout-ms, reconnect-interval-ms, retransmission-timer-ms."),
         {eepromWrite,
          {QStringLiteral("yes"),
           tr("Go on when the UDP port of the running copy changes (the GUI asks first).")}},
         {{QStringLiteral("KEY=VALUE"), tr("A setting and its new value."),
           QStringLiteral("KEY=VALUE ...")}},
         1,
         -1,
         &SettingsCommands::set},
        {QStringLiteral("recv"),
         QStringLiteral("FILE [--bytes N] [--seconds S]"),
         tr("Receive from the TCP data port into FILE until Ctrl+C or a limit."),
         {{QStringLiteral("bytes"), tr("Stop after N bytes; the file keeps exactly N."),
           QStringLiteral("N")},
          {QStringLiteral("seconds"), tr("Stop after S seconds."), QStringLiteral("S")}},
         {file},
         1,
         1,
         [](const CommandContext &context) { return runTransfer(context, Direction::Receive); }},
        {QStringLiteral("send"),
         QStringLiteral("FILE"),
         tr("Send FILE to the TCP data port."),
         {},
         {file},
         1,
         1,
         [](const CommandContext &context) { return runTransfer(context, Direction::Send); }},
        {QStringLiteral("watch"),
         QStringLiteral("ADDR LEN [--interval MS] [--csv]"),
         tr("Read a register range again and again and print the lines that changed, until "
            "Ctrl+C."),
         {{QStringLiteral("interval"), tr("Time between two reads in milliseconds (default 1000)."),
           QStringLiteral("MS")},
          {QStringLiteral("csv"),
           tr("Print one CSV row a change (time, seconds since the start, address, value in "
              "hex) under a header line.")}},
         {address, length},
         2,
         2,
         &RegisterCommands::watch},
        {QStringLiteral("regs"),
         QStringLiteral("[PATTERN] [--map FILE]"),
         tr("List the register map: blocks, registers and fields, all or those that match."),
         {map},
         {{QStringLiteral("PATTERN"), tr("A block or register name, or a pattern with * and ?.")}},
         0,
         1,
         &MapCommands::regs},
        {QStringLiteral("get"),
         QStringLiteral("NAME|NAME.FIELD ... [--map FILE]"),
         tr("Read registers by name and show their values and fields decoded."),
         {map},
         {{QStringLiteral("NAME"), tr("A register or field name, as mavix regs lists them."),
           QStringLiteral("NAME|NAME.FIELD ...")}},
         1,
         -1,
         &MapCommands::get},
        {QStringLiteral("put"),
         QStringLiteral("NAME.FIELD=VALUE ... [--expert] [--map FILE]"),
         tr("Change fields (or whole registers) by read-modify-write: one read and one write per "
            "register."),
         {map, expert},
         {{QStringLiteral("NAME=VALUE"),
           tr("A field or register and its new value: a number or one of its named values."),
           QStringLiteral("NAME.FIELD=VALUE ...")}},
         1,
         -1,
         &MapCommands::put},
        {QStringLiteral("dump"),
         QStringLiteral("[PATTERN] [--map FILE]"),
         tr("Read every readable register (or those that match) and print them as a snapshot "
            "file."),
         {map},
         {{QStringLiteral("PATTERN"), tr("A block or register name, or a pattern with * and ?.")}},
         0,
         1,
         &MapCommands::dump},
        {QStringLiteral("diff"),
         QStringLiteral("SNAPSHOT [--map FILE]"),
         tr("Show the registers whose values on the device differ from a snapshot."),
         {map},
         {snapshot},
         1,
         1,
         &MapCommands::diff},
        {QStringLiteral("load"),
         QStringLiteral("SNAPSHOT [--yes] [--expert] [--map FILE]"),
         tr("Write a snapshot's writable registers back to the device (asks first)."),
         {map, expert, {QStringLiteral("yes"), tr("Write without asking.")}},
         {snapshot},
         1,
         1,
         &MapCommands::load},
        {QStringLiteral("gpib"),
         QStringLiteral("settings | set KEY=VALUE ... | query ADDR TEXT | send ADDR TEXT | "
                        "recv ADDR | clear"),
         tr("Drive the ZEL-GPIB bridge module on the TCP data port: show or change its settings "
            "(keys: controller, timeout-ms), send TEXT to the instrument at GPIB address ADDR, "
            "receive its answer, query (send, then receive), or clear the bus (Interface Clear). "
            "The answer goes to standard output."),
         {{QStringLiteral("delimiter"),
           tr("What ends a message sent and an answer received: crlf (default), cr, lf or none "
              "(the END signal alone)."),
           QStringLiteral("crlf|cr|lf|none")},
          {QStringLiteral("max"),
           tr("Stop receiving after N bytes (default: END, the delimiter or 1 MiB)."),
           QStringLiteral("N")},
          {QStringLiteral("controller"),
           tr("The module's own GPIB address (default: read from the module's settings)."),
           QStringLiteral("ADDR")},
          {QStringLiteral("hex"), tr("Print the answer as hex bytes.")}},
         {{QStringLiteral("ACTION"), tr("settings, set, query, send, recv or clear."),
           QStringLiteral("ACTION ...")}},
         1,
         3,
         &GpibCommand::run},
        {QStringLiteral("serial"),
         QStringLiteral("settings | set KEY=VALUE ... | send dte|dce TEXT|@FILE|- | "
                        "recv dte|dce | monitor dte|dce"),
         tr("Drive the ZEL-RS232C serial bridge module: show or change its format, flow control, "
            "lines and ports (keys: baud, data-bits, stop-bits, parity, dte-flow, dce-flow, "
            "dte-wait, dce-wait, dte-port, dce-port, rts, dtr, cts, ri, dsr, cd), send to a "
            "connector (TEXT, the bytes of FILE, or standard input), receive what it delivered, "
            "or print what arrives until Ctrl+C."),
         {{QStringLiteral("eeprom"),
           tr("Read or write the EEPROM copy of the settings instead of the running copy.")},
          {QStringLiteral("max"),
           tr("Receive at most N bytes (default: what has arrived, up to 1 MiB)."),
           QStringLiteral("N")},
          {QStringLiteral("hex"), tr("Print what arrives as hex bytes.")}},
         {{QStringLiteral("ACTION"), tr("settings, set, send, recv or monitor."),
           QStringLiteral("ACTION ...")}},
         1,
         -1,
         &SerialCommand::run},
    };
}

void CommandLine::addGlobalOptions(QCommandLineParser &parser) const
{
    parser.addOptions({m_target, m_timeout, m_json, m_help});
}

QString CommandLine::mainHelp(QCommandLineParser &parser) const
{
    QString commands = tr("Commands:") + QLatin1Char('\n');
    for (const Command &command : m_commands)
        commands += QStringLiteral("  %1 %2\n      %3\n")
                        .arg(command.name, command.synopsis, command.summary);
    parser.setApplicationDescription(tr(
        "Reads and writes the registers of a Mavix device, its settings and its TCP data port."));
    parser.addPositionalArgument(QStringLiteral("COMMAND"), tr("The command, see below."),
                                 QStringLiteral("COMMAND ..."));
    return parser.helpText() + QLatin1Char('\n') + commands + QLatin1Char('\n') +
           tr("Exit codes: 0 success, 1 refused input, 2 time-out, 3 bad reply, 4 bus error, "
              "5 connection or file failure, 130 a transfer cut short by Ctrl+C.") +
           QLatin1Char('\n') + tr("\"mavix COMMAND --help\" describes a command.") +
           QLatin1Char('\n');
}

const CommandLine::Command *CommandLine::find(const QString &name) const
{
    for (const Command &command : m_commands)
        if (command.name == name)
            return &command;
    return nullptr;
}

int CommandLine::run(const QStringList &arguments)
{
    Console console(false);
    QCommandLineParser global;
    addGlobalOptions(global);
    // Everything from the command on belongs to the command's own parser.
    global.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    if (!global.parse(arguments)) {
        console.message(global.errorText());
        return ExitCode::kRefusedInput;
    }
    const QStringList rest = global.positionalArguments();
    if (rest.isEmpty()) {
        const QString help = mainHelp(global);
        if (global.isSet(QStringLiteral("help"))) {
            console.print(help);
            return ExitCode::kSuccess;
        }
        console.message(help);
        return ExitCode::kRefusedInput;
    }
    const Command *command = find(rest.first());
    if (!command) {
        console.message(tr("Unknown command: %1; see: mavix --help").arg(rest.first()));
        return ExitCode::kRefusedInput;
    }
    return runCommand(*command, QStringList{arguments.value(0)} + rest, global, console);
}

int CommandLine::runCommand(const Command &command, const QStringList &arguments,
                            const QCommandLineParser &global, Console &console)
{
    QCommandLineParser parser;
    addGlobalOptions(parser);
    parser.addOptions(command.options);
    parser.setApplicationDescription(command.summary);
    parser.addPositionalArgument(command.name, QString(), command.name);
    for (const QStringList &argument : command.positional)
        parser.addPositionalArgument(argument.value(0), argument.value(1), argument.value(2));
    // "-1" is a (negative) number for the command's checks to refuse, not an option. After an
    // option name it is that option's value and stays as typed, so its own check names it.
    static const QRegularExpression negativeNumber(QStringLiteral("^-[0-9]"));
    QStringList protectedArguments = arguments;
    for (qsizetype i = 1; i < protectedArguments.size(); ++i) {
        const QString &before = arguments.at(i - 1);
        const bool optionValue = before.startsWith(QLatin1Char('-')) &&
                                 !before.contains(negativeNumber) &&
                                 !before.contains(QLatin1Char('='));
        if (!optionValue && protectedArguments.at(i).contains(negativeNumber))
            protectedArguments[i].prepend(kNumberMark);
    }
    if (!parser.parse(protectedArguments)) {
        console.message(parser.errorText());
        return ExitCode::kRefusedInput;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        console.print(parser.helpText());
        return ExitCode::kSuccess;
    }
    QStringList positional = parser.positionalArguments().mid(1);
    for (QString &argument : positional)
        if (argument.startsWith(kNumberMark))
            argument.remove(0, 1);
    if (positional.size() < command.minArguments ||
        (command.maxArguments >= 0 && positional.size() > command.maxArguments)) {
        console.message(tr("Wrong number of arguments; see: mavix %1 --help").arg(command.name));
        return ExitCode::kRefusedInput;
    }

    CommandContext context;
    context.console = &console;
    context.arguments = positional;
    context.parser = &parser;
    context.timeoutMs = WrenAgent::kAccessTimeoutMs;
    const QString timeout = globalValue(QStringLiteral("timeout"), global, parser);
    if (!timeout.isEmpty()) {
        bool ok = false;
        context.timeoutMs = timeout.toInt(&ok);
        if (!ok || context.timeoutMs < 1)
            return context.refuse(
                tr("--timeout must be a whole number of milliseconds from 1, not %1").arg(timeout),
                ExitCode::kRefusedInput);
    }
    console.setJson(global.isSet(m_json) || parser.isSet(m_json));
    QString target = globalValue(QStringLiteral("target"), global, parser);
    if (target.isEmpty())
        target = qEnvironmentVariable(kTargetVariable);
    DeviceTarget device;
    if (!applyTarget(target, console, &device))
        return ExitCode::kRefusedInput;

    installInterruptExit();
    WrenAgent agent;
    agent.follow(&device);
    context.target = &device;
    context.agent = &agent;
    return command.run(context);
}

QString CommandLine::globalValue(const QString &name, const QCommandLineParser &global,
                                 const QCommandLineParser &local) const
{
    return local.isSet(name) ? local.value(name) : global.value(name);
}

// Empty when the name does not resolve (the reason is reported).
QString CommandLine::resolveHost(const QString &host, Console &console) const
{
    QString error;
    const QString address = lookUpHost(host, &error);
    if (address.isEmpty() && !error.isEmpty())
        console.message(error);
    return address;
}

// HOST[:UDP[:TCP]] as the GUI's -target: takes it, or a host name; a part left out keeps the GUI's
// default. The General tab's five checks decide, with its messages.
bool CommandLine::applyTarget(const QString &text, Console &console, DeviceTarget *device) const
{
    MavixSetting target;
    const TargetParts parts = splitTarget(text);
    const QString host = resolveHost(parts.host, console);
    if (host.isEmpty() && !parts.host.isEmpty())
        return false;
    const QString ip = host.isEmpty() ? target.ipAddress : host;
    const QString udpPort =
        parts.udpPort.isEmpty() ? QString::number(target.udpPort) : parts.udpPort;
    const QString tcpPort =
        parts.tcpPort.isEmpty() ? QString::number(target.tcpDataPort) : parts.tcpPort;
    if (!MavixSetting::validateTarget(ip, tcpPort, udpPort, true))
        return false;
    target.ipAddress = ip;
    (void)MavixSetting::parsePort(udpPort, &target.udpPort);
    (void)MavixSetting::parsePort(tcpPort, &target.tcpDataPort);
    device->set(target.ipAddress, target.udpPort, target.tcpDataPort);
    return true;
}
