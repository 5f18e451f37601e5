#pragma once

#include <QtGlobal>

namespace tavbus {

/**
 * Lets so much pass a second, and as much as \a burst at once after a time of less (a token
 * bucket).
 */
class RateLimit
{
public:
    RateLimit(int burst, int perSecond)
        : m_burst(burst)
        , m_perSecond(perSecond)
        , m_left(burst)
    {
    }

    /// Whether \a amount may pass at \a now, in ms of a clock that only goes forward; it counts
    /// only then. More than the burst passes when nothing else has for long enough.
    bool take(int amount, qint64 now);

private:
    double m_burst;
    double m_perSecond;
    double m_left;
    qint64 m_last = 0;
};

} // namespace tavbus
