// The Detail tab against the emulator on loopback, and the main window in expert mode (with
// loopback targets that are only typed: nothing there presses Read or Write).
#include "app/appcontext.h"
#include "app/devicetarget.h"
#include "settings/experttab.h"
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

class TestExpertTab : public QObject
{
    Q_OBJECT

    std::unique_ptr<TabFixture<ExpertTab>> f;
    QLineEdit *edit(const QString &n) { return f->child<QLineEdit>(qPrintable("Expert" + n)); }
    QList<QLineEdit *> settings() { return f->tab.findChildren<QLineEdit *>().mid(3); }
    QString shownFields()
    {
        QStringList shown;
        for (const QLineEdit *field : settings())
            shown << field->text();
        shown << f->child<QComboBox>("ExpertTCPKeepAliveEnabledCombobox")->currentText();
        return shown.join(' ');
    }
    void read() // and forget that access
    {
        f->click("ExpertReadButton");
        f->sim()->clearAccessLog();
        f->reports.clear();
    }

private slots:
    void init()
    {
        f = std::make_unique<TabFixture<ExpertTab>>();
        QVERIFY(f->start(false));
        f->tab.setTargetFields("127.0.0.1", "24", QString::number(f->simThread.udpPort()));
        f->child<QCheckBox>("ExpertEEPROMAccessCheckbox")->setChecked(true);
        f->sim()->poke(MavixSetting::kEepromBase, knownImage("127.0.0.7", 7777, 1024));
    }

    void fieldRules_data()
    {
        QTest::addColumn<QString>("expected");
        const auto row = &QTest::addRow;
        row("IPAddressTextarea=::1") << "IP address is invalid";
        row("TCPPortTextarea=65536") << "TCP Port number must be 0 to 65535";
        row("UDPPortTextarea=-1") << "UDP Port number must be 0 to 65535";
        row("MACAddressTextarea=00:11:22:33:44") << "Set mac address in format FF:FF:FF:FF:FF:FF";
        row("TCPCommandPortTextarea=65536") << "TCP Port number must be 0 to 65535";
        row("MaxSegmentSizeTextarea=x") << "MaxSegmentSize must be 0 to 65535";
        row("TCPKeepAliveBNETextArea TCPKeepAliveBETextarea=65536")
            << "KeepAlive must be 0 to 65535 | KeepAlive must be 0 to 65535";
        row("TCPTimeoutConTextarea=-1") << "TimeOut(Connecting) must be 0 to 65535";
        row("TCPTimeoutDicTextarea=1000") << "768 and the info line";
        row("TCPTimeoutDicTextarea=16677125") << "16677120 and the info line";
        row("TCPTimeoutDicTextarea=16677126") << "TimeOut(Disconnecting) must be 0 to 16677125";
        row("TCPReconIntervalTextArea TCPReTransTimerTextarea=1e3")
            << "Reconnect Interval must be 0 to 65535 | ReTransmission Timer must be 0 to 65535";
    }
    void fieldRules()
    {
        const QStringList fields = QString(QTest::currentDataTag()).section('=', 0, 0).split(' ');
        read();
        for (const QString &field : fields)
            edit(field)->setText(QString(QTest::currentDataTag()).section('=', 1));
        f->click("ExpertWriteButton");
        const QString errors = f->reports.errors.join(" | ");
        const bool info = f->reports.results.contains(
            "Info: Reading TimeOut(Disconnecting) value will change because the lower 8 bits are "
            "ignored");
        if (errors.isEmpty()) // accepted: read back what the device holds now
            read();
        else // refused: only the image read reached the device
            QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kEepromBase)});
        QTEST(errors.isEmpty() ? edit(fields[0])->text() + (info ? " and the info line" : "")
                               : errors,
              "expected");
    }

    void writeReadAndResetEveryField()
    {
        const QStringList typed = QString("AA:BB:CC:DD:EE:FF 127.0.0.42 2000 2323 4661 536 1500 "
                                          "45000 3000 1280000 750 300")
                                      .split(' ');
        for (int i = 0; i < typed.size(); ++i)
            settings().at(i)->setText(typed.at(i));
        f->child<QComboBox>("ExpertTCPKeepAliveEnabledCombobox")->setCurrentIndex(0);
        f->click("ExpertWriteButton");
        QCOMPARE(
            f->sim()->peek(MavixSetting::kEepromBase, 64).toHex(),
            "303132333435363738393a3b3c3d3e3fa177021122334455" // bytes 17..23 as they were
            "7f00002a07d009130218123505dcafc80bb8138802ee012ce0e1e2e3e4e5e6e7e8e9eaebecedeeef");
        read();
        QCOMPARE(shownFields(), "02:11:22:33:44:55 127.0.0.42 2000 2323 4661 536 1500 45000 3000 "
                                "1280000 750 300 disable");
        f->click("ExpertResetButton");
        QCOMPARE(shownFields(), "02:00:C0:A8:00:10 192.168.10.16 24 23 4660 1460 1000 60000 5000 "
                                "2880000 500 500 disable");
        QCOMPARE(f->reports.results, QStringList{"Please write if you reset Mavix Setting"});
        QCOMPARE(describe(f->accesses()), QStringList());
    }

    // Nothing shown that nobody read or typed: empty until a read, then what was last read.
    void showsOnlyWhatWasRead()
    {
        QCOMPARE(shownFields(), "            disable");
        f->click("ExpertWriteButton");
        QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kEepromBase)});
        MavixSetting readByGeneralTab;
        readByGeneralTab.ipAddress = "127.0.0.5";
        f->tab.applyTargetSettingChange(readByGeneralTab);
        QCOMPARE(shownFields(), "02:00:C0:A8:00:10 127.0.0.5 24 23 4660 1460 1000 60000 5000 "
                                "2880000 500 500 disable");
    }

    void tabSets_data()
    {
        QTest::addColumn<QString>("titles");
        const QString normal = "General, Control(UDP), Data(TCP), ZEL-RS232C, ZEL-GPIB";
        QTest::addRow("normal") << normal + ", Registers"; // the register maps come last
        QTest::addRow("expert") << normal + ", Detail, Registers";
        QTest::addRow("server") << normal + ", Server, Registers";
        QTest::addRow("expert and server") << normal + ", Detail, Server, Registers";
    }
    void tabSets()
    {
        const QString m = QTest::currentDataTag();
        AppContext context(m.contains("expert"), m.contains("server"), 0, true, nullptr,
                           "127.0.0.1");
        auto *tabs = context.mainWindow()->findChild<QTabWidget *>("modeTab");
        QStringList titles;
        for (int i = 0; i < tabs->count(); ++i)
            titles << tabs->tabText(i);
        QTEST(titles.join(", "), "titles");
    }

    // Closing with the cursor in a target field runs no slot on the half-destroyed window.
    void closingWithTheCursorInATargetField()
    {
        auto context = std::make_unique<AppContext>(true, false, 0, true, nullptr, "127.0.0.2");
        context->mainWindow()->show();
        QVERIFY(QTest::qWaitForWindowActive(context->mainWindow()));
        auto *ip = context->mainWindow()->findChild<QLineEdit *>("GenTargetIPAddressTextarea");
        ip->setFocus();
        QTRY_VERIFY(ip->hasFocus());
        QTest::keyClick(ip, Qt::Key_4);
        context.reset(); // a slot running now would crash or assert
    }

    // The two tabs' target fields mirror each other exactly, and nothing else moves: what is typed
    // on one tab (then Return) shows on the other, the Write Setting fields stay as they were.
    void targetFieldsMirror_data()
    {
        // fields: IP, TCP and UDP port of General's target, Detail's target, General's Write
        // Setting, then the target itself
        columns<QString, QString>("typed", "fields");
        // clang-format off
        QTest::addRow("cleared Detail IP") << "ExpertTargetIPAddressTextarea=" << " 6000 5000 |  6000 5000 | 127.0.0.2 6000 5000 | 127.0.0.2 6000 5000";
        QTest::addRow("Detail UDP port") << "ExpertTargetUDPPortTextarea=5001" << "127.0.0.2 6000 5001 | 127.0.0.2 6000 5001 | 127.0.0.2 6000 5000 | 127.0.0.2 6000 5001";
        QTest::addRow("General TCP port") << "GenTargetTCPPortTextarea=6001" << "127.0.0.2 6001 5000 | 127.0.0.2 6001 5000 | 127.0.0.2 6000 5000 | 127.0.0.2 6001 5000";
        // clang-format on
    }
    void targetFieldsMirror()
    {
        QFETCH(QString, typed);
        AppContext context(true, false, 0, true, nullptr, "127.0.0.2:5000:6000");
        const auto field = [&context](const QString &name) {
            return context.mainWindow()->findChild<QLineEdit *>(name);
        };
        QLineEdit *edit = field(typed.section('=', 0, 0));
        edit->setText(typed.section('=', 1));
        QTest::keyClick(edit, Qt::Key_Return);
        QStringList shown;
        for (const char *group : {"GenTarget", "ExpertTarget", "GenWrite"}) {
            QStringList texts;
            for (const char *part : {"IPAddressTextarea", "TCPPortTextarea", "UDPPortTextarea"})
                texts << field(group + QLatin1String(part))->text();
            shown << texts.join(' ');
        }
        const DeviceTarget *target = context.target();
        shown << QStringLiteral("%1 %2 %3")
                     .arg(target->host())
                     .arg(target->tcpPort())
                     .arg(target->udpPort());
        QTEST(shown.join(" | "), "fields");
    }

    // The device keeps answering where it is while its EEPROM copy is rewritten: the record the
    // write announces moves no target, and the permission release reaches the device.
    void eepromWriteKeepsTheTarget()
    {
        SimThread sim;
        QVERIFY(sim.start());
        sim.sim()->poke(MavixSetting::kEepromBase, knownImage("127.0.0.7", 7777, 1024));
        AppContext context(true, false, 0, true, nullptr,
                           QStringLiteral("127.0.0.1:%1:24").arg(sim.udpPort()));
        ExpertTab *tab = context.mainWindow()->expertTab();
        tab->setAccessTimeoutMs(kTabTimeoutMs);
        tab->setEEPROMAccessChecked(true);
        tab->readDeviceInformation();
        tab->writeDeviceInformation();
        QCOMPARE(describe(sim.sim()->accessLog()).constLast(),
                 writeOf(MavixSetting::kEepromPermission, hex("FF")));
        QCOMPARE(context.target()->host(), QStringLiteral("127.0.0.1"));
        QCOMPARE(context.target()->udpPort(), sim.udpPort());
    }

    void settingsTabsStayInStep()
    {
        AppContext context(true, false, 0, true, nullptr, "127.0.0.2:5000:6000");
        MainWindow *w = context.mainWindow();
        const auto field = [w](const char *name) { return w->findChild<QLineEdit *>(name); };
        QCOMPARE(field("ExpertTargetIPAddressTextarea")->text(), "127.0.0.2");
        auto *tabs = w->findChild<QTabWidget *>("modeTab");
        tabs->setCurrentWidget(w->expertTab());
        field("ExpertTargetUDPPortTextarea")->setText("5001"); // tab bar clicked before Return
        tabs->setCurrentIndex(0);
        QCOMPARE(field("GenTargetUDPPortTextarea")->text(), "5001");
        field("GenTargetTCPPortTextarea")->setText("6001");
        QTest::keyClick(field("GenTargetTCPPortTextarea"), Qt::Key_Return);
        QCOMPARE(field("ExpertTargetTCPPortTextarea")->text(), "6001");
        w->findChild<QCheckBox *>("GenEEPROMAccessCheckbox")->click();
        QVERIFY(w->findChild<QCheckBox *>("ExpertEEPROMAccessCheckbox")->isChecked());
        w->findChild<QCheckBox *>("ExpertEEPROMAccessCheckbox")->click();
        QVERIFY(!w->findChild<QCheckBox *>("GenEEPROMAccessCheckbox")->isChecked());
    }
};

QTEST_MAIN(TestExpertTab)
#include "tst_experttab.moc"
