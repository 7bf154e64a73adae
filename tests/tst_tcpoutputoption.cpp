// The output format, hex text across chunks, and the figures the transfer dialogs show.
#include "reportcollector.h"
#include "testtable.h"

#include "tcp/tcpoutputoption.h"
#include "tcp/transferfigures.h"

#include <QtTest>

class TestTcpOutputOption : public QObject
{
    Q_OBJECT

private slots:
    // Each format is applied over 2-2 and renders its bytes in chunks of three as one stream; one
    // without a number is refused and keeps 2-2.
    void renders_data()
    {
        // clang-format off
        // text: empty: refused
        columns<QString, QByteArray, QByteArray>("format", "hex", "text");
        QTest::addRow("default, a line and a part without trailing blank")
            << TCPOutputOption::defaultFormat() << QByteArray("000102030405060708090a0b0c0d0e0fabcd")
            << QByteArray("00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F\r\nAB CD");
        QTest::addRow("ten is a number") << "10" << QByteArray("00112233445566778899aa") << QByteArray("00112233445566778899\r\nAA");
        QTest::addRow("leading zero is literal") << "01" << QByteArray("7a48") << QByteArray("07A\r\n048\r\n");
        QTest::addRow("literals around and between columns") << "[3] 1-2;" << QByteArray("aabbccddeeff0102") << QByteArray("[AABBCC] DD-EEFF;\r\n[0102");
        QTest::addRow("non-ASCII separator") << "1\u00b71" << QByteArray("7a48") << QByteArray("7A\u00b748\r\n");
        QTest::addRow("refused: two zeros are literals") << "0 0" << QByteArray() << QByteArray();
        QTest::addRow("refused: empty") << "" << QByteArray() << QByteArray();
        // clang-format on
    }
    void renders()
    {
        QFETCH(QString, format);
        QFETCH(QByteArray, hex);
        QFETCH(QByteArray, text);
        ReportCollector reports;
        TCPOutputOption option(TCPOutputOption::kKindRecv);
        QCOMPARE(option.format(), "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1");
        QVERIFY(option.setFormat("2-2"));
        QSignalSpy changed(&option, &TCPOutputOption::formatChanged);
        QCOMPARE(option.setFormat(format), !text.isEmpty());
        QCOMPARE(changed.count() + reports.errors.size(), 1);
        QCOMPARE(option.format(), text.isEmpty() ? "2-2" : format);
        const QByteArray bytes = QByteArray::fromHex(hex);
        QByteArray shown;
        qint64 position = 0;
        for (qsizetype at = 0; at < bytes.size(); at += 3)
            option.layout().render(bytes.constData() + at, qMin<qsizetype>(3, bytes.size() - at),
                                   &position, "\r\n", &shown);
        QCOMPARE(shown, text);
        QCOMPARE(reports.errors.value(0, format),
                 text.isEmpty() ? "Format must include at least one number" : format);
    }
    // Size in Bytes, KBytes or MBytes (divisor 1000, six digits), time with the locale's digits,
    // rate in bps, kbps or Mbps with three digits and never in e-notation.
    void figures_data()
    {
        columns<qint64, qint64, QLocale, QString>("bytes", "elapsedMs", "locale", "shown");
        const QLocale c = QLocale::c(), german(QLocale::German), american(QLocale::English);
        const auto row = [](const char *name, qint64 bytes, qint64 ms, QLocale l,
                            const char *text) {
            QTest::addRow("%s", name) << bytes << ms << l << QString::fromUtf8(text);
        };
        row("1 kbps exactly", 1000, 8000, c, "1 KBytes, 8 sec, 1 kbps");
        row("divisor 1000, 3 rate digits", 1024, 7, c, "1.024 KBytes, 0.007 sec, 1.17 Mbps");
        row("rounds up to 1000 kbps", 999999, 8003, c, "999.999 KBytes, 8.003 sec, 1000 kbps");
        row("6 size digits, gigabit in full", 1234567890, 1000, c,
            "1234.57 MBytes, 1 sec, 9877 Mbps");
        row("decimal comma", 1500000, 1500, german, "1.5 MBytes, 1,5 sec, 8 Mbps");
        row("group separator, nothing", 0, 1234567, american, "0 Bytes, 1,234.57 sec, 0 bps");
        row("zero elapsed counts as 1 ms", 1, 0, c, "1 Bytes, 0 sec, 8 kbps");
    }
    void figures()
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
    // Sizes above 2 GiB are divided by 1000 until they fit the bar; a stopped send reports loss.
    void progressBarAndLoss_data()
    {
        // shown: bar value / maximum, loss text
        columns<qint64, qint64, QString>("fileSize", "sentSize", "shown");
        const auto row = [](const char *name, qint64 fileSize, qint64 sentSize, const char *text) {
            QTest::addRow("%s", name) << fileSize << sentSize << QString::fromUtf8(text);
        };
        row("3 GB in thousands", 3000000000, 750000999,
            "750000/3000000 loss 2249999001 / 3000000000 bytes (75%)");
        row("divided as often as needed", 3000000000000000, 0,
            "0/3000000 loss 3000000000000000 / 3000000000000000 bytes (100%)");
        row("default precision", 3, 1, "1/3 loss 2 / 3 bytes (66.6667%)");
        row("empty file", 0, 0, "0/0 loss 0 / 0 bytes (0%)");
    }
    void progressBarAndLoss()
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
};

QTEST_GUILESS_MAIN(TestTcpOutputOption)
#include "tst_tcpoutputoption.moc"
