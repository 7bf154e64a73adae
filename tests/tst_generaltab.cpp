// The General tab as a user works with it, against the emulator on loopback: reading the running
// and the EEPROM copy, writing the running copy with and without a UDP port change (answering the
// warning box), writing the EEPROM copy, and refusing bad fields.
#include "tabfixture.h"

#include <QApplication>
#include <QCheckBox>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QTimer>
#include <QUdpSocket>

#include <memory>

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

// Polls every 10 ms for a modal message box, notes how it looked and presses `answer` on it. The
// poll ends with the box answered, or with `context` at the end of the test.
std::shared_ptr<QString> answerNextBox(QObject *context, QMessageBox::StandardButton answer)
{
    auto seen = std::make_shared<QString>();
    auto *poll = new QTimer(context);
    QObject::connect(poll, &QTimer::timeout, poll, [=] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        poll->stop();
        *seen = QStringLiteral("%1 | %2 | icon %3, buttons %4, default %5")
                    .arg(box->windowTitle(), box->text())
                    .arg(box->icon())
                    .arg(int(box->standardButtons()))
                    .arg(box->standardButton(box->defaultButton()));
        box->button(answer)->click();
    });
    poll->start(10);
    return seen;
}

// A UDP port nobody uses at the moment, for moving the emulator to.
quint16 freeUdpPort()
{
    QUdpSocket probe;
    return probe.bind(QHostAddress(QHostAddress::LocalHost), 0) ? probe.localPort() : 0;
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

private:
    [[nodiscard]] QString shownReport() const
    {
        return f->child<QPlainTextEdit>("GenSettingDataTextarea")->toPlainText();
    }

    std::unique_ptr<GeneralTabFixture> f;
};

void TestGeneralTab::init()
{
    f = std::make_unique<GeneralTabFixture>();
    QVERIFY(f->start());
}

void TestGeneralTab::cleanup()
{
    f.reset();
}

void TestGeneralTab::readRunningCopyShowsTheReport()
{
    const quint16 port = f->simThread.udpPort();
    f->click("GenReadButton");

    QCOMPARE(shownReport(), expectedRunningReport(port));
    QCOMPARE(f->reports.results, QStringList{"Reading Mavix setting is successed"});
    QCOMPARE(f->reports.errors, QStringList());
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));
    QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kRunningBase)});
    // The running copy is the device the tool talks to: the whole record becomes the target.
    const auto announced = f->changed.first().first().value<MavixSetting>();
    QCOMPARE(announced.textReport().remove(QLatin1Char('\r')), expectedRunningReport(port));
    QCOMPARE(MavixSetting::current().textReport(), announced.textReport());
}

void TestGeneralTab::readEepromCopyLeavesTheTargetAlone()
{
    f->child<QCheckBox>("GenEEPROMAccessCheckbox")->click();
    f->click("GenReadButton");

    QVERIFY(shownReport().contains(QStringLiteral("IP Address : 127.0.0.7 \n")));
    QVERIFY(shownReport().contains(QStringLiteral("UDP Port : 7777 \n")));
    QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kEepromBase)});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 0"));
    QCOMPARE(f->text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.1"));
    // The current target holds what the target fields said, nothing of the EEPROM copy.
    MavixSetting target;
    target.ipAddress = QStringLiteral("127.0.0.1");
    target.udpPort = f->simThread.udpPort();
    QCOMPARE(MavixSetting::current().textReport(), target.textReport());
}

void TestGeneralTab::writeRunningCopyWithOnlyANewIPAddress()
{
    f->setWriteFields(QStringLiteral("127.0.0.2"), QStringLiteral("24"),
                      QString::number(f->simThread.udpPort()));
    const auto box = answerNextBox(&f->tab, QMessageBox::No);

    f->click("GenWriteButton");

    QCOMPARE(*box, QString()); // no box
    QByteArray expected = f->runningBefore;
    expected.replace(24, 4, QByteArray::fromHex("7F000002"));
    QCOMPARE(describe(f->accesses()),
             (QStringList{readOf(MavixSetting::kRunningBase), readOf(MavixSetting::kRunningBase),
                          writeOf(MavixSetting::kRunningBase, expected.left(17)),
                          writeOf(MavixSetting::kRunningBase + 0x18, expected.mid(24))}));
    QCOMPARE(f->sim()->peek(MavixSetting::kRunningBase, 64), expected);
    QCOMPARE(f->reports.results, QStringList{"Writing Mavix setting is successed"});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));
    QCOMPARE(f->changed.first().first().value<MavixSetting>().ipAddress,
             QStringLiteral("127.0.0.2"));
    // The report shows the record written; the target follows the device to its new address.
    QVERIFY(shownReport().contains(QStringLiteral("IP Address : 127.0.0.2 \n")));
    QCOMPARE(f->text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.2"));
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.2"));
    QCOMPARE(f->agent.targetAddress(), QHostAddress(QStringLiteral("127.0.0.2")));
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
    const quint16 oldPort = f->simThread.udpPort();
    const quint16 newPort = freeUdpPort();
    QVERIFY(newPort != 0 && newPort != oldPort);
    f->setWriteFields(QStringLiteral("127.0.0.1"), QStringLiteral("24"), QString::number(newPort));
    const auto box = answerNextBox(&f->tab, yes ? QMessageBox::Yes : QMessageBox::No);

    f->click("GenWriteButton");

    QCOMPARE(*box, QStringLiteral("warning | It is recommended to enable EEPROM Access and rewrite "
                                  "UDP port. If you want to continue, please select yes as it is. "
                                  "| icon %1, buttons %2, default %3")
                       .arg(QMessageBox::Warning)
                       .arg(int(QMessageBox::Yes | QMessageBox::No))
                       .arg(QMessageBox::No));
    if (!yes) {
        QCOMPARE(describe(f->accesses()), QStringList(2, readOf(MavixSetting::kRunningBase)));
        QCOMPARE(f->sim()->peek(MavixSetting::kRunningBase, 64), f->runningBefore);
        QCOMPARE(f->reports.results + f->reports.errors, QStringList());
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 0, changed 0"));
        QCOMPARE(f->text("GenTargetUDPPortTextarea"), QString::number(oldPort));
        return;
    }
    QCOMPARE(f->accesses().size(), 4);
    QTRY_COMPARE(f->simThread.udpPort(), newPort);
    QCOMPARE(f->agent.targetPort(), newPort);
    QCOMPARE(f->text("GenTargetUDPPortTextarea"), QString::number(newPort));
    QCOMPARE(MavixSetting::current().udpPort, newPort);
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));

    f->click("GenReadButton"); // reaches the device on its new port
    QCOMPARE(f->succeeded.count(), 2);
    QVERIFY(shownReport().contains(QStringLiteral("UDP Port : %1 \n").arg(newPort)));
}

// The EEPROM copy is written under permission, in four accesses, and never its MAC bytes.
void TestGeneralTab::writeEepromCopySequence()
{
    f->child<QCheckBox>("GenEEPROMAccessCheckbox")->click();
    f->setWriteFields(QStringLiteral("127.0.0.5"), QStringLiteral("1024"), QStringLiteral("5000"));
    const auto box = answerNextBox(&f->tab, QMessageBox::No);

    f->click("GenWriteButton");

    QCOMPARE(*box, QString()); // no box
    QByteArray expected = f->eepromBefore;
    expected.replace(24, 6, QByteArray::fromHex("7F000005 0400"));
    expected.replace(34, 2, QByteArray::fromHex("1388"));
    QCOMPARE(describe(f->accesses()),
             (QStringList{readOf(MavixSetting::kEepromBase),
                          writeOf(MavixSetting::kEepromPermission, QByteArray(1, '\0')),
                          writeOf(MavixSetting::kEepromBase, expected.left(17)),
                          writeOf(MavixSetting::kEepromBase + 0x18, expected.mid(24)),
                          writeOf(MavixSetting::kEepromPermission, QByteArray(1, char(0xFF)))}));
    QCOMPARE(f->sim()->peek(MavixSetting::kEepromBase, 64), expected);
    QCOMPARE(f->sim()->peek(MavixSetting::kRunningBase, 64), f->runningBefore);
    QCOMPARE(f->reports.results, QStringList{"Writing Mavix setting is successed"});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));
    // The device keeps running where it is until it restarts: the target stays.
    QCOMPARE(f->text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.1"));
    QCOMPARE(f->agent.targetPort(), f->simThread.udpPort());
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.1"));
}

void TestGeneralTab::badWriteFieldsWriteNothing_data()
{
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("tcpPort");
    QTest::addColumn<QString>("udpPort");
    QTest::addColumn<QStringList>("errors");
    const auto row = [](const char *name, const char *ip, const char *tcp, const char *udp,
                        const QStringList &errors) {
        QTest::addRow("%s", name) << QString::fromLatin1(ip) << QString::fromLatin1(tcp)
                                  << QString::fromLatin1(udp) << errors;
    };
    row("any address", "0.0.0.0", "24", "4660", {"0.0.0.0 is invalid"});
    row("octet above 255 and TCP port too high", "256.1.1.1", "65536", "4660",
        {"IP address is invalid", "TCP Port number must be 0 to 65535"});
    row("broadcast, no UDP port", "255.255.255.255", "24", "",
        {"255.255.255.255 is invalid", "UDP Port number must be 0 to 65535"});
}

void TestGeneralTab::badWriteFieldsWriteNothing()
{
    QFETCH(QString, ip);
    QFETCH(QString, tcpPort);
    QFETCH(QString, udpPort);
    f->setWriteFields(ip, tcpPort, udpPort);

    f->click("GenWriteButton");

    QTEST(f->reports.errors, "errors");
    QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kRunningBase)});
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 0, changed 0"));
    QCOMPARE(f->sim()->peek(MavixSetting::kRunningBase, 64), f->runningBefore);
}

void TestGeneralTab::badTargetSendsNothing()
{
    f->child<QLineEdit>("GenTargetIPAddressTextarea")->setText(QStringLiteral("0.0.0.0"));
    f->child<QLineEdit>("GenTargetUDPPortTextarea")->setText(QStringLiteral("70000"));
    f->click("GenReadButton");
    f->click("GenWriteButton");

    const QStringList once{"0.0.0.0 is invalid", "UDP Port number must be 0 to 65535"};
    QCOMPARE(f->reports.errors, once + once);
    QVERIFY(f->accesses().isEmpty());
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 0, changed 0"));
    QVERIFY(!f->tab.applyTargetFields(false));
    QCOMPARE(f->reports.errors.size(), 4); // checked silently when asked to be
}

void TestGeneralTab::targetSettingChangeFillsTheTargetFields()
{
    MavixSetting setting;
    setting.ipAddress = QStringLiteral("127.0.0.9");
    setting.tcpDataPort = 2424;
    setting.udpPort = 4661;
    f->tab.applyTargetSettingChange(setting);

    QCOMPARE(f->text("GenTargetIPAddressTextarea"), QStringLiteral("127.0.0.9"));
    QCOMPARE(f->text("GenTargetTCPPortTextarea"), QStringLiteral("2424"));
    QCOMPARE(f->text("GenTargetUDPPortTextarea"), QStringLiteral("4661"));
    QCOMPARE(MavixSetting::current().textReport(), setting.textReport());
    QCOMPARE(f->changed.count(), 0);
    QVERIFY(f->accesses().isEmpty());
}

// Until the agent is handed over the tab is not ready: its slots do nothing at all.
void TestGeneralTab::withoutAgentNothingHappens()
{
    GeneralTab lonely;
    QSignalSpy failed(&lonely, &GeneralTab::transmissionFailed);
    lonely.setTargetFields(QStringLiteral("127.0.0.1"), QString(), QString()); // never the default
    QVERIFY(!lonely.isReady());
    lonely.readDeviceInformation();
    lonely.writeDeviceInformation();
    QVERIFY(!lonely.applyTargetFields(true));
    QCOMPARE(failed.count(), 0);
    QVERIFY(f->reports.errors.isEmpty());
}

QTEST_MAIN(TestGeneralTab)
#include "tst_generaltab.moc"
