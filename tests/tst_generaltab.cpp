// The General tab as a user works with it, against the emulator on loopback: reading the running
// and the EEPROM copy, writing the running copy with and without a UDP port change (answering the
// warning box), writing the EEPROM copy, and refusing bad fields.
#include "generaltabfixture.h"

#include <QCheckBox>
#include <QPlainTextEdit>

namespace {

QString expectedRunningReport(quint16 udpPort)
{
    return QStringLiteral("MAC Address : 02:11:22:33:44:55 \n"
                          "IP Address : 127.0.0.1 \n"
                          "TCP Data Port : 24 \n"
                          "TCP Command Port : 8023 \n"
                          "UDP Port : %1 \n"
                          "TCP Max Segment Size : 1400 \n"
                          "TCP Keep Alive Enabled : enable \n"
                          "TCP Keep Alive(buffer not empty) : 2000 msec\n"
                          "TCP Keep Alive(buffer empty) : 30000 msec\n"
                          "TCP Timeout(Connecting) : 4000 msec\n"
                          "TCP Timeout(Disconnect) : 256000 msec\n"
                          "TCP Re-Connect Interval : 250 msec\n"
                          "TCP Re-Transmition Timer : 125 msec")
        .arg(udpPort);
}

QString readOf(quint32 address)
{
    return QStringLiteral("read %1 64 []").arg(address, 8, 16, QLatin1Char('0'));
}

QString writeOf(quint32 address, const QByteArray &data)
{
    return QStringLiteral("write %1 %2 [%3]")
        .arg(address, 8, 16, QLatin1Char('0'))
        .arg(data.size())
        .arg(QString::fromLatin1(data.toHex()));
}

} // namespace

class TestGeneralTab : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readRunningCopyShowsTheReport();
    void readEepromCopyLeavesTheTargetAlone();
    void writeRunningCopyWithOnlyANewIPAddress();
    void writeNewUdpPortAsksFirst_data();
    void writeNewUdpPortAsksFirst();
    void writeEepromCopySequence();
    void badWriteFieldsWriteNothing_data();
    void badWriteFieldsWriteNothing();
    void badTargetSendsNothing();
    void targetSettingChangeFillsTheTargetFields();
    void withoutAgentNothingHappens();
    void focusOrder();

private:
    GeneralTabFixture f;
};

void TestGeneralTab::init()
{
    QVERIFY2(f.start(), qPrintable(f.m_sim.errorString()));
}

void TestGeneralTab::cleanup()
{
    f.stop();
}

void TestGeneralTab::readRunningCopyShowsTheReport()
{
    const quint16 port = f.m_sim.udpPort();
    f.click("GenReadButton");

    const QString shown = f.child<QPlainTextEdit>("GenSettingDataTextarea")->toPlainText();
    QCOMPARE(shown, expectedRunningReport(port));
    QCOMPARE(f.m_reports->results, QStringList{"Reading Mavix setting is successed"});
    QCOMPARE(f.m_reports->errors, QStringList());
    QCOMPARE(f.m_succeeded->count(), 1);
    QCOMPARE(f.m_failed->count(), 0);
    QCOMPARE(describeAccesses(f.accesses()), QStringList{readOf(MavixSetting::kRunningBase)});

    // The running copy is the device the tool talks to: it becomes the current target.
    QCOMPARE(f.m_changed->count(), 1);
    const auto announced = f.m_changed->first().first().value<MavixSetting>();
    QCOMPARE(announced.textReport(), MavixSetting::current().textReport());
    QCOMPARE(announced.udpPort, port);
    QCOMPARE(announced.tcpCommandPort, quint16(8023));
}

void TestGeneralTab::readEepromCopyLeavesTheTargetAlone()
{
    MavixSetting before = MavixSetting::current();
    f.child<QCheckBox>("GenEEPROMAccessCheckbox")->click();
    QVERIFY(f.m_tab->isEEPROMAccessChecked());

    f.click("GenReadButton");

    const QString shown = f.child<QPlainTextEdit>("GenSettingDataTextarea")->toPlainText();
    QVERIFY2(shown.contains(QStringLiteral("IP Address : 127.0.0.7 \n")), qPrintable(shown));
    QVERIFY(shown.contains(QStringLiteral("UDP Port : 7777 \n")));
    QCOMPARE(describeAccesses(f.accesses()), QStringList{readOf(MavixSetting::kEepromBase)});
    QCOMPARE(f.m_changed->count(), 0);
    QCOMPARE(f.m_succeeded->count(), 1);
    QCOMPARE(f.text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.1"));
    QCOMPARE(f.text("GenTargetUDPPortTextarea"), QString::number(f.m_sim.udpPort()));
    // The current target holds what the target fields said before the read, nothing of the EEPROM.
    before.ipAddress = QStringLiteral("127.0.0.1");
    before.tcpDataPort = 24;
    before.udpPort = f.m_sim.udpPort();
    QCOMPARE(MavixSetting::current().textReport(), before.textReport());
}

void TestGeneralTab::writeRunningCopyWithOnlyANewIPAddress()
{
    const quint16 port = f.m_sim.udpPort();
    f.setWriteFields(QStringLiteral("127.0.0.2"), QStringLiteral("24"), QString::number(port));
    const auto box = std::make_shared<BoxAnswer>();
    answerNextBox(f.m_boxContext.get(), QMessageBox::No, box,
                  0); // a box would be answered and fail the test

    f.click("GenWriteButton");

    QVERIFY(!box->shown);
    QByteArray expected = f.m_runningBefore;
    expected.replace(24, 4, QByteArray::fromHex("7F000002"));
    QCOMPARE(describeAccesses(f.accesses()),
             (QStringList{readOf(MavixSetting::kRunningBase), readOf(MavixSetting::kRunningBase),
                          writeOf(MavixSetting::kRunningBase, expected.left(17)),
                          writeOf(MavixSetting::kRunningBase + 0x18, expected.mid(24))}));
    QCOMPARE(f.sim()->peek(MavixSetting::kRunningBase, 64), expected);
    QCOMPARE(f.m_reports->results, QStringList{"Writing Mavix setting is successed"});
    QCOMPARE(f.m_succeeded->count(), 1);
    QCOMPARE(f.m_changed->count(), 1);
    QCOMPARE(f.m_changed->first().first().value<MavixSetting>().ipAddress,
             QStringLiteral("127.0.0.2"));
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.2"));
    // The report shows the record written; the target follows the device to its new address.
    QVERIFY(f.child<QPlainTextEdit>("GenSettingDataTextarea")
                ->toPlainText()
                .contains(QStringLiteral("IP Address : 127.0.0.2 \n")));
    QCOMPARE(f.text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.2"));
    QCOMPARE(f.m_agent->targetAddress(), QHostAddress(QStringLiteral("127.0.0.2")));
}

void TestGeneralTab::writeNewUdpPortAsksFirst_data()
{
    QTest::addColumn<bool>("yes");
    QTest::addRow("No writes nothing") << false;
    QTest::addRow("Yes writes and follows the device") << true;
}

void TestGeneralTab::writeNewUdpPortAsksFirst()
{
    QFETCH(bool, yes);
    const quint16 oldPort = f.m_sim.udpPort();
    const quint16 newPort = freeUdpPort();
    QVERIFY(newPort != 0 && newPort != oldPort);
    f.setWriteFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"), QString::number(newPort));
    const auto box = std::make_shared<BoxAnswer>();
    answerNextBox(f.m_boxContext.get(), yes ? QMessageBox::Yes : QMessageBox::No, box);

    f.click("GenWriteButton");

    QVERIFY(box->shown);
    QCOMPARE(box->title, QStringLiteral("warning"));
    QCOMPARE(box->text,
             QStringLiteral("It is recommended to enable EEPROM Access and rewrite UDP "
                            "port. If you want to continue, please select yes as it is."));
    QCOMPARE(box->icon, QMessageBox::Warning);
    QCOMPARE(box->buttons, QMessageBox::Yes | QMessageBox::No);
    QCOMPARE(box->defaultButton, QMessageBox::No);

    const QStringList reads{readOf(MavixSetting::kRunningBase), readOf(MavixSetting::kRunningBase)};
    if (!yes) {
        QCOMPARE(describeAccesses(f.accesses()), reads);
        QCOMPARE(f.sim()->peek(MavixSetting::kRunningBase, 64), f.m_runningBefore);
        QCOMPARE(f.m_reports->results, QStringList());
        QCOMPARE(f.m_reports->errors, QStringList());
        QCOMPARE(f.m_succeeded->count() + f.m_failed->count() + f.m_changed->count(), 0);
        QCOMPARE(f.text("GenTargetUDPPortTextarea"), QString::number(oldPort));
        return;
    }

    QCOMPARE(f.accesses().size(), 4);
    QTRY_COMPARE(f.m_sim.udpPort(), newPort);
    QCOMPARE(f.m_agent->targetPort(), newPort);
    QCOMPARE(f.text("GenTargetUDPPortTextarea"), QString::number(newPort));
    QCOMPARE(MavixSetting::current().udpPort, newPort);
    QCOMPARE(f.m_changed->count(), 1);
    QCOMPARE(f.m_succeeded->count(), 1);

    // Reading again reaches the device on its new port.
    f.sim()->clearAccessLog();
    f.click("GenReadButton");
    QCOMPARE(f.m_succeeded->count(), 2);
    QVERIFY(f.child<QPlainTextEdit>("GenSettingDataTextarea")
                ->toPlainText()
                .contains(QStringLiteral("UDP Port : %1 \n").arg(newPort)));
}

// The EEPROM copy is written under permission, in four accesses, and never its MAC bytes.
void TestGeneralTab::writeEepromCopySequence()
{
    f.child<QCheckBox>("GenEEPROMAccessCheckbox")->click();
    f.setWriteFields(QStringLiteral("127.0.0.5"), QStringLiteral("1024"), QStringLiteral("5000"));
    const auto box = std::make_shared<BoxAnswer>();
    answerNextBox(f.m_boxContext.get(), QMessageBox::No, box, 0);

    f.click("GenWriteButton");

    QVERIFY(!box->shown);
    QByteArray expected = f.m_eepromBefore;
    expected.replace(24, 6,
                     QByteArray::fromHex("7F000005"
                                         "0400"));
    expected.replace(34, 2, QByteArray::fromHex("1388"));
    const QList<SimAccess> log = f.accesses();
    QCOMPARE(describeAccesses(log),
             (QStringList{readOf(MavixSetting::kEepromBase),
                          writeOf(MavixSetting::kEepromPermission, QByteArray(1, '\0')),
                          writeOf(MavixSetting::kEepromBase, expected.left(17)),
                          writeOf(MavixSetting::kEepromBase + 0x18, expected.mid(24)),
                          writeOf(MavixSetting::kEepromPermission, QByteArray(1, char(0xFF)))}));
    QCOMPARE(f.sim()->peek(MavixSetting::kEepromBase, 64), expected);
    QCOMPARE(f.sim()->peek(MavixSetting::kRunningBase, 64), f.m_runningBefore);
    QCOMPARE(f.m_reports->results, QStringList{"Writing Mavix setting is successed"});
    QCOMPARE(f.m_succeeded->count(), 1);
    QCOMPARE(f.m_changed->count(), 1);
    // The device keeps running where it is until it restarts: the target stays.
    QCOMPARE(f.text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.1"));
    QCOMPARE(f.m_agent->targetPort(), f.m_sim.udpPort());
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.1"));
}

void TestGeneralTab::badWriteFieldsWriteNothing_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("tcpPort");
    QTest::addColumn<QString>("udpPort");
    QTest::addColumn<QStringList>("errors");
    QTest::addRow("any address") << "0.0.0.0"
                                 << "24"
                                 << "4660" << QStringList{"0.0.0.0 is invalid"};
    QTest::addRow("octet above 255 and TCP port too high")
        << "256.1.1.1"
        << "65536"
        << "4660" << QStringList{"IP address is invalid", "TCP Port number must be 0 to 65535"};
    QTest::addRow("broadcast, no UDP port")
        << "255.255.255.255"
        << "24"
        << "" << QStringList{"255.255.255.255 is invalid", "UDP Port number must be 0 to 65535"};
}

void TestGeneralTab::badWriteFieldsWriteNothing()
{
    QFETCH(QString, ip);
    QFETCH(QString, tcpPort);
    QFETCH(QString, udpPort);
    f.setWriteFields(ip, tcpPort, udpPort);

    f.click("GenWriteButton");

    QTEST(f.m_reports->errors, "errors");
    QCOMPARE(describeAccesses(f.accesses()), QStringList{readOf(MavixSetting::kRunningBase)});
    QCOMPARE(f.m_succeeded->count() + f.m_failed->count() + f.m_changed->count(), 0);
    QCOMPARE(f.sim()->peek(MavixSetting::kRunningBase, 64), f.m_runningBefore);
}

void TestGeneralTab::badTargetSendsNothing()
{
    f.child<QLineEdit>("GenTargetIPAddressTextarea")->setText(QStringLiteral("0.0.0.0"));
    f.child<QLineEdit>("GenTargetUDPPortTextarea")->setText(QStringLiteral("70000"));
    f.click("GenReadButton");
    f.click("GenWriteButton");

    const QStringList once{"0.0.0.0 is invalid", "UDP Port number must be 0 to 65535"};
    QCOMPARE(f.m_reports->errors, once + once);
    QVERIFY(f.accesses().isEmpty());
    QCOMPARE(f.m_succeeded->count() + f.m_failed->count(), 0);
    QVERIFY(!f.m_tab->applyTargetFields(false));
    QCOMPARE(f.m_reports->errors.size(), 4);
}

void TestGeneralTab::targetSettingChangeFillsTheTargetFields()
{
    MavixSetting setting;
    setting.ipAddress = QStringLiteral("127.0.0.9");
    setting.tcpDataPort = 2424;
    setting.udpPort = 4661;
    f.m_tab->applyTargetSettingChange(setting);

    QCOMPARE(f.text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.9"));
    QCOMPARE(f.text("GenTargetTCPPortTextarea"), QStringLiteral("2424"));
    QCOMPARE(f.text("GenTargetUDPPortTextarea"), QStringLiteral("4661"));
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.9"));
    QCOMPARE(f.m_changed->count(), 0);
    QVERIFY(f.accesses().isEmpty());
}

void TestGeneralTab::withoutAgentNothingHappens()
{
    GeneralTab lonely;
    QSignalSpy failed(&lonely, &GeneralTab::transmissionFailed);
    lonely.setTargetFields(QStringLiteral("127.0.0.1"), QString(), QString());
    QVERIFY(!lonely.isReady());
    lonely.readDeviceInformation();
    lonely.writeDeviceInformation();
    QVERIFY(!lonely.applyTargetFields(true));
    QCOMPARE(failed.count(), 0);
    QVERIFY(f.m_reports->errors.isEmpty());
    // An empty part of a preset target leaves its field as it was.
    QCOMPARE(lonely.targetTCPPortText(), QStringLiteral("24"));
    QCOMPARE(lonely.targetUDPPortText(), QStringLiteral("4660"));
}

void TestGeneralTab::focusOrder()
{
    const QStringList expected{"GenTargetIPAddressTextarea", "GenTargetTCPPortTextarea",
                               "GenTargetUDPPortTextarea",   "GenReadButton",
                               "GenWriteIPAddressTextarea",  "GenWriteTCPPortTextarea",
                               "GenWriteUDPPortTextarea",    "GenWriteButton",
                               "GenEEPROMAccessCheckbox",    "GenSettingDataTextarea"};
    QStringList chain;
    QWidget *widget = f.child<QWidget>("GenTargetIPAddressTextarea");
    for (int i = 0; i < 60 && chain.size() < expected.size(); ++i) {
        if ((widget->focusPolicy() & Qt::TabFocus) && expected.contains(widget->objectName()))
            chain << widget->objectName();
        widget = widget->nextInFocusChain();
    }
    QCOMPARE(chain, expected);
}

QTEST_MAIN(TestGeneralTab)
#include "tst_generaltab.moc"
