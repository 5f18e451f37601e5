#pragma once

#include <QElapsedTimer>
#include <QStringList>

#include <mutex>

/// What happened in the terminal, one line each with the milliseconds since it came up.
/// Thread-safe.
class Journal
{
public:
    Journal() { m_clock.start(); }

    void add(const QString &what)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_lines.append(QStringLiteral("%1 %2").arg(m_clock.elapsed()).arg(what));
    }

    QStringList lines() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex; // not Qt's, whose waiting the thread sanitizer does not see
    QElapsedTimer m_clock;
    QStringList m_lines;
};
