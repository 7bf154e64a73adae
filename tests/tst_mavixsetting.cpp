// The settings record: image decoding and encoding, the text report and the checks of a typed
// target or written address with their messages.
#include "reportcollector.h"
#include "settings/mavixsetting.h"

#include <QtTest>

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

} // namespace

class TestMavixSetting : public QObject
{
    Q_OBJECT

private slots:
    void decode_data();
    void decode();
    void encode_data();
    void encode();
    void textReportOfFactoryValues();
    void checks_data();
    void checks();
};

void TestMavixSetting::decode_data()
{
    QTest::addColumn<QByteArray>("image");
    QTest::addColumn<QString>("decoded");
    QTest::addColumn<QStringList>("errors");
    const QString factory = QStringLiteral("192.168.10.16 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 "
                                           "keep-alive 0 disconnect 2880000");
    QByteArray flags = factoryImage();
    flags[16] = 0x05;
    QTest::addRow("keep-alive bit beside another bit")
        << flags << "192.168.10.16 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 keep-alive 1 "
                    "disconnect 2880000"
        << QStringList();
    QByteArray high = factoryImage();
    high.replace(18, 26, QByteArray::fromHex("FFEEDDCCBBAA FFFFFFFF FFFF FFFF FFFF 0000 000000000000 0003"));
    QTest::addRow("all-ones bytes, big-endian")
        << high << "255.255.255.255 udp 0 tcp 65535 mac FF:EE:DD:CC:BB:AA keep-alive 0 "
                   "disconnect 768"
        << QStringList();
    QTest::addRow("longer image") << factoryImage() + "xx" << factory << QStringList();
    QTest::addRow("63 bytes: record unchanged")
        << factoryImage().left(63)
        << "1.2.3.4 udp 4660 tcp 24 mac 02:00:C0:A8:00:10 keep-alive 0 disconnect 2880000"
        << QStringList{"Mavix Setting buffer is too small"};
}

void TestMavixSetting::decode()
{
    QFETCH(QByteArray, image);
    ReportCollector reports;
    MavixSetting setting;
    setting.ipAddress = QStringLiteral("1.2.3.4");
    setting.decode(image);
    QTEST(QStringLiteral("%1 udp %2 tcp %3 mac %4 keep-alive %5 disconnect %6")
              .arg(setting.ipAddress)
              .arg(setting.udpPort)
              .arg(setting.tcpDataPort)
              .arg(setting.macAddressText())
              .arg(int(setting.tcpKeepAliveEnabled))
              .arg(setting.tcpTimeoutDisconnectMs()),
          "decoded");
    QTEST(reports.errors, "errors");
}

// Bytes no field covers, and the MAC, stay as read; an address that does not read back as typed
// leaves the IP bytes as read too.
void TestMavixSetting::encode_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<bool>("keepAlive");
    QTest::addColumn<QByteArray>("image");
    QTest::addRow("every field") << "10.1.2.254" << true
                                 << QByteArray("8F 05 81 0A 01 02 FE 00 01 1F 57 02 18 FF FF "
                                               "00 01 FF FE 01 02 00 03 12 34 AB CD B0");
    QTest::addRow("keep-alive off") << "10.1.2.254" << false
                                    << QByteArray("8F 01 81 0A 01 02 FE 00 01 1F 57 02 18 FF FF "
                                                  "00 01 FF FE 01 02 00 03 12 34 AB CD B0");
    QTest::addRow("octal-looking IP") << "192.168.010.016" << true
                                      << QByteArray("8F 05 81 C0 A8 0A 10 00 01 1F 57 02 18 FF FF "
                                                    "00 01 FF FE 01 02 00 03 12 34 AB CD B0");
}

void TestMavixSetting::encode()
{
    QFETCH(QString, ip);
    QFETCH(bool, keepAlive);
    QByteArray before = factoryImage();
    before[15] = char(0x8F);
    before[16] = 0x01;
    before[17] = char(0x81);
    before[48] = char(0xB0);
    MavixSetting setting;
    setting.ipAddress = ip;
    setting.udpPort = 65535;
    setting.tcpDataPort = 1;
    setting.macAddress = {{1, 2, 3, 4, 5, 6}};
    setting.tcpCommandPort = 8023;
    setting.tcpMaxSegmentSize = 536;
    setting.tcpKeepAliveBufferNotEmptyMs = 1;
    setting.tcpKeepAliveBufferEmptyMs = 65534;
    setting.tcpTimeoutConnectingMs = 258;
    setting.tcpTimeoutDisconnect256Ms = 3;
    setting.tcpReconnectIntervalMs = 0x1234;
    setting.tcpRetransmissionTimerMs = 0xABCD;
    setting.tcpKeepAliveEnabled = keepAlive;
    const QByteArray after = setting.encode(before);
    QCOMPARE(after.size(), 64);
    QCOMPARE(after.left(15), before.left(15));
    QCOMPARE(after.mid(18, 6), before.mid(18, 6));
    QTEST(after.mid(15, 3).toHex(' ').toUpper() + ' ' + after.mid(24, 25).toHex(' ').toUpper(),
          "image");
}

// The one literal copy of the report; the tab tests compare what they show against a read record.
void TestMavixSetting::textReportOfFactoryValues()
{
    QCOMPARE(MavixSetting().textReport(),
             QStringLiteral("MAC Address : 02:00:C0:A8:00:10 \r\n"
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
                            "TCP Re-Transmition Timer : 500 msec"));
}

// The five checks in order, for a target and for the address written into the image.
void TestMavixSetting::checks_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("port");
    QTest::addColumn<QStringList>("asTarget");
    QTest::addColumn<QStringList>("asWritten");
    const QString badIp = QStringLiteral("IP address is invalid");
    const QString badTcp = QStringLiteral("TCP Port number must be 0 to 65535");
    const QString badUdp = QStringLiteral("UDP Port number must be 0 to 65535");
    QTest::addRow("valid") << "127.0.0.1" << "24" << QStringList() << QStringList();
    QTest::addRow("IPv6 loopback") << "::1" << "0" << QStringList() << QStringList{badIp};
    QTest::addRow("leading zeros") << "192.168.010.016" << "24" << QStringList{badIp}
                                   << QStringList{badIp};
    QTest::addRow("one number") << "0" << "24" << QStringList{badIp} << QStringList{badIp};
    QTest::addRow("multicast") << "224.0.0.1" << "24" << QStringList{badIp} << QStringList{badIp};
    QTest::addRow("any") << "0.0.0.0" << "24" << QStringList{"0.0.0.0 is invalid"}
                         << QStringList{"0.0.0.0 is invalid"};
    QTest::addRow("broadcast") << "255.255.255.255" << "24"
                               << QStringList{"255.255.255.255 is invalid"}
                               << QStringList{"255.255.255.255 is invalid"};
    QTest::addRow("all wrong") << "host" << "65536" << QStringList{badIp, badTcp, badUdp}
                               << QStringList{badIp, badTcp, badUdp};
}

void TestMavixSetting::checks()
{
    QFETCH(QString, ip);
    QFETCH(QString, port);
    QFETCH(QStringList, asTarget);
    QFETCH(QStringList, asWritten);
    ReportCollector reports;
    QCOMPARE(MavixSetting::validateTarget(ip, port, port, false), asTarget.isEmpty());
    QVERIFY(reports.errors.isEmpty());
    QCOMPARE(MavixSetting::validateTarget(ip, port, port, true), asTarget.isEmpty());
    QCOMPARE(reports.errors, asTarget);
    reports.clear();
    QCOMPARE(MavixSetting::validateWriteFields(ip, port, port, true), asWritten.isEmpty());
    QCOMPARE(reports.errors, asWritten);
}

QTEST_GUILESS_MAIN(TestMavixSetting)
#include "tst_mavixsetting.moc"
