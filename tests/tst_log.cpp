#include "app/log.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

class tst_Log : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void threshold_data();
    void threshold();
    void lineFormat_data();
    void lineFormat();
    void printfMessageIsCutAt8191Bytes();
    void rotationAtOpening_data();
    void rotationAtOpening();
    void rotationShiftsTenNumberedFiles();
    void nestedTraceBlocks();
    void twoThreadsNeverBreakALine();

private:
    QString logPath() const { return m_dir->filePath(QStringLiteral("MavixUtility.log")); }
    QList<QByteArray> lines() const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

QList<QByteArray> tst_Log::lines() const
{
    QFile file(logPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    QList<QByteArray> result = file.readAll().split('\n');
    result.removeAll(QByteArray());
    return result;
}

void tst_Log::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void tst_Log::cleanup()
{
    logClose();
}

void tst_Log::threshold_data()
{
    QTest::addColumn<int>("threshold");
    QTest::addColumn<int>("level");
    QTest::addColumn<bool>("written");
    QTest::addRow("threshold 10 drops DBG") << 10 << int(LOG_DBG) << false;
    QTest::addRow("threshold 10 keeps INFO") << 10 << int(LOG_INFO) << true;
    QTest::addRow("threshold 30 drops WRN") << 30 << int(LOG_WRN) << false;
    QTest::addRow("threshold 30 keeps ERR") << 30 << int(LOG_ERR) << true;
    QTest::addRow("negative threshold keeps DBG") << -1 << int(LOG_DBG) << true;
    QTest::addRow("threshold 0 keeps DBG") << 0 << int(LOG_DBG) << true;
}

void tst_Log::threshold()
{
    QFETCH(int, threshold);
    QFETCH(int, level);
    QFETCH(bool, written);
    logOpen(logPath(), threshold);
    QCOMPARE(logEnabled(level), written);
    logWrite(level, "INFO", "x.cpp", 1, QStringLiteral("hello"));
    logClose();
    QCOMPARE(lines().size(), written ? 1 : 0);
}

void tst_Log::lineFormat_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<unsigned>("line");
    QTest::addColumn<QByteArray>("word");
    QTest::addColumn<QByteArray>("expectedMiddle");
    QTest::addColumn<QString>("message");
    QTest::addRow("8-character file gets 17 blanks")
        << QByteArray("main.cpp") << 79u << QByteArray("INFO")
        << QByteArray(17, ' ') + "main.cpp:  79 " << "Application start.";
    QTest::addRow("25-character file is not padded")
        << QByteArray("abcdefghijklmnopqrstu.cpp") << 1u << QByteArray("ERR")
        << QByteArray("abcdefghijklmnopqrstu.cpp:   1 ") << "Application start.";
    QTest::addRow("non-ASCII message in UTF-8")
        << QByteArray("main.cpp") << 5u << QByteArray("INFO")
        << QByteArray(17, ' ') + "main.cpp:   5 " << QStringLiteral("読み込み完了 µs");
    QTest::addRow("longer file written whole")
        << QByteArray("a_rather_long_source_file_name.cpp") << 1234u << QByteArray("WRN")
        << QByteArray("a_rather_long_source_file_name.cpp:1234 ") << "Application start.";
    QTest::addRow("5-digit line widens its field")
        << QByteArray("log.cpp") << 12345u << QByteArray("DBG")
        << QByteArray(18, ' ') + "log.cpp:12345 " << "Application start.";
}

void tst_Log::lineFormat()
{
    QFETCH(QByteArray, file);
    QFETCH(unsigned, line);
    QFETCH(QByteArray, word);
    QFETCH(QByteArray, expectedMiddle);
    QFETCH(QString, message);
    logOpen(logPath(), -1);
    logWrite(LOG_ERR, word.constData(), file.constData(), line, message);
    logClose();

    const QList<QByteArray> written = lines();
    QCOMPARE(written.size(), 1);
    const QByteArray &text = written.first();
    const QRegularExpression stamp(QStringLiteral(R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} )"));
    QVERIFY2(stamp.match(QString::fromLatin1(text)).hasMatch(), text.constData());
    QCOMPARE(text.mid(24, expectedMiddle.size()), expectedMiddle);

    const QByteArray rest = text.mid(24 + expectedMiddle.size());
    QVERIFY(rest.indexOf(" [") >= 8); // thread field padded to 8
    QCOMPARE(rest.mid(rest.indexOf(" [")), " [" + word.rightJustified(4, ' ') + "] " +
                                               message.toUtf8());
}

void tst_Log::printfMessageIsCutAt8191Bytes()
{
    logOpen(logPath(), 0);
    const QByteArray big(9000, 'x');
    logWriteF(LOG_INFO, "INFO", "x.cpp", 1, "%s", big.constData());
    logClose();
    const QList<QByteArray> written = lines();
    QCOMPARE(written.size(), 1);
    const QByteArray message = written.first().mid(written.first().indexOf("] ") + 2);
    QCOMPARE(message.size(), 8191);
}

void tst_Log::rotationAtOpening_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<qint64>("size");
    QTest::addColumn<QString>("rotatedName");
    QTest::addRow("10485760 bytes kept") << "MavixUtility.log" << qint64(10485760) << QString();
    QTest::addRow("10485761 bytes rotated")
        << "MavixUtility.log" << qint64(10485761) << "MavixUtility.1.log";
    QTest::addRow("path without a dot rotates to name.1")
        << "applog" << qint64(10485761) << "applog.1";
}

void tst_Log::rotationAtOpening()
{
    QFETCH(QString, name);
    QFETCH(qint64, size);
    QFETCH(QString, rotatedName);
    const QString path = m_dir->filePath(name);
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(size));
    }
    logOpen(path, 0);
    logWrite(LOG_INFO, "INFO", "x.cpp", 1, QStringLiteral("after"));
    logClose();

    QFile current(path);
    QVERIFY(current.open(QIODevice::ReadOnly));
    if (rotatedName.isEmpty()) {
        QVERIFY(current.size() > size + 2);
        QCOMPARE(current.read(size + 2).right(2), QByteArray("\n\n"));
        return;
    }
    // The old file keeps its content plus the separator; the new one starts with the first line.
    QCOMPARE(QFileInfo(m_dir->filePath(rotatedName)).size(), size + 2);
    const QByteArray content = current.readAll();
    QVERIFY(!content.startsWith('\n'));
    QVERIFY(content.endsWith("after\n"));
}

void tst_Log::rotationShiftsTenNumberedFiles()
{
    for (int n = 1; n <= 10; ++n) {
        QFile file(m_dir->filePath(QStringLiteral("MavixUtility.%1.log").arg(n)));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray::number(n));
    }
    {
        QFile file(logPath());
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(file.resize(10485761));
    }
    logOpen(logPath(), 0);
    logClose();
    for (int n = 2; n <= 10; ++n) {
        QFile file(m_dir->filePath(QStringLiteral("MavixUtility.%1.log").arg(n)));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray::number(n - 1));
    }
    QVERIFY(!QFile::exists(m_dir->filePath(QStringLiteral("MavixUtility.11.log"))));
    QCOMPARE(QFileInfo(m_dir->filePath(QStringLiteral("MavixUtility.1.log"))).size(), 10485763);
}

void tst_Log::nestedTraceBlocks()
{
    logOpen(logPath(), 0);
    {
        TraceBlock outer("trace.cpp", 10, "outer", LOG_INFO);
        TraceBlock inner("trace.cpp", 11, "inner", LOG_INFO);
    }
    logClose();
    const QList<QByteArray> written = lines();
    QCOMPARE(written.size(), 4);
    QVERIFY(written[0].contains("[BLCK] outer -> "));
    QVERIFY(written[1].contains("[BLCK] inner -> "));
    const qint64 first = written[0].mid(written[0].lastIndexOf(' ') + 1).toLongLong();
    const qint64 second = written[1].mid(written[1].lastIndexOf(' ') + 1).toLongLong();
    QCOMPARE(second, first + 1);
    QVERIFY(written[2].endsWith(QByteArray("[   <]     <- ") + QByteArray::number(second) + " (" +
                                QByteArray::number(first) + ")"));
    QVERIFY(written[3].endsWith(QByteArray("[   <]     <- ") + QByteArray::number(first)));
}

void tst_Log::twoThreadsNeverBreakALine()
{
    constexpr int kLinesPerThread = 2000;
    logOpen(logPath(), 0);
    auto writer = [](char tag) {
        return QThread::create([tag] {
            for (int i = 0; i < kLinesPerThread; ++i)
                logWriteF(LOG_INFO, "INFO", "thread.cpp", 1, "%c-%05d-%s", tag, i,
                          "payload-payload-payload-payload");
        });
    };
    std::unique_ptr<QThread> a(writer('a'));
    std::unique_ptr<QThread> b(writer('b'));
    a->start();
    b->start();
    QVERIFY(a->wait(60000));
    QVERIFY(b->wait(60000));
    logClose();

    const QList<QByteArray> written = lines();
    QCOMPARE(written.size(), 2 * kLinesPerThread);
    const QRegularExpression whole(QStringLiteral(
        R"(^\S+ \S+ +thread\.cpp:   1 +0x[0-9a-f]+ \[INFO\] ([ab])-(\d{5})-payload-payload-payload-payload$)"));
    int next[2] = {0, 0};
    for (const QByteArray &line : written) {
        const QRegularExpressionMatch match = whole.match(QString::fromLatin1(line));
        QVERIFY2(match.hasMatch(), line.constData());
        const int who = match.captured(1) == QLatin1String("a") ? 0 : 1;
        QCOMPARE(match.captured(2).toInt(), next[who]++); // each thread's lines in order
    }
}

QTEST_GUILESS_MAIN(tst_Log)
#include "tst_log.moc"
