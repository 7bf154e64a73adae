// One 2-byte unit of the ZEL-GPIB module's request/reply protocol on the TCP data connection: a
// 16-bit value whose low byte is the code and whose high byte is the operand, sent low byte first.
#pragma once

#include <QByteArray>
#include <QtGlobal>

class GpibUnit
{
public:
    static constexpr int kSize = 2;
    static constexpr quint32 kMaxAddress = 30; // GPIB addresses are 0 to 30

    // Codes
    static constexpr quint8 kDataByte = 0x20;
    static constexpr quint8 kLastDataByte = 0x21; // the message's final byte, sent with END
    static constexpr quint8 kReadOneByte = 0x30;
    static constexpr quint8 kCommand = 0x40; // an interface command byte, sent with ATN asserted
    static constexpr quint8 kBusControl = 0x50;

    // Requests
    // The second flag selects command mode for the addressing that follows.
    [[nodiscard]] static GpibUnit busControl(bool firstFlag, bool secondFlag);
    [[nodiscard]] static GpibUnit interfaceClear();
    [[nodiscard]] static GpibUnit unlisten();
    [[nodiscard]] static GpibUnit talkAddress(quint32 address);
    [[nodiscard]] static GpibUnit listenAddress(quint32 address);
    [[nodiscard]] static GpibUnit dataByte(char byte);
    [[nodiscard]] static GpibUnit lastDataByte(char byte);
    [[nodiscard]] static GpibUnit readOneByte();

    // Replies
    [[nodiscard]] static GpibUnit fromReply(const QByteArray &twoBytes);
    [[nodiscard]] bool isError() const { return code() & 0x02; } // status bit 1
    [[nodiscard]] bool isEnd() const { return code() & 0x01; }   // status bit 0: END
    [[nodiscard]] char dataByte() const { return char(operand()); }

    [[nodiscard]] quint8 code() const { return quint8(m_value & 0xFF); }
    [[nodiscard]] quint8 operand() const { return quint8(m_value >> 8); }
    [[nodiscard]] quint16 value() const { return m_value; }
    [[nodiscard]] QByteArray toByteArray() const;

private:
    GpibUnit(quint8 code, quint8 operand) : m_value(quint16(code | (operand << 8))) {}

    quint16 m_value = 0;
};
