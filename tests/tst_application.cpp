// The MavixUtility program itself, started as a process on the offscreen platform.
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
    void logsStartAndFinishAroundANormalEnd();
    void withoutLogOptionNoFileIsWritten();

private:
    static QByteArray readLog(const QString &path);
    void startAndStop(const QTemporaryDir &dir, const QStringList &arguments,
                      const QString &logPath);
};

QByteArray tst_Application::readLog(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Runs the program until its window is up, then asks it to end as Ctrl+C would: the event loop
// ends normally and the closing sequence runs.
void tst_Application::startAndStop(const QTemporaryDir &dir, const QStringList &arguments,
                                   const QString &logPath)
{
    QProcess app;
    app.setWorkingDirectory(dir.path());
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    app.setProcessEnvironment(env);
    app.start(QStringLiteral(MAVIX_APP_PATH), arguments);
    QVERIFY(app.waitForStarted(10000));
    if (!logPath.isEmpty())
        QTRY_VERIFY_WITH_TIMEOUT(readLog(logPath).contains("Application start."), 10000);
    QTest::qWait(1500); // let the window come up
    ::kill(pid_t(app.processId()), SIGTERM);
    QVERIFY(app.waitForFinished(20000));
    QCOMPARE(app.exitStatus(), QProcess::NormalExit);
    QCOMPARE(app.exitCode(), 0);
}

void tst_Application::logsStartAndFinishAroundANormalEnd()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("MavixUtility.log"));
    startAndStop(dir, {QStringLiteral("-l"), QStringLiteral("-target:127.0.0.1:9:9")}, path);

    QList<QByteArray> lines = readLog(path).split('\n');
    lines.removeAll(QByteArray());
    QVERIFY(lines.size() >= 4);
    const QRegularExpression format(QStringLiteral(
        R"(^\d{4}/\d\d/\d\d \d\d:\d\d:\d\d\.\d{3} {18}main\.cpp: {0,3}\d+ +0x[0-9a-f]+ \[INFO\] (.*)$)"));
    const auto message = [&](const QByteArray &line) {
        const QRegularExpressionMatch match = format.match(QString::fromUtf8(line));
        return match.hasMatch() ? match.captured(1) : QStringLiteral("<bad line> ") + line;
    };
    QCOMPARE(message(lines.first()), QStringLiteral("Application start."));
    QCOMPARE(message(lines.last()), QStringLiteral("Application finished: code[0]"));
    const QByteArray all = readLog(path);
    QVERIFY(all.contains("[INFO] application is closing\n"));
    QVERIFY(all.contains("[INFO] application closed\n"));
    QVERIFY(all.startsWith("\n\n"));
}

void tst_Application::withoutLogOptionNoFileIsWritten()
{
    QTemporaryDir dir;
    startAndStop(dir, {QStringLiteral("-target:127.0.0.1:9:9")}, QString());
    QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("MavixUtility.log"))));
}

QTEST_GUILESS_MAIN(tst_Application)
#include "tst_application.moc"
