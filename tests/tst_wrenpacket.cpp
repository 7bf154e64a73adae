// WREN header and packet: flag-byte rules, byte order, and the exact bytes on the wire.
#include "simclient.h"
#include "wren/wrenheader.h"
#include "wren/wrenpacket.h"

#include <QTest>

namespace {

// The arguments of the header constructor, as a request is built from them.
struct Fields
{
    int verType = 0xFF;
    quint32 commandKind = 1;
    int read = 0;
    int acknowledge = 0;
    int busError = 0;
    quint8 packetId = 9;
    quint8 length = 0;
    quint32 address = 0x10;
};

} // namespace

Q_DECLARE_METATYPE(Fields)

class TestWrenPacket : public QObject
{
    Q_OBJECT

private slots:
    void requestBytes_data();
    void requestBytes();
    void headerFields();
    void parseReply_data();
    void parseReply();
};

void TestWrenPacket::requestBytes_data()
{
    QTest::addColumn<Fields>("fields");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QByteArray>("bytes");

    const QByteArray none;
    QTest::addRow("read of 4 bytes at FFFFFF00 with ID 5")
        << Fields{0xFF, 1, 1, 0, 0, 5, 4, 0xFFFFFF00} << none << hex("FFC00504FFFFFF00");
    QTest::addRow("address 12345678 goes most significant byte first")
        << Fields{0xFF, 1, 0, 0, 0, 0, 0, 0x12345678} << none << hex("FF80000012345678");
    QTest::addRow("VerType 0 still sent as 0xFF") << Fields{0} << none << hex("FF80090000000010");
    QTest::addRow("command kind 0 is a command too")
        << Fields{0xFF, 0, 1} << none << hex("FFC0090000000010");
    QTest::addRow("command kind 2 is no command")
        << Fields{0xFF, 2, 1} << none << hex("FF40090000000010");
    QTest::addRow("command kind FFFFFFFF compares unsigned")
        << Fields{0xFF, 0xFFFFFFFF} << none << hex("FF00090000000010");
    QTest::addRow("read 2, acknowledge -1, bus error 2 count as not set")
        << Fields{0xFF, 1, 2, -1, 2} << none << hex("FF80090000000010");
    QTest::addRow("write with 6 data bytes and length 4 sends the first 4")
        << Fields{0xFF, 1, 0, 0, 0, 9, 4} << hex("010203040506")
        << hex("FF80090400000010 01020304");
    QTest::addRow("write with 2 data bytes and length 4 is zero-filled")
        << Fields{0xFF, 1, 0, 0, 0, 9, 4} << hex("0102") << hex("FF80090400000010 01020000");
    QTest::addRow("read sends the header only")
        << Fields{0xFF, 1, 1, 0, 0, 9, 64} << none << hex("FFC0094000000010");
}

void TestWrenPacket::requestBytes()
{
    QFETCH(Fields, fields);
    QFETCH(QByteArray, data);
    QFETCH(QByteArray, bytes);

    const WrenHeader header(qint8(fields.verType), fields.commandKind, fields.read,
                            fields.acknowledge, fields.busError, fields.packetId, fields.length,
                            fields.address);
    QCOMPARE(header.toByteArray().toHex(' '), bytes.left(8).toHex(' '));
    for (const bool remote : {false, true}) { // the remote flag never reaches the wire
        const WrenPacket packet =
            fields.read == 1 ? WrenPacket(header, remote) : WrenPacket(header, data, remote);
        QCOMPARE(packet.remoteFlag(), remote);
        QCOMPARE(packet.toByteArray().toHex(' '), bytes.toHex(' '));
        QCOMPARE(packet.data(), data); // the packet keeps its data as given
    }
}

void TestWrenPacket::headerFields()
{
    const WrenHeader header(hex("3AC9FF0112345678EEEE"));
    QCOMPARE(header.verType(), quint8(0x3A));
    QCOMPARE(header.version(), quint8(0x3));
    QCOMPARE(header.type(), quint8(0xA));
    QVERIFY(header.isCommand() && header.isRead() && header.isAck() && header.isBusError());
    QCOMPARE(header.packetId(), quint8(255));
    QCOMPARE(header.length(), quint8(1));
    QCOMPARE(header.address(), 0x12345678u);
    const WrenHeader write(hex("FF08000000000000"));
    QVERIFY(!write.isCommand() && !write.isRead() && write.isAck() && !write.isBusError());
}

void TestWrenPacket::parseReply_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("header"); // as parsed, serialised again
    QTest::addColumn<QByteArray>("data");

    QTest::addRow("length 4 and 4 data bytes")
        << hex("FFC8000400000000 0A0B0C0D") << hex("FFC8000400000000") << hex("0A0B0C0D");
    QTest::addRow("length 4 and 10 data bytes keeps the first 4")
        << hex("FFC8000400000000 0A0B0C0D0E0F10111213") << hex("FFC8000400000000")
        << hex("0A0B0C0D");
    QTest::addRow("length 4 and 2 data bytes keeps both")
        << hex("FFC8070400000000 0A0B") << hex("FFC8070400000000") << hex("0A0B");
    QTest::addRow("7 bytes give an all-zero header and no data")
        << hex("FFC80004000000") << QByteArray(8, '\0') << QByteArray();
}

void TestWrenPacket::parseReply()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, header);
    QFETCH(QByteArray, data);

    const WrenPacket reply(bytes, false);
    QCOMPARE(reply.header().toByteArray().toHex(' '), header.toHex(' '));
    QCOMPARE(reply.data().toHex(' '), data.toHex(' '));
}

QTEST_GUILESS_MAIN(TestWrenPacket)
#include "tst_wrenpacket.moc"
