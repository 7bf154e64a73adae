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
    const QByteArray settings = QByteArray::fromHex("0000 0200C0A80010 C0A80A10 "
                                                    "0018 0017 05B4 1234 03E8 EA60 "
                                                    "1388 2BF2 01F4 01F4");
    image.replace(16, settings.size(), settings);
    return image;
}

// Every field differs from its default and from the others.
MavixSetting unusualSetting()
{
    MavixSetting setting;
    setting.ipAddress = QStringLiteral("10.1.2.254");
    setting.udpPort = 65535;
    setting.tcpDataPort = 1;
    setting.macAddress = {{0x0a, 0xb0, 0x00, 0xff, 0x01, 0x10}};
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

// Runs one of the record's parsers and widens the value it stored, so one table serves all four.
template <typename T>
qint64 parsed(bool (*parse)(const QString &, T *), const QString &text, bool *valid)
{
    T value = 0;
    *valid = parse(text, &value);
    return value;
}

} // namespace

class TestMavixSetting : public QObject
{
    Q_OBJECT

private slots:
    void decode_data();
    void decode();
    void decodeRefusesShortImage_data();
    void decodeRefusesShortImage();
    void encodeKeepAliveBit_data();
    void encodeKeepAliveBit();
    void encodeWritesEveryFieldAndKeepsTheRest();

    void textReportOfFactoryValues();
    void textReportOfUnusualValues();

    void parsers_data();
    void parsers();
    void validateTarget_data();
    void validateTarget();

    void currentIsConsistentAcrossThreads();
    void typeTravelsByName();
};

void TestMavixSetting::decode_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QString>("decoded");
    QByteArray sparse(64, '\0');
    sparse.replace(24, 4, QByteArray::fromHex("C0A80A10"));
    sparse.replace(34, 2, QByteArray::fromHex("1234"));
    QTest::addRow("only IP and UDP port set")
        << sparse << "192.168.10.16 udp 4660 tcp 0 mac 00:00:00:00:00:00 keep-alive 0";
    QByteArray flags = factoryImage();
    flags[16] = 0x05;
    QTest::addRow("keep-alive bit beside another bit")
        << flags << "192.168.10.16 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 keep-alive 1";
    flags[16] = char(0xFB);
    QTest::addRow("every flag but keep-alive")
        << flags << "192.168.10.16 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 keep-alive 0";
    QByteArray high = factoryImage();
    high.replace(18, 18, QByteArray::fromHex("FFEEDDCCBBAA FFFFFFFF FFFF FFFF FFFF 0000"));
    QTest::addRow("all-ones bytes, big-endian ports")
        << high << "255.255.255.255 udp 0 tcp 65535 mac FF:EE:DD:CC:BB:AA keep-alive 0";
    QTest::addRow("longer image: extra bytes ignored")
        << factoryImage() + QByteArray(10, 'x')
        << "192.168.10.16 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 keep-alive 0";
}

void TestMavixSetting::decode()
{
    QFETCH(QByteArray, image);
    MavixSetting setting;
    setting.decode(image);
    QTEST(QStringLiteral("%1 udp %2 tcp %3 mac %4 keep-alive %5")
              .arg(setting.ipAddress)
              .arg(setting.udpPort)
              .arg(setting.tcpDataPort)
              .arg(setting.macAddressText())
              .arg(int(setting.tcpKeepAliveEnabled)),
          "decoded");
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
    // The report names every field: two records with the same report hold the same values.
    QCOMPARE(setting.textReport(), unusualSetting().textReport());
    QCOMPARE(reports.errors, QStringList{"Mavix Setting buffer is too small"});
}

void TestMavixSetting::encodeKeepAliveBit_data()
{
    QTest::addColumn<quint8>("flagsBefore");
    QTest::addColumn<bool>("keepAlive");
    QTest::addColumn<quint8>("flagsAfter");
    QTest::addRow("disable clears only bit 2") << quint8(0x05) << false << quint8(0x01);
    QTest::addRow("enable sets only bit 2") << quint8(0x01) << true << quint8(0x05);
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

void TestMavixSetting::encodeWritesEveryFieldAndKeepsTheRest()
{
    QByteArray before = factoryImage();
    for (int i = 0; i < MavixSetting::kImageSize; ++i) {
        if (i < 16 || i == 17 || i >= 48) // bytes no field covers
            before[i] = char(0x80 + i);
    }
    const QByteArray after = unusualSetting().encode(before);

    QCOMPARE(after.size(), MavixSetting::kImageSize);
    QCOMPARE(after.left(16), before.left(16));
    QCOMPARE(after.mid(17, 7), before.mid(17, 7)); // the MAC is never rewritten from a record
    QCOMPARE(after.mid(48), before.mid(48));
    QCOMPARE(after.mid(24, 24).toHex(' ').toUpper(),
             QByteArray("0A 01 02 FE 00 01 1F 57 02 18 FF FF 00 01 FF FE 01 02 00 03 12 34 AB CD"));

    MavixSetting readBack;
    readBack.decode(after);
    readBack.macAddress = unusualSetting().macAddress;
    QCOMPARE(readBack.textReport(), unusualSetting().textReport());
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
    const QStringList lines = unusualSetting().textReport().split(QStringLiteral("\r\n"));
    QCOMPARE(lines.size(), 13);
    QCOMPARE(lines.at(0), QStringLiteral("MAC Address : 0A:B0:00:FF:01:10 "));
    QCOMPARE(lines.at(6), QStringLiteral("TCP Keep Alive Enabled : enable "));
    QCOMPARE(lines.at(10), QStringLiteral("TCP Timeout(Disconnect) : 768 msec"));
    QCOMPARE(lines.at(12), QStringLiteral("TCP Re-Transmition Timer : 43981 msec"));
}

// Each parser stores a value only when it accepts the text.
void TestMavixSetting::parsers_data()
{
    QTest::addColumn<QString>("parser");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<qint64>("value");
    const auto row = [](const char *parser, const char *name, const char *text, qint64 value) {
        QTest::addRow("%s: %s", parser, name)
            << QString::fromLatin1(parser) << QString::fromLatin1(text) << (value >= 0)
            << qMax(value, qint64(0));
    };
    const qint64 refused = -1;
    row("port", "highest", "65535", 65535);
    row("port", "one past the highest", "65536", refused);
    row("port", "negative", "-1", refused);
    row("port", "empty", "", refused);
    row("port", "trailing letter", "1a", refused);
    row("byte", "highest", "255", 255);
    row("byte", "one past the highest", "256", refused);
    row("byte", "hexadecimal digits", "ff", refused);
    row("hex32", "lower case, short", "1a", 0x1A);
    row("hex32", "highest", "FFFFFFFF", 0xFFFFFFFF);
    row("hex32", "nine digits", "100000000", refused);
    row("hex32", "not hexadecimal", "12G4", refused);
    row("disconnect", "upper limit", "16677125", 16677125);
    row("disconnect", "one past the limit", "16677126", refused);
    row("disconnect", "negative", "-256", refused);
}

void TestMavixSetting::parsers()
{
    QFETCH(QString, parser);
    QFETCH(QString, text);
    bool valid = false;
    const qint64 value =
        parser == QLatin1String("port")   ? parsed(&MavixSetting::parsePort, text, &valid)
        : parser == QLatin1String("byte") ? parsed(&MavixSetting::parseByte, text, &valid)
        : parser == QLatin1String("hex32")
            ? parsed(&MavixSetting::parseHex32, text, &valid)
            : parsed(&MavixSetting::parseDisconnectTimeout, text, &valid);
    QTEST(valid, "valid");
    QTEST(value, "value");
}

void TestMavixSetting::validateTarget_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("tcpPort");
    QTest::addColumn<QString>("udpPort");
    QTest::addColumn<QStringList>("messages");
    const auto row = [](const char *name, const char *ip, const char *tcp, const char *udp,
                        const QStringList &messages) {
        QTest::addRow("%s", name) << QString::fromLatin1(ip) << QString::fromLatin1(tcp)
                                  << QString::fromLatin1(udp) << messages;
    };
    const QString badTcp = QStringLiteral("TCP Port number must be 0 to 65535");
    const QString badUdp = QStringLiteral("UDP Port number must be 0 to 65535");
    row("loopback, valid ports", "127.0.0.1", "24", "4660", {});
    row("IPv6 loopback", "::1", "0", "65535", {});
    row("octet above 255", "256.1.1.1", "24", "4660", {"IP address is invalid"});
    row("any address", "0.0.0.0", "24", "4660", {"0.0.0.0 is invalid"});
    row("broadcast", "255.255.255.255", "24", "4660", {"255.255.255.255 is invalid"});
    row("TCP port too high", "127.0.0.1", "65536", "4660", {badTcp});
    row("UDP port negative", "127.0.0.1", "24", "-1", {badUdp});
    row("everything wrong, in check order", "host", "", "x",
        {"IP address is invalid", badTcp, badUdp});
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
    const auto recordOf = [](int i) {
        MavixSetting setting;
        setting.udpPort = quint16(i);
        setting.ipAddress = QStringLiteral("10.0.0.%1").arg(i % 256);
        return setting;
    };
    MavixSetting::setCurrent(recordOf(0));
    QThread *reader = QThread::create([&] {
        while (!done.load()) {
            const MavixSetting seen = MavixSetting::current();
            if (seen.ipAddress != recordOf(seen.udpPort).ipAddress)
                ++torn;
            ++reads;
        }
    });
    reader->start();
    for (int i = 1; i <= kRounds; ++i)
        MavixSetting::setCurrent(recordOf(i));
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
    QCOMPARE(carried.value<MavixSetting>().textReport(), unusualSetting().textReport());
}

QTEST_GUILESS_MAIN(TestMavixSetting)
#include "tst_mavixsetting.moc"
