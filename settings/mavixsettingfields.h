// Every field of the settings record as typed text, the way the Detail tab shows and takes them:
// checked in the form's order with the Detail tab's messages (under its translation context), into
// a record. Shared by the Detail tab and the command-line tool.
#pragma once

#include "settings/mavixsetting.h"

#include <QString>

#include <optional>

struct MavixSettingFields
{
    QString ipAddress;
    QString tcpDataPort;
    QString udpPort;
    QString macAddress;
    QString tcpCommandPort;
    QString tcpMaxSegmentSize;
    bool tcpKeepAliveEnabled = false;
    QString tcpKeepAliveBufferNotEmptyMs;
    QString tcpKeepAliveBufferEmptyMs;
    QString tcpTimeoutConnectingMs;
    QString tcpTimeoutDisconnectMs; // in milliseconds; the device keeps units of 256 ms
    QString tcpReconnectIntervalMs;
    QString tcpRetransmissionTimerMs;

    // The texts that show `setting`.
    [[nodiscard]] static MavixSettingFields from(const MavixSetting &setting);

    // `base` with the typed values. Every field is checked, so that all refusals are reported at
    // once; empty when one failed. The MAC address is checked only: the write sequence never
    // reaches the MAC bytes, so the record keeps the one of `base`.
    [[nodiscard]] std::optional<MavixSetting> toRecord(const MavixSetting &base) const;
};
