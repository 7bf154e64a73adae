// Device silence during each step of the General and Control(UDP) tabs' accesses: the emulator
// drops one reply, the tab waits its full 10 s, reports that step's time-out, signals the failure
// and goes no further. Slow by nature: one real time-out per row, and every row needs its own,
// since each access blocks the GUI thread and a silent step ends the operation.
#include "settings/udptab.h"
#include "tabfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QTextEdit>

class TestSettingTimeouts : public QObject
{
    Q_OBJECT

private slots:
    void generalTabStep_data();
    void generalTabStep();
    void udpTabAccess_data();
    void udpTabAccess();
};

void TestSettingTimeouts::generalTabStep_data()
{
    QTest::addColumn<bool>("eeprom");
    QTest::addColumn<int>("droppedRequest"); // 1 is a Read; the later ones steps of a Write
    QTest::addColumn<QString>("message");
    const auto row = [](const char *step, bool eeprom, int dropped, const char *message) {
        QTest::addRow("%s", step) << eeprom << dropped << QString::fromLatin1(message);
    };
    row("reading the running copy", false, 1, "Response to reading Mavix Setting is timeout");
    row("obtaining EEPROM permission", true, 2,
        "Response to obtaining permisssion to write in EEPROM is timeout");
    row("writing the image", false, 3, "Response to writing Mavix Setting is timeout");
    row("releasing EEPROM permission", true, 5,
        "Response to permisssion release to write in EEPROM is timeout");
}

void TestSettingTimeouts::generalTabStep()
{
    QFETCH(bool, eeprom);
    QFETCH(int, droppedRequest);
    QFETCH(QString, message);
    GeneralTabFixture f;
    QVERIFY(f.start());
    f.child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
    f.setWriteFields(QStringLiteral("127.0.0.3"), QStringLiteral("24"),
                     QString::number(f.simThread.udpPort()));
    f.dropReplyTo(droppedRequest);

    f.click(droppedRequest == 1 ? "GenReadButton" : "GenWriteButton");

    QCOMPARE(f.reports.errors, QStringList{message});
    QCOMPARE(f.reports.results, QStringList());
    QCOMPARE(f.failed.count(), 1);
    QCOMPARE(f.succeeded.count(), 0);
    QCOMPARE(f.accesses().size(), droppedRequest); // nothing is tried after the silent step
    if (droppedRequest == 3) {
        // A device that took its new address before answering is looked for there.
        QCOMPARE(f.agent.targetAddress(), QHostAddress(QStringLiteral("127.0.0.3")));
        QCOMPARE(f.changed.count(), 0);
    }
}

void TestSettingTimeouts::udpTabAccess_data()
{
    QTest::addColumn<bool>("write");
    QTest::addColumn<QString>("message");
    QTest::addRow("read") << false << "UDP read is timeout";
    QTest::addRow("write") << true << "UDP writing is timeout";
}

void TestSettingTimeouts::udpTabAccess()
{
    QFETCH(bool, write);
    TabFixture<UDPTab> f;
    QVERIFY(f.start());
    f.child<QComboBox>("UDPRegisterAddressCombobox")->setEditText(QStringLiteral("1000"));
    f.child<QComboBox>("UDPDataLengthCombobox")->setEditText(QStringLiteral("2"));
    auto *data = f.child<QTextEdit>("UDPDataTextarea");
    data->setPlainText(QStringLiteral("12 34"));
    f.dropReplyTo(1);

    f.click(write ? "UDPWriteButton" : "UDPReadButton");

    QTEST(f.reports.errors.join(QLatin1Char('\n')), "message");
    QCOMPARE(f.failed.count(), 1);
    QCOMPARE(f.succeeded.count(), 0);
    QCOMPARE(data->toPlainText(), QStringLiteral("12 34")); // a failed read leaves the text
}

QTEST_MAIN(TestSettingTimeouts)
#include "tst_settingtimeouts.moc"
