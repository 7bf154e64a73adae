// The one set of rules for text typed into device fields, shared by the tabs, the settings record,
// the command line and mavix-sim. Each parser returns the value when the whole text is acceptable.
#pragma once

#include <QHostAddress>
#include <QString>

#include <optional>

[[nodiscard]] std::optional<quint16> parsePort(const QString &text);  // decimal 0..65535
[[nodiscard]] std::optional<quint8> parseByte(const QString &text);   // decimal 0..255
[[nodiscard]] std::optional<quint32> parseHex32(const QString &text); // hex 0..FFFFFFFF
// The device's disconnect time-out in ms, decimal 0..16677125 (it keeps it in 256 ms steps).
[[nodiscard]] std::optional<quint32> parseDisconnectTimeoutMs(const QString &text);
// A MAC address: six hexadecimal bytes joined by ':'.
[[nodiscard]] std::optional<QByteArray> parseMACAddress(const QString &text);

// Why an address is refused; the caller words the message.
enum class AddressProblem { None, Malformed, Unspecified, Broadcast, Multicast };

// An address for the device's settings image: exactly four decimal numbers 0..255 joined by dots,
// without leading zeros, and a unicast value.
[[nodiscard]] AddressProblem checkDeviceAddress(const QString &text);
[[nodiscard]] std::optional<quint32> parseDeviceAddress(const QString &text);

// An address to talk to: a device address as above, or an IPv6 unicast address such as ::1.
[[nodiscard]] AddressProblem checkTargetAddress(const QString &text);
