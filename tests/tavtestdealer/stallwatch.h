#pragma once

#include <QTimer>
#include <QtGlobal>

#include <time.h>

/// The longest turn of the event loop, in ms of this thread's own processor time: what a user would
/// feel as a stall of the window, whatever else the machine does meanwhile.
class StallWatch
{
public:
    StallWatch()
        : m_since(now())
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const qint64 turn = now();
            m_longest = qMax(m_longest, turn - m_since);
            m_since = turn;
        });
        m_timer.start(0);
    }
    qint64 longest() const { return m_longest; }

private:
    static qint64 now()
    {
        timespec time = {};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
    }

    QTimer m_timer;
    qint64 m_since;
    qint64 m_longest = 0;
};
