#include "settings/mavixsettingfields.h"

#include "app/report.h"
#include "app/validators.h"

#include <QCoreApplication>
#include <QHostAddress>

namespace {

// The device keeps the disconnect time-out in units of 256 ms.
constexpr int kDisconnectUnitShift = 8;
constexpr quint32 kDisconnectUnitMask = 0xFF;

// The image holds an IPv4 address; anything else could not be written as typed.
bool isIPv4Address(const QString &text)
{
    return checkDeviceAddress(text) == AddressProblem::None;
}

QString number(quint32 value)
{
    return QString::number(value);
}

} // namespace

MavixSettingFields MavixSettingFields::from(const MavixSetting &setting)
{
    MavixSettingFields fields;
    fields.ipAddress = setting.ipAddress;
    fields.tcpDataPort = number(setting.tcpDataPort);
    fields.udpPort = number(setting.udpPort);
    fields.macAddress = setting.macAddressText();
    fields.tcpCommandPort = number(setting.tcpCommandPort);
    fields.tcpMaxSegmentSize = number(setting.tcpMaxSegmentSize);
    fields.tcpKeepAliveEnabled = setting.tcpKeepAliveEnabled;
    fields.tcpKeepAliveBufferNotEmptyMs = number(setting.tcpKeepAliveBufferNotEmptyMs);
    fields.tcpKeepAliveBufferEmptyMs = number(setting.tcpKeepAliveBufferEmptyMs);
    fields.tcpTimeoutConnectingMs = number(setting.tcpTimeoutConnectingMs);
    fields.tcpTimeoutDisconnectMs = number(setting.tcpTimeoutDisconnectMs());
    fields.tcpReconnectIntervalMs = number(setting.tcpReconnectIntervalMs);
    fields.tcpRetransmissionTimerMs = number(setting.tcpRetransmissionTimerMs);
    return fields;
}

std::optional<MavixSetting> MavixSettingFields::toRecord(const MavixSetting &base) const
{
    MavixSetting record = base;
    bool valid = true;
    const auto refuse = [&valid](const char *message) {
        valid = false;
        reportError(QCoreApplication::translate("ExpertTab", message));
    };
    const auto take16 = [&refuse](const QString &text, quint16 &value, const char *message) {
        if (!MavixSetting::parsePort(text, &value))
            refuse(message);
    };

    if (isIPv4Address(ipAddress))
        record.ipAddress = QHostAddress(ipAddress).toString();
    else
        refuse(QT_TRANSLATE_NOOP("ExpertTab", "IP address is invalid"));
    take16(tcpDataPort, record.tcpDataPort,
           QT_TRANSLATE_NOOP("ExpertTab", "TCP Port number must be 0 to 65535"));
    take16(udpPort, record.udpPort,
           QT_TRANSLATE_NOOP("ExpertTab", "UDP Port number must be 0 to 65535"));
    if (!parseMACAddress(macAddress))
        refuse(QT_TRANSLATE_NOOP("ExpertTab", "Set mac address in format FF:FF:FF:FF:FF:FF"));
    take16(tcpCommandPort, record.tcpCommandPort,
           QT_TRANSLATE_NOOP("ExpertTab", "TCP Port number must be 0 to 65535"));
    take16(tcpMaxSegmentSize, record.tcpMaxSegmentSize,
           QT_TRANSLATE_NOOP("ExpertTab", "MaxSegmentSize must be 0 to 65535"));
    take16(tcpKeepAliveBufferNotEmptyMs, record.tcpKeepAliveBufferNotEmptyMs,
           QT_TRANSLATE_NOOP("ExpertTab", "KeepAlive must be 0 to 65535"));
    take16(tcpKeepAliveBufferEmptyMs, record.tcpKeepAliveBufferEmptyMs,
           QT_TRANSLATE_NOOP("ExpertTab", "KeepAlive must be 0 to 65535"));
    take16(tcpTimeoutConnectingMs, record.tcpTimeoutConnectingMs,
           QT_TRANSLATE_NOOP("ExpertTab", "TimeOut(Connecting) must be 0 to 65535"));

    const std::optional<quint32> disconnectMs = parseDisconnectTimeoutMs(tcpTimeoutDisconnectMs);
    if (!disconnectMs) {
        refuse(QT_TRANSLATE_NOOP("ExpertTab", "TimeOut(Disconnecting) must be 0 to 16677125"));
    } else {
        if (*disconnectMs & kDisconnectUnitMask)
            reportResult(QCoreApplication::translate(
                "ExpertTab", "Info: Reading TimeOut(Disconnecting) value will change because the "
                             "lower 8 bits are ignored"));
        record.tcpTimeoutDisconnect256Ms = quint16(*disconnectMs >> kDisconnectUnitShift);
    }

    take16(tcpReconnectIntervalMs, record.tcpReconnectIntervalMs,
           QT_TRANSLATE_NOOP("ExpertTab", "Reconnect Interval must be 0 to 65535"));
    take16(tcpRetransmissionTimerMs, record.tcpRetransmissionTimerMs,
           QT_TRANSLATE_NOOP("ExpertTab", "ReTransmission Timer must be 0 to 65535"));
    record.tcpKeepAliveEnabled = tcpKeepAliveEnabled;

    if (!valid)
        return std::nullopt;
    return record;
}
