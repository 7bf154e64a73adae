// The command line of the tool: the global options, the command and its own options and
// arguments, the help texts and the target. It builds what a command needs and runs it.
#pragma once

#include <QCommandLineOption>
#include <QCoreApplication>
#include <QList>
#include <QStringList>

#include <functional>

class Console;
class DeviceTarget;
class QCommandLineParser;
struct CommandContext;

class CommandLine
{
    Q_DECLARE_TR_FUNCTIONS(CommandLine)

public:
    CommandLine();

    // Runs the command named in `arguments` (the program's own arguments, name first) and returns
    // the exit code.
    int run(const QStringList &arguments);

private:
    struct Command
    {
        QString name;
        QString synopsis;
        QString summary;
        QList<QCommandLineOption> options;
        QList<QStringList> positional; // name, description, syntax
        int minArguments = 0;
        int maxArguments = 0; // -1: no limit
        std::function<int(const CommandContext &)> run;
    };

    void addGlobalOptions(QCommandLineParser &parser) const;
    [[nodiscard]] QString mainHelp(QCommandLineParser &parser) const;
    [[nodiscard]] const Command *find(const QString &name) const;
    int runCommand(const Command &command, const QStringList &arguments,
                   const QCommandLineParser &global, Console &console);
    [[nodiscard]] QString globalValue(const QString &name, const QCommandLineParser &global,
                                      const QCommandLineParser &local) const;
    [[nodiscard]] QString resolveHost(const QString &host, Console &console) const;
    [[nodiscard]] bool applyTarget(const QString &text, Console &console,
                                   DeviceTarget *target) const;

    QCommandLineOption m_target;
    QCommandLineOption m_timeout;
    QCommandLineOption m_json;
    QCommandLineOption m_help;
    QList<Command> m_commands;
};
