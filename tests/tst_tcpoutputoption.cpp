// The output format option: parsing the format, rendering bytes as hex text across chunk
// boundaries, the UTF-8 lead-byte rule and the file checks. Hex text back to bytes is checked
// end to end by the worker's hex-file sends.
#include "reportcollector.h"

#include "tcp/hexlayout.h"
#include "tcp/tcpoutputoption.h"

#include <QDir>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

QByteArray randomBytes(qsizetype size, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = char(generator.bounded(256));
    return bytes;
}

} // namespace

class TestTcpOutputOption : public QObject
{
    Q_OBJECT

private slots:
    void setFormat_data();
    void setFormat();
    void rendersLines_data();
    void rendersLines();
    void rendersAcrossChunks_data();
    void rendersAcrossChunks();
    void utf8CharLength_data();
    void utf8CharLength();
    void checksFileNames_data();
    void checksFileNames();
};

// Each row is applied over the format 2-2; a row without items is refused and keeps 2-2.
void TestTcpOutputOption::setFormat_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("bytesPerLine");

    QTest::addRow("same text again") << "2-2" << QStringList{"2", "-", "2"} << 4;
    QTest::addRow("one column of four") << "4" << QStringList{"4"} << 4;
    QTest::addRow("ten is a number") << "10" << QStringList{"10"} << 10;
    QTest::addRow("leading zero is literal") << "01" << QStringList{"0", "1"} << 1;
    QTest::addRow("zero inside a number counts") << "1 20" << QStringList{"1", " ", "20"} << 21;
    QTest::addRow("leading and trailing literal") << "[4] " << QStringList{"[", "4", "] "} << 4;
    QTest::addRow("non-ASCII separator") << "2\u00b72" << QStringList{"2", "\u00b7", "2"} << 4;
    QTest::addRow("refused: two zeros are literals") << "0 0" << QStringList() << 0;
    QTest::addRow("refused: letters only") << "abc" << QStringList() << 0;
    QTest::addRow("refused: empty") << "" << QStringList() << 0;
}

void TestTcpOutputOption::setFormat()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    QFETCH(int, bytesPerLine);
    ReportCollector reports;
    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QCOMPARE(option.format(), QStringLiteral("1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1"));
    QCOMPARE(option.bytesPerLine(), 16);
    const QStringList oldItems{"2", "-", "2"};
    QVERIFY(option.setFormat("2-2"));
    QSignalSpy changed(&option, &TCPOutputOption::formatChanged);

    const bool accepted = !items.isEmpty();
    QCOMPARE(option.setFormat(text), accepted);
    QCOMPARE(option.formatItems(), accepted ? items : oldItems);
    QCOMPARE(option.bytesPerLine(), accepted ? bytesPerLine : 4);
    QCOMPARE(option.format(), accepted ? text : QStringLiteral("2-2"));
    QCOMPARE(changed.count(), accepted && text != "2-2" ? 1 : 0);
    QCOMPARE(reports.errors,
             accepted ? QStringList() : QStringList{"Format must include at least one number"});
}

void TestTcpOutputOption::rendersLines_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::addColumn<QByteArray>("text");

    QTest::addRow("default format, one full line")
        << TCPOutputOption::defaultFormat()
        << QByteArray::fromHex("000102030405060708090a0b0c0d0e0f") << QByteArray("\r\n")
        << QByteArray("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\r\n");
    QTest::addRow("default format, part of a line has no trailing blank")
        << TCPOutputOption::defaultFormat() << QByteArray::fromHex("abcdef") << QByteArray("\r\n")
        << QByteArray("AB CD EF");
    QTest::addRow("one column of four") << "4" << QByteArray::fromHex("0001feff")
                                        << QByteArray("\r\n") << QByteArray("0001FEFF\r\n");
    QTest::addRow("two columns with a hyphen")
        << "2-2" << QByteArray::fromHex("1234567812") << QByteArray("\r\n")
        << QByteArray("1234-5678\r\n12");
    QTest::addRow("trailing literal ends every line")
        << "1 1;" << QByteArray::fromHex("0102030405") << QByteArray("\r\n")
        << QByteArray("01 02;\r\n03 04;\r\n05");
    QTest::addRow("leading literal opens every line")
        << "[2]" << QByteArray::fromHex("aabbcc") << QByteArray("\r\n")
        << QByteArray("[AABB]\r\n[CC");
    QTest::addRow("send display ends lines with a bare LF")
        << "2" << QByteArray::fromHex("0102030405") << QByteArray("\n")
        << QByteArray("0102\n0304\n05");
}

void TestTcpOutputOption::rendersLines()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, lineEnd);
    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QVERIFY(option.setFormat(format));
    qint64 position = 0;
    QTEST(option.render(bytes, &position, lineEnd.constData()), "text");
    QCOMPARE(position, bytes.size());
}

void TestTcpOutputOption::rendersAcrossChunks_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("chunkBytes");
    for (const QString &format : {TCPOutputOption::defaultFormat(), QStringLiteral("4"),
                                  QStringLiteral("[3] 1-2;"), QStringLiteral("7 9")}) {
        for (int chunk : {1, 2, 3, 5, 16, 17, 1024})
            QTest::addRow("format \"%s\", chunks of %d", qPrintable(format), chunk)
                << format << chunk;
    }
}

void TestTcpOutputOption::rendersAcrossChunks()
{
    QFETCH(QString, format);
    QFETCH(int, chunkBytes);
    const HexLayout layout = HexLayout::parse(format);
    const QByteArray bytes = randomBytes(3000, 7);
    qint64 wholePosition = 0;
    const QByteArray whole = layout.render(bytes, &wholePosition, "\r\n");

    QByteArray pieces;
    qint64 position = 0;
    for (qsizetype at = 0; at < bytes.size(); at += chunkBytes)
        layout.render(bytes.constData() + at, qMin<qsizetype>(chunkBytes, bytes.size() - at),
                      &position, "\r\n", &pieces);
    QCOMPARE(pieces, whole);
    QCOMPARE(position, wholePosition);
    // Every full line has the same length, the line end included.
    const QList<QByteArray> lines = whole.split('\n');
    for (qsizetype i = 1; i + 1 < lines.size(); ++i)
        QCOMPARE(lines.at(i).size(), lines.at(0).size());
}

void TestTcpOutputOption::utf8CharLength_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<int>("length");
    QTest::addRow("ASCII letter") << 0x41 << 1;
    QTest::addRow("continuation byte") << 0xBF << 0;
    QTest::addRow("two-byte lead") << 0xC3 << 2;
    QTest::addRow("three-byte lead") << 0xE3 << 3;
    QTest::addRow("four-byte lead") << 0xF0 << 4;
    QTest::addRow("five-byte pattern") << 0xF8 << -1;
}

void TestTcpOutputOption::utf8CharLength()
{
    QFETCH(int, byte);
    QTEST(TCPOutputOption::utf8CharLength(char(byte)), "length");
}

void TestTcpOutputOption::checksFileNames_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("accepted");

    QTest::addRow("send: existing file") << TCPOutputOption::kKindSend << "existing.bin" << true;
    QTest::addRow("send: missing file") << TCPOutputOption::kKindSend << "missing.bin" << false;
    QTest::addRow("send: a folder") << TCPOutputOption::kKindSend << "folder" << false;
    QTest::addRow("receive: new file") << TCPOutputOption::kKindRecv << "new.bin" << true;
    QTest::addRow("receive: existing file") << TCPOutputOption::kKindRecv << "existing.bin" << true;
    QTest::addRow("receive: missing folder")
        << TCPOutputOption::kKindRecv << "missing/new.bin" << false;
    QTest::addRow("receive: empty name, display only") << TCPOutputOption::kKindRecv << "" << true;
}

// The name is stored whether or not it passes; the check itself neither creates nor changes a file.
void TestTcpOutputOption::checksFileNames()
{
    QFETCH(int, kind);
    QFETCH(QString, name);
    QFETCH(bool, accepted);
    QTemporaryDir dir;
    QFile existing(dir.filePath("existing.bin"));
    QVERIFY(existing.open(QIODevice::WriteOnly) && existing.write("abc") == 3);
    existing.close();
    QVERIFY(QDir(dir.path()).mkdir("folder"));
    const QString path = name.isEmpty() ? QString() : dir.filePath(name);

    ReportCollector reports;
    TCPOutputOption option(kind);
    QCOMPARE(option.setFileName(path), accepted);
    QCOMPARE(option.fileName(), path);
    QCOMPARE(reports.errors, accepted ? QStringList() : QStringList{"File cannot open"});
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), QStringList{"existing.bin"});
    QVERIFY(existing.open(QIODevice::ReadOnly));
    QCOMPARE(existing.readAll(), QByteArray("abc"));
}

QTEST_GUILESS_MAIN(TestTcpOutputOption)
#include "tst_tcpoutputoption.moc"
