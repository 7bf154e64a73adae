// The 8-byte header of a WREN datagram: VerType, command/flag byte, packet ID, length and a
// 32-bit register address that is big-endian on the wire and host order in memory.
#pragma once

#include <QByteArray>
#include <QtGlobal>

class WrenHeader
{
public:
    // Wire constants
    static constexpr quint8 kVerType = 0xFF;
    static constexpr quint8 kCommandBit = 0x80;
    static constexpr quint8 kReadBit = 0x40;
    static constexpr quint8 kAckBit = 0x08;
    static constexpr quint8 kBusErrorBit = 0x01;
    static constexpr int kHeaderSize = 8;
    static constexpr int kMaxDataLength = 255;

    // Construction
    WrenHeader() = default;
    // Every header this program builds carries kVerType. read, acknowledge and busError count as
    // set only when exactly 1.
    WrenHeader(quint32 commandKind, int read, int acknowledge, int busError, quint8 packetId,
               quint8 length, quint32 address);
    // Parses the first 8 bytes; fewer than 8 bytes give an all-zero header.
    explicit WrenHeader(const QByteArray &bytes);

    // Fields
    [[nodiscard]] quint8 verType() const { return m_verType; }
    [[nodiscard]] quint8 version() const { return m_verType >> 4; }
    [[nodiscard]] quint8 type() const { return m_verType & 0x0F; }
    [[nodiscard]] quint8 flags() const { return m_flags; }
    [[nodiscard]] bool isCommand() const { return m_flags & kCommandBit; }
    [[nodiscard]] bool isRead() const { return m_flags & kReadBit; }
    [[nodiscard]] bool isAck() const { return m_flags & kAckBit; }
    [[nodiscard]] bool isBusError() const { return m_flags & kBusErrorBit; }
    [[nodiscard]] quint8 packetId() const { return m_packetId; }
    [[nodiscard]] quint8 length() const { return m_length; }
    [[nodiscard]] quint32 address() const { return m_address; }
    [[nodiscard]] static constexpr int headerSize() { return kHeaderSize; }

    // Wire form
    [[nodiscard]] QByteArray toByteArray() const;

private:
    quint8 m_verType = 0;
    quint8 m_flags = 0;
    quint8 m_packetId = 0;
    quint8 m_length = 0;
    quint32 m_address = 0;
};
