#include "ui/logoview.h"

#include <QEvent>
#include <QPainter>
#include <QTimer>

LogoView::LogoView(QWidget *parent) : QGraphicsView(parent)
{
    m_openImage.load(QStringLiteral(":/logo/openEye.png"));
    m_halfImage.load(QStringLiteral(":/logo/halfEye.png"));
    m_upImage.load(QStringLiteral(":/logo/upEye.png"));
    m_closedImage.load(QStringLiteral(":/logo/closeEye.png"));

    // The eye sits on the window's own background, not on a white canvas.
    setFrameShape(QFrame::NoFrame);
    setBackgroundBrush(Qt::NoBrush);
    viewport()->setAutoFillBackground(false);

    m_timer = new QTimer(this);
    connect(m_timer, SIGNAL(timeout()), this, SLOT(forwardAnimation()));
    m_mode = ModeOpen;
}

QString LogoView::chosenImageName() const
{
    switch (chosenPicture()) {
    case Picture::Open:
        return QStringLiteral("openEye");
    case Picture::Half:
        return QStringLiteral("halfEye");
    case Picture::Up:
        return QStringLiteral("upEye");
    case Picture::Closed:
        return QStringLiteral("closeEye");
    }
    return QString();
}

void LogoView::StartAnimation()
{
    m_mode = ModeBlinking;
    m_frame = 0;
    m_timer->start(kBlinkTickMs);
    repaintNow();
}

void LogoView::CloseEye()
{
    m_timer->stop();
    m_mode = ModeClosed;
    repaintNow();
}

void LogoView::OpenEye()
{
    m_timer->stop();
    m_mode = ModeOpen;
    repaintNow();
}

void LogoView::forwardAnimation()
{
    ++m_frame;
    if (m_frame < kBlinkTicks)
        repaintNow();
    else
        OpenEye();
}

void LogoView::paintEvent(QPaintEvent *)
{
    QPainter painter(viewport());
    painter.resetTransform();
    const QImage &image = imageOf(chosenPicture());
    if (image.isNull())
        return;
    const QRect area = viewport()->rect();
    painter.drawImage(QPoint(0, 0), image.scaled(area.width(), area.height(), Qt::KeepAspectRatio,
                                                 Qt::FastTransformation));
}

int LogoView::sideForWindowHeight(int height)
{
    return qBound(kBaseSide, height * kBaseSide / kBaseWindowHeight, 2 * kBaseSide);
}

void LogoView::showEvent(QShowEvent *event)
{
    QGraphicsView::showEvent(event);
    if (m_watchedWindow == window())
        return;
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    m_watchedWindow = window();
    m_watchedWindow->installEventFilter(this);
    followWindowHeight();
}

bool LogoView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_watchedWindow && event->type() == QEvent::Resize)
        followWindowHeight();
    return QGraphicsView::eventFilter(watched, event);
}

void LogoView::followWindowHeight()
{
    const int side = sideForWindowHeight(m_watchedWindow->height());
    setFixedSize(side, side);
}

LogoView::Picture LogoView::chosenPicture() const
{
    switch (m_mode) {
    case ModeOpen:
        return Picture::Open;
    case ModeClosed:
        return Picture::Closed;
    case ModeBlinking:
        break;
    }
    // Open for four ticks, half shut for one, shut for two, looking up for four, then open.
    if (m_frame <= 3)
        return Picture::Open;
    if (m_frame == 4)
        return Picture::Half;
    if (m_frame <= 6)
        return Picture::Closed;
    if (m_frame <= 10)
        return Picture::Up;
    return Picture::Open;
}

const QImage &LogoView::imageOf(Picture picture) const
{
    switch (picture) {
    case Picture::Half:
        return m_halfImage;
    case Picture::Up:
        return m_upImage;
    case Picture::Closed:
        return m_closedImage;
    case Picture::Open:
        break;
    }
    return m_openImage;
}

// Switching updates off and on again schedules a paint of the view and of its viewport.
void LogoView::repaintNow()
{
    setUpdatesEnabled(false);
    setUpdatesEnabled(true);
}
