#include "settings/eepromwritesession.h"

#include "settings/mavixsetting.h"
#include "wren/wrenagent.h"
#include "wren/wrenreport.h"

#include <QCoreApplication>

namespace {

constexpr quint8 kObtainPermission = 0x00;
constexpr quint8 kReleasePermission = 0xFF;

} // namespace

EepromWriteSession::EepromWriteSession(WrenAgent *agent, int accessTimeoutMs)
    : m_agent(agent), m_accessTimeoutMs(accessTimeoutMs)
{
}

bool EepromWriteSession::run(const std::function<bool()> &writes)
{
    m_lastError.reset();
    if (!writePermission(kObtainPermission,
                         QT_TRANSLATE_NOOP("GeneralTab", "Response to obtaining permisssion to "
                                                         "write in EEPROM is timeout")))
        return false;
    const bool written = writes();
    const bool released =
        writePermission(kReleasePermission,
                        QT_TRANSLATE_NOOP("GeneralTab", "Response to permisssion release to write "
                                                        "in EEPROM is timeout"));
    return written && released;
}

// The messages are the General tab's, under its translation context.
bool EepromWriteSession::writePermission(quint8 value, const char *timeoutMessage)
{
    try {
        (void)m_agent->write(MavixSetting::kEepromPermission, QByteArray(1, char(value)),
                             m_accessTimeoutMs);
        return true;
    } catch (const WrenError &error) {
        m_lastError = error;
        reportWrenError(error, QCoreApplication::translate("GeneralTab", timeoutMessage));
        return false;
    }
}
