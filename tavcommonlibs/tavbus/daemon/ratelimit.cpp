#include "ratelimit.h"

#include <algorithm>

namespace tavbus {

bool RateLimit::take(int amount, qint64 now)
{
    m_left = std::min(m_burst, m_left + m_perSecond * static_cast<double>(now - m_last) / 1000.0);
    m_last = now;
    if (m_left < std::min<double>(amount, m_burst))
        return false;
    m_left -= amount;
    return true;
}

} // namespace tavbus
