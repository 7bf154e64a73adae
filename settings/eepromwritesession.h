// The one way every write into the device's EEPROM goes (settings image, module settings): obtain
// the write permission, do the writes, release the permission. The release is attempted after the
// writes whatever their outcome, so that no failure leaves the device writable, and a failed
// release is reported like any failed access.
#pragma once

#include "wren/wrenerror.h"

#include <QtGlobal>

#include <functional>
#include <optional>

class WrenAgent;

class EepromWriteSession
{
public:
    EepromWriteSession(WrenAgent *agent, int accessTimeoutMs);

    // Obtains the permission and, once it is held, runs `writes` (which reports its own failure
    // and returns false), then releases the permission. True only when all three succeeded.
    [[nodiscard]] bool run(const std::function<bool()> &writes);

    // The failure of the permission step that failed, if one did.
    [[nodiscard]] std::optional<WrenError> lastError() const { return m_lastError; }

private:
    [[nodiscard]] bool writePermission(quint8 value, const char *timeoutMessage);

    WrenAgent *m_agent;
    int m_accessTimeoutMs;
    std::optional<WrenError> m_lastError;
};
