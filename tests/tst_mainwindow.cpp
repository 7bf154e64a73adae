// The main window as a user meets it, built the way the program builds it, with its eye and its
// About dialog. The target is always a loopback address: nothing here presses Read or Write.
#include "app/appcontext.h"
#include "app/appmodel.h"
#include "app/devicetarget.h"
#include "app/report.h"
#include "settings/mavixsetting.h"
#include "sim/simdataport.h"
#include "tcp/tcpthread.h"
#include "testtable.h"
#include "ui/aboutdialog.h"
#include "ui/logoview.h"
#include "ui/mainwindow.h"

#include <QtTest>
#include <QtWidgets>

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { build(QStringLiteral("127.0.0.1:4660:24")); }
    void cleanup()
    {
        m_context.reset();
        if (!QFile::remove(m_versionPath))
            QDir().rmdir(m_versionPath);
    }
    // Text from the command line or a device is shown as typed: markup stays visible text.
    void messageArea_data()
    {
        columns<bool, QString, QString>("error", "text", "colour");
        // clang-format off
        QTest::addRow("result in blue") << false << "UDP read successed" << "#0000c0";
        QTest::addRow("error in red with prefix") << true << "UDP read is timeout" << "#ff0000";
        QTest::addRow("markup kept as text") << false << "<b>bold</b> & <img src=x>" << "#0000c0";
        QTest::addRow("error markup kept as text") << true << "-target:<i>x</i> is ignored" << "#ff0000";
        // clang-format on
    }
    void messageArea()
    {
        QFETCH(bool, error);
        QFETCH(QString, text);
        QFETCH(QString, colour);
        error ? reportError(text) : reportResult(text);
        const QString shown = (error ? " | Error:" : " | ") + text;
        const QString plain = area()->toPlainText();
        static const QRegularExpression stamp(
            QStringLiteral(R"(^\n\d{4}/\d\d/\d\d \d\d:\d\d:\d\d)"));
        const QRegularExpressionMatch match = stamp.match(plain);
        QVERIFY2(match.hasMatch() && plain.mid(match.capturedLength()) == shown, qPrintable(plain));
        QVERIFY(area()->toHtml().contains(QStringLiteral("color:") + colour));
    }
    void presetTarget_data()
    {
        // fields: IP, UDP and TCP fields afterwards
        columns<QString, QString, bool>("preset", "fields", "reported");
        // clang-format off
        QTest::addRow("all parts") << "127.0.0.2:5000:6000" << "127.0.0.2 5000 6000" << false;
        QTest::addRow("host only keeps the ports") << "127.0.0.3" << "127.0.0.3 4660 24" << false;
        QTest::addRow("IPv6 loopback") << "[::1]:5000" << "::1 5000 24" << false;
        QTest::addRow("empty UDP part") << "127.0.0.1::6000" << "127.0.0.1 4660 6000" << false;
        QTest::addRow("bad host stays as typed") << "300.0.0.1:5000" << "300.0.0.1 5000 24" << true;
        QTest::addRow("leading zeros") << "127.000.0.1" << "127.000.0.1 4660 24" << true;
        QTest::addRow("bad UDP port keeps the host") << "127.0.0.1:99999" << "127.0.0.1 4660 24" << true;
        QTest::addRow("bad UDP port keeps the TCP port") << "127.0.0.2:x:6000" << "127.0.0.2 4660 6000" << true;
        QTest::addRow("bad TCP port keeps the rest") << "127.0.0.2:5000:70000" << "127.0.0.2 5000 24" << true;
        // clang-format on
    }
    void presetTarget()
    {
        QFETCH(QString, preset);
        QFETCH(bool, reported);
        build(preset);
        QTEST(field("GenTargetIPAddressTextarea") + ' ' + field("GenTargetUDPPortTextarea") + ' ' +
                  field("GenTargetTCPPortTextarea"),
              "fields");
        QCOMPARE(area()->toPlainText().contains(QStringLiteral("-target:") + preset), reported);
        // Never the factory address in place of the host the user named.
        QCOMPARE(m_context->target()->host(), field("GenTargetIPAddressTextarea"));
    }
    void tabChangeReappliesTarget()
    {
        auto *tabs = window()->findChild<QTabWidget *>("modeTab");
        auto *ip = window()->findChild<QLineEdit *>("GenTargetIPAddressTextarea");
        ip->setText(QStringLiteral("127.0.0.9"));
        tabs->setCurrentIndex(1);
        QCOMPARE(m_context->target()->host(), QStringLiteral("127.0.0.9"));
        ip->setText(QStringLiteral("not an address"));
        tabs->setCurrentIndex(2);
        tabs->setCurrentIndex(0);
        QCOMPARE(area()->toPlainText().count(QStringLiteral("Error:IP address is invalid")), 2);
        QCOMPARE(m_context->target()->host(), QStringLiteral("127.0.0.9"));
    }
    // The eye follows the window's height; a hidden shortcut makes it blink.
    void logoFollowsWindowHeightAndShortcut()
    {
        auto *logo = window()->findChild<LogoView *>("graphicsView");
        window()->show();
        QVERIFY(QTest::qWaitForWindowActive(window()));
        QTRY_COMPARE(logo->size(), QSize(72, 72));
        window()->resize(1000, 990);
        QTRY_COMPARE(logo->size(), QSize(108, 108));
        window()->resize(1000, 2000);
        QTRY_COMPARE(logo->size(), QSize(144, 144));
        logo->OpenEye();
        QTest::keySequence(
            window(), QKeySequence(QStringLiteral("Ctrl+Shift+A, Ctrl+Shift+N, Ctrl+Shift+I")));
        QCOMPARE(logo->mode(), LogoView::ModeBlinking);
    }
    // Closing while a send to a device that takes nothing runs ends the program at once.
    void closingMidTransferEndsAtOnce()
    {
        QCOMPARE(AppContext::kSocketCloseWaitMs, 10000); // the most closing may wait for the socket
        QTemporaryDir dir;
        SimDataPort port;
        port.setStuck(true);
        QVERIFY(port.start(QHostAddress::LocalHost, 0) != 0);
        QFile file(dir.filePath("data.bin"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.resize(64 * 1024 * 1024));
        build(QStringLiteral("127.0.0.1:9:%1").arg(port.port()));
        m_context->model()->sendOption()->setFileName(file.fileName());
        m_context->worker()->beginSendThread(
            TransferRun::of(*m_context->model()->sendOption(), "127.0.0.1", port.port()));
        QTRY_COMPARE_WITH_TIMEOUT(m_context->worker()->sendStatus(), TS_RUN, 10000);
        QElapsedTimer closing;
        closing.start();
        m_context.reset();
        QVERIFY2(closing.elapsed() < 3000, QByteArray::number(closing.elapsed()));
    }
    // Mode, picture, and the blink timer's interval while it runs (0: stopped).
    void states_data()
    {
        columns<QString, QString>("steps", "state");
        // "steps: mode picture interval"
        for (const char *row :
             {": 0 openEye 0", "start: 2 openEye 100", "start 3: 2 openEye 100",
              "start 4: 2 halfEye 100", "start 5: 2 closeEye 100", "start 6: 2 closeEye 100",
              "start 7: 2 upEye 100", "start 10: 2 upEye 100", "start 11: 2 openEye 100",
              "start 12: 0 openEye 0", "close: 1 closeEye 0", "close start: 2 openEye 100",
              "start 8 close: 1 closeEye 0", "start 9 start 4: 2 halfEye 100"})
            QTest::addRow("%s", row)
                << QString(row).section(": ", 0, 0) << QString(row).section(": ", 1);
    }
    void states()
    {
        QFETCH(QString, steps);
        LogoView view;
        for (const QString &step : steps.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            if (step == u"start")
                view.StartAnimation();
            else if (step == u"close")
                view.CloseEye();
            else if (step == u"open")
                view.OpenEye();
            else // a number moves the blink on by that many ticks
                for (int tick = step.toInt(); tick > 0; --tick)
                    view.forwardAnimation();
        }
        const QTimer *timer = view.findChild<QTimer *>();
        QTEST(QString::asprintf("%d %s %d", int(view.mode()), qPrintable(view.chosenImageName()),
                                timer->isActive() ? timer->interval() : 0),
              "state");
    }
    // The file's content ("folder": a folder in its place, "missing": none) and the version shown.
    void productText_data()
    {
        // clang-format off
        columns<QByteArray, QString>("content", "version");
        QTest::addRow("no file") << QByteArray("missing") << "";
        QTest::addRow("folder") << QByteArray("folder") << "";
        QTest::addRow("name blank version") << QByteArray("Mavix Utility 1.2.3\n4.5.6\n") << "1.2.3";
        QTest::addRow("upper-case name glued") << QByteArray("MAVIX UTILITY2.0") << "2.0";
        QTest::addRow("trimmed") << QByteArray("  \tMavix Utility   3.4 beta \t\r\n") << "3.4 beta";
        QTest::addRow("another name kept") << QByteArray("Mavix Tool 1.0\n") << "Mavix Tool 1.0";
        // clang-format on
    }
    // Each row writes the file anew and opens a new dialog: the file is read at each opening.
    void productText()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, version);
        QFile file(m_versionPath);
        if (content == "folder")
            QVERIFY(QDir().mkdir(m_versionPath));
        else if (content != "missing")
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        file.close();
        const QString name = "<p><span style=\"font-size: 20px\">Mavix Utility";
        QCOMPARE(AboutDialog().findChild<QLabel *>("software_name_vesion")->text(),
                 version.isEmpty()
                     ? name + "</span></p>"
                     : name + " </span><span style=\"font-size: 13px\">" + version + "</span></p>");
    }

private:
    MainWindow *window() const { return m_context->mainWindow(); }
    QTextEdit *area() const { return window()->findChild<QTextEdit *>("errorLabel"); }
    QString field(const char *n) const { return window()->findChild<QLineEdit *>(n)->text(); }
    void build(const QString &presetTarget)
    {
        m_context.reset();
        m_context = std::make_unique<AppContext>(false, false, 0, true, nullptr, presetTarget);
    }
    std::unique_ptr<AppContext> m_context;
    // The About dialog reads version.txt beside the program; the test has a folder of its own.
    const QString m_versionPath = QCoreApplication::applicationDirPath() + "/version.txt";
};

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
