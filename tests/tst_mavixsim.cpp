// mavix-sim in-process, spoken to with hand-made datagrams: the settings image, memory, the EEPROM
// lock and file, the UDP port move, every fault on the wire, the access log, garbage datagrams,
// and random replies against WrenAgent.
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "wren/wrenagent.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QNetworkDatagram>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>
#include <QTest>
#include <QUdpSocket>

#include <optional>

namespace {

constexpr int kReplyTimeoutMs = 5000; // only waited out if the emulator is broken
constexpr int kSilenceMs = 200;       // how long "no reply" is watched for
constexpr quint32 kRunning = 0xFFFFFF00;
constexpr quint32 kEeprom = 0xFFFFFC00;
constexpr quint32 kPermission = 0xFFFFFCFF;

QByteArray hex(const char *text)
{
    return QByteArray::fromHex(text);
}

QByteArray request(quint8 flags, quint8 id, quint8 length, quint32 address,
                   const QByteArray &data = {})
{
    QByteArray bytes(8, Qt::Uninitialized);
    bytes[0] = char(0xFF);
    bytes[1] = char(flags);
    bytes[2] = char(id);
    bytes[3] = char(length);
    qToBigEndian<quint32>(address, bytes.data() + 4);
    return bytes + data;
}

QByteArray readRequest(quint32 address, quint8 length, quint8 id = 1)
{
    return request(0xC0, id, length, address);
}

QByteArray writeRequest(quint32 address, const QByteArray &data, quint8 id = 1)
{
    return request(0x80, id, quint8(data.size()), address, data);
}

quint16 freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost, 0);
    return probe.localPort();
}

struct Reply
{
    QByteArray bytes;
    quint16 fromPort = 0;
};

// A bare UDP peer that knows nothing of the tool's protocol classes.
class RawClient
{
public:
    RawClient() { m_socket.bind(QHostAddress::LocalHost, 0); }

    void send(const QByteArray &datagram, quint16 port)
    {
        m_socket.writeDatagram(datagram, QHostAddress::LocalHost, port);
    }
    std::optional<Reply> receive(int timeoutMs)
    {
        if (!m_socket.hasPendingDatagrams() && !m_socket.waitForReadyRead(timeoutMs))
            return std::nullopt;
        Reply reply;
        reply.bytes.resize(qMax<qint64>(m_socket.pendingDatagramSize(), 0));
        QHostAddress from;
        m_socket.readDatagram(reply.bytes.data(), reply.bytes.size(), &from, &reply.fromPort);
        return reply;
    }
    std::optional<Reply> exchange(const QByteArray &datagram, quint16 port,
                                  int timeoutMs = kReplyTimeoutMs)
    {
        send(datagram, port);
        return receive(timeoutMs);
    }
    // The reply's bytes, or "none" when nothing came back.
    QByteArray exchangeBytes(const QByteArray &datagram, quint16 port,
                             int timeoutMs = kReplyTimeoutMs)
    {
        const auto reply = exchange(datagram, port, timeoutMs);
        return reply ? reply->bytes : QByteArrayLiteral("none");
    }

private:
    QUdpSocket m_socket;
};

quint16 portIn(const QByteArray &image, int offset)
{
    return qFromBigEndian<quint16>(image.constData() + offset);
}

SimFaults faultsFrom(const QStringList &names)
{
    SimFaults faults;
    for (const QString &name : names) {
        if (name == u"wrong-vertype")
            faults.wrongVerType = true;
        else if (name == u"no-ack")
            faults.ackClear = true;
        else if (name == u"wrong-id")
            faults.wrongPacketId = true;
        else if (name == u"flip-rw")
            faults.flipReadWrite = true;
        else if (name == u"short")
            faults.shortReply = true;
        else if (name == u"bus-error")
            faults.busError = true;
        else if (name.startsWith(u"range:")) {
            const QStringList bounds = name.mid(6).split(u'-');
            faults.busErrorRange = true;
            faults.busErrorFirst = bounds[0].toUInt(nullptr, 16);
            faults.busErrorLast = bounds[1].toUInt(nullptr, 16);
        } else
            qFatal("unknown fault %s", qPrintable(name));
    }
    return faults;
}

} // namespace

class TestMavixSim : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();

    void settingsImageAtStart();
    void tcpPortHookShowsInTheImage();
    void memory_data();
    void memory();
    void replyShape_data();
    void replyShape();
    void malformedRequestsGetNoReply_data();
    void malformedRequestsGetNoReply();
    void eepromPermission_data();
    void eepromPermission();
    void eepromWriteSequenceOfTheGeneralTab();
    void eepromFileKeptAcrossStarts();
    void unreadableEepromFileIsLeftAlone();
    void udpPortMove_data();
    void udpPortMove();
    void ipBytesAreStoredButTheAddressStays();
    void portInUseIsReported();
    void faultsOnTheWire_data();
    void faultsOnTheWire();
    void dropEveryNth();
    void delay();
    void staleCopyGoesFirst();
    void accessLog();
    void garbageDatagrams();
    void randomRepliesAgainstTheAgent();

private:
    MavixSim *sim() const { return m_sim.sim(); }
    quint16 port() const { return m_sim.udpPort(); }

    SimThread m_sim;
    RawClient m_client;
    QByteArray m_startImage;
};

void TestMavixSim::initTestCase()
{
    QVERIFY2(m_sim.start(), qPrintable(m_sim.errorString()));
    QVERIFY(port() != 0);
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
    const auto reply = m_client.exchange(readRequest(kRunning, 64, 9), port());
    QVERIFY(reply);
    QCOMPARE(reply->bytes.left(8), hex("FFC80940FFFFFF00"));
    const QByteArray image = reply->bytes.mid(8);
    QCOMPARE(image.size(), 64);

    QCOMPARE(image.mid(18, 6), hex("0200C0A80010")); // MAC
    QCOMPARE(image.mid(24, 4), hex("7F000001"));     // the emulator's own IP
    QCOMPARE(portIn(image, 28), sim()->tcpPort());   // TCP data port
    QCOMPARE(portIn(image, 34), port());             // UDP port actually bound
    const QList<QPair<int, quint16>> timers = {{30, 23},   {32, 1460},  {36, 1000}, {38, 60000},
                                               {40, 5000}, {42, 11250}, {44, 500},  {46, 500}};
    for (const auto &[offset, value] : timers)
        QCOMPARE(portIn(image, offset), value);
    QCOMPARE(uchar(image[16]) & 0x04, 0);     // keep-alive off
    QVERIFY((uchar(image[16]) & ~0x04) != 0); // the other flag bits are set
    for (int i : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 17})
        QVERIFY2(image[i] != 0, qPrintable(QString::number(i)));
    for (int i = 48; i < 64; ++i)
        QVERIFY2(image[i] != 0, qPrintable(QString::number(i)));

    QCOMPARE(m_client.exchangeBytes(readRequest(kEeprom, 64, 10), port()).mid(8), image);
    QCOMPARE(m_client.exchangeBytes(readRequest(kPermission, 1, 11), port()).mid(8), hex("FF"));
}

void TestMavixSim::tcpPortHookShowsInTheImage()
{
    sim()->setTcpPort(2424);
    QCOMPARE(sim()->tcpPort(), quint16(2424));
    QCOMPARE(m_client.exchangeBytes(readRequest(kRunning + 28, 2), port()).mid(8), hex("0978"));
    // A write of the running copy's TCP data port is stored, as the device does.
    QCOMPARE(m_client.exchangeBytes(writeRequest(kRunning + 28, hex("0019")), port()).left(2),
             hex("FF88"));
    QCOMPARE(sim()->tcpPort(), quint16(25));
}

void TestMavixSim::memory_data()
{
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("data");

    QTest::addRow("plain memory") << 0x00002000u << hex("0102030405");
    QTest::addRow("across a page boundary") << 0x000030FEu << hex("A1A2A3A4A5A6");
    QTest::addRow("255 bytes") << 0x40000000u << QByteArray(255, '\x5C');
    QTest::addRow("wrapping past FFFFFFFF to 0") << 0xFFFFFFFEu << hex("E1E2E3E4");
    QTest::addRow("from the running image into plain memory") << 0xFFFFFF3Eu << hex("F1F2F3F4");
    QTest::addRow("from plain memory into the EEPROM copy, permission obtained")
        << 0xFFFFFBFEu << hex("0A0B0C0D");
    QTest::addRow("across the permission byte into the next page")
        << 0xFFFFFCF0u << QByteArray(15, '\xAA') + hex("00") + QByteArray(16, '\xBB');
    QTest::addRow("from the running image's timers to the end of its page")
        << 0xFFFFFF24u << QByteArray(220, '\x3C');
    QTest::addRow("zero bytes") << 0x00005000u << QByteArray();
}

void TestMavixSim::memory()
{
    QFETCH(quint32, address);
    QFETCH(QByteArray, data);

    const QByteArray fresh = m_client.exchangeBytes(readRequest(0x7F000000, 16), port());
    QCOMPARE(fresh.mid(8), QByteArray(16, '\0')); // never written: zero
    sim()->poke(kPermission, hex("00"));
    const QByteArray written = m_client.exchangeBytes(writeRequest(address, data, 3), port());
    QCOMPARE(written.left(4), hex("FF8803") + char(data.size()));
    QCOMPARE(written.mid(8), data);
    const QByteArray read =
        m_client.exchangeBytes(readRequest(address, quint8(data.size()), 4), port());
    QCOMPARE(read.mid(8).toHex(), data.toHex());
    QCOMPARE(sim()->peek(address, int(data.size())), data);
}

void TestMavixSim::replyShape_data()
{
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("reply");

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
    QTest::addRow("ID 255") << hex("FFC0 FF 01 00006001") << hex("FFC8 FF 01 00006001 22");
}

void TestMavixSim::replyShape()
{
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, reply);

    sim()->poke(0x6000, hex("11223344"));
    QCOMPARE(m_client.exchangeBytes(request, port()).toHex(' '), reply.toHex(' '));
}

void TestMavixSim::malformedRequestsGetNoReply_data()
{
    QTest::addColumn<QByteArray>("datagram");
    QTest::addRow("empty") << QByteArray();
    QTest::addRow("one byte") << hex("FF");
    QTest::addRow("7 bytes") << hex("FFC00104000060");
    QTest::addRow("VerType FE") << hex("FEC0010400006000");
    QTest::addRow("VerType 00") << hex("00C0010400006000");
    QTest::addRow("write of 4 with 3 data bytes") << hex("FF80010400006000 010203");
    QTest::addRow("write of 255 with no data") << hex("FF80 01 FF 00006000");
}

void TestMavixSim::malformedRequestsGetNoReply()
{
    QFETCH(QByteArray, datagram);

    sim()->poke(0x6000, hex("5A5A5A5A"));
    const SimCounters before = sim()->counters();
    QCOMPARE(m_client.exchangeBytes(datagram, port(), kSilenceMs), QByteArrayLiteral("none"));
    QCOMPARE(sim()->counters().ignored, before.ignored + 1);
    QCOMPARE(sim()->counters().requests, before.requests);
    QVERIFY(sim()->accessLog().isEmpty());
    QCOMPARE(sim()->peek(0x6000, 4), hex("5A5A5A5A")); // nothing written
    // Still answering.
    QCOMPARE(m_client.exchangeBytes(readRequest(0x6000, 1), port()).left(2), hex("FFC8"));
}

void TestMavixSim::eepromPermission_data()
{
    QTest::addColumn<QByteArray>("permission");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<bool>("refused");

    QTest::addRow("released: write at FFFFFC00 refused") << hex("FF") << 0xFFFFFC00u << true;
    QTest::addRow("released: write at FFFFFC3C refused") << hex("FF") << 0xFFFFFC3Cu << true;
    QTest::addRow("released: write beyond the image refused") << hex("FF") << 0xFFFFFC80u << true;
    QTest::addRow("released: write ending at FFFFFCFE refused") << hex("FF") << 0xFFFFFCFBu << true;
    QTest::addRow("released: write from below into the EEPROM refused as a whole")
        << hex("FF") << 0xFFFFFBFEu << true;
    QTest::addRow("any non-zero value locks") << hex("01") << 0xFFFFFC00u << true;
    QTest::addRow("released: write just below the EEPROM page allowed")
        << hex("FF") << 0xFFFFFBFCu << false;
    QTest::addRow("released: write above it allowed") << hex("FF") << 0xFFFFFD00u << false;
    QTest::addRow("released: write of the running image allowed")
        << hex("FF") << 0xFFFFFF00u << false;
    QTest::addRow("obtained: write at FFFFFC00 allowed") << hex("00") << 0xFFFFFC00u << false;
    QTest::addRow("obtained: write ending at FFFFFCFE allowed")
        << hex("00") << 0xFFFFFCFBu << false;
}

void TestMavixSim::eepromPermission()
{
    QFETCH(QByteArray, permission);
    QFETCH(quint32, address);
    QFETCH(bool, refused);

    const QByteArray before = hex("50515253");
    const QByteArray data = hex("A0A1A2A3");
    sim()->poke(address, before);
    sim()->poke(kPermission, permission);
    const QByteArray reply = m_client.exchangeBytes(writeRequest(address, data, 5), port());
    QCOMPARE(uchar(reply[1]), uchar(refused ? 0x89 : 0x88));
    QCOMPARE(reply.mid(8), data); // the write is echoed either way
    QCOMPARE(sim()->peek(address, 4), refused ? before : data);
    QCOMPARE(sim()->peek(kPermission, 1), permission);
}

void TestMavixSim::eepromWriteSequenceOfTheGeneralTab()
{
    QByteArray image = m_startImage;
    image.replace(24, 4, hex("C0A80A20"));
    image.replace(34, 2, hex("1235"));
    const SimCounters before = sim()->counters();

    const QList<QByteArray> requests = {
        writeRequest(kPermission, hex("00"), 1), writeRequest(kEeprom, image.left(17), 2),
        writeRequest(kEeprom + 0x18, image.mid(24), 3), writeRequest(kPermission, hex("FF"), 4)};
    for (const QByteArray &datagram : requests)
        QCOMPARE(uchar(m_client.exchangeBytes(datagram, port())[1]), uchar(0x88));

    QCOMPARE(sim()->peek(kEeprom, 64), image);
    QCOMPARE(sim()->peek(kRunning, 64), m_startImage); // the running copy is another copy
    QCOMPARE(sim()->peek(kPermission, 1), hex("FF"));
    QCOMPARE(sim()->counters().busErrors, before.busErrors);
    // After release the EEPROM is locked again.
    QCOMPARE(uchar(m_client.exchangeBytes(writeRequest(kEeprom, hex("00")), port())[1]),
             uchar(0x89));

    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), 5);
    const QList<QPair<quint32, int>> expected = {
        {kPermission, 1}, {kEeprom, 17}, {kEeprom + 0x18, 40}, {kPermission, 1}, {kEeprom, 1}};
    for (int i = 0; i < expected.size(); ++i) {
        QCOMPARE(log[i].direction, SimAccess::Write);
        QCOMPARE(log[i].address, expected[i].first);
        QCOMPARE(int(log[i].length), expected[i].second);
    }
    QCOMPARE(log[4].busError, true);
}

void TestMavixSim::eepromFileKeptAcrossStarts()
{
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    SimOptions options = SimOptions::anyPort();
    options.eepromPath = dir.filePath(QStringLiteral("eeprom.bin"));
    QByteArray image;
    {
        SimThread device;
        QVERIFY2(device.start(options), qPrintable(device.errorString()));
        QVERIFY(!QFile::exists(options.eepromPath)); // nothing written yet
        RawClient client;
        image = client.exchangeBytes(readRequest(kEeprom, 64), device.udpPort()).mid(8);
        image.replace(18, 6, hex("020000000099")); // MAC
        image.replace(24, 4, hex("0A010203"));     // 10.1.2.3
        image.replace(34, 2, hex("1E61"));         // UDP 7777
        client.exchange(writeRequest(kPermission, hex("00")), device.udpPort());
        client.exchange(writeRequest(kEeprom, image), device.udpPort());
        client.exchange(writeRequest(kPermission, hex("FF")), device.udpPort());
    }
    QFile file(options.eepromPath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), image);
    file.close();

    SimThread again;
    QVERIFY2(again.start(options), qPrintable(again.errorString()));
    RawClient client;
    QCOMPARE(client.exchangeBytes(readRequest(kEeprom, 64), again.udpPort()).mid(8), image);
    // The running copy boots from the EEPROM but answers where it was started.
    const QByteArray running =
        client.exchangeBytes(readRequest(kRunning, 64), again.udpPort()).mid(8);
    QCOMPARE(running.mid(18, 6), hex("020000000099"));
    QCOMPARE(running.mid(24, 4), hex("7F000001"));
    QCOMPARE(portIn(running, 34), again.udpPort());
}

void TestMavixSim::unreadableEepromFileIsLeftAlone()
{
    QTemporaryDir dir;
    SimOptions options = SimOptions::anyPort();
    options.eepromPath = dir.filePath(QStringLiteral("short.bin"));
    QFile file(options.eepromPath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(hex("00112233445566778899"));
    file.close();

    SimThread device;
    QVERIFY(!device.start(options));
    QCOMPARE(device.startError(), SimStartError::EepromFile);
    QVERIFY2(device.errorString().contains(options.eepromPath), qPrintable(device.errorString()));
    QCOMPARE(QFileInfo(options.eepromPath).size(), 10);
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
    SimFaults faults;
    faults.delayMs = delayMs;
    device.sim()->setFaults(faults);
    const quint16 oldPort = device.udpPort();
    const quint16 newPort = samePort ? oldPort : freeUdpPort();
    QByteArray portBytes(2, Qt::Uninitialized);
    qToBigEndian<quint16>(newPort, portBytes.data());

    RawClient client;
    QByteArray image = client.exchangeBytes(readRequest(kRunning, 64), oldPort).mid(8);
    image.replace(34, 2, portBytes);
    const QByteArray datagram = wholeImage ? writeRequest(kRunning + 0x18, image.mid(24))
                                           : writeRequest(kRunning + 34, portBytes);
    const auto reply = client.exchange(datagram, oldPort);
    QVERIFY(reply);
    QCOMPARE(reply->fromPort, oldPort); // answered on the old port
    QCOMPARE(uchar(reply->bytes[1]), uchar(0x88));

    QTRY_COMPARE(device.udpPort(), newPort);
    const auto moved = client.exchange(readRequest(kRunning + 34, 2), newPort);
    QVERIFY(moved);
    QCOMPARE(moved->fromPort, newPort);
    QCOMPARE(moved->bytes.mid(8), portBytes);
    if (!samePort)
        QVERIFY(!client.exchange(readRequest(kRunning, 4), oldPort, kSilenceMs));
}

void TestMavixSim::ipBytesAreStoredButTheAddressStays()
{
    const QByteArray reply =
        m_client.exchangeBytes(writeRequest(kRunning + 24, hex("C0A80A10")), port());
    QCOMPARE(uchar(reply[1]), uchar(0x88));
    QCOMPARE(m_client.exchangeBytes(readRequest(kRunning + 24, 4), port()).mid(8), hex("C0A80A10"));
    QCOMPARE(sim()->address(), QHostAddress(QHostAddress::LocalHost));
}

void TestMavixSim::portInUseIsReported()
{
    SimOptions options = SimOptions::anyPort();
    options.udpPort = port();
    SimThread second;
    QVERIFY(!second.start(options));
    QCOMPARE(second.startError(), SimStartError::AddressInUse);
    QVERIFY2(second.errorString().contains(QString::number(port())),
             qPrintable(second.errorString()));
}

void TestMavixSim::faultsOnTheWire_data()
{
    QTest::addColumn<QStringList>("faults");
    QTest::addColumn<quint32>("address");
    QTest::addColumn<QByteArray>("reply");

    QTest::addRow("wrong VerType")
        << QStringList{"wrong-vertype"} << 0x7000u << hex("EFC8 21 04 00007000 01020304");
    QTest::addRow("acknowledge clear")
        << QStringList{"no-ack"} << 0x7000u << hex("FFC0 21 04 00007000 01020304");
    QTest::addRow("wrong packet ID")
        << QStringList{"wrong-id"} << 0x7000u << hex("FFC8 22 04 00007000 01020304");
    QTest::addRow("R/W bit flipped")
        << QStringList{"flip-rw"} << 0x7000u << hex("FF88 21 04 00007000 01020304");
    QTest::addRow("fewer data bytes than the length")
        << QStringList{"short"} << 0x7000u << hex("FFC8 21 04 00007000 010203");
    QTest::addRow("bus error: no data read")
        << QStringList{"bus-error"} << 0x7000u << hex("FFC9 21 04 00007000 00000000");
    QTest::addRow("bus error range touched at its end")
        << QStringList{"range:6FF0-7000"} << 0x7000u << hex("FFC9 21 04 00007000 00000000");
    QTest::addRow("bus error range touched by the last byte")
        << QStringList{"range:7003-7FFF"} << 0x7000u << hex("FFC9 21 04 00007000 00000000");
    QTest::addRow("bus error range not touched")
        << QStringList{"range:7004-7FFF"} << 0x7000u << hex("FFC8 21 04 00007000 01020304");
    QTest::addRow("bus error range met by a read wrapping past FFFFFFFF")
        << QStringList{"range:00000001-00000001"} << 0xFFFFFFFEu
        << hex("FFC9 21 04 FFFFFFFE 00000000");
}

void TestMavixSim::faultsOnTheWire()
{
    QFETCH(QStringList, faults);
    QFETCH(quint32, address);
    QFETCH(QByteArray, reply);

    sim()->poke(address, hex("01020304"));
    sim()->setFaults(faultsFrom(faults));
    QCOMPARE(m_client.exchangeBytes(readRequest(address, 4, 0x21), port()).toHex(' '),
             reply.toHex(' '));
    // A refused write changes nothing.
    if (uchar(reply[1]) & 0x01) {
        (void)m_client.exchange(writeRequest(address, hex("FFFFFFFF")), port());
        QCOMPARE(sim()->peek(address, 4), hex("01020304"));
    }
}

void TestMavixSim::dropEveryNth()
{
    SimFaults faults;
    const quint64 requests = sim()->counters().requests;
    // Line the count up so that the third request from now is the first dropped.
    faults.dropEveryNth = quint32(requests + 3);
    sim()->setFaults(faults);
    QStringList answered;
    for (quint8 id = 1; id <= 4; ++id) {
        const auto reply = m_client.exchange(readRequest(0x8000, 1, id), port(), kSilenceMs);
        answered << (reply ? QString::number(uchar(reply->bytes[2])) : QStringLiteral("-"));
    }
    QCOMPARE(answered, (QStringList{"1", "2", "-", "4"}));
    QCOMPARE(sim()->counters().dropped, 1u);

    faults.dropEveryNth = 2;
    sim()->setFaults(faults);
    const quint64 now = sim()->counters().requests;
    int replies = 0;
    for (quint8 id = 0; id < 6; ++id)
        replies += m_client.exchange(readRequest(0x8000, 1, id), port(), kSilenceMs) ? 1 : 0;
    QCOMPARE(replies, 3);
    QCOMPARE(sim()->counters().requests, now + 6);
}

void TestMavixSim::delay()
{
    constexpr int kDelayMs = 150;
    SimFaults faults;
    faults.delayMs = kDelayMs;
    sim()->setFaults(faults);
    QElapsedTimer clock;
    clock.start();
    const auto reply = m_client.exchange(readRequest(0x8000, 1, 7), port());
    QVERIFY(reply);
    QVERIFY2(clock.elapsed() >= kDelayMs - 5, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(uchar(reply->bytes[2]), uchar(7));
}

void TestMavixSim::staleCopyGoesFirst()
{
    const QByteArray first = m_client.exchangeBytes(readRequest(0x8000, 2, 1), port());
    SimFaults faults;
    faults.staleReply = true;
    sim()->setFaults(faults);
    m_client.send(readRequest(0x9000, 3, 2), port());
    const auto stale = m_client.receive(kReplyTimeoutMs);
    const auto current = m_client.receive(kReplyTimeoutMs);
    QVERIFY(stale && current);
    QCOMPARE(stale->bytes, first);
    QCOMPARE(current->bytes.left(8), hex("FFC8 02 03 00009000"));
}

void TestMavixSim::accessLog()
{
    sim()->poke(kPermission, hex("00"));
    (void)m_client.exchange(readRequest(kRunning, 64, 1), port());
    (void)m_client.exchange(writeRequest(0x1234, hex("CAFE"), 2), port());
    (void)m_client.exchange(writeRequest(kEeprom + 0x18, hex("01"), 3), port());
    (void)m_client.exchange(readRequest(0x1234, 2, 4), port());
    (void)m_client.exchange(hex("FFC0"), port(), kSilenceMs); // not a request: not recorded

    const QList<SimAccess> log = sim()->accessLog();
    QCOMPARE(log.size(), 4);
    QCOMPARE(log[0].direction, SimAccess::Read);
    QCOMPARE(log[0].address, kRunning);
    QCOMPARE(log[0].length, quint8(64));
    QCOMPARE(log[0].data, m_startImage);
    QCOMPARE(log[1].direction, SimAccess::Write);
    QCOMPARE(log[1].address, 0x1234u);
    QCOMPARE(log[1].data, hex("CAFE"));
    QCOMPARE(log[1].packetId, quint8(2));
    QCOMPARE(log[2].address, kEeprom + 0x18);
    QCOMPARE(log[3].data, hex("CAFE"));

    sim()->clearAccessLog();
    sim()->setRecording(false);
    (void)m_client.exchange(readRequest(0x1234, 2), port());
    QVERIFY(sim()->accessLog().isEmpty());
}

void TestMavixSim::garbageDatagrams()
{
    // Some 100,000 random datagrams, half of them with a plausible header, in batches small
    // enough for the socket buffer; after each batch the emulator must still answer.
    constexpr int kDatagrams = 100000;
    constexpr int kBatch = 50;
    QRandomGenerator random(20240611);
    QUdpSocket garbage;
    QVERIFY(garbage.bind(QHostAddress::LocalHost, 0));
    const SimCounters before = sim()->counters();
    quint64 wellFormed = 0;
    QByteArray datagram;
    for (int sent = 0; sent < kDatagrams;) {
        for (int i = 0; i < kBatch; ++i, ++sent) {
            const bool plausible = random.bounded(2) == 0;
            datagram.resize(plausible ? 8 + random.bounded(300) : random.bounded(40));
            for (char &byte : datagram)
                byte = char(random.bounded(256));
            if (plausible)
                datagram[0] = char(0xFF);
            const bool isRequest =
                datagram.size() >= 8 && uchar(datagram[0]) == 0xFF &&
                ((uchar(datagram[1]) & 0x40) || datagram.size() - 8 >= uchar(datagram[3]));
            wellFormed += isRequest ? 1 : 0;
            garbage.writeDatagram(datagram, QHostAddress::LocalHost, port());
        }
        // The emulator's replies to the garbage pile up unread: drop them.
        while (garbage.hasPendingDatagrams())
            garbage.receiveDatagram(0);
        const auto reply = m_client.exchange(readRequest(0x6000, 1, 0x5A), port());
        QVERIFY2(reply, qPrintable(QStringLiteral("no answer after %1 datagrams").arg(sent)));
        QCOMPARE(reply->bytes.left(4), hex("FFC85A01"));
    }
    const SimCounters after = sim()->counters();
    QCOMPARE(after.ignored - before.ignored, quint64(kDatagrams) - wellFormed);
    QCOMPARE(after.requests - before.requests, wellFormed + kDatagrams / kBatch);
    QCOMPARE(sim()->udpPort(), port());
}

void TestMavixSim::randomRepliesAgainstTheAgent()
{
    constexpr int kCalls = 2000;
    constexpr int kTimeoutMs = 100;
    constexpr int kSlackMs = 400; // a loaded machine may schedule late
    SimFaults faults;
    faults.randomReply = true;
    faults.randomSeed = 7;
    sim()->setFaults(faults);
    sim()->setRecording(false);
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), port());

    QMap<int, int> outcomes; // -1: data returned, else the WrenError code
    QElapsedTimer clock;
    qint64 longest = 0;
    for (int i = 0; i < kCalls; ++i) {
        clock.start();
        try {
            if (i % 2)
                (void)agent.write(0x6000, QByteArray(i % 256, char(i)), kTimeoutMs);
            else
                (void)agent.read(0x6000, quint8(i % 256), kTimeoutMs);
            ++outcomes[-1];
        } catch (const WrenError &error) {
            ++outcomes[int(error.code)];
        }
        longest = qMax(longest, clock.elapsed());
    }
    QVERIFY2(longest <= kTimeoutMs + kSlackMs, qPrintable(QString::number(longest)));
    QVERIFY(outcomes.value(int(WrenError::BadReply)) > 0);
    QVERIFY(outcomes.value(int(WrenError::ShortReply)) > 0);
    QVERIFY(outcomes.value(-1) > 0);
    qInfo() << "outcomes (-1 = data):" << outcomes << "longest call" << longest << "ms";
}

QTEST_GUILESS_MAIN(TestMavixSim)
#include "tst_mavixsim.moc"
