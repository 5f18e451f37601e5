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

/// A tester whose two pages answer as a test wants, and its verdicts.
struct TwoPages
{
    WebServer maker;
    WebServer other;
    const std::unique_ptr<TerminalConf> conf = pages(maker.url(), other.url());
    InetTester tester;
    QSignalSpy verdicts{&tester, &InetTester::connectionExists};
};

QTimer *timerOf(const InetTester &tester)
{
    return tester.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
}

QStringList *logged = nullptr;

void keep(QtMsgType, const QMessageLogContext &, const QString &text)
{
    if (logged)
        logged->append(text);
}

/// Keeps what is logged while it lives.
class Log
{
public:
    Log()
        : m_former(qInstallMessageHandler(keep))
    {
        logged = &lines;
    }
    ~Log()
    {
        qInstallMessageHandler(m_former);
        logged = nullptr;
    }
    Log(const Log &) = delete;
    Log &operator=(const Log &) = delete;

    QStringList lines;

private:
    const QtMessageHandler m_former;
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
        TwoPages round;
        round.other.hold();
        round.tester.test();
        QTRY_COMPARE(round.other.requests(), 1);
        QTRY_COMPARE(round.maker.requests(), 1);
        QVERIFY(!round.verdicts.wait(200));
        round.other.answerHeld();
        QVERIFY(round.verdicts.wait(30000));
        QCOMPARE(round.verdicts.count(), 1);
        QCOMPARE(round.verdicts.first().first().toBool(), true);
    }

    void lateAnswersCountTowardsTheNextRound()
    {
        TwoPages round;
        round.maker.hold();
        round.other.hold();
        for (int number = 1; number <= 2; ++number) {
            round.tester.test();
            QTRY_COMPARE(round.maker.requests(), number);
            QTRY_COMPARE(round.other.requests(), number);
        }
        // The first round's answers make the second one's verdict, whose own are still out.
        round.maker.answerFirstHeld();
        QVERIFY(!round.verdicts.wait(200));
        round.other.answerFirstHeld();
        QVERIFY(round.verdicts.wait(30000));
        QCOMPARE(round.verdicts.first().first().toBool(), true);
        // Those are beyond the second answer.
        round.maker.answerHeld();
        round.other.answerHeld();
        QVERIFY(!round.verdicts.wait(200));
        QCOMPARE(round.verdicts.count(), 1);
    }

    void roundStartsCountingAnew()
    {
        TwoPages round;
        round.other.hold();
        round.tester.test();
        QTRY_COMPARE(round.other.requests(), 1);
        QVERIFY(!round.verdicts.wait(200)); // one answer is in
        round.maker.hold();
        round.tester.test();
        QTRY_COMPARE(round.other.requests(), 2);
        QTRY_COMPARE(round.maker.requests(), 2);
        round.other.answerFirstHeld();
        QVERIFY(!round.verdicts.wait(200)); // it is the first of this round
        round.maker.answerHeld();
        QVERIFY(round.verdicts.wait(30000));
        QCOMPARE(round.verdicts.count(), 1);
        round.other.answerHeld();
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
