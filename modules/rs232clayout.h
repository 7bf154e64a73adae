// The ZEL-RS232C module as the device lays it out: register addresses, the four configuration
// bytes and the one table that says which bit carries which serial line. The tool and the emulator
// both read this table, so the two can never disagree about a line.
#pragma once

#include <QtGlobal>

#include <array>

namespace Rs232c {

enum class Connector : int { Dte = 0, Dce = 1 };
inline constexpr int kConnectorCount = 2;

// The eight lines, in the order of the form's check boxes.
enum class Line : int { RTS, CTS, DTR, RI, DSR, TxD, RxD, CD };
inline constexpr int kLineCount = 8;

// Registers (running copy; the EEPROM copy lies kEepromOffset lower)
inline constexpr quint32 kConfigAddress = 0xFFFFFF3C;
inline constexpr int kConfigSize = 4;
inline constexpr quint32 kSettingsBlockAddress = 0xFFFFFF00;
inline constexpr quint32 kEepromOffset = 0x300;
inline constexpr quint32 kLineStateAddress = 0x00000004;
inline constexpr int kLineStateSize = 2; // byte 0 DTE, byte 1 DCE
// Each connector's TCP port, big-endian, inside the settings block.
inline constexpr std::array<int, kConnectorCount> kPortOffset{{0x1C, 0x1E}};
// Configuration byte that holds a connector's output lines, flow type and wait flag.
inline constexpr std::array<int, kConnectorCount> kConnectorConfigByte{{2, 3}};

// Where one line lives. Both connectors' line-state bytes use stateBit; a line is driven by one
// connector (its output there, set in that connector's configuration byte at outputBit) and seen
// as an input by the other. TxD and RxD carry data and have no output bit (-1). All active low.
struct LineBits
{
    Line line;
    int stateBit;
    Connector driver;
    int outputBit;
};

inline constexpr std::array<LineBits, kLineCount> kLineTable{{
    {Line::RTS, 0, Connector::Dte, 4},
    {Line::CTS, 1, Connector::Dce, 6},
    {Line::DTR, 2, Connector::Dte, 3},
    {Line::RI, 3, Connector::Dce, 4},
    {Line::DSR, 4, Connector::Dce, 5},
    {Line::TxD, 5, Connector::Dte, -1},
    {Line::RxD, 6, Connector::Dce, -1},
    {Line::CD, 7, Connector::Dce, 3},
}};

[[nodiscard]] constexpr const LineBits &bitsOf(Line line)
{
    return kLineTable[size_t(line)];
}

// True when `line` is an output of `connector` that the tool may switch.
[[nodiscard]] constexpr bool isOutput(Line line, Connector connector)
{
    return bitsOf(line).driver == connector && bitsOf(line).outputBit >= 0;
}

// Active low: a set bit means the line is off.
[[nodiscard]] constexpr bool isOn(quint8 byte, int bit)
{
    return bit >= 0 && (byte & (1u << bit)) == 0;
}

} // namespace Rs232c
