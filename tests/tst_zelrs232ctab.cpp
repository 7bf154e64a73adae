// The ZEL-RS232C tab against the emulator's serial bridge.
#include "modules/serialbridge.h"
#include "modules/zelrs232ctab.h"
#include "sim/simserialbridge.h"
#include "simclient.h"
#include "tabfixture.h"
#include "testtable.h"

#include <QtTest>
#include <QtWidgets>

class SerialFixture : public TabFixture<ZELRS232CTab>
{
public:
    [[nodiscard]] bool start()
    {
        bool listening = TabFixture::start();
        MavixSim *emulator = sim();
        QMetaObject::invokeMethod(
            emulator, [&] { listening &= (new SimSerialBridge(emulator, emulator))->start(0, 0); },
            Qt::BlockingQueuedConnection);
        tab.setTimeouts(2000, 300);
        return listening;
    }
    template <typename T> T *w(const QString &name) const
    {
        return child<T>(qPrintable(QLatin1String("ZELRS232c") + name));
    }
    void select(const char *name, int index) const { w<QComboBox>(name)->setCurrentIndex(index); }
    // The selected connector as the form shows it: its boxes, then the check boxes ticked.
    QString shown() const
    {
        QStringList parts, on;
        for (const char *box : {"BaudRateCombobox", "DataWidthCombobox", "StopBitCombobox",
                                "ParityComboBox", "AutoFlowCtrlComboBox"})
            parts << w<QComboBox>(box)->currentText();
        for (const char *box : {"Wait", "RTS", "CTS", "DTR", "RI", "DSR", "TxD", "RxD", "CD"})
            if (w<QCheckBox>(QLatin1String(box) + "CheckBox")->isChecked())
                on << QLatin1String(box);
        return (parts << on.join(' ')).join('/');
    }
};

class TestZELRS232CTab : public QObject
{
    Q_OBJECT

private slots:
    void configurationRoundTrip_data()
    {
        // clang-format off
        columns<QByteArray, QString, QString, QByteArray>("config", "dte", "dce", "written");
        QTest::addRow("baud code 0 reads as 9,600") << hex("00001878") << "9,600/8/1/None/Manual/" << "Manual/" << hex("70001878");
        QTest::addRow("parity byte 2 reads None") << hex("70021878") << "9,600/8/1/None/Manual/" << "Manual/" << hex("70001878");
        QTest::addRow("460,800 7 bits 2 stop Mark, auto flow") << hex("16041C7F") << "460,800/7/2/Mark/Auto(Ignore CTS)/" << "Auto(Consider RTS)/Wait" << hex("16041C7F");
        QTest::addRow("36,400 6 bits Space, DTE auto and waits") << hex("58051D78") << "36,400/6/1/Space/Auto(Ignore CTS)/Wait" << "Manual/" << hex("58051D78");
        QTest::addRow("115,200 Even, DTE's RTS on") << hex("30070878") << "115,200/8/1/Even/Manual/RTS" << "Manual/RTS" << hex("30070878");
        QTest::addRow("1,200 5 bits Odd, DCE's four outputs on") << hex("AC061800") << "1,200/5/1/Odd/Manual/CTS RI DSR CD" << "Manual/CTS RI DSR CD" << hex("AC061800");
        // clang-format on
    }
    void configurationRoundTrip()
    {
        QFETCH(QByteArray, config);
        SerialFixture f;
        QVERIFY(f.start());
        QVERIFY(RawClient().exchange(writeRequest(0xFFFFFF3C, config), f.simThread.udpPort()));
        f.select("ParityComboBox", 4); // what the read must replace
        f.click("ZELRS232cRead");
        QTEST(f.shown(), "dte");
        f.select("ConnectorComboBox", 1);
        QTEST(f.shown().section('/', 4), "dce"); // each line shows alike at both ends
        f.sim()->clearAccessLog();
        f.click("ZELRS232cWrite");
        QTEST(f.accesses().value(0).data, "written");
    }
    void eepromWriteAsksPermissionForAValidPort()
    {
        SerialFixture f;
        QVERIFY(f.start());
        f.w<QCheckBox>("EEPROMAccessCheckBox")->setChecked(true);
        f.w<QLineEdit>("PortLineEdit")->setText(QStringLiteral("70000"));
        f.sim()->clearAccessLog();
        f.click("ZELRS232cWrite");
        QCOMPARE(f.reports.errors, QStringList{"TCP Port number must be 0 to 65535"});
        QCOMPARE(describe(f.accesses()), QStringList());
        f.w<QLineEdit>("PortLineEdit")->setText(QStringLiteral("2424"));
        f.click("ZELRS232cWrite");
        QCOMPARE(
            describe(f.accesses()),
            (QStringList{"write fffffcff 1 [00]", "write fffffc3c 4 [70001878]",
                         "write fffffc1c 2 [0978]", "read fffffc00 64", "write fffffcff 1 [ff]"}));
        QCOMPARE(f.reports.results, QStringList{"Writing ZEL-RS232C setting is successed"});
    }
    void receive_data()
    {
        // clang-format off
        columns<int, QString, bool, int, QString, QString>("delimiter", "maxLength", "asHex", "receives", "lengthShown", "shown");
        QTest::addRow("(Ignore) as hex") << 0 << "(Ignore)" << true << 1 << "(Ignore)" << "68656c6c6f";
        QTest::addRow("CR as hex") << 1 << "0" << true << 1 << "(Ignore)" << "68656c6c6f0d";
        QTest::addRow("LF as hex") << 2 << "x" << true << 1 << "(Ignore)" << "68656c6c6f0a";
        QTest::addRow("CR+LF as hex") << 3 << "-1" << true << 1 << "(Ignore)" << "68656c6c6f0d0a";
        QTest::addRow("text without its CR+LF") << 3 << "" << false << 1 << "(Ignore)" << "hello";
        QTest::addRow("at most 4 bytes at a time") << 2 << "4" << false << 2 << "4" << "hell\no";
        // clang-format on
    }
    void receive()
    {
        QFETCH(int, delimiter);
        QFETCH(int, receives);
        QFETCH(QString, maxLength);
        QFETCH(bool, asHex);
        SerialFixture f;
        QVERIFY(f.start());
        f.click("ZELRS232cRead");
        f.click("ZELRS232cConnectButton");
        f.select("ConnectorComboBox", 1);
        f.click("ZELRS232cConnectButton");
        f.select("ConnectorComboBox", 0);
        f.w<QLineEdit>("MaxReceiveLengthLineEdit")->setText(maxLength);
        emit f.w<QLineEdit>("MaxReceiveLengthLineEdit")->editingFinished();
        QTEST(f.w<QLineEdit>("MaxReceiveLengthLineEdit")->text(), "lengthShown");
        f.w<QCheckBox>("ShowAsHexCheckBox")->setChecked(asHex);
        f.child<QComboBox>("ZELRS232CDelimiterComboBox")->setCurrentIndex(delimiter);
        f.w<QLineEdit>("SendDataLineEdit")->setText(QStringLiteral("hello"));
        QTest::keyClick(f.w<QLineEdit>("SendDataLineEdit"), Qt::Key_Return);
        f.select("ConnectorComboBox", 1);
        for (int i = 0; i < receives; ++i)
            f.click("ZELRS232cReceiveButton");
        QTEST(f.w<QPlainTextEdit>("ReceivedDataTextarea")->toPlainText(), "shown");
        f.click("ZELRS232cReceiveButton"); // nothing more comes: the wait ends the connection
        QCOMPARE(f.reports.errors, QStringList{"ZEL-RS232C timeout"});
        QCOMPARE(f.w<QPushButton>("ConnectButton")->text(), QStringLiteral("Connect"));
        QCOMPARE(f.outcome(), QStringLiteral("succeeded %1, failed 1").arg(3 + 1 + receives));
    }
    // Both connectors watched from the Monitor page; a line sent to one shows in the other's
    // monitor, live, with no Receive.
    void monitor_data()
    {
        // clang-format off
        columns<int, int, QString, bool, QString, QString>("to", "form", "line", "asHex", "shown", "errors");
        QTest::addRow("text with escapes, DTE to DCE") << 0 << 0 << "hi\\r\\nthere\\x21" << false << "DCE> hi\nDCE> there!" << "";
        QTest::addRow("hex pairs, shown as hex") << 0 << 1 << "6869 0d 0a" << true << "DCE> 68 69 0d 0a" << "";
        QTest::addRow("control bytes, DCE to DTE") << 1 << 1 << "01 41 7f" << false << "DTE> \\x01A\\x7f" << "";
        QTest::addRow("bad escape sends nothing") << 0 << 0 << "a\\x4" << false << "" << "\\x at position 2 needs two hex digits";
        // clang-format on
    }
    void monitor()
    {
        QFETCH(int, to);
        QFETCH(int, form);
        QFETCH(QString, line);
        QFETCH(bool, asHex);
        SerialFixture f;
        QVERIFY(f.start());
        f.click("ZELRS232cRead");
        f.child<QTabWidget>("ZELRS232cDataTabs")->setCurrentIndex(1);
        f.click("ZELRS232cMonitorDTEButton");
        f.click("ZELRS232cMonitorDCEButton");
        QVERIFY(f.w<QPushButton>("MonitorDTEButton")->isChecked());
        QVERIFY(f.w<QPushButton>("MonitorDCEButton")->isChecked());
        QVERIFY(!f.w<QPushButton>("ReceiveButton")->isEnabled());
        f.w<QCheckBox>("MonitorHexCheckBox")->setChecked(asHex);
        f.select("MonitorSendConnectorComboBox", to);
        f.select("MonitorSendFormComboBox", form);
        f.w<QLineEdit>("MonitorSendLineEdit")->setText(line);
        f.click("ZELRS232cMonitorSendButton");
        QTEST(f.reports.errors.join('|'), "errors");
        QFETCH(QString, shown);
        QTRY_COMPARE(f.w<QPlainTextEdit>("MonitorTextarea")->toPlainText(), shown);
    }
    // The device ends a watched connection (a newer one to DCE takes its place): the window says
    // so.
    void monitorEndedByTheDevice()
    {
        SerialFixture f;
        QVERIFY(f.start());
        f.click("ZELRS232cRead");
        f.click("ZELRS232cMonitorDCEButton");
        QTcpSocket newer;
        newer.connectToHost(QHostAddress::LocalHost,
                            f.tab.bridge()->runningPort(Rs232c::Connector::Dce));
        QTRY_VERIFY(!f.w<QPushButton>("MonitorDCEButton")->isChecked());
        QCOMPARE(f.reports.errors,
                 QStringList{"ZEL-RS232C DCE monitor stopped: the device closed the connection"});
    }
    // Stopped, the connector's data waits for the prescribed Receive again.
    void stoppedMonitorLeavesDataToReceive()
    {
        SerialFixture f;
        QVERIFY(f.start());
        f.click("ZELRS232cRead");
        f.child<QTabWidget>("ZELRS232cDataTabs")->setCurrentIndex(1);
        f.click("ZELRS232cMonitorDCEButton");
        f.click("ZELRS232cMonitorDCEButton");
        f.w<QLineEdit>("MonitorSendLineEdit")->setText(QStringLiteral("late"));
        f.click("ZELRS232cMonitorSendButton");
        f.child<QTabWidget>("ZELRS232cDataTabs")->setCurrentIndex(0);
        f.select("ConnectorComboBox", 1);
        QTRY_VERIFY(f.w<QPushButton>("ReceiveButton")->isEnabled());
        f.click("ZELRS232cReceiveButton");
        QCOMPARE(f.w<QPlainTextEdit>("ReceivedDataTextarea")->toPlainText(),
                 QStringLiteral("late"));
        QCOMPARE(f.w<QPlainTextEdit>("MonitorTextarea")->toPlainText(), QString());
        QCOMPARE(f.reports.errors, QStringList());
    }
};

QTEST_MAIN(TestZELRS232CTab)
#include "tst_zelrs232ctab.moc"
