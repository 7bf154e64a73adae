// Register maps: the TOML format and its refusals, IP-XACT import, field values, and the reads and
// writes that named registers cost the emulator.
#include "regs/ipxactimport.h"
#include "regs/registercatalog.h"
#include "regs/registerio.h"
#include "regs/registermapparser.h"
#include "regs/registervalue.h"
#include "sim/mavixsim.h"
#include "sim/simthread.h"
#include "testtable.h"
#include "wren/wrenagent.h"

#include <QtTest>

namespace {

// Blocks, registers and fields in one line: "b@1000 r+0/4rw reset=0 f[5:4]rw{x=0,y=1}".
QString describe(const MapResult &result)
{
    if (const MapError *error = std::get_if<MapError>(&result))
        return error->text();
    QStringList words;
    for (const RegisterBlock &block : std::get<RegisterMap>(result).blocks) {
        words << QStringLiteral("%1@%2").arg(block.name).arg(block.base, 0, 16);
        for (const Register &reg : block.registers) {
            words << QStringLiteral("%1+%2/%3%4")
                         .arg(reg.name)
                         .arg(reg.offset, 0, 16)
                         .arg(reg.size)
                         .arg(RegisterMap::accessWord(reg.access));
            if (reg.reset)
                words << QStringLiteral("reset=%1").arg(*reg.reset, 0, 16);
            for (const RegisterField &field : reg.fields) {
                QStringList values;
                for (const NamedValue &named : field.values)
                    values << QStringLiteral("%1=%2").arg(named.name).arg(named.value);
                words << QStringLiteral("%1[%2:%3]%4{%5}")
                             .arg(field.name)
                             .arg(field.msb)
                             .arg(field.lsb)
                             .arg(RegisterMap::accessWord(field.access), values.join(','));
            }
        }
    }
    return words.join(' ');
}

const char kScratch[] = R"([t]
base = 0x1000
[t.ctrl]
offset = 0
enable = { bits = 0 }
mode = { bits = "5:4", values = { idle = 0, run = 1, test = 2 } }
[t.status]
offset = 4
access = "ro"
[t.wreg]
offset = 0xE
size = 2
access = "wo"
reset = 0xAB00
lo = { bits = "7:0" }
[t.c]
offset = 0xC
size = 2
[t.d]
offset = 0x10
size = 2
)";

} // namespace

class TestRegMap : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_sim.start());
        m_sim.sim()->setRecording(true);
        m_agent.setTarget(QHostAddress(QHostAddress::LocalHost), m_sim.udpPort());
        const MapResult scratch = RegisterMapParser::parse(kScratch, "t.toml");
        QVERIFY2(!m_catalog.add(std::get<RegisterMap>(scratch)), qPrintable(describe(scratch)));
        RegisterMap many; // 100 neighbours of 4 bytes at 0x2000
        many.blocks.append({"m", 0x2000, {}, {}, 0});
        for (int i = 0; i < 100; ++i) {
            Register reg;
            reg.name = QStringLiteral("r%1").arg(i);
            reg.offset = quint32(i * 4);
            many.blocks[0].registers.append(reg);
        }
        QVERIFY(!many.check() && !m_catalog.add(many));
    }

    void nativeText_data()
    {
        // clang-format off
        columns<QString, QString>("text", "model");
        QTest::addRow("registers by offset, fields highest first, values by value") << "[b]\nbase = 0x40\ndescription = \"x\"\n[b.y]\noffset = 4\nsize = 2\naccess = \"wo\"\n[b.x]\noffset = 0\nreset = 0x12\nlo = { bits = 0, access = \"ro\" }\nhi = { bits = \"7:4\", values = { b = 2, a = 1 } }" << "b@40 x+0/4rw reset=12 hi[7:4]rw{a=1,b=2} lo[0:0]ro{} y+4/2wo";
        QTest::addRow("a field without access has its register's") << "[b]\nbase = 0\n[b.x]\noffset = 0\naccess = \"ro\"\n[b.x.f]\nbits = \"31:0\"" << "b@0 x+0/4ro f[31:0]ro{}";
        QTest::addRow("overlapping registers") << "[b]\nbase = 0x100\n[b.x]\noffset = 0\n[b.y]\noffset = 2\nsize = 1" << "t.toml:5: Register b.y overlaps register b.x";
        QTest::addRow("field outside its register") << "[b]\nbase = 0\n[b.x]\noffset = 0\nsize = 1\nf = { bits = \"8:1\" }" << "t.toml:6: Field b.x.f: bits 8:1 lie outside the register";
        QTest::addRow("unknown access word") << "[b]\nbase = 0\n[b.x]\noffset = 0\naccess = \"rx\"" << "t.toml:5: Unknown access \"rx\" (rw, ro or wo)";
        QTest::addRow("unknown key") << "[b]\nbase = 0\n[b.x]\nofset = 0" << "t.toml:4: Unknown key \"ofset\" in register x";
        QTest::addRow("malformed file") << "[b]\nbase = 0\n[b.x\noffset = 0" << "t.toml:3: ";
        QTest::addRow("register beyond the address space") << "[b]\nbase = 0xFFFFFFFE\n[b.x]\noffset = 0" << "t.toml:3: Register b.x lies beyond the 32-bit address space";
        QTest::addRow("negative offset") << "[b]\nbase = 0\n[b.x]\noffset = -4" << "t.toml:4: offset must be a whole number from 0 to 4294967295";
        QTest::addRow("named value too wide") << "[b]\nbase = 0\n[b.x]\noffset = 0\nf = { bits = 0, values = { two = 2 } }" << "t.toml:5: Field b.x.f: value two does not fit the field";
        // clang-format on
    }
    void nativeText()
    {
        QFETCH(QString, text);
        QFETCH(QString, model);
        const QString got = describe(RegisterMapParser::parse(text.toUtf8(), "t.toml"));
        QVERIFY2(got.startsWith(model), qPrintable(got));
    }

    void ipxact_data()
    {
        // clang-format off
        columns<QString, QString>("file", "model");
        QTest::addRow("2014 sample") << MAVIX_DOCS_DIR "/ipxact-sample.xml" << "timer@2000 control+0/4rw prescale[5:4]rw{div1=0,div8=1,div64=2} start[0:0]rw{} count+4/4ro reload+8/2wo reset=ffff";
        QTest::addRow("2009 names, block access") << "<spirit:component xmlns:spirit=\"http://www.spiritconsortium.org/XMLSchema/SPIRIT/1685-2009\"><spirit:memoryMaps><spirit:memoryMap><spirit:addressBlock>\n<spirit:name>p</spirit:name><spirit:baseAddress>0x30</spirit:baseAddress><spirit:access>read-only</spirit:access>\n<spirit:register><spirit:name>s</spirit:name><spirit:addressOffset>4</spirit:addressOffset><spirit:size>8</spirit:size><spirit:reset><spirit:value>0x5</spirit:value></spirit:reset>\n<spirit:field><spirit:name>f</spirit:name><spirit:bitOffset>1</spirit:bitOffset><spirit:bitWidth>3</spirit:bitWidth></spirit:field></spirit:register></spirit:addressBlock></spirit:memoryMap></spirit:memoryMaps></spirit:component>" << "p@30 s+4/1ro reset=5 f[3:1]ro{}";
        QTest::addRow("malformed XML") << "<a>\n<addressBlock>\n</a>" << "x.xml:3: ";
        QTest::addRow("register of 12 bits") << "<c><addressBlock><name>p</name>\n<register><name>s</name><size>12</size></register></addressBlock></c>" << "x.xml:2: Register size of 12 bits is not whole bytes";
        // clang-format on
    }
    void ipxact()
    {
        QFETCH(QString, file);
        QFETCH(QString, model);
        QByteArray xml = file.toUtf8();
        if (file.startsWith('/')) {
            QFile sample(file);
            QVERIFY(sample.open(QIODevice::ReadOnly));
            xml = sample.readAll();
        }
        const QString got = describe(IpxactImport::parse(xml, "x.xml"));
        QVERIFY2(got.startsWith(model), qPrintable(got));
    }

    void fieldValues_data()
    {
        // clang-format off
        columns<int, int, quint64, quint64, quint64, quint64>("msb", "lsb", "raw", "value", "newValue", "newRaw");
        QTest::addRow("one bit") << 3 << 3 << quint64(0xFF) << quint64(1) << quint64(0) << quint64(0xF7);
        QTest::addRow("middle bits") << 5 << 4 << quint64(0xFFFF00F0) << quint64(3) << quint64(1) << quint64(0xFFFF00D0);
        QTest::addRow("too wide a value keeps the other bits") << 5 << 4 << quint64(0) << quint64(0) << quint64(7) << quint64(0x30);
        QTest::addRow("all 64 bits") << 63 << 0 << quint64(0x8000000000000001) << quint64(0x8000000000000001) << quint64(2) << quint64(2);
        // clang-format on
    }
    void fieldValues()
    {
        QFETCH(int, msb);
        QFETCH(int, lsb);
        QFETCH(quint64, raw);
        RegisterField field;
        field.msb = msb;
        field.lsb = lsb;
        QTEST(field.extract(raw), "value");
        QFETCH(quint64, newValue);
        QTEST(field.insert(raw, newValue), "newRaw");
    }

    void typedValues_data()
    {
        // clang-format off
        columns<QString, int, int, QString, QString>("text", "bits", "format", "value", "shownOrError");
        QTest::addRow("IPv4") << "192.168.10.16" << 32 << int(ValueFormat::Ipv4) << "c0a80a10" << "192.168.10.16";
        QTest::addRow("MAC") << "02:00:c0:a8:00:10" << 48 << int(ValueFormat::Mac) << "200c0a80010" << "02:00:C0:A8:00:10";
        QTest::addRow("named value") << "run" << 2 << int(ValueFormat::Decimal) << "1" << "run";
        QTest::addRow("hex with separators") << "0xAB_CD" << 16 << int(ValueFormat::Hex) << "abcd" << "0xABCD";
        QTest::addRow("too wide") << "0x1FF" << 8 << int(ValueFormat::Hex) << "" << "0x1FF does not fit 8 bits";
        QTest::addRow("negative") << "-1" << 8 << int(ValueFormat::Decimal) << "" << "\"-1\" is neither a number nor one of: idle, run";
        QTest::addRow("IPv4 text in a hex register") << "1.2.3.4" << 32 << int(ValueFormat::Hex) << "" << "\"1.2.3.4\" is neither a number nor one of: idle, run";
        // clang-format on
    }
    void typedValues()
    {
        QFETCH(QString, text);
        QFETCH(int, bits);
        QFETCH(int, format);
        QFETCH(QString, value);
        QFETCH(QString, shownOrError);
        const QList<NamedValue> names{{"idle", 0, {}}, {"run", 1, {}}};
        QString error;
        const auto parsed = RegisterValue::parse(text, bits, ValueFormat(format), names, &error);
        QCOMPARE(parsed ? QString::number(*parsed, 16) : QString(), value);
        QCOMPARE(parsed ? RegisterValue::format(*parsed, bits, ValueFormat(format), names) : error,
                 shownOrError);
    }

    void groupedReads_data()
    {
        // clang-format off
        columns<QString, QString>("names", "asked");
        QTest::addRow("neighbours in one access") << "t.ctrl t.status" << "R1000/8";
        QTest::addRow("a gap splits") << "t.status t.ctrl t.c" << "R1000/8 R100C/2";
        QTest::addRow("a write-only register is not read") << "t.c t.wreg t.d" << "R100C/2 R1010/2";
        QTest::addRow("255 bytes at most") << "m.*" << "R2000/252 R20FC/148";
        QTest::addRow("built-in neighbours") << "settings.ip_address rs232c.dte_port" << "RFFFFFF18/6";
        // clang-format on
    }
    void groupedReads()
    {
        QFETCH(QString, names);
        QList<int> entries;
        for (const QString &name : names.split(' '))
            entries << m_catalog.match(name);
        m_sim.sim()->clearAccessLog();
        QCOMPARE(RegisterIo(m_catalog, &m_agent, 2000).read(entries).size(),
                 entries.size() - names.count("wreg"));
        QTEST(accessLog(), "asked");
    }

    void readModifyWrite_data()
    {
        // clang-format off
        columns<QString, QString, QString>("writes", "before", "asked");
        QTest::addRow("a field: one read, one write, only its bits") << "t.ctrl.mode=1" << "FFFF00F0" << "R1000/4 W1000/4:FFFF00D0";
        QTest::addRow("two fields of one register") << "t.ctrl.mode=2 t.ctrl.enable=1" << "00000000" << "R1000/4 W1000/4:00000021";
        QTest::addRow("a whole register is not read") << "t.ctrl=0x12345678" << "FFFFFFFF" << "W1000/4:12345678";
        QTest::addRow("a write-only register starts from its reset value") << "t.wreg.lo=0x12" << "FFFFFFFF" << "W100E/2:AB12";
        QTest::addRow("a read-only register is refused") << "t.status=1" << "00000000" << "t.status is read-only";
        QTest::addRow("the device's own area needs expert mode") << "settings.udp_port=1" << "00000000" << "settings.udp_port: Writing in domain after 0xFFFF0000 is not permitted";
        // clang-format on
    }
    void readModifyWrite()
    {
        QFETCH(QString, writes);
        QFETCH(QString, before);
        m_sim.sim()->poke(0x1000, QByteArray::fromHex(before.toLatin1()));
        m_sim.sim()->poke(0x100E, QByteArray::fromHex(before.toLatin1()));
        QList<FieldWrite> list;
        for (const QString &write : writes.split(' ')) {
            QString error;
            const auto target = m_catalog.resolve(write.section('=', 0, 0), &error);
            QVERIFY2(target, qPrintable(error));
            list.append({*target, write.section('=', 1).toULongLong(nullptr, 0)});
        }
        RegisterIo io(m_catalog, &m_agent, 2000);
        m_sim.sim()->clearAccessLog();
        QString refusal = io.checkWrites(list);
        if (refusal.isEmpty())
            io.apply(list);
        QTEST(refusal.isEmpty() ? accessLog() : refusal, "asked");
    }

private:
    QString accessLog() const
    {
        QStringList asked;
        for (const SimAccess &access : m_sim.sim()->accessLog())
            asked << (access.direction == SimAccess::Read
                          ? QStringLiteral("R%1/%2").arg(access.address, 0, 16).arg(access.length)
                          : QStringLiteral("W%1/%2:%3")
                                .arg(access.address, 0, 16)
                                .arg(access.length)
                                .arg(QString(access.data.toHex())))
                         .toUpper();
        return asked.join(' ');
    }

    SimThread m_sim;
    WrenAgent m_agent;
    RegisterCatalog m_catalog;
};

QTEST_GUILESS_MAIN(TestRegMap)
#include "tst_regmap.moc"
