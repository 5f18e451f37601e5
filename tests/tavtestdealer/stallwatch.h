#pragma once

#include <QElapsedTimer>
#include <QTimer>

/// The longest time, in ms, for which the event loop did not come round.
class StallWatch
{
public:
    StallWatch()
    {
        m_since.start();
        QObject::connect(
            &m_timer, &QTimer::timeout, [this] { m_longest = qMax(m_longest, m_since.restart()); });
        m_timer.start(0);
    }
    qint64 longest() const { return m_longest; }

private:
    QTimer m_timer;
    QElapsedTimer m_since;
    qint64 m_longest = 0;
};
