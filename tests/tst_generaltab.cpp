// The General tab against the emulator: reads and their failures, each write step failing, the
// write sequences of both copies, a UDP port change (answering the warning box), bad fields.
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>

namespace {

// Polls every 10 ms for a modal message box, notes how it looked and presses `answer` on it. The
// poll ends with the box answered, or with `context` at the end of the test.
std::shared_ptr<QString> answerNextBox(QObject *context, QMessageBox::StandardButton answer)
{
    auto seen = std::make_shared<QString>();
    auto *poll = new QTimer(context);
    QObject::connect(poll, &QTimer::timeout, poll, [=] {
        if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
            poll->stop();
            *seen = QStringLiteral("%1 | %2 | icon %3, buttons %4, default %5")
                        .arg(box->windowTitle(), box->text())
                        .arg(box->icon())
                        .arg(int(box->standardButtons()))
                        .arg(box->standardButton(box->defaultButton()));
            box->button(answer)->click();
        }
    });
    poll->start(10);
    return seen;
}

} // namespace

class TestGeneralTab : public QObject
{
    Q_OBJECT

private slots:
    void init() { QVERIFY((f = std::make_unique<GeneralTabFixture>())->start()); }
    void cleanup() { f.reset(); }
    void readTable_data()
    {
        // clang-format off
        // faults "port 0": the request cannot be sent; error empty: the read succeeds
        columns<bool, QString, QString>("eeprom", "faults", "error");
        QTest::addRow("running copy") << false << "" << "";
        QTest::addRow("EEPROM copy") << true << "" << "";
        QTest::addRow("silent device") << false << "drop" << "Response to reading Mavix Setting is timeout";
        QTest::addRow("bus error") << true << "bus-error" << "WREN Recv, Bus Error occured";
        QTest::addRow("request not sent") << false << "port 0" << "Response to reading Mavix Setting is timeout (The request could not be sent: Unable to send a message)";
        // clang-format on
    }
    void readTable()
    {
        QFETCH(bool, eeprom);
        QFETCH(QString, faults);
        QFETCH(QString, error);
        f->child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
        if (faults == u"port 0")
            f->child<QLineEdit>("GenTargetUDPPortTextarea")->setText(QStringLiteral("0"));
        else
            f->sim()->setFaults(faultsFrom(faults.split(u' ', Qt::SkipEmptyParts)));

        f->click("GenReadButton");
        const auto *report = f->child<QPlainTextEdit>("GenSettingDataTextarea");

        // The target is what the target fields said, never a record nobody read.
        QCOMPARE(f->target.host(), QStringLiteral("127.0.0.1"));
        if (!error.isEmpty()) {
            QCOMPARE(f->reports.errors, QStringList{error});
            QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 1, changed 0"));
            QCOMPARE(report->toPlainText(), QString());
            return;
        }
        QCOMPARE(f->reports.results, QStringList{"Reading Mavix setting is successed"});
        QCOMPARE(describe(f->accesses()), QStringList{readOf(eeprom ? MavixSetting::kEepromBase
                                                                    : MavixSetting::kRunningBase)});
        const QStringList lines = report->toPlainText().split(u'\n');
        QCOMPARE(lines.mid(0, 2),
                 (QStringList{"MAC Address : 02:11:22:33:44:55 ",
                              eeprom ? "IP Address : 127.0.0.7 " : "IP Address : 127.0.0.1 "}));
        QCOMPARE(lines.value(10), QStringLiteral("TCP Timeout(Disconnect) : 256000 msec"));
        // Only the running copy is the device the tool talks to: its record becomes the target.
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed %1").arg(!eeprom));
        QCOMPARE(GeneralTab().accessTimeoutMs(), 10000); // unless a test shortens it
    }
    void writeStepFails_data()
    {
        // clang-format off
        // faults "drop:N": no reply to the N-th access; nothing is tried after the failed step
        columns<bool, QString, int, QString>("eeprom", "faults", "accesses", "error");
        QTest::addRow("reading the image times out") << false << "drop:1" << 1 << "Response to reading Mavix Setting is timeout";
        QTest::addRow("obtaining EEPROM permission times out") << true << "drop:2" << 2 << "Response to obtaining permisssion to write in EEPROM is timeout";
        QTest::addRow("writing the image times out") << false << "drop:3" << 3 << "Response to writing Mavix Setting is timeout";
        QTest::addRow("releasing EEPROM permission times out") << true << "drop:5" << 5 << "Response to permisssion release to write in EEPROM is timeout";
        QTest::addRow("bus error on the permission byte") << true << "range:FFFFFCFF-FFFFFCFF" << 2 << "WREN Recv, Bus Error occured";
        // clang-format on
    }
    void writeStepFails()
    {
        QFETCH(bool, eeprom);
        QFETCH(QString, faults);
        QFETCH(int, accesses);
        f->child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
        f->setWriteFields("127.0.0.3", "24", QString::number(f->simThread.udpPort()));
        SimFaults dropped; // no reply to the N-th request from now on
        dropped.dropEveryNth = quint32(f->sim()->counters().requests) + faults.mid(5).toUInt();
        f->sim()->setFaults(faults.startsWith(u"drop:") ? dropped : faultsFrom({faults}));

        f->click("GenWriteButton");

        QTEST(f->reports.errors.join(u'\n'), "error");
        QCOMPARE(f->accesses().size(), accesses);
        // The image is in place once the release is due.
        QCOMPARE(f->outcome(), QString("succeeded 0, failed 1, changed %1").arg(accesses / 5));
        // A device that took its new address before answering is looked for there.
        if (accesses == 3)
            QCOMPARE(f->agent.targetAddress(), QHostAddress(QStringLiteral("127.0.0.3")));
    }
    void writeSequence_data()
    {
        // written: bytes 24..29 (IP address, TCP data port); target: where the device is looked for
        columns<bool, QByteArray, QString>("eeprom", "written", "target");
        QTest::addRow("running copy, new IP address")
            << false << hex("7F0000020018") << "127.0.0.2";
        // The device keeps running where it is until it restarts: the target stays.
        QTest::addRow("EEPROM copy under permission") << true << hex("7F0000050400") << "127.0.0.1";
    }
    // The image is written in two pieces that leave out the MAC address; the EEPROM copy between
    // obtaining and releasing the write permission.
    void writeSequence()
    {
        QFETCH(bool, eeprom);
        QFETCH(QByteArray, written);
        QFETCH(QString, target);
        f->child<QCheckBox>("GenEEPROMAccessCheckbox")->setChecked(eeprom);
        const quint32 base = eeprom ? MavixSetting::kEepromBase : MavixSetting::kRunningBase;
        const QByteArray udpPort = eeprom ? hex("1388") : f->runningBefore.mid(34, 2);
        f->setWriteFields(eeprom ? "127.0.0.5" : "127.0.0.2", eeprom ? "1024" : "24",
                          QString::number(qFromBigEndian<quint16>(udpPort.data())));
        const auto box = answerNextBox(&f->tab, QMessageBox::No);

        f->click("GenWriteButton");

        QCOMPARE(*box, QString()); // no box
        QByteArray image = eeprom ? f->eepromBefore : f->runningBefore;
        image.replace(24, 6, written).replace(34, 2, udpPort);
        const QStringList pieces{writeOf(base, image.left(17)),
                                 writeOf(base + 0x18, image.mid(24))};
        const QString permission = writeOf(MavixSetting::kEepromPermission, hex("00"));
        const QStringList expected =
            eeprom ? QStringList{readOf(base), permission} + pieces +
                         QStringList{writeOf(MavixSetting::kEepromPermission, hex("FF"))}
                   : QStringList{readOf(base), readOf(base)} + pieces;
        QCOMPARE(describe(f->accesses()), expected);
        QCOMPARE(f->sim()->peek(base, 64), image);
        QCOMPARE(f->reports.results, QStringList{"Writing Mavix setting is successed"});
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 1, failed 0, changed 1"));
        QCOMPARE(f->text("GenTargetIPAddressTextarea"), target);
        QCOMPARE(f->target.host(), target);
        QCOMPARE(f->agent.targetAddress(), QHostAddress(target));
    }
    void writeNewUdpPortAsksFirst_data()
    {
        QTest::addColumn<bool>("yes");
        QTest::addRow("No writes nothing") << false;
        QTest::addRow("Yes writes and follows the device") << true;
    }
    void writeNewUdpPortAsksFirst()
    {
        QFETCH(bool, yes);
        const quint16 oldPort = f->simThread.udpPort();
        const quint16 newPort = freeUdpPort();
        f->setWriteFields("127.0.0.1", "24", QString::number(newPort));
        const auto box = answerNextBox(&f->tab, yes ? QMessageBox::Yes : QMessageBox::No);

        f->click("GenWriteButton");

        QCOMPARE(*box,
                 QStringLiteral("warning | It is recommended to enable EEPROM Access and rewrite "
                                "UDP port. If you want to continue, please select yes as it is. "
                                "| icon 2, buttons 81920, default 65536"));
        QCOMPARE(f->reports.errors, QStringList());
        if (!yes) {
            QCOMPARE(describe(f->accesses()), QStringList(2, readOf(MavixSetting::kRunningBase)));
            QCOMPARE(f->outcome(), QStringLiteral("succeeded 0, failed 0, changed 0"));
            QCOMPARE(f->text("GenTargetUDPPortTextarea"), QString::number(oldPort));
            return;
        }
        QCOMPARE(f->accesses().size(), 4);
        QTRY_COMPARE(f->simThread.udpPort(), newPort);
        QCOMPARE(f->text("GenTargetUDPPortTextarea"), QString::number(newPort));
        f->click("GenReadButton"); // reaches the device on its new port
        QCOMPARE(f->outcome(), QStringLiteral("succeeded 2, failed 0, changed 2"));
    }
    void badFieldsSendNothing_data()
    {
        // group: the fields given the bad values
        columns<QString, QStringList>("group", "accesses");
        QTest::addRow("write fields: the image is read, nothing written")
            << "GenWrite" << QStringList{readOf(MavixSetting::kRunningBase)};
        QTest::addRow("target fields: nothing at all") << "GenTarget" << QStringList();
    }
    void badFieldsSendNothing()
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

private:
    std::unique_ptr<GeneralTabFixture> f;
};

QTEST_MAIN(TestGeneralTab)
#include "tst_generaltab.moc"
