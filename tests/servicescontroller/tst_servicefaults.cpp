#include "fakeservice.h"
#include "guilog.h"
#include "privatebus.h"
#include "quickcontroller.h"
#include "sentcommands.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using namespace tavbus;

namespace {

using Flag = ServicesController::EService;

const auto kStartModems = QStringLiteral("tavmodems restart");
const QStringList kStartAll = {QStringLiteral("terminalgui runTouch"), kStartModems,
    QStringLiteral("watchdogs restart"), QStringLiteral("printservice restart"),
    QStringLiteral("acceptors enable thread_id=int32 -1")};

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
        terminal.publishRunning();
        SentCommands sent(bus.address());
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        const QSignalSpy started(&controller, &ServicesController::started);
        controller.stopServices();
        QVERIFY(stopped.wait());
        sent.take();
        controller.giveServicesBack();
        QCOMPARE(sent.take(), kStartAll);
        QCOMPARE(started.count(), 0);
        controller.giveServicesBack(); // as a second signal may tell it to
        QCOMPARE(sent.take(), QStringList());
    }

    void aServiceThatWasToldToStartIsNotToldAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.publishRunning();
        SentCommands sent(bus.address());
        QuickController controller;
        QSignalSpy modemsStopped(&controller, &ServicesController::modemsServiceStopped);
        controller.stopModemsService();
        QVERIFY(modemsStopped.wait());
        controller.startModemsService();
        controller.giveServicesBack(); // before it can be seen running
        QCOMPARE(sent.take(), QStringList({QStringLiteral("tavmodems stop"), kStartModems}));

        QuickController second;
        QSignalSpy stopped(&second, &ServicesController::stopped);
        QTRY_VERIFY(second.modemsServiceIsStarted());
        second.stopServices();
        QVERIFY(stopped.wait());
        sent.take();
        second.startServices();
        second.giveServicesBack();
        QCOMPARE(sent.take(), kStartAll);
    }

    void aServiceThatDidNotComeUpInTimeIsToldAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.makeDeaf();
        terminal.publishStopped();
        SentCommands sent(bus.address());
        QuickController controller;
        controller.wait = 300;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy started(&controller, &ServicesController::started);
        controller.stopServices();
        QVERIFY(stopped.wait());
        controller.startServices();
        QVERIFY(started.wait());
        sent.take();
        controller.giveServicesBack();
        QCOMPARE(sent.take(), kStartAll.mid(1)); // the touch screen has no state to wait for

        QuickController second;
        second.wait = 300;
        QSignalSpy modemsStarted(&second, &ServicesController::modemsServiceStarted);
        second.stopModemsService();
        second.startModemsService();
        QVERIFY(modemsStarted.wait());
        sent.take();
        second.giveServicesBack();
        QCOMPARE(sent.take(), QStringList(kStartModems));
    }

    void aTouchScreenThatWasNotGivenBackIsTriedAgain()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.publishRunning();
        SentCommands sent(bus.address());
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy started(&controller, &ServicesController::started);
        terminal.gui.agent().close(); // starts anew, say
        QTRY_VERIFY(!controller.sendTavBusCommand(BUSNAME_TERMINAL_GUI, QStringLiteral("probe")));
        controller.stopServices();
        QVERIFY(stopped.wait());
        controller.startServices();
        QVERIFY(started.wait());
        QVERIFY(terminal.gui.agent().open());
        sent.take();
        controller.giveServicesBack();
        QCOMPARE(sent.take(), QStringList(kStartAll.first()));
    }

    void aLaterStopOfAnotherServiceForgetsNone()
    {
        const PrivateBus bus;
        FakeTerminal terminal;
        terminal.publishRunning();
        SentCommands sent(bus.address());
        QuickController controller;
        QSignalSpy stopped(&controller, &ServicesController::stopped);
        QSignalSpy modemsStopped(&controller, &ServicesController::modemsServiceStopped);
        QSignalSpy modemsStarted(&controller, &ServicesController::modemsServiceStarted);
        controller.stopServices(Flag::TouchScreen | Flag::Watchdogs);
        QVERIFY(stopped.wait());
        controller.stopServices(Flag::Acceptors);
        QVERIFY(stopped.wait());
        controller.stopModemsService();
        QVERIFY(modemsStopped.wait());
        controller.startModemsService();
        QVERIFY(modemsStarted.wait());
        sent.take();
        controller.giveServicesBack();
        QCOMPARE(sent.take(), QStringList({kStartAll[0], kStartAll[2], kStartAll[4]}));
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
        terminal.publishRunning();
        SentCommands sent(bus.address());
        QuickController().giveServicesBack(); // nothing was stopped
        QCOMPARE(sent.take(), QStringList());

        QuickController second;
        QSignalSpy modemsStarted(&second, &ServicesController::modemsServiceStarted);
        connect(&second, &ServicesController::modemsServiceStopped, &second,
            &ServicesController::startModemsService);
        second.stopModemsService();
        QVERIFY(modemsStarted.wait());
        sent.take();
        second.giveServicesBack(); // it was seen running
        QCOMPARE(sent.take(), QStringList());

        QuickController third;
        QSignalSpy started(&third, &ServicesController::started);
        connect(&third, &ServicesController::stopped, &third, &ServicesController::startServices);
        third.stopServices();
        QVERIFY(started.wait());
        sent.take();
        third.giveServicesBack();
        QCOMPARE(sent.take(), QStringList());
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
