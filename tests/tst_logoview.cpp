#include "ui/logoview.h"

#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTest>
#include <QTimer>

class TestLogoView : public QObject
{
    Q_OBJECT

private slots:
    void picturesAreCompiledIn_data();
    void picturesAreCompiledIn();
    void startsOpenAndIdle();

    void blinkTable_data();
    void blinkTable();
    void blinkRunsOnItsOwnTimer();
    void successAfterFailureEndsOpen();
    void failureMidBlinkShutsAtOnce();
    void startDuringBlinkRestartsIt();
    void everyChangeRepaints_data();
    void everyChangeRepaints();

    void paintsChosenPictureScaled_data();
    void paintsChosenPictureScaled();
    void resizingKeepsTheEyeUndistorted();
};

namespace {

QTimer *blinkTimer(const LogoView &view)
{
    return view.findChild<QTimer *>();
}

void forward(LogoView &view, int ticks)
{
    for (int tick = 0; tick < ticks; ++tick)
        view.forwardAnimation();
}

// A view whose viewport is exactly the widget, so the grab holds nothing but the painted eye.
void makeBare(LogoView &view, const QSize &size)
{
    view.setFrameShape(QFrame::NoFrame);
    view.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    view.resize(size);
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

QImage grabViewport(LogoView &view)
{
    return view.viewport()->grab().toImage().convertToFormat(QImage::Format_ARGB32);
}

// Bounding box of the pixels that differ from the colour of the background.
QRect drawnArea(const QImage &image, QRgb background)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != background)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

// Bounding box of the visible part of a picture.
QRect opaqueArea(const QImage &image)
{
    QRect box;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qAlpha(image.pixel(x, y)) != 0)
                box |= QRect(x, y, 1, 1);
        }
    }
    return box;
}

} // namespace

void TestLogoView::picturesAreCompiledIn_data()
{
    QTest::addColumn<QString>("path");
    QTest::addRow("open eye") << ":/logo/openEye.png";
    QTest::addRow("half shut eye") << ":/logo/halfEye.png";
    QTest::addRow("eye looking up") << ":/logo/upEye.png";
    QTest::addRow("shut eye") << ":/logo/closeEye.png";
    QTest::addRow("maker logo") << ":/logo/image/orxlogo.s.png";
}

void TestLogoView::picturesAreCompiledIn()
{
    QFETCH(QString, path);
    const QImage image(path);
    QVERIFY2(!image.isNull(), qPrintable(path));
    QVERIFY(image.hasAlphaChannel());
}

void TestLogoView::startsOpenAndIdle()
{
    LogoView view;
    QCOMPARE(view.mode(), LogoView::ModeOpen);
    QCOMPARE(view.chosenImageName(), QStringLiteral("openEye"));
    QVERIFY(blinkTimer(view));
    QVERIFY(!blinkTimer(view)->isActive());
}

void TestLogoView::blinkTable_data()
{
    QTest::addColumn<int>("ticks");
    QTest::addColumn<LogoView::Mode>("mode");
    QTest::addColumn<QString>("image");
    QTest::addColumn<bool>("timerRunning");

    const auto blinking = LogoView::ModeBlinking;
    QTest::addRow("start: open") << 0 << blinking << "openEye" << true;
    QTest::addRow("tick 1: open") << 1 << blinking << "openEye" << true;
    QTest::addRow("tick 3: still open") << 3 << blinking << "openEye" << true;
    QTest::addRow("tick 4: half shut") << 4 << blinking << "halfEye" << true;
    QTest::addRow("tick 5: shut") << 5 << blinking << "closeEye" << true;
    QTest::addRow("tick 6: still shut") << 6 << blinking << "closeEye" << true;
    QTest::addRow("tick 7: looking up") << 7 << blinking << "upEye" << true;
    QTest::addRow("tick 10: still looking up") << 10 << blinking << "upEye" << true;
    QTest::addRow("tick 11: open again") << 11 << blinking << "openEye" << true;
    QTest::addRow("tick 12: rests open, timer stopped")
        << 12 << LogoView::ModeOpen << "openEye" << false;
}

void TestLogoView::blinkTable()
{
    QFETCH(int, ticks);
    QFETCH(LogoView::Mode, mode);
    QFETCH(QString, image);
    QFETCH(bool, timerRunning);

    LogoView view;
    view.StartAnimation();
    QCOMPARE(blinkTimer(view)->interval(), 100);
    QVERIFY(!blinkTimer(view)->isSingleShot());
    forward(view, ticks);

    QCOMPARE(view.mode(), mode);
    if (mode == LogoView::ModeBlinking)
        QCOMPARE(int(view.frame()), ticks);
    QCOMPARE(view.chosenImageName(), image);
    QCOMPARE(blinkTimer(view)->isActive(), timerRunning);
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
    const qint64 elapsedMs = clock.elapsed();

    QVERIFY2(elapsedMs >= 1100, qPrintable(QString::number(elapsedMs)));
    QVERIFY(!blinkTimer(view)->isActive());
    const QStringList order{"openEye", "halfEye", "closeEye", "upEye", "openEye"};
    QCOMPARE(seen, order);
}

void TestLogoView::successAfterFailureEndsOpen()
{
    LogoView view;
    view.CloseEye();
    QCOMPARE(view.mode(), LogoView::ModeClosed);
    QCOMPARE(view.chosenImageName(), QStringLiteral("closeEye"));

    view.StartAnimation();
    QCOMPARE(view.mode(), LogoView::ModeBlinking);
    QCOMPARE(view.chosenImageName(), QStringLiteral("openEye"));
    forward(view, LogoView::kBlinkTicks);

    QCOMPARE(view.mode(), LogoView::ModeOpen);
    QCOMPARE(view.chosenImageName(), QStringLiteral("openEye"));
    QVERIFY(!blinkTimer(view)->isActive());
}

void TestLogoView::failureMidBlinkShutsAtOnce()
{
    LogoView view;
    view.StartAnimation();
    forward(view, 8);
    QCOMPARE(view.chosenImageName(), QStringLiteral("upEye"));

    view.CloseEye();
    QCOMPARE(view.mode(), LogoView::ModeClosed);
    QCOMPARE(view.chosenImageName(), QStringLiteral("closeEye"));
    QVERIFY(!blinkTimer(view)->isActive());
}

void TestLogoView::startDuringBlinkRestartsIt()
{
    LogoView view;
    view.StartAnimation();
    forward(view, 9);
    view.StartAnimation();
    QCOMPARE(int(view.frame()), 0);
    QCOMPARE(view.chosenImageName(), QStringLiteral("openEye"));
    forward(view, 4);
    QCOMPARE(view.chosenImageName(), QStringLiteral("halfEye"));
}

void TestLogoView::everyChangeRepaints_data()
{
    QTest::addColumn<QString>("change");
    QTest::addRow("blink started") << "start";
    QTest::addRow("blink tick") << "tick";
    QTest::addRow("eye shut") << "close";
    QTest::addRow("eye opened") << "open";
}

void TestLogoView::everyChangeRepaints()
{
    QFETCH(QString, change);

    LogoView view;
    makeBare(view, QSize(100, 100));
    auto *paints = new PaintCounter(view.viewport());
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    QTRY_VERIFY(paints->count > 0);
    if (change == QLatin1String("tick") || change == QLatin1String("open")) {
        view.StartAnimation();
        blinkTimer(view)->stop(); // the test steps the blink itself
        QTRY_VERIFY(paints->count > 1);
    }

    paints->count = 0;
    if (change == QLatin1String("start"))
        view.StartAnimation();
    if (change == QLatin1String("tick"))
        view.forwardAnimation();
    if (change == QLatin1String("close"))
        view.CloseEye();
    if (change == QLatin1String("open"))
        view.OpenEye();
    QTRY_VERIFY(paints->count > 0);
}

void TestLogoView::paintsChosenPictureScaled_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("blinkTicks"); // -1: eye shut by a failure, 0: at rest
    QTest::addColumn<QString>("path");

    QTest::addRow("open, square view") << QSize(100, 100) << 0 << ":/logo/openEye.png";
    QTest::addRow("shut, wide view") << QSize(180, 90) << -1 << ":/logo/closeEye.png";
    QTest::addRow("half shut, tall view") << QSize(70, 150) << 4 << ":/logo/halfEye.png";
    QTest::addRow("looking up, large view") << QSize(300, 260) << 8 << ":/logo/upEye.png";
}

void TestLogoView::paintsChosenPictureScaled()
{
    QFETCH(QSize, size);
    QFETCH(int, blinkTicks);
    QFETCH(QString, path);

    LogoView view;
    makeBare(view, size);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    if (blinkTicks < 0)
        view.CloseEye();
    if (blinkTicks > 0) {
        view.StartAnimation();
        forward(view, blinkTicks);
    }

    const QImage painted = grabViewport(view);
    QCOMPARE(painted.size(), size);

    // What the view should show: its background with the picture scaled to fit at the origin.
    QImage expected(size, QImage::Format_ARGB32);
    expected.fill(painted.pixel(size.width() - 1, size.height() - 1));
    {
        QPainter painter(&expected);
        painter.drawImage(QPoint(0, 0),
                          QImage(path).scaled(size, Qt::KeepAspectRatio, Qt::FastTransformation));
    }
    QCOMPARE(painted, expected);
}

void TestLogoView::resizingKeepsTheEyeUndistorted()
{
    const QImage picture(QStringLiteral(":/logo/openEye.png"));
    const QRect visible = opaqueArea(picture);
    QVERIFY(!visible.isEmpty());

    LogoView view;
    makeBare(view, QSize(240, 120));
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));

    for (const QSize size : {QSize(240, 120), QSize(120, 240), QSize(90, 90)}) {
        view.resize(size);
        const QImage painted = grabViewport(view);
        const QRect drawn = drawnArea(painted, painted.pixel(size.width() - 1, size.height() - 1));

        const qreal scale =
            qMin(qreal(size.width()) / picture.width(), qreal(size.height()) / picture.height());
        const QRectF wanted(visible.x() * scale, visible.y() * scale, visible.width() * scale,
                            visible.height() * scale);
        const QString where = QStringLiteral("%1x%2: drawn %3,%4 %5x%6")
                                  .arg(size.width())
                                  .arg(size.height())
                                  .arg(drawn.x())
                                  .arg(drawn.y())
                                  .arg(drawn.width())
                                  .arg(drawn.height());
        // Nearest-pixel scaling may move an edge by up to two pixels.
        QVERIFY2(qAbs(drawn.x() - wanted.x()) <= 2, qPrintable(where));
        QVERIFY2(qAbs(drawn.y() - wanted.y()) <= 2, qPrintable(where));
        QVERIFY2(qAbs(drawn.width() - wanted.width()) <= 2, qPrintable(where));
        QVERIFY2(qAbs(drawn.height() - wanted.height()) <= 2, qPrintable(where));
    }
}

QTEST_MAIN(TestLogoView)
#include "tst_logoview.moc"
