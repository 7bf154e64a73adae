// The settings commands of the tool: show the device's network settings as the General tab does,
// and change them with the General tab's checks and write sequence.
#pragma once

#include "settings/mavixsetting.h"

#include <QCoreApplication>

#include <optional>

struct CommandContext;

class SettingsCommands
{
    Q_DECLARE_TR_FUNCTIONS(SettingsCommands)

public:
    static int show(const CommandContext &context);
    static int set(const CommandContext &context);

private:
    [[nodiscard]] static std::optional<MavixSetting> recordFrom(const CommandContext &context,
                                                                const MavixSetting &device);
};
