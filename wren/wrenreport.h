// One way for every caller to tell the user why a register access failed: the caller's own
// time-out text, or the agent's reason, in red in the message area and in the log.
#pragma once

#include <QString>

struct WrenError;

// The text to show: `timeoutMessage` for a plain time-out, followed by the reason when the agent
// gave one (replies discarded, request not sent, wait given up); the agent's reason otherwise.
[[nodiscard]] QString wrenErrorText(const WrenError &error, const QString &timeoutMessage);

// Reports wrenErrorText() through reportError().
void reportWrenError(const WrenError &error, const QString &timeoutMessage);
// The reason given when the user gives up a wait (Esc), in every tab the same.
[[nodiscard]] QString givenUpText();
