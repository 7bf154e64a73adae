#include "app/appcontext.h"
#include "modules/zelgpibtab.h"
#include "sim/simgpib.h"
#include "tabfixture.h"
#include "testtable.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

// The ZEL-GPIB tab against the emulator's GPIB module (echo box at GPIB address 2) and registers.
// Each row plays a user's steps; checked: GPIB units then register accesses, texts seen, errors.
class tst_ZelGpib : public QObject
{
    Q_OBJECT

    // Addressing for a send from controller 0 to the echo box at 2, and for a receive from it.
    const QString kToEcho = "5038 403f 4040 4022 5030 ";
    const QString kFromEcho = "5038 403f 4042 4020 5030 ";
    const QString kSendTo2 = "ConnectButton TargetAddress=2 Command=";
    const QString kSendAB = kSendTo2 + "AB SendButton "; // with CR LF: 9 units
    // The echo box holds "AB" CR LF; the units so far are forgotten, the rest is shown as hex.
    const QString kEchoHoldsAB = kSendAB + "clear ShowAsHexCheckBox ";
    SimThread m_sim;
    std::unique_ptr<SimGpib> m_gpib;
    std::unique_ptr<AppContext> m_context;
    std::unique_ptr<ReportCollector> m_reports;
    QStringList m_seen;

    template <typename T = QWidget> T *widget(const QString &name) const
    {
        return m_context->mainWindow()->zelgpibTab()->findChild<T *>("ZELGPIB" + name);
    }
    // Steps: "Name=text" types into ZELGPIB<Name>, "Name" clicks it, "?Name" notes its text ("off"
    // when disabled); "delimiter=N", "clear" (forgets the units so far) and "fault=KIND:N" (the
    // N-th unit of the connection, see SimGpib).
    void play(const QString &script)
    {
        for (const QString &step : script.split(u' ', Qt::SkipEmptyParts)) {
            const QString name = step.section(u'=', 0, 0), value = step.section(u'=', 1);
            SimGpib::Fault fault = SimGpib::Fault::None;
            int request = 0;
            QWidget *seen = widget(name.mid(1));
            if (name == "delimiter")
                widget<QComboBox>("DelimiterComboBox")->setCurrentIndex(value.toInt());
            else if (name == "fault" && SimGpib::parseFault(value, &fault, &request))
                m_gpib->setFault(fault, request);
            else if (name == "up" || name == "down")
                QTest::keyClick(widget("Command"), name == "up" ? Qt::Key_Up : Qt::Key_Down);
            else if (name == "clear")
                m_gpib->clearUnits();
            else if (name == "esc") // pressed while the next step waits
                QTimer::singleShot(50, m_context->mainWindow(), [this] {
                    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget()
                                                                : m_context->mainWindow(),
                                    Qt::Key_Escape);
                });
            else if (name.startsWith(u'?'))
                m_seen << (!seen->isEnabled()            ? "off"
                           : seen->inherits("QTextEdit") ? seen->property("plainText").toString()
                                                         : seen->property("text").toString());
            else if (step.contains(u'='))
                widget<QLineEdit>(name)->setText(value);
            else
                QTest::mouseClick(widget<QAbstractButton>(name), Qt::LeftButton);
        }
    }
    void playRow()
    {
        QFETCH(QString, script);
        play("delimiter=3 " + script);
        const QStringList registers = describe(m_sim.sim()->accessLog());
        QTEST((m_gpib->units() + registers).join(u' '), "traffic");
        QTEST(m_seen.join(u'|'), "seen");
        QTEST(m_reports->errors.join(u'|'), "errors");
    }

private slots:
    void init()
    {
        m_context.reset();
        m_seen.clear();
        QVERIFY(m_sim.start());
        m_gpib = std::make_unique<SimGpib>();
        const quint16 port = m_gpib->start(QHostAddress::LocalHost, 0);
        const QString target = QStringLiteral("127.0.0.1:%1:%2").arg(m_sim.udpPort()).arg(port);
        m_context = std::make_unique<AppContext>(false, false, 0, true, nullptr, target);
        m_reports = std::make_unique<ReportCollector>();
        m_context->mainWindow()->zelgpibTab()->setWaitTimeoutMs(300); // instead of 10 s
        m_sim.sim()->clearAccessLog();
    }

    // clang-format off
    void sendSequence_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        QTest::addRow("one byte") << "delimiter=0 " + kSendTo2 + "A SendButton" << kToEcho + "2141" << "" << "";
        QTest::addRow("CR LF") << kSendTo2 + "*IDN? SendButton" << kToEcho + "202a 2049 2044 204e 203f 200d 210a" << "" << "";
    }
    void sendSequence() { playRow(); }

    void receiveEndings_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        const QString reads = kFromEcho + "3000 3000 3000 3000";
        QTest::addRow("CR LF removed") << kEchoHoldsAB + "ReceiveButton ?ReceivedData" << reads << "41 42" << "";
        QTest::addRow("END, data kept") << kEchoHoldsAB + "delimiter=0 ReceiveButton ?ReceivedData" << reads << "41 42 0d 0a" << "";
        QTest::addRow("LF removed, CR kept") << kEchoHoldsAB + "delimiter=2 ReceiveButton ?ReceivedData" << reads << "41 42 0d" << "";
        QTest::addRow("CR, rest unaddressed") << kEchoHoldsAB + "delimiter=1 ReceiveButton delimiter=0 ReceiveButton ?ReceivedData" << reads << "41 42\n0a" << "";
        QTest::addRow("length 3, rest unaddressed") << kEchoHoldsAB + "delimiter=0 MaxReceiveLength=3 ReceiveButton MaxReceiveLength=0 ReceiveButton ?ReceivedData" << reads << "41 42 0d\n0a" << "";
        QTest::addRow("connected anew, addressed anew") << kEchoHoldsAB + "delimiter=0 MaxReceiveLength=1 ReceiveButton ConnectButton ConnectButton MaxReceiveLength=0 ReceiveButton ?ReceivedData" << kFromEcho + "3000 " + reads.chopped(5) << "41\n42 0d 0a" << "";
    }
    void receiveEndings() { playRow(); }

    void receivedBytesAreText_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        QTest::addRow("markup stays text") << kSendTo2 + "a<b>x</b> SendButton clear ReceiveButton ?ReceivedData" << kFromEcho + QStringList(11, "3000").join(' ') << "a<b>x</b>" << "";
        QTest::addRow("Esc gives the wait up") << "fault=no-reply:3 " + kSendTo2 + "A esc SendButton" << "5038 403f 4040" << "" << "GPIB timeout (The wait for the reply was given up)";
    }
    void receivedBytesAreText() { playRow(); }

    // Query: send, then receive, in one click; the commands sent come back with Up and Down.
    void queryAndHistory_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        QTest::addRow("identification in one click") << "ConnectButton TargetAddress=1 Command=*IDN? QueryButton ?ReceivedData" << "5038 403f 4040 4021 5030 202a 2049 2044 204e 203f 200d 210a 5038 403f 4041 4020 5030 " + QStringList(28, "3000").join(' ') << "MAVIX,SIM-GPIB-METER,0,1.0" << "";
        QTest::addRow("history") << "clear ConnectButton TargetAddress=2 Command=AB QueryButton Command=CD SendButton Command=draft up ?Command up ?Command up ?Command down down ?Command" << kToEcho + "2041 2042 200d 210a " + kFromEcho + "3000 3000 3000 3000 " + kToEcho + "2043 2044 200d 210a" << "CD|AB|AB|draft" << "";
        QTest::addRow("no query before connecting") << "?QueryButton" << "" << "off" << "";
    }
    void queryAndHistory() { playRow(); }

    void failureDisconnects_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        const QString packet = "GPIB error packet|GPIB undefined error";
        QTest::addRow("error packet to a talk address") << "fault=error-packet:3 " + kSendAB + "?ConnectButton ?SendButton" << "5038 403f 4040" << "Connect|off" << packet;
        QTest::addRow("no reply to a data byte") << "fault=no-reply:7 " + kSendAB + "?ConnectButton ?SendButton" << kToEcho + "2041 2042" << "Connect|off" << "GPIB timeout";
        QTest::addRow("error packet to a read") << "fault=error-packet:15 " + kEchoHoldsAB + "ReceiveButton ?ConnectButton" << kFromEcho + "3000" << "Connect" << packet;
        QTest::addRow("no reply to Interface Clear") << "fault=no-reply:10 " + kEchoHoldsAB + "IFCButton ?ConnectButton" << "502f" << "Connect" << "GPIB timeout";
    }
    void failureDisconnects() { playRow(); }

    // Written with the permission steps, then read back into emptied fields.
    void settingsRoundTrip_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        const QString back = " SettingWrite ControllerAddress= Timeout= SettingRead ?ControllerAddress ?Timeout";
        const QString obtain = "write fffffcff 1 [00] write fffe1000 4 ", release = " write fffffcff 1 [ff] read fffe1000 4";
        QTest::addRow("30, 655350 ms") << "ControllerAddress=30 Timeout=655350" + back << obtain + "[1e00ffff]" + release << "30|655350" << "";
        QTest::addRow("15 ms: 1 unit, shown 10") << "ControllerAddress=0 Timeout=15" + back << obtain + "[00000001]" + release << "0|10" << "";
    }
    void settingsRoundTrip() { playRow(); }

    void refusedFieldsMakeNoTraffic_data()
    {
        columns<QString, QString, QString, QString>("script", "traffic", "seen", "errors");
        const QString controller = "Controller GPIB address must be 0 to 30";
        QTest::addRow("send to 31") << "ConnectButton TargetAddress=31 SendButton ?ConnectButton" << "" << "Disconnect" << "Target GPIB address must be 0 to 30";
        QTest::addRow("receive as -1") << "ConnectButton ControllerAddress=-1 ReceiveButton ?ConnectButton" << "" << "Disconnect" << controller;
        QTest::addRow("empty command") << "ConnectButton Command= SendButton ?ConnectButton" << "" << "Disconnect" << "GPIB command is empty";
        QTest::addRow("write as abc") << "ControllerAddress=abc SettingWrite" << "" << "" << controller;
        QTest::addRow("write 655359 ms") << "Timeout=655359 SettingWrite" << "" << "" << "Timeout must be 0 to 655350";
    }
    void refusedFieldsMakeNoTraffic() { playRow(); }
    // clang-format on
};

QTEST_MAIN(tst_ZelGpib)
#include "tst_zelgpib.moc"
