#pragma once

#include <QObject>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

/// Runs functions in the thread it lives in and waits for them. Like a blocking queued connection,
/// but ordered by std's primitives, which the thread sanitizer sees through and Qt's it does not.
class ThreadCalls : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ThreadCalls)

public:
    ThreadCalls() = default;

    /// From any other thread; that of this object must have a running event loop.
    void run(std::function<void()> function);

private:
    Q_INVOKABLE void runNext();

    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::deque<std::function<void()>> m_waiting;
    quint64 m_begun = 0; // calls so far
    quint64 m_done = 0;
};
