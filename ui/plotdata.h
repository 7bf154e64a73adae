// The data behind a plot: a ring of (time, value) samples, the ranges a view shows (the last
// minute or the whole run, values scaled to round numbers) and the samples reduced to what a given
// pixel width can show. Widget-free, so that scaling and decimation are checked on their own.
#pragma once

#include <QList>
#include <QPointF>

// An axis range from `low` to `high` with grid lines every `step`.
struct PlotRange
{
    double low = 0;
    double high = 1;
    double step = 1;
};

class PlotData
{
public:
    static constexpr qsizetype kDefaultCapacity = 100000; // about 14 h of samples every 0.5 s
    static constexpr double kDefaultWindowSeconds = 60;

    explicit PlotData(qsizetype capacity = kDefaultCapacity);

    // Samples
    // A sample older than the last one is dropped: the time axis only moves on.
    void append(double seconds, double value);
    void clear();
    [[nodiscard]] qsizetype size() const { return m_count; }
    [[nodiscard]] QPointF at(qsizetype index) const; // 0 is the oldest kept

    // View
    // The last windowSeconds, or every sample kept.
    void setWholeRun(bool wholeRun) { m_wholeRun = wholeRun; }
    [[nodiscard]] bool wholeRun() const { return m_wholeRun; }
    void setWindowSeconds(double seconds) { m_windowSeconds = seconds; }
    // Keeps zero inside the value range (rates); otherwise it hugs the values (register values).
    void setZeroBased(bool zeroBased) { m_zeroBased = zeroBased; }

    [[nodiscard]] PlotRange timeRange() const;
    [[nodiscard]] PlotRange valueRange() const;
    // The samples in timeRange(), at most two a pixel column (its lowest and highest, in time
    // order) so that a long run draws fast and a spike is never lost.
    [[nodiscard]] QList<QPointF> visible(int pixelWidth) const;

    // Low and high widened to multiples of a round step (1, 2, 2.5 or 5 times a power of ten)
    // giving about `lines` grid lines.
    [[nodiscard]] static PlotRange niceRange(double low, double high, int lines);

private:
    [[nodiscard]] qsizetype firstVisible(double from) const;

    QList<QPointF> m_ring;
    qsizetype m_capacity;
    qsizetype m_head = 0; // index of the oldest sample in m_ring
    qsizetype m_count = 0;
    bool m_wholeRun = false;
    bool m_zeroBased = true;
    double m_windowSeconds = kDefaultWindowSeconds;
};
