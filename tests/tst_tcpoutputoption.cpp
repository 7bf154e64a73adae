// The output format option: parsing the format, rendering bytes as hex text across chunk
// boundaries, hex text back to bytes, the UTF-8 lead-byte rule and the file checks.
#include "reportcollector.h"

#include "app/appmodel.h"
#include "tcp/hexlayout.h"
#include "tcp/hextextdecoder.h"
#include "tcp/tcpoutputoption.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString kNoNumber = QStringLiteral("Format must include at least one number");

QByteArray bytesFromHex(const char *hex)
{
    return QByteArray::fromHex(hex);
}

QStringList defaultItems()
{
    QStringList items;
    for (int column = 0; column < 16; ++column)
        items << (column == 0 ? QStringList{"1"} : QStringList{" ", "1"});
    return items;
}

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
    void parsesFormat_data();
    void parsesFormat();
    void refusedFormatKeepsTheOldOne_data();
    void refusedFormatKeepsTheOldOne();
    void sameFormatAgainChangesNothing();
    void rendersLines_data();
    void rendersLines();
    void rendersAcrossChunks_data();
    void rendersAcrossChunks();
    void bytesFittingNeverOverflowsTheRoom_data();
    void bytesFittingNeverOverflowsTheRoom();
    void decodesHexText_data();
    void decodesHexText();
    void utf8CharLength_data();
    void utf8CharLength();
    void checksFileNames_data();
    void checksFileNames();
    void receiveCheckLeavesFilesAlone();
    void modelStartsWithDisplayModes();
};

void TestTcpOutputOption::parsesFormat_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("bytesPerLine");

    QTest::addRow("default: sixteen single bytes")
        << TCPOutputOption::defaultFormat() << defaultItems() << 16;
    QTest::addRow("one column of four") << "4" << QStringList{"4"} << 4;
    QTest::addRow("two columns with a hyphen") << "2-2" << QStringList{"2", "-", "2"} << 4;
    QTest::addRow("ten is a number") << "10" << QStringList{"10"} << 10;
    QTest::addRow("leading zero is literal") << "01" << QStringList{"0", "1"} << 1;
    QTest::addRow("zero inside a number counts") << "1 20" << QStringList{"1", " ", "20"} << 21;
    QTest::addRow("leading and trailing literal") << "[4] " << QStringList{"[", "4", "] "} << 4;
    QTest::addRow("trailing semicolon") << "1 1;" << QStringList{"1", " ", "1", ";"} << 2;
    QTest::addRow("non-ASCII separator") << "2\u00b72" << QStringList{"2", "\u00b7", "2"} << 4;
}

void TestTcpOutputOption::parsesFormat()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    QFETCH(int, bytesPerLine);

    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QVERIFY(option.setFormat(text));
    QCOMPARE(option.formatItems(), items);
    QCOMPARE(option.bytesPerLine(), bytesPerLine);
    QCOMPARE(option.format(), text);
}

void TestTcpOutputOption::refusedFormatKeepsTheOldOne_data()
{
    QTest::addColumn<QString>("text");
    QTest::addRow("two zeros are literals") << "0 0";
    QTest::addRow("letters only") << "abc";
    QTest::addRow("empty") << "";
    QTest::addRow("blanks only") << "   ";
}

void TestTcpOutputOption::refusedFormatKeepsTheOldOne()
{
    QFETCH(QString, text);
    ReportCollector reports;
    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QVERIFY(option.setFormat("2-2"));
    QSignalSpy changed(&option, &TCPOutputOption::formatChanged);

    QVERIFY(!option.setFormat(text));
    QCOMPARE(option.format(), QString("2-2"));
    QCOMPARE(option.bytesPerLine(), 4);
    QCOMPARE(changed.count(), 0);
    QTRY_COMPARE(reports.errors, QStringList{kNoNumber});
}

void TestTcpOutputOption::sameFormatAgainChangesNothing()
{
    TCPOutputOption option(TCPOutputOption::kKindSend);
    QSignalSpy changed(&option, &TCPOutputOption::formatChanged);
    QVERIFY(option.setFormat("4 4"));
    QCOMPARE(changed.count(), 1);
    QVERIFY(option.setFormat("4 4"));
    QCOMPARE(changed.count(), 1);
}

void TestTcpOutputOption::rendersLines_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("lineEnd");
    QTest::addColumn<QByteArray>("text");

    QTest::addRow("default format, one full line")
        << TCPOutputOption::defaultFormat() << bytesFromHex("000102030405060708090a0b0c0d0e0f")
        << QByteArray("\r\n") << QByteArray("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\r\n");
    QTest::addRow("default format, part of a line has no trailing blank")
        << TCPOutputOption::defaultFormat() << bytesFromHex("abcdef") << QByteArray("\r\n")
        << QByteArray("AB CD EF");
    QTest::addRow("one column of four")
        << "4" << bytesFromHex("0001feff") << QByteArray("\r\n") << QByteArray("0001FEFF\r\n");
    QTest::addRow("two columns with a hyphen")
        << "2-2" << bytesFromHex("1234567812") << QByteArray("\r\n")
        << QByteArray("1234-5678\r\n12");
    QTest::addRow("trailing literal ends every line")
        << "1 1;" << bytesFromHex("0102030405") << QByteArray("\r\n")
        << QByteArray("01 02;\r\n03 04;\r\n05");
    QTest::addRow("leading literal opens every line")
        << "[2]" << bytesFromHex("aabbcc") << QByteArray("\r\n") << QByteArray("[AABB]\r\n[CC");
    QTest::addRow("send display ends lines with a bare LF")
        << "2" << bytesFromHex("0102030405") << QByteArray("\n") << QByteArray("0102\n0304\n05");
    QTest::addRow("nothing gives nothing")
        << "2" << QByteArray() << QByteArray("\r\n") << QByteArray();
}

void TestTcpOutputOption::rendersLines()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, lineEnd);
    QFETCH(QByteArray, text);

    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QVERIFY(option.setFormat(format));
    qint64 position = 0;
    QCOMPARE(option.render(bytes, &position, lineEnd.constData()), text);
    QCOMPARE(position, bytes.size());
}

void TestTcpOutputOption::rendersAcrossChunks_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("chunkBytes");

    const QStringList formats{TCPOutputOption::defaultFormat(), "4", "[3] 1-2;", "1", "7 9"};
    for (const QString &format : formats) {
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

void TestTcpOutputOption::bytesFittingNeverOverflowsTheRoom_data()
{
    QTest::addColumn<QString>("format");
    QTest::addRow("default") << TCPOutputOption::defaultFormat();
    QTest::addRow("long separators") << "[1]----1;;;";
    QTest::addRow("one wide column") << "64";
}

void TestTcpOutputOption::bytesFittingNeverOverflowsTheRoom()
{
    QFETCH(QString, format);
    const HexLayout layout = HexLayout::parse(format);
    const QByteArray bytes = randomBytes(1024, 3);
    QRandomGenerator generator(11);
    for (int round = 0; round < 500; ++round) {
        const qint64 start = generator.bounded(1000);
        const qsizetype room = generator.bounded(200);
        const qsizetype fits = layout.bytesFitting(start, bytes.size(), room, 2);
        qint64 position = start;
        QVERIFY(layout.render(bytes.left(fits), &position, "\r\n").size() <= room);
        if (fits < bytes.size()) {
            position = start;
            QVERIFY2(layout.render(bytes.left(fits + 1), &position, "\r\n").size() > room,
                     "one byte more would still have fitted");
        }
    }
}

void TestTcpOutputOption::decodesHexText_data()
{
    QTest::addColumn<QByteArrayList>("chunks");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("halfByteLeft");

    QTest::addRow("blanks, line ends and junk are skipped")
        << QByteArrayList{"0A 0b\r\nz1"} << bytesFromHex("0a0b") << true;
    QTest::addRow("a byte split over two chunks")
        << QByteArrayList{"0A 1", "2 FF"} << bytesFromHex("0a12ff") << false;
    QTest::addRow("separators of the output format")
        << QByteArrayList{"[1234-5678];\r\n"} << bytesFromHex("12345678") << false;
    QTest::addRow("no digits at all") << QByteArrayList{"xyz \r\n"} << QByteArray() << false;
}

void TestTcpOutputOption::decodesHexText()
{
    QFETCH(QByteArrayList, chunks);
    QFETCH(QByteArray, bytes);
    QFETCH(bool, halfByteLeft);

    HexTextDecoder decoder;
    QByteArray out;
    for (const QByteArray &chunk : chunks)
        decoder.decode(chunk.constData(), chunk.size(), &out);
    QCOMPARE(out, bytes);
    QCOMPARE(decoder.hasHalfByte(), halfByteLeft);
}

void TestTcpOutputOption::utf8CharLength_data()
{
    QTest::addColumn<int>("byte");
    QTest::addColumn<int>("length");
    QTest::addRow("ASCII letter") << 0x41 << 1;
    QTest::addRow("NUL") << 0x00 << 1;
    QTest::addRow("continuation byte") << 0x80 << 0;
    QTest::addRow("last continuation byte") << 0xBF << 0;
    QTest::addRow("two-byte lead") << 0xC3 << 2;
    QTest::addRow("three-byte lead") << 0xE3 << 3;
    QTest::addRow("four-byte lead") << 0xF0 << 4;
    QTest::addRow("five-byte pattern") << 0xF8 << -1;
    QTest::addRow("0xFF") << 0xFF << -1;
}

void TestTcpOutputOption::utf8CharLength()
{
    QFETCH(int, byte);
    QFETCH(int, length);
    QCOMPARE(TCPOutputOption::utf8CharLength(char(byte)), length);
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

void TestTcpOutputOption::checksFileNames()
{
    QFETCH(int, kind);
    QFETCH(QString, name);
    QFETCH(bool, accepted);

    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    QFile existing(dir.filePath("existing.bin"));
    QVERIFY(existing.open(QIODevice::WriteOnly));
    existing.write("abc");
    existing.close();
    QVERIFY(QDir(dir.path()).mkdir("folder"));
    const QString path = name.isEmpty() ? QString() : dir.filePath(name);

    ReportCollector reports;
    TCPOutputOption option(kind);
    QCOMPARE(option.setFileName(path), accepted);
    QCOMPARE(option.fileName(), path); // stored in either case
    QTest::qWait(0);
    QCOMPARE(reports.errors,
             accepted ? QStringList() : QStringList{QStringLiteral("File cannot open")});
}

void TestTcpOutputOption::receiveCheckLeavesFilesAlone()
{
    QTemporaryDir dir;
    const QString existing = dir.filePath("keep.txt");
    QFile file(existing);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("precious");
    file.close();

    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QVERIFY(option.setFileName(existing));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("precious"));

    const QString fresh = dir.filePath("fresh.txt");
    QVERIFY(option.setFileName(fresh));
    QVERIFY(!QFile::exists(fresh));
}

void TestTcpOutputOption::modelStartsWithDisplayModes()
{
    QCOMPARE(AppModel::instance(), nullptr);
    {
        AppModel model;
        QCOMPARE(AppModel::instance(), &model);
        QCOMPARE(model.recvOption()->kind(), TCPOutputOption::kKindRecv);
        QCOMPARE(model.sendOption()->kind(), TCPOutputOption::kKindSend);
        QCOMPARE(model.recvOption()->displayMode(), TCPOutputOption::kDisplayText);
        QCOMPARE(model.sendOption()->displayMode(), TCPOutputOption::kDisplayHex);
        QCOMPARE(model.recvOption()->format(), TCPOutputOption::defaultFormat());

        model.setSendUseHexFile(true);
        QVERIFY(model.sendOption()->useHexFile());
        QVERIFY(!model.recvOption()->useHexFile());
        QVERIFY(model.setRecvFormat("2-2"));
        QCOMPARE(model.recvOption()->bytesPerLine(), 4);
        QCOMPARE(model.sendOption()->bytesPerLine(), 16);
    }
    QCOMPARE(AppModel::instance(), nullptr);
}

QTEST_GUILESS_MAIN(TestTcpOutputOption)
#include "tst_tcpoutputoption.moc"
