#pragma once

#include <QThread>

#include <atomic>

class AbstractWorker;

/// A thread that runs one worker: doStart(), the event loop until quit(), doStop(), and then
/// deletes the worker, all in the thread itself. A worker runs once: starting the thread again does
/// nothing.
class AbstractWorkerThread : public QThread
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AbstractWorkerThread)

public:
    /// Takes `worker` over, which must live in the calling thread and have no parent.
    explicit AbstractWorkerThread(AbstractWorker *worker, QObject *parent = nullptr);

    /// Ends the thread and waits for it as long as the worker takes.
    ~AbstractWorkerThread() override;

protected:
    void run() override;

private:
    std::atomic<AbstractWorker *> m_worker; // owned; null once run() has taken it
};
