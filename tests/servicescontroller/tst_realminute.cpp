#include "fakeservice.h"
#include "loggermanager.h"
#include "privatebus.h"
#include "quickcontroller.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QtTest>

using namespace tavbus;

namespace {

using Flag = ServicesController::EService;

/// When a signal came, measured from here.
class Arrival
{
public:
    template <typename Signal>
    Arrival(ServicesController &controller, Signal signal)
    {
        m_clock.start();
        QObject::connect(&controller, signal, &controller, [this] {
            ++count;
            elapsed = m_clock.elapsed();
        });
    }

    int count = 0;
    qint64 elapsed = -1; // ms

private:
    QElapsedTimer m_clock;
};

} // namespace

/// The timing that ships, once: a look each second, a minute in all. Everything waits side by side.
class TestRealMinute : public QObject
{
    Q_OBJECT

private slots:
    void theMinuteIsAMinute()
    {
        // Two terminals, whose services never do what they are told; a connection stays on the bus
        // on which it was opened.
        const PrivateBus runningBus;
        FakeService runningModems(BUSNAME_TAVMODEMS);
        runningModems.publish(modemsBody(ModemServiceState::Ready));
        ServicesController stopsAll(BUSNAME_TESTDEALER);
        ServicesController stopsModems(BUSNAME_TESTDEALER);
        ServicesController stopsTouch(BUSNAME_TESTDEALER);
        for (ServicesController *controller : {&stopsAll, &stopsModems, &stopsTouch})
            QVERIFY(controller->findChild<TavBusQueryHandler *>()->open());

        const PrivateBus stoppedBus;
        FakeService stoppedModems(BUSNAME_TAVMODEMS);
        FakeService gui(BUSNAME_TERMINAL_GUI);
        stoppedModems.publish(modemsBody(ModemServiceState::Stopped));
        ServicesController startsAll(BUSNAME_TESTDEALER);
        ServicesController startsModems(BUSNAME_TESTDEALER);
        for (ServicesController *controller : {&startsAll, &startsModems})
            QVERIFY(controller->findChild<TavBusQueryHandler *>()->open());

        // A service that lives publishes from time to time; otherwise its state would grow old.
        QTimer publishing;
        connect(&publishing, &QTimer::timeout, this, [&] {
            runningModems.publish(modemsBody(ModemServiceState::Ready));
            stoppedModems.publish(modemsBody(ModemServiceState::Stopped));
        });
        publishing.start(10'000);

        QStringList warnings;
        LoggerManager::setOutputs(QStringLiteral("guilogger"),
            [&](QtMsgType type, const QMessageLogContext &, const QString &text) {
                if (type == QtWarningMsg)
                    warnings << text;
            });

        const Arrival allStopped(stopsAll, &ServicesController::stopped);
        stopsAll.stopServices();
        const Arrival modemsStopped(stopsModems, &ServicesController::modemsServiceStopped);
        stopsModems.stopModemsService();
        const Arrival touchStopped(stopsTouch, &ServicesController::stopped);
        stopsTouch.stopServices(Flag::TouchScreen);
        const Arrival allStarted(startsAll, &ServicesController::started);
        startsAll.startServices();
        const Arrival modemsStarted(startsModems, &ServicesController::modemsServiceStarted);
        startsModems.startModemsService();

        QTRY_COMPARE_WITH_TIMEOUT(touchStopped.count, 1, 5'000);
        QVERIFY2(touchStopped.elapsed >= 1'000 && touchStopped.elapsed < 2'000,
            qPrintable(QString::number(touchStopped.elapsed)));

        const Arrival *const waits[] = {&allStopped, &modemsStopped, &allStarted, &modemsStarted};
        for (const Arrival *wait : waits)
            QTRY_COMPARE_WITH_TIMEOUT(wait->count, 1, 75'000);
        for (const Arrival *wait : waits) {
            QVERIFY2(wait->elapsed > 60'000 && wait->elapsed < 64'000,
                qPrintable(QString::number(wait->elapsed)));
        }
        QCOMPARE(touchStopped.count, 1);
        LoggerManager::removeOutput(QStringLiteral("guilogger"));

        // One look a second; a busy machine may cost a few.
        const int looks = warnings.filter(QStringLiteral("Modems are not stopped")).size();
        QVERIFY2(looks >= 50 && looks <= 60, qPrintable(QString::number(looks)));
        QCOMPARE(warnings.filter(QStringLiteral("Services were stopped by timeout")).size(), 1);
        QCOMPARE(warnings.filter(QStringLiteral("Services were started by timeout")).size(), 1);
        QCOMPARE(runningModems.commands(),
            QStringList({QStringLiteral("stop"), QStringLiteral("stop")}));
        QCOMPARE(stoppedModems.commands(),
            QStringList({QStringLiteral("restart"), QStringLiteral("restart")}));
        QCOMPARE(gui.commands(), QStringList(QStringLiteral("runTouch")));
    }
};

QTEST_GUILESS_MAIN(TestRealMinute)
#include "tst_realminute.moc"
