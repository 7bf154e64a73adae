// The one set of rules for typed device fields: ports, bytes, register addresses and addresses.
#include "app/validators.h"

#include <QTest>

class tst_Validators : public QObject
{
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void addresses_data();
    void addresses();
};

// "port", "byte" or "hex32", the text, and the value taken (-1: refused).
void tst_Validators::numbers_data()
{
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("value");
    const auto row = [](const char *rule, const char *text, qint64 value) {
        QTest::addRow("%s %s", rule, text)
            << QString::fromLatin1(rule) << QString::fromLatin1(text) << value;
    };
    row("port", "0", 0);
    row("port", "65535", 65535);
    row("port", "65536", -1);
    row("port", "4294967296", -1);
    row("port", "-1", -1);
    row("port", "+80", -1);
    row("port", "", -1);
    row("port", "1a", -1);
    row("port", "0x50", -1);
    row("port", "1e3", -1);
    row("byte", "255", 255);
    row("byte", "256", -1);
    row("byte", "ff", -1);
    row("hex32", "1a", 0x1A);
    row("hex32", "FFFFFFFF", 0xFFFFFFFF);
    row("hex32", "100000000", -1);
    row("hex32", "12G4", -1);
}

void tst_Validators::numbers()
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
void tst_Validators::addresses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<AddressProblem>("asDevice");
    QTest::addColumn<AddressProblem>("asTarget");
    QTest::addColumn<qint64>("written"); // what the image would hold, -1: nothing
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
}

void tst_Validators::addresses()
{
    QFETCH(QString, text);
    QTEST(checkDeviceAddress(text), "asDevice");
    QTEST(checkTargetAddress(text), "asTarget");
    const std::optional<quint32> value = parseDeviceAddress(text);
    QTEST(value ? qint64(*value) : qint64(-1), "written");
}

QTEST_GUILESS_MAIN(tst_Validators)
#include "tst_validators.moc"
