#pragma once

#include <QElapsedTimer>
#include <QMutex>
#include <QStringList>

/// What happened in the terminal, one line each with the milliseconds since it came up.
/// Thread-safe.
class Journal
{
public:
    Journal() { m_clock.start(); }

    void add(const QString &what)
    {
        const QMutexLocker lock(&m_mutex);
        m_lines.append(QStringLiteral("%1 %2").arg(m_clock.elapsed()).arg(what));
    }

    QStringList lines() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_lines;
    }

private:
    mutable QMutex m_mutex;
    QElapsedTimer m_clock;
    QStringList m_lines;
};
