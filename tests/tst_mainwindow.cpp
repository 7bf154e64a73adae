#include "app/appcontext.h"
#include "app/log.h"
#include "app/report.h"
#include "settings/mavixsetting.h"
#include "ui/logoview.h"
#include "ui/mainwindow.h"

#include <QApplication>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QRegularExpression>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTextEdit>

// The main window as a user meets it, built the way the program builds it. The target is always a
// loopback address: nothing here presses Read or Write.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void tabsInFormOrder();
    void windowFrame();
    void messageArea_data();
    void messageArea();
    void markupIsInterpreted();
    void newestEntryIsScrolledIntoView();
    void reportsWithoutWindowReachOnlyTheLog();
    void presetTarget_data();
    void presetTarget();
    void tabChangeReappliesTarget();
    void hiddenShortcutStartsBlink();

private:
    MainWindow *window() const { return m_context->mainWindow(); }
    QTextEdit *area() const { return window()->findChild<QTextEdit *>("errorLabel"); }
    void build(const QString &presetTarget);

    std::unique_ptr<AppContext> m_context;
};

void tst_MainWindow::build(const QString &presetTarget)
{
    m_context.reset();
    m_context = std::make_unique<AppContext>(false, false, 0, true, nullptr, presetTarget);
}

void tst_MainWindow::init()
{
    build(QStringLiteral("127.0.0.1:4660:24"));
}

void tst_MainWindow::cleanup()
{
    m_context.reset();
}

void tst_MainWindow::tabsInFormOrder()
{
    auto *tabs = window()->findChild<QTabWidget *>("modeTab");
    QVERIFY(tabs);
    QStringList titles;
    for (int i = 0; i < tabs->count(); ++i)
        titles << tabs->tabText(i);
    QCOMPARE(titles,
             (QStringList{"General", "Control(UDP)", "Data(TCP)", "ZEL-RS232C", "ZEL-GPIB"}));
    QCOMPARE(tabs->widget(0)->objectName(), QStringLiteral("generalTab"));
    QCOMPARE(tabs->widget(4)->objectName(), QStringLiteral("zelgpibTab"));
}

void tst_MainWindow::windowFrame()
{
    QCOMPARE(window()->objectName(), QStringLiteral("MainWindow"));
    QCOMPARE(window()->windowTitle(), QStringLiteral("Mavix Utility"));
    QCOMPARE(window()->size(), QSize(800, 660));
    QCOMPARE(window()->minimumSize(), QSize(750, 660));
    QCOMPARE(errorTitle(), QStringLiteral("Error"));
    QVERIFY(window()->findChild<QWidget *>("ProductLabel"));
    QVERIFY(window()->findChild<LogoView *>("graphicsView"));
    QVERIFY(window()->findChild<QWidget *>("splitter"));
    QVERIFY(window()->findChild<QWidget *>("logLabel"));
    QCOMPARE(area()->minimumHeight(), 30);
    auto *help = window()->findChild<QMenu *>("menuHelp");
    QVERIFY(help);
    QCOMPARE(help->title(), QStringLiteral("Help"));
    QCOMPARE(help->actions().size(), 1);
    QCOMPARE(help->actions().first()->text(), QStringLiteral("About"));
}

void tst_MainWindow::messageArea_data()
{
    QTest::addColumn<bool>("error");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("colour");
    QTest::addRow("result in blue") << false << "UDP read successed"
                                    << " | UDP read successed"
                                    << "#0000c0";
    QTest::addRow("error in red with prefix") << true << "UDP read is timeout"
                                              << " | Error:UDP read is timeout"
                                              << "#ff0000";
}

void tst_MainWindow::messageArea()
{
    QFETCH(bool, error);
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QFETCH(QString, colour);
    if (error)
        reportError(text);
    else
        reportResult(text);
    QCoreApplication::processEvents();

    const QString plain = area()->toPlainText();
    const QRegularExpression entry(QStringLiteral(R"(^\n\d{4}/\d\d/\d\d \d\d:\d\d:\d\d)") +
                                   QRegularExpression::escape(shown) + QLatin1Char('$'));
    QVERIFY2(entry.match(plain).hasMatch(), qPrintable(plain));
    QVERIFY(area()->toHtml().contains(QStringLiteral("color:") + colour));
}

void tst_MainWindow::markupIsInterpreted()
{
    reportResult(QStringLiteral("<b>bold</b> word"));
    QCoreApplication::processEvents();
    QVERIFY(area()->toPlainText().endsWith(QStringLiteral("bold word")));
    QVERIFY(area()->toHtml().contains(QStringLiteral("font-weight")));
}

void tst_MainWindow::newestEntryIsScrolledIntoView()
{
    window()->show();
    for (int i = 0; i < 200; ++i)
        reportResult(QStringLiteral("entry %1").arg(i));
    QCoreApplication::processEvents();
    QScrollBar *bar = area()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
}

void tst_MainWindow::reportsWithoutWindowReachOnlyTheLog()
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("MavixUtility.log"));
    logOpen(path, 0);
    m_context.reset();
    reportError(QStringLiteral("after the window"));
    logClose();
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().contains("[ ERR] after the window\n"));
}

void tst_MainWindow::presetTarget_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("ip");
    QTest::addColumn<QString>("udp");
    QTest::addColumn<QString>("tcp");
    QTest::addColumn<bool>("reported");
    QTest::addRow("all parts") << "127.0.0.2:5000:6000"
                               << "127.0.0.2"
                               << "5000"
                               << "6000" << false;
    QTest::addRow("host only keeps the ports") << "127.0.0.3"
                                               << "127.0.0.3"
                                               << "4660"
                                               << "24" << false;
    QTest::addRow("bad host changes nothing") << "300.0.0.1:5000"
                                              << "192.168.10.16"
                                              << "4660"
                                              << "24" << true;
    QTest::addRow("bad port changes nothing") << "127.0.0.1:70000"
                                              << "192.168.10.16"
                                              << "4660"
                                              << "24" << true;
}

void tst_MainWindow::presetTarget()
{
    QFETCH(QString, preset);
    QFETCH(bool, reported);
    build(preset);
    QCoreApplication::processEvents();
    auto field = [this](const char *name) {
        return window()->findChild<QLineEdit *>(QLatin1String(name))->text();
    };
    QTEST(field("GenTargetIPAddressTextarea"), "ip");
    QTEST(field("GenTargetUDPPortTextarea"), "udp");
    QTEST(field("GenTargetTCPPortTextarea"), "tcp");
    QCOMPARE(area()->toPlainText().contains(QStringLiteral("-target:") + preset), reported);
    if (!reported)
        QCOMPARE(MavixSetting::current().ipAddress, field("GenTargetIPAddressTextarea"));
}

void tst_MainWindow::tabChangeReappliesTarget()
{
    auto *tabs = window()->findChild<QTabWidget *>("modeTab");
    auto *ip = window()->findChild<QLineEdit *>("GenTargetIPAddressTextarea");
    ip->setText(QStringLiteral("127.0.0.9"));
    tabs->setCurrentIndex(1);
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.9"));

    ip->setText(QStringLiteral("not an address"));
    tabs->setCurrentIndex(2);
    tabs->setCurrentIndex(0);
    QCoreApplication::processEvents();
    QCOMPARE(area()->toPlainText().count(QStringLiteral("Error:IP address is invalid")), 2);
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.9"));
}

void tst_MainWindow::hiddenShortcutStartsBlink()
{
    window()->show();
    QVERIFY(QTest::qWaitForWindowActive(window()));
    auto *logo = window()->findChild<LogoView *>("graphicsView");
    logo->OpenEye();
    QCOMPARE(logo->mode(), LogoView::ModeOpen);
    QTest::keySequence(window(),
                       QKeySequence(QStringLiteral("Ctrl+Shift+A, Ctrl+Shift+N, Ctrl+Shift+I")));
    QCOMPARE(logo->mode(), LogoView::ModeBlinking);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
