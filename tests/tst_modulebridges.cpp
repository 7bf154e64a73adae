// The GPIB and serial bridge engines on their own, without widgets, against the emulator's modules.
#include "app/accessgate.h"
#include "modules/gpibbridge.h"
#include "modules/monitortext.h"
#include "modules/sendline.h"
#include "modules/serialbridge.h"
#include "reportcollector.h"
#include "sim/mavixsim.h"
#include "sim/simgpib.h"
#include "sim/simserialbridge.h"
#include "sim/simthread.h"
#include "testtable.h"
#include "wren/wrenagent.h"

#include <QTcpSocket>
#include <QtTest>

constexpr int kTabTimeoutMs = 400;

QStringList describe(const QList<SimAccess> &log)
{
    QStringList lines;
    for (const SimAccess &access : log)
        lines << QStringLiteral("%1 %2 %3 [%4]")
                     .arg(access.direction == SimAccess::Write ? "write" : "read")
                     .arg(access.address, 8, 16, QLatin1Char('0'))
                     .arg(access.length)
                     .arg(QString::fromLatin1(access.data.toHex()));
    return lines;
}

class TestModuleBridges : public QObject
{
    Q_OBJECT

    SimThread m_sim;
    SimGpib m_gpib;
    std::unique_ptr<WrenAgent> m_agent;
    std::unique_ptr<ReportCollector> m_reports;

private slots:
    void init()
    {
        QVERIFY(m_sim.start());
        QVERIFY(m_gpib.start(QHostAddress::LocalHost, 0) != 0);
        MavixSim *emulator = m_sim.sim();
        bool listening = false;
        QMetaObject::invokeMethod(
            emulator, [&] { listening = (new SimSerialBridge(emulator, emulator))->start(0, 0); },
            Qt::BlockingQueuedConnection);
        QVERIFY(listening);
        m_agent = std::make_unique<WrenAgent>();
        m_agent->setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
        m_reports = std::make_unique<ReportCollector>();
        m_gpib.setFault(SimGpib::Fault::None, 0);
        m_gpib.clearUnits();
        m_sim.sim()->clearAccessLog();
    }
    void cleanup()
    {
        m_agent.reset();
        m_gpib.stop();
        m_sim.stop();
    }

    // clang-format off
    void unitEncoding_data()
    {
        columns<QByteArray, QByteArray>("unit", "hex");
        const auto row = [](const char *name, const GpibUnit &unit, const char *hex) { QTest::addRow("%s", name) << unit.toByteArray().toHex() << QByteArray(hex); };
        row("bus control, second flag only", GpibUnit::busControl(false, true), "5028");
        row("talk address 30", GpibUnit::talkAddress(30), "405e");
        row("listen address 30", GpibUnit::listenAddress(30), "403e");
    }
    void unitEncoding() { QFETCH(QByteArray, unit); QTEST(unit, "hex"); }

    // A typed send line and the bytes it stands for, or why it stands for none.
    void sendLine_data()
    {
        columns<bool, QString, QByteArray, QString>("hex", "line", "bytes", "error");
        const QString unknown = "Unknown escape at position %1; use \\r, \\n, \\t, \\\\ or \\xNN";
        QTest::addRow("escapes") << false << "a\\r\\n\\t\\\\b" << QByteArray("610d0a095c62") << "";
        QTest::addRow("\\xNN in either case") << false << "\\x00\\xfF" << QByteArray("00ff") << "";
        QTest::addRow("UTF-8 around an escape") << false << "\u00b5\\x41\u00b5" << QByteArray("c2b541c2b5") << "";
        QTest::addRow("\\x with one digit") << false << "ab\\x4" << QByteArray() << "\\x at position 3 needs two hex digits";
        QTest::addRow("\\x with a sign") << false << "\\x+1" << QByteArray() << "\\x at position 1 needs two hex digits";
        QTest::addRow("unknown escape") << false << "ok\\q" << QByteArray() << unknown.arg(3);
        QTest::addRow("backslash at the end") << false << "ab\\" << QByteArray() << unknown.arg(3);
        QTest::addRow("hex, pairs and runs") << true << " 48 656c6C\t6f " << QByteArray("48656c6c6f") << "";
        QTest::addRow("hex, odd run") << true << "48 656" << QByteArray() << "\"656\" is not a run of hex digit pairs";
        QTest::addRow("hex, not hex") << true << "0x41" << QByteArray() << "\"0x41\" is not a run of hex digit pairs";
    }
    void sendLine()
    {
        QFETCH(bool, hex);
        QFETCH(QString, line);
        const SendLine::Parsed parsed = SendLine::parse(line, hex ? SendLine::Form::Hex : SendLine::Form::Text);
        QTEST(parsed.bytes.toHex(), "bytes");
        QTEST(parsed.error, "error");
    }

    // Pieces as they arrive ("E:" from DTE, "C:" from DCE), and the monitor's text.
    void monitorText_data()
    {
        columns<bool, bool, QByteArrayList, QString>("hex", "stamps", "pieces", "shown");
        QTest::addRow("a line in two pieces") << false << false << QByteArrayList{"E:hel", "E:lo\r\n", "E:next"} << "DTE> hello\nDTE> next";
        QTest::addRow("CR LF split, empty line kept") << false << false << QByteArrayList{"E:a\r", "E:\n\nb"} << "DTE> a\nDTE> \nDTE> b";
        QTest::addRow("the other connector starts a line") << false << false << QByteArrayList{"E:ab", "C:cd", "E:ef"} << "DTE> ab\nDCE> cd\nDTE> ef";
        QTest::addRow("UTF-8 split") << false << false << QByteArrayList{"C:\xc2", "C:\xb5"} << "DCE> \u00b5";
        QTest::addRow("a character cut off loses nothing after it") << false << false << QByteArrayList{"C:\xe3", "C:ab"} << "DCE> \ufffdab";
        QTest::addRow("control characters escaped") << false << false << QByteArrayList{QByteArray("E:\x00\x7f\tx", 6)} << "DTE> \\x00\\x7f\tx";
        QTest::addRow("hex, 16 bytes a line") << true << false << QByteArrayList{"E:abcdefghijklmnopq"} << "DTE> 61 62 63 64 65 66 67 68 69 6a 6b 6c 6d 6e 6f 70\nDTE> 71";
        QTest::addRow("time stamps, a line a piece") << false << true << QByteArrayList{"E:a", "E:b\n"} << "12:34:56.789 DTE> a\n12:34:56.789 DTE> b";
    }
    void monitorText()
    {
        QFETCH(bool, hex);
        QFETCH(bool, stamps);
        QFETCH(QByteArrayList, pieces);
        MonitorText text;
        text.setForm(hex ? MonitorText::Form::Hex : MonitorText::Form::Text);
        text.setTimeStamps(stamps);
        QString shown;
        for (const QByteArray &piece : pieces)
            shown += text.add(piece.startsWith('E') ? Rs232c::Connector::Dte : Rs232c::Connector::Dce, piece.mid(2), QTime(12, 34, 56, 789));
        QTEST(shown, "shown");
    }

    // A query of the echo box at 2; fault: the emulator's misbehaviour (see SimGpib).
    void gpibQuery_data()
    {
        columns<QString, bool, QString, QString, QString>("fault", "done", "units", "data", "errors");
        QTest::addRow("echoed") << "" << true << "5038 403f 4040 4022 5030 2041 2142 5038 403f 4042 4020 5030 3000 3000" << "AB" << "";
        QTest::addRow("a duplicated reply unit is a bad reply") << "duplicate:5" << false << "5038 403f 4040 4022 5030" << "" << "GPIB reply does not belong to the request";
    }
    // clang-format on
    void gpibQuery()
    {
        QFETCH(QString, fault);
        SimGpib::Fault kind = SimGpib::Fault::None;
        int request = 0;
        if (SimGpib::parseFault(fault, &kind, &request))
            m_gpib.setFault(kind, request);
        GpibBridge bridge(m_agent.get());
        bridge.setWaitTimeoutMs(kTabTimeoutMs);
        QVERIFY(bridge.connectTo(QStringLiteral("127.0.0.1"), m_gpib.port()));
        QByteArray data;
        QTEST(bridge.query({0, SimGpib::kEchoAddress}, "AB", {}, 0, &data), "done");
        QTEST(m_gpib.units().join(u' '), "units");
        QTEST(QString::fromLatin1(data), "data");
        QTEST(m_reports->errors.join(u'|'), "errors");
        QCOMPARE(bridge.isConnected(), m_reports->errors.isEmpty());
    }

    // The permission is released even though the settings write itself was refused.
    void eepromReleasedAfterAFailedWrite()
    {
        SimFaults faults;
        faults.busErrorRange = true;
        faults.busErrorFirst = faults.busErrorLast = GpibModuleSetting::kAddress;
        m_sim.sim()->setFaults(faults);
        GpibBridge bridge(m_agent.get());
        bridge.setWaitTimeoutMs(kTabTimeoutMs);
        QVERIFY(!bridge.writeSetting(GpibModuleSetting{}));
        QCOMPARE(describe(m_sim.sim()->accessLog()),
                 (QStringList{"write fffffcff 1 [00]", "write fffe1000 4 [00000000]",
                              "write fffffcff 1 [ff]"}));
    }

    // The command line's monitor: what DTE sends shows until Ctrl+C gives the wait up (done), or
    // until the device ends the connection (a newer one to DCE takes its place).
    void serialMonitorEnds_data()
    {
        columns<int, bool, QString>("peerConnector", "done", "errors");
        QTest::addRow("given up") << 0 << true << "";
        QTest::addRow("ended by the device") << 1 << false << "ZEL-RS232C is not connected";
    }
    void serialMonitorEnds()
    {
        QFETCH(int, peerConnector);
        SerialBridge bridge(m_agent.get());
        bridge.setTimeouts(kTabTimeoutMs, 2000);
        QVERIFY(bridge.readRunningPorts());
        QVERIFY(bridge.connectTo(Rs232c::Connector::Dce));
        QTcpSocket peer;
        const auto connector = Rs232c::Connector(peerConnector);
        QTimer::singleShot(0, &peer, [&] {
            peer.connectToHost(QHostAddress::LocalHost, bridge.runningPort(connector));
            peer.write("hi");
        });
        QByteArray shown;
        QTEST(bridge.monitor(Rs232c::Connector::Dce,
                             [&](const QByteArray &data) {
                                 shown += data;
                                 bridge.gate()->abort();
                             }),
              "done");
        QCOMPARE(shown, peerConnector == 0 ? QByteArray("hi") : QByteArray());
        QTEST(m_reports->errors.join(u'|'), "errors");
        QCOMPARE(bridge.isMonitored(Rs232c::Connector::Dce), false);
    }

    // A receive without a length takes 1 MiB at most, says so, and leaves the rest.
    void serialReceiveIsCapped()
    {
        SerialBridge bridge(m_agent.get());
        bridge.setTimeouts(kTabTimeoutMs, 2000);
        QVERIFY(bridge.readRunningPorts());
        QVERIFY(bridge.connectTo(Rs232c::Connector::Dte));
        QVERIFY(bridge.connectTo(Rs232c::Connector::Dce));
        const QByteArray sent(1280 * 1024, 'x');
        QVERIFY(bridge.send(Rs232c::Connector::Dte, sent));
        QTcpSocket *dce = nullptr;
        for (QTcpSocket *socket : bridge.findChildren<QTcpSocket *>())
            if (socket->peerPort() == bridge.runningPort(Rs232c::Connector::Dce))
                dce = socket;
        QVERIFY(dce);
        QTRY_COMPARE_WITH_TIMEOUT(dce->bytesAvailable(), 1048576, 10000);
        QByteArray first, rest;
        QVERIFY(bridge.receive(Rs232c::Connector::Dce, 0, &first));
        QCOMPARE(first.size(), 1048576);
        QVERIFY(m_reports->results.contains(
            "Receiving stopped at 1048576 bytes; the rest waits for the next receive"));
        QTRY_COMPARE_WITH_TIMEOUT(dce->bytesAvailable(), 262144, 10000);
        QVERIFY(bridge.receive(Rs232c::Connector::Dce, 0, &rest));
        QCOMPARE(rest.size(), 262144);
    }
};

QTEST_GUILESS_MAIN(TestModuleBridges)
#include "tst_modulebridges.moc"
