#include "ratelimit.h"

#include <QTest>

using namespace tavbus;

class RateLimitTest : public QObject
{
    Q_OBJECT

private slots:
    void burstPassesAtOnceThenSoMuchASecond();
    void quietTimeDoesNotAddUp();
    void refusalsCostNothing();
    void moreThanTheBurstPassesAloneAndIsPaidFor();
};

void RateLimitTest::burstPassesAtOnceThenSoMuchASecond()
{
    RateLimit limit(10, 100);
    for (int i = 0; i < 10; ++i)
        QVERIFY(limit.take(1, 0));
    QVERIFY(!limit.take(1, 0));
    QVERIFY(!limit.take(1, 9));
    QVERIFY(limit.take(1, 10));
    QVERIFY(!limit.take(1, 10));
    QVERIFY(limit.take(5, 60));
    QVERIFY(!limit.take(1, 60));
}

void RateLimitTest::quietTimeDoesNotAddUp()
{
    RateLimit limit(10, 100);
    QVERIFY(limit.take(10, 1000000));
    QVERIFY(!limit.take(1, 1000000));
}

void RateLimitTest::refusalsCostNothing()
{
    RateLimit limit(10, 100);
    QVERIFY(limit.take(10, 0));
    for (int i = 0; i < 1000; ++i)
        QVERIFY(!limit.take(10, 50));
    QVERIFY(limit.take(10, 100));
}

// A command to very many listeners is no crime; the next one waits longer.
void RateLimitTest::moreThanTheBurstPassesAloneAndIsPaidFor()
{
    RateLimit limit(10, 100);
    QVERIFY(limit.take(30, 0));
    QVERIFY(!limit.take(1, 200));
    QVERIFY(limit.take(1, 220));
}

QTEST_APPLESS_MAIN(RateLimitTest)
#include "ratelimittest.moc"
