// The settings record: image decoding and encoding, the text report, the value parsers, the target
// checks and the program-wide current target.
#include "reportcollector.h"
#include "settings/mavixsetting.h"

#include <QThread>
#include <QtTest>
#include <QVariant>

#include <atomic>

namespace {

// The factory image as the device keeps it: flags, MAC, IP, then the ten 16-bit values.
QByteArray factoryImage()
{
    QByteArray image(MavixSetting::kImageSize, '\0');
    const QByteArray settings = QByteArray::fromHex("00"           // 16 flags
                                                    "00"           // 17
                                                    "0200C0A80010" // 18..23 MAC
                                                    "C0A80A10"     // 24..27 IP
                                                    "0018"
                                                    "0017"
                                                    "05B4"
                                                    "1234" // 28..35 ports, MSS
                                                    "03E8"
                                                    "EA60"
                                                    "1388"
                                                    "2BF2" // 36..43 timers
                                                    "01F4"
                                                    "01F4"); // 44..47
    image.replace(16, settings.size(), settings);
    return image;
}

// Bytes that no field covers, so that a test sees whether they survive an encoding.
QByteArray patternedImage()
{
    QByteArray image = factoryImage();
    for (int i = 0; i < 16; ++i)
        image[i] = char(0xA0 + i);
    image[16] = char(0xF1);
    image[17] = char(0x5A);
    for (int i = 48; i < 64; ++i)
        image[i] = char(i);
    return image;
}

bool sameFields(const MavixSetting &a, const MavixSetting &b)
{
    return a.ipAddress == b.ipAddress && a.udpPort == b.udpPort && a.tcpDataPort == b.tcpDataPort &&
           a.macAddress == b.macAddress && a.tcpCommandPort == b.tcpCommandPort &&
           a.tcpMaxSegmentSize == b.tcpMaxSegmentSize &&
           a.tcpKeepAliveBufferNotEmptyMs == b.tcpKeepAliveBufferNotEmptyMs &&
           a.tcpKeepAliveBufferEmptyMs == b.tcpKeepAliveBufferEmptyMs &&
           a.tcpTimeoutConnectingMs == b.tcpTimeoutConnectingMs &&
           a.tcpTimeoutDisconnect256Ms == b.tcpTimeoutDisconnect256Ms &&
           a.tcpReconnectIntervalMs == b.tcpReconnectIntervalMs &&
           a.tcpRetransmissionTimerMs == b.tcpRetransmissionTimerMs &&
           a.tcpKeepAliveEnabled == b.tcpKeepAliveEnabled;
}

MavixSetting unusualSetting()
{
    MavixSetting setting;
    setting.ipAddress = QStringLiteral("10.1.2.254");
    setting.udpPort = 65535;
    setting.tcpDataPort = 1;
    setting.tcpCommandPort = 8023;
    setting.tcpMaxSegmentSize = 536;
    setting.tcpKeepAliveBufferNotEmptyMs = 1;
    setting.tcpKeepAliveBufferEmptyMs = 65534;
    setting.tcpTimeoutConnectingMs = 258;
    setting.tcpTimeoutDisconnect256Ms = 3;
    setting.tcpReconnectIntervalMs = 0x1234;
    setting.tcpRetransmissionTimerMs = 0xABCD;
    setting.tcpKeepAliveEnabled = true;
    return setting;
}

} // namespace

class TestMavixSetting : public QObject
{
    Q_OBJECT

private slots:
    void decode_data();
    void decode();
    void decodeKeepsEveryFactoryValue();
    void decodeRefusesShortImage_data();
    void decodeRefusesShortImage();

    void encodeKeepAliveBit_data();
    void encodeKeepAliveBit();
    void encodeKeepsUninterpretedBytesAndMac();
    void encodeThenDecodeGivesTheRecord();

    void textReportOfFactoryValues();
    void textReportOfUnusualValues();

    void parsePort_data();
    void parsePort();
    void parseByte_data();
    void parseByte();
    void parseHex32_data();
    void parseHex32();
    void parseDisconnectTimeout_data();
    void parseDisconnectTimeout();

    void validateTarget_data();
    void validateTarget();

    void currentIsConsistentAcrossThreads();
    void typeTravelsByName();
};

void TestMavixSetting::decode_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<int>("udpPort");
    QTest::addColumn<int>("tcpDataPort");
    QTest::addColumn<QString>("mac");
    QTest::addColumn<bool>("keepAlive");

    QByteArray sparse(64, '\0');
    sparse.replace(24, 4, QByteArray::fromHex("C0A80A10"));
    sparse.replace(34, 2, QByteArray::fromHex("1234"));
    QTest::addRow("only IP and UDP port set")
        << sparse << "192.168.10.16" << 4660 << 0 << "00:00:00:00:00:00" << false;

    QByteArray flags = factoryImage();
    flags[16] = 0x05;
    QTest::addRow("keep-alive bit beside another bit")
        << flags << "192.168.10.16" << 4660 << 24 << "02:00:C0:A8:00:10" << true;
    flags[16] = char(0xFB);
    QTest::addRow("every flag but keep-alive")
        << flags << "192.168.10.16" << 4660 << 24 << "02:00:C0:A8:00:10" << false;

    QByteArray high = factoryImage();
    high.replace(18, 10,
                 QByteArray::fromHex("FFEEDDCCBBAA"
                                     "FFFFFFFF"));
    high.replace(28, 2, QByteArray::fromHex("FFFF"));
    high.replace(34, 2, QByteArray::fromHex("0000"));
    QTest::addRow("all-ones bytes, big-endian ports")
        << high << "255.255.255.255" << 0 << 65535 << "FF:EE:DD:CC:BB:AA" << false;

    QTest::addRow("longer image: extra bytes ignored")
        << factoryImage() + QByteArray(10, 'x') << "192.168.10.16" << 4660 << 24
        << "02:00:C0:A8:00:10" << false;
}

void TestMavixSetting::decode()
{
    QFETCH(QByteArray, image);
    MavixSetting setting;
    setting.decode(image);
    QTEST(setting.ipAddress, "ip");
    QTEST(int(setting.udpPort), "udpPort");
    QTEST(int(setting.tcpDataPort), "tcpDataPort");
    QTEST(setting.macAddressText(), "mac");
    QTEST(setting.tcpKeepAliveEnabled, "keepAlive");
}

void TestMavixSetting::decodeKeepsEveryFactoryValue()
{
    MavixSetting decoded = unusualSetting();
    decoded.decode(factoryImage());
    QVERIFY(sameFields(decoded, MavixSetting()));
    QCOMPARE(decoded.tcpTimeoutDisconnectMs(), 2880000u);
}

void TestMavixSetting::decodeRefusesShortImage_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addRow("empty") << QByteArray();
    QTest::addRow("63 bytes") << factoryImage().left(63);
}

void TestMavixSetting::decodeRefusesShortImage()
{
    QFETCH(QByteArray, image);
    ReportCollector reports;
    MavixSetting setting = unusualSetting();
    setting.decode(image);
    QVERIFY(sameFields(setting, unusualSetting()));
    QCOMPARE(reports.errors, QStringList{"Mavix Setting buffer is too small"});
}

void TestMavixSetting::encodeKeepAliveBit_data()
{
    QTest::addColumn<quint8>("flagsBefore");
    QTest::addColumn<bool>("keepAlive");
    QTest::addColumn<quint8>("flagsAfter");
    QTest::addRow("disable clears only bit 2") << quint8(0x05) << false << quint8(0x01);
    QTest::addRow("enable sets only bit 2") << quint8(0x01) << true << quint8(0x05);
    QTest::addRow("enable when already set") << quint8(0xFF) << true << quint8(0xFF);
    QTest::addRow("disable among all bits") << quint8(0xFF) << false << quint8(0xFB);
}

void TestMavixSetting::encodeKeepAliveBit()
{
    QFETCH(quint8, flagsBefore);
    QFETCH(bool, keepAlive);
    QByteArray image = factoryImage();
    image[16] = char(flagsBefore);
    MavixSetting setting;
    setting.tcpKeepAliveEnabled = keepAlive;
    QTEST(quint8(setting.encode(image).at(16)), "flagsAfter");
}

void TestMavixSetting::encodeKeepsUninterpretedBytesAndMac()
{
    const QByteArray before = patternedImage();
    MavixSetting setting = unusualSetting();
    setting.macAddress = {{0x11, 0x22, 0x33, 0x44, 0x55, 0x66}};
    const QByteArray after = setting.encode(before);

    QCOMPARE(after.size(), MavixSetting::kImageSize);
    QCOMPARE(after.left(16), before.left(16));
    QCOMPARE(after.at(17), before.at(17));
    QCOMPARE(after.mid(18, 6), before.mid(18, 6)); // the MAC is never rewritten from a record
    QCOMPARE(after.mid(48), before.mid(48));
    QCOMPARE(after.mid(24, 24).toHex().toUpper(), QByteArray("0A0102FE"
                                                             "0001"
                                                             "1F57"
                                                             "0218"
                                                             "FFFF"
                                                             "0001"
                                                             "FFFE"
                                                             "0102"
                                                             "0003"
                                                             "1234"
                                                             "ABCD"));
}

void TestMavixSetting::encodeThenDecodeGivesTheRecord()
{
    const MavixSetting written = unusualSetting();
    MavixSetting readBack;
    readBack.decode(written.encode(factoryImage()));
    QVERIFY(sameFields(readBack, written));
}

void TestMavixSetting::textReportOfFactoryValues()
{
    const QString expected = QStringLiteral("MAC Address : 02:00:C0:A8:00:10 \r\n"
                                            "IP Address : 192.168.10.16 \r\n"
                                            "TCP Data Port : 24 \r\n"
                                            "TCP Command Port : 23 \r\n"
                                            "UDP Port : 4660 \r\n"
                                            "TCP Max Segment Size : 1460 \r\n"
                                            "TCP Keep Alive Enabled : disable \r\n"
                                            "TCP Keep Alive(buffer not empty) : 1000 msec\r\n"
                                            "TCP Keep Alive(buffer empty) : 60000 msec\r\n"
                                            "TCP Timeout(Connecting) : 5000 msec\r\n"
                                            "TCP Timeout(Disconnect) : 2880000 msec\r\n"
                                            "TCP Re-Connect Interval : 500 msec\r\n"
                                            "TCP Re-Transmition Timer : 500 msec");
    QCOMPARE(MavixSetting().textReport(), expected);
}

void TestMavixSetting::textReportOfUnusualValues()
{
    MavixSetting setting = unusualSetting();
    setting.macAddress = {{0x0a, 0xb0, 0x00, 0xff, 0x01, 0x10}};
    const QStringList lines = setting.textReport().split(QStringLiteral("\r\n"));
    QCOMPARE(lines.size(), 13);
    QCOMPARE(lines.at(0), QStringLiteral("MAC Address : 0A:B0:00:FF:01:10 "));
    QCOMPARE(lines.at(6), QStringLiteral("TCP Keep Alive Enabled : enable "));
    QCOMPARE(lines.at(10), QStringLiteral("TCP Timeout(Disconnect) : 768 msec"));
    QCOMPARE(lines.at(12), QStringLiteral("TCP Re-Transmition Timer : 43981 msec"));
}

void TestMavixSetting::parsePort_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("value");
    QTest::addRow("zero") << "0" << true << 0;
    QTest::addRow("highest") << "65535" << true << 65535;
    QTest::addRow("one past the highest") << "65536" << false << 0;
    QTest::addRow("negative") << "-1" << false << 0;
    QTest::addRow("empty") << "" << false << 0;
    QTest::addRow("trailing letter") << "1a" << false << 0;
    QTest::addRow("hexadecimal prefix") << "0x10" << false << 0;
}

void TestMavixSetting::parsePort()
{
    QFETCH(QString, text);
    quint16 value = 0;
    QTEST(MavixSetting::parsePort(text, &value), "valid");
    QTEST(int(value), "value");
}

void TestMavixSetting::parseByte_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("value");
    QTest::addRow("zero") << "0" << true << 0;
    QTest::addRow("highest") << "255" << true << 255;
    QTest::addRow("one past the highest") << "256" << false << 0;
    QTest::addRow("negative") << "-1" << false << 0;
    QTest::addRow("hexadecimal digits") << "ff" << false << 0;
}

void TestMavixSetting::parseByte()
{
    QFETCH(QString, text);
    quint8 value = 0;
    QTEST(MavixSetting::parseByte(text, &value), "valid");
    QTEST(int(value), "value");
}

void TestMavixSetting::parseHex32_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<quint32>("value");
    QTest::addRow("eight digits, upper case") << "FFFFFF00" << true << 0xFFFFFF00u;
    QTest::addRow("lower case, short") << "1a" << true << 0x1Au;
    QTest::addRow("highest") << "FFFFFFFF" << true << 0xFFFFFFFFu;
    QTest::addRow("nine digits") << "100000000" << false << 0u;
    QTest::addRow("not hexadecimal") << "12G4" << false << 0u;
    QTest::addRow("empty") << "" << false << 0u;
}

void TestMavixSetting::parseHex32()
{
    QFETCH(QString, text);
    quint32 value = 0;
    QTEST(MavixSetting::parseHex32(text, &value), "valid");
    QTEST(value, "value");
}

void TestMavixSetting::parseDisconnectTimeout_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<quint32>("valueMs");
    QTest::addRow("factory value") << "2880000" << true << 2880000u;
    QTest::addRow("upper limit") << "16677125" << true << 16677125u;
    QTest::addRow("one past the limit") << "16677126" << false << 0u;
    QTest::addRow("negative") << "-256" << false << 0u;
}

void TestMavixSetting::parseDisconnectTimeout()
{
    QFETCH(QString, text);
    quint32 valueMs = 0;
    QTEST(MavixSetting::parseDisconnectTimeout(text, &valueMs), "valid");
    QTEST(valueMs, "valueMs");
}

void TestMavixSetting::validateTarget_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("tcpPort");
    QTest::addColumn<QString>("udpPort");
    QTest::addColumn<QStringList>("messages");

    QTest::addRow("loopback, valid ports") << "127.0.0.1"
                                           << "24"
                                           << "4660" << QStringList();
    QTest::addRow("IPv6 loopback") << "::1"
                                   << "0"
                                   << "65535" << QStringList();
    QTest::addRow("octet above 255") << "256.1.1.1"
                                     << "24"
                                     << "4660" << QStringList{"IP address is invalid"};
    QTest::addRow("any address") << "0.0.0.0"
                                 << "24"
                                 << "4660" << QStringList{"0.0.0.0 is invalid"};
    QTest::addRow("broadcast") << "255.255.255.255"
                               << "24"
                               << "4660" << QStringList{"255.255.255.255 is invalid"};
    QTest::addRow("TCP port too high")
        << "127.0.0.1"
        << "65536"
        << "4660" << QStringList{"TCP Port number must be 0 to 65535"};
    QTest::addRow("UDP port negative") << "127.0.0.1"
                                       << "24"
                                       << "-1" << QStringList{"UDP Port number must be 0 to 65535"};
    QTest::addRow("everything wrong, in check order")
        << "host"
        << ""
        << "x"
        << QStringList{"IP address is invalid", "TCP Port number must be 0 to 65535",
                       "UDP Port number must be 0 to 65535"};
}

void TestMavixSetting::validateTarget()
{
    QFETCH(QString, ip);
    QFETCH(QString, tcpPort);
    QFETCH(QString, udpPort);
    QFETCH(QStringList, messages);
    ReportCollector reports;

    QCOMPARE(MavixSetting::validateTarget(ip, tcpPort, udpPort, false), messages.isEmpty());
    QVERIFY(reports.errors.isEmpty());

    QCOMPARE(MavixSetting::validateTarget(ip, tcpPort, udpPort, true), messages.isEmpty());
    QCOMPARE(reports.errors, messages);
}

// A reader on another thread must never see a half-written record: each record written here keeps
// its IP address and its UDP port in step.
void TestMavixSetting::currentIsConsistentAcrossThreads()
{
    constexpr int kRounds = 2000;
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::atomic<int> reads{0};
    QThread *reader = QThread::create([&] {
        while (!done.load()) {
            const MavixSetting seen = MavixSetting::current();
            if (seen.ipAddress != QStringLiteral("10.0.0.%1").arg(seen.udpPort % 256))
                ++torn;
            ++reads;
        }
    });

    MavixSetting setting;
    setting.udpPort = 0;
    setting.ipAddress = QStringLiteral("10.0.0.0");
    MavixSetting::setCurrent(setting);
    reader->start();
    for (int i = 1; i <= kRounds; ++i) {
        setting.udpPort = quint16(i);
        setting.ipAddress = QStringLiteral("10.0.0.%1").arg(i % 256);
        MavixSetting::setCurrent(setting);
    }
    QTRY_VERIFY_WITH_TIMEOUT(reads.load() > 0, 5000);
    done = true;
    QVERIFY(reader->wait(5000));
    delete reader;

    QCOMPARE(torn.load(), 0);
    QCOMPARE(MavixSetting::current().udpPort, quint16(kRounds));
    MavixSetting::setCurrent(MavixSetting());
}

void TestMavixSetting::typeTravelsByName()
{
    const QMetaType type = QMetaType::fromName("MavixSetting");
    QVERIFY(type.isValid());
    QCOMPARE(type, QMetaType::fromType<MavixSetting>());
    const QVariant carried = QVariant::fromValue(unusualSetting());
    QVERIFY(sameFields(carried.value<MavixSetting>(), unusualSetting()));
}

QTEST_GUILESS_MAIN(TestMavixSetting)
#include "tst_mavixsetting.moc"
