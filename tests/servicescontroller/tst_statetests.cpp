#include "fakeservice.h"
#include "guilog.h"
#include "privatebus.h"
#include "quickcontroller.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using namespace tavbus;

namespace {

using Flag = ServicesController::EService;
using Test = bool (ServicesController::*)();

struct Tests
{
    Flag flag;
    Test isStopped;
    Test isStarted;
};

Tests testsOf(const QString &agent)
{
    using C = ServicesController;
    if (agent == BUSNAME_TAVMODEMS)
        return {C::Modems, &C::modemsServiceIsStopped, &C::modemsServiceIsStarted};
    if (agent == BUSNAME_WATCHDOGS)
        return {C::Watchdogs, &C::watchdogsServiceIsStopped, &C::watchdogsServiceIsStarted};
    if (agent == BUSNAME_PRINTSERVICE)
        return {C::Printers, &C::printersServiceIsStopped, &C::printersServiceIsStarted};
    return {C::Acceptors, &C::acceptorsServiceIsStopped, &C::acceptorsServiceIsStarted};
}

} // namespace

/// What counts as stopped and what as started.
class TestStateTests : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_bus = std::make_unique<PrivateBus>(); }

    void init()
    {
        m_controller = std::make_unique<QuickController>();
        m_controller->period = 24 * 3600 * 1000; // the stops below are only there to be remembered
        QVERIFY(m_controller->handler()->open());
    }

    void cleanup() { m_controller.reset(); }

    void cleanupTestCase() { m_bus.reset(); }

    void stoppedAndStarted_data()
    {
        QTest::addColumn<QString>("agent");
        QTest::addColumn<QVariantMap>("body");
        QTest::addColumn<int>("age");
        QTest::addColumn<bool>("isStopped");
        QTest::addColumn<bool>("isStarted");

        const QStringList modes = {QStringLiteral("unknown"), QStringLiteral("starting"),
            QStringLiteral("ready"), QStringLiteral("dialling"), QStringLiteral("connected"),
            QStringLiteral("stopping")};
        for (int mode = 0; mode < modes.size(); ++mode) {
            QTest::addRow("modems %s", qPrintable(modes[mode]))
                << BUSNAME_TAVMODEMS << modemsBody(mode) << 0 << false << true;
        }
        QTest::newRow("modems stopped") << BUSNAME_TAVMODEMS << modemsBody(6) << 0 << true << false;
        QTest::newRow("modems stopped, stamped in the future")
            << BUSNAME_TAVMODEMS << modemsBody(6) << -3600 << true << false;
        QTest::newRow("modems ready, stamped in the future")
            << BUSNAME_TAVMODEMS << modemsBody(2) << -3600 << false << true;
        QTest::newRow("modems ready, 60 s ago")
            << BUSNAME_TAVMODEMS << modemsBody(2) << 60 << false << true;
        QTest::newRow("modems ready, 61 s ago")
            << BUSNAME_TAVMODEMS << modemsBody(2) << 61 << true << true;
        QTest::newRow("modems stopped, 61 s ago")
            << BUSNAME_TAVMODEMS << modemsBody(6) << 61 << true << true;
        // Nothing says that the ports are free.
        QTest::newRow("modems, nonsense")
            << BUSNAME_TAVMODEMS
            << QVariantMap{{QStringLiteral("serviceMode"), QStringLiteral("six")}} << 0 << false
            << true;

        QTest::newRow("watchdogs run")
            << BUSNAME_WATCHDOGS << watchdogsBody(2) << 0 << false << true;
        QTest::newRow("watchdogs run, more bits")
            << BUSNAME_WATCHDOGS << watchdogsBody(7) << 0 << false << true;
        QTest::newRow("watchdogs stopped")
            << BUSNAME_WATCHDOGS << watchdogsBody(0) << 0 << true << false;
        QTest::newRow("watchdogs stopped, other bits")
            << BUSNAME_WATCHDOGS << watchdogsBody(5) << 0 << true << false;
        QTest::newRow("watchdogs run, 61 s ago")
            << BUSNAME_WATCHDOGS << watchdogsBody(2) << 61 << true << true;
        QTest::newRow("watchdogs stopped, 61 s ago")
            << BUSNAME_WATCHDOGS << watchdogsBody(0) << 61 << true << true;
        QTest::newRow("watchdogs, nonsense")
            << BUSNAME_WATCHDOGS << QVariantMap{{QStringLiteral("state"), 2.0}} << 0 << true
            << true;

        QTest::newRow("printers at work")
            << BUSNAME_PRINTSERVICE << printersBody(1) << 0 << false << true;
        QTest::newRow("printers stopped")
            << BUSNAME_PRINTSERVICE << printersBody(5) << 0 << true << false;
        QTest::newRow("printers disabled")
            << BUSNAME_PRINTSERVICE << printersBody(6) << 0 << true << false;
        QTest::newRow("printers at work, a moment ago")
            << BUSNAME_PRINTSERVICE << printersBody(1) << 50 << false << true;
        QTest::newRow("printers at work, 60 s ago")
            << BUSNAME_PRINTSERVICE << printersBody(1) << 60 << false << false;
        QTest::newRow("printers at work, 61 s ago")
            << BUSNAME_PRINTSERVICE << printersBody(1) << 61 << true << false;
        QTest::newRow("printers, nonsense")
            << BUSNAME_PRINTSERVICE << QVariantMap() << 0 << true << false;

        QTest::newRow("acceptors at work")
            << BUSNAME_ACCEPTORS << acceptorsBody({false}) << 0 << false << true;
        QTest::newRow("one acceptor at work")
            << BUSNAME_ACCEPTORS << acceptorsBody({true, false}) << 0 << false << true;
        QTest::newRow("acceptors disabled")
            << BUSNAME_ACCEPTORS << acceptorsBody({true, true}) << 0 << true << false;
        QTest::newRow("no acceptors")
            << BUSNAME_ACCEPTORS << acceptorsBody({}) << 0 << true << false;
        QTest::newRow("acceptors disabled, a moment ago")
            << BUSNAME_ACCEPTORS << acceptorsBody({true}) << 50 << true << false;
        QTest::newRow("acceptors disabled, 60 s ago")
            << BUSNAME_ACCEPTORS << acceptorsBody({true}) << 60 << true << true;
        QTest::newRow("acceptors at work, 61 s ago")
            << BUSNAME_ACCEPTORS << acceptorsBody({false}) << 61 << true << true;
        QTest::newRow("acceptors, nonsense")
            << BUSNAME_ACCEPTORS << QVariantMap{{QStringLiteral("acceptors"), QVariantList{1}}} << 0
            << true << true;
    }

    void stoppedAndStarted()
    {
        QFETCH(QString, agent);
        QFETCH(QVariantMap, body);
        QFETCH(int, age);
        QFETCH(bool, isStopped);
        QFETCH(bool, isStarted);
        const Tests tests = testsOf(agent);
        FakeService service(agent);
        m_controller->stopServices(tests.flag);

        const auto tested = [&](Test test) {
            bool result = false;
            QElapsedTimer clock;
            do { // again when the machine was so busy that the state grew a second older
                clock.start();
                service.publish(body, age);
                result = (m_controller.get()->*test)();
            } while (clock.elapsed() > 900);
            return result;
        };
        QCOMPARE(tested(tests.isStopped), isStopped);
        QCOMPARE(tested(tests.isStarted), isStarted);
    }

    void withoutAnyState_data()
    {
        QTest::addColumn<QString>("agent");
        QTest::addColumn<bool>("isStarted");
        QTest::newRow("modems") << BUSNAME_TAVMODEMS << true;
        QTest::newRow("watchdogs") << BUSNAME_WATCHDOGS << true;
        QTest::newRow("printers") << BUSNAME_PRINTSERVICE << false;
        QTest::newRow("acceptors") << BUSNAME_ACCEPTORS << true;
    }

    void withoutAnyState()
    {
        QFETCH(QString, agent);
        QFETCH(bool, isStarted);
        const Tests tests = testsOf(agent);
        QVERIFY(m_controller->removeSettings(agent, true));
        m_controller->stopServices(tests.flag);
        QVERIFY((m_controller.get()->*tests.isStopped)());
        QCOMPARE((m_controller.get()->*tests.isStarted)(), isStarted);
    }

    void aServiceThatTheLastStopDidNotConcernIsStopped_data()
    {
        QTest::addColumn<QString>("agent");
        QTest::addColumn<QVariantMap>("running");
        QTest::newRow("modems") << BUSNAME_TAVMODEMS << modemsBody(2);
        QTest::newRow("watchdogs") << BUSNAME_WATCHDOGS << watchdogsBody(2);
        QTest::newRow("printers") << BUSNAME_PRINTSERVICE << printersBody(1);
        QTest::newRow("acceptors") << BUSNAME_ACCEPTORS << acceptorsBody({false});
    }

    void aServiceThatTheLastStopDidNotConcernIsStopped()
    {
        QFETCH(QString, agent);
        QFETCH(QVariantMap, running);
        const Tests tests = testsOf(agent);
        FakeService service(agent);
        service.publish(running);
        const auto isStopped = [&] { return (m_controller.get()->*tests.isStopped)(); };
        QVERIFY(isStopped()); // no stop yet
        m_controller->stopServices();
        QVERIFY(!isStopped());
        m_controller->stopServices(ServicesController::Services(31) & ~int(tests.flag));
        QVERIFY(isStopped());
    }

    void aModemServiceWithAConnectionIsWarnedOf_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("warnings");
        QTest::newRow("ready") << 2 << 0;
        QTest::newRow("dialling") << 3 << 1;
        QTest::newRow("connected") << 4 << 1;
        QTest::newRow("stopping") << 5 << 0;
    }

    void aModemServiceWithAConnectionIsWarnedOf()
    {
        QFETCH(int, mode);
        QFETCH(int, warnings);
        FakeService modems(BUSNAME_TAVMODEMS);
        modems.publish(modemsBody(mode));
        m_controller->stopServices(Flag::Modems);
        const GuiLog log;
        QVERIFY(!m_controller->modemsServiceIsStopped());
        QCOMPARE(log.warnings().size(), warnings);
    }

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<QuickController> m_controller;
};

QTEST_GUILESS_MAIN(TestStateTests)
#include "tst_statetests.moc"
