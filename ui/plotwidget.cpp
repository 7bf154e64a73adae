#include "ui/plotwidget.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

constexpr int kMargin = 4;
constexpr QRgb kLineRgb = qRgb(30, 100, 200);
constexpr QRgb kMarkRgb = qRgb(200, 90, 30);

} // namespace

PlotWidget::PlotWidget(QWidget *parent) : QWidget(parent)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void PlotWidget::setStyle(Style style)
{
    m_style = style;
    update();
}

void PlotWidget::setUnit(const QString &unit)
{
    m_unit = unit;
    update();
}

void PlotWidget::setZeroBased(bool zeroBased)
{
    m_data.setZeroBased(zeroBased);
    update();
}

void PlotWidget::setWholeRun(bool wholeRun)
{
    m_data.setWholeRun(wholeRun);
    update();
}

// Repaints are coalesced by update(): a fast feed costs one paint per frame at most.
void PlotWidget::append(double seconds, double value)
{
    m_data.append(seconds, value);
    update();
}

void PlotWidget::clear()
{
    m_data.clear();
    update();
}

QSize PlotWidget::sizeHint() const
{
    return {320, 140};
}

QSize PlotWidget::minimumSizeHint() const
{
    return {200, 90};
}

// Enough digits to tell neighbouring grid lines apart, and no more.
QString PlotWidget::number(double value, double step)
{
    if (std::abs(value) < step * 1e-6)
        value = 0;
    const int decimals = std::max(0, int(std::ceil(-std::log10(step) - 1e-9)) + 1);
    QString text = QString::number(value, 'f', std::abs(value) >= 1e7 ? 0 : decimals);
    if (text.contains(QLatin1Char('.'))) {
        while (text.endsWith(QLatin1Char('0')))
            text.chop(1);
        if (text.endsWith(QLatin1Char('.')))
            text.chop(1);
    }
    return text;
}

void PlotWidget::paintEvent(QPaintEvent * /*event*/)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().base());
    const QFontMetrics metrics = fontMetrics();
    const PlotRange time = m_data.timeRange();
    const PlotRange value = m_data.valueRange();

    // Marks stand for changes, not amounts: they have no value axis.
    const bool valueAxis = m_style == Style::Line;
    int labelWidth = valueAxis ? 0 : metrics.horizontalAdvance(QLatin1Char('0'));
    for (double v = value.low; valueAxis && v <= value.high + value.step / 2; v += value.step)
        labelWidth = std::max(labelWidth, metrics.horizontalAdvance(number(v, value.step)));
    // Room above for the unit and half of the top value label, below for the time labels.
    const int top = 2 * kMargin + metrics.height() + metrics.height() / 2;
    const QRect area(kMargin + labelWidth + kMargin, top, width() - labelWidth - 3 * kMargin,
                     height() - top - metrics.height() - 2 * kMargin);
    if (area.width() < 10 || area.height() < 10)
        return;
    const auto xOf = [&](double t) {
        return area.left() + (t - time.low) / (time.high - time.low) * area.width();
    };
    const auto yOf = [&](double v) {
        return area.bottom() - (v - value.low) / (value.high - value.low) * area.height();
    };

    // Grid and labels
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(kMargin, kMargin + metrics.ascent(), m_unit);
    const QColor gridColor = palette().color(QPalette::Mid);
    for (double v = value.low; valueAxis && v <= value.high + value.step / 2; v += value.step) {
        const int y = int(std::lround(yOf(v)));
        painter.setPen(gridColor);
        painter.drawLine(area.left(), y, area.right(), y);
        painter.setPen(palette().color(QPalette::Text));
        const QString text = number(v, value.step);
        painter.drawText(area.left() - kMargin - metrics.horizontalAdvance(text),
                         y + metrics.ascent() / 2, text);
    }
    const double firstLine = std::ceil(time.low / time.step - 1e-9) * time.step;
    for (double t = firstLine; t <= time.high + time.step / 100; t += time.step) {
        const int x = int(std::lround(xOf(t)));
        painter.setPen(gridColor);
        painter.drawLine(x, area.top(), x, area.bottom());
        painter.setPen(palette().color(QPalette::Text));
        const QString text = tr("%1 s").arg(number(t, time.step));
        const int textX = std::clamp(x - metrics.horizontalAdvance(text) / 2, 0,
                                     width() - metrics.horizontalAdvance(text));
        painter.drawText(textX, area.bottom() + kMargin + metrics.ascent(), text);
    }
    painter.setPen(gridColor);
    painter.drawRect(area);

    // Data
    const QList<QPointF> points = m_data.visible(area.width());
    painter.setClipRect(area.adjusted(0, -1, 1, 1));
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_style == Style::Marks) {
        painter.setPen(QPen(QColor(kMarkRgb), 1.5));
        for (const QPointF &point : points) {
            const double x = xOf(point.x());
            painter.drawLine(QPointF(x, area.top()), QPointF(x, area.bottom()));
        }
        return;
    }
    painter.setPen(QPen(QColor(kLineRgb), 1.5));
    if (points.size() == 1) {
        painter.drawEllipse(QPointF(xOf(points.first().x()), yOf(points.first().y())), 2, 2);
        return;
    }
    QPainterPath path;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const QPointF at(xOf(points[i].x()), yOf(points[i].y()));
        if (i == 0)
            path.moveTo(at);
        else
            path.lineTo(at);
    }
    painter.drawPath(path);
}
