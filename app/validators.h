// The one set of rules for text typed into device fields, shared by the tabs, the settings record,
// the command line and mavix-sim. Each parser returns the value when the whole text is acceptable.
#pragma once

#include <QHostAddress>
#include <QString>

#include <array>
#include <optional>

[[nodiscard]] std::optional<quint16> parsePort(const QString &text);  // decimal 0..65535
[[nodiscard]] std::optional<quint8> parseByte(const QString &text);   // decimal 0..255
[[nodiscard]] std::optional<quint32> parseHex32(const QString &text); // hex 0..FFFFFFFF
// The disconnect time-out in milliseconds, decimal 0..16677125: the device keeps it in units of
// 256 ms, and the upper limit is kept as the device's tools have always had it.
[[nodiscard]] std::optional<quint32> parseDisconnectTimeout(const QString &text);
// "FF:FF:FF:FF:FF:FF": exactly six parts split at ":", each a hexadecimal byte.
[[nodiscard]] std::optional<std::array<quint8, 6>> parseMACAddress(const QString &text);

// Why an address is refused; the caller words the message.
enum class AddressProblem { None, Malformed, Unspecified, Broadcast, Multicast };

// An address for the device's settings image: exactly four decimal numbers 0..255 joined by dots,
// without leading zeros, and a unicast value.
[[nodiscard]] AddressProblem checkDeviceAddress(const QString &text);
[[nodiscard]] std::optional<quint32> parseDeviceAddress(const QString &text);

// An address to talk to: a device address as above, or an IPv6 unicast address such as ::1.
[[nodiscard]] AddressProblem checkTargetAddress(const QString &text);
