// `mavix gpib ...`: the ZEL-GPIB bridge module from a script, through the engine the tab uses, with
// the tab's checks and messages: show or change the module's settings, send a message to an
// instrument, receive its answer, query (send, then receive), clear the bus.
#pragma once

#include <QCoreApplication>

struct CommandContext;

class GpibCommand
{
    Q_DECLARE_TR_FUNCTIONS(GpibCommand)

public:
    static int run(const CommandContext &context);
};
