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

PrivateBus::Options brokerless()
{
    PrivateBus::Options options;
    options.withBroker = false;
    return options;
}

} // namespace

/// What a technician's tool meets at three in the morning: every sequence comes to its end.
class TestServiceFaults : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_log = std::make_unique<GuiLog>(); }
    void cleanup() { m_log.reset(); }

    void withNoBrokerEverySequenceEndsAtOnce_data()
    {
        QTest::addColumn<bool>("withBus");
        QTest::newRow("a bus without the broker") << true;
        QTest::newRow("no bus at all") << false;
    }

    void withNoBrokerEverySequenceEndsAtOnce()
    {
        QFETCH(bool, withBus);
        PrivateBus bus(brokerless());
        if (!withBus)
            bus.stop();
        QuickController controller;
        expectEndsAtOnce(controller);
        QCOMPARE(m_log->lines(),
            QStringList({QStringLiteral("debug Stop services"),
                QStringLiteral("other No touch/stopCommand is configured: the touch screen is left "
                               "as it is"),
                QStringLiteral("debug Services are stopped"),
                QStringLiteral("debug Start services")}));
    }

    void aServiceThatMayStayStoppedIsInTheLog()
    {
        PrivateBus bus;
        const FakeTerminal terminal;
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::modemsServiceStopped);
        controller.stopModemsService();
        QVERIFY(stopped.wait());
        bus.stop();
        controller.startModemsService();
        QCOMPARE(m_log->warnings(),
            QStringList{QStringLiteral(
                "warning The modem service may stay stopped: its state is not known")});
    }

    void whatWasStoppedIsGivenBack()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy started(&controller, &ServicesController::started);
        controller.stopServices();
        QVERIFY(stopped.wait());
        controller.giveServicesBack();
        QTRY_COMPARE(terminal.modems.commands().last(), QStringLiteral("restart"));
        QTRY_COMPARE(terminal.watchdogs.commands().last(), QStringLiteral("restart"));
        QTRY_COMPARE(terminal.printers.commands().last(), QStringLiteral("restart"));
        QTRY_COMPARE(terminal.acceptors.commands().last(), QStringLiteral("enable"));
        QTRY_COMPARE(terminal.gui.commands(), QStringList(QStringLiteral("runTouch")));
        QCOMPARE(started.count(), 0);
    }

    void aServiceThatWasToldToStartIsNotToldAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        QuickController controller;
        QSignalSpy modemsStopped(&controller, &ServicesController::modemsServiceStopped);
        controller.stopModemsService();
        QVERIFY(modemsStopped.wait());
        controller.startModemsService();
        controller.giveServicesBack(); // before it can be seen running

        QuickController second;
        QSignalSpy stopped(&second, &ServicesController::stopped);
        QTRY_COMPARE(terminal.modems.commands(),
            QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        second.stopServices();
        QVERIFY(stopped.wait());
        second.startServices();
        second.giveServicesBack();
        QTRY_COMPARE(terminal.acceptors.commands().last(), QStringLiteral("enable"));
        QTRY_COMPARE(terminal.gui.commands(), QStringList(QStringLiteral("runTouch")));
        QCOMPARE(terminal.modems.commands().count(QStringLiteral("restart")), 2);
        for (const FakeService *service : {&terminal.watchdogs, &terminal.printers})
            QCOMPARE(service->commands().count(QStringLiteral("restart")), 1);
        QCOMPARE(terminal.acceptors.commands().count(QStringLiteral("enable")), 1);
    }

    void aServiceThatDidNotComeUpInTimeIsToldAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        QuickController controller;
        controller.wait = 300;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy started(&controller, &ServicesController::started);
        controller.stopServices();
        QVERIFY(stopped.wait());
        terminal.makeDeaf();
        controller.startServices();
        QVERIFY(started.wait());
        controller.giveServicesBack();
        for (FakeService *service : {&terminal.modems, &terminal.watchdogs, &terminal.printers})
            QTRY_COMPARE(service->commands().count(QStringLiteral("restart")), 2);
        QTRY_COMPARE(terminal.acceptors.commands().count(QStringLiteral("enable")), 2);

        QuickController second;
        second.wait = 300;
        QSignalSpy modemsStarted(&second, &ServicesController::modemsServiceStarted);
        second.stopModemsService();
        second.startModemsService();
        QVERIFY(modemsStarted.wait());
        second.giveServicesBack();
        QTRY_COMPARE(terminal.modems.commands().count(QStringLiteral("restart")), 4);
    }

    void servicesAreGivenBackInTheMiddleOfAStop()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.makeDeaf();
        terminal.publishRunning();
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::modemsServiceStopped);
        controller.stopModemsService();
        controller.giveServicesBack();
        terminal.publishStopped();
        QTRY_COMPARE(terminal.modems.commands(),
            QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY(!stopped.wait(10 * controller.period)); // nothing goes on
    }

    void aRunningServiceIsNotGivenBack()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        QuickController().giveServicesBack(); // nothing was stopped
        QuickController second;
        QSignalSpy secondStarted(&second, &ServicesController::modemsServiceStarted);
        connect(&second, &ServicesController::modemsServiceStopped, &second,
            &ServicesController::startModemsService);
        second.stopModemsService();
        QVERIFY(secondStarted.wait());
        second.giveServicesBack(); // it was seen running
        QCOMPARE(terminal.modems.commands(),
            QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
    }

    void withNoClientEverySequenceEndsAtOnce()
    {
        const PrivateBus bus;
        QuickController controller;
        delete controller.handler();
        expectEndsAtOnce(controller);
    }

    void aBrokerThatDiesBeforeTheFirstLookIsStartedAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.makeDeaf();
        terminal.publishRunning();
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        controller.stopServices();
        bus.killBroker();
        // What the services last said is kept: they still run.
        QTRY_VERIFY(m_log->contains(QStringLiteral("warning Modems are not stopped #")));
        QVERIFY(bus.brokerPid() > 0);
        QTRY_VERIFY(terminal.modems.agent().isOpen() && terminal.watchdogs.agent().isOpen()
            && terminal.printers.agent().isOpen() && terminal.acceptors.agent().isOpen());
        QCOMPARE(stopped.count(), 0);
        terminal.publishStopped();
        QTRY_COMPARE(stopped.count(), 1);
        QVERIFY(!m_log->contains(QStringLiteral("warning Services were stopped by timeout #")));
    }

    void aBusThatDiesBeforeTheFirstLookHoldsNothingUp()
    {
        PrivateBus bus;
        const FakeTerminal terminal;
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        controller.stopServices();
        bus.stop();
        QVERIFY(stopped.wait());
        QVERIFY(m_log->warnings().isEmpty());
    }

    void aBusThatDiesDuringAStartHoldsUpNothingButThePrinters()
    {
        // They alone count as not started without a state; that wait has its end, too.
        PrivateBus bus;
        FakeTerminal terminal;
        terminal.publishStopped();
        QuickController controller;
        controller.wait = 300;
        QSignalSpy started(&controller, &ServicesController::started);
        controller.startServices();
        bus.stop();
        QVERIFY(started.wait());
        QCOMPARE(m_log->warnings(),
            QStringList({QStringLiteral("warning Printers are not started #"),
                QStringLiteral("warning Services were started by timeout #")}));
    }

    void aBusThatRestartsInBetweenIsFoundAgain()
    {
        PrivateBus bus;
        FakeTerminal terminal;
        terminal.modems.forgetReactions();
        terminal.publishRunning();
        QuickController controller;
        controller.period = 200;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        controller.stopServices(Flag::Modems);
        bus.stop();
        bus.start();
        QTRY_VERIFY_WITH_TIMEOUT(terminal.modems.agent().isOpen(), 30'000);
        QCOMPARE(stopped.count(), 0); // its last state was kept: it still runs
        terminal.modems.publish(modemsBody(ModemServiceState::Stopped));
        QTRY_COMPARE(stopped.count(), 1);
    }

    void aServiceThatDiesInBetweenIsAwaitedNoLongerThanItsStateHolds()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.modems.forgetReactions();
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QVERIFY(controller.handler()->open());
        terminal.modems.publish(modemsBody(ModemServiceState::Ready), 59);
        controller.stopServices(Flag::Modems);
        terminal.modems.agent().close();
        QVERIFY(stopped.wait(10'000));
        QVERIFY(!m_log->contains(QStringLiteral("warning Services were stopped by timeout #")));
        QVERIFY(m_log->contains(QStringLiteral("warning Modems are not stopped #")));
    }

    void aStateFromTheFutureCountsAsNew()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.modems.forgetReactions();
        terminal.modems.publish(modemsBody(ModemServiceState::Ready), -3600);
        QuickController controller;
        controller.wait = 300;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        controller.stopServices(Flag::Modems);
        QVERIFY(stopped.wait());
        QVERIFY(m_log->contains(QStringLiteral("warning Services were stopped by timeout #")));
    }

private:
    static void expectEndsAtOnce(QuickController &controller)
    {
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy started(&controller, &ServicesController::started);
        QSignalSpy modemsStopped(&controller, &ServicesController::modemsServiceStopped);
        QSignalSpy modemsStarted(&controller, &ServicesController::modemsServiceStarted);
        controller.stopServices();
        QCOMPARE(stopped.count(), 1);
        controller.startServices();
        QCOMPARE(started.count(), 1);
        controller.stopModemsService();
        QCOMPARE(modemsStopped.count(), 1);
        controller.startModemsService();
        QCOMPARE(modemsStarted.count(), 1);
    }

    std::unique_ptr<GuiLog> m_log;
};

QTEST_GUILESS_MAIN(TestServiceFaults)
#include "tst_servicefaults.moc"
