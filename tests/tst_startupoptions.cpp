#include "app/log.h"
#include "app/startupoptions.h"
#include "app/startupwarning.h"

#include <QApplication>
#include <QDir>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

class tst_StartupOptions : public QObject
{
    Q_OBJECT

private slots:
    void grammar_data();
    void grammar();
    void logThatCannotOpenIsReported();
    void targetParts_data();
    void targetParts();
};

// The arguments, and what they give: "warnings expert server port logging threshold".
void tst_StartupOptions::grammar_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("options");
    const auto row = [](const char *arguments, const char *options) {
        QTest::addRow("%s", arguments)
            << QString::fromLatin1(arguments) << QString::fromLatin1(options);
    };
    row("", "0 0 0 0 0 0");
    row("-expert", "0 1 0 0 0 0");
    row("--expert -Expert -lx -L", "0 0 0 0 0 0");
    row("-uiport:", "1 0 0 0 0 0");
    row("-uiport:70000", "1 0 0 0 0 0");
    row("-uiport:-1", "1 0 0 0 0 0");
    row("-uiport:abc", "1 0 0 0 0 0");
    row("-uiport:80x", "1 0 0 0 0 0");
    row("-uiport:0x50", "1 0 0 0 0 0");
    row("-uiport:1e3", "1 0 0 0 0 0");
    row("-uiport:4294967296", "1 0 0 0 0 0");
    row("-uiport:65536", "1 0 0 0 0 0");
    row("-uiport:0", "0 0 1 0 0 0");
    row("-uiport:65535", "0 0 1 65535 0 0");
    row("-uiport:5000 -uiport:99999", "1 0 1 5000 0 0");
    row("-uiport:5000 -uiport:6000", "0 0 1 6000 0 0");
    row("-l", "0 0 0 0 1 0");
    row("-l:30", "0 0 0 0 1 30");
    row("-l:-1", "0 0 0 0 0 -1");
    row("-l -l:-1", "0 0 0 0 1 -1");
    row("-l:abc", "0 0 0 0 0 0");
    row("-l:5 -l", "0 0 0 0 1 5");
    row("-expert -uiport:2323 -l:20", "0 1 1 2323 1 20");
}

void tst_StartupOptions::grammar()
{
    QFETCH(QString, arguments);
    // The real warning box each time, answered with Ok as soon as it is up.
    int shown = 0;
    QString text;
    const auto warnAndAnswer = [this, &shown, &text] {
        ++shown;
        QTimer::singleShot(0, this, [&text] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            text = box->windowTitle() + QLatin1Char('|') + box->text();
            box->button(QMessageBox::Ok)->click();
        });
        showInvalidPortWarning();
    };
    const StartupOptions o = parseStartupArguments(
        QStringList{"MavixUtility"} + arguments.split(u' ', Qt::SkipEmptyParts), warnAndAnswer);
    QTEST(QStringLiteral("%1 %2 %3 %4 %5 %6")
              .arg(shown)
              .arg(int(o.expert))
              .arg(int(o.serverMode))
              .arg(o.uiPort)
              .arg(int(o.loggingRequested))
              .arg(o.logThreshold),
          "options");
    if (shown)
        QCOMPARE(text, QStringLiteral("|Server mode, uiport is invalid"));
}

void tst_StartupOptions::logThatCannotOpenIsReported()
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

void tst_StartupOptions::targetParts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("parts");
    QTest::addRow("host only") << "127.0.0.1"
                               << "127.0.0.1||";
    QTest::addRow("host and udp") << "127.0.0.1:4660"
                                  << "127.0.0.1|4660|";
    QTest::addRow("all three") << "127.0.0.1:4660:2424"
                               << "127.0.0.1|4660|2424";
    QTest::addRow("bracketed v6") << "[::1]:5000:6000"
                                  << "::1|5000|6000";
    QTest::addRow("empty udp part") << "127.0.0.1::24"
                                    << "127.0.0.1||24";
}

void tst_StartupOptions::targetParts()
{
    QFETCH(QString, text);
    const TargetParts parts = splitTarget(text);
    QTEST(QStringList({parts.host, parts.udpPort, parts.tcpPort}).join(u'|'), "parts");
}

QTEST_MAIN(tst_StartupOptions)
#include "tst_startupoptions.moc"
