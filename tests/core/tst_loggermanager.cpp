#include "loggermanager.h"

#include <QLoggingCategory>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <sys/stat.h>

#include <atomic>
#include <ctime>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>

Q_DECLARE_METATYPE(QtMsgType)

Q_LOGGING_CATEGORY(PANE, "test.pane")
Q_LOGGING_CATEGORY(OTHER, "test.other")
Q_LOGGING_CATEGORY(QUIET, "test.quiet", QtWarningMsg)
Q_LOGGING_CATEGORY(UNLOGGED, "test.unlogged", QtWarningMsg)
Q_LOGGING_CATEGORY(QT_OWN, "qt.test.own", QtWarningMsg)

namespace {

const auto kPane = QStringLiteral("test.pane");
const auto kOther = QStringLiteral("test.other");

/// A thread with an event loop that runs functions for the test. They cross over under a
/// std::mutex: the thread sanitizer cannot see what Qt's own, which is not built with it, orders.
class Helper : public QObject
{
public:
    Helper()
    {
        moveToThread(&m_thread);
        m_thread.start();
    }

    ~Helper() override
    {
        m_thread.quit();
        m_thread.wait();
    }

    void post(const std::function<void()> &function)
    {
        {
            const std::lock_guard lock(m_mutex);
            m_functions.push_back(function);
        }
        QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    }

    void run(const std::function<void()> &function)
    {
        std::promise<void> done;
        post([&] {
            function();
            done.set_value();
        });
        done.get_future().wait();
    }

    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        std::function<void()> function;
        {
            const std::lock_guard lock(m_mutex);
            function = std::move(m_functions.front());
            m_functions.pop_front();
        }
        function();
        return true;
    }

private:
    QThread m_thread;
    std::mutex m_mutex;
    std::deque<std::function<void()>> m_functions;
};

void inAnotherThread(const std::function<void()> &function)
{
    std::thread(function).join();
}

} // namespace

class TestLoggerManager : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_box = std::make_unique<QTemporaryDir>();
        m_path = m_box->filePath(QStringLiteral("tool.log"));
    }

    void cleanup()
    {
        LoggerManager::removeOutput(kPane);
        LoggerManager::removeOutput(kOther);
        LoggerManager::releaseLog();
        QLoggingCategory::setFilterRules(QString());
    }

    void aLineTellsLevelCategoryAndText()
    {
        start();
        qDebug("plain");
        qCInfo(OTHER, "told");
        qCWarning(OTHER, "warned");
        qCCritical(OTHER, "\u043f\u043b\u043e\u0445\u043e");
        const QStringList lines = logged();
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines[0], QStringLiteral("debug    default plain"));
        QCOMPARE(lines[1], QStringLiteral("info     test.other told"));
        QCOMPARE(lines[2], QStringLiteral("warning  test.other warned"));
        QCOMPARE(lines[3], QStringLiteral("error    test.other \u043f\u043b\u043e\u0445\u043e"));
    }

    // Another user of the group may be the next to write to it.
    void aLogIsAsOpenToTheGroupAsItsDirectory_data()
    {
        QTest::addColumn<mode_t>("directoryMode");
        QTest::addColumn<mode_t>("fileMode");
        QTest::newRow("directory of a group's") << mode_t(02770) << mode_t(0664);
        QTest::newRow("directory of one user's") << mode_t(0755) << mode_t(0644);
    }

    void aLogIsAsOpenToTheGroupAsItsDirectory()
    {
        QFETCH(mode_t, directoryMode);
        QVERIFY(chmod(QFile::encodeName(m_box->path()).constData(), directoryMode) == 0);
        const mode_t before = umask(S_IWGRP | S_IWOTH);
        start();
        umask(before);
        struct stat status = {};
        QVERIFY(stat(QFile::encodeName(m_path).constData(), &status) == 0);
        QTEST(status.st_mode & ACCESSPERMS, "fileMode");
    }

    void anotherThreadIsNamed()
    {
        start();
        inAnotherThread([] { qCInfo(OTHER, "from afar"); });
        const QRegularExpression shape(
            QStringLiteral("^info     test\\.other \\[\\d+\\] from afar$"));
        QVERIFY2(shape.match(logged().value(0)).hasMatch(), qPrintable(logged().value(0)));
    }

    void longTextsStayReadable()
    {
        start();
        qDebug().noquote() << QStringLiteral("one\r\ntwo\n\nfour\n\n");
        qDebug("escape \x1b[2J and return\rover");
        QCOMPARE(logged(),
            QStringList({QStringLiteral("debug    default one"), QStringLiteral("    two"),
                QStringLiteral("    "), QStringLiteral("    four"),
                QStringLiteral("debug    default escape \\x1b[2J and return\\x0dover")}));
    }

    void nothingBelowTheLevelIsWritten_data()
    {
        QTest::addColumn<QtMsgType>("level");
        QTest::addColumn<int>("lines");
        QTest::newRow("debug") << QtDebugMsg << 4;
        QTest::newRow("info") << QtInfoMsg << 3;
        QTest::newRow("warning") << QtWarningMsg << 2;
        QTest::newRow("critical") << QtCriticalMsg << 1;
    }

    void nothingBelowTheLevelIsWritten()
    {
        QFETCH(QtMsgType, level);
        QFETCH(int, lines);
        start(level);
        qDebug("d");
        qInfo("i");
        qWarning("w");
        qCritical("c");
        QCOMPARE(logged().size(), lines);
    }

    void categoriesAreOpenWhateverTheRulesSay()
    {
        start();
        QVERIFY(QUIET().isDebugEnabled());
        QLoggingCategory::setFilterRules(QStringLiteral("dialup.debug=true"));
        QVERIFY(QUIET().isDebugEnabled());
        QVERIFY(OTHER().isDebugEnabled());
        QLoggingCategory::setFilterRules(QStringLiteral("*=false"));
        QVERIFY(OTHER().isDebugEnabled());
        const QLoggingCategory born("test.born.later", QtCriticalMsg);
        QVERIFY(born.isDebugEnabled());
    }

    void categoriesAreOpenOnlyDownToTheLevel()
    {
        start(QtInfoMsg);
        QVERIFY(QUIET().isInfoEnabled());
        QVERIFY(!QUIET().isDebugEnabled());
    }

    void rulesStillOpenOthers()
    {
        start(QtWarningMsg);
        QLoggingCategory::setFilterRules(QStringLiteral("test.quiet.debug=true"));
        QVERIFY(QUIET().isDebugEnabled());
    }

    void qtsOwnCategoriesAreLeftToTheRules()
    {
        start();
        QVERIFY(!QT_OWN().isDebugEnabled());
        QLoggingCategory::setFilterRules(QStringLiteral("qt.test.own.debug=true"));
        QVERIFY(QT_OWN().isDebugEnabled());
    }

    void afterTheReleaseTheRulesHoldAgain()
    {
        start();
        LoggerManager::releaseLog();
        QVERIFY(!QUIET().isDebugEnabled());
        QTest::ignoreMessage(QtDebugMsg, "to where it went before");
        qDebug("to where it went before");
        QVERIFY(logged().isEmpty());
    }

    void aSecondLogTakesTheFirstOnesPlace()
    {
        start();
        qDebug("one");
        const QString second = m_box->filePath(QStringLiteral("second.log"));
        LoggerManager::initLog(second, 2, false, QtDebugMsg);
        qDebug("two");
        QCOMPARE(logged(), QStringList(QStringLiteral("debug    default one")));
        m_path = second;
        QCOMPARE(logged(), QStringList(QStringLiteral("debug    default two")));
    }

    void anOutputGetsItsCategoryAtOnce()
    {
        QStringList got;
        QtMsgType type = QtFatalMsg;
        QString function;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType t, const QMessageLogContext &context, const QString &text) {
                type = t;
                function = QString::fromUtf8(context.function);
                got << text;
            });
        start(QtCriticalMsg);
        qCWarning(PANE, "a\nb\n");
        QCOMPARE(got, QStringList(QStringLiteral("a\nb\n")));
        QCOMPARE(type, QtWarningMsg);
        QVERIFY(function.contains(QLatin1String("anOutputGetsItsCategoryAtOnce")));
        qCWarning(OTHER, "not for it");
        QCOMPARE(got.size(), 1);
        // The pane shows what the log is too coarse for.
        qCDebug(PANE, "detail");
        QCOMPARE(got.size(), 2);
        QVERIFY(logged().isEmpty());
    }

    void anOutputOpensItsCategory()
    {
        int calls = 0;
        LoggerManager::setOutputs(QStringLiteral("test.unlogged"),
            [&](QtMsgType, const QMessageLogContext &, const QString &) { ++calls; });
        QTest::ignoreMessage(QtDebugMsg, "detail");
        qCDebug(UNLOGGED, "detail");
        QCOMPARE(calls, 1);
        LoggerManager::removeOutput(QStringLiteral("test.unlogged"));
    }

    void theDefaultCategoryIsOneToo()
    {
        QStringList got;
        start();
        LoggerManager::setOutputs(QStringLiteral("default"),
            [&](QtMsgType, const QMessageLogContext &, const QString &text) { got << text; });
        qDebug("plain");
        LoggerManager::removeOutput(QStringLiteral("default"));
        QCOMPARE(got, QStringList(QStringLiteral("plain")));
    }

    void aLaterOutputTakesTheEarlierOnesPlace()
    {
        int first = 0;
        int second = 0;
        start();
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) { ++first; });
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) { ++second; });
        qCDebug(PANE, "x");
        QCOMPARE(first, 0);
        QCOMPARE(second, 1);
    }

    void messagesOfOtherThreadsArriveOnTheOutputsThread()
    {
        start();
        QStringList got;
        bool elsewhere = false;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &context, const QString &text) {
                elsewhere = elsewhere || QThread::currentThread() != thread();
                got << QString::fromUtf8(context.category) + QLatin1Char(' ') + text;
            });
        inAnotherThread([] {
            for (int i = 0; i < 3; ++i) {
                // Dies before the message is delivered: the context must not point into it.
                const QLoggingCategory category("test.pane");
                qCDebug(category, "%d", i);
            }
        });
        QVERIFY(got.isEmpty());
        QTRY_COMPARE(got.size(), 3);
        QCOMPARE(got,
            QStringList({QStringLiteral("test.pane 0"), QStringLiteral("test.pane 1"),
                QStringLiteral("test.pane 2")}));
        QVERIFY(!elsewhere);
    }

    void queuedMessagesAreDroppedByRemoval()
    {
        start();
        int calls = 0;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) { ++calls; });
        inAnotherThread([] { qCDebug(PANE, "late"); });
        LoggerManager::removeOutput(kPane);
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(calls, 0);
    }

    void removalWaitsForACallOnAnotherThread()
    {
        start(QtWarningMsg); // so that only the output opens its category
        Helper helper;
        std::atomic<bool> isInside = false;
        std::atomic<bool> mayLeave = false;
        std::atomic<bool> hasLeft = false;
        helper.run([&] {
            LoggerManager::setOutputs(
                kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) {
                    isInside = true;
                    while (!mayLeave)
                        std::this_thread::yield();
                    hasLeft = true;
                });
        });
        helper.post([] { qCDebug(PANE, "x"); });
        QTRY_VERIFY(isInside);
        std::atomic<bool> isRemoved = false;
        std::atomic<bool> hadLeft = false;
        std::thread remover([&] {
            LoggerManager::removeOutput(kPane);
            isRemoved = true;
            hadLeft = hasLeft.load();
        });
        // A category born now shows that the removal is under way.
        QTRY_VERIFY(!QLoggingCategory("test.pane", QtWarningMsg).isDebugEnabled());
        QVERIFY(!isRemoved);
        mayLeave = true;
        remover.join();
        QVERIFY(hadLeft);
    }

    void anOutputMayRemoveItself()
    {
        start();
        int calls = 0;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) {
                ++calls;
                LoggerManager::removeOutput(kPane);
                qCDebug(PANE, "and logs after that");
            });
        qCDebug(PANE, "x");
        qCDebug(PANE, "y");
        QCOMPARE(calls, 1);
    }

    void anOutputMayReplaceItself()
    {
        start();
        int later = 0;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) {
                LoggerManager::setOutputs(kPane,
                    [&](QtMsgType, const QMessageLogContext &, const QString &) { ++later; });
            });
        qCDebug(PANE, "x");
        qCDebug(PANE, "y");
        QCOMPARE(later, 1);
    }

    void anOutputThatLogsDoesNotHang_data()
    {
        QTest::addColumn<bool>("fromAnotherThread");
        QTest::addColumn<int>("otherCalls");
        QTest::addColumn<int>("lines");
        // From within a message handler Qt lets messages through to standard error alone.
        QTest::newRow("direct") << false << 0 << 1;
        QTest::newRow("queued") << true << 1 << 3;
    }

    void anOutputThatLogsDoesNotHang()
    {
        QFETCH(bool, fromAnotherThread);
        QFETCH(int, otherCalls);
        QFETCH(int, lines);
        start();
        int pane = 0;
        int other = 0;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) {
                ++pane;
                qCDebug(PANE, "own category");
                qCDebug(OTHER, "other category");
            });
        LoggerManager::setOutputs(
            kOther, [&](QtMsgType, const QMessageLogContext &, const QString &) {
                ++other;
                qCDebug(PANE, "back again");
            });
        if (fromAnotherThread)
            inAnotherThread([] { qCDebug(PANE, "x"); });
        else
            qCDebug(PANE, "x");
        QTRY_COMPARE(pane, 1);
        QCoreApplication::sendPostedEvents();
        QCOMPARE(pane, 1);
        QCOMPARE(other, otherCalls);
        QCOMPARE(logged().size(), lines);
    }

    void anOutputGoesWithItsThread()
    {
        start();
        std::atomic<int> calls = 0;
        {
            Helper helper;
            helper.run([&] {
                LoggerManager::setOutputs(kPane,
                    [&](QtMsgType, const QMessageLogContext &, const QString &) { ++calls; });
            });
            qCDebug(PANE, "heard");
            helper.run([] {});
            QTRY_COMPARE(calls.load(), 1);
        }
        qCDebug(PANE, "nobody there");
        QCOMPARE(calls.load(), 1);
        QCOMPARE(logged().size(), 2);
    }

    void removalHoldsUnderFire()
    {
        // Whatever the interleaving: no call after removal has returned, on any thread.
        start(QtWarningMsg);
        std::atomic<bool> isOver = false;
        std::vector<std::thread> loggers;
        loggers.reserve(3);
        for (int i = 0; i < 3; ++i) {
            loggers.emplace_back([&] {
                while (!isOver) {
                    qCDebug(PANE, "shot");
                    std::this_thread::yield();
                }
            });
        }
        Helper helper;
        for (int round = 0; round < 200; ++round) {
            auto isAlive = std::make_shared<std::atomic<bool>>(true);
            helper.run([&] {
                LoggerManager::setOutputs(
                    kPane, [isAlive](QtMsgType, const QMessageLogContext &, const QString &) {
                        if (!*isAlive)
                            qFatal("called after its removal");
                    });
            });
            LoggerManager::removeOutput(kPane);
            *isAlive = false;
        }
        isOver = true;
        for (std::thread &logger : loggers)
            logger.join();
    }

    void linesOfManyThreadsStayWhole()
    {
        start();
        std::vector<std::thread> loggers;
        loggers.reserve(4);
        for (int i = 0; i < 4; ++i) {
            loggers.emplace_back([i] {
                for (int n = 0; n < 500; ++n)
                    qCInfo(OTHER, "thread %d line %d end", i, n);
            });
        }
        for (std::thread &logger : loggers)
            logger.join();
        const QStringList lines = logged();
        QCOMPARE(lines.size(), 2000);
        const QRegularExpression shape(
            QStringLiteral("^info     test\\.other \\[\\d+\\] thread \\d line \\d+ end$"));
        for (const QString &line : lines)
            QVERIFY2(shape.match(line).hasMatch(), qPrintable(line));
    }

    void aFloodIsWrittenFast()
    {
        start();
        int calls = 0;
        LoggerManager::setOutputs(
            kPane, [&](QtMsgType, const QMessageLogContext &, const QString &) { ++calls; });
        // Not by the wall clock, which other programs move too.
        const std::clock_t before = std::clock();
        for (int i = 0; i < 20'000; ++i)
            qCDebug(PANE, "line %d of a flood, as long as such lines are", i);
        const auto milliseconds = 1000 * (std::clock() - before) / CLOCKS_PER_SEC;
        qInfo("20000 lines in %ld ms", static_cast<long>(milliseconds));
        QCOMPARE(calls, 20'000);
        QVERIFY2(milliseconds < 5'000, qPrintable(QString::number(milliseconds)));
        QCOMPARE(logged().size(), 20'001);
    }

private:
    void start(QtMsgType level = QtDebugMsg) { LoggerManager::initLog(m_path, 2, false, level); }

    /// The log's lines without their time stamps.
    QStringList logged() const
    {
        QFile file(m_path);
        if (!file.open(QIODevice::ReadOnly))
            return {};
        QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
        if (!lines.takeLast().isEmpty())
            lines << QStringLiteral("the last line is cut off");
        static const QRegularExpression time(
            QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "));
        return lines.replaceInStrings(time, QString());
    }

    std::unique_ptr<QTemporaryDir> m_box;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestLoggerManager)
#include "tst_loggermanager.moc"
