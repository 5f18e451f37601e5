#include "acceptorstate.h"
#include "printservicestatetavbuswrapper.h"
#include "watchdogstate.h"

#include <QtTest>

#include <limits>

namespace {

tavbus::ClientState stateOf(const QVariantMap &body)
{
    tavbus::ClientState state;
    state.setBody(body);
    return state;
}

QVariantMap acceptor(const QVariant &threadId, const QVariant &disabled)
{
    return {{QStringLiteral("thread_id"), threadId}, {QStringLiteral("disabled"), disabled}};
}

QVariantMap acceptors(const QVariant &list)
{
    return {{QStringLiteral("acceptors"), list}};
}

/// Rows of bodies whose one number, under `key`, cannot be used.
void addHostileNumbers(const QString &key)
{
    QTest::newRow("empty body") << QVariantMap();
    QTest::newRow("another key") << QVariantMap{{QStringLiteral("mode"), 2}};
    QTest::newRow("no value") << QVariantMap{{key, QVariant()}};
    QTest::newRow("a text") << QVariantMap{{key, QStringLiteral("2")}};
    QTest::newRow("bytes") << QVariantMap{{key, QByteArray("2")}};
    QTest::newRow("a fraction") << QVariantMap{{key, 2.0}};
    QTest::newRow("a truth value") << QVariantMap{{key, true}};
    QTest::newRow("a list") << QVariantMap{{key, QVariantList{2}}};
    QTest::newRow("a map") << QVariantMap{{key, QVariantMap{{key, 2}}}};
    QTest::newRow("too large") << QVariantMap{{key, 4294967298LL}};
    QTest::newRow("far too large") << QVariantMap{{key, std::numeric_limits<qulonglong>::max()}};
    QTest::newRow("too small") << QVariantMap{{key, std::numeric_limits<qlonglong>::min()}};
}

} // namespace

class TestServiceStates : public QObject
{
    Q_OBJECT

private slots:
    void watchdogsRunByTheirSecondBit_data()
    {
        QTest::addColumn<int>("state");
        QTest::addColumn<bool>("isRunning");
        QTest::newRow("nothing") << 0 << false;
        QTest::newRow("first bit") << 1 << false;
        QTest::newRow("second bit") << 2 << true;
        QTest::newRow("both") << 3 << true;
        QTest::newRow("third bit") << 4 << false;
        QTest::newRow("negative, all bits") << -1 << true;
    }

    void watchdogsRunByTheirSecondBit()
    {
        QFETCH(int, state);
        QFETCH(bool, isRunning);
        WatchdogState published;
        published.setState(state);
        WatchdogState read;
        QVERIFY(read.setClientState(stateOf(published.toStateBody())));
        QCOMPARE(read.state(), state);
        QCOMPARE(read.isRunning(), isRunning);
    }

    void watchdogsWithoutAUsableState_data()
    {
        QTest::addColumn<QVariantMap>("body");
        addHostileNumbers(QStringLiteral("state"));
    }

    void watchdogsWithoutAUsableState()
    {
        QFETCH(QVariantMap, body);
        WatchdogState state;
        state.setState(WatchdogState::RUNNING);
        QVERIFY(!state.setClientState(stateOf(body)));
        QCOMPARE(state.state(), 0);
    }

    void wholeNumbersOfEveryWidthAreOne_data()
    {
        QTest::addColumn<QVariant>("number");
        QTest::newRow("int") << QVariant(7);
        QTest::newRow("unsigned") << QVariant(7U);
        QTest::newRow("long") << QVariant(7LL);
        QTest::newRow("unsigned long") << QVariant(7ULL);
    }

    void wholeNumbersOfEveryWidthAreOne()
    {
        QFETCH(QVariant, number);
        WatchdogState state;
        QVERIFY(state.setClientState(stateOf({{QStringLiteral("state"), number}})));
        QCOMPARE(state.state(), 7);
    }

    void printersStopped_data()
    {
        QTest::addColumn<int>("serviceState");
        QTest::addColumn<bool>("isStopped");
        QTest::newRow("0") << 0 << false;
        QTest::newRow("4") << 4 << false;
        QTest::newRow("stopped") << 5 << true;
        QTest::newRow("disabled") << 6 << true;
        QTest::newRow("7") << 7 << false;
    }

    void printersStopped()
    {
        QFETCH(int, serviceState);
        QFETCH(bool, isStopped);
        PrintServiceStateTavbusWrapper published;
        published.setState(PrintServiceState(serviceState));
        PrintServiceStateTavbusWrapper read;
        QVERIFY(read.setClientState(stateOf(published.toStateBody())));
        QCOMPARE(read.state().serviceState(), serviceState);
        QCOMPARE(read.state().isStopped(), isStopped);
    }

    void printersWithoutAUsableState_data()
    {
        QTest::addColumn<QVariantMap>("body");
        addHostileNumbers(QStringLiteral("serviceState"));
    }

    void printersWithoutAUsableState()
    {
        QFETCH(QVariantMap, body);
        PrintServiceStateTavbusWrapper wrapper;
        wrapper.setState(PrintServiceState(PrintServiceState::STOPPED));
        QVERIFY(!wrapper.setClientState(stateOf(body)));
        QCOMPARE(wrapper.state().serviceState(), 0);
    }

    void acceptorsAllDisabled_data()
    {
        QTest::addColumn<QVariantList>("list");
        QTest::addColumn<bool>("allDisabled");
        QTest::newRow("none there") << QVariantList() << true;
        QTest::newRow("one at work") << QVariantList{acceptor(1, false)} << false;
        QTest::newRow("one disabled") << QVariantList{acceptor(1, true)} << true;
        QTest::newRow("one of two disabled")
            << QVariantList{acceptor(1, true), acceptor(2, false)} << false;
        QTest::newRow("both disabled")
            << QVariantList{acceptor(1, true), acceptor(2, true)} << true;
    }

    void acceptorsAllDisabled()
    {
        QFETCH(QVariantList, list);
        QFETCH(bool, allDisabled);
        AcceptorState state;
        QVERIFY(state.loadFromClientState(stateOf(acceptors(list))));
        QCOMPARE(state.acceptors().size(), list.size());
        QCOMPARE(state.allDisabled(), allDisabled);
        QCOMPARE(state.toStateBody(), acceptors(list));
    }

    void acceptorsWithoutAUsableState_data()
    {
        QTest::addColumn<QVariantMap>("body");
        QTest::newRow("empty body") << QVariantMap();
        QTest::newRow("no list") << acceptors(1);
        QTest::newRow("texts") << acceptors(QStringList{QStringLiteral("a")});
        QTest::newRow("a map") << acceptors(acceptor(1, false));
        QTest::newRow("numbers in the list") << acceptors(QVariantList{1, 2});
        QTest::newRow("no thread")
            << acceptors(QVariantList{QVariantMap{{QStringLiteral("disabled"), false}}});
        QTest::newRow("no verdict")
            << acceptors(QVariantList{QVariantMap{{QStringLiteral("thread_id"), 1}}});
        QTest::newRow("verdict a number") << acceptors(QVariantList{acceptor(1, 0)});
        QTest::newRow("thread a text")
            << acceptors(QVariantList{acceptor(QStringLiteral("1"), false)});
        QTest::newRow("the second one broken")
            << acceptors(QVariantList{acceptor(1, false), QVariant()});
    }

    void acceptorsWithoutAUsableState()
    {
        QFETCH(QVariantMap, body);
        AcceptorState state;
        state.setAcceptors({{1, false}});
        QVERIFY(!state.loadFromClientState(stateOf(body)));
        QVERIFY(state.acceptors().isEmpty());
        QVERIFY(state.allDisabled());
    }
};

QTEST_APPLESS_MAIN(TestServiceStates)
#include "tst_servicestates.moc"
