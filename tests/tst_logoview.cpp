// The eye: which picture each state and blink tick shows, stepped directly. Its size follows the
// window (tst_mainwindow).
#include "ui/logoview.h"

#include <QTest>
#include <QTimer>

class TestLogoView : public QObject
{
    Q_OBJECT

private slots:
    void states_data();
    void states();
};

namespace {

// Plays steps on the view: "start", "close" and "open" call its slots, a number moves the blink
// on by that many ticks.
void play(LogoView &view, const QString &steps)
{
    for (const QString &step : steps.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (step == u"start")
            view.StartAnimation();
        else if (step == u"close")
            view.CloseEye();
        else if (step == u"open")
            view.OpenEye();
        else
            for (int tick = step.toInt(); tick > 0; --tick)
                view.forwardAnimation();
    }
}

} // namespace

// Mode, picture, and the blink timer's interval while it runs (0: stopped).
void TestLogoView::states_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("state");
    QTest::addRow("new view") << ""
                              << "0 openEye 0";
    QTest::addRow("blink start") << "start"
                                 << "2 openEye 100";
    QTest::addRow("tick 3") << "start 3"
                            << "2 openEye 100";
    QTest::addRow("tick 4") << "start 4"
                            << "2 halfEye 100";
    QTest::addRow("tick 5") << "start 5"
                            << "2 closeEye 100";
    QTest::addRow("tick 6") << "start 6"
                            << "2 closeEye 100";
    QTest::addRow("tick 7") << "start 7"
                            << "2 upEye 100";
    QTest::addRow("tick 10") << "start 10"
                             << "2 upEye 100";
    QTest::addRow("tick 11") << "start 11"
                             << "2 openEye 100";
    QTest::addRow("tick 12 rests open") << "start 12"
                                        << "0 openEye 0";
    QTest::addRow("failure shuts") << "close"
                                   << "1 closeEye 0";
    QTest::addRow("success after failure") << "close start"
                                           << "2 openEye 100";
    QTest::addRow("failure mid-blink") << "start 8 close"
                                       << "1 closeEye 0";
    QTest::addRow("restart during a blink") << "start 9 start 4"
                                            << "2 halfEye 100";
}

void TestLogoView::states()
{
    QFETCH(QString, steps);
    LogoView view;
    play(view, steps);
    const QTimer *timer = view.findChild<QTimer *>();
    QTEST(QStringLiteral("%1 %2 %3")
              .arg(int(view.mode()))
              .arg(view.chosenImageName())
              .arg(timer->isActive() ? timer->interval() : 0),
          "state");
}

QTEST_MAIN(TestLogoView)
#include "tst_logoview.moc"
