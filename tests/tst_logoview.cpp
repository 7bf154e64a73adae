// The eye: which picture each state and blink tick shows, the blink on its own timer, a repaint at
// every change, and the picture painted scaled into the viewport at any size.
#include "ui/logoview.h"

#include <QElapsedTimer>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QTimer>

class TestLogoView : public QObject
{
    Q_OBJECT

private slots:
    void states_data();
    void states();
    void blinkRunsOnItsOwnTimer();
    void everyChangeRepaints();
    void paintsChosenPictureScaled_data();
    void paintsChosenPictureScaled();
};

namespace {

QTimer *blinkTimer(const LogoView &view)
{
    return view.findChild<QTimer *>();
}

// Plays steps on the view: "start", "close" and "open" call its slots, a number moves the blink
// on by that many ticks.
void play(LogoView &view, const QString &steps)
{
    for (const QString &step : steps.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (step == QLatin1String("start")) {
            view.StartAnimation();
        } else if (step == QLatin1String("close")) {
            view.CloseEye();
        } else if (step == QLatin1String("open")) {
            view.OpenEye();
        } else {
            for (int tick = step.toInt(); tick > 0; --tick)
                view.forwardAnimation();
        }
    }
}

// A view shown with a viewport that is exactly the widget, so a grab holds nothing but the eye.
bool showBare(LogoView &view, const QSize &size)
{
    view.setFrameShape(QFrame::NoFrame);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(size);
    view.show();
    return QTest::qWaitForWindowExposed(&view);
}

// Counts the paint events that reach a widget.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget) : QObject(widget) { widget->installEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void TestLogoView::states_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<LogoView::Mode>("mode");
    QTest::addColumn<QString>("image");
    QTest::addColumn<bool>("timerRunning");
    const auto row = [](const char *name, const char *steps, LogoView::Mode mode, const char *image,
                        bool timerRunning) {
        QTest::addRow("%s", name) << QString::fromLatin1(steps) << mode
                                  << QString::fromLatin1(image) << timerRunning;
    };
    const auto open = LogoView::ModeOpen;
    const auto shut = LogoView::ModeClosed;
    const auto blinking = LogoView::ModeBlinking;

    row("new view: open, idle", "", open, "openEye", false);
    row("blink start: open", "start", blinking, "openEye", true);
    row("tick 3: still open", "start 3", blinking, "openEye", true);
    row("tick 4: half shut", "start 4", blinking, "halfEye", true);
    row("tick 5: shut", "start 5", blinking, "closeEye", true);
    row("tick 6: still shut", "start 6", blinking, "closeEye", true);
    row("tick 7: looking up", "start 7", blinking, "upEye", true);
    row("tick 10: still looking up", "start 10", blinking, "upEye", true);
    row("tick 11: open again", "start 11", blinking, "openEye", true);
    row("tick 12: rests open, timer stopped", "start 12", open, "openEye", false);
    row("failure shuts the eye", "close", shut, "closeEye", false);
    row("success after failure starts open", "close start", blinking, "openEye", true);
    row("success after failure ends open", "close start 12", open, "openEye", false);
    row("failure mid-blink shuts at once", "start 8 close", shut, "closeEye", false);
    row("start during a blink restarts it", "start 9 start 4", blinking, "halfEye", true);
}

void TestLogoView::states()
{
    QFETCH(QString, steps);
    LogoView view;
    play(view, steps);
    QTEST(view.mode(), "mode");
    QTEST(view.chosenImageName(), "image");
    QTEST(blinkTimer(view)->isActive(), "timerRunning");
}

void TestLogoView::blinkRunsOnItsOwnTimer()
{
    LogoView view;
    QStringList seen;
    QTimer watch;
    connect(&watch, &QTimer::timeout, &view, [&] {
        if (seen.isEmpty() || seen.constLast() != view.chosenImageName())
            seen << view.chosenImageName();
    });
    watch.start(10);

    QElapsedTimer clock;
    clock.start();
    view.StartAnimation();
    QTRY_COMPARE_WITH_TIMEOUT(view.mode(), LogoView::ModeOpen, 5000);

    QVERIFY2(clock.elapsed() >= 1100, qPrintable(QString::number(clock.elapsed())));
    QVERIFY(!blinkTimer(view)->isActive());
    QCOMPARE(seen, (QStringList{"openEye", "halfEye", "closeEye", "upEye", "openEye"}));
}

// Each change shows at once: the view must not wait for something else to repaint it.
void TestLogoView::everyChangeRepaints()
{
    LogoView view;
    auto *paints = new PaintCounter(view.viewport());
    QVERIFY(showBare(view, QSize(100, 100)));
    QTRY_VERIFY(paints->count > 0);
    for (const char *change : {"start", "1", "close", "start", "open"}) {
        QCoreApplication::processEvents(); // paints still due for the step before
        paints->count = 0;
        play(view, QString::fromLatin1(change));
        blinkTimer(view)->stop(); // the test steps the blink itself
        QTRY_VERIFY2(paints->count > 0, change);
    }
}

void TestLogoView::paintsChosenPictureScaled_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("path");
    QTest::addRow("open, square view") << QSize(100, 100) << ""
                                       << ":/logo/openEye.png";
    QTest::addRow("shut, wide view") << QSize(180, 90) << "close"
                                     << ":/logo/closeEye.png";
    QTest::addRow("half shut, tall view") << QSize(70, 150) << "start 4"
                                          << ":/logo/halfEye.png";
    QTest::addRow("looking up, large view") << QSize(300, 260) << "start 8"
                                            << ":/logo/upEye.png";
}

// Whatever the window does to the view's size, the eye keeps its proportions.
void TestLogoView::paintsChosenPictureScaled()
{
    QFETCH(QSize, size);
    QFETCH(QString, steps);
    QFETCH(QString, path);
    LogoView view;
    QVERIFY(showBare(view, QSize(120, 240)));
    view.resize(size);
    play(view, steps);

    const QImage picture(path);
    QVERIFY(picture.hasAlphaChannel()); // compiled in, and sits on the window's background
    const QImage painted = view.viewport()->grab().toImage();
    QCOMPARE(painted.size(), size);

    // What the view should show: its background with the picture scaled to fit at the origin.
    QImage expected(size, painted.format());
    expected.fill(painted.pixel(size.width() - 1, size.height() - 1));
    QPainter(&expected).drawImage(
        QPoint(0, 0), picture.scaled(size, Qt::KeepAspectRatio, Qt::FastTransformation));
    QCOMPARE(painted, expected);
}

QTEST_MAIN(TestLogoView)
#include "tst_logoview.moc"
