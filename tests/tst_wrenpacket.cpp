// WREN header and packet: flag-byte rules, byte order, and the exact bytes on the wire.
#include "simclient.h"
#include "wren/wrenheader.h"
#include "wren/wrenpacket.h"

#include <QTest>

class TestWrenPacket : public QObject
{
    Q_OBJECT

private slots:
    void requestBytes_data()
    {
        // The header constructor's arguments: VerType, command kind, read, acknowledge, bus
        // error, packet ID, length, address.
        QTest::addColumn<QList<qint64>>("fields");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<QByteArray>("bytes");
        const auto row = [](const char *name, const QList<qint64> &fields, const char *data,
                            const char *bytes) {
            QTest::addRow("%s", name) << fields << hex(data) << hex(bytes);
        };
        row("read of 4 bytes at FFFFFF00 with ID 5", {0xFF, 1, 1, 0, 0, 5, 4, 0xFFFFFF00}, "",
            "FFC00504FFFFFF00");
        row("address goes most significant byte first", {0xFF, 1, 0, 0, 0, 0, 0, 0x12345678}, "",
            "FF80000012345678");
        row("VerType 0 still sent as 0xFF", {0, 1, 1, 0, 0, 9, 0, 0x10}, "", "FFC0090000000010");
        row("command kind 0 is a command too", {0xFF, 0, 1, 0, 0, 9, 0, 0x10}, "",
            "FFC0090000000010");
        row("command kind 2 is no command", {0xFF, 2, 1, 0, 0, 9, 0, 0x10}, "", "FF40090000000010");
        row("command kind FFFFFFFF compares unsigned", {0xFF, 0xFFFFFFFF, 0, 0, 0, 9, 0, 0x10}, "",
            "FF00090000000010");
        row("acknowledge and bus error", {0xFF, 1, 0, 1, 1, 9, 0, 0x10}, "", "FF89090000000010");
        row("read 2, acknowledge -1, bus error 2 count as not set", {0xFF, 1, 2, -1, 2, 9, 0, 0x10},
            "", "FF80090000000010");
        row("write with 6 data bytes and length 4 sends 4", {0xFF, 1, 0, 0, 0, 9, 4, 0x10},
            "010203040506", "FF80090400000010 01020304");
        row("write with 2 data bytes and length 4 is zero-filled", {0xFF, 1, 0, 0, 0, 9, 4, 0x10},
            "0102", "FF80090400000010 01020000");
    }
    void requestBytes()
    {
        QFETCH(QList<qint64>, fields);
        QFETCH(QByteArray, data);
        const WrenHeader header{qint8(fields[0]),  quint32(fields[1]), int(fields[2]),
                                int(fields[3]),    int(fields[4]),     quint8(fields[5]),
                                quint8(fields[6]), quint32(fields[7])};
        for (const bool remote : {false, true}) { // the remote flag never reaches the wire
            const WrenPacket packet =
                fields[2] == 1 ? WrenPacket(header, remote) : WrenPacket(header, data, remote);
            QCOMPARE(packet.remoteFlag(), remote);
            QTEST(packet.toByteArray(), "bytes");
        }
    }
    void parseReply_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("header"); // as parsed, serialised again
        QTest::addColumn<QByteArray>("data");
        QTest::addRow("length 4, 10 data bytes: the first 4")
            << hex("FFC8000400000000 0A0B0C0D0E0F10111213") << hex("FFC8000400000000")
            << hex("0A0B0C0D");
        QTest::addRow("length 4, 2 data bytes: both")
            << hex("FFC8070400000000 0A0B") << hex("FFC8070400000000") << hex("0A0B");
        QTest::addRow("7 bytes: all-zero header, no data")
            << hex("FFC80004000000") << QByteArray(8, '\0') << QByteArray();
    }
    void parseReply()
    {
        QFETCH(QByteArray, bytes);
        const WrenPacket reply(bytes, false);
        QTEST(reply.header().toByteArray(), "header");
        QTEST(reply.data(), "data");
    }
};

QTEST_GUILESS_MAIN(TestWrenPacket)
#include "tst_wrenpacket.moc"
