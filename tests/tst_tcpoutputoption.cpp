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
        TCPOutputOption option(TCPOutputOption::kKindRecv);
        QCOMPARE(option.format(), "1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1");
        QVERIFY(!option.setFormat("2-2"));
        QSignalSpy changed(&option, &TCPOutputOption::formatChanged);
        const std::optional<QString> refusal = option.setFormat(format);
        QCOMPARE(refusal.value_or(QString()),
                 text.isEmpty() ? "Format must include at least one number" : "");
        QCOMPARE(changed.count(), text.isEmpty() ? 0 : 1);
        QCOMPARE(option.format(), text.isEmpty() ? "2-2" : format);
        const QByteArray bytes = QByteArray::fromHex(hex);
        QByteArray shown;
        qint64 position = 0;
        for (qsizetype at = 0; at < bytes.size(); at += 3)
            option.layout().render(bytes.constData() + at, qMin<qsizetype>(3, bytes.size() - at),
                                   &position, "\r\n", &shown);
        QCOMPARE(shown, text);
    }
    // Size in Bytes, KBytes or MBytes (divisor 1000, six digits), time with the locale's digits,
    // rate in bps, kbps or Mbps with three digits and never in e-notation.
    void figures_data()
    {
        // clang-format off
        columns<qint64, qint64, QLocale, QString>("bytes", "elapsedMs", "locale", "shown");
        const QLocale c = QLocale::c(), german(QLocale::German), american(QLocale::English);
        QTest::addRow("1 kbps exactly") << 1000ll << 8000ll << c << "1 KBytes, 8 sec, 1 kbps";
        QTest::addRow("divisor 1000, 3 rate digits") << 1024ll << 7ll << c << "1.024 KBytes, 0.007 sec, 1.17 Mbps";
        QTest::addRow("rounds up to 1000 kbps") << 999999ll << 8003ll << c << "999.999 KBytes, 8.003 sec, 1000 kbps";
        QTest::addRow("6 size digits, gigabit in full") << 1234567890ll << 1000ll << c << "1234.57 MBytes, 1 sec, 9877 Mbps";
        QTest::addRow("decimal comma") << 1500000ll << 1500ll << german << "1.5 MBytes, 1,5 sec, 8 Mbps";
        QTest::addRow("group separator, nothing") << 0ll << 1234567ll << american << "0 Bytes, 1,234.57 sec, 0 bps";
        QTest::addRow("zero elapsed counts as 1 ms") << 1ll << 0ll << c << "1 Bytes, 0 sec, 8 kbps";
        // clang-format on
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
        // clang-format off
        // shown: bar value / maximum, loss text
        columns<qint64, qint64, QString>("fileSize", "sentSize", "shown");
        QTest::addRow("3 GB in thousands") << 3000000000ll << 750000999ll << "750000/3000000 loss 2249999001 / 3000000000 bytes (75%)";
        QTest::addRow("divided as often as needed") << 3000000000000000ll << 0ll << "0/3000000 loss 3000000000000000 / 3000000000000000 bytes (100%)";
        QTest::addRow("default precision") << 3ll << 1ll << "1/3 loss 2 / 3 bytes (66.6667%)";
        QTest::addRow("empty file") << 0ll << 0ll << "0/0 loss 0 / 0 bytes (0%)";
        // clang-format on
    }
    void progressBarAndLoss()
    {
        QFETCH(qint64, fileSize);
        QFETCH(qint64, sentSize);
        const ProgressBarRange bar = TransferFigures::progressBarRange(fileSize, sentSize);
        const QString loss = TransferFigures::lossText(sentSize, fileSize);
        QTEST(QString("%1/%2 %3").arg(bar.value).arg(bar.maximum).arg(loss), "shown");
    }
};

QTEST_GUILESS_MAIN(TestTcpOutputOption)
#include "tst_tcpoutputoption.moc"
