// Checks of the text typed into the device's settings fields. Each returns true when acceptable.
#pragma once

#include <QString>

[[nodiscard]] bool isValidPort(const QString &text);              // decimal 0..65535
[[nodiscard]] bool isValidIPAddress(const QString &text);         // anything QHostAddress takes
[[nodiscard]] bool isValidDataLength(const QString &text);        // decimal 0..255
[[nodiscard]] bool isValidRegisterAddress(const QString &text);   // hexadecimal 0..0xFFFFFFFF
[[nodiscard]] bool isValidDisconnectTimeout(const QString &text); // decimal 0..16677125
[[nodiscard]] bool isValidMACAddress(const QString &text);        // six hex bytes joined by ':'
