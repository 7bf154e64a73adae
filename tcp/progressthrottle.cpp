#include "tcp/progressthrottle.h"

void ProgressThrottle::restart()
{
    m_clock.start();
    m_sentAtMs = -1;
    m_sent = -1;
}

bool ProgressThrottle::take(qint64 value, bool force)
{
    if (value == m_sent)
        return false;
    const qint64 now = elapsedMs();
    if (!force && m_sentAtMs >= 0 && now - m_sentAtMs < m_intervalMs)
        return false;
    m_sentAtMs = now;
    m_sent = value;
    return true;
}
