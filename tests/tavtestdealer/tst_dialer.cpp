#include "fakedialer.h"
#include "logcapture.h"
#include "portspeed.h"
#include "scriptedmodem.h"
#include "testmodemscfg.h"
#include "toldtoend.h"
#include "wvdial.h"

#include "initconfig.h"

#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <signal.h>
#include <unistd.h>

namespace {

const QString noPort = QStringLiteral("/dev/nowhere");

void configure(const QStringList &names, const QString &active, const QString &port = noPort,
    int baudrate = 57600)
{
    QMap<QString, ModemInfo> modems;
    for (const QString &name : names) {
        ModemInfo modem;
        modem.setConnectionName(name);
        modem.setPortName(port);
        modem.setBaudrate(baudrate);
        modems.insert(name, modem);
    }
    TestModemsCfg config;
    TestModemsCfg::setActiveModemName(active);
    config.setModems(modems);
}

void configure(const QString &name)
{
    configure({name}, name);
}

/// Not to wait half a minute for a dialer that does not end.
class ImpatientDialer : public Wvdial
{
public:
    using Wvdial::Wvdial;

protected:
    int processWait() const override { return 300; }
};

/// A dialer, what it logs and what it tells of its end.
struct Dial
{
    explicit Dial(const QString &program)
        : wvdial(nullptr, program)
    {
    }

    LogCapture log{"dialup"};
    Wvdial wvdial;
    QSignalSpy down{&wvdial, &Wvdial::dialdowned};
    QSignalSpy notStarted{&wvdial, &Wvdial::dialNotStarted};
};

const QString gsm1 = QStringLiteral("gsm1");

} // namespace

class DialerTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        TestModemsCfg::setConfigPath();
        QFile::remove(TestModemsCfg::configPath());
        TestModemsCfg::setActiveModemName(QString());
    }

    void dialerIsTheSystems()
    {
        QCOMPARE(Wvdial::WVDIAL_COMMAND, QStringLiteral("/usr/bin/wvdial"));
        const Wvdial wvdial;
        QCOMPARE(wvdial.findChild<QProcess *>()->program(), QStringLiteral("/usr/bin/wvdial"));
    }

    void processIsSetUpAtConstruction()
    {
        const Wvdial wvdial;
        const auto *process = wvdial.findChild<QProcess *>();
        QCOMPARE(process->inputChannelMode(), QProcess::ManagedInputChannel);
        QCOMPARE(process->processChannelMode(), QProcess::SeparateChannels);
        QCOMPARE(process->processEnvironment(), QProcessEnvironment::systemEnvironment());
        QCOMPARE(process->workingDirectory(), InitConfig().workDir());
    }

    // A dialer that is told to end while it starts tries the modem first, ten seconds long.
    void noDialerIsStartedOnceTheProgramIsToldToEnd()
    {
        const FakeDialer dialer;
        configure(gsm1);
        Dial dial(dialer.program());
        {
            const ToldToEnd toldToEnd; // while the modem is reset
            dial.wvdial.start(gsm1);
        }
        QVERIFY(!dial.wvdial.isDialling());
        QVERIFY(dial.notStarted.wait());
        QVERIFY(dialer.arguments().isEmpty());
        QCOMPARE(dial.log.lines.last(),
            QStringLiteral("debug: The program is to end: the dialer is not started"));
    }

    void debugMessagesOfTheDialAreTurnedOn()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("dialup.debug=false"));
        QVERIFY(!DIALUP().isDebugEnabled());
        const Wvdial wvdial;
        QVERIFY(DIALUP().isDebugEnabled());
        QCOMPARE(QByteArray(DIALUP().categoryName()), QByteArray("dialup"));
    }

    void dialWithoutThePort()
    {
        const FakeDialer dialer;
        configure(gsm1);
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.down.wait());
        const QString config = QStringLiteral("--config=") + TestModemsCfg::configPath();
        QCOMPARE(dialer.arguments(), QStringList({gsm1, config}));
        QCOMPARE(dialer.calls(), QStringList{QStringLiteral("killall pppd")});
        QCOMPARE(dial.log.lines.size(), 10);
        QVERIFY(dial.log.lines.at(2).startsWith(
            QStringLiteral("debug: The porg /dev/nowhere is not opened: ")));
        QVERIFY(dial.log.lines.at(2).size()
            > QStringLiteral("debug: The porg /dev/nowhere is not opened: ").size());
        dial.log.lines.removeAt(2);
        QCOMPARE(dial.log.lines,
            QStringList({QStringLiteral("debug: gsm1"),
                QStringLiteral("debug: Open port /dev/nowhere"), QStringLiteral("debug: ") + config,
                QStringLiteral("debug: New wvdial state is 1"),
                QStringLiteral("debug: New wvdial state is 2"),
                QStringLiteral("debug: wvdial is started"),
                QStringLiteral("debug: New wvdial state is 0"),
                QStringLiteral("debug: WvDial finished with code 0"),
                QStringLiteral("warning: Wvdial closed successfully")}));
    }

    void modemIsResetAndClosedBeforeTheDial()
    {
        const FakeDialer dialer("exit 1");
        ScriptedModem modem;
        modem.start();
        configure({gsm1}, gsm1, modem.path());
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(modem.commands().contains("ATZ"));
        QVERIFY(dial.down.wait());
        const QStringList begin = dial.log.lines.mid(0, 8);
        QCOMPARE(begin.at(1), QStringLiteral("debug: Open port ") + modem.path());
        QVERIFY(begin.at(2).startsWith(QStringLiteral("debug: Modem name is ")));
        QVERIFY(begin.at(2).contains(QStringLiteral("E1550")));
        QCOMPARE(begin.at(3), QStringLiteral("debug: Modem dialect is Huawei"));
        QCOMPARE(begin.at(4), QStringLiteral("debug: Start modem resetting"));
        QVERIFY(QRegularExpression(QStringLiteral("^debug: Modem reseted for \\d+ ms$"))
                    .match(begin.at(5))
                    .hasMatch());
        QCOMPARE(begin.at(6), QStringLiteral("debug: Modem is closed"));
        QVERIFY(begin.at(7).startsWith(QStringLiteral("debug: --config=")));
        QCOMPARE(dial.log.count(QStringLiteral("debug: The porg")), 0);
    }

    void modemLostInTheResetIsToldWithTheReason()
    {
        const FakeDialer dialer("exit 1");
        ScriptedModem modem;
        modem.hangUpOn = "ATZ";
        modem.start();
        configure({gsm1}, gsm1, modem.path());
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.down.wait());
        const int reset = dial.log.indexOf(QStringLiteral("debug: Modem reseted for "));
        QVERIFY(reset > 0);
        QCOMPARE(dial.log.lines.at(reset + 1),
            QStringLiteral("warning: The modem on %1 has gone: its port was unplugged or hung up.")
                .arg(modem.path()));
        QCOMPARE(dial.log.lines.at(reset + 2), QStringLiteral("debug: Modem is closed"));
        QCOMPARE(dialer.arguments().size(), 2); // the dial goes on all the same
    }

    void highestSpeedOfThePort_data()
    {
        QTest::addColumn<int>("configured");
        QTest::addColumn<unsigned int>("used");
        QTest::newRow("115200 is lowered") << 115200 << 57600U;
        QTest::newRow("921600 is lowered") << 921600 << 57600U;
        QTest::newRow("57600") << 57600 << 57600U;
        QTest::newRow("57599") << 57599 << 57599U;
        QTest::newRow("9600") << 9600 << 9600U;
    }
    void highestSpeedOfThePort()
    {
        QFETCH(int, configured);
        QFETCH(unsigned int, used);
        const FakeDialer dialer;
        ScriptedModem modem;
        std::atomic<unsigned int> speed{0};
        modem.onCommand = [&modem, &speed](const QByteArray &command) {
            if (command == "ATZ")
                speed = speedOf(modem.path());
        };
        modem.start();
        configure({gsm1}, gsm1, modem.path(), configured);
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QCOMPARE(speed.load(), used);
        QVERIFY(dial.down.wait());
    }

    void activeConnectionGoesFirst()
    {
        const FakeDialer dialer;
        configure({QStringLiteral("A"), QStringLiteral("B")}, QStringLiteral("A"));
        Dial dial(dialer.program());
        dial.wvdial.start(QStringLiteral("B"));
        QVERIFY(dial.down.wait());
        const QString config = QStringLiteral("--config=") + TestModemsCfg::configPath();
        QCOMPARE(dialer.arguments(),
            QStringList({QStringLiteral("A"), config, QStringLiteral("B"), config}));
        QVERIFY(!dial.down.wait(200));
        QCOMPARE(dial.down.count(), 1);
        QCOMPARE(dialer.calls(), QStringList{QStringLiteral("killall pppd")});
    }

    void activeConnectionIsDialledOnceWhenItIsTheOneAskedFor()
    {
        const FakeDialer dialer;
        configure({QStringLiteral("A"), QStringLiteral("B")}, QStringLiteral("B"));
        Dial dial(dialer.program());
        dial.wvdial.start(QStringLiteral("B"));
        QVERIFY(dial.down.wait());
        QVERIFY(!dial.down.wait(200));
        QCOMPARE(dialer.arguments().size(), 2);
        QCOMPARE(dialer.arguments().first(), QStringLiteral("B"));
        // And again: nothing is left of the first.
        dial.wvdial.start(QStringLiteral("B"));
        QVERIFY(dial.down.wait());
        QCOMPARE(dialer.arguments().size(), 4);
    }

    void exitCodes_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("message");
        const QString unknown = QStringLiteral("critical: Unknown exit code");
        QTest::newRow("0") << QByteArray("exit 0")
                           << QStringLiteral("warning: Wvdial closed successfully");
        QTest::newRow("1") << QByteArray("exit 1") << QStringLiteral("critical: Pppd has finished");
        QTest::newRow("2") << QByteArray("exit 2")
                           << QStringLiteral("critical: Pppd was finished by user signal");
        QTest::newRow("3") << QByteArray("exit 3") << unknown;
        QTest::newRow("255") << QByteArray("exit 255") << unknown;
        QTest::newRow("aborted") << QByteArray("kill -ABRT $$") << unknown;
        QTest::newRow("killed") << QByteArray("kill -KILL $$") << unknown;
    }
    void exitCodes()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, message);
        const FakeDialer dialer(script);
        configure(gsm1);
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.down.wait());
        QCOMPARE(dial.log.lines.last(), message);
        QVERIFY(dial.log.lines.at(dial.log.lines.size() - 2)
                    .startsWith(QStringLiteral("debug: WvDial finished with code ")));
        QVERIFY(!dial.notStarted.wait(100));
    }

    void outputLevels_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("message");
        QTest::newRow("plain") << QByteArray("CONNECT 9600")
                               << QStringLiteral("debug: \"CONNECT 9600\"");
        QTest::newRow("error") << QByteArray("an error")
                               << QStringLiteral("critical: \"an error\"");
        QTest::newRow("ERROR") << QByteArray("ERROR") << QStringLiteral("critical: \"ERROR\"");
        QTest::newRow("Critical") << QByteArray("Critical!")
                                  << QStringLiteral("critical: \"Critical!\"");
        QTest::newRow("fatal") << QByteArray("so fatal")
                               << QStringLiteral("critical: \"so fatal\"");
        QTest::newRow("Warning") << QByteArray("a Warning")
                                 << QStringLiteral("warning: \"a Warning\"");
        QTest::newRow("warning and error")
            << QByteArray("warning: error") << QStringLiteral("critical: \"warning: error\"");
        QTest::newRow("lines stay one message")
            << QByteArray("one\ntwo\n") << QStringLiteral("debug: \"one\\ntwo\\n\"");
        QTest::newRow("quotes") << QByteArray("say \"x\"")
                                << QStringLiteral("debug: \"say \\\"x\\\"\"");
        QTest::newRow("up to the first zero byte")
            << QByteArray("before\0error", 12) << QStringLiteral("debug: \"before\"");
        QTest::newRow("UTF-8") << QByteArray("связь") << QStringLiteral("debug: \"связь\"");
    }
    void outputLevels()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, message);
        for (const char *channel : {"1", "2"}) {
            FakeDialer dialer;
            QFile given(dialer.file("given"));
            QVERIFY(given.open(QIODevice::WriteOnly));
            given.write(text);
            given.close();
            dialer.add(
                QStringLiteral("dialer"), "cat '" + given.fileName().toUtf8() + "' >&" + channel);
            configure(gsm1);
            Dial dial(dialer.program());
            dial.wvdial.start(gsm1);
            QVERIFY(dial.down.wait());
            QVERIFY2(
                dial.log.contains(message), qPrintable(dial.log.lines.join(QLatin1Char('\n'))));
        }
    }

    void channelsAreReadApart()
    {
        const FakeDialer dialer("echo out; echo error >&2");
        configure(gsm1);
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.down.wait());
        QVERIFY(dial.log.contains(QStringLiteral("debug: \"out\\n\"")));
        QVERIFY(dial.log.contains(QStringLiteral("critical: \"error\\n\"")));
    }

    void cannotBeStarted_data()
    {
        QTest::addColumn<QString>("configured");
        QTest::addColumn<QString>("active");
        QTest::addColumn<QString>("message");
        QTest::newRow("empty name")
            << gsm1 << QString() << QStringLiteral("warning: Connection name is empty!");
        QTest::newRow("section that is not there")
            << gsm1 << QStringLiteral("gsm2")
            << QStringLiteral("warning: There are no modem config for gsm2");
        QTest::newRow("no configuration file")
            << QString() << gsm1 << QStringLiteral("warning: There are no modem config for gsm1");
        QTest::newRow("name that the dialer takes for a setting")
            << QStringLiteral("PPPD Path=x") << QStringLiteral("PPPD Path=x")
            << QStringLiteral("warning: The dialer would take the name PPPD Path=x for an option");
        QTest::newRow("name that the dialer takes for an option")
            << QStringLiteral("--config") << QStringLiteral("--config")
            << QStringLiteral("warning: The dialer would take the name --config for an option");
    }
    void cannotBeStarted()
    {
        QFETCH(QString, configured);
        QFETCH(QString, active);
        QFETCH(QString, message);
        const FakeDialer dialer;
        if (!configured.isEmpty())
            configure(configured);
        TestModemsCfg::setActiveModemName(active);
        Dial dial(dialer.program());
        dial.wvdial.start(active);
        QCOMPARE(dial.notStarted.count(), 0); // from the event loop only
        QVERIFY(dial.notStarted.wait());
        QVERIFY(!dial.notStarted.wait(100));
        QCOMPARE(dial.notStarted.count(), 1);
        QCOMPARE(dial.down.count(), 0);
        QCOMPARE(dial.log.lines, QStringList{message});
        QCOMPARE(dialer.arguments(), QStringList());
    }

    void fileThatVanishesDuringTheResetEndsTheDial()
    {
        const FakeDialer dialer;
        ScriptedModem modem;
        modem.onCommand = [](const QByteArray &command) {
            if (command == "ATZ")
                QFile::remove(TestModemsCfg::configPath());
        };
        modem.start();
        configure({gsm1}, gsm1, modem.path());
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.notStarted.wait());
        QCOMPARE(
            dial.log.lines.last(), QStringLiteral("warning: There are no any dialer config files"));
        QCOMPARE(dialer.arguments(), QStringList());
    }

    void pendingConnectionThatIsNotThereEndsTheDial()
    {
        const FakeDialer dialer;
        configure(QStringLiteral("A"));
        Dial dial(dialer.program());
        dial.wvdial.start(QStringLiteral("B"));
        QVERIFY(dial.notStarted.wait());
        QCOMPARE(dial.log.lines.last(), QStringLiteral("warning: There are no modem config for B"));
        QCOMPARE(dial.down.count(), 0);
    }

    void missingDialerIsReportedAndNotRetried()
    {
        const FakeDialer dialer;
        configure(gsm1);
        Dial dial(dialer.file("missing"));
        dial.wvdial.start(gsm1);
        QVERIFY(dial.notStarted.wait());
        QVERIFY(!dial.notStarted.wait(100));
        QCOMPARE(dial.notStarted.count(), 1);
        QCOMPARE(dial.down.count(), 0);
        QCOMPARE(dial.log.count(QStringLiteral("critical: Wvdial error (0): ")), 1);
        QVERIFY(!dial.log.contains(QStringLiteral("critical: Wvdial error (0): ")));
    }

    void pendingConnectionIsNotDialledAfterADialerThatIsMissing()
    {
        const FakeDialer dialer;
        configure({QStringLiteral("A"), QStringLiteral("B")}, QStringLiteral("A"));
        Dial dial(dialer.file("missing"));
        dial.wvdial.start(QStringLiteral("B"));
        QVERIFY(dial.notStarted.wait());
        QVERIFY(!dial.notStarted.wait(100));
        QCOMPARE(dial.notStarted.count(), 1);
        QCOMPARE(dial.down.count(), 0);
        QVERIFY(dial.log.contains(QStringLiteral("debug: A")));
        QVERIFY(!dial.log.contains(QStringLiteral("debug: B")));
        QCOMPARE(dial.log.count(QStringLiteral("critical: Wvdial error (0): ")), 1);
    }

    void crashIsAnErrorAndAnEnd()
    {
        const FakeDialer dialer("kill -SEGV $$");
        configure(gsm1);
        Dial dial(dialer.program());
        dial.wvdial.start(gsm1);
        QVERIFY(dial.down.wait());
        QCOMPARE(dial.log.count(QStringLiteral("critical: Wvdial error (1): ")), 1);
        QCOMPARE(dial.down.count(), 1);
    }

    void stopWithoutADialStillLooksRound()
    {
        const FakeDialer dialer;
        Dial dial(dialer.program());
        dial.wvdial.stop();
        QCOMPARE(dialer.calls(), QStringList({QStringLiteral("ps -A"), QStringLiteral("ps -A")}));
        QCOMPARE(dial.down.count(), 0);
    }

    void stopEndsStrayDialersAndThenPppds()
    {
        FakeDialer dialer;
        dialer.showProcesses("  41 ?  00:00:00 pppd\n  42 ?  00:00:00 wvdial\n"
                             "  43 ?  00:00:00 other\n");
        Wvdial wvdial(nullptr, dialer.program());
        wvdial.stop();
        QCOMPARE(dialer.calls(),
            QStringList({QStringLiteral("ps -A"), QStringLiteral("killall wvdial"),
                QStringLiteral("ps -A"), QStringLiteral("ps -A"), QStringLiteral("killall pppd"),
                QStringLiteral("ps -A")}));
    }

    void stopGoesOnUntilTheyAreGone()
    {
        FakeDialer dialer;
        dialer.add(QStringLiteral("killall"),
            "echo \"killall $*\" >>\"$TAV_FAKES_LOG\"\n"
            "[ \"$(grep -c \"killall $1\" \"$TAV_FAKES_LOG\")\" -lt 3 ]"
            " || sed -i \"/$1/d\" \"$TAV_FAKE_PS\"");
        dialer.showProcesses("  41 ?  00:00:00 pppd\n  42 ?  00:00:00 wvdial\n");
        Wvdial wvdial(nullptr, dialer.program());
        wvdial.stop();
        QCOMPARE(dialer.calls().filter(QStringLiteral("killall wvdial")).size(), 3);
        QCOMPARE(dialer.calls().filter(QStringLiteral("killall pppd")).size(), 3);
        QCOMPARE(dialer.calls().filter(QStringLiteral("ps -A")).size(), 8);
    }

    void longListOfProcessesIsReadWhole()
    {
        FakeDialer dialer;
        dialer.showProcesses(QByteArray("   1 ?  00:00:00 kworker/0:1-events\n").repeated(20000)
            + "  42 ?  00:00:00 wvdial\n");
        Wvdial wvdial(nullptr, dialer.program());
        wvdial.stop();
        QVERIFY(dialer.calls().contains(QStringLiteral("killall wvdial")));
    }

    void stopWithoutPsReturns()
    {
        FakeDialer dialer;
        dialer.add(QStringLiteral("ps"), "exit 1");
        Wvdial wvdial(nullptr, dialer.program());
        wvdial.stop();
        QCOMPARE(dialer.calls(), QStringList());
    }

    void stopEndsTheDialAndDropsWhatIsPending()
    {
        const FakeDialer dialer("exec sleep 600");
        configure({QStringLiteral("A"), QStringLiteral("B")}, QStringLiteral("A"));
        Dial dial(dialer.program());
        dial.wvdial.start(QStringLiteral("B"));
        QTRY_VERIFY(dialer.pid() > 0);
        dial.wvdial.stop();
        QCOMPARE(dial.down.count(), 1);
        QVERIFY(!dial.down.wait(100));
        QCOMPARE(dialer.arguments().size(), 2);
        QCOMPARE(dial.wvdial.findChild<QProcess *>()->state(), QProcess::NotRunning);
        QVERIFY(::kill(static_cast<pid_t>(dialer.pid()), 0) != 0);
    }

    void stopWhileTheDialerIsStarting()
    {
        const FakeDialer dialer("exec sleep 600");
        configure(gsm1);
        Wvdial wvdial(nullptr, dialer.program());
        const auto *process = wvdial.findChild<QProcess *>();
        QSignalSpy down(&wvdial, &Wvdial::dialdowned);
        QSignalSpy notStarted(&wvdial, &Wvdial::dialNotStarted);
        wvdial.start(gsm1);
        QCOMPARE(process->state(), QProcess::Starting);
        wvdial.stop();
        QCOMPARE(process->state(), QProcess::NotRunning);
        QCOMPARE(down.count(), 1);
        QVERIFY(!notStarted.wait(100));
    }

    void listenerMayDropTheControlDuringStop()
    {
        FakeDialer dialer("exec sleep 600");
        configure(gsm1);
        QPointer<Wvdial> wvdial = new Wvdial(nullptr, dialer.program());
        connect(wvdial, &Wvdial::dialdowned, wvdial, &QObject::deleteLater);
        wvdial->start(gsm1);
        QTRY_VERIFY(dialer.pid() > 0);
        dialer.forgetCalls();
        dialer.showProcesses("  41 ?  00:00:00 pppd\n");
        wvdial->stop();
        QVERIFY(dialer.calls().contains(QStringLiteral("killall pppd"))); // the stop went through
        QTRY_VERIFY(wvdial.isNull());
    }

    void stopReapsADialerThatDiesLate()
    {
        // Deaf to terminate(); killall gets it in the end, and ps goes on showing it as long as
        // nobody has asked for its exit status.
        FakeDialer dialer("trap '' TERM; echo deaf; while :; do sleep 0.05; done");
        dialer.add(QStringLiteral("ps"),
            "pid=$(cat '" + dialer.file("pid").toUtf8()
                + "'); if kill -0 $pid 2>/dev/null; then echo \"$pid ? wvdial\"; fi");
        dialer.add(QStringLiteral("killall"),
            "[ \"$1\" != wvdial ] || kill -KILL $(cat '" + dialer.file("pid").toUtf8() + "')");
        configure(gsm1);
        const LogCapture log("dialup");
        ImpatientDialer wvdial(nullptr, dialer.program());
        QSignalSpy down(&wvdial, &Wvdial::dialdowned);
        wvdial.start(gsm1);
        QTRY_VERIFY(log.contains(QStringLiteral("debug: \"deaf\\n\"")));
        wvdial.stop();
        QCOMPARE(down.count(), 1);
        QCOMPARE(wvdial.findChild<QProcess *>()->state(), QProcess::NotRunning);
    }

    void dialerOfADeletedControlIsEnded()
    {
        const FakeDialer dialer("exec sleep 600");
        configure(gsm1);
        {
            Wvdial wvdial(nullptr, dialer.program());
            wvdial.start(gsm1);
            QTRY_VERIFY(dialer.pid() > 0);
        }
        QVERIFY(::kill(static_cast<pid_t>(dialer.pid()), 0) != 0);
    }
};

QTEST_GUILESS_MAIN(DialerTest)
#include "tst_dialer.moc"
