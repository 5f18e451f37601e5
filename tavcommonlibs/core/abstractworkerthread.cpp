#include "abstractworkerthread.h"

#include "abstractworker.h"

#include <QDebug>

#include <memory>

AbstractWorkerThread::AbstractWorkerThread(AbstractWorker *worker, QObject *parent)
    : QThread(parent)
    , m_worker(worker)
{
    Q_ASSERT(worker && !worker->parent());
    worker->moveToThread(this);
}

AbstractWorkerThread::~AbstractWorkerThread()
{
    // run() may not have reached its event loop yet; QThread remembers the wish to quit until then.
    quit();
    wait();
    delete m_worker.load();
}

void AbstractWorkerThread::run()
{
    const std::unique_ptr<AbstractWorker> worker(m_worker.exchange(nullptr));
    if (!worker) {
        qWarning("A worker's thread was started again after its work had ended");
        return;
    }
    if (worker->doStart())
        exec();
    else
        qWarning("%s could not start its work", worker->metaObject()->className());
    worker->doStop();
}
