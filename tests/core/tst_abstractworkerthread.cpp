#include "abstractworker.h"
#include "abstractworkerthread.h"

#include <QTimer>
#include <QtTest>

#include <atomic>
#include <mutex>

namespace {

/// What a worker lived through, told to the test from whichever thread.
class Journal
{
public:
    void add(const QString &event)
    {
        const std::lock_guard lock(m_mutex);
        m_events << event;
        if (QThread::currentThread() != m_thread)
            m_elsewhere << event;
    }

    QStringList events() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

    QStringList elsewhere() const
    {
        const std::lock_guard lock(m_mutex);
        return m_elsewhere;
    }

private:
    mutable std::mutex m_mutex;
    const QThread *const m_thread = QThread::currentThread();
    QStringList m_events;
    QStringList m_elsewhere; // those from other threads
};

class Worker : public AbstractWorker
{
    Q_OBJECT

public:
    explicit Worker(Journal &journal, bool canStart = true)
        : m_journal(journal)
        , m_canStart(canStart)
    {
    }

    ~Worker() override { m_journal.add(QStringLiteral("deleted")); }

    bool doStart() override
    {
        m_journal.add(QStringLiteral("start"));
        connect(&m_ticks, &QTimer::timeout, this, &Worker::ticked);
        m_ticks.start(1);
        return m_canStart;
    }

    bool doStop() override
    {
        m_journal.add(QStringLiteral("stop"));
        m_ticks.stop();
        return false;
    }

signals:
    void ticked();

private:
    Journal &m_journal;
    const bool m_canStart;
    QTimer m_ticks{this};
};

const QStringList kWholeLife
    = {QStringLiteral("start"), QStringLiteral("stop"), QStringLiteral("deleted")};

} // namespace

class TestAbstractWorkerThread : public QObject
{
    Q_OBJECT

private slots:
    void runsTheWorkerInItsThread()
    {
        Journal journal;
        auto *worker = new Worker(journal);
        AbstractWorkerThread thread(worker);
        QCOMPARE(worker->thread(), &thread);
        int ticks = 0;
        connect(
            worker, &Worker::ticked, this, [&] { ++ticks; }, Qt::QueuedConnection);
        thread.start();
        QTRY_VERIFY(ticks >= 3);
        thread.quit();
        QVERIFY(thread.wait());
        QCOMPARE(journal.events(), kWholeLife);
        QCOMPARE(journal.elsewhere(), kWholeLife);
    }

    void quitBeforeTheStartHasFinishedIsHeard()
    {
        for (int i = 0; i < 50; ++i) {
            Journal journal;
            AbstractWorkerThread thread(new Worker(journal));
            thread.start();
            thread.quit();
            QVERIFY(thread.wait(10'000));
            QCOMPARE(journal.events(), kWholeLife);
        }
    }

    void destructionEndsARunningThread()
    {
        Journal journal;
        {
            QObject owner;
            (new AbstractWorkerThread(new Worker(journal), &owner))->start();
        }
        QCOMPARE(journal.events(), kWholeLife);
        QCOMPARE(journal.elsewhere(), kWholeLife);
    }

    void aThreadThatNeverRanDeletesItsWorker()
    {
        Journal journal;
        delete new AbstractWorkerThread(new Worker(journal));
        QCOMPARE(journal.events(), QStringList(QStringLiteral("deleted")));
    }

    void aWorkerThatCannotStartEndsTheThread()
    {
        Journal journal;
        AbstractWorkerThread thread(new Worker(journal, false));
        QTest::ignoreMessage(QtWarningMsg, "Worker could not start its work");
        thread.start();
        QVERIFY(thread.wait(10'000));
        QCOMPARE(journal.events(), kWholeLife);
    }

    void aSecondStartDoesNothing()
    {
        Journal journal;
        AbstractWorkerThread thread(new Worker(journal));
        thread.start();
        thread.quit();
        QVERIFY(thread.wait(10'000));
        QTest::ignoreMessage(
            QtWarningMsg, "A worker's thread was started again after its work had ended");
        thread.start();
        QVERIFY(thread.wait(10'000));
        QCOMPARE(journal.events(), kWholeLife);
    }
};

QTEST_GUILESS_MAIN(TestAbstractWorkerThread)
#include "tst_abstractworkerthread.moc"
