#include "wren/wrenpacket.h"

WrenPacket::WrenPacket(const WrenHeader &header, const QByteArray &data, bool remote)
    : m_header(header), m_data(data), m_remote(remote)
{
}

WrenPacket::WrenPacket(const WrenHeader &header, bool remote) : m_header(header), m_remote(remote)
{
}

WrenPacket::WrenPacket(const QByteArray &bytes, bool remote) : m_header(bytes), m_remote(remote)
{
    if (bytes.size() > WrenHeader::kHeaderSize)
        m_data = bytes.mid(WrenHeader::kHeaderSize, m_header.length());
}

WrenPacket::WrenPacket(QByteArray &&bytes, bool remote) : m_header(bytes), m_remote(remote)
{
    if (bytes.size() <= WrenHeader::kHeaderSize)
        return;
    // Dropping the front only moves the start of the array; no byte is copied.
    bytes.remove(0, WrenHeader::kHeaderSize);
    bytes.truncate(m_header.length());
    m_data = std::move(bytes);
}

QByteArray WrenPacket::toByteArray() const
{
    QByteArray bytes = m_header.toByteArray();
    if (m_header.isRead())
        bytes += m_data;
    else
        bytes += m_data.leftJustified(m_header.length(), '\0', true);
    return bytes;
}
