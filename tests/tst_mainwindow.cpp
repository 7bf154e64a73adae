// The main window as a user meets it, built the way the program builds it. The target is always a
// loopback address: nothing here presses Read or Write.
#include "app/appcontext.h"
#include "app/report.h"
#include "settings/mavixsetting.h"
#include "ui/logoview.h"
#include "ui/mainwindow.h"

#include <QLineEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTabWidget>
#include <QTest>
#include <QTextEdit>

class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init() { build(QStringLiteral("127.0.0.1:4660:24")); }
    void cleanup() { m_context.reset(); }
    void messageArea_data();
    void messageArea();
    void newestEntryIsScrolledIntoView();
    void presetTarget_data();
    void presetTarget();
    void tabChangeReappliesTarget();
    void hiddenShortcutStartsBlink();
    void logoFollowsWindowHeight();

private:
    MainWindow *window() const { return m_context->mainWindow(); }
    QTextEdit *area() const { return window()->findChild<QTextEdit *>("errorLabel"); }
    QString field(const char *name) const
    {
        return window()->findChild<QLineEdit *>(QLatin1String(name))->text();
    }
    void build(const QString &presetTarget)
    {
        m_context.reset();
        m_context = std::make_unique<AppContext>(false, false, 0, true, nullptr, presetTarget);
    }
    std::unique_ptr<AppContext> m_context;
};

// Text from the command line or a device is shown as typed: markup stays visible text.
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
    QTest::addRow("markup kept as text") << false << "<b>bold</b> & <img src=x>"
                                         << " | <b>bold</b> & <img src=x>"
                                         << "#0000c0";
    QTest::addRow("error markup kept as text") << true << "-target:<i>x</i> is ignored"
                                               << " | Error:-target:<i>x</i> is ignored"
                                               << "#ff0000";
}

void tst_MainWindow::messageArea()
{
    QFETCH(bool, error);
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QFETCH(QString, colour);
    error ? reportError(text) : reportResult(text);
    const QString plain = area()->toPlainText();
    const QRegularExpression entry(QStringLiteral(R"(^\n\d{4}/\d\d/\d\d \d\d:\d\d:\d\d)") +
                                   QRegularExpression::escape(shown) + QLatin1Char('$'));
    QVERIFY2(entry.match(plain).hasMatch(), qPrintable(plain));
    QVERIFY(area()->toHtml().contains(QStringLiteral("color:") + colour));
}

void tst_MainWindow::newestEntryIsScrolledIntoView()
{
    window()->show();
    for (int i = 0; i < 100; ++i)
        reportResult(QStringLiteral("entry %1").arg(i));
    QScrollBar *bar = area()->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
}

void tst_MainWindow::presetTarget_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("fields"); // IP, UDP and TCP fields afterwards
    QTest::addColumn<bool>("reported");
    QTest::addRow("all parts") << "127.0.0.2:5000:6000"
                               << "127.0.0.2 5000 6000" << false;
    QTest::addRow("host only keeps the ports") << "127.0.0.3"
                                               << "127.0.0.3 4660 24" << false;
    QTest::addRow("IPv6 loopback") << "[::1]:5000"
                                   << "::1 5000 24" << false;
    QTest::addRow("bad host") << "300.0.0.1:5000"
                              << "192.168.10.16 4660 24" << true;
    QTest::addRow("leading zeros") << "127.000.0.1"
                                   << "192.168.10.16 4660 24" << true;
    QTest::addRow("one number") << "0"
                                << "192.168.10.16 4660 24" << true;
    QTest::addRow("bad port") << "127.0.0.1:70000"
                              << "192.168.10.16 4660 24" << true;
}

void tst_MainWindow::presetTarget()
{
    QFETCH(QString, preset);
    QFETCH(bool, reported);
    build(preset);
    QTEST(QStringList({field("GenTargetIPAddressTextarea"), field("GenTargetUDPPortTextarea"),
                       field("GenTargetTCPPortTextarea")})
              .join(u' '),
          "fields");
    QCOMPARE(area()->toPlainText().contains(QStringLiteral("-target:") + preset), reported);
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
    QCOMPARE(area()->toPlainText().count(QStringLiteral("Error:IP address is invalid")), 2);
    QCOMPARE(MavixSetting::current().ipAddress, QStringLiteral("127.0.0.9"));
}

void tst_MainWindow::hiddenShortcutStartsBlink()
{
    window()->show();
    QVERIFY(QTest::qWaitForWindowActive(window()));
    auto *logo = window()->findChild<LogoView *>("graphicsView");
    logo->OpenEye();
    QTest::keySequence(window(),
                       QKeySequence(QStringLiteral("Ctrl+Shift+A, Ctrl+Shift+N, Ctrl+Shift+I")));
    QCOMPARE(logo->mode(), LogoView::ModeBlinking);
}

void tst_MainWindow::logoFollowsWindowHeight()
{
    auto *logo = window()->findChild<LogoView *>("graphicsView");
    window()->show();
    QTRY_COMPARE(logo->size(), QSize(72, 72));
    window()->resize(1000, 990);
    QTRY_COMPARE(logo->size(), QSize(108, 108));
    window()->resize(1000, 2000);
    QTRY_COMPARE(logo->size(), QSize(144, 144));
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
