// The General tab as a user works with it, against the emulator on loopback: reading either copy
// and every way a read fails, each step of a write failing, writing the running copy with and
// without a UDP port change (answering the warning box), the EEPROM sequence, bad fields.
#include "simclient.h"
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

    void readTable_data();
    void readTable();
    void writeStepFails_data();
    void writeStepFails();
    void writeRunningCopyWithOnlyANewIPAddress();
    void writeNewUdpPortAsksFirst_data();
    void writeNewUdpPortAsksFirst();
    void writeEepromCopySequence();
    void badFieldsSendNothing_data();
    void badFieldsSendNothing();

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

void TestGeneralTab::readTable_data()
{
    QTest::addColumn<bool>("eeprom");
    QTest::addColumn<QString>("faults"); // "port 0": the request cannot be sent
    QTest::addColumn<QString>("error");  // empty: the read succeeds
    QTest::addRow("running copy") << false << "" << "";
    QTest::addRow("EEPROM copy") << true << "" << "";
    QTest::addRow("silent device") << false << "drop"
                                   << "Response to reading Mavix Setting is timeout";
    QTest::addRow("short reply") << false << "short" << "WREN Recv, lack of data packet";
    QTest::addRow("bus error") << true << "bus-error" << "WREN Recv, Bus Error occured";
    QTest::addRow("wrong VerType") << false << "wrong-vertype"
                                   << "WREN Recv, VerType does is invalid";
    QTest::addRow("no acknowledge") << false << "no-ack"
                                    << "WREN Recv, it's not Acknowledge packet";
    QTest::addRow("request not sent") << false << "port 0"
                                      << "Response to reading Mavix Setting is timeout (The "
                                         "request could not be sent: ";
}

void TestGeneralTab::readTable()
{
    QFETCH(bool, eeprom);
    QFETCH(QString, faults);
    QFETCH(QString, error);
    const quint16 port = f->simThread.udpPort();
    f->child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
    if (faults == u"port 0")
        f->child<QLineEdit>("GenTargetUDPPortTextarea")->setText(QStringLiteral("0"));
    else
        f->sim()->setFaults(faultsFrom(faults.split(u' ', Qt::SkipEmptyParts)));

    f->click("GenReadButton");

    // The current target is what the target fields said, never a record nobody read.
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.1"));
    if (!error.isEmpty()) {
        QCOMPARE(f->reports.errors.size(), 1);
        QVERIFY2(f->reports.errors[0].startsWith(error), qPrintable(f->reports.errors[0]));
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1, changed 0"));
        QCOMPARE(shownReport(), QString());
        return;
    }
    QCOMPARE(f->reports.results, QStringList{"Reading Mavix setting is successed"});
    QCOMPARE(describe(f->accesses()), QStringList{readOf(eeprom ? MavixSetting::kEepromBase
                                                                : MavixSetting::kRunningBase)});
    if (eeprom) { // shown, but the device the tool talks to stays the one of the target fields
        QVERIFY(shownReport().contains(QStringLiteral("IP Address : 127.0.0.7 \n")));
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 0"));
        QCOMPARE(MavixSetting::current().udpPort, port);
        return;
    }
    QCOMPARE(shownReport(), expectedRunningReport(port));
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));
    QCOMPARE(MavixSetting::current().textReport().remove(QLatin1Char('\r')),
             expectedRunningReport(port)); // the whole record becomes the target
    QCOMPARE(GeneralTab().accessTimeoutMs(), 10000); // unless a test shortens it
}

void TestGeneralTab::writeStepFails_data()
{
    QTest::addColumn<bool>("eeprom");
    QTest::addColumn<QString>("faults"); // "drop:N": no reply to the N-th access
    QTest::addColumn<int>("accesses");   // nothing is tried after the failed step
    QTest::addColumn<QString>("error");
    QTest::addRow("reading the image times out") << false << "drop:1" << 1
                                                 << "Response to reading Mavix Setting is timeout";
    QTest::addRow("obtaining EEPROM permission times out")
        << true << "drop:2" << 2 << "Response to obtaining permisssion to write in EEPROM is timeout";
    QTest::addRow("writing the image times out") << false << "drop:3" << 3
                                                 << "Response to writing Mavix Setting is timeout";
    QTest::addRow("releasing EEPROM permission times out")
        << true << "drop:5" << 5 << "Response to permisssion release to write in EEPROM is timeout";
    QTest::addRow("bus error on the permission byte")
        << true << "range:FFFFFCFF-FFFFFCFF" << 2 << "WREN Recv, Bus Error occured";
}

void TestGeneralTab::writeStepFails()
{
    QFETCH(bool, eeprom);
    QFETCH(QString, faults);
    QFETCH(int, accesses);
    QFETCH(QString, error);
    f->child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
    f->setWriteFields(QStringLiteral("127.0.0.3"), QStringLiteral("24"),
                      QString::number(f->simThread.udpPort()));
    if (faults.startsWith(u"drop:"))
        f->dropReplyTo(faults.mid(5).toInt());
    else
        f->sim()->setFaults(faultsFrom({faults}));

    f->click("GenWriteButton");

    QCOMPARE(f->reports.errors, QStringList{error});
    QCOMPARE(f->accesses().size(), accesses);
    // The image is in place once the release is due.
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1, changed %1").arg(accesses / 5));
    // A device that took its new address before answering is looked for there.
    if (accesses == 3)
        QCOMPARE(f->agent.targetAddress(), QHostAddress(QStringLiteral("127.0.0.3")));
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

void TestGeneralTab::badFieldsSendNothing_data()
{
    QTest::addColumn<QString>("group"); // the fields given the bad values
    QTest::addColumn<QStringList>("accesses");
    QTest::addRow("write fields: the image is read, nothing written")
        << "GenWrite" << QStringList{readOf(MavixSetting::kRunningBase)};
    QTest::addRow("target fields: nothing at all") << "GenTarget" << QStringList();
}

void TestGeneralTab::badFieldsSendNothing()
{
    QFETCH(QString, group);
    f->child<QLineEdit>(qPrintable(group + "IPAddressTextarea"))->setText("256.1.1.1");
    f->child<QLineEdit>(qPrintable(group + "UDPPortTextarea"))->setText("65536");

    f->click("GenWriteButton");

    QCOMPARE(f->reports.errors,
             (QStringList{"IP address is invalid", "UDP Port number must be 0 to 65535"}));
    QTEST(describe(f->accesses()), "accesses");
    QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 0, changed 0"));
    QCOMPARE(f->sim()->peek(MavixSetting::kRunningBase, 64), f->runningBefore);
}

QTEST_MAIN(TestGeneralTab)
#include "tst_generaltab.moc"
