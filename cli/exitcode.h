// The exit codes of the command-line tool, as documented in its help and man page.
#pragma once

#include "wren/wrenerror.h"

namespace ExitCode {

constexpr int kSuccess = 0;
constexpr int kRefusedInput = 1;
constexpr int kTimeout = 2;
constexpr int kBadReply = 3;
constexpr int kBusError = 4;
constexpr int kConnectionOrFile = 5;
// Ctrl+C cut a transfer short of what was asked (the shell's own convention, 128 + SIGINT).
constexpr int kInterrupted = 130;

[[nodiscard]] inline int forWrenError(const WrenError &error)
{
    switch (error.code) {
    case WrenError::Timeout:
        return kTimeout;
    case WrenError::BusError:
        return kBusError;
    default:
        return kBadReply;
    }
}

} // namespace ExitCode
