#include "runtimeenvironment.h"
#include "savedrecord.h"
#include "terminal.h"
#include "testmodemscfg.h"

#include "initconfig.h"
#include "loggermanager.h"

#include <QApplication>
#include <QDir>
#include <QFile>

#include <memory>

#include <signal.h>

// The dial test with the real dialer in the simulated terminal: one test per state of the world.
// Each must end idle, with the reason in the log pane, the modem service back, and nothing lost.

namespace {

const QString gsm1 = QStringLiteral("gsm1");
const QString tavmodems = QStringLiteral("tavmodems");

constexpr int kLong = 60000; // ms
// How long the window may stand still at most. A live modem costs a fraction of a second; a mute
// one is waited for with three attempts and one to call it back, and that twice, by the page and by
// the dialer's control; a bus that does not answer costs its limit of five seconds.
constexpr int kLiveModem = 2000;
constexpr int kMuteModem = 15000;
constexpr int kDeadBus = 5000 + kLiveModem;
// A dialer that is deaf to the signal, as one is that reads without end, is given half a minute.
constexpr int kDeafDialer = 40000;

QVariantList savedModems()
{
    return savedSettings(tavbus::BUSNAME_TAVMODEMS);
}

} // namespace

class DialFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LoggerManager::initLog(InitConfig().loggerPath(), 2, false, QtDebugMsg);
        m_terminal = std::make_unique<Terminal>();
        QVERIFY(m_terminal->isValid());
        m_saved = savedModems();
        QVERIFY(!m_saved.isEmpty());
        QVERIFY(qEnvironmentVariableIsSet("LD_BIND_NOW"));
    }
    void cleanupTestCase()
    {
        m_terminal.reset();
        LoggerManager::releaseLog();
    }

    void init()
    {
        m_terminal->restore();
        QTRY_VERIFY(QFile::exists(QStringLiteral("/dev/ttyUSB0")));
        m_dialog = std::make_unique<MainDialog>();
        m_dialog->show();
        m_page = std::make_unique<DialPage>(m_dialog->findChild<TestDialWidget *>());
        m_page->choose(gsm1);
        m_commands = m_terminal->serviceCommands(tavmodems).value().size();
        m_mark = m_terminal->mark();
        m_watch = std::make_unique<BlockWatch>();
        m_store = ModemSettings().toSettingsList();
    }
    void cleanup()
    {
        // Nothing is lost, whatever happened.
        QCOMPARE(ModemSettings().toSettingsList(), m_store);
        QCOMPARE(savedModems(), m_saved);
        m_watch.reset();
        m_page.reset();
        m_dialog.reset();
        QFile::remove(TestModemsCfg::configPath());
        QDir().rmdir(TestModemsCfg::configPath());
        QDir().mkpath(QFileInfo(TestModemsCfg::configPath()).path());
    }

    void goodDial()
    {
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("Pid of pppd"), kLong);
        const bool hasPpp = QFile::exists(QStringLiteral("/dev/ppp"));
        if (hasPpp)
            m_page->press("pbStop");
        waitForTheEnd(kLiveModem);

        QCOMPARE(m_page->colourOf("Start modem resetting"), QColor(Qt::black));
        QCOMPARE(m_page->colourOf("Modem is closed"), QColor(Qt::black));
        QCOMPARE(m_page->colourOf("--> Sending: ATZ"), QColor(Qt::black));
        QCOMPARE(m_page->colourOf("CONNECT 3600000"), QColor(Qt::black));
        QCOMPARE(m_page->colourOf("Pid of pppd"), QColor(Qt::black));
        if (!hasPpp) {
            // pppd says what it lacks here, and the dialer ends by itself.
            QCOMPARE(m_page->colourOf("No ppp module error"), QColor(Qt::red));
            QCOMPARE(m_page->colourOf("Wvdial closed successfully"), QColor(Qt::blue));
        }
        inOrder({QStringLiteral("Open port"), QStringLiteral("Modem name is huawei E173"),
            QStringLiteral("Modem dialect is Huawei"), QStringLiteral("Start modem resetting"),
            QStringLiteral("Modem reseted for "), QStringLiteral("Modem is closed"),
            QStringLiteral("--config="), QStringLiteral("wvdial is started"),
            QStringLiteral("--> Sending: ATZ"), QStringLiteral("CONNECT"),
            QStringLiteral("Pid of pppd"), QStringLiteral("WvDial finished with code")});

        // The service let go of the modem before anybody spoke to it, and took it back at the end.
        const QStringList events = m_terminal->events(m_mark);
        const int stop = events.indexOf(QStringLiteral("tavmodems < stop"));
        const int stopped = events.indexOf(QStringLiteral("tavmodems: stopped"));
        const int reset = events.indexOf(QStringLiteral("gsm1 < ATZ"));
        const int call = events.indexOf(QStringLiteral("gsm1: call started"));
        const int restart = events.indexOf(QStringLiteral("tavmodems < restart"));
        const int running = events.lastIndexOf(QStringLiteral("tavmodems: running"));
        QVERIFY2(0 <= stop && stop < stopped && stopped < reset && reset < call && call < restart
                && restart < running,
            qPrintable(events.join(QLatin1Char('\n'))));
    }

    void stopEndsALongDial()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("The line is busy. Trying again."), kLong);
        QVERIFY(m_page->dialer()->processId() > 0);
        m_page->press("pbStop");
        QCOMPARE(m_page->dialer()->state(), QProcess::NotRunning);
        waitForTheEnd(5000); // the dialer takes its time to hang up
        QVERIFY(m_page->logs("Pppd has finished"));
    }

    void closeIsRefusedDuringADial()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        m_page->press("cbDial");
        QVERIFY(!m_dialog->close());
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("The line is busy."), kLong);
        QVERIFY(!m_dialog->close());
        QVERIFY(m_dialog->isVisible());
        QVERIFY(m_dialog->isEnabled());
        QCOMPARE(m_page->dialer()->state(), QProcess::Running);
        m_page->press("pbStop");
        QVERIFY(!m_dialog->close()); // the modem service is not back yet
        waitForTheEnd(5000);
    }

    void dialerIsMissing()
    {
        m_page.reset();
        m_dialog.reset();
        TestDialWidget page(nullptr, QStringLiteral("/usr/bin/nowhere"));
        page.show();
        m_page = std::make_unique<DialPage>(&page);
        m_page->choose(gsm1);
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("Wvdial error (0): "));
        QCOMPARE(m_page->colourOf("Wvdial error (0): "), QColor(Qt::red));
        m_page.reset();
    }

    void dialerIsKilled()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("The line is busy."), kLong);
        QCOMPARE(::kill(static_cast<pid_t>(m_page->dialer()->processId()), SIGKILL), 0);
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("Wvdial error (1): "));
        QVERIFY(m_page->logs("Unknown exit code"));
        QCOMPARE(m_page->colourOf("Unknown exit code"), QColor(Qt::red));
        // The lock file that it left behind does not stand in the way of the next dial.
        m_terminal->clearModemFault(gsm1).waitForFinished();
        m_commands += 2;
        m_page->press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(m_page->finished.count(), 2, kLong);
        QVERIFY(m_page->logs("CONNECT 3600000"));
        QVERIFY(!m_page->logs("is not opened"));
    }

    void configurationFileCannotBeWritten()
    {
        QFile::remove(TestModemsCfg::configPath());
        QVERIFY(QDir().mkpath(TestModemsCfg::configPath()));
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("/testmodems.cfg was not written: "));
        QVERIFY(m_page->logs("There are no modem config for gsm1"));
        QCOMPARE(m_page->colourOf("was not written"), QColor(Qt::blue));
    }

    void configurationFileGoesBeforeTheDial()
    {
        m_page->press("cbDial");
        QVERIFY(QFile::remove(TestModemsCfg::configPath()));
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("There are no modem config for gsm1"));
    }

    void sectionGoesBeforeTheDial()
    {
        m_page->press("cbDial");
        ModemInfo other;
        other.setConnectionName(QStringLiteral("other"));
        TestModemsCfg().setModems({{other.connectionName(), other}});
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("There are no modem config for gsm1"));
    }

    void directoryOfTheFileIsMissing()
    {
        QVERIFY(QDir(QFileInfo(TestModemsCfg::configPath()).path()).removeRecursively());
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("/testmodems.cfg was not written: No such file or directory"));
        QVERIFY(m_page->logs("There are no modem config for gsm1"));
    }

    void portIsMissing()
    {
        m_terminal->unplug(gsm1).waitForFinished();
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("The porg /dev/ttyUSB0 is not opened: There is no port"));
        QVERIFY(m_page->logs("Cannot open /dev/ttyUSB0: No such file or directory"));
    }

    void portIsHeldByAnotherProgram()
    {
        m_page->press("cbDial");
        // The service holds it until it has stopped.
        QTRY_VERIFY(!m_terminal->holdPort(gsm1, true).isError());
        waitForTheEnd(kLiveModem);
        QVERIFY2(m_page->logs("is in use by"), qPrintable(m_page->log()));
        QVERIFY(m_page->logs("Pppd has finished"));
    }

    void modemIsUnpluggedDuringTheReset()
    {
        m_terminal->unplugOn(gsm1, QStringLiteral("ATZ")).waitForFinished();
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_terminal->events(m_mark).contains(QStringLiteral("gsm1: unplugged")));
        QVERIFY(m_page->logs("The porg /dev/ttyUSB0 is not opened: There is no port"));
    }

    void modemIsUnpluggedDuringTheDial()
    {
        m_terminal->unplugOn(gsm1, QStringLiteral("ATD")).waitForFinished();
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("Sending: ATDT*99#"), kLong);
        // The dialer may go on asking a port that is not there any more; Stop ends that.
        if (!QTest::qWaitFor([this] { return m_page->finished.count() > 0; }, 10000))
            m_page->press("pbStop");
        waitForTheEnd(5000);
        QVERIFY(m_terminal->events(m_mark).contains(QStringLiteral("gsm1: unplugged")));
    }

    void modemThatDoesNotAnswer_data()
    {
        QTest::addColumn<QString>("reason");
        QTest::newRow("hung") << QStringLiteral("does not answer");
        QTest::newRow("silent") << QStringLiteral("is not a modem");
        QTest::newRow("garbage") << QStringLiteral("is not a modem");
    }
    void modemThatDoesNotAnswer()
    {
        QFETCH(QString, reason);
        m_terminal->modemFault(gsm1, QString::fromLatin1(QTest::currentDataTag()))
            .waitForFinished();
        m_page->press("cbDial");
        waitForTheEnd(kMuteModem);
        QVERIFY(m_page->logs("The porg /dev/ttyUSB0 is not opened: "));
        QVERIFY2(m_page->log().contains(reason), qPrintable(m_page->log()));
        QVERIFY(m_page->logs("Modem not responding."));
        QVERIFY(m_page->logs("Pppd has finished"));
    }

    void modemThatNeverStopsTalking()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("babble")).waitForFinished();
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("wvdial is started"), kLong);
        m_page->press("pbStop");
        waitForTheEnd(kDeafDialer);
    }

    void brokerDiesBeforeTheFirstPoll()
    {
        m_page->press("cbDial");
        killBroker();
        waitForTheEnd(6000);
        QVERIFY(m_page->logs("CONNECT 3600000"));
    }

    void brokerRestartsBeforeTheFirstPoll()
    {
        m_page->press("cbDial");
        killBroker();
        // Anybody's call brings it back.
        QVERIFY(!savedModems().isEmpty());
        QVERIFY(m_terminal->brokerPid().value() > 0);
        waitForTheEnd(6000);
        QVERIFY(m_page->logs("CONNECT 3600000"));
    }

    void brokerDiesDuringTheDial()
    {
        m_terminal->modemFault(gsm1, QStringLiteral("busy")).waitForFinished();
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("The line is busy."), kLong);
        killBroker();
        m_page->press("pbStop");
        waitForTheEnd(6000);
    }

    void brokerDoesNotAnswer()
    {
        QVERIFY(!savedModems().isEmpty());
        const auto broker = static_cast<pid_t>(m_terminal->brokerPid().value());
        QVERIFY(broker > 0);
        QCOMPARE(::kill(broker, SIGSTOP), 0);
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->finished.count() == 1, 120000);
        QCOMPARE(::kill(broker, SIGCONT), 0);
        QVERIFY(m_page->isIdle());
        QVERIFY2(m_watch->longest() <= kDeadBus, qPrintable(QString::number(m_watch->longest())));
        // The service could not be told: it holds the port, and the log says so.
        QVERIFY2(m_page->logs("is in use by"), qPrintable(m_page->log()));
    }

    void serviceHasLeftTheBusWithThePortInItsHands()
    {
        m_terminal->serviceFault(tavmodems, QStringLiteral("dead")).waitForFinished();
        m_page->press("cbDial");
        QTRY_COMPARE_WITH_TIMEOUT(m_page->finished.count(), 1, kLong);
        QVERIFY(m_page->isIdle());
        QVERIFY(m_page->logs("The porg /dev/ttyUSB0 is not opened: "));
        QVERIFY2(m_page->logs("is in use by"), qPrintable(m_page->log()));
        QVERIFY(m_watch->longest() <= kLiveModem);
    }

    void serviceTakesItsTime()
    {
        m_terminal->serviceFault(tavmodems, QStringLiteral("slow")).waitForFinished();
        m_page->press("cbDial");
        waitForTheEnd(kLiveModem);
        QVERIFY(m_page->logs("CONNECT 3600000"));
        const QStringList events = m_terminal->events(m_mark);
        QVERIFY(events.indexOf(QStringLiteral("tavmodems: stopped"))
            < events.indexOf(QStringLiteral("gsm1 < ATZ")));
    }

    void stateFromTheFutureCounts()
    {
        // Whoever's clock is wrong: "stopped" is believed.
        publish(6, QDateTime::currentDateTime().addSecs(3600));
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("wvdial is started"), 15000);
        m_terminal->serviceFault(tavmodems, QString()).waitForFinished();
        waitForTheEnd(kLiveModem);
    }

    void stateThatIsTooOldCountsAsNone()
    {
        // "Ready", and nobody there to change it: not waited for.
        publish(2, QDateTime::currentDateTime().addSecs(-61));
        m_page->press("cbDial");
        QTRY_VERIFY_WITH_TIMEOUT(m_page->logs("wvdial is started"), 15000);
        m_terminal->serviceFault(tavmodems, QString()).waitForFinished();
        waitForTheEnd(kLiveModem);
    }

private:
    /// The page is idle again, the modem service was told to stop and to start, and at no time did
    /// the window stand still for longer than given (ms).
    void waitForTheEnd(qint64 longestBlock)
    {
        QTRY_COMPARE_WITH_TIMEOUT(m_page->finished.count(), 1, kLong);
        QCOMPARE(m_page->started.count(), 1);
        QVERIFY(m_page->isIdle());
        QCOMPARE(m_terminal->serviceCommands(tavmodems).value().mid(m_commands),
            QStringList({QStringLiteral("stop"), QStringLiteral("restart")}));
        QVERIFY2(
            m_watch->longest() <= longestBlock, qPrintable(QString::number(m_watch->longest())));
    }

    /// Returns when the bus has seen it die.
    void killBroker()
    {
        const uint before = m_terminal->brokerPid().value();
        m_terminal->killBroker().waitForFinished();
        QTRY_VERIFY(m_terminal->brokerPid().value() != before);
    }

    void inOrder(const QStringList &texts)
    {
        const QString log = m_page->log();
        int from = 0;
        for (const QString &text : texts) {
            const int found = log.indexOf(text, from);
            QVERIFY2(found >= from, qPrintable(text + QStringLiteral(" not in order in\n") + log));
            from = found + text.size();
        }
    }

    void publish(int mode, const QDateTime &stamp)
    {
        m_terminal
            ->serviceState(
                tavmodems, {{QStringLiteral("serviceMode"), mode}}, stamp.toMSecsSinceEpoch())
            .waitForFinished();
    }

    std::unique_ptr<Terminal> m_terminal;
    std::unique_ptr<MainDialog> m_dialog;
    std::unique_ptr<DialPage> m_page;
    std::unique_ptr<BlockWatch> m_watch;
    QVariantList m_saved;
    QVariantList m_store;
    int m_commands = 0;
    int m_mark = 0;
};

int main(int argc, char **argv)
{
    // As the program does: the dialer inherits it.
    RuntimeEnvironment::prepare();
    QApplication application(argc, argv);
    DialFaultsTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_dialfaults.moc"
