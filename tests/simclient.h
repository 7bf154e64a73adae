// What the emulator and register-access tests share: hand-made WREN datagrams, a bare UDP peer that
// knows nothing of the tool's protocol classes, the emulator's start image and fault sets by name.
#pragma once

#include "sim/simtypes.h"

#include <QtNetwork>
#include <QtTest>

#include <optional>

inline constexpr int kSimReplyTimeoutMs = 5000; // only waited out if the emulator is broken
inline constexpr int kSimSilenceMs = 200;       // how long "no reply" is watched for

inline QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

inline QByteArray readRequest(quint32 address, quint8 length, quint8 id = 1)
{
    QByteArray bytes = hex("FFC0") + char(id) + char(length) + QByteArray(4, Qt::Uninitialized);
    qToBigEndian<quint32>(address, bytes.data() + 4);
    return bytes;
}

inline QByteArray writeRequest(quint32 address, const QByteArray &data, quint8 id = 1)
{
    QByteArray bytes = readRequest(address, quint8(data.size()), id) + data;
    bytes[1] = char(0x80);
    return bytes;
}

// The emulator's settings image as it starts, with the ports it actually bound.
inline QByteArray simStartImage(quint16 udpPort, quint16 tcpPort)
{
    QByteArray image =
        hex("101112131415161718191A1B1C1D1E1F A15A 0200C0A80010 7F000001 0000 0017"
            "05B4 0000 03E8 EA60 1388 2BF2 01F4 01F4 C0C1C2C3C4C5C6C7C8C9CACB 70011878");
    qToBigEndian<quint16>(tcpPort, image.data() + 28);
    qToBigEndian<quint16>(udpPort, image.data() + 34);
    return image;
}

// A loopback UDP port nobody uses at the moment, for moving the emulator to.
inline quint16 freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost, 0);
    return probe.localPort();
}

class RawClient
{
public:
    RawClient() { m_socket.bind(QHostAddress::LocalHost, 0); }

    // The first datagram back, or nothing within the time-out.
    std::optional<QNetworkDatagram> exchange(const QByteArray &datagram, quint16 port,
                                             int timeoutMs = kSimReplyTimeoutMs)
    {
        m_socket.writeDatagram(datagram, QHostAddress::LocalHost, port);
        if (!m_socket.hasPendingDatagrams() && !m_socket.waitForReadyRead(timeoutMs))
            return std::nullopt;
        return m_socket.receiveDatagram();
    }
    // The reply's bytes, or "none" when nothing came back.
    QByteArray bytes(const QByteArray &datagram, quint16 port, int timeoutMs = kSimReplyTimeoutMs)
    {
        const auto reply = exchange(datagram, port, timeoutMs);
        return reply ? reply->data() : QByteArrayLiteral("none");
    }

private:
    QUdpSocket m_socket;
};

// Faults by name: drop, wrong-vertype, no-ack, wrong-id, flip-rw, short, stale, bus-error,
// range:FIRST-LAST (hexadecimal) and delay:MS.
inline SimFaults faultsFrom(const QStringList &names)
{
    static const QHash<QString, bool SimFaults::*> flags = {
        {"wrong-vertype", &SimFaults::wrongVerType}, {"no-ack", &SimFaults::ackClear},
        {"wrong-id", &SimFaults::wrongPacketId},     {"flip-rw", &SimFaults::flipReadWrite},
        {"short", &SimFaults::shortReply},           {"stale", &SimFaults::staleReply},
        {"bus-error", &SimFaults::busError}};
    SimFaults faults;
    for (const QString &name : names) {
        const QString value = name.section(u':', 1);
        if (flags.contains(name))
            faults.*flags.value(name) = true;
        else if (name == u"drop")
            faults.dropEveryNth = 1;
        else if (name.startsWith(u"delay:"))
            faults.delayMs = value.toInt();
        else if (name.startsWith(u"range:")) {
            faults.busErrorRange = true;
            faults.busErrorFirst = value.section(u'-', 0, 0).toUInt(nullptr, 16);
            faults.busErrorLast = value.section(u'-', 1, 1).toUInt(nullptr, 16);
        } else
            qFatal("unknown fault %s", qPrintable(name));
    }
    return faults;
}
