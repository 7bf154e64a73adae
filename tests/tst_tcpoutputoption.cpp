// The output format and the transfer dialogs' figures: the format, hex text across chunks, size,
// time and rate, the progress bar and the loss report.
#include "reportcollector.h"

#include "tcp/tcpoutputoption.h"
#include "tcp/transferfigures.h"

#include <QtTest>

class TestTcpOutputOption : public QObject
{
    Q_OBJECT

private slots:
    void setFormat_data();
    void setFormat();
    void renders_data();
    void renders();
    void figures_data();
    void figures();
    void progressBarAndLoss_data();
    void progressBarAndLoss();
};

// Each row is applied over the format 2-2; a row without a number is refused and keeps 2-2.
void TestTcpOutputOption::setFormat_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("bytesPerLine");
    QTest::addRow("ten is a number") << "10" << QStringList{"10"} << 10;
    QTest::addRow("leading zero is literal") << "01" << QStringList{"0", "1"} << 1;
    QTest::addRow("zero inside a number counts") << "1 20" << QStringList{"1", " ", "20"} << 21;
    QTest::addRow("leading and trailing literal") << "[4] " << QStringList{"[", "4", "] "} << 4;
    QTest::addRow("non-ASCII separator") << "2\u00b72" << QStringList{"2", "\u00b7", "2"} << 4;
    QTest::addRow("refused: two zeros are literals") << "0 0" << QStringList() << 0;
    QTest::addRow("refused: empty") << "" << QStringList() << 0;
}

void TestTcpOutputOption::setFormat()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    QFETCH(int, bytesPerLine);
    ReportCollector reports;
    TCPOutputOption option(TCPOutputOption::kKindRecv);
    QCOMPARE(option.format(), "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1");
    QVERIFY(option.setFormat("2-2"));
    QSignalSpy changed(&option, &TCPOutputOption::formatChanged);
    const bool accepted = !items.isEmpty();
    QCOMPARE(option.setFormat(text), accepted);
    QCOMPARE(option.formatItems(), accepted ? items : QStringList({"2", "-", "2"}));
    QCOMPARE(option.bytesPerLine(), accepted ? bytesPerLine : 4);
    QCOMPARE(changed.count(), accepted ? 1 : 0);
    QCOMPARE(reports.errors,
             accepted ? QStringList() : QStringList{"Format must include at least one number"});
}

// Rendered in chunks of `chunk` bytes as one stream.
void TestTcpOutputOption::renders_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QByteArray>("hex");
    QTest::addColumn<int>("chunk");
    QTest::addColumn<QByteArray>("text");
    QTest::addRow("default format, a full line and a part without trailing blank")
        << TCPOutputOption::defaultFormat() << QByteArray("000102030405060708090a0b0c0d0e0fabcd")
        << 5 << QByteArray("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\r\nAB CD");
    QTest::addRow("columns with a hyphen, byte by byte")
        << "2-2" << QByteArray("1234567812") << 1 << QByteArray("1234-5678\r\n12");
    QTest::addRow("trailing literal ends every line")
        << "1 1;" << QByteArray("0102030405") << 3 << QByteArray("01 02;\r\n03 04;\r\n05");
    QTest::addRow("leading literal opens every line, chunks across columns")
        << "[3] 1-2;" << QByteArray("aabbccddeeff0102") << 2
        << QByteArray("[AABBCC] DD-EEFF;\r\n[0102");
    QTest::addRow("non-ASCII separator")
        << "1\u00b71" << QByteArray("7a48") << 1 << QByteArray("7A\u00b748\r\n");
}

void TestTcpOutputOption::renders()
{
    QFETCH(QString, format);
    QFETCH(QByteArray, hex);
    QFETCH(int, chunk);
    const HexLayout layout = HexLayout::parse(format);
    const QByteArray bytes = QByteArray::fromHex(hex);
    QByteArray text;
    qint64 position = 0;
    for (qsizetype at = 0; at < bytes.size(); at += chunk)
        layout.render(bytes.constData() + at, qMin<qsizetype>(chunk, bytes.size() - at), &position,
                      "\r\n", &text);
    QTEST(text, "text");
    QCOMPARE(position, bytes.size());
}

// Size in Bytes, KBytes or MBytes (divisor 1000, six digits), time with the locale's digits, rate
// in bps, kbps or Mbps with three digits and never in e-notation.
void TestTcpOutputOption::figures_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<QString>("shown");
    const QLocale c = QLocale::c(), german(QLocale::German), american(QLocale::English);
    QTest::addRow("Bytes and bps")
        << qint64(124) << qint64(1000) << c << "124 Bytes, 1 sec, 992 bps";
    QTest::addRow("1000 bytes, exactly 1 kbps, milliseconds")
        << qint64(1000) << qint64(8000) << c << "1 KBytes, 8 sec, 1 kbps";
    QTest::addRow("divisor 1000, three rate digits")
        << qint64(1024) << qint64(7) << c << "1.024 KBytes, 0.007 sec, 1.17 Mbps";
    QTest::addRow("largest KBytes, rounds up to 1000 kbps")
        << qint64(999999) << qint64(8003) << c << "999.999 KBytes, 8.003 sec, 1000 kbps";
    QTest::addRow("six size digits, gigabit in full")
        << qint64(1234567890) << qint64(1000) << c << "1234.57 MBytes, 1 sec, 9877 Mbps";
    QTest::addRow("decimal comma")
        << qint64(1500000) << qint64(1500) << german << "1.5 MBytes, 1,5 sec, 8 Mbps";
    QTest::addRow("group separator, nothing received")
        << qint64(0) << qint64(1234567) << american << "0 Bytes, 1,234.57 sec, 0 bps";
    QTest::addRow("zero elapsed counts as 1 ms")
        << qint64(1) << qint64(0) << c << "1 Bytes, 0 sec, 8 kbps";
}

void TestTcpOutputOption::figures()
{
    QFETCH(qint64, bytes);
    QFETCH(qint64, elapsedMs);
    QFETCH(QLocale, locale);
    QLocale::setDefault(locale);
    const TransferFigure size = TransferFigures::sizeFigure(bytes);
    const TransferFigure time = TransferFigures::timeFigure(elapsedMs);
    const TransferFigure rate = TransferFigures::rateFigure(bytes, elapsedMs);
    QLocale::setDefault(QLocale::c());
    QTEST(QStringLiteral("%1 %2, %3 %4, %5 %6")
              .arg(size.value, size.unit, time.value, time.unit, rate.value, rate.unit),
          "shown");
}

// Sizes above 2 GiB are divided by 1000 until they fit the bar; a stopped send reports its loss.
void TestTcpOutputOption::progressBarAndLoss_data()
{
    QTest::addColumn<qint64>("fileSize");
    QTest::addColumn<qint64>("sentSize");
    QTest::addColumn<QString>("shown"); // bar value / maximum, loss text
    QTest::addRow("largest int as it is")
        << qint64(2147483647) << qint64(0)
        << "0/2147483647 loss 2147483647 / 2147483647 bytes (100%)";
    QTest::addRow("3000000000 bytes in thousands")
        << qint64(3000000000) << qint64(750000999)
        << "750000/3000000 loss 2249999001 / 3000000000 bytes (75%)";
    QTest::addRow("divided as often as needed") << qint64(3000000000000000) << qint64(0)
                                                << "0/3000000 loss 3000000000000000 / "
                                                   "3000000000000000 bytes (100%)";
    QTest::addRow("default precision")
        << qint64(3) << qint64(1) << "1/3 loss 2 / 3 bytes (66.6667%)";
    QTest::addRow("empty file") << qint64(0) << qint64(0) << "0/0 loss 0 / 0 bytes (0%)";
}

void TestTcpOutputOption::progressBarAndLoss()
{
    QFETCH(qint64, fileSize);
    QFETCH(qint64, sentSize);
    const ProgressBarRange bar = TransferFigures::progressBarRange(fileSize, sentSize);
    QTEST(QStringLiteral("%1/%2 %3")
              .arg(bar.value)
              .arg(bar.maximum)
              .arg(TransferFigures::lossText(sentSize, fileSize)),
          "shown");
}

QTEST_GUILESS_MAIN(TestTcpOutputOption)
#include "tst_tcpoutputoption.moc"
