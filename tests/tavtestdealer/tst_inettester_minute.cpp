#include "inettester.h"
#include "terminalconf.h"
#include "webserver.h"

#include "abstractworkerthread.h"

#include <QElapsedTimer>
#include <QTest>

class InetTesterMinuteTest : public QObject
{
    Q_OBJECT

private slots:
    void secondRoundComesAfterAMinute()
    {
        WebServer page;
        const TerminalConf conf(QStringLiteral("\n[internet]\nmakerPage=%1\npublicPage=%1\n")
                                    .arg(page.url().toString()));
        auto *const tester = new InetTester;
        AbstractWorkerThread thread(tester);
        int rounds = 0;
        connect(
            tester, &InetTester::connectionExists, this, [&rounds] { ++rounds; },
            Qt::QueuedConnection);
        QElapsedTimer clock;
        clock.start();
        thread.start();
        QTRY_COMPARE_WITH_TIMEOUT(rounds, 1, 30000);
        QTRY_COMPARE_WITH_TIMEOUT(rounds, 2, 90000);
        QVERIFY(clock.elapsed() >= 60000 * 95 / 100); // a coarse timer, 5 % either way
        QCOMPARE(page.requests(), 4);
        thread.quit();
        QVERIFY(thread.wait(10000));
    }
};

QTEST_GUILESS_MAIN(InetTesterMinuteTest)
#include "tst_inettester_minute.moc"
