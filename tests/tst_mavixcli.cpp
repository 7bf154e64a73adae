// The mavix program run as scripts run it, against mavix-sim processes on loopback.
#include "simclient.h"
#include "testtable.h"

#include <QCryptographicHash>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

constexpr int kProcessTimeoutMs = 60000;
constexpr qint64 k64MiB = 64 * 1024 * 1024;

// A mavix-sim on ports the system picks; `target` is the --target text for it.
struct Sim
{
    QProcess process;
    QString udpPort, target;
    explicit Sim(const QStringList &arguments)
    {
        process.start(MAVIX_SIM_PATH, QStringList{"--udp-port=0", "--tcp-port=0"} + arguments);
        QByteArray line; // a module's line may come first
        for (int i = 0; i < 3 && !line.contains(" udp "); ++i) {
            QTRY_VERIFY_WITH_TIMEOUT(process.canReadLine(), kProcessTimeoutMs);
            line = process.readLine();
        }
        const auto words = line.simplified().split(' '); // udp A:U tcp A:T
        target = "127.0.0.1:" + (udpPort = words.value(2).split(':').value(1)) + ':' +
                 words.value(4).split(':').value(1);
    }
    QByteArray registers(const QString &state)
    {
        const QStringList at = state.split('=');
        const QByteArray request = readRequest(at[0].toUInt(nullptr, 16), at[1].size() / 2);
        return RawClient().bytes(request, udpPort.toUShort()).mid(8).toHex().toUpper();
    }
    ~Sim() { process.terminate(), process.waitForFinished(kProcessTimeoutMs); }
};

static std::pair<int, QString> mavix(const QStringList &arguments)
{
    QProcess p;
    p.start(MAVIX_CLI_PATH, arguments);
    p.waitForFinished(kProcessTimeoutMs);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput() + p.readAllStandardError())};
}

class TestMavixCli : public QObject
{
    Q_OBJECT

private slots:
    void commandLines_data()
    {
        // clang-format off
        // fault: mavix-sim's options; state: ADDRESS=HEX in the emulator afterwards
        columns<QString, QString, int, QString, QString>("command", "fault", "exitCode", "output", "state");
        QTest::addRow("write, then the bytes are there") << "write 1000 01 02 0a FF" << "" << 0 << "UDP writing successed" << "1000=01020AFF";
        QTest::addRow("write of a file above 255 bytes refused") << "write 1000 @" MAVIX_CLI_PATH << "" << 1 << "Data length must be 0 to 255" << "1000=00000000";
        QTest::addRow("read prints a dump with addresses") << "read FFFFFF08 18" << "" << 0 << "FFFFFF08 : 18 19 1A 1B 1C 1D 1E 1F A1 5A 02 00 C0 A8 00 10 \nFFFFFF18 : 7F 00 \n" << "";
        QTest::addRow("read as JSON") << "--json read FFFFFF12 6" << "" << 0 << "{\"address\":\"FFFFFF12\",\"data\":\"0200C0A80010\",\"length\":6}\n" << "";
        QTest::addRow("write into the top 64 KiB refused") << "write FFFF0000 01" << "" << 1 << "Writing in domain after 0xFFFF0000 is not permitted" << "FFFF0000=00";
        QTest::addRow("write into the top 64 KiB in expert mode") << "write --expert FFFF0000 01" << "" << 0 << "" << "FFFF0000=01";
        QTest::addRow("set writes the EEPROM copy") << "set --eeprom ip=10.1.2.3 keep-alive=on" << "" << 0 << "Writing Mavix setting is successed" << "FFFFFC10=A55A0200C0A800100A010203";
        QTest::addRow("set refuses 0.0.0.0, writes nothing") << "set --eeprom ip=0.0.0.0" << "" << 1 << "0.0.0.0 is invalid" << "FFFFFC12=0200C0A800107F000001";
        QTest::addRow("set refuses an unknown key") << "set mac=00:11:22:33:44:55" << "" << 1 << "mac" << "FFFFFF12=0200C0A80010";
        QTest::addRow("UDP port change refused without --yes") << "set udp-port=4660" << "" << 1 << "It is recommended to enable EEPROM Access" << "FFFFFF12=0200C0A80010";
        QTest::addRow("help names the GUI's default target") << "--help" << "" << 0 << "192.168.10.16:4660:24)" << "";
        QTest::addRow("recv into a file that cannot open") << "recv /nonexistent/r" << "" << 5 << "File cannot open" << "";
        QTest::addRow("send to a device that takes nothing") << "--timeout 300 send " MAVIX_CLI_PATH << "--tcp-mode sink --stuck" << 5 << "TCP write is timeout" << "";
        QTest::addRow("send to a closed data port") << "send " MAVIX_CLI_PATH " --target 127.0.0.1:1:1" << "" << 5 << "Fail to connect to device" << "";
        QTest::addRow("a late reply is a time-out") << "--timeout 300 settings" << "--delay 2000" << 2 << "Response to reading Mavix Setting is timeout" << "";
        for (const auto &[fault, code] : std::initializer_list<std::pair<const char *, int>>{{"--drop-every 1", 2}, {"--wrong-vertype", 3}, {"--no-ack", 3}, {"--short-reply", 3}, {"--wrong-id", 2}, {"--flip-rw", 2}}) // a reply with another ID or R/W bit is not the reply: the wait goes on
            QTest::addRow("%s gives %d", fault, code) << "--timeout 300 read 0 4" << fault << code << "" << "";
        QTest::addRow("bus error") << "write 1000 01" << "--bus-error" << 4 << "WREN Recv, Bus Error occured" << "";
        QTest::addRow("get decodes registers and fields by name") << "get settings.ip_address settings.flags.keep_alive rs232c.config.baud" << "" << 0 << "settings.ip_address = 127.0.0.1\nsettings.flags.keep_alive = off\nrs232c.config.baud = b9600\n" << "";
        QTest::addRow("get of an unknown name") << "get settings.nothing" << "" << 1 << "No register is named settings.nothing" << "";
        QTest::addRow("put changes only the field's bits") << "put --map " MAVIX_DOCS_DIR "/scratch-map.toml scratch.ctrl.mode=loopback scratch.ctrl.divider=255" << "" << 0 << "scratch.ctrl = 0x0000FF20 (was 0x00000000)" << "1000=0000FF20";
        QTest::addRow("put refuses a read-only register") << "put --map " MAVIX_DOCS_DIR "/scratch-map.toml scratch.status.busy=1" << "" << 1 << "scratch.status is read-only" << "1004=00000000";
        QTest::addRow("put refuses an unknown named value") << "put --map " MAVIX_DOCS_DIR "/scratch-map.toml scratch.ctrl.mode=fast" << "" << 1 << "scratch.ctrl.mode: \"fast\" is neither a number nor one of: idle, run, loopback, test" << "";
        QTest::addRow("put in the device's own area needs --expert") << "put settings.flags.keep_alive=on" << "" << 1 << "settings.flags: Writing in domain after 0xFFFF0000 is not permitted" << "FFFFFF10=A1";
        QTest::addRow("put --expert of a field") << "put --expert settings.flags.keep_alive=on" << "" << 0 << "settings.flags = 0xA5 (was 0xA1)" << "FFFFFF10=A5";
        QTest::addRow("regs as JSON") << "--json regs gpib.timeout_10ms" << "" << 0 << "{\"access\":\"rw\",\"address\":\"0xFFFE1002\",\"description\":\"Bus time-out in units of 10 ms\",\"fields\":[],\"map\":\"built-in\",\"name\":\"gpib.timeout_10ms\",\"size\":2}\n" << "";
        QTest::addRow("an IP-XACT map") << "--json get --map " MAVIX_DOCS_DIR "/ipxact-sample.xml timer.control" << "" << 0 << "{\"fields\":{\"prescale\":\"div1\",\"start\":\"0\"},\"name\":\"timer.control\",\"raw\":\"0x00000000\",\"value\":\"0x00000000\"}" << "";
        QTest::addRow("gpib query prints the answer") << "gpib query 1 *IDN?" << "--gpib" << 0 << "MAVIX,SIM-GPIB-METER,0,1.0\n" << "";
        QTest::addRow("gpib duplicated reply unit") << "gpib query 2 AB" << "--gpib --gpib-fault duplicate:5" << 3 << "GPIB reply does not belong to the request" << "";
        QTest::addRow("gpib set writes with the permission") << "gpib set controller=30" << "--gpib" << 0 << "controller 30" << "FFFE1000=1E000064";
        QTest::addRow("serial send") << "serial send dte hello" << "--rs232c" << 0 << "ZEL-RS232C sending successed" << "";
        QTest::addRow("serial set refuses an unknown value") << "serial set parity=both" << "--rs232c" << 1 << "parity must be one of none, mark, space, odd, even, not both" << "FFFFFF3C=70011878";
        // clang-format on
    }
    void commandLines()
    {
        QFETCH(QString, command);
        QFETCH(QString, fault);
        QFETCH(int, exitCode);
        QFETCH(QString, output);
        QFETCH(QString, state);
        Sim sim(fault.split(' ', Qt::SkipEmptyParts));
        const auto [code, said] = mavix(QStringList{"--target", sim.target} + command.split(' '));
        QVERIFY2(said.contains(output), qPrintable(said));
        QCOMPARE(code, exitCode);
        if (!state.isEmpty())
            QCOMPARE(sim.registers(state), state.section('=', 1).toLatin1());
    }
    void dumpChangeDiffLoad()
    {
        QTemporaryDir dir;
        Sim sim({});
        const QStringList map{"--target", sim.target, "--map", MAVIX_DOCS_DIR "/scratch-map.toml"};
        QCOMPARE(mavix({"--target", sim.target, "write", "1000", "00", "00", "00", "05"}).first, 0);
        QProcess dump;
        dump.setStandardOutputFile(dir.filePath("snap"));
        dump.start(MAVIX_CLI_PATH, QStringList{"dump", "scratch"} + map);
        QVERIFY(dump.waitForFinished(kProcessTimeoutMs) && dump.exitCode() == 0);
        QCOMPARE(mavix(QStringList{"put", "scratch.ctrl.mode=run", "scratch.threshold=300"} + map).first, 0);
        QCOMPARE(mavix(QStringList{"diff", dir.filePath("snap")} + map).second,
                 "scratch.ctrl: 0x00000005 -> 0x00000015\n  .mode: idle -> run\nscratch.threshold: 0 -> "
                 "300\nRegisters changed since the snapshot: 2\n");
        QProcess refused; // answers "n" to the question
        refused.start(MAVIX_CLI_PATH, QStringList{"load", dir.filePath("snap")} + map);
        refused.write("n\n");
        refused.closeWriteChannel();
        QVERIFY(refused.waitForFinished(kProcessTimeoutMs) && refused.exitCode() == 1);
        QCOMPARE(sim.registers("1000=00000015"), "00000015");
        QCOMPARE(mavix(QStringList{"load", "--yes", dir.filePath("snap")} + map).first, 0);
        QCOMPARE(sim.registers("1000=000000050000"), "000000050000");
        QVERIFY(mavix(QStringList{"diff", dir.filePath("snap")} + map).second.startsWith("Registers changed since the snapshot: 0"));
    }
    void bigTransfersKeepEveryByte()
    {
        QTemporaryDir dir;
        QFile data(dir.filePath("data")), received(dir.filePath("r"));
        QByteArray block(k64MiB, Qt::Uninitialized);
        QRandomGenerator(15).fillRange(reinterpret_cast<quint32 *>(block.data()), k64MiB / 4);
        QVERIFY(data.open(QIODevice::WriteOnly) && data.write(block) == k64MiB && data.flush());
        const QByteArray expected = QCryptographicHash::hash(block, QCryptographicHash::Sha256);
        Sim source({"--tcp-mode", "source", "--source-file", data.fileName(), "--keep-open"});
        const QStringList recv{"recv", received.fileName(), "--bytes", "67108864"};
        QCOMPARE(mavix(QStringList{"--target", source.target} + recv).first, 0);
        QVERIFY(received.open(QIODevice::ReadOnly) &&
                QCryptographicHash::hash(received.readAll(), QCryptographicHash::Sha256) ==
                    expected);
        Sim sink({"--tcp-mode", "sink"});
        QCOMPARE(mavix({"--target", sink.target, "send", data.fileName()}).first, 0);
        QTRY_VERIFY(sink.process.peek(4096).contains(expected.toHex()));
        QVERIFY(sink.process.peek(4096).contains("tcp: 67108864 bytes in"));
    }
    void ctrlCEndsAReceiveCleanly()
    {
        QTemporaryDir dir;
        Sim source({"--tcp-mode", "source", "--source-rate", "1048576"});
        QProcess process;
        process.start(MAVIX_CLI_PATH, {"--target", source.target, "recv", dir.filePath("r")});
        QTRY_VERIFY_WITH_TIMEOUT(QFile(dir.filePath("r")).size() > 0, 10000);
        ::kill(pid_t(process.processId()), SIGINT);
        QVERIFY(process.waitForFinished(kProcessTimeoutMs) && process.exitCode() == 0);
        const QByteArray summary = process.readAllStandardError(); // "N bytes received into ..."
        QCOMPARE(QFile(dir.filePath("r")).size(), summary.split(' ').value(0).toLongLong());
    }
};

QTEST_GUILESS_MAIN(TestMavixCli)
#include "tst_mavixcli.moc"
