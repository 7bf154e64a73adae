// Reading and writing the device's settings image, without widgets: the General tab's read and
// its write sequence with the EEPROM permission steps, shared by the General and Detail tabs and
// the command-line tool. Failures are reported (log and message area) in the General tab's words
// and announced with failed(); a finished write with succeeded().
#pragma once

#include "settings/mavixsetting.h"
#include "wren/wrenerror.h"

#include <QByteArray>
#include <QObject>

#include <functional>
#include <optional>

class DeviceTarget;
class WrenAgent;

class MavixSettingAccess : public QObject
{
    Q_OBJECT

public:
    explicit MavixSettingAccess(WrenAgent *agent, QObject *parent = nullptr);

    // The copy to work on: the EEPROM copy when true, else the running copy.
    void setEEPROMAccess(bool eeprom) { m_eeprom = eeprom; }
    [[nodiscard]] bool isEEPROMAccess() const { return m_eeprom; }
    [[nodiscard]] quint32 imageBase() const;

    // The target that follows the device when a write of its address or port times out: a device
    // whose address was just changed answers only at the new one. Null leaves the target alone.
    void setTarget(DeviceTarget *target) { m_target = target; }

    // Time-outs: every access waits this long for its reply.
    void setAccessTimeoutMs(int timeoutMs) { m_accessTimeoutMs = timeoutMs; }

    // Asked before the UDP port of the running copy is rewritten; false abandons the write with
    // nothing written, reported or signalled. Without a question the write goes on.
    void setUdpPortChangeQuestion(std::function<bool()> question)
    {
        m_confirmUdpPortChange = std::move(question);
    }

    // The 64-byte image at `address`; empty after a reported failure.
    [[nodiscard]] std::optional<QByteArray> readImage(quint32 address);
    // The write sequence for `record`, given the image just read from the same copy.
    [[nodiscard]] bool write(const MavixSetting &record, const QByteArray &imageReadBefore);

    // The failure of the last access that failed, for callers that tell failures apart.
    [[nodiscard]] std::optional<WrenError> lastError() const { return m_lastError; }
    // True when the last write was abandoned at the UDP port question.
    [[nodiscard]] bool wasDeclined() const { return m_declined; }

signals:
    void targetSettingChanged(MavixSetting setting);
    void failed();
    void succeeded();

private:
    [[nodiscard]] bool writeImage(quint32 base, const QByteArray &image,
                                  const MavixSetting &record);
    [[nodiscard]] bool confirmUdpPortChange(const MavixSetting &record);
    void fail(const WrenError &error, const QString &timeoutMessage);

    WrenAgent *m_agent = nullptr;
    DeviceTarget *m_target = nullptr;
    bool m_eeprom = false;
    int m_accessTimeoutMs = 10000;
    std::function<bool()> m_confirmUdpPortChange;
    std::optional<WrenError> m_lastError;
    bool m_declined = false;
};
