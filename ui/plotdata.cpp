#include "ui/plotdata.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kGridLines = 4;

double niceStep(double span, int lines)
{
    const double rough = span / std::max(lines, 1);
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 2.5, 5.0}) {
        if (factor * power >= rough * (1 - 1e-9))
            return factor * power;
    }
    return 10 * power;
}

} // namespace

PlotData::PlotData(qsizetype capacity) : m_capacity(std::max<qsizetype>(capacity, 1))
{
    m_ring.reserve(std::min<qsizetype>(m_capacity, 1024));
}

void PlotData::append(double seconds, double value)
{
    if (m_count > 0 && seconds < at(m_count - 1).x())
        return;
    if (m_ring.size() < m_capacity) {
        m_ring.append(QPointF(seconds, value));
        ++m_count;
        return;
    }
    m_ring[(m_head + m_count) % m_capacity] = QPointF(seconds, value);
    if (m_count < m_capacity)
        ++m_count;
    else
        m_head = (m_head + 1) % m_capacity;
}

void PlotData::clear()
{
    m_ring.clear();
    m_head = 0;
    m_count = 0;
}

QPointF PlotData::at(qsizetype index) const
{
    return m_ring.at((m_head + index) % m_ring.size());
}

PlotRange PlotData::niceRange(double low, double high, int lines)
{
    if (!(high > low)) { // one value: a band around it
        const double margin = low == 0 ? 1 : std::abs(low) / 2;
        low -= margin;
        high += margin;
    }
    const double step = niceStep(high - low, lines);
    return {std::floor(low / step + 1e-9) * step, std::ceil(high / step - 1e-9) * step, step};
}

PlotRange PlotData::timeRange() const
{
    if (m_count == 0)
        return niceRange(0, m_wholeRun ? 1 : m_windowSeconds, kGridLines);
    const double first = at(0).x();
    const double last = at(m_count - 1).x();
    if (m_wholeRun)
        return niceRange(first, std::max(last, first + 1), kGridLines);
    // A fixed span: a new run fills it from zero on, a long one scrolls.
    const double from = std::max(std::min(first, 0.0), last - m_windowSeconds);
    const PlotRange grid = niceRange(0, m_windowSeconds, kGridLines);
    return {from, from + m_windowSeconds, grid.step};
}

qsizetype PlotData::firstVisible(double from) const
{
    qsizetype low = 0;
    qsizetype high = m_count;
    while (low < high) { // samples are in time order
        const qsizetype middle = (low + high) / 2;
        if (at(middle).x() < from)
            low = middle + 1;
        else
            high = middle;
    }
    return low;
}

PlotRange PlotData::valueRange() const
{
    const double from = timeRange().low;
    double low = 0;
    double high = 0;
    bool any = false;
    for (qsizetype i = firstVisible(from); i < m_count; ++i) {
        const double value = at(i).y();
        low = any ? std::min(low, value) : value;
        high = any ? std::max(high, value) : value;
        any = true;
    }
    if (m_zeroBased || !any) {
        low = std::min(low, 0.0);
        high = std::max(high, 0.0);
        if (high == low)
            high = 1; // nothing but zeros: a unit scale above them
    }
    return niceRange(low, high, kGridLines);
}

QList<QPointF> PlotData::visible(int pixelWidth) const
{
    const PlotRange time = timeRange();
    const qsizetype first = firstVisible(time.low);
    QList<QPointF> points;
    const qsizetype count = m_count - first;
    if (pixelWidth < 1 || count <= 2 * qsizetype(pixelWidth)) {
        for (qsizetype i = first; i < m_count; ++i)
            points.append(at(i));
        return points;
    }
    points.reserve(2 * pixelWidth);
    const double perPixel = (time.high - time.low) / pixelWidth;
    qsizetype i = first;
    while (i < m_count) {
        const int column = std::clamp(int((at(i).x() - time.low) / perPixel), 0, pixelWidth - 1);
        QPointF lowest = at(i);
        QPointF highest = lowest;
        for (++i; i < m_count; ++i) {
            const QPointF point = at(i);
            if (std::clamp(int((point.x() - time.low) / perPixel), 0, pixelWidth - 1) != column)
                break;
            if (point.y() < lowest.y())
                lowest = point;
            if (point.y() > highest.y())
                highest = point;
        }
        if (lowest.x() <= highest.x()) {
            points.append(lowest);
            if (highest != lowest)
                points.append(highest);
        } else {
            points.append(highest);
            points.append(lowest);
        }
    }
    return points;
}
