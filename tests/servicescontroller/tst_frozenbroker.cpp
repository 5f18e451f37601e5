#include "busnames.h"
#include "fakeservice.h"
#include "privatebus.h"
#include "servicescontroller.h"
#include "tavbusqueryhandler.h"

#include <QElapsedTimer>
#include <QtTest>

#include <memory>

using namespace tavbus;
using namespace std::chrono_literals;

namespace {

constexpr qint64 kOneLimit = 6'000; // ms: the 5 s of one call, and what a busy machine takes

} // namespace

/// A broker that stands still after the connection was opened, with the limit that ships: the
/// window is held up for one call's time, not for that of all the calls of a slot.
class TestFrozenBroker : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        m_terminal = std::make_unique<FakeTerminal>();
        m_terminal->publishRunning();
        m_controller = std::make_unique<ServicesController>(BUSNAME_TESTDEALER);
        auto *const handler = m_controller->findChild<TavBusQueryHandler *>();
        QVERIFY(handler->open());
        QCOMPARE(handler->timeLimit(), 5s);
    }

    void cleanup()
    {
        m_bus->thawBroker();
        m_controller.reset();
        m_terminal.reset();
        m_bus.reset();
    }

    void stoppingBlocksForOneLimitATurn()
    {
        const QSignalSpy stopped(m_controller.get(), &ServicesController::stopped);
        m_bus->freezeBroker();
        expectOneLimit([this] { m_controller->stopServices(); });
        QCOMPARE(stopped.count(), 0);
        // The first look, a second later, blocks once more and finds no state that says otherwise.
        QElapsedTimer clock;
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(stopped.count(), 1, 20'000);
        QVERIFY2(clock.elapsed() < 1'000 + kOneLimit, qPrintable(QString::number(clock.elapsed())));
    }

    void startingBlocksForOneLimitATurn()
    {
        const QSignalSpy started(m_controller.get(), &ServicesController::started);
        m_bus->freezeBroker();
        expectOneLimit([this] { m_controller->startServices(); });
        QCOMPARE(started.count(), 0); // the printers have no state that says that they run
        m_bus->thawBroker();
        QTRY_COMPARE_WITH_TIMEOUT(started.count(), 1, 20'000);
    }

    void stoppingTheModemServiceBlocksForOneLimit()
    {
        const QSignalSpy stopped(m_controller.get(), &ServicesController::modemsServiceStopped);
        m_bus->freezeBroker();
        expectOneLimit([this] { m_controller->stopModemsService(); });
        QCOMPARE(stopped.count(), 1);
    }

    void startingTheModemServiceBlocksForOneLimit()
    {
        const QSignalSpy started(m_controller.get(), &ServicesController::modemsServiceStarted);
        m_bus->freezeBroker();
        expectOneLimit([this] { m_controller->startModemsService(); });
        QCOMPARE(started.count(), 1);
    }

private:
    template <typename Slot>
    static void expectOneLimit(Slot slot)
    {
        QElapsedTimer clock;
        clock.start();
        slot();
        QVERIFY2(clock.elapsed() > 4'000, qPrintable(QString::number(clock.elapsed())));
        QVERIFY2(clock.elapsed() < kOneLimit, qPrintable(QString::number(clock.elapsed())));
    }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeTerminal> m_terminal;
    std::unique_ptr<ServicesController> m_controller;
};

QTEST_GUILESS_MAIN(TestFrozenBroker)
#include "tst_frozenbroker.moc"
