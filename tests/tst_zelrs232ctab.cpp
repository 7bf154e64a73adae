// The ZEL-RS232C tab against the emulator's serial bridge: settings round trips, the EEPROM
// permission steps, and lines travelling from the DTE connector to the DCE connector.
#include "modules/zelrs232ctab.h"
#include "sim/simserialbridge.h"
#include "simclient.h"
#include "tabfixture.h"

#include <QCheckBox>
#include <QComboBox>
#include <QPlainTextEdit>

class SerialFixture : public TabFixture<ZELRS232CTab>
{
public:
    [[nodiscard]] bool start()
    {
        if (!TabFixture::start())
            return false;
        MavixSim *emulator = sim();
        bool listening = false;
        QMetaObject::invokeMethod(
            emulator,
            [emulator, &listening] {
                listening = (new SimSerialBridge(emulator, emulator))->start(0, 0);
            },
            Qt::BlockingQueuedConnection);
        tab.setTimeouts(2000, 300);
        return listening;
    }
    QString comboText(const char *name) const { return child<QComboBox>(name)->currentText(); }
    void select(const char *name, int index) const
    {
        child<QComboBox>(name)->setCurrentIndex(index);
    }
    void setText(const char *name, const QString &text) const
    {
        child<QLineEdit>(name)->setText(text);
    }
    // What the form shows for the selected connector: format / flow / wait / lines that are on.
    QString shown() const
    {
        QStringList on;
        for (const char *line : {"RTS", "CTS", "DTR", "RI", "DSR", "TxD", "RxD", "CD"}) {
            if (child<QCheckBox>(qPrintable(QStringLiteral("ZELRS232c%1CheckBox").arg(line)))
                    ->isChecked())
                on << QLatin1String(line);
        }
        return QStringList{comboText("ZELRS232cBaudRateCombobox"),
                           comboText("ZELRS232cDataWidthCombobox"),
                           comboText("ZELRS232cStopBitCombobox"),
                           comboText("ZELRS232cParityComboBox"),
                           comboText("ZELRS232cAutoFlowCtrlComboBox"),
                           child<QCheckBox>("ZELRS232cWaitCheckBox")->isChecked() ? "wait" : "-",
                           on.join(QLatin1Char(' '))}
            .join(QLatin1Char('/'));
    }
    // Both connectors connected, DTE selected.
    void connectBoth() const
    {
        click("ZELRS232cRead");
        click("ZELRS232cConnectButton");
        select("ZELRS232cConnectorComboBox", 1);
        click("ZELRS232cConnectButton");
        select("ZELRS232cConnectorComboBox", 0);
    }
    // Types a line on DTE, ends it with Enter, and receives on DCE.
    void sendFromDteAndReceive(const QString &line, int receives) const
    {
        setText("ZELRS232cSendDataLineEdit", line);
        QTest::keyClick(child<QLineEdit>("ZELRS232cSendDataLineEdit"), Qt::Key_Return);
        select("ZELRS232cConnectorComboBox", 1);
        for (int i = 0; i < receives; ++i)
            click("ZELRS232cReceiveButton");
    }
    QString received() const
    {
        return child<QPlainTextEdit>("ZELRS232cReceivedDataTextarea")->toPlainText();
    }
};

class TestZELRS232CTab : public QObject
{
    Q_OBJECT

private slots:
    void configurationRoundTrip_data()
    {
        QTest::addColumn<QByteArray>("config");
        QTest::addColumn<QString>("dte");
        QTest::addColumn<QString>("dce");
        QTest::addColumn<QByteArray>("written");
        QTest::addRow("9,600 8N1, parity byte 1 reads None")
            << hex("70011878") << "9,600/8/1/None/Manual/-/"
            << "9,600/8/1/None/Manual/-/" << hex("70001878");
        QTest::addRow("baud code 0 reads as 9,600")
            << hex("00001878") << "9,600/8/1/None/Manual/-/"
            << "9,600/8/1/None/Manual/-/" << hex("70001878");
        QTest::addRow("parity byte 2 reads None") << hex("70021878") << "9,600/8/1/None/Manual/-/"
                                                  << "9,600/8/1/None/Manual/-/" << hex("70001878");
        QTest::addRow("460,800 7 bits 2 stop Mark, auto flow")
            << hex("16041C7F") << "460,800/7/2/Mark/Auto(Ignore CTS)/-/"
            << "460,800/7/2/Mark/Auto(Consider RTS)/wait/" << hex("16041C7F");
        QTest::addRow("36,400 6 bits Space, DTE waits")
            << hex("58051978") << "36,400/6/1/Space/Manual/wait/"
            << "36,400/6/1/Space/Manual/-/" << hex("58051978");
        QTest::addRow("1,200 5 bits Odd") << hex("AC061878") << "1,200/5/1/Odd/Manual/-/"
                                          << "1,200/5/1/Odd/Manual/-/" << hex("AC061878");
        QTest::addRow("115,200 Even, DTE's RTS seen at DCE")
            << hex("30070878") << "115,200/8/1/Even/Manual/-/RTS"
            << "115,200/8/1/Even/Manual/-/RTS" << hex("30070878");
        QTest::addRow("DCE's four outputs seen at DTE")
            << hex("70001800") << "9,600/8/1/None/Manual/-/CTS RI DSR CD"
            << "9,600/8/1/None/Manual/-/CTS RI DSR CD" << hex("70001800");
    }
    void configurationRoundTrip()
    {
        QFETCH(QByteArray, config);
        QFETCH(QString, dte);
        QFETCH(QString, dce);
        QFETCH(QByteArray, written);
        SerialFixture f;
        QVERIFY(f.start());
        QVERIFY(RawClient().exchange(writeRequest(0xFFFFFF3C, config), f.simThread.udpPort()));
        f.click("ZELRS232cRead");
        QCOMPARE(f.shown(), dte);
        f.select("ZELRS232cConnectorComboBox", 1);
        QCOMPARE(f.shown(), dce);
        f.sim()->clearAccessLog();
        f.click("ZELRS232cWrite");
        QCOMPARE(f.accesses().value(0).data, written);
        QCOMPARE(f.reports.errors, QStringList());
    }
};

QTEST_MAIN(TestZELRS232CTab)
#include "tst_zelrs232ctab.moc"
