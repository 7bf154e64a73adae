// `mavix serial ...`: the ZEL-RS232C serial bridge module from a script, through the engine the
// tab uses, with the tab's checks and messages: show or change the module's format, flow control,
// lines and ports; send to a connector, receive from it, or print what arrives until Ctrl+C.
#pragma once

#include <QCoreApplication>

struct CommandContext;

class SerialCommand
{
    Q_DECLARE_TR_FUNCTIONS(SerialCommand)

public:
    static int run(const CommandContext &context);

private:
    static int show(const CommandContext &context);
    static int set(const CommandContext &context);
    static int data(const CommandContext &context, const QString &action);
};
