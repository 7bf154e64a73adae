#include "tcp/ratesampler.h"

void RateSampler::restart()
{
    m_bytes = 0;
    m_ms = 0;
}

QPointF RateSampler::sample(qint64 bytes, qint64 elapsedMs)
{
    const double megabytes = double(bytes - m_bytes) / 1e6;
    const double seconds = double(elapsedMs - m_ms) / 1000;
    m_bytes = bytes;
    m_ms = elapsedMs;
    return {double(elapsedMs) / 1000, megabytes / seconds};
}

std::optional<QPointF> RateSampler::take(qint64 bytes, qint64 elapsedMs)
{
    if (elapsedMs < m_ms || bytes < m_bytes) // a new run without restart()
        restart();
    if (elapsedMs - m_ms < kStepMs)
        return std::nullopt;
    return sample(bytes, elapsedMs);
}

std::optional<QPointF> RateSampler::finish(qint64 bytes, qint64 elapsedMs)
{
    if (elapsedMs <= m_ms || bytes == 0)
        return std::nullopt;
    return sample(bytes, elapsedMs);
}
