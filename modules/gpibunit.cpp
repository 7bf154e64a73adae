#include "modules/gpibunit.h"

#include <QtEndian>

namespace {
constexpr quint8 kBusControlBase = 0x20;
constexpr quint8 kFirstFlag = 0x10;
constexpr quint8 kSecondFlag = 0x08;
constexpr quint8 kInterfaceClear = 0x2F;
constexpr quint8 kUnlisten = 0x3F;
constexpr quint8 kTalkBase = 0x40;
constexpr quint8 kListenBase = 0x20;
} // namespace

GpibUnit GpibUnit::busControl(bool firstFlag, bool secondFlag)
{
    return {kBusControl, quint8(kBusControlBase | (firstFlag ? kFirstFlag : 0) |
                                (secondFlag ? kSecondFlag : 0))};
}

GpibUnit GpibUnit::interfaceClear()
{
    return {kBusControl, kInterfaceClear};
}

GpibUnit GpibUnit::unlisten()
{
    return {kCommand, kUnlisten};
}

// The address is not checked here: the tab refuses anything above 30 before a transaction.
GpibUnit GpibUnit::talkAddress(quint32 address)
{
    return {kCommand, quint8(kTalkBase + address)};
}

GpibUnit GpibUnit::listenAddress(quint32 address)
{
    return {kCommand, quint8(kListenBase + address)};
}

GpibUnit GpibUnit::dataByte(char byte)
{
    return {kDataByte, quint8(byte)};
}

GpibUnit GpibUnit::lastDataByte(char byte)
{
    return {kLastDataByte, quint8(byte)};
}

GpibUnit GpibUnit::readOneByte()
{
    return {kReadOneByte, 0x00};
}

GpibUnit GpibUnit::fromReply(const QByteArray &twoBytes)
{
    if (twoBytes.size() < kSize)
        return {0, 0};
    return {quint8(twoBytes[0]), quint8(twoBytes[1])};
}

QByteArray GpibUnit::toByteArray() const
{
    QByteArray bytes(kSize, Qt::Uninitialized);
    qToLittleEndian<quint16>(m_value, bytes.data());
    return bytes;
}
