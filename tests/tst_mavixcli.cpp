// The mavix program run as scripts run it, against mavix-sim processes on loopback.
#include "simclient.h"
#include "testtable.h"

#include <QCryptographicHash>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

// Whether the process has its own SIGINT handler yet: a slow start (a sanitizer build on a busy
// machine) must not turn the test's Ctrl+C into the default kill.
static bool catchesSigint(qint64 pid)
{
    QFile status(QStringLiteral("/proc/%1/status").arg(pid));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    for (const QByteArray &line : status.readAll().split('\n'))
        if (line.startsWith("SigCgt:"))
            return line.mid(7).trimmed().toULongLong(nullptr, 16) & (1ULL << (SIGINT - 1));
    return false;
}

static std::pair<int, QString> mavix(const QStringList &arguments)
{
    QProcess p;
    p.start(MAVIX_CLI_PATH, arguments);
    p.waitForFinished(kProcessTimeoutMs);
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromUtf8(p.readAllStandardOutput() + p.readAllStandardError())};
}

static QByteArray readAll(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
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
        // Aimed at the device named, or refused as input (exit 1), never a time-out.
        QTest::addRow("a host name resolves") << "read FFFFFF12 6 --target localhost:%udp:%tcp" << "" << 0 << "02 00 C0 A8 00 10" << "";
        QTest::addRow("an unknown host is refused input") << "read 0 4 --target no-such-host.invalid" << "" << 1 << "Cannot find the host no-such-host.invalid" << "";
        QTest::addRow("a port out of range is refused input") << "read 0 4 --target 127.0.0.1:99999" << "" << 1 << "UDP Port number must be 0 to 65535" << "";
        // Written as typed: hex pairs or contiguous hex; anything else names the bad token.
        QTest::addRow("contiguous hex") << "write 1000 CAFE BA be" << "" << 0 << "" << "1000=CAFEBABE";
        QTest::addRow("a colon is a bad token") << "write 1000 AA BB : CC" << "" << 1 << "space: \":\" is not" << "1000=000000";
        QTest::addRow("an odd-length token") << "write 1000 ABC" << "" << 1 << "\"ABC\" is not" << "1000=0000";
        QTest::addRow("no data") << "write 1000" << "" << 1 << "No data to write" << "";
        QTest::addRow("no file after @") << "write 1000 @" << "" << 1 << "No file name after @" << "";
        QTest::addRow("an empty file") << "write 1000 @/dev/null" << "" << 1 << "/dev/null is empty" << "";
        QTest::addRow("a FIFO without writer does not block") << "write 1000 @%fifo" << "" << 1 << "is empty" << "";
        QTest::addRow("the last byte is FFFFFFFF") << "read FFFFFFFF 1" << "" << 0 << "FFFFFFFF : " << "";
        QTest::addRow("a negative length") << "read 1000 -1" << "" << 1 << "Data length must be 0 to 255" << "";
        QTest::addRow("a negative option value is shown as typed") << "read 0 4 --timeout -5" << "" << 1 << "from 1, not -5\n" << "";
        // Files: written into as named, untouched on a failure, a short receive fails.
        QTest::addRow("recv without a connection keeps the file") << "recv %file --target 127.0.0.1:%udp:1" << "" << 5 << "Fail to connect" << "FILE=6f6c64";
        QTest::addRow("read --out into a FIFO keeps the FIFO") << "read FFFFFF12 6 --out %fifo" << "" << 0 << "" << "FIFO=0200c0a80010";
        QTest::addRow("a short receive is a failure") << "recv %file --bytes 5000" << "--tcp-mode source --source-bytes 1000" << 5 << "Only 1000 of 5000 bytes received" << "FILE=1000";
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
        QTemporaryDir dir;
        const QString file = dir.filePath("f"), fifo = dir.filePath("p");
        QVERIFY(::mkfifo(QFile::encodeName(fifo).constData(), 0600) == 0);
        const int reader = ::open(QFile::encodeName(fifo).constData(), O_RDONLY | O_NONBLOCK);
        QFile old(file);
        QVERIFY(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
        old.close();
        command.replace("%udp", sim.udpPort).replace("%tcp", sim.target.section(':', 2));
        command.replace("%file", file)
            .replace("%fifo", fifo); // a FIFO read here, written by nobody
        const auto [code, said] = mavix(QStringList{"--target", sim.target} + command.split(' '));
        QVERIFY2(said.contains(output), qPrintable(said));
        QCOMPARE(code, exitCode);
        QByteArray inFifo(64, 0);
        inFifo.resize(std::max<qint64>(0, ::read(reader, inFifo.data(), 64)));
        ::close(reader);
        if (state.startsWith("FILE=")) // the file's bytes, or its size
            QCOMPARE(state == "FILE=1000" ? QByteArray::number(QFileInfo(file).size())
                                          : readAll(file).toHex(),
                     state.mid(5).toLatin1());
        else if (state.startsWith("FIFO="))
            QVERIFY(QFileInfo::exists(fifo) && !QFileInfo(fifo).isFile() &&
                    inFifo.toHex() == state.mid(5));
        else if (!state.isEmpty())
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
        QCOMPARE(
            mavix(QStringList{"put", "scratch.ctrl.mode=run", "scratch.threshold=300"} + map).first,
            0);
        QCOMPARE(
            mavix(QStringList{"diff", dir.filePath("snap")} + map).second,
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
        QVERIFY(mavix(QStringList{"diff", dir.filePath("snap")} + map)
                    .second.startsWith("Registers changed since the snapshot: 0"));
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
    // Scripts read these keys: renaming one is a change of interface.
    void jsonKeys_data()
    {
        columns<QString, QString, QString>("command", "fault", "keys");
        // clang-format off
        QTest::addRow("read") << "read 1000 2" << "" << "address data length";
        QTest::addRow("read --out") << "read 1000 2 --out %file" << "" << "address data file length";
        QTest::addRow("write") << "write 1000 0102" << "" << "address data length";
        QTest::addRow("settings") << "settings" << "" << "copy ipAddress macAddress tcpCommandPort tcpDataPort tcpKeepAliveBufferEmptyMs tcpKeepAliveBufferNotEmptyMs tcpKeepAliveEnabled tcpMaxSegmentSize tcpReconnectIntervalMs tcpRetransmissionTimerMs tcpTimeoutConnectingMs tcpTimeoutDisconnectMs udpPort";
        QTest::addRow("recv") << "recv %file --bytes 10" << "--tcp-mode source" << "bytes command elapsedMs file interrupted";
        QTest::addRow("send") << "send %file" << "--tcp-mode sink" << "bytes command elapsedMs file fileSize interrupted";
        // clang-format on
    }
    void jsonKeys()
    {
        QFETCH(QString, command);
        QFETCH(QString, fault);
        Sim sim(fault.split(' ', Qt::SkipEmptyParts));
        QTemporaryDir dir;
        QFile file(dir.filePath("f"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("0123456789") == 10);
        file.close();
        QProcess p;
        p.start(MAVIX_CLI_PATH, QStringList{"--json", "--target", sim.target} +
                                    command.replace("%file", file.fileName()).split(' '));
        QVERIFY(p.waitForFinished(kProcessTimeoutMs) && p.exitCode() == 0);
        QTEST(QJsonDocument::fromJson(p.readAllStandardOutput()).object().keys().join(' '), "keys");
    }
    // watch --csv: a header, then a row a change; the time and seconds columns are checked for
    // their form and cut off, the rest is pinned.
    void watchCsv_data()
    {
        // clang-format off
        columns<QString, QString, int, QString>("fault", "written", "exitCode", "rows");
        QTest::addRow("a value written meanwhile") << "" << "CAFEBABE" << 0 << "time,seconds,target,value|0x00001000,00000000|0x00001000,CAFEBABE";
        QTest::addRow("a bus error ends it") << "--bus-error" << "" << 4 << "time,seconds,target,value";
        // clang-format on
    }
    void watchCsv()
    {
        QFETCH(QString, fault);
        QFETCH(QString, written);
        Sim sim(fault.split(' ', Qt::SkipEmptyParts));
        QProcess watch;
        watch.start(MAVIX_CLI_PATH,
                    {"--target", sim.target, "watch", "1000", "4", "--interval", "50", "--csv"});
        QByteArray out;
        if (!written.isEmpty()) {
            QTRY_VERIFY_WITH_TIMEOUT((out += watch.readAllStandardOutput()).count('\n') == 2,
                                     10000);
            QCOMPARE(mavix({"--target", sim.target, "write", "1000", written}).first, 0);
            QTRY_VERIFY_WITH_TIMEOUT((out += watch.readAllStandardOutput()).count('\n') == 3,
                                     10000);
            ::kill(pid_t(watch.processId()), SIGINT);
        }
        QVERIFY(watch.waitForFinished(kProcessTimeoutMs));
        QTEST(watch.exitCode(), "exitCode");
        out += watch.readAllStandardOutput();
        static const QRegularExpression timeColumns(
            R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3},\d+\.\d{3},)");
        QStringList rows = QString::fromUtf8(out).split('\n', Qt::SkipEmptyParts);
        for (int i = 1; i < rows.size(); ++i) {
            QVERIFY2(timeColumns.match(rows[i]).hasMatch(), qPrintable(rows[i]));
            rows[i].remove(timeColumns);
        }
        QTEST(rows.join('|'), "rows");
    }
    // Ctrl+C ends a register wait at once, with 128 + SIGINT.
    void ctrlCEndsARegisterWait()
    {
        Sim slow({"--delay", "5000"});
        QProcess process;
        process.start(MAVIX_CLI_PATH, {"--target", slow.target, "read", "0", "4"});
        QVERIFY(process.waitForStarted());
        QTRY_VERIFY_WITH_TIMEOUT(catchesSigint(process.processId()), kProcessTimeoutMs);
        QTest::qWait(300);
        QElapsedTimer clock;
        clock.start();
        ::kill(pid_t(process.processId()), SIGINT);
        QVERIFY(process.waitForFinished(kProcessTimeoutMs));
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(process.exitCode(), 130);
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
