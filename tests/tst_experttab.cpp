// The Detail tab against the emulator on loopback (every field read, checked, written, reset), and
// the main window in expert mode keeping it in step with the General tab.
#include "app/appcontext.h"
#include "settings/experttab.h"
#include "tabfixture.h"
#include "ui/mainwindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QTabWidget>

namespace {

const char *const kInfoLine = "Info: Reading TimeOut(Disconnecting) value will change because the "
                              "lower 8 bits are ignored";

struct ExpertTabFixture : TabFixture<ExpertTab>
{
    ~ExpertTabFixture() { MavixSetting::setCurrent(MavixSetting()); }
    [[nodiscard]] bool start()
    {
        if (!TabFixture::start(false))
            return false;
        tab.setTargetFields("127.0.0.1", "24", QString::number(simThread.udpPort()));
        sim()->poke(MavixSetting::kRunningBase, knownImage("127.0.0.1", simThread.udpPort(), 24));
        sim()->poke(MavixSetting::kEepromBase, knownImage("127.0.0.7", 7777, 1024));
        return true;
    }
    void type(const char *field, const QString &text) const
    {
        child<QLineEdit>(field)->setText(text);
    }
    [[nodiscard]] QString text(const char *field) const { return child<QLineEdit>(field)->text(); }
    [[nodiscard]] QStringList shownFields() const;
    // Reads the EEPROM copy into the fields and forgets that access.
    void readEeprom()
    {
        child<QCheckBox>("ExpertEEPROMAccessCheckbox")->setChecked(true);
        click("ExpertReadButton");
        sim()->clearAccessLog();
        reports.clear();
    }
};

} // namespace

class TestExpertTab : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        f = std::make_unique<ExpertTabFixture>();
        QVERIFY(f->start());
    }
    void cleanup() { f.reset(); }
    void readShowsEveryField();
    void fieldRules_data();
    void fieldRules();
    void twoBadFieldsTwoLinesNothingWritten();
    void writeEveryFieldLeavesTheMacAlone();
    void resetShowsFactoryValuesAndSendsNothing();
    void tabSets_data();
    void tabSets();
    void settingsTabsStayInStep();

private:
    std::unique_ptr<ExpertTabFixture> f;
};

QStringList ExpertTabFixture::shownFields() const
{
    QStringList shown;
    for (const char *field :
         {"ExpertMACAddressTextarea", "ExpertIPAddressTextarea", "ExpertTCPPortTextarea",
          "ExpertUDPPortTextarea", "ExpertTCPCommandPortTextarea", "ExpertMaxSegmentSizeTextarea",
          "ExpertTCPKeepAliveBNETextArea", "ExpertTCPKeepAliveBETextarea",
          "ExpertTCPTimeoutConTextarea", "ExpertTCPTimeoutDicTextarea",
          "ExpertTCPReconIntervalTextArea", "ExpertTCPReTransTimerTextarea"})
        shown << text(field);
    return shown << child<QComboBox>("ExpertTCPKeepAliveEnabledCombobox")->currentText();
}

void TestExpertTab::readShowsEveryField()
{
    f->click("ExpertReadButton");
    QCOMPARE(f->shownFields(),
             (QStringList{"02:11:22:33:44:55", "127.0.0.1", "24",
                          QString::number(f->simThread.udpPort()), "8023", "1400", "2000", "30000",
                          "4000", "256000", "250", "125", "enable"}));
    QCOMPARE(f->reports.results, QStringList{"Reading Mavix setting is successed"});
}

// Each row types one value and writes the EEPROM copy: either the messages shown (and nothing
// written) or the bytes the copy holds afterwards at the field's offset.
void TestExpertTab::fieldRules_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("offset");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *field, const char *typed, int offset,
                        const char *expected) {
        QTest::addRow("%s", name) << QString(field) << QString(typed) << offset
                                  << QString(expected);
    };
    row("IP address", "IPAddressTextarea", "127.0.0.9", 24, "7f000009");
    row("IP octet above 255", "IPAddressTextarea", "256.1.1.1", 0, "IP address is invalid");
    row("IPv6 address", "IPAddressTextarea", "::1", 0, "IP address is invalid");
    row("TCP port 65536", "TCPPortTextarea", "65536", 0, "TCP Port number must be 0 to 65535");
    row("UDP port -1", "UDPPortTextarea", "-1", 0, "UDP Port number must be 0 to 65535");
    row("MAC of five groups", "MACAddressTextarea", "00:11:22:33:44", 0,
        "Set mac address in format FF:FF:FF:FF:FF:FF");
    row("MAC group above FF", "MACAddressTextarea", "00:11:22:33:44:100", 0,
        "Set mac address in format FF:FF:FF:FF:FF:FF");
    row("valid MAC never sent", "MACAddressTextarea", "AA:BB:CC:DD:EE:FF", 17, "77021122334455");
    row("command port 65536", "TCPCommandPortTextarea", "65536", 0,
        "TCP Port number must be 0 to 65535");
    row("segment size 65535", "MaxSegmentSizeTextarea", "65535", 32, "ffff");
    row("segment size x", "MaxSegmentSizeTextarea", "x", 0, "MaxSegmentSize must be 0 to 65535");
    row("keep-alive 0", "TCPKeepAliveBETextarea", "0", 38, "0000");
    row("keep-alive 65536", "TCPKeepAliveBNETextArea", "65536", 0, "KeepAlive must be 0 to 65535");
    row("connecting 65536", "TCPTimeoutConTextarea", "65536", 0,
        "TimeOut(Connecting) must be 0 to 65535");
    row("disconnect 2880000", "TCPTimeoutDicTextarea", "2880000", 42, "2bf2");
    row("disconnect 1000", "TCPTimeoutDicTextarea", "1000", 42, "0003 and the info line");
    row("disconnect 16677125", "TCPTimeoutDicTextarea", "16677125", 42, "fe79 and the info line");
    row("disconnect 16677126", "TCPTimeoutDicTextarea", "16677126", 0,
        "TimeOut(Disconnecting) must be 0 to 16677125");
    row("re-connect abc", "TCPReconIntervalTextArea", "abc", 0,
        "Reconnect Interval must be 0 to 65535");
    row("re-transmission 99999", "TCPReTransTimerTextarea", "99999", 0,
        "ReTransmission Timer must be 0 to 65535");
}

void TestExpertTab::fieldRules()
{
    QFETCH(QString, field);
    QFETCH(QString, typed);
    QFETCH(int, offset);
    QFETCH(QString, expected);
    const QByteArray eepromBefore = f->sim()->peek(MavixSetting::kEepromBase, 64);
    f->readEeprom();
    f->type(qPrintable("Expert" + field), typed);
    f->click("ExpertWriteButton");

    const QByteArray written = f->sim()->peek(MavixSetting::kEepromBase, 64);
    QString shown = f->reports.errors.join(" | ");
    if (shown.isEmpty())
        shown = written.mid(offset, expected.section(' ', 0, 0).size() / 2).toHex() +
                (f->reports.results.contains(kInfoLine) ? " and the info line" : "");
    else
        QCOMPARE(written, eepromBefore);
    QTEST(shown, "expected");
}

void TestExpertTab::twoBadFieldsTwoLinesNothingWritten()
{
    f->readEeprom();
    f->type("ExpertTCPKeepAliveBNETextArea", "70000");
    f->type("ExpertTCPReTransTimerTextarea", "-5");
    f->click("ExpertWriteButton");
    QCOMPARE(f->reports.errors, (QStringList{"KeepAlive must be 0 to 65535",
                                             "ReTransmission Timer must be 0 to 65535"}));
    QCOMPARE(describe(f->accesses()), QStringList{readOf(MavixSetting::kEepromBase)});
}

void TestExpertTab::writeEveryFieldLeavesTheMacAlone()
{
    f->readEeprom();
    const QStringList typed{"127.0.0.42", "2000",  "4661", "AA:BB:CC:DD:EE:FF", "2323", "536",
                            "1500",       "45000", "3000", "1280000",           "750",  "300"};
    int i = 0;
    for (const char *field : {"ExpertIPAddressTextarea", "ExpertTCPPortTextarea",
                              "ExpertUDPPortTextarea", "ExpertMACAddressTextarea",
                              "ExpertTCPCommandPortTextarea", "ExpertMaxSegmentSizeTextarea",
                              "ExpertTCPKeepAliveBNETextArea", "ExpertTCPKeepAliveBETextarea",
                              "ExpertTCPTimeoutConTextarea", "ExpertTCPTimeoutDicTextarea",
                              "ExpertTCPReconIntervalTextArea", "ExpertTCPReTransTimerTextarea"})
        f->type(field, typed.at(i++));
    f->child<QComboBox>("ExpertTCPKeepAliveEnabledCombobox")->setCurrentIndex(0);
    f->click("ExpertWriteButton");

    QCOMPARE(f->reports.errors, QStringList());
    QCOMPARE(f->sim()->peek(MavixSetting::kEepromBase, 64).toHex(),
             QByteArray("303132333435363738393a3b3c3d3e3f"
                        "a177"
                        "021122334455"
                        "7f00002a"
                        "07d0"
                        "0913"
                        "0218"
                        "1235"
                        "05dc"
                        "afc8"
                        "0bb8"
                        "1388"
                        "02ee"
                        "012c"
                        "e0e1e2e3e4e5e6e7e8e9eaebecedeeef"));
    // Bytes 17 to 23 (flags and MAC) are not even rewritten with their old values.
    for (const SimAccess &access : f->accesses())
        QVERIFY(access.direction == SimAccess::Read ||
                access.address + access.length <= 0xFFFFFC11 || access.address >= 0xFFFFFC18);
}

void TestExpertTab::resetShowsFactoryValuesAndSendsNothing()
{
    f->click("ExpertReadButton");
    f->sim()->clearAccessLog();
    f->reports.clear();
    f->click("ExpertResetButton");
    QCOMPARE(f->shownFields(),
             (QStringList{"02:00:C0:A8:00:10", "192.168.10.16", "24", "4660", "23", "1460", "1000",
                          "60000", "5000", "2880000", "500", "500", "disable"}));
    QCOMPARE(f->reports.results, QStringList{"Please write if you reset Mavix Setting"});
    QCOMPARE(describe(f->accesses()), QStringList());
}

void TestExpertTab::tabSets_data()
{
    QTest::addColumn<bool>("expert");
    QTest::addColumn<bool>("server");
    QTest::addColumn<QStringList>("titles");
    const QStringList normal{"General", "Control(UDP)", "Data(TCP)", "ZEL-RS232C", "ZEL-GPIB"};
    QTest::addRow("normal") << false << false << normal;
    QTest::addRow("expert") << true << false << normal + QStringList{"Detail"};
    QTest::addRow("server") << false << true << normal + QStringList{"Server"};
    QTest::addRow("expert and server") << true << true << normal + QStringList{"Detail", "Server"};
}

void TestExpertTab::tabSets()
{
    QFETCH(bool, expert);
    QFETCH(bool, server);
    AppContext context(expert, server, 0, true, nullptr, "127.0.0.1");
    auto *tabs = context.mainWindow()->findChild<QTabWidget *>("modeTab");
    QStringList titles;
    for (int i = 0; i < tabs->count(); ++i)
        titles << tabs->tabText(i);
    QTEST(titles, "titles");
    QCOMPARE(context.mainWindow()->expertTab() != nullptr, expert);
}

// Nothing here presses Read or Write: the targets are loopback addresses that are only typed.
void TestExpertTab::settingsTabsStayInStep()
{
    AppContext context(true, false, 0, true, nullptr, "127.0.0.2:5000:6000");
    MainWindow *window = context.mainWindow();
    const auto edit = [window](const char *name) {
        return window->findChild<QLineEdit *>(QLatin1String(name));
    };
    QCOMPARE(edit("ExpertTargetIPAddressTextarea")->text() + ":" +
                 edit("ExpertTargetUDPPortTextarea")->text() + ":" +
                 edit("ExpertTargetTCPPortTextarea")->text(),
             QStringLiteral("127.0.0.2:5000:6000"));

    auto *tabs = window->findChild<QTabWidget *>("modeTab");
    tabs->setCurrentWidget(window->expertTab());
    edit("ExpertTargetIPAddressTextarea")->setText("127.0.0.5"); // no editingFinished yet
    tabs->setCurrentIndex(0);
    QCOMPARE(edit("GenTargetIPAddressTextarea")->text(), QStringLiteral("127.0.0.5"));
    edit("GenTargetUDPPortTextarea")->setText("5001");
    QTest::keyClick(edit("GenTargetUDPPortTextarea"), Qt::Key_Return);
    QCOMPARE(edit("ExpertTargetUDPPortTextarea")->text(), QStringLiteral("5001"));
    QCOMPARE(window->agent()->targetPort(), quint16(5001));

    auto *general = window->findChild<QCheckBox *>("GenEEPROMAccessCheckbox");
    auto *expert = window->findChild<QCheckBox *>("ExpertEEPROMAccessCheckbox");
    general->click();
    QCOMPARE(QList<bool>() << general->isChecked() << expert->isChecked(),
             QList<bool>({true, true}));
    expert->click();
    QCOMPARE(QList<bool>() << general->isChecked() << expert->isChecked(),
             QList<bool>({false, false}));
}

QTEST_MAIN(TestExpertTab)
#include "tst_experttab.moc"
