#include "threadcalls.h"

#include <utility>

void ThreadCalls::run(std::function<void()> function)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_waiting.push_back(std::move(function));
    const quint64 ticket = ++m_begun;
    QMetaObject::invokeMethod(this, "runNext", Qt::QueuedConnection);
    m_finished.wait(lock, [this, ticket] { return m_done >= ticket; });
}

void ThreadCalls::runNext()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const std::function<void()> function = std::move(m_waiting.front());
    m_waiting.pop_front();
    lock.unlock();
    function();
    lock.lock();
    ++m_done;
    m_finished.notify_all();
}
