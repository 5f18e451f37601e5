#pragma once

#include <QObject>

/// Work that lives in a thread of its own: see AbstractWorkerThread.
class AbstractWorker : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AbstractWorker)

public:
    explicit AbstractWorker(QObject *parent = nullptr);
    ~AbstractWorker() override;

    /// Called first in the worker's thread. False: the work cannot be done, the thread ends.
    virtual bool doStart() = 0;

    /// Called last in the worker's thread, after every start, a failed one included. Its answer is
    /// for callers of their own; the thread ends either way.
    virtual bool doStop() = 0;
};
