// Turns the running byte count of a transfer into rate samples for a plot: MB/s (10^6 bytes, as
// the dialogs count) between two counts at least kStepMs apart, so that the unevenness of the
// progress reports does not show as noise.
#pragma once

#include <QPointF>
#include <QtGlobal>

#include <optional>

class RateSampler
{
public:
    static constexpr qint64 kStepMs = 1000;

    void restart();
    // A sample (seconds of the run at its end, MB/s) once kStepMs have passed since the last one.
    [[nodiscard]] std::optional<QPointF> take(qint64 bytes, qint64 elapsedMs);
    // The last stretch of a run, however short, or the whole run's average when it was shorter
    // than one step; nothing for a run that moved no byte.
    [[nodiscard]] std::optional<QPointF> finish(qint64 bytes, qint64 elapsedMs);

private:
    [[nodiscard]] QPointF sample(qint64 bytes, qint64 elapsedMs);

    qint64 m_bytes = 0;
    qint64 m_ms = 0;
};
