// The settings record (decoding, encoding, report, checks of a target or written address) and the
// one set of rules for typed device fields underneath.
#include "app/validators.h"
#include "reportcollector.h"
#include "settings/mavixsetting.h"
#include "testtable.h"

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
    // The decoded record in short: IP, UDP, TCP, MAC, keep-alive, disconnect time-out in ms.
    void decode_data()
    {
        // clang-format off
        columns<QByteArray, QString>("image", "decoded");
        QByteArray flags = factoryImage();
        flags[16] = 0x05;
        QTest::addRow("keep-alive beside another bit") << flags << "192.168.10.16 4660 24 02:00:C0:A8:00:10 1 2880000";
        QByteArray high = factoryImage() + "xx"; // bytes past 64 are ignored
        high.replace(18, 26,
                     QByteArray::fromHex("FFEEDDCCBBAA FFFFFFFF FFFF FFFF FFFF 0000 "
                                         "000000000000 0003"));
        QTest::addRow("big-endian, all ones") << high << "255.255.255.255 0 65535 FF:EE:DD:CC:BB:AA 0 768";
        QTest::addRow("63 bytes: unchanged") << factoryImage().left(63) << "1.2.3.4 4660 24 02:00:C0:A8:00:10 0 2880000";
        // clang-format on
    }
    void decode()
    {
        QFETCH(QByteArray, image);
        MavixSetting setting;
        setting.ipAddress = QStringLiteral("1.2.3.4");
        const std::optional<QString> problem = setting.decode(image);
        QString decoded;
        QTextStream(&decoded) << setting.ipAddress << ' ' << setting.udpPort << ' '
                              << setting.tcpDataPort << ' ' << setting.macAddressText() << ' '
                              << int(setting.tcpKeepAliveEnabled) << ' '
                              << setting.tcpTimeoutDisconnectMs();
        QTEST(decoded, "decoded");
        QCOMPARE(problem.value_or(QString()),
                 image.size() < 64 ? "Mavix Setting buffer is too small" : "");
    }
    // Bytes 15..17 and 24..48 after encoding: the flag bit and the fields change, the bytes around
    // them and the MAC stay as read; an address that does not read back as typed keeps the IP
    // bytes.
    void encode_data()
    {
        columns<QString, bool, QByteArray>("ip", "keepAlive", "image");
        const QByteArray fields = "00 01 1F 57 02 18 FF FF 00 01 FF FE 01 02 00 03 12 34 AB CD B0";
        QTest::addRow("every field") << "10.1.2.254" << true << "8F 05 81 0A 01 02 FE " + fields;
        QTest::addRow("keep-alive off")
            << "10.1.2.254" << false << "8F 01 81 0A 01 02 FE " + fields;
        QTest::addRow("leading zeros")
            << "192.168.010.016" << true << "8F 05 81 C0 A8 0A 10 " + fields;
    }
    void encode()
    {
        QFETCH(QString, ip);
        QByteArray before = factoryImage();
        before.replace(15, 3, QByteArray::fromHex("8F0181"));
        before[48] = char(0xB0);
        MavixSetting setting; // every field unlike its default
        (void)setting.decode(
            QByteArray(16, '\0') +
            QByteArray::fromHex("0400 010203040506 0A0102FE 0001 1F57 0218 FFFF 0001 FFFE "
                                "0102 0003 1234 ABCD") +
            QByteArray(16, '\0'));
        setting.ipAddress = ip;
        QFETCH(bool, keepAlive);
        setting.tcpKeepAliveEnabled = keepAlive;
        const QByteArray after = setting.encode(before);
        QCOMPARE(after.left(15) + after.mid(18, 6) + after.mid(49),
                 before.left(15) + before.mid(18, 6) + before.mid(49));
        QTEST(after.mid(15, 3).toHex(' ').toUpper() + ' ' + after.mid(24, 25).toHex(' ').toUpper(),
              "image");
    }
    void textReportOfFactoryValues()
    {
        QCOMPARE(
            MavixSetting().textReport(),
            "MAC Address : 02:00:C0:A8:00:10 \r\nIP Address : 192.168.10.16 \r\n"
            "TCP Data Port : 24 \r\nTCP Command Port : 23 \r\nUDP Port : 4660 \r\n"
            "TCP Max Segment Size : 1460 \r\nTCP Keep Alive Enabled : disable \r\n"
            "TCP Keep Alive(buffer not empty) : 1000 msec\r\n"
            "TCP Keep Alive(buffer empty) : 60000 msec\r\nTCP Timeout(Connecting) : 5000 msec\r\n"
            "TCP Timeout(Disconnect) : 2880000 msec\r\nTCP Re-Connect Interval : 500 msec\r\n"
            "TCP Re-Transmition Timer : 500 msec");
    }
    // The five checks in order, for a target and for the address written into the image. Messages:
    // "ip" IP address is invalid, "any" 0.0.0.0 is invalid, "all" 255.255.255.255 is invalid,
    // "tcp"/"udp" the port messages.
    void checks_data()
    {
        columns<QString, QString, QString, QString>("ip", "port", "asTarget", "asWritten");
        // clang-format off
        QTest::addRow("127.0.0.1 24") << "127.0.0.1" << "24" << "" << "";
        QTest::addRow("::1 0") << "::1" << "0" << "" << "ip";
        QTest::addRow("224.0.0.1 24") << "224.0.0.1" << "24" << "ip" << "ip";
        QTest::addRow("0.0.0.0 24") << "0.0.0.0" << "24" << "any" << "any";
        QTest::addRow("255.255.255.255 24") << "255.255.255.255" << "24" << "all" << "all";
        QTest::addRow("host 65536") << "host" << "65536" << "ip tcp udp" << "ip tcp udp";
        // clang-format on
    }
    void checks()
    {
        QFETCH(QString, ip);
        QFETCH(QString, port);
        QFETCH(QString, asTarget);
        QFETCH(QString, asWritten);
        static const QHash<QString, QString> texts{{"ip", "IP address is invalid"},
                                                   {"any", "0.0.0.0 is invalid"},
                                                   {"all", "255.255.255.255 is invalid"},
                                                   {"tcp", "TCP Port number must be 0 to 65535"},
                                                   {"udp", "UDP Port number must be 0 to 65535"}};
        const auto messages = [](const QString &keys) {
            QStringList list;
            for (const QString &key : keys.split(u' ', Qt::SkipEmptyParts))
                list << texts.value(key);
            return list;
        };
        ReportCollector reports;
        QCOMPARE(MavixSetting::validateTarget(ip, port, port, false), messages(asTarget).isEmpty());
        QVERIFY(reports.errors.isEmpty());
        QCOMPARE(MavixSetting::validateTarget(ip, port, port, true), messages(asTarget).isEmpty());
        QCOMPARE(reports.errors, messages(asTarget));
        reports.clear();
        QCOMPARE(MavixSetting::validateWriteFields(ip, port, port, true),
                 messages(asWritten).isEmpty());
        QCOMPARE(reports.errors, messages(asWritten));
    }
    // "rule text value": "port", "byte" or "hex32", the text, and the value taken (-1: refused).
    void numbers_data()
    {
        columns<QString, QString, qint64>("rule", "text", "value");
        // clang-format off
        for (const char *row : {"port 0 0", "port 65535 65535", "port 65536 -1", "port 4294967296 -1",
                                "port -1 -1", "port +80 -1", "port  -1", "port 1a -1", "port 0x50 -1",
                                "port 1e3 -1", "byte 255 255", "byte 256 -1", "byte ff -1",
                                "hex32 1a 26", "hex32 FFFFFFFF 4294967295", "hex32 100000000 -1", "hex32 12G4 -1"})
            QTest::addRow("%s", row) << QString(row).section(' ', 0, 0) << QString(row).section(' ', 1, 1)
                                     << QString(row).section(' ', 2).toLongLong();
        // clang-format on
    }
    void numbers()
    {
        QFETCH(QString, rule);
        QFETCH(QString, text);
        const auto widen = [](const auto &parsed) { return parsed ? qint64(*parsed) : qint64(-1); };
        const qint64 value = rule == u"port"   ? widen(parsePort(text))
                             : rule == u"byte" ? widen(parseByte(text))
                                               : widen(parseHex32(text));
        QTEST(value, "value");
    }
    // How each text fares as an address written into the device image and as a target to talk to.
    void addresses_data()
    {
        // clang-format off
        // written: what the image would hold, -1: nothing
        columns<QString, AddressProblem, AddressProblem, qint64>("text", "asDevice", "asTarget",
                                                                 "written");
        using P = AddressProblem;
        QTest::addRow("dotted") << "192.168.10.16" << P::None << P::None << qint64(0xC0A80A10);
        QTest::addRow("loopback") << "127.0.0.1" << P::None << P::None << qint64(0x7F000001);
        QTest::addRow("leading zeros") << "192.168.010.016" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("octet 256") << "256.1.1.1" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("three parts") << "10.1.1" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("one number") << "0" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("32-bit number") << "4294967295" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("name") << "device" << P::Malformed << P::Malformed << -1ll;
        QTest::addRow("any") << "0.0.0.0" << P::Unspecified << P::Unspecified << -1ll;
        QTest::addRow("broadcast") << "255.255.255.255" << P::Broadcast << P::Broadcast << -1ll;
        QTest::addRow("multicast low") << "224.0.0.1" << P::Multicast << P::Multicast << -1ll;
        QTest::addRow("multicast high") << "239.255.255.255" << P::Multicast << P::Multicast << -1ll;
        QTest::addRow("above multicast") << "240.0.0.1" << P::None << P::None << qint64(0xF0000001);
        QTest::addRow("IPv6 loopback") << "::1" << P::Malformed << P::None << -1ll;
        QTest::addRow("IPv6 any") << "::" << P::Malformed << P::Unspecified << -1ll;
        QTest::addRow("IPv6 multicast") << "ff02::1" << P::Malformed << P::Multicast << -1ll;
        // clang-format on
    }
    void addresses()
    {
        QFETCH(QString, text);
        QTEST(checkDeviceAddress(text), "asDevice");
        QTEST(checkTargetAddress(text), "asTarget");
        const std::optional<quint32> value = parseDeviceAddress(text);
        QTEST(value ? qint64(*value) : qint64(-1), "written");
    }
};

QTEST_GUILESS_MAIN(TestMavixSetting)
#include "tst_mavixsetting.moc"
