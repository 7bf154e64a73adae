// The MavixUtility program itself, started as a process on the offscreen platform and ended by
// SIGTERM as Ctrl+C would: the event loop ends normally and the closing sequence runs.
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

class tst_Application : public QObject
{
    Q_OBJECT

private slots:
    void startAndStop_data();
    void startAndStop();
};

// The arguments, and the messages of the log's first and last lines ("none": no log file).
void tst_Application::startAndStop_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("ends");
    QTest::addRow("-l") << QStringList{"-l", "-target:127.0.0.1:9:9"}
                        << "Application start.|Application finished: code[0]";
    QTest::addRow("no log") << QStringList{"-target:127.0.0.1:9:9"} << "none";
}

void tst_Application::startAndStop()
{
    QFETCH(QStringList, arguments);
    QTemporaryDir dir;
    QFile log(dir.filePath(QStringLiteral("MavixUtility.log")));
    QProcess app;
    app.setWorkingDirectory(dir.path());
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    app.setProcessEnvironment(env);
    app.start(QStringLiteral(MAVIX_APP_PATH), arguments);
    QVERIFY(app.waitForStarted(10000));
    QTest::qWait(1500); // let the window come up
    ::kill(pid_t(app.processId()), SIGTERM);
    QVERIFY(app.waitForFinished(20000));
    QCOMPARE(app.exitStatus(), QProcess::NormalExit);
    QCOMPARE(app.exitCode(), 0);
    if (!log.open(QIODevice::ReadOnly)) {
        QTEST(QStringLiteral("none"), "ends");
        return;
    }
    const QByteArray all = log.readAll();
    QVERIFY(all.startsWith("\n\n"));
    QVERIFY(all.contains("[INFO] application is closing\n"));
    const QList<QByteArray> lines = all.trimmed().split('\n');
    const QRegularExpression format(QStringLiteral(
        R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} {18}main\.cpp: {0,3}\d+ +0x[0-9a-f]+ \[INFO\] (.*)$)"));
    const auto message = [&format](const QByteArray &line) {
        return format.match(QString::fromUtf8(line)).captured(1);
    };
    QTEST(message(lines.first()) + u'|' + message(lines.last()), "ends");
}

QTEST_GUILESS_MAIN(tst_Application)
#include "tst_application.moc"
