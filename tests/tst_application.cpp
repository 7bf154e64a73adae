// The program's arguments, and MavixUtility itself as a process ended by SIGTERM as Ctrl+C would:
// the event loop ends normally and the closing sequence runs.
#include "app/log.h"
#include "app/startupoptions.h"
#include "app/startupwarning.h"
#include "testtable.h"

#include <QtTest>
#include <QtWidgets>

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
    // What the arguments give: "warnings expert server port logging threshold|arguments|the value
    // the last warning box names".
    void grammar_data()
    {
        columns<QString, QString, QString>("arguments", "options", "named");
        // clang-format off
        for (const char *row : {"0 0 0 0 0 0||", "0 1 0 0 0 0|-expert|", "0 0 0 0 0 0|--expert -Expert -lx -L|",
                                "1 0 0 0 0 0|-uiport:|\"\"", "1 0 0 0 0 0|-uiport:70000|\"70000\"", "1 0 0 0 0 0|-uiport:0x50|\"0x50\"",
                                "0 0 1 0 0 0|-uiport:0|", "0 0 1 65535 0 0|-uiport:65535|",
                                "1 0 1 5000 0 0|-uiport:5000 -uiport:99999|\"99999\"", "0 0 1 6000 0 0|-uiport:5000 -uiport:6000|",
                                "0 0 0 0 1 0|-l|", "0 0 0 0 1 30|-l:30|", "0 0 0 0 0 -1|-l:-1|", "0 0 0 0 1 -1|-l -l:-1|",
                                "0 0 0 0 0 0|-l:abc|", "0 0 0 0 1 5|-l:5 -l|", "0 1 1 2323 1 20|-expert -uiport:2323 -l:20|"})
            QTest::addRow("%s", QString(row).section('|', 1, 1).toLatin1().constData()) << QString(row).section('|', 1, 1) << QString(row).section('|', 0, 0) << QString(row).section('|', 2);
        // clang-format on
    }
    void grammar()
    {
        QFETCH(QString, arguments);
        // The real warning box each time, answered with Ok as soon as it is up.
        int shown = 0;
        QString text;
        const auto warnAndAnswer = [this, &shown, &text](const QString &value) {
            ++shown;
            QTimer::singleShot(0, this, [&text] {
                auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
                text = box->windowTitle() + QLatin1Char('|') + box->text();
                box->button(QMessageBox::Ok)->click();
            });
            showInvalidPortWarning(value);
        };
        const StartupOptions o = parseStartupArguments(
            QStringList{"MavixUtility"} + arguments.split(u' ', Qt::SkipEmptyParts), warnAndAnswer);
        QTEST(QString::asprintf("%d %d %d %d %d %d", shown, int(o.expert), int(o.serverMode),
                                int(o.uiPort), int(o.loggingRequested), int(o.logThreshold)),
              "options");
        QFETCH(QString, named);
        if (shown)
            QCOMPARE(text,
                     QStringLiteral("|Server mode, uiport is invalid: %1 is not a port number "
                                    "from 0 to 65535")
                         .arg(named));
    }
    void logThatCannotOpenIsReported()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("MavixUtility.log"));
        QVERIFY(QDir().mkdir(path)); // a folder where the file should be
        StartupOptions options;
        QCOMPARE(openRequestedLog(options, path), QString()); // not asked for
        options.loggingRequested = true;
        QCOMPARE(openRequestedLog(options, path),
                 QStringLiteral("Cannot open the log file %1: Is a directory").arg(path));
        QVERIFY(!logEnabled(LOG_ERR));
    }
};

QTEST_MAIN(tst_Application)
#include "tst_application.moc"
