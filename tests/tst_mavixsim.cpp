// mavix-sim in-process, spoken to with hand-made datagrams: the settings image, memory, the EEPROM
// lock, well-formed and ignored datagrams, the UDP port move and the faults on the wire.
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "simclient.h"
#include "testtable.h"

#include <QtTest>

namespace {
constexpr quint32 kRunning = 0xFFFFFF00;
constexpr quint32 kEeprom = 0xFFFFFC00;
constexpr quint32 kPermission = 0xFFFFFCFF;
} // namespace

class TestMavixSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
        m_startImage = sim()->peek(kRunning, 64);
    }
    void init()
    {
        sim()->setFaults(SimFaults());
        sim()->poke(kPermission, hex("FF"));
        sim()->poke(kRunning, m_startImage), sim()->poke(kEeprom, m_startImage);
    }
    void cleanupTestCase() { m_sim.stop(); }
    void settingsImageAtStart()
    {
        // MAC 02:00:C0:A8:00:10, its own IP and ports, keep-alive off, the other bytes non-zero.
        const QByteArray image = simStartImage(m_sim.udpPort(), sim()->tcpPort());
        QCOMPARE(exchange(readRequest(kRunning, 64, 9)).toHex(' '),
                 (hex("FFC80940FFFFFF00") + image).toHex(' '));
        QCOMPARE(exchange(readRequest(kEeprom, 64)).mid(8), image);
        QCOMPARE(exchange(readRequest(kPermission, 1)).mid(8), hex("FF"));
        QCOMPARE(exchange(readRequest(0x7F000000, 2)).mid(8), hex("0000")); // never written
        // The TCP data port reports the port it bound; a write of it is stored, as the device does.
        sim()->setTcpPort(2424);
        QCOMPARE(exchange(readRequest(kRunning + 28, 2)).mid(8), hex("0978"));
        QCOMPARE(exchange(writeRequest(kRunning + 28, hex("0019"))).left(2), hex("FF88"));
        QCOMPARE(sim()->tcpPort(), quint16(25));
    }
    // Permission byte, address, data; a refused write answers with the bus-error bit and keeps the
    // bytes that were there.
    void writes_data()
    {
        // clang-format off
        columns<QByteArray, quint32, QByteArray, bool>("permission", "address", "data", "refused");
        const QByteArray ff = hex("FF"), word = hex("A0A1A2A3");
        QTest::addRow("plain memory") << ff << 0x2000u << hex("0102030405") << false;
        QTest::addRow("wrapping to 0") << ff << 0xFFFFFFFEu << word << false;
        QTest::addRow("running copy's IP") << ff << 0xFFFFFF18u << hex("C0A80A10") << false;
        QTest::addRow("locked EEPROM") << ff << kEeprom << word << true;
        QTest::addRow("locked, last byte") << ff << 0xFFFFFCFEu << hex("A0") << true;
        QTest::addRow("locked, from below") << ff << 0xFFFFFBFEu << word << true;
        QTest::addRow("01 locks too") << hex("01") << kEeprom << word << true;
        QTest::addRow("locked, just below") << ff << 0xFFFFFBFCu << word << false;
        QTest::addRow("granted") << hex("00") << kEeprom << word << false;
        QTest::addRow("granted, across the permission byte") << hex("00") << 0xFFFFFCF0u << QByteArray(15, '\xAA') + hex("00") + QByteArray(16, '\xBB') << false;
        // clang-format on
    }
    void writes()
    {
        QFETCH(QByteArray, permission);
        QFETCH(quint32, address);
        QFETCH(QByteArray, data);
        QFETCH(bool, refused);
        const QByteArray before(data.size(), '\x50');
        sim()->poke(address, before);
        sim()->poke(kPermission, permission);
        const QByteArray reply = exchange(writeRequest(address, data, 3));
        QCOMPARE(reply.left(4), hex(refused ? "FF8903" : "FF8803") + char(data.size()));
        QCOMPARE(reply.mid(8), data); // echoed either way
        QCOMPARE(exchange(readRequest(address, quint8(data.size()))).mid(8).toHex(),
                 (refused ? before : data).toHex());
    }
    void datagrams_data()
    {
        // clang-format off
        // reply: "none": ignored and counted
        columns<QByteArray, QByteArray>("datagram", "reply");
        QTest::addRow("write with extra bytes") << hex("FF80 09 02 00006100 ABCDEF") << hex("FF88 09 02 00006100 ABCD");
        QTest::addRow("read of length 0") << hex("FFC0 0A 00 00006000") << hex("FFC8 0A 00 00006000");
        QTest::addRow("read with data") << hex("FFC0 0B 01 00006000 99") << hex("FFC8 0B 01 00006000 11");
        QTest::addRow("no command bit") << hex("FF40 0D 01 00006000") << hex("FFC8 0D 01 00006000 11");
        QTest::addRow("empty") << QByteArray() << QByteArray("none");
        QTest::addRow("7 bytes") << hex("FFC00104000060") << QByteArray("none");
        QTest::addRow("VerType FE") << hex("FEC0010400006000") << QByteArray("none");
        QTest::addRow("write short of data") << hex("FF80010400006000 010203") << QByteArray("none");
        // clang-format on
    }
    void datagrams()
    {
        QFETCH(QByteArray, datagram);
        QFETCH(QByteArray, reply);
        sim()->poke(0x6000, hex("11223344"));
        const SimCounters before = sim()->counters();
        const bool ignored = reply == "none";
        QCOMPARE(exchange(datagram, ignored ? kSimSilenceMs : kSimReplyTimeoutMs).toHex(' '),
                 reply.toHex(' '));
        QCOMPARE(sim()->counters().ignored, before.ignored + ignored);
        QCOMPARE(sim()->peek(0x6000, 4), hex("11223344"));
    }
    void udpPortMove_data()
    {
        columns<bool, int>("wholeImage", "delayMs");
        QTest::addRow("two-byte write of the UDP port") << false << 0;
        QTest::addRow("40-byte settings write from byte 24") << true << 0;
        QTest::addRow("delayed reply still leaves from the old port") << false << 50;
    }
    // The reply leaves from the old port; from then on the emulator answers on the new one only.
    void udpPortMove()
    {
        QFETCH(bool, wholeImage);
        QFETCH(int, delayMs);
        SimThread device;
        QVERIFY2(device.start(), qPrintable(device.errorString()));
        device.sim()->setFaults(faultsFrom({QStringLiteral("delay:%1").arg(delayMs)}));
        const quint16 oldPort = device.udpPort();
        const quint16 newPort = freeUdpPort();
        RawClient client;
        QByteArray image = client.bytes(readRequest(kRunning, 64), oldPort).mid(8);
        qToBigEndian<quint16>(newPort, image.data() + 34);
        const auto reply =
            client.exchange(wholeImage ? writeRequest(kRunning + 24, image.mid(24))
                                       : writeRequest(kRunning + 34, image.mid(34, 2)),
                            oldPort);
        QVERIFY(reply && reply->senderPort() == oldPort && reply->data().startsWith(hex("FF88")));
        QTRY_COMPARE(device.udpPort(), newPort);
        const auto moved = client.exchange(readRequest(kRunning + 34, 2), newPort);
        QVERIFY(moved && moved->senderPort() == newPort);
        QCOMPARE(moved->data().mid(8), image.mid(34, 2));
        QVERIFY(!client.exchange(readRequest(kRunning, 4), oldPort, kSimSilenceMs));
    }
    // A read of 2 bytes at 7000 (holding 0102) and a write of FFFF there, under each fault. A
    // refused access reads zeros and writes nothing.
    void faults_data()
    {
        // reply: "none": no reply
        columns<QStringList, QByteArray, bool>("faults", "reply", "written");
        const auto row = [](const char *fault, const char *reply, bool written) {
            QTest::addRow("%s", fault)
                << QString::fromLatin1(fault).split(u' ', Qt::SkipEmptyParts)
                << (qstrcmp(reply, "none") ? hex(reply) : QByteArray(reply)) << written;
        };
        row("", "FFC8 05 02 00007000 0102", true);
        row("wrong-vertype", "EFC8 05 02 00007000 0102", true);
        row("no-ack", "FFC0 05 02 00007000 0102", true);
        row("wrong-id", "FFC8 06 02 00007000 0102", true);
        row("flip-rw", "FF88 05 02 00007000 0102", true);
        row("short", "FFC8 05 02 00007000 01", true);
        row("wrong-vertype no-ack wrong-id flip-rw short", "EF80 06 02 00007000 01", true);
        row("bus-error", "FFC9 05 02 00007000 0000", false);
        row("range:7001-7FFF", "FFC9 05 02 00007000 0000", false);
        row("range:7002-7FFF", "FFC8 05 02 00007000 0102", true);
        row("drop", "none", true);
    }
    void faults()
    {
        QFETCH(QStringList, faults);
        QFETCH(QByteArray, reply);
        QFETCH(bool, written);
        sim()->poke(0x7000, hex("0102"));
        sim()->setFaults(faultsFrom(faults));
        const int waitMs = reply == "none" ? kSimSilenceMs : kSimReplyTimeoutMs;
        QCOMPARE(exchange(readRequest(0x7000, 2, 5), waitMs).toHex(' '), reply.toHex(' '));
        (void)exchange(writeRequest(0x7000, hex("FFFF")), waitMs);
        QCOMPARE(sim()->peek(0x7000, 2), hex(written ? "FFFF" : "0102"));
    }

private:
    MavixSim *sim() const { return m_sim.sim(); }
    QByteArray exchange(const QByteArray &datagram, int timeoutMs = kSimReplyTimeoutMs)
    {
        return m_client.bytes(datagram, m_sim.udpPort(), timeoutMs);
    }

    SimThread m_sim;
    RawClient m_client;
    QByteArray m_startImage;
};

QTEST_GUILESS_MAIN(TestMavixSim)
#include "tst_mavixsim.moc"
