// One WREN datagram: header plus data bytes, and the caller's remote flag, which travels with a
// request but never reaches the wire.
#pragma once

#include "wren/wrenheader.h"

#include <QByteArray>

class WrenPacket
{
public:
    // Construction
    WrenPacket(const WrenHeader &header, const QByteArray &data, bool remote); // write request
    WrenPacket(const WrenHeader &header, bool remote);                         // read request
    // A received reply: data after the header, cut to the header's length.
    WrenPacket(const QByteArray &bytes, bool remote);
    WrenPacket(QByteArray &&bytes, bool remote); // takes the bytes over without copying

    // Contents
    [[nodiscard]] const WrenHeader &header() const { return m_header; }
    [[nodiscard]] const QByteArray &data() const { return m_data; }
    [[nodiscard]] bool remoteFlag() const { return m_remote; }
    void setData(const QByteArray &data) { m_data = data; }

    // Wire form: a write's data is cut or zero-filled to exactly the length field.
    [[nodiscard]] QByteArray toByteArray() const;

private:
    WrenHeader m_header;
    QByteArray m_data;
    bool m_remote = false;
};
