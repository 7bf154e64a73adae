// The register-map commands of the tool: list the map, read and decode registers and fields by
// name, change fields by read-modify-write, and save, compare and restore register values.
#pragma once

#include <QCoreApplication>

struct CommandContext;

class MapCommands
{
    Q_DECLARE_TR_FUNCTIONS(MapCommands)

public:
    static int regs(const CommandContext &context);
    static int get(const CommandContext &context);
    static int put(const CommandContext &context);
    static int dump(const CommandContext &context);
    static int diff(const CommandContext &context);
    static int load(const CommandContext &context);
};
