#include "inettester.h"
#include "terminalconf.h"
#include "webserver.h"

#include "abstractworkerthread.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <memory>

namespace {

std::unique_ptr<TerminalConf> pages(const QUrl &maker, const QUrl &other)
{
    return std::make_unique<TerminalConf>(
        QStringLiteral("\n[internet]\nmakerPage=%1\npublicPage=%2\n")
            .arg(maker.toString(), other.toString()));
}

QTimer *timerOf(const InetTester &tester)
{
    return tester.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
}

QStringList *logged = nullptr;

void keep(QtMsgType, const QMessageLogContext &, const QString &text)
{
    logged->append(text);
}

/// Keeps what is logged while it lives.
class Log
{
public:
    Log()
    {
        logged = &lines;
        m_former = qInstallMessageHandler(keep);
    }
    ~Log() { qInstallMessageHandler(m_former); }
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;

    QStringList lines;

private:
    QtMessageHandler m_former;
};

class NoReplyTester : public InetTester
{
protected:
    QNetworkReply *get(QNetworkAccessManager *manager, const QNetworkRequest &) override
    {
        managers.append(manager);
        return nullptr;
    }

public:
    QList<QPointer<QNetworkAccessManager>> managers;
};

/// Notes what is asked for, without a reply.
class AddressTester : public InetTester
{
protected:
    QNetworkReply *get(QNetworkAccessManager *, const QNetworkRequest &request) override
    {
        addresses.append(request.url());
        return nullptr;
    }

public:
    QList<QUrl> addresses;
};

} // namespace

class InetTesterTest : public QObject
{
    Q_OBJECT

private slots:
    void verdict_data()
    {
        QTest::addColumn<QByteArray>("maker");
        QTest::addColumn<QByteArray>("other");
        QTest::addColumn<bool>("exists");
        const QByteArray good = "200 OK";
        const QByteArray bad = "404 Not Found";
        const QByteArray dead;
        QTest::newRow("both answer") << good << good << true;
        QTest::newRow("only the maker's answers") << good << dead << true;
        QTest::newRow("only the public one answers") << dead << good << true;
        QTest::newRow("neither answers") << dead << dead << false;
        QTest::newRow("errors are no answers") << bad << QByteArray("500 Oops") << false;
        QTest::newRow("an error and an answer") << bad << good << true;
        QTest::newRow("redirection is an answer") << QByteArray("302 Found") << dead << true;
    }
    void verdict()
    {
        QFETCH(QByteArray, maker);
        QFETCH(QByteArray, other);
        QFETCH(bool, exists);
        WebServer makerServer(maker);
        WebServer otherServer(other);
        const auto conf = pages(maker.isEmpty() ? deadUrl() : makerServer.url(),
            other.isEmpty() ? deadUrl() : otherServer.url());
        InetTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QVERIFY(spy.wait(30000));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first().first().toBool(), exists);
        QCOMPARE(makerServer.requests(), maker.isEmpty() ? 0 : 1);
        QCOMPARE(otherServer.requests(), other.isEmpty() ? 0 : 1);
    }

    void verdictWaitsForBothAnswers()
    {
        WebServer quick;
        WebServer slow;
        slow.hold();
        const auto conf = pages(quick.url(), slow.url());
        InetTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QTRY_COMPARE(slow.requests(), 1);
        QTRY_COMPARE(quick.requests(), 1);
        QVERIFY(!spy.wait(200));
        slow.answerHeld();
        QVERIFY(spy.wait(30000));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first().first().toBool(), true);
    }

    void lateAnswersCountTowardsTheNextRound()
    {
        WebServer maker;
        WebServer other;
        maker.hold();
        other.hold();
        const auto conf = pages(maker.url(), other.url());
        InetTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QTRY_COMPARE(maker.requests(), 1);
        QTRY_COMPARE(other.requests(), 1);
        tester.test();
        QTRY_COMPARE(maker.requests(), 2);
        QTRY_COMPARE(other.requests(), 2);
        // The first round's answers make the second one's verdict, whose own are still out.
        maker.answerFirstHeld();
        QVERIFY(!spy.wait(200));
        other.answerFirstHeld();
        QVERIFY(spy.wait(30000));
        QCOMPARE(spy.first().first().toBool(), true);
        // Those are beyond the second answer.
        maker.answerHeld();
        other.answerHeld();
        QVERIFY(!spy.wait(200));
        QCOMPARE(spy.count(), 1);
    }

    void roundStartsCountingAnew()
    {
        WebServer quick;
        WebServer slow;
        slow.hold();
        const auto conf = pages(quick.url(), slow.url());
        InetTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QTRY_COMPARE(slow.requests(), 1);
        QVERIFY(!spy.wait(200)); // one answer is in
        quick.hold();
        tester.test();
        QTRY_COMPARE(slow.requests(), 2);
        QTRY_COMPARE(quick.requests(), 2);
        slow.answerFirstHeld();
        QVERIFY(!spy.wait(200)); // it is the first of this round
        quick.answerHeld();
        QVERIFY(spy.wait(30000));
        QCOMPARE(spy.count(), 1);
        slow.answerHeld();
    }

    void makersPageIsAskedFirst()
    {
        WebServer maker;
        WebServer other;
        const auto conf = pages(maker.url(), other.url());
        AddressTester tester;
        tester.test();
        QCOMPARE(tester.addresses, QList<QUrl>({maker.url(), other.url()}));
    }

    void requestWithoutAReplyIsAFailure()
    {
        NoReplyTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first().first().toBool(), false);
        QCOMPARE(tester.managers.size(), 2);
        QTRY_VERIFY(!tester.managers.at(0) && !tester.managers.at(1));
    }

    void logTellsTheRound()
    {
        const Log log;
        WebServer good("200 OK", QByteArray("начало").repeated(40));
        const auto conf = pages(good.url(), deadUrl());
        InetTester tester;
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        tester.test();
        QVERIFY(spy.wait(30000));
        QTRY_COMPARE(log.lines.size(), 4);
        QCOMPARE(log.lines.first(), QStringLiteral("Start test"));
        QVERIFY(log.lines.contains(QStringLiteral("Stop test")));
        const QByteArray begin = QByteArray("начало").repeated(40).left(128);
        QCOMPARE(log.lines.filter(QRegularExpression(QStringLiteral("^начало"))).size(), 1);
        QVERIFY(log.lines.filter(QRegularExpression(QStringLiteral("^начало")))
                    .first()
                    .startsWith(QString::fromUtf8(begin.left(126))));
        QCOMPARE(log.lines.filter(QRegularExpression(QStringLiteral("refused"))).size(), 1);
    }

    void startTestsAtOnceAndThenEveryMinute()
    {
        WebServer page;
        const auto conf = pages(page.url(), page.url());
        InetTester tester;
        QVERIFY(!timerOf(tester));
        QVERIFY(tester.doStart());
        QVERIFY(timerOf(tester));
        QCOMPARE(timerOf(tester)->interval(), 60000);
        QVERIFY(timerOf(tester)->isActive());
        QVERIFY(!timerOf(tester)->isSingleShot());
        QSignalSpy spy(&tester, &InetTester::connectionExists);
        QVERIFY(spy.wait(30000));
        QCOMPARE(page.requests(), 2);
    }

    void secondStartReplacesTheTimer()
    {
        const auto conf = pages(deadUrl(), deadUrl());
        InetTester tester;
        tester.doStart();
        const QPointer<QTimer> first = timerOf(tester);
        tester.doStart();
        QVERIFY(first.isNull() || !first->isActive());
        QTRY_VERIFY(first.isNull());
        QVERIFY(timerOf(tester)->isActive());
    }

    void stopAnswersFalseAndReleasesTheTimer()
    {
        const auto conf = pages(deadUrl(), deadUrl());
        InetTester tester;
        QVERIFY(!tester.doStop());
        tester.doStart();
        const QPointer<QTimer> timer = timerOf(tester);
        QVERIFY(!tester.doStop());
        QVERIFY(!timer->isActive());
        QTRY_VERIFY(timer.isNull());
        QVERIFY(!tester.doStop());
    }

    void resultsComeFromTheThreadToTheGui()
    {
        WebServer page;
        const auto conf = pages(page.url(), deadUrl());
        auto *const tester = new InetTester;
        AbstractWorkerThread thread(tester);
        QVector<bool> results;
        connect(
            tester, &InetTester::connectionExists, this,
            [&results](bool exists) { results.append(exists); }, Qt::QueuedConnection);
        thread.start();
        QTRY_COMPARE_WITH_TIMEOUT(results.size(), 1, 30000);
        QCOMPARE(results.first(), true);
        thread.quit();
        QVERIFY(thread.wait(10000));
    }

    void threadEndsWhileRequestsAreOut()
    {
        WebServer silent;
        silent.hold();
        const auto conf = pages(silent.url(), silent.url());
        AbstractWorkerThread thread(new InetTester);
        thread.start();
        QTRY_COMPARE(silent.requests(), 2);
        thread.quit();
        QVERIFY(thread.wait(10000));
        silent.answerHeld(); // to nobody
        QTest::qWait(0);
    }
};

QTEST_GUILESS_MAIN(InetTesterTest)
#include "tst_inettester.moc"
