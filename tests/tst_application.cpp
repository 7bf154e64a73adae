// The MavixUtility program itself, started as a process on the offscreen platform and ended by
// SIGTERM as Ctrl+C would: the event loop ends normally and the closing sequence runs.
#include "testtable.h"

#include <QtTest>

#include <csignal>

class tst_Application : public QObject
{
    Q_OBJECT

private slots:
    // The arguments, and the messages of the log's first and last lines ("none": no log file).
    void startAndStop_data()
    {
        columns<QStringList, QString>("arguments", "ends");
        QTest::addRow("-l") << QStringList{"-l", "-target:127.0.0.1:9:9"}
                            << "Application start.|Application finished: code[0]";
        QTest::addRow("no log") << QStringList{"-target:127.0.0.1:9:9"} << "none|none";
    }
    void startAndStop()
    {
        QFETCH(QStringList, arguments);
        QTemporaryDir dir;
        QProcess app;
        app.setWorkingDirectory(dir.path());
        app.start(QStringLiteral(MAVIX_APP_PATH), arguments); // inherits the offscreen platform
        QVERIFY(app.waitForStarted(10000));
        QTest::qWait(1500); // let the window come up
        ::kill(pid_t(app.processId()), SIGTERM);
        QVERIFY(app.waitForFinished(20000));
        QCOMPARE(app.exitStatus() == QProcess::NormalExit ? app.exitCode() : -1, 0);
        QFile log(dir.filePath(QStringLiteral("MavixUtility.log")));
        const QByteArray all = log.open(QIODevice::ReadOnly) ? log.readAll() : "\n\nnone";
        QVERIFY(all.startsWith("\n\n"));
        QVERIFY(!log.isOpen() || all.contains("[INFO] application is closing\n"));
        const QList<QByteArray> lines = all.trimmed().split('\n');
        static const QRegularExpression format(QStringLiteral(
            R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} {18}main\.cpp: {0,3}\d+ +0x[0-9a-f]+ \[INFO\] (.*)$|^(none)$)"));
        const auto message = [](const QByteArray &line) {
            const QRegularExpressionMatch match = format.match(QString::fromUtf8(line));
            return match.captured(1) + match.captured(2);
        };
        QTEST(message(lines.first()) + u'|' + message(lines.last()), "ends");
    }
};

QTEST_GUILESS_MAIN(tst_Application)
#include "tst_application.moc"
