// Spaces the progress figures of a transfer so that a fast run does not flood the GUI's event
// queue: a figure goes out when it differs from the last one sent and the interval has passed, or
// at once when forced (the last figure of a run).
#pragma once

#include <QElapsedTimer>

class ProgressThrottle
{
public:
    explicit ProgressThrottle(int intervalMs) : m_intervalMs(intervalMs) {}

    void restart();
    // True when `value` is to be sent now; it then counts as sent.
    [[nodiscard]] bool take(qint64 value, bool force);
    // A figure is held back: the caller sends it later with force.
    [[nodiscard]] bool isHeldBack(qint64 value) const { return value != m_sent; }
    [[nodiscard]] qint64 elapsedMs() const { return m_clock.isValid() ? m_clock.elapsed() : 0; }

private:
    int m_intervalMs;
    QElapsedTimer m_clock;
    qint64 m_sentAtMs = -1;
    qint64 m_sent = -1;
};
