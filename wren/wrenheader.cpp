#include "wren/wrenheader.h"

#include <QtEndian>

WrenHeader::WrenHeader(quint32 commandKind, int read, int acknowledge, int busError,
                       quint8 packetId, quint8 length, quint32 address)
    : m_verType(kVerType), m_packetId(packetId), m_length(length), m_address(address)
{
    m_flags = commandKind <= 1 ? kCommandBit : 0x00;
    if (read == 1)
        m_flags |= kReadBit;
    if (acknowledge == 1)
        m_flags |= kAckBit;
    if (busError == 1)
        m_flags |= kBusErrorBit;
}

WrenHeader::WrenHeader(const QByteArray &bytes)
{
    if (bytes.size() < kHeaderSize)
        return;
    const auto *raw = reinterpret_cast<const uchar *>(bytes.constData());
    m_verType = raw[0];
    m_flags = raw[1];
    m_packetId = raw[2];
    m_length = raw[3];
    m_address = qFromBigEndian<quint32>(raw + 4);
}

QByteArray WrenHeader::toByteArray() const
{
    QByteArray bytes(kHeaderSize, Qt::Uninitialized);
    auto *raw = reinterpret_cast<uchar *>(bytes.data());
    raw[0] = m_verType;
    raw[1] = m_flags;
    raw[2] = m_packetId;
    raw[3] = m_length;
    qToBigEndian<quint32>(m_address, raw + 4);
    return bytes;
}
