// The register commands of the tool: read, write and watch a run of register bytes, with the
// Control(UDP) tab's rules and messages.
#pragma once

#include <QCoreApplication>

struct CommandContext;

class RegisterCommands
{
    Q_DECLARE_TR_FUNCTIONS(RegisterCommands)

public:
    static int read(const CommandContext &context);
    static int write(const CommandContext &context);
    static int watch(const CommandContext &context);
};
