// WREN header and packet: flag-byte rules, byte order, and the exact bytes on the wire.
#include "wren/wrenerror.h"
#include "wren/wrenheader.h"
#include "wren/wrenpacket.h"

#include <QTest>

namespace {

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

} // namespace

class TestWrenPacket : public QObject
{
    Q_OBJECT

private slots:
    void flagByte_data();
    void flagByte();
    void headerBytes_data();
    void headerBytes();
    void parseHeader_data();
    void parseHeader();
    void requestBytes_data();
    void requestBytes();
    void parseReply_data();
    void parseReply();
    void remoteFlagStaysOffTheWire();
    void errorCodes();
};

void TestWrenPacket::flagByte_data()
{
    QTest::addColumn<int>("verType");
    QTest::addColumn<quint32>("commandKind");
    QTest::addColumn<int>("read");
    QTest::addColumn<int>("acknowledge");
    QTest::addColumn<int>("busError");
    QTest::addColumn<QByteArray>("firstTwoBytes");

    QTest::addRow("write request") << 0xFF << 1u << 0 << 0 << 0 << hex("FF80");
    QTest::addRow("read request") << 0xFF << 1u << 1 << 0 << 0 << hex("FFC0");
    QTest::addRow("command kind 0 is a command too") << 0xFF << 0u << 1 << 0 << 0 << hex("FFC0");
    QTest::addRow("command kind 2 is no command") << 0xFF << 2u << 1 << 0 << 0 << hex("FF40");
    QTest::addRow("command kind 0xFFFFFFFF compares unsigned")
        << 0xFF << 0xFFFFFFFFu << 0 << 0 << 0 << hex("FF00");
    QTest::addRow("acknowledged read") << 0xFF << 1u << 1 << 1 << 0 << hex("FFC8");
    QTest::addRow("acknowledged write with bus error") << 0xFF << 1u << 0 << 1 << 1 << hex("FF89");
    QTest::addRow("read 2 counts as not set") << 0xFF << 1u << 2 << 0 << 0 << hex("FF80");
    QTest::addRow("acknowledge -1 counts as not set") << 0xFF << 1u << 0 << -1 << 0 << hex("FF80");
    QTest::addRow("bus error 2 counts as not set") << 0xFF << 1u << 0 << 0 << 2 << hex("FF80");
    QTest::addRow("VerType 0 still sent as 0xFF") << 0x00 << 1u << 0 << 0 << 0 << hex("FF80");
    QTest::addRow("VerType 0x12 still sent as 0xFF") << 0x12 << 1u << 1 << 0 << 0 << hex("FFC0");
}

void TestWrenPacket::flagByte()
{
    QFETCH(int, verType);
    QFETCH(quint32, commandKind);
    QFETCH(int, read);
    QFETCH(int, acknowledge);
    QFETCH(int, busError);
    QFETCH(QByteArray, firstTwoBytes);

    const WrenHeader header(qint8(verType), commandKind, read, acknowledge, busError, 7, 1, 0);
    QCOMPARE(header.toByteArray().left(2), firstTwoBytes);
    QCOMPARE(header.verType(), quint8(0xFF));
}

void TestWrenPacket::headerBytes_data()
{
    QTest::addColumn<int>("read");
    QTest::addColumn<int>("packetId");
    QTest::addColumn<int>("length");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("bytes");

    QTest::addRow("read of 4 bytes at FFFFFF00 with ID 5")
        << 1 << 5 << 4 << 0xFFFFFF00u << hex("FFC00504FFFFFF00");
    QTest::addRow("address 12345678 is sent most significant byte first")
        << 0 << 0 << 0 << 0x12345678u << hex("FF80000012345678");
    QTest::addRow("write of 255 bytes with ID 255")
        << 0 << 255 << 255 << 0x00000004u << hex("FF80FFFF00000004");
    QTest::addRow("read of 64 bytes at the EEPROM copy")
        << 1 << 0x80 << 64 << 0xFFFFFC00u << hex("FFC08040FFFFFC00");
}

void TestWrenPacket::headerBytes()
{
    QFETCH(int, read);
    QFETCH(int, packetId);
    QFETCH(int, length);
    QFETCH(quint32, address);
    QFETCH(QByteArray, bytes);

    const WrenHeader header(-1, 1, read, 0, 0, quint8(packetId), quint8(length), address);
    QCOMPARE(header.toByteArray().toHex(' '), bytes.toHex(' '));
    QCOMPARE(WrenHeader::headerSize(), 8);
    QCOMPARE(header.address(), address);
}

void TestWrenPacket::parseHeader_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("verType");
    QTest::addColumn<int>("version");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("command");
    QTest::addColumn<bool>("read");
    QTest::addColumn<bool>("ack");
    QTest::addColumn<bool>("busError");
    QTest::addColumn<int>("packetId");
    QTest::addColumn<int>("length");
    QTest::addColumn<quint32>("address");

    QTest::addRow("good read reply") << hex("FFC80540FFFFFF00") << 0xFF << 0xF << 0xF << true
                                     << true << true << false << 5 << 64 << 0xFFFFFF00u;
    QTest::addRow("write reply with bus error")
        << hex("FF89FF0112345678") << 0xFF << 0xF << 0xF << true << false << true << true << 255
        << 1 << 0x12345678u;
    QTest::addRow("VerType 0x3A splits into version and type")
        << hex("3A00000000000000") << 0x3A << 0x3 << 0xA << false << false << false << false << 0
        << 0 << 0u;
    QTest::addRow("extra bytes after the header are not part of it")
        << hex("FF880102A0B0C0D0EEEE") << 0xFF << 0xF << 0xF << true << false << true << false << 1
        << 2 << 0xA0B0C0D0u;
    QTest::addRow("7 bytes give an all-zero header")
        << hex("FFC80540FFFFFF") << 0 << 0 << 0 << false << false << false << false << 0 << 0 << 0u;
    QTest::addRow("nothing gives an all-zero header")
        << QByteArray() << 0 << 0 << 0 << false << false << false << false << 0 << 0 << 0u;
}

void TestWrenPacket::parseHeader()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, verType);
    QFETCH(int, version);
    QFETCH(int, type);
    QFETCH(bool, command);
    QFETCH(bool, read);
    QFETCH(bool, ack);
    QFETCH(bool, busError);
    QFETCH(int, packetId);
    QFETCH(int, length);
    QFETCH(quint32, address);

    const WrenHeader header(bytes);
    QCOMPARE(header.verType(), quint8(verType));
    QCOMPARE(header.version(), quint8(version));
    QCOMPARE(header.type(), quint8(type));
    QCOMPARE(header.isCommand(), command);
    QCOMPARE(header.isRead(), read);
    QCOMPARE(header.isAck(), ack);
    QCOMPARE(header.isBusError(), busError);
    QCOMPARE(header.packetId(), quint8(packetId));
    QCOMPARE(header.length(), quint8(length));
    QCOMPARE(header.address(), address);
}

void TestWrenPacket::requestBytes_data()
{
    QTest::addColumn<int>("read");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("bytes");

    QTest::addRow("write of 4 bytes sends them")
        << 0 << 4 << hex("01020304") << hex("FF80090400000010 01020304");
    QTest::addRow("write with 6 data bytes and length 4 sends the first 4")
        << 0 << 4 << hex("010203040506") << hex("FF80090400000010 01020304");
    QTest::addRow("write with 2 data bytes and length 4 is zero-filled")
        << 0 << 4 << hex("0102") << hex("FF80090400000010 01020000");
    QTest::addRow("write of length 0 sends the header only")
        << 0 << 0 << hex("0102") << hex("FF80090000000010");
    QTest::addRow("read sends the header only")
        << 1 << 64 << QByteArray() << hex("FFC0094000000010");
}

void TestWrenPacket::requestBytes()
{
    QFETCH(int, read);
    QFETCH(int, length);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, bytes);

    const WrenHeader header(-1, 1, read, 0, 0, 9, quint8(length), 0x10);
    const WrenPacket packet = read ? WrenPacket(header, false) : WrenPacket(header, data, false);
    QCOMPARE(packet.toByteArray().toHex(' '), bytes.toHex(' '));
    QCOMPARE(packet.data(), read ? QByteArray() : data); // the packet's own data stays as given
}

void TestWrenPacket::parseReply_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("length");
    QTest::addColumn<QByteArray>("data");

    QTest::addRow("reply with length 4 and 4 data bytes")
        << hex("FFC8000400000000 0A0B0C0D") << 4 << hex("0A0B0C0D");
    QTest::addRow("reply with length 4 and 10 data bytes keeps the first 4")
        << hex("FFC8000400000000 0A0B0C0D0E0F10111213") << 4 << hex("0A0B0C0D");
    QTest::addRow("reply with length 4 and 2 data bytes keeps both")
        << hex("FFC8000400000000 0A0B") << 4 << hex("0A0B");
    QTest::addRow("reply of 7 bytes has an empty header and no data")
        << hex("FFC80004000000") << 0 << QByteArray();
    QTest::addRow("header only") << hex("FF88000000000000") << 0 << QByteArray();
}

void TestWrenPacket::parseReply()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, length);
    QFETCH(QByteArray, data);

    const WrenPacket reply(bytes, false);
    QCOMPARE(reply.header().length(), quint8(length));
    QCOMPARE(reply.data().toHex(' '), data.toHex(' '));
    QVERIFY(!reply.remoteFlag());
    // Taking the bytes over gives the same packet.
    const WrenPacket taken(QByteArray(bytes), false);
    QCOMPARE(taken.header().toByteArray(), reply.header().toByteArray());
    QCOMPARE(taken.data().toHex(' '), data.toHex(' '));
}

void TestWrenPacket::remoteFlagStaysOffTheWire()
{
    const WrenHeader header(-1, 1, 0, 0, 0, 3, 2, 0xFFFE1000);
    const WrenPacket local(header, hex("AABB"), false);
    const WrenPacket remote(header, hex("AABB"), true);
    QVERIFY(remote.remoteFlag());
    QVERIFY(!local.remoteFlag());
    QCOMPARE(remote.toByteArray(), local.toByteArray());
    QCOMPARE(WrenPacket(header, true).toByteArray(), WrenPacket(header, false).toByteArray());
}

void TestWrenPacket::errorCodes()
{
    QCOMPARE(WrenError::Timeout, 0u);
    QCOMPARE(WrenError::BadReply, 1u);
    QCOMPARE(WrenError::ShortReply, 2u);
    QCOMPARE(WrenError::BusError, 3u);
    QCOMPARE(WrenError{}.code, WrenError::Timeout);
}

QTEST_GUILESS_MAIN(TestWrenPacket)
#include "tst_wrenpacket.moc"
