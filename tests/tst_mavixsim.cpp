// mavix-sim in-process, spoken to with hand-made datagrams: the settings image, memory, the EEPROM
// lock, the UDP port move, every fault on the wire and the cap on delayed replies.
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "simclient.h"

#include <QTest>

namespace {

constexpr quint32 kRunning = 0xFFFFFF00;
constexpr quint32 kEeprom = 0xFFFFFC00;
constexpr quint32 kPermission = 0xFFFFFCFF;

} // namespace

class TestMavixSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void settingsImageAtStart();
    void writes_data();
    void writes();
    void datagrams_data();
    void datagrams();
    void udpPortMove_data();
    void udpPortMove();
    void busErrors_data();
    void busErrors();
    void dropEveryNth();
    void delayedRepliesAreCapped();

private:
    MavixSim *sim() const { return m_sim.sim(); }
    quint16 port() const { return m_sim.udpPort(); }
    QByteArray exchange(const QByteArray &datagram, int timeoutMs = kSimReplyTimeoutMs)
    {
        return m_client.bytes(datagram, port(), timeoutMs);
    }

    SimThread m_sim;
    RawClient m_client;
    QByteArray m_startImage;
};

void TestMavixSim::initTestCase()
{
    QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
    m_startImage = sim()->peek(kRunning, 64);
}

void TestMavixSim::cleanupTestCase()
{
    m_sim.stop();
}

void TestMavixSim::init()
{
    sim()->setFaults(SimFaults());
    sim()->setRecording(true);
    sim()->clearAccessLog();
    sim()->poke(kPermission, hex("FF"));
    sim()->poke(kRunning, m_startImage);
    sim()->poke(kEeprom, m_startImage);
}

void TestMavixSim::settingsImageAtStart()
{
    // MAC 02:00:C0:A8:00:10, its own IP and ports, keep-alive off, the other bytes non-zero.
    const QByteArray image = simStartImage(port(), sim()->tcpPort());
    QCOMPARE(exchange(readRequest(kRunning, 64, 9)).toHex(' '),
             (hex("FFC80940FFFFFF00") + image).toHex(' '));
    QCOMPARE(exchange(readRequest(kEeprom, 64)).mid(8), image);
    QCOMPARE(exchange(readRequest(kPermission, 1)).mid(8), hex("FF"));
    QCOMPARE(exchange(readRequest(0x7F000000, 16)).mid(8), QByteArray(16, '\0')); // never written

    // The TCP data port reports the port it bound; a write of it is stored, as the device does.
    sim()->setTcpPort(2424);
    QCOMPARE(exchange(readRequest(kRunning + 28, 2)).mid(8), hex("0978"));
    QCOMPARE(exchange(writeRequest(kRunning + 28, hex("0019"))).left(2), hex("FF88"));
    QCOMPARE(sim()->tcpPort(), quint16(25));
}

void TestMavixSim::writes_data()
{
    QTest::addColumn<QByteArray>("permission");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("refused");

    const QByteArray lock = hex("FF");
    const QByteArray grant = hex("00");
    const QByteArray word = hex("A0A1A2A3");
    QTest::addRow("plain memory") << lock << 0x2000u << hex("0102030405") << false;
    QTest::addRow("across a page boundary") << lock << 0x30FEu << hex("A1A2A3A4A5A6") << false;
    QTest::addRow("wrapping past FFFFFFFF to 0") << lock << 0xFFFFFFFEu << word << false;
    QTest::addRow("from the running image into plain memory")
        << lock << 0xFFFFFF3Eu << word << false;
    QTest::addRow("the running copy's IP, while the emulator stays on its address")
        << lock << 0xFFFFFF18u << hex("C0A80A10") << false;
    QTest::addRow("from the running image's timers to the end of its page")
        << lock << 0xFFFFFF24u << QByteArray(220, '\x3C') << false;
    QTest::addRow("locked: write at FFFFFC00 refused") << lock << 0xFFFFFC00u << word << true;
    QTest::addRow("locked: write beyond the image refused") << lock << 0xFFFFFC80u << word << true;
    QTest::addRow("locked: its last byte, FFFFFCFE, refused")
        << lock << 0xFFFFFCFEu << hex("A0") << true;
    QTest::addRow("locked: write from below into the EEPROM refused as a whole")
        << lock << 0xFFFFFBFEu << word << true;
    QTest::addRow("any non-zero permission locks") << hex("01") << 0xFFFFFC00u << word << true;
    QTest::addRow("locked: write just below the EEPROM page allowed")
        << lock << 0xFFFFFBFCu << word << false;
    QTest::addRow("locked: write above it allowed") << lock << 0xFFFFFD00u << word << false;
    QTest::addRow("granted: write at FFFFFC00 allowed") << grant << 0xFFFFFC00u << word << false;
    QTest::addRow("granted: from plain memory into the EEPROM copy")
        << grant << 0xFFFFFBFEu << word << false;
    QTest::addRow("granted: across the permission byte into the next page")
        << grant << 0xFFFFFCF0u << QByteArray(15, '\xAA') + grant + QByteArray(16, '\xBB') << false;
}

void TestMavixSim::writes()
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
    const QByteArray stored = refused ? before : data;
    QCOMPARE(sim()->peek(address, int(data.size())), stored);
    QCOMPARE(exchange(readRequest(address, quint8(data.size()))).mid(8).toHex(), stored.toHex());
}

void TestMavixSim::datagrams_data()
{
    QTest::addColumn<QByteArray>("datagram");
    QTest::addColumn<QByteArray>("reply"); // "none": ignored and counted, nothing written

    QTest::addRow("read: acknowledge, same ID, length and address, the bytes read")
        << hex("FFC0 07 04 00006000") << hex("FFC8 07 04 00006000 11223344");
    QTest::addRow("write: acknowledge, the bytes written echoed")
        << hex("FF80 08 02 00006100 ABCD") << hex("FF88 08 02 00006100 ABCD");
    QTest::addRow("write with more bytes than its length echoes its length")
        << hex("FF80 09 02 00006100 ABCDEF") << hex("FF88 09 02 00006100 ABCD");
    QTest::addRow("read of length 0") << hex("FFC0 0A 00 00006000") << hex("FFC8 0A 00 00006000");
    QTest::addRow("read request carrying data bytes")
        << hex("FFC0 0B 01 00006000 9999") << hex("FFC8 0B 01 00006000 11");
    QTest::addRow("acknowledge bit in the request is ignored")
        << hex("FFC8 0C 01 00006000") << hex("FFC8 0C 01 00006000 11");
    QTest::addRow("request without the command bit is served")
        << hex("FF40 0D 01 00006000") << hex("FFC8 0D 01 00006000 11");
    const QByteArray none("none");
    QTest::addRow("empty") << QByteArray() << none;
    QTest::addRow("one byte") << hex("FF") << none;
    QTest::addRow("7 bytes") << hex("FFC00104000060") << none;
    QTest::addRow("VerType FE") << hex("FEC0010400006000") << none;
    QTest::addRow("VerType 00") << hex("00C0010400006000") << none;
    QTest::addRow("write of 4 with 3 data bytes") << hex("FF80010400006000 010203") << none;
    QTest::addRow("write of 255 with no data") << hex("FF80 01 FF 00006000") << none;
}

void TestMavixSim::datagrams()
{
    QFETCH(QByteArray, datagram);
    QFETCH(QByteArray, reply);

    sim()->poke(0x6000, hex("11223344"));
    const SimCounters before = sim()->counters();
    const bool ignored = reply == "none";
    QCOMPARE(exchange(datagram, ignored ? kSimSilenceMs : kSimReplyTimeoutMs).toHex(' '),
             reply.toHex(' '));
    QCOMPARE(sim()->counters().ignored, before.ignored + ignored);
    QCOMPARE(sim()->counters().requests, before.requests + !ignored);
    QCOMPARE(sim()->accessLog().size(), ignored ? 0 : 1);
    QCOMPARE(sim()->peek(0x6000, 4), hex("11223344"));
    QCOMPARE(exchange(readRequest(0x6000, 1)).left(2), hex("FFC8")); // still answering
}

void TestMavixSim::udpPortMove_data()
{
    QTest::addColumn<bool>("wholeImage");
    QTest::addColumn<bool>("samePort");
    QTest::addColumn<int>("delayMs");
    QTest::addRow("two-byte write of the UDP port") << false << false << 0;
    QTest::addRow("40-byte settings write from byte 24") << true << false << 0;
    QTest::addRow("delayed reply still leaves from the old port") << false << false << 100;
    QTest::addRow("writing the same port keeps it") << false << true << 0;
}

void TestMavixSim::udpPortMove()
{
    QFETCH(bool, wholeImage);
    QFETCH(bool, samePort);
    QFETCH(int, delayMs);

    SimThread device;
    QVERIFY2(device.start(), qPrintable(device.errorString()));
    device.sim()->setFaults(faultsFrom({QStringLiteral("delay:%1").arg(delayMs)}));
    const quint16 oldPort = device.udpPort();
    QUdpSocket probe; // finds a port nobody uses at the moment
    QVERIFY(probe.bind(QHostAddress::LocalHost, 0));
    const quint16 newPort = samePort ? oldPort : probe.localPort();
    probe.close();
    RawClient client;
    QByteArray image = client.bytes(readRequest(kRunning, 64), oldPort).mid(8);
    qToBigEndian<quint16>(newPort, image.data() + 34);
    const auto reply = client.exchange(wholeImage ? writeRequest(kRunning + 24, image.mid(24))
                                                  : writeRequest(kRunning + 34, image.mid(34, 2)),
                                       oldPort);
    QVERIFY(reply);
    QCOMPARE(reply->senderPort(), oldPort); // answered on the old port
    QCOMPARE(reply->data().left(2), hex("FF88"));

    QTRY_COMPARE(device.udpPort(), newPort);
    const auto moved = client.exchange(readRequest(kRunning + 34, 2), newPort);
    QVERIFY(moved);
    QCOMPARE(moved->senderPort(), newPort);
    QCOMPARE(moved->data().mid(8), image.mid(34, 2));
    if (!samePort)
        QVERIFY(!client.exchange(readRequest(kRunning, 4), oldPort, kSimSilenceMs));
}

void TestMavixSim::busErrors_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<bool>("refused");

    QTest::addRow("every access") << QStringList{"bus-error"} << 0x7000u << true;
    QTest::addRow("range touched at its end") << QStringList{"range:6FF0-7000"} << 0x7000u << true;
    QTest::addRow("range touched by the last byte")
        << QStringList{"range:7003-7FFF"} << 0x7000u << true;
    QTest::addRow("range not touched") << QStringList{"range:7004-7FFF"} << 0x7000u << false;
    QTest::addRow("range met by a read wrapping past FFFFFFFF")
        << QStringList{"range:00000001-00000001"} << 0xFFFFFFFEu << true;
}

void TestMavixSim::busErrors()
{
    QFETCH(QStringList, faults);
    QFETCH(quint32, address);
    QFETCH(bool, refused);

    // A refused read returns zeros, a refused write changes nothing.
    sim()->poke(address, hex("01020304"));
    sim()->setFaults(faultsFrom(faults));
    const QByteArray header = readRequest(address, 4, 0x21);
    QCOMPARE(exchange(header).toHex(' '), (hex(refused ? "FFC9" : "FFC8") + header.mid(2) +
                                           hex(refused ? "00000000" : "01020304"))
                                              .toHex(' '));
    QCOMPARE(exchange(writeRequest(address, hex("FFFFFFFF"))).left(2),
             hex(refused ? "FF89" : "FF88"));
    QCOMPARE(sim()->peek(address, 4), hex(refused ? "01020304" : "FFFFFFFF"));
}

void TestMavixSim::dropEveryNth()
{
    SimFaults faults;
    faults.dropEveryNth = 3;
    sim()->setFaults(faults);
    const SimCounters before = sim()->counters();
    QString expected; // requests N, 2N, ... of the emulator's life go unanswered
    QString answered;
    for (quint8 id = 0; id < 9; ++id) {
        expected += (before.requests + 1 + id) % 3 ? u'r' : u'-';
        answered += exchange(readRequest(0x8000, 1, id), kSimSilenceMs) == "none" ? u'-' : u'r';
    }
    QCOMPARE(answered, expected);
    QCOMPARE(sim()->counters().dropped, before.dropped + 3);
}

// More pending delayed replies than the cap: the rest are dropped and counted, not kept.
void TestMavixSim::delayedRepliesAreCapped()
{
    SimFaults faults;
    faults.delayMs = 60000; // none leaves during the test; stopping the emulator discards them
    sim()->setFaults(faults);
    const SimCounters before = sim()->counters();
    QUdpSocket flood;
    QVERIFY(flood.bind(QHostAddress::LocalHost, 0));
    for (int sent = 0; sent < 4200; sent += 100) { // batches the socket buffer holds
        for (int i = 0; i < 100; ++i)
            flood.writeDatagram(readRequest(0x9000, 1), QHostAddress::LocalHost, port());
        QTRY_COMPARE(sim()->counters().requests - before.requests, quint64(sent + 100));
    }
    QCOMPARE(sim()->counters().delayOverflow - before.delayOverflow, quint64(4200 - 4096));
    QCOMPARE(sim()->counters().repliesSent, before.repliesSent);
}

QTEST_GUILESS_MAIN(TestMavixSim)
#include "tst_mavixsim.moc"
