#include "app/log.h"
#include "app/qtmessages.h"
#include "testtable.h"

#include <QtTest>

class tst_Log : public QObject
{
    Q_OBJECT

private slots:
    void cleanup() { logClose(); }
    void threshold_data()
    {
        columns<int, int, bool>("threshold", "level", "written");
        QTest::addRow("10 drops DBG") << 10 << int(LOG_DBG) << false;
        QTest::addRow("10 keeps INFO") << 10 << int(LOG_INFO) << true;
        QTest::addRow("30 drops WRN") << 30 << int(LOG_WRN) << false;
        QTest::addRow("30 keeps ERR") << 30 << int(LOG_ERR) << true;
        QTest::addRow("-1 keeps DBG") << -1 << int(LOG_DBG) << true;
    }
    void threshold()
    {
        QFETCH(int, threshold);
        QFETCH(int, level);
        QFile::remove(path());
        QVERIFY(logOpen(path(), threshold));
        QTEST(logEnabled(level), "written");
        logWrite(level, "INFO", "x.cpp", 1, QStringLiteral("hello"));
        logClose();
        QTEST(lines().value(0).endsWith("hello"), "written");
    }
    // Everything after the time stamp, with the thread field ("0x" and lower-case hexadecimal,
    // right-aligned in 8) replaced by "T".
    void lineFormat_data()
    {
        // clang-format off
        columns<QByteArray, unsigned, QByteArray, QString, QByteArray>("file", "line", "word", "message", "written");
        QTest::addRow("8-character file") << QByteArray("main.cpp") << 79u << QByteArray("INFO") << "Application start." << QByteArray("                 main.cpp:  79 T [INFO] Application start.");
        QTest::addRow("25-character file") << QByteArray("abcdefghijklmnopqrstu.cpp") << 1u << QByteArray("ERR") << "x" << QByteArray("abcdefghijklmnopqrstu.cpp:   1 T [ ERR] x");
        QTest::addRow("longer file, 5-digit line") << QByteArray("a_rather_long_source_file_name.cpp") << 12345u << QByteArray("<") << "y" << QByteArray("a_rather_long_source_file_name.cpp:12345 T [   <] y");
        QTest::addRow("non-ASCII message") << QByteArray("log.cpp") << 5u << QByteArray("WRN") << QStringLiteral("受信 µs ✓") << QByteArray("                  log.cpp:   5 T [ WRN] \xe5\x8f\x97\xe4\xbf\xa1 \xc2\xb5s \xe2\x9c\x93");
        // clang-format on
    }
    void lineFormat()
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
        static const QRegularExpression stamp(QStringLiteral(
            R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} .*?: *\d+ ( *0x[0-9a-f]+) \[)"));
        const QRegularExpressionMatch match = stamp.match(QString::fromLatin1(text));
        QVERIFY2(match.hasMatch() && match.capturedLength(1) >= 8, text.constData());
        QTEST(text.mid(24).replace(match.capturedStart(1) - 24, match.capturedLength(1), "T"),
              "written");
    }
    void printfMessageIsCutAt8191Bytes()
    {
        QVERIFY(logOpen(path(QStringLiteral("cut.log")), 0));
        logWriteF(LOG_INFO, "INFO", "x.cpp", 1, "%s", QByteArray(9000, 'x').constData());
        logClose();
        const QByteArray line = lines(QStringLiteral("cut.log")).value(0);
        QCOMPARE(line.size() - line.indexOf("] ") - 2, 8191);
    }
    // A flood from one call site is cut short and counted; the file rotates at its limit while
    // the program runs.
    void floodSummarisedAndRotatedWhileRunning()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath("f.log");
        logSetRotateAboveBytes(4096);
        QVERIFY(logOpen(path, 0));
        for (int i = 0; i < 1000; ++i)
            logWrite(LOG_ERR, "ERR", "flood.cpp", 1, QByteArray::number(i));
        logWrite(LOG_INFO, "INFO", "other.cpp", 2, "after");
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QList<QByteArray> lines = file.readAll().trimmed().split('\n');
        QCOMPARE(lines.size(), 22);
        QVERIFY(lines.at(19).endsWith("[ ERR] 19"));
        QVERIFY(lines.at(20).endsWith("[ ERR] \xe2\x80\xa6 980 more like this"));
        for (int site = 0; site < 60; ++site) // 60 lines of some 70 bytes
            logWrite(LOG_INFO, "INFO", "many.cpp", unsigned(site), "x");
        QVERIFY(QFileInfo(dir.filePath("f.1.log")).size() > 4096);
        QVERIFY(QFileInfo(path).size() < 4096);
        logClose();
        logSetRotateAboveBytes(10485760);
    }
    // The file's name and size before opening, and the size of its first rotated copy (-1: none).
    void rotationAtOpening_data()
    {
        columns<QString, qint64, qint64>("name", "size", "rotatedSize");
        QTest::addRow("10485760 bytes kept") << "a.log" << qint64(10485760) << qint64(-1);
        QTest::addRow("10485761 bytes rotated") << "b.log" << qint64(10485761) << qint64(10485763);
        QTest::addRow("no dot") << "applog" << qint64(10485761) << qint64(10485763);
    }
    // Numbered copies 1..10 are there already: after a rotation each has moved up by one, the old
    // 10 is gone and the log starts afresh with its first line.
    void rotationAtOpening()
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
        QCOMPARE(lines(numbered(10)), QList<QByteArray>{rotatedSize < 0 ? "10" : "9"});
        QCOMPARE(lines(numbered(11)), QList<QByteArray>{"missing"});
        QCOMPARE(QFileInfo(path(name)).size(), rotatedSize < 0 ? size + 2 : 0);
    }
    // The font engine's complaint about shown binary data reaches neither the log nor the
    // terminal; everything else goes on.
    void fontEngineComplaintDropped()
    {
        static QStringList passed;
        installQtMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &text) { passed << text; });
        qWarning("  OpenType support missing for \"DejaVu Sans\", script 11");
        qWarning("OpenType support is fine");
        qInstallMessageHandler(nullptr);
        QCOMPARE(passed, QStringList{"OpenType support is fine"});
    }

private:
    QString path(const QString &name = "MavixUtility.log") const { return m_dir.filePath(name); }
    // The file's lines, or "missing".
    QList<QByteArray> lines(const QString &name = QStringLiteral("MavixUtility.log")) const
    {
        QFile file(path(name));
        QList<QByteArray> result = file.open(QIODevice::ReadOnly) ? file.readAll().split('\n')
                                                                  : QList<QByteArray>{"missing"};
        result.removeAll(QByteArray());
        return result;
    }
    QTemporaryDir m_dir;
};

QTEST_GUILESS_MAIN(tst_Log)
#include "tst_log.moc"
