#include "app/log.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class tst_Log : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { logClose(); }
    void threshold_data();
    void threshold();
    void lineFormat_data();
    void lineFormat();
    void printfMessageIsCutAt8191Bytes();
    void rotationAtOpening_data();
    void rotationAtOpening();
    void nestedTraceBlocks();

private:
    QString path(const QString &name = QStringLiteral("MavixUtility.log")) const
    {
        return m_dir.filePath(name);
    }
    QByteArray content(const QString &name = QStringLiteral("MavixUtility.log")) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
    }
    QList<QByteArray> lines() const
    {
        QList<QByteArray> result = content().split('\n');
        result.removeAll(QByteArray());
        return result;
    }
    QTemporaryDir m_dir;
};

void tst_Log::threshold_data()
{
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("written");
    QTest::addRow("10 drops DBG") << 10 << int(LOG_DBG) << false;
    QTest::addRow("10 keeps INFO") << 10 << int(LOG_INFO) << true;
    QTest::addRow("30 drops WRN") << 30 << int(LOG_WRN) << false;
    QTest::addRow("30 keeps ERR") << 30 << int(LOG_ERR) << true;
    QTest::addRow("-1 keeps DBG") << -1 << int(LOG_DBG) << true;
}

void tst_Log::threshold()
{
    QFETCH(int, threshold);
    QFETCH(int, level);
    QFile::remove(path());
    QVERIFY(logOpen(path(), threshold));
    QTEST(logEnabled(level), "written");
    logWrite(level, "INFO", "x.cpp", 1, QStringLiteral("hello"));
    logClose();
    QTEST(content().endsWith("hello\n"), "written");
}

// Everything after the time stamp, with the thread field replaced by "T".
void tst_Log::lineFormat_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<unsigned>("line");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QString>("message");
    QTest::addColumn<QByteArray>("written");
    QTest::addRow("8-character file")
        << QByteArray("main.cpp") << 79u << QByteArray("INFO") << "Application start."
        << QByteArray("                 main.cpp:  79 T [INFO] "
                      "Application start.");
    QTest::addRow("25-character file")
        << QByteArray("abcdefghijklmnopqrstu.cpp") << 1u << QByteArray("ERR") << "x"
        << QByteArray("abcdefghijklmnopqrstu.cpp:   1 T [ ERR] x");
    QTest::addRow("longer file, 5-digit line")
        << QByteArray("a_rather_long_source_file_name.cpp") << 12345u << QByteArray("<") << "y"
        << QByteArray("a_rather_long_source_file_name.cpp:12345 T [   <] y");
    QTest::addRow("non-ASCII message")
        << QByteArray("log.cpp") << 5u << QByteArray("WRN") << QStringLiteral("受信 µs ✓")
        << QByteArray("                  log.cpp:   5 T [ WRN] \xe5\x8f\x97\xe4\xbf\xa1 \xc2\xb5s "
                      "\xe2\x9c\x93");
}

void tst_Log::lineFormat()
{
    QFETCH(QByteArray, file);
    QFETCH(unsigned, line);
    QFETCH(QByteArray, word);
    QFETCH(QString, message);
    QFile::remove(path());
    QVERIFY(logOpen(path(), -1));
    logWrite(LOG_ERR, word.constData(), file.constData(), line, message);
    logClose();
    const QByteArray text = lines().value(0);
    const QRegularExpression stamp(QStringLiteral(R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} )"));
    QVERIFY2(stamp.match(QString::fromLatin1(text)).hasMatch(), text.constData());
    // The thread: "0x" and lower-case hexadecimal, right-aligned in 8.
    const QRegularExpression thread(QStringLiteral(R"( ( *0x[0-9a-f]+) \[)"));
    const QRegularExpressionMatch match = thread.match(QString::fromLatin1(text.mid(24)));
    QVERIFY(match.hasMatch() && match.capturedLength(1) >= 8);
    QByteArray rest = text.mid(24);
    rest.replace(match.capturedStart(1), match.capturedLength(1), "T");
    QTEST(rest, "written");
}

void tst_Log::printfMessageIsCutAt8191Bytes()
{
    QVERIFY(logOpen(path(QStringLiteral("cut.log")), 0));
    logWriteF(LOG_INFO, "INFO", "x.cpp", 1, "%s", QByteArray(9000, 'x').constData());
    logClose();
    const QByteArray line = content(QStringLiteral("cut.log")).trimmed();
    QCOMPARE(line.size() - line.indexOf("] ") - 2, 8191);
}

// The file's name and size before opening, and the size of its first rotated copy (-1: none).
void tst_Log::rotationAtOpening_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<qint64>("rotatedSize");
    QTest::addRow("10485760 bytes kept") << "a.log" << qint64(10485760) << qint64(-1);
    QTest::addRow("10485761 bytes rotated") << "b.log" << qint64(10485761) << qint64(10485763);
    QTest::addRow("no dot") << "applog" << qint64(10485761) << qint64(10485763);
}

// Numbered copies 1..10 are there already: after a rotation each has moved up by one, the old
// 10 is gone and the log starts afresh with its first line.
void tst_Log::rotationAtOpening()
{
    QFETCH(QString, name);
    QFETCH(qint64, size);
    QFETCH(qint64, rotatedSize);
    const auto numbered = [&name](int n) {
        return name.contains(u'.') ? name.section(u'.', 0, 0) + QStringLiteral(".%1.log").arg(n)
                                   : name + QStringLiteral(".%1").arg(n);
    };
    for (int n = 1; n <= 10; ++n) {
        QFile file(path(numbered(n)));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(QByteArray::number(n)) > 0);
    }
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(size));
    file.close();
    QVERIFY(logOpen(path(name), 0));
    logClose();
    QCOMPARE(QFileInfo(path(numbered(1))).size(), rotatedSize < 0 ? 1 : rotatedSize);
    QCOMPARE(content(numbered(10)), QByteArray(rotatedSize < 0 ? "10" : "9"));
    QCOMPARE(content(numbered(11)), QByteArray("missing"));
    QCOMPARE(QFileInfo(path(name)).size(), rotatedSize < 0 ? size + 2 : 0);
}

void tst_Log::nestedTraceBlocks()
{
    QVERIFY(logOpen(path(QStringLiteral("trace.log")), 0));
    {
        TraceBlock outer("trace.cpp", 10, "outer", LOG_INFO);
        TraceBlock inner("trace.cpp", 11, "inner", LOG_INFO);
    }
    logClose();
    QList<QByteArray> written = content(QStringLiteral("trace.log")).split('\n');
    written.removeAll(QByteArray());
    QCOMPARE(written.size(), 4);
    // The first blocks ever made in this process.
    QVERIFY(written[0].endsWith("[BLCK] outer -> 1"));
    QVERIFY(written[1].endsWith("[BLCK] inner -> 2"));
    QVERIFY(written[2].endsWith("[   <]     <- 2 (1)"));
    QVERIFY(written[3].endsWith("[   <]     <- 1"));
}

QTEST_GUILESS_MAIN(tst_Log)
#include "tst_log.moc"
