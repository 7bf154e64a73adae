// The figures of the transfer dialogs: size, time and rate with their units, the progress bar
// range, the loss report, where received text may be cut, and the breaking of long lines.
#include "tcp/transferfigures.h"

#include <QLocale>
#include <QtTest>

class TestTransferFigures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QLocale::setDefault(QLocale::c()); }
    void size_data();
    void size();
    void time_data();
    void time();
    void rate_data();
    void rate();
    void progressBar_data();
    void progressBar();
    void loss_data();
    void loss();
    void utf8Boundary_data();
    void utf8Boundary();
    void longLines_data();
    void longLines();
};

static QString shown(const TransferFigure &figure)
{
    return figure.value + QLatin1Char(' ') + figure.unit;
}

void TestTransferFigures::size_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("shown");
    QTest::addRow("999 bytes stay bytes") << qint64(999) << "999 Bytes";
    QTest::addRow("1000 bytes are 1 KBytes") << qint64(1000) << "1 KBytes";
    QTest::addRow("divisor is 1000 not 1024") << qint64(1024) << "1.024 KBytes";
    QTest::addRow("largest KBytes") << qint64(999999) << "999.999 KBytes";
    QTest::addRow("1500000 bytes are 1.5 MBytes") << qint64(1500000) << "1.5 MBytes";
    QTest::addRow("six significant digits") << qint64(1234567890) << "1234.57 MBytes";
    QTest::addRow("3 GB stays in MBytes") << qint64(3000000000) << "3000 MBytes";
}

void TestTransferFigures::size()
{
    QFETCH(qint64, bytes);
    QTEST(shown(TransferFigures::sizeFigure(bytes)), "shown");
}

void TestTransferFigures::time_data()
{
    QTest::addColumn<QLocale>("locale");
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QString>("shown");
    const QLocale german(QLocale::German, QLocale::Germany);
    const QLocale american(QLocale::English, QLocale::UnitedStates);
    QTest::addRow("milliseconds") << QLocale::c() << qint64(7) << "0.007 sec";
    QTest::addRow("six significant digits") << QLocale::c() << qint64(1234567) << "1234.57 sec";
    QTest::addRow("locale decimal comma") << german << qint64(1500) << "1,5 sec";
    QTest::addRow("locale group separator") << american << qint64(1234567) << "1,234.57 sec";
}

void TestTransferFigures::time()
{
    QFETCH(QLocale, locale);
    QFETCH(qint64, elapsedMs);
    QLocale::setDefault(locale);
    const QString text = shown(TransferFigures::timeFigure(elapsedMs));
    QLocale::setDefault(QLocale::c());
    QTEST(text, "shown");
}

void TestTransferFigures::rate_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint64>("elapsedMs");
    QTest::addColumn<QString>("shown");
    QTest::addRow("992 bps stays bps") << qint64(124) << qint64(1000) << "992 bps";
    QTest::addRow("exactly 1000 bps is 1 kbps") << qint64(125) << qint64(1000) << "1 kbps";
    QTest::addRow("three significant digits") << qint64(1234) << qint64(1000) << "9.87 kbps";
    QTest::addRow("exactly 1000000 bps is 1 Mbps") << qint64(125000) << qint64(1000) << "1 Mbps";
    QTest::addRow("gigabit in Mbps") << qint64(1250000000) << qint64(10000) << "1e+03 Mbps";
    QTest::addRow("zero elapsed counts as 1 ms") << qint64(1) << qint64(0) << "8 kbps";
    QTest::addRow("nothing received") << qint64(0) << qint64(500) << "0 bps";
}

void TestTransferFigures::rate()
{
    QFETCH(qint64, bytes);
    QFETCH(qint64, elapsedMs);
    QTEST(shown(TransferFigures::rateFigure(bytes, elapsedMs)), "shown");
}

void TestTransferFigures::progressBar_data()
{
    QTest::addColumn<qint64>("fileSize");
    QTest::addColumn<qint64>("sentSize");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("value");
    QTest::addRow("largest int as it is")
        << qint64(2147483647) << qint64(2147483647) << 2147483647 << 2147483647;
    QTest::addRow("one above 2 GiB in thousands")
        << qint64(2147483648) << qint64(1000) << 2147483 << 1;
    QTest::addRow("3000000000 bytes")
        << qint64(3000000000) << qint64(1500000999) << 3000000 << 1500000;
    QTest::addRow("divided as often as needed")
        << qint64(3000000000000000) << qint64(3000000000000000) << 3000000 << 3000000;
    QTest::addRow("empty file") << qint64(0) << qint64(0) << 0 << 0;
    QTest::addRow("sent beyond size is capped") << qint64(100) << qint64(150) << 100 << 100;
}

void TestTransferFigures::progressBar()
{
    QFETCH(qint64, fileSize);
    QFETCH(qint64, sentSize);
    const ProgressBarRange range = TransferFigures::progressBarRange(fileSize, sentSize);
    QTEST(range.maximum, "maximum");
    QTEST(range.value, "value");
}

void TestTransferFigures::loss_data()
{
    QTest::addColumn<qint64>("sentSize");
    QTest::addColumn<qint64>("fileSize");
    QTest::addColumn<QString>("text");
    QTest::addRow("stopped after 250 of 1000")
        << qint64(250) << qint64(1000) << "loss 750 / 1000 bytes (75%)";
    QTest::addRow("default precision") << qint64(1) << qint64(3) << "loss 2 / 3 bytes (66.6667%)";
    QTest::addRow("beyond 2 GiB") << qint64(1000000000) << qint64(4000000000)
                                  << "loss 3000000000 / 4000000000 bytes (75%)";
    QTest::addRow("empty file has no loss") << qint64(0) << qint64(0) << "loss 0 / 0 bytes (0%)";
}

void TestTransferFigures::loss()
{
    QFETCH(qint64, sentSize);
    QFETCH(qint64, fileSize);
    QTEST(TransferFigures::lossText(sentSize, fileSize), "text");
}

void TestTransferFigures::utf8Boundary_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<qsizetype>("complete");
    const QByteArray a("\xE3\x81\x82");         // HIRAGANA LETTER A, three bytes
    const QByteArray smile("\xF0\x9F\x98\x80"); // four bytes
    QTest::addRow("ascii") << QByteArray("abc") << qsizetype(3);
    QTest::addRow("whole three-byte char") << QByteArray("x" + a) << qsizetype(4);
    QTest::addRow("lead byte alone is held") << QByteArray("x" + a.left(1)) << qsizetype(1);
    QTest::addRow("two of three bytes held") << QByteArray("x" + a.left(2)) << qsizetype(1);
    QTest::addRow("two-byte char cut") << QByteArray("ab\xC3") << qsizetype(2);
    QTest::addRow("four-byte char cut after three") << (a + smile.left(3)) << qsizetype(3);
    QTest::addRow("whole four-byte char") << (a + smile) << qsizetype(7);
    QTest::addRow("invalid byte is not held") << QByteArray("ab\xFF") << qsizetype(3);
    QTest::addRow("stray continuation bytes pass")
        << QByteArray("ab\x80\x80\x80\x80\x80") << qsizetype(7);
}

void TestTransferFigures::utf8Boundary()
{
    QFETCH(QByteArray, bytes);
    QTEST(TransferFigures::completeUtf8Length(bytes), "complete");
}

void TestTransferFigures::longLines_data()
{
    const QString smile = QString::fromUtf8("\xF0\x9F\x98\x80"); // a surrogate pair
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("currentLineChars");
    QTest::addColumn<QString>("expected");
    QTest::addRow("short lines untouched") << "ab\ncd" << 0 << "ab\ncd";
    QTest::addRow("long line broken") << "abcdefgh" << 0 << "abcd\nefgh";
    QTest::addRow("continues a filled line") << "abc" << 3 << "a\nbc";
    QTest::addRow("line end resets the count") << "ab\nabcde" << 2 << "ab\nabcd\ne";
    QTest::addRow("surrogate pair kept whole") << "abc" + smile + "x" << 0 << "abc" + smile + "\nx";
}

void TestTransferFigures::longLines()
{
    QFETCH(QString, text);
    QFETCH(int, currentLineChars);
    QTEST(TransferFigures::breakLongLines(text, currentLineChars, 4), "expected");
}

QTEST_GUILESS_MAIN(TestTransferFigures)
#include "tst_transferfigures.moc"
