// Device silence during each step of the General and Control(UDP) tabs' accesses: the emulator
// drops one reply, the tab waits its full 10 s, reports that step's time-out, signals the failure
// and goes no further. Slow by nature: one real time-out per row.
#include "generaltabfixture.h"
#include "settings/udptab.h"

#include <QCheckBox>
#include <QComboBox>
#include <QTextEdit>

class TestSettingTimeouts : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void generalTabStep_data();
    void generalTabStep();
    void udpTabAccess_data();
    void udpTabAccess();

private:
    GeneralTabFixture f;
};

void TestSettingTimeouts::init()
{
    QVERIFY2(f.start(), qPrintable(f.m_sim.errorString()));
}

void TestSettingTimeouts::cleanup()
{
    f.stop();
}

void TestSettingTimeouts::generalTabStep_data()
{
    QTest::addColumn<bool>("write");
    QTest::addColumn<bool>("eeprom");
    QTest::addColumn<int>("droppedRequest");
    QTest::addColumn<QString>("message");

    QTest::addRow("reading the running copy")
        << false << false << 1 << "Response to reading Mavix Setting is timeout";
    QTest::addRow("obtaining EEPROM permission")
        << true << true << 2 << "Response to obtaining permisssion to write in EEPROM is timeout";
    QTest::addRow("writing the image")
        << true << false << 3 << "Response to writing Mavix Setting is timeout";
    QTest::addRow("releasing EEPROM permission")
        << true << true << 5 << "Response to permisssion release to write in EEPROM is timeout";
}

void TestSettingTimeouts::generalTabStep()
{
    QFETCH(bool, write);
    QFETCH(bool, eeprom);
    QFETCH(int, droppedRequest);
    QFETCH(QString, message);
    f.child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
    f.setWriteFields(QStringLiteral("127.0.0.3"), QStringLiteral("24"),
                     QString::number(f.m_sim.udpPort()));
    f.dropReplyTo(droppedRequest);

    f.click(write ? "GenWriteButton" : "GenReadButton");

    QCOMPARE(f.m_reports->errors, QStringList{message});
    QCOMPARE(f.m_reports->results, QStringList());
    QCOMPARE(f.m_failed->count(), 1);
    QCOMPARE(f.m_succeeded->count(), 0);
    // Nothing is tried after the silent step.
    QCOMPARE(f.accesses().size(), droppedRequest);
    if (message == QLatin1String("Response to writing Mavix Setting is timeout")) {
        // A device that took its new address before answering is looked for there.
        QCOMPARE(f.m_agent->targetAddress(), QHostAddress(QStringLiteral("127.0.0.3")));
        QCOMPARE(f.m_changed->count(), 0);
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
    QFETCH(QString, message);
    WrenAgent agent;
    agent.setTarget(QHostAddress(QHostAddress::LocalHost), f.m_sim.udpPort());
    UDPTab tab;
    tab.setAgent(&agent);
    QSignalSpy failed(&tab, &UDPTab::transmissionFailed);
    tab.findChild<QComboBox *>(QStringLiteral("UDPRegisterAddressCombobox"))
        ->setEditText(QStringLiteral("1000"));
    tab.findChild<QComboBox *>(QStringLiteral("UDPDataLengthCombobox"))
        ->setEditText(QStringLiteral("2"));
    auto *data = tab.findChild<QTextEdit *>(QStringLiteral("UDPDataTextarea"));
    data->setPlainText(QStringLiteral("12 34"));
    f.dropReplyTo(1);

    if (write)
        tab.writeMemory();
    else
        tab.readMemory();

    QCOMPARE(f.m_reports->errors, QStringList{message});
    QCOMPARE(failed.count(), 1);
    QCOMPARE(data->toPlainText(), QStringLiteral("12 34")); // a failed read leaves the text
}

QTEST_MAIN(TestSettingTimeouts)
#include "tst_settingtimeouts.moc"
