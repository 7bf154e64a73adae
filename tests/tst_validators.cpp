#include "app/validators.h"

#include <QTest>

using Validator = bool (*)(const QString &);
Q_DECLARE_METATYPE(Validator)

class tst_Validators : public QObject
{
    Q_OBJECT

private slots:
    void fields_data();
    void fields();
};

void tst_Validators::fields_data()
{
    QTest::addColumn<Validator>("validator");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");

    const Validator port = isValidPort;
    QTest::addRow("port 0") << port << "0" << true;
    QTest::addRow("port 65535") << port << "65535" << true;
    QTest::addRow("port 65536") << port << "65536" << false;
    QTest::addRow("port -1") << port << "-1" << false;
    QTest::addRow("port empty") << port << "" << false;
    QTest::addRow("port 1a") << port << "1a" << false;

    const Validator ip = isValidIPAddress;
    QTest::addRow("ip dotted") << ip << "127.0.0.1" << true;
    QTest::addRow("ip v6 loopback") << ip << "::1" << true;
    QTest::addRow("ip 256.1.1.1") << ip << "256.1.1.1" << false;
    QTest::addRow("ip word") << ip << "device" << false;

    const Validator length = isValidDataLength;
    QTest::addRow("length 0") << length << "0" << true;
    QTest::addRow("length 255") << length << "255" << true;
    QTest::addRow("length 256") << length << "256" << false;
    QTest::addRow("length hex") << length << "ff" << false;

    const Validator address = isValidRegisterAddress;
    QTest::addRow("address FFFFFFFF") << address << "FFFFFFFF" << true;
    QTest::addRow("address lower case") << address << "ffffff00" << true;
    QTest::addRow("address nine digits") << address << "100000000" << false;
    QTest::addRow("address not hex") << address << "12G4" << false;

    const Validator timeout = isValidDisconnectTimeout;
    QTest::addRow("disconnect 16677125") << timeout << "16677125" << true;
    QTest::addRow("disconnect 16677126") << timeout << "16677126" << false;
    QTest::addRow("disconnect negative") << timeout << "-256" << false;

    const Validator mac = isValidMACAddress;
    QTest::addRow("mac six parts") << mac << "02:00:C0:A8:00:10" << true;
    QTest::addRow("mac three digits 0FF") << mac << "02:00:C0:A8:00:0FF" << true;
    QTest::addRow("mac five parts") << mac << "02:00:C0:A8:00" << false;
    QTest::addRow("mac seven parts") << mac << "02:00:C0:A8:00:10:11" << false;
    QTest::addRow("mac empty second part") << mac << "02::C0:A8:00:10" << false;
    QTest::addRow("mac last part 100") << mac << "02:00:C0:A8:00:100" << false;
}

void tst_Validators::fields()
{
    QFETCH(Validator, validator);
    QFETCH(QString, text);
    QFETCH(bool, accepted);
    QCOMPARE(validator(text), accepted);
}

QTEST_GUILESS_MAIN(tst_Validators)
#include "tst_validators.moc"
