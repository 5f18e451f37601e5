#include "fakeservice.h"
#include "guilog.h"
#include "privatebus.h"
#include "quickcontroller.h"
#include "sentcommands.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace tavbus;

namespace {

using Flag = ServicesController::EService;

const auto kRunTouch = QStringLiteral("terminalgui runTouch");
const auto kStopModems = QStringLiteral("tavmodems stop");
const auto kStopWatchdogs = QStringLiteral("watchdogs stop");
const auto kStopPrinters = QStringLiteral("printservice stop");
const auto kStopAcceptors = QStringLiteral("acceptors disable thread_id=int32 -1");
const auto kStartModems = QStringLiteral("tavmodems restart");
const auto kStartWatchdogs = QStringLiteral("watchdogs restart");
const auto kStartPrinters = QStringLiteral("printservice restart");
const auto kStartAcceptors = QStringLiteral("acceptors enable thread_id=int32 -1");

} // namespace

/// Stopping and starting of services that obey, are late, or never come.
class TestServiceSequences : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        m_terminal = std::make_unique<FakeTerminal>();
        m_sent = std::make_unique<SentCommands>(m_bus->address());
        m_controller = std::make_unique<QuickController>();
        m_stopped = spy(&ServicesController::stopped);
        m_started = spy(&ServicesController::started);
        m_modemsStopped = spy(&ServicesController::modemsServiceStopped);
        m_modemsStarted = spy(&ServicesController::modemsServiceStarted);
        m_log = std::make_unique<GuiLog>();
    }

    void cleanup()
    {
        m_log.reset();
        m_modemsStarted.reset();
        m_modemsStopped.reset();
        m_started.reset();
        m_stopped.reset();
        m_controller.reset();
        m_sent.reset();
        m_terminal.reset();
        m_bus.reset();
    }

    // --- Stopping

    void stopsAllInOrderTheTouchScreenFirst()
    {
        // The command takes the touch screen by a message on the same bus, so that its place among
        // the others shows.
        const TouchCommand touch(QStringLiteral(
            "#!/bin/sh\n"
            "dbus-send --session --print-reply --dest=org.ovrel.TavBus /org/ovrel/TavBus "
            "org.ovrel.TavBus1.sendCommand string:touch string:taken >/dev/null 2>&1\n"
            "exit 0\n"));
        m_terminal->publishRunning();
        m_controller->stopServices();
        QCOMPARE(m_stopped->count(), 0);
        QVERIFY(m_stopped->wait());
        QCOMPARE(m_sent->take(),
            QStringList({QStringLiteral("touch taken"), kStopModems, kStopWatchdogs, kStopPrinters,
                kStopAcceptors}));
        QVERIFY(m_terminal->gui.commands().isEmpty());
        QCOMPARE(m_log->lines().first(), QStringLiteral("debug Stop services"));
        QCOMPARE(m_log->lines().last(), QStringLiteral("debug Services are stopped"));
        QCOMPARE(m_stopped->count(), 1);
        QCOMPARE(m_started->count(), 0);
        QVERIFY(m_controller->handler()->isOpen());
    }

    void stopsWhatIsAskedFor_data()
    {
        QTest::addColumn<int>("services");
        QTest::addColumn<QStringList>("commands");
        QTest::newRow("modems") << int(Flag::Modems) << QStringList(kStopModems);
        QTest::newRow("watchdogs") << int(Flag::Watchdogs) << QStringList(kStopWatchdogs);
        QTest::newRow("printers") << int(Flag::Printers) << QStringList(kStopPrinters);
        QTest::newRow("acceptors") << int(Flag::Acceptors) << QStringList(kStopAcceptors);
        QTest::newRow("modems and acceptors")
            << int(Flag::Modems | Flag::Acceptors) << QStringList({kStopModems, kStopAcceptors});
        QTest::newRow("watchdogs and printers") << int(Flag::Watchdogs | Flag::Printers)
                                                << QStringList({kStopWatchdogs, kStopPrinters});
        QTest::newRow("the touch screen alone") << int(Flag::TouchScreen) << QStringList();
    }

    void stopsWhatIsAskedFor()
    {
        QFETCH(int, services);
        QFETCH(QStringList, commands);
        m_terminal->publishRunning();
        m_controller->stopServices(ServicesController::Services(services));
        QCOMPARE(m_stopped->count(), 0);
        QVERIFY(m_stopped->wait());
        QCOMPARE(m_sent->take(), commands);
        QCOMPARE(m_stopped->count(), 1);
    }

    void theFlagsHaveTheirValues()
    {
        QCOMPARE(int(Flag::TouchScreen), 1);
        QCOMPARE(int(Flag::Modems), 2);
        QCOMPARE(int(Flag::Watchdogs), 4);
        QCOMPARE(int(Flag::Printers), 8);
        QCOMPARE(int(Flag::Acceptors), 16);
    }

    void noServiceIsStoppedAtOnce()
    {
        m_terminal->publishRunning();
        m_controller->stopServices({});
        QCOMPARE(m_stopped->count(), 1);
        QVERIFY(m_sent->take().isEmpty());
        QCOMPARE(m_log->lines(),
            QStringList({QStringLiteral("debug Stop services"),
                QStringLiteral("debug Services are stopped")}));
    }

    void servicesWithoutAStateAreStoppedAtTheFirstLook()
    {
        m_controller->stopServices();
        QVERIFY(m_stopped->wait());
        QCOMPARE(m_sent->take(),
            QStringList({kStopModems, kStopWatchdogs, kStopPrinters, kStopAcceptors}));
        QVERIFY(m_log->warnings().isEmpty());
    }

    void aServiceThatIsNotThereDoesNotEndTheSequence()
    {
        m_terminal->publishRunning();
        m_terminal->modems.publish(modemsBody(ModemServiceState::Stopped));
        sendModemServiceAway();
        m_controller->stopServices();
        QVERIFY(m_stopped->wait());
        QCOMPARE(m_sent->take(),
            QStringList({kStopModems, kStopWatchdogs, kStopPrinters, kStopAcceptors}));
    }

    void theFirstThatIsLateIsNamedEachTime()
    {
        m_terminal->makeDeaf();
        m_terminal->publishRunning();
        m_controller->stopServices();
        const auto isNamed = [&](const char *text) {
            return m_log->contains(QStringLiteral("warning ") + QLatin1String(text)
                + QStringLiteral(" are not stopped #"));
        };
        QTRY_VERIFY(isNamed("Modems"));
        m_terminal->modems.publish(modemsBody(ModemServiceState::Stopped));
        QTRY_VERIFY(isNamed("Watchdogs"));
        m_terminal->watchdogs.publish(watchdogsBody(1));
        QTRY_VERIFY(isNamed("Printers"));
        m_terminal->printers.publish(printersBody(PrintServiceState::DISABLED));
        QTRY_VERIFY(isNamed("Acceptors"));
        QCOMPARE(m_stopped->count(), 0);
        m_terminal->acceptors.publish(acceptorsBody({true, true}));
        QTRY_COMPARE(m_stopped->count(), 1);
        QCOMPARE(m_log->warnings().size(), 4); // in this order, each over once the next came
        QCOMPARE(m_log->lines().last(), QStringLiteral("debug Services are stopped"));
    }

    void aServiceThatNeverStopsIsLeftAfterTheWait()
    {
        m_terminal->makeDeaf();
        m_controller->wait = 300;
        m_terminal->publishRunning();
        QElapsedTimer clock;
        clock.start();
        m_controller->stopServices();
        QVERIFY(m_stopped->wait());
        QVERIFY(clock.elapsed() > 300);
        QCOMPARE(m_log->warnings(),
            QStringList({QStringLiteral("warning Modems are not stopped #"),
                QStringLiteral("warning Services were stopped by timeout #")}));
        QVERIFY(!m_log->contains(QStringLiteral("debug Services are stopped")));
    }

    // --- Starting

    void startsAllTheTouchScreenFirst()
    {
        m_terminal->publishStopped();
        m_controller->startServices();
        QCOMPARE(m_started->count(), 0);
        QVERIFY(m_started->wait());
        QCOMPARE(m_sent->take(),
            QStringList(
                {kRunTouch, kStartModems, kStartWatchdogs, kStartPrinters, kStartAcceptors}));
        QCOMPARE(m_log->lines().mid(0, 5),
            QStringList(
                {QStringLiteral("debug Start services"), QStringLiteral("debug Modems are stopped"),
                    QStringLiteral("debug Watchdogs are stopped"),
                    QStringLiteral("debug Printers are stopped"),
                    QStringLiteral("debug Acceptors are stopped")}));
        QCOMPARE(m_log->lines().last(), QStringLiteral("debug Services are started"));
        QCOMPARE(m_started->count(), 1);
        QCOMPARE(m_stopped->count(), 0);
        QVERIFY(m_controller->handler()->isOpen());
    }

    void startsWhatIsStopped_data()
    {
        QTest::addColumn<int>("service");
        QTest::addColumn<QString>("command");
        QTest::newRow("modems") << int(Flag::Modems) << kStartModems;
        QTest::newRow("watchdogs") << int(Flag::Watchdogs) << kStartWatchdogs;
        QTest::newRow("printers") << int(Flag::Printers) << kStartPrinters;
        QTest::newRow("acceptors") << int(Flag::Acceptors) << kStartAcceptors;
    }

    void startsWhatIsStopped()
    {
        QFETCH(int, service);
        QFETCH(QString, command);
        m_terminal->publishRunning();
        switch (service) {
        case Flag::Modems:
            m_terminal->modems.publish(modemsBody(ModemServiceState::Stopped));
            break;
        case Flag::Watchdogs:
            m_terminal->watchdogs.publish(watchdogsBody(0));
            break;
        case Flag::Printers:
            m_terminal->printers.publish(printersBody(PrintServiceState::DISABLED));
            break;
        default:
            m_terminal->acceptors.publish(acceptorsBody({true}));
        }
        m_controller->startServices();
        QVERIFY(m_started->wait());
        QCOMPARE(m_sent->take(), QStringList({kRunTouch, command}));
    }

    void whatRunsIsNotStarted()
    {
        m_terminal->publishRunning();
        m_controller->startServices();
        QCOMPARE(m_started->count(), 1);
        QCOMPARE(m_sent->take(), QStringList(kRunTouch));
        QCOMPARE(m_log->lines(),
            QStringList({QStringLiteral("debug Start services"),
                QStringLiteral("debug Services are started")}));
        QVERIFY(!m_controller->handler()->isOpen());
    }

    void theBusIsClosedOnlyAfterTheSignal()
    {
        m_terminal->publishRunning();
        bool wasOpen = false;
        connect(m_controller.get(), &ServicesController::started, this,
            [&] { wasOpen = m_controller->handler()->isOpen(); });
        m_controller->startServices();
        QVERIFY(wasOpen);
        QVERIFY(!m_controller->handler()->isOpen());
    }

    void theStartConcernsAllWhateverWasStopped()
    {
        m_terminal->publishStopped();
        m_controller->stopServices(Flag::TouchScreen);
        QVERIFY(m_stopped->wait());
        m_controller->startServices();
        QVERIFY(m_started->wait());
        QCOMPARE(m_sent->take(),
            QStringList(
                {kRunTouch, kStartModems, kStartWatchdogs, kStartPrinters, kStartAcceptors}));
    }

    void ofServicesWithoutAStateThePrintersAreStarted()
    {
        m_controller->startServices();
        QVERIFY(m_started->wait());
        QCOMPARE(m_sent->take(), QStringList({kRunTouch, kStartPrinters}));
    }

    void theFirstThatIsNotUpIsNamedEachTime()
    {
        m_terminal->makeDeaf();
        m_terminal->publishStopped();
        m_controller->startServices();
        const auto isNamed = [&](const char *text) {
            return m_log->contains(QStringLiteral("warning ") + QLatin1String(text)
                + QStringLiteral(" are not started #"));
        };
        QTRY_VERIFY(isNamed("Modems"));
        m_terminal->modems.publish(modemsBody(ModemServiceState::Starting));
        QTRY_VERIFY(isNamed("Watchdogs"));
        m_terminal->watchdogs.publish(watchdogsBody(3));
        QTRY_VERIFY(isNamed("Printers"));
        m_terminal->printers.publish(printersBody(1));
        QTRY_VERIFY(isNamed("Acceptors"));
        QCOMPARE(m_started->count(), 0);
        m_terminal->acceptors.publish(acceptorsBody({true, false}));
        QTRY_COMPARE(m_started->count(), 1);
        QCOMPARE(m_log->warnings().size(), 4);
    }

    void aServiceThatNeverStartsIsLeftAfterTheWait()
    {
        m_terminal->makeDeaf();
        m_controller->wait = 300;
        m_terminal->publishStopped();
        m_controller->startServices();
        QVERIFY(m_started->wait());
        QCOMPARE(m_log->warnings(),
            QStringList({QStringLiteral("warning Modems are not started #"),
                QStringLiteral("warning Services were started by timeout #")}));
    }

    // --- The modem service alone

    void stopsTheModemServiceAlone()
    {
        m_terminal->publishRunning();
        m_controller->stopModemsService();
        QCOMPARE(m_modemsStopped->count(), 0);
        QVERIFY(m_modemsStopped->wait());
        QCOMPARE(m_sent->take(), QStringList(kStopModems));
        QVERIFY(m_controller->modemsServiceIsStopped());
        QCOMPARE(m_stopped->count(), 0);
        // It was the last stop, and did not concern the others.
        QVERIFY(m_controller->watchdogsServiceIsStopped());
        QVERIFY(m_controller->printersServiceIsStopped());
        QVERIFY(m_controller->acceptorsServiceIsStopped());
    }

    void theModemServiceIsAwaited()
    {
        m_terminal->makeDeaf();
        m_terminal->publishRunning();
        QSignalSpy heard(&m_terminal->modems.agent(), &TavBusAgent::commandReceived);
        m_controller->stopModemsService();
        QTRY_COMPARE(heard.count(), 1);
        m_terminal->modems.publish(modemsBody(ModemServiceState::Stopping));
        QCOMPARE(m_modemsStopped->count(), 0);
        m_terminal->modems.publish(modemsBody(ModemServiceState::Stopped));
        QTRY_COMPARE(m_modemsStopped->count(), 1);
    }

    void aModemServiceThatIsNotThereIsStoppedAtOnce()
    {
        m_terminal->publishRunning();
        sendModemServiceAway();
        m_controller->stopModemsService();
        QCOMPARE(m_modemsStopped->count(), 1);
        QCOMPARE(m_sent->take(), QStringList(kStopModems));
    }

    void aModemServiceThatNeverStopsIsLeftWithoutAWord()
    {
        m_terminal->makeDeaf();
        m_controller->wait = 300;
        m_terminal->publishRunning();
        QElapsedTimer clock;
        clock.start();
        m_controller->stopModemsService();
        QVERIFY(m_modemsStopped->wait());
        QVERIFY(clock.elapsed() > 300);
        QVERIFY(m_log->lines().isEmpty());
    }

    void startsTheModemServiceAlone()
    {
        m_terminal->publishStopped();
        m_controller->startModemsService();
        QCOMPARE(m_modemsStarted->count(), 0);
        QVERIFY(m_modemsStarted->wait());
        QCOMPARE(m_sent->take(), QStringList(kStartModems));
        QCOMPARE(m_started->count(), 0);
        QVERIFY(m_controller->handler()->isOpen());
    }

    void aModemServiceThatRunsIsStartedAtOnce()
    {
        m_terminal->publishRunning();
        m_controller->startModemsService();
        QCOMPARE(m_modemsStarted->count(), 1);
        QVERIFY(m_sent->take().isEmpty());
        QVERIFY(m_controller->handler()->isOpen());
    }

    void aModemServiceWithoutAStateIsStartedAtOnce()
    {
        m_controller->startModemsService();
        QCOMPARE(m_modemsStarted->count(), 1);
        QVERIFY(m_sent->take().isEmpty());
    }

    void aRestartThatReachesNobodyEndsTheWorkAndTheConnection()
    {
        m_terminal->publishStopped();
        sendModemServiceAway();
        m_controller->startModemsService();
        QCOMPARE(m_modemsStarted->count(), 1);
        QCOMPARE(m_sent->take(), QStringList(kStartModems));
        QVERIFY(!m_controller->handler()->isOpen());
    }

    void aModemServiceThatNeverStartsIsLeftWithoutAWord()
    {
        m_terminal->makeDeaf();
        m_controller->wait = 300;
        m_terminal->publishStopped();
        m_controller->startModemsService();
        QVERIFY(m_modemsStarted->wait());
        QVERIFY(m_log->lines().isEmpty());
    }

    // --- Lives that cross

    void eachLookIsLoggedOnceWithTheTimeThatHasPassed_data()
    {
        QTest::addColumn<bool>("stop");
        QTest::newRow("stop") << true;
        QTest::newRow("start") << false;
    }

    void eachLookIsLoggedOnceWithTheTimeThatHasPassed()
    {
        QFETCH(bool, stop);
        m_terminal->makeDeaf();
        stop ? m_terminal->publishRunning() : m_terminal->publishStopped(); // all four are late
        m_controller->period = 50;
        m_controller->wait = 400;
        QSignalSpy &ended = stop ? *m_stopped : *m_started;
        m_log.reset();
        const GuiLog log; // takes the time from here on
        QElapsedTimer clock;
        clock.start();
        stop ? m_controller->stopServices() : m_controller->startServices();
        const qint64 sending = clock.elapsed(); // the controller's clock starts at its end
        QVERIFY(ended.wait());

        const QVector<QPair<QString, qint64>> warnings = timed(log);
        QCOMPARE(warnings.size(), m_controller->looks); // the last one is the time-out's
        QVERIFY(warnings.size() >= 3);
        const QString late = stop ? QStringLiteral("Modems are not stopped")
                                  : QStringLiteral("Modems are not started");
        for (int i = 0; i + 1 < warnings.size(); ++i)
            QCOMPARE(warnings[i].first, late);
        QCOMPARE(warnings.last().first,
            stop ? QStringLiteral("Services were stopped by timeout")
                 : QStringLiteral("Services were started by timeout"));
        QVERIFY(warnings.last().second > 400);
        for (int i = 1; i < warnings.size(); ++i)
            QVERIFY(warnings[i].second >= warnings[i - 1].second + 45); // Qt's timers may be early
        QVERIFY(warnings.first().second >= 45);
        // It is the time since the commands went out, give or take what a busy machine takes.
        const qint64 since = log.messages().last().at - warnings.last().second;
        QVERIFY2(since >= 0 && since <= sending + 500, qPrintable(QString::number(since)));
    }

    void overlappingSequencesShareOneClock()
    {
        m_terminal->makeDeaf();
        m_terminal->publishRunning();
        m_controller->wait = 1000;
        m_controller->stopServices(Flag::Printers);
        QTRY_VERIFY(!timed(*m_log).isEmpty() && timed(*m_log).last().second >= 100);
        QCOMPARE(m_stopped->count(), 0);
        QElapsedTimer sinceTheSecond;
        qint64 firstEnd = -1;
        connect(m_controller.get(), &ServicesController::stopped, this, [&] {
            if (firstEnd < 0)
                firstEnd = sinceTheSecond.elapsed();
        });
        sinceTheSecond.start();
        m_controller->stopServices(Flag::Printers);
        // The first sequence's time starts anew as well.
        QTRY_COMPARE(m_stopped->count(), 2);
        QVERIFY2(firstEnd > 1000, qPrintable(QString::number(firstEnd)));
    }

    void overlappingSequencesBothEnd()
    {
        m_terminal->publishRunning();
        m_controller->stopServices(Flag::Printers);
        m_controller->stopModemsService();
        QTRY_COMPARE(m_modemsStopped->count(), 1);
        QTRY_COMPARE(m_stopped->count(), 1);
    }

    void aListenerMayEndTheController_data()
    {
        QTest::addColumn<bool>("running");
        QTest::addColumn<int>("sequence");
        QTest::newRow("stop nothing") << true << 0;
        QTest::newRow("stop all") << true << 1;
        QTest::newRow("start none") << true << 2;
        QTest::newRow("start all") << false << 3;
        QTest::newRow("stop modems") << true << 4;
        QTest::newRow("start modems") << false << 5;
        QTest::newRow("start modems that are gone") << false << 6;
    }

    void aListenerMayEndTheController()
    {
        QFETCH(bool, running);
        QFETCH(int, sequence);
        running ? m_terminal->publishRunning() : m_terminal->publishStopped();
        if (sequence == 6)
            sendModemServiceAway();
        auto *controller = new QuickController;
        const QPointer<QuickController> alive(controller);
        const auto end = [controller] { delete controller; };
        connect(controller, &ServicesController::stopped, this, end);
        connect(controller, &ServicesController::started, this, end);
        connect(controller, &ServicesController::modemsServiceStopped, this, end);
        connect(controller, &ServicesController::modemsServiceStarted, this, end);
        switch (sequence) {
        case 0:
            controller->stopServices({});
            break;
        case 1:
            controller->stopServices();
            break;
        case 2:
        case 3:
            controller->startServices();
            break;
        case 4:
            controller->stopModemsService();
            break;
        default:
            controller->startModemsService();
        }
        QTRY_VERIFY(!alive);
    }

    void aControllerThatEndsWhileItWaitsSaysNothing()
    {
        m_terminal->makeDeaf();
        m_terminal->publishRunning();
        int signalled = 0;
        connect(m_controller.get(), &ServicesController::stopped, this, [&] { ++signalled; });
        m_controller->stopServices();
        m_controller.reset();
        QCoreApplication::sendPostedEvents();
        QCOMPARE(signalled, 0);
    }

private:
    /// Points touch/stopCommand at a script while it lives.
    class TouchCommand
    {
        Q_DISABLE_COPY_MOVE(TouchCommand)

    public:
        explicit TouchCommand(const QString &script)
        {
            const QString path = m_box.filePath(QStringLiteral("touchctl"));
            write(path, script);
            QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner);
            const QString configuration = m_box.filePath(QStringLiteral("terminal.conf"));
            write(configuration,
                QStringLiteral("[bus]\naddress=session\n[touch]\nstopCommand=%1\n").arg(path));
            qputenv("TAV_TERMINAL_CONF", QFile::encodeName(configuration));
        }
        ~TouchCommand() { qputenv("TAV_TERMINAL_CONF", m_before); }

    private:
        static void write(const QString &path, const QString &text)
        {
            QFile file(path);
            if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
                qFatal("the test's own file cannot be written");
        }

        QTemporaryDir m_box;
        QByteArray m_before = qgetenv("TAV_TERMINAL_CONF");
    };

    /// The messages that end in a time: text and ms.
    static QVector<QPair<QString, qint64>> timed(const GuiLog &log)
    {
        static const QRegularExpression withTime(QStringLiteral("^(.*) (\\d+)$"));
        QVector<QPair<QString, qint64>> result;
        for (const GuiLog::Message &message : log.messages()) {
            if (const auto match = withTime.match(message.text); match.hasMatch())
                result.append({match.captured(1), match.captured(2).toLongLong()});
        }
        return result;
    }

    template <typename Signal>
    std::unique_ptr<QSignalSpy> spy(Signal signal)
    {
        return std::make_unique<QSignalSpy>(m_controller.get(), signal);
    }

    /// Returns when the broker has noticed.
    void sendModemServiceAway()
    {
        m_terminal->modems.agent().close();
        QTRY_VERIFY(!m_controller->sendTavBusCommand(BUSNAME_TAVMODEMS, QStringLiteral("probe")));
        m_sent->take();
    }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<FakeTerminal> m_terminal;
    std::unique_ptr<SentCommands> m_sent;
    std::unique_ptr<QuickController> m_controller;
    std::unique_ptr<QSignalSpy> m_stopped;
    std::unique_ptr<QSignalSpy> m_started;
    std::unique_ptr<QSignalSpy> m_modemsStopped;
    std::unique_ptr<QSignalSpy> m_modemsStarted;
    std::unique_ptr<GuiLog> m_log;
};

QTEST_GUILESS_MAIN(TestServiceSequences)
#include "tst_servicesequences.moc"
