#pragma once

#include <QAbstractEventDispatcher>
#include <QSet>

/// The timers of this thread that have so many ms to go at least, by their numbers: also those of
/// objects that a test cannot reach, and without waiting them out.
inline QSet<int> runningTimers(int leastRemaining)
{
    constexpr int mostTimers = 1000; // numbers are given from 1 on, and again once they are free
    QSet<int> running;
    for (int timer = 1; timer <= mostTimers; ++timer) {
        if (QAbstractEventDispatcher::instance()->remainingTime(timer) >= leastRemaining)
            running.insert(timer);
    }
    return running;
}
