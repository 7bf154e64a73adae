#include "app/startupoptions.h"
#include "app/startupwarning.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

class tst_StartupOptions : public QObject
{
    Q_OBJECT

private slots:
    void grammar_data();
    void grammar();
    void warningBoxIsShownAndAnswered();
    void targetSpec_data();
    void targetSpec();
};

void tst_StartupOptions::grammar_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("warnings");
    QTest::addColumn<bool>("expert");
    QTest::addColumn<bool>("serverMode");
    QTest::addColumn<int>("uiPort");
    QTest::addColumn<bool>("logging");
    QTest::addColumn<int>("threshold");

    const QStringList none;
    QTest::addRow("no arguments") << none << 0 << false << false << 0 << false << 0;
    QTest::addRow("-expert") << QStringList{"-expert"} << 0 << true << false << 0 << false << 0;
    QTest::addRow("--expert, -Expert, -lx, -L ignored")
        << QStringList{"--expert", "-Expert", "-lx", "-L"} << 0 << false << false << 0 << false
        << 0;
    QTest::addRow("-uiport: alone")
        << QStringList{"-uiport:"} << 1 << false << false << 0 << false << 0;
    QTest::addRow("-uiport:70000")
        << QStringList{"-uiport:70000"} << 1 << false << false << 0 << false << 0;
    QTest::addRow("-uiport:-1") << QStringList{"-uiport:-1"} << 1 << false << false << 0 << false
                                << 0;
    QTest::addRow("-uiport:abc") << QStringList{"-uiport:abc"} << 1 << false << false << 0 << false
                                 << 0;
    QTest::addRow("-uiport:0") << QStringList{"-uiport:0"} << 0 << false << true << 0 << false << 0;
    QTest::addRow("-uiport:80x") << QStringList{"-uiport:80x"} << 0 << false << true << 80 << false
                                 << 0;
    QTest::addRow("-uiport:65535")
        << QStringList{"-uiport:65535"} << 0 << false << true << 65535 << false << 0;
    QTest::addRow("-uiport:65536")
        << QStringList{"-uiport:65536"} << 1 << false << false << 0 << false << 0;
    QTest::addRow("valid then invalid keeps the first")
        << QStringList{"-uiport:5000", "-uiport:99999"} << 1 << false << true << 5000 << false << 0;
    QTest::addRow("two valid: last wins")
        << QStringList{"-uiport:5000", "-uiport:6000"} << 0 << false << true << 6000 << false << 0;
    QTest::addRow("-l logs everything")
        << QStringList{"-l"} << 0 << false << false << 0 << true << 0;
    QTest::addRow("-l:10") << QStringList{"-l:10"} << 0 << false << false << 0 << true << 10;
    QTest::addRow("-l:30") << QStringList{"-l:30"} << 0 << false << false << 0 << true << 30;
    QTest::addRow("-l:-1 alone opens no log")
        << QStringList{"-l:-1"} << 0 << false << false << 0 << false << -1;
    QTest::addRow("-l -l:-1 logs every level")
        << QStringList{"-l", "-l:-1"} << 0 << false << false << 0 << true << -1;
    QTest::addRow("-l:abc ignored")
        << QStringList{"-l:abc"} << 0 << false << false << 0 << false << 0;
    QTest::addRow("-l:5 -l keeps 5")
        << QStringList{"-l:5", "-l"} << 0 << false << false << 0 << true << 5;
    QTest::addRow("everything together") << QStringList{"-expert", "-uiport:2323", "-l:20"} << 0
                                         << true << true << 2323 << true << 20;
}

void tst_StartupOptions::grammar()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, warnings);
    // The real warning box each time, answered with Ok as soon as it is up.
    int shown = 0;
    const auto warnAndAnswer = [this, &shown] {
        ++shown;
        QTimer::singleShot(0, this, [] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget()))
                box->button(QMessageBox::Ok)->click();
        });
        showInvalidPortWarning();
    };
    const StartupOptions options =
        parseStartupArguments(QStringList{"MavixUtility"} + arguments, warnAndAnswer);
    QCOMPARE(shown, warnings);
    QTEST(options.expert, "expert");
    QTEST(options.serverMode, "serverMode");
    QTEST(int(options.uiPort), "uiPort");
    QTEST(options.loggingRequested, "logging");
    QTEST(int(options.logThreshold), "threshold");
}

// The real box: modal, no parent, empty title, one Ok button; reading goes on after it.
void tst_StartupOptions::warningBoxIsShownAndAnswered()
{
    QString title = QStringLiteral("unset");
    QString text;
    int buttons = 0;
    QTimer::singleShot(0, this, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        QVERIFY(box);
        title = box->windowTitle();
        text = box->text();
        buttons = int(box->buttons().size());
        box->button(QMessageBox::Ok)->click();
    });
    const StartupOptions options =
        parseStartupArguments({"MavixUtility", "-uiport:abc", "-expert"}, showInvalidPortWarning);
    QCOMPARE(title, QString());
    QCOMPARE(text, QStringLiteral("Server mode, uiport is invalid"));
    QCOMPARE(buttons, 1);
    QVERIFY(options.expert);
    QVERIFY(!options.serverMode);
}

void tst_StartupOptions::targetSpec_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("udp");
    QTest::addColumn<QString>("tcp");
    QTest::addRow("host only") << "127.0.0.1"
                               << "127.0.0.1"
                               << ""
                               << "";
    QTest::addRow("host and udp") << "127.0.0.1:4660"
                                  << "127.0.0.1"
                                  << "4660"
                                  << "";
    QTest::addRow("all three") << "127.0.0.1:4660:2424"
                               << "127.0.0.1"
                               << "4660"
                               << "2424";
    QTest::addRow("bracketed v6") << "[::1]:5000:6000"
                                  << "::1"
                                  << "5000"
                                  << "6000";
    QTest::addRow("empty udp part") << "127.0.0.1::24"
                                    << "127.0.0.1"
                                    << ""
                                    << "24";
}

void tst_StartupOptions::targetSpec()
{
    QFETCH(QString, text);
    const TargetParts parts = splitTarget(text);
    QTEST(parts.host, "host");
    QTEST(parts.udpPort, "udp");
    QTEST(parts.tcpPort, "tcp");
}

QTEST_MAIN(tst_StartupOptions)
#include "tst_startupoptions.moc"
