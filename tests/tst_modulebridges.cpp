// The GPIB and serial bridge engines on their own, without widgets, against the emulator's modules.
#include "modules/gpibbridge.h"
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
