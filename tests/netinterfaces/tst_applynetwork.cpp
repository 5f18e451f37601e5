#include "fakesudo.h"
#include "fulldisk.h"
#include "quickconfigurator.h"

#include <QDir>
#include <QNetworkInterface>
#include <QSignalSpy>
#include <QtTest>

#include <sys/stat.h>

namespace {

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

const QString restart = s("[service][networking][restart]");

// Waits with the first command until the test lets it go.
const QByteArray untilLetGo = "while [ ! -e \"${0%/*}/go\" ]; do sleep 0.01; done\n";

void letGo(const FakeSudo &sudo)
{
    QFile file(sudo.filePath(s("go")));
    QVERIFY(file.open(QIODevice::WriteOnly));
}

QString copyCall(const QString &target)
{
    return s("[cp][%1/interfaces.tmp][%2]").arg(QDir::tempPath(), target);
}

QString textOf(const QSignalSpy &log)
{
    QString text;
    for (const QList<QVariant> &message : log)
        text += message.first().toString();
    return text;
}

// Another directory for temporary files, until the end of its life.
class TempPath
{
public:
    explicit TempPath(const QString &path)
        : m_before(qgetenv("TMPDIR"))
    {
        qputenv("TMPDIR", QFile::encodeName(path));
    }
    ~TempPath() { qputenv("TMPDIR", m_before); }
    Q_DISABLE_COPY_MOVE(TempPath)

private:
    const QByteArray m_before;
};

} // namespace

class TestApplyNetwork : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<QProcess::ProcessError>(); }

    void cleanup() { QFile::remove(QDir::tempPath() + s("/interfaces.tmp")); }

    void takesDownCopiesAndRestarts()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0"), s("eth1")}, s("/target"), {s("eth2")});
        QStringList expected;
        const QStringList names = configurator.availableEthernetInterfaces().keys();
        for (const QString &name : names)
            expected += s("[ifconfig][%1][down]").arg(name);
        expected << copyCall(s("/target")) << restart;

        configurator.applySettings({{s("eth0"), InterfaceSettings()}});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(), expected);
    }

    void theFileIsTheSystems()
    {
        // Only its name is looked at: sudo is a stand-in.
        class SystemConfigurator : public EthernetConfigurator
        {
        protected:
            QVector<Interface> ethernetInterfaces() const override { return {}; }
            std::chrono::milliseconds pauseBeforeCommand() const override
            {
                return std::chrono::milliseconds(0);
            }
        };
        const FakeSudo sudo;
        SystemConfigurator configurator;
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(), (QStringList{copyCall(s("/etc/network/interfaces")), restart}));
    }

    // A file that the power is cut in is not seen half written as long as nothing of it is on the
    // disk: what else waits to get there goes before, and the whole file goes right after.
    void theCopyGetsToTheDiskWhole()
    {
        const FakeSudo sudo("[ \"$1\" != cp ] || cp \"$2\" \"$3\"");
        QTemporaryDir box;
        const QString target = box.filePath(s("interfaces"));
        QuickConfigurator configurator({s("eth0")}, target);
        QStringList events;
        configurator.atFlush = [&] {
            events
                += sudo.calls().isEmpty() ? QString() : sudo.calls().last().section(s("]"), 0, 0);
            events += QFile::exists(target) ? s("copied") : s("not copied");
        };
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(events, (QStringList{s("[ifconfig"), s("not copied"), s("[cp"), s("copied")}));
    }

    void itIsTheTargetsDiskThatIsFlushed()
    {
        class FlushingConfigurator : public EthernetConfigurator
        {
        public:
            using EthernetConfigurator::EthernetConfigurator;
            void flush() const { flushToDisk(); }
        };
        QTemporaryDir box;
        FlushingConfigurator(nullptr, box.filePath(s("interfaces"))).flush(); // silent
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("gone.*No such file")));
        FlushingConfigurator(nullptr, box.filePath(s("gone/interfaces"))).flush();
    }

    void nothingToConfigureStillRuns()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(),
            (QStringList{s("[ifconfig][eth0][down]"), copyCall(s("/target")), restart}));
        QVERIFY(QFile::exists(QDir::tempPath() + s("/interfaces.tmp")));
    }

    void eachCommandWaitsASecond()
    {
        class UnhurriedConfigurator : public EthernetConfigurator
        {
        protected:
            QVector<Interface> ethernetInterfaces() const override { return {}; }
        };
        const FakeSudo sudo;
        UnhurriedConfigurator configurator;
        QElapsedTimer time;
        time.start();
        configurator.applySettings({});
        QVERIFY2(time.elapsed() >= 1000, "the first command waits too");
        waitForEnd(configurator, sudo);
        QVERIFY(time.elapsed() >= 2000);
        QCOMPARE(sudo.calls().size(), 2);
    }

    void commandsHaveTheProgramsEnvironment()
    {
        qputenv("TAV_MARK", "from the program");
        const FakeSudo sudo("printf '%s.' \"$TAV_MARK\"");
        QuickConfigurator configurator({}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        qunsetenv("TAV_MARK");
        QCOMPARE(textOf(log), s("from the program.from the program."));
    }

    void aPathWithSpacesAndQuotesStaysOneArgument()
    {
        QTemporaryDir box;
        QVERIFY(QDir(box.path()).mkdir(s("my \"own\" files")));
        const TempPath temp(box.filePath(s("my \"own\" files")));
        const FakeSudo sudo;
        QuickConfigurator configurator({}, s("/a b/inter\"faces"));
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(), (QStringList{copyCall(s("/a b/inter\"faces")), restart}));
    }

    void aHostileNameIsNoArgument_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("option that means all interfaces") << s("-a");
        QTest::newRow("several words") << s("eth0 down; reboot");
        QTest::newRow("quotes") << s("\"eth0\"");
        QTest::newRow("another line") << s("eth0\nreboot");
        QTest::newRow("nothing at all") << QString();
    }

    void aHostileNameIsNoArgument()
    {
        QFETCH(QString, name);
        const FakeSudo sudo;
        QuickConfigurator configurator({name}, s("/target"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("^Not taken down, for its name:")));
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(), (QStringList{copyCall(s("/target")), restart}));
    }

    void whatAShellWouldObeyIsPlainText()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("$(reboot)`id`;*")}, s("/target"));
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls().first(), s("[ifconfig][$(reboot)`id`;*][down]"));
    }

    void aFailingCommandIsFollowedByTheNext()
    {
        const FakeSudo sudo("echo no such device >&2; exit 1");
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls().size(), 3);
        QCOMPARE(textOf(log), s("no such device\nno such device\nno such device\n"));
    }

    void aCrashingCommandIsFollowedByTheNext()
    {
        const FakeSudo sudo("kill -9 $$");
        QuickConfigurator configurator({}, s("/target"));
        const QRegularExpression warning(s("^QProcess::Crashed \".+\"$"));
        QTest::ignoreMessage(QtWarningMsg, warning);
        QTest::ignoreMessage(QtWarningMsg, warning);
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls().size(), 2);
    }

    void withoutSudoTheQueueStops()
    {
        QTemporaryDir empty;
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QFile::encodeName(empty.path()));
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        QSignalSpy errors(process(configurator), &QProcess::errorOccurred);
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(s("^QProcess::FailedToStart \".+\"$")));
        configurator.applySettings({});
        QTRY_COMPARE(errors.count(), 1);
        qputenv("PATH", path);
        QCoreApplication::processEvents();
        QCOMPARE(errors.count(), 1); // the next was not tried
        QCOMPARE(log.count(), 0);

        // Once it is there, all is well again.
        const FakeSudo sudo;
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls().size(), 3);
    }

    void aMegabyteOfOutputArrivesWhole_data()
    {
        QTest::addColumn<QByteArray>("channel");
        QTest::newRow("standard output") << QByteArray();
        QTest::newRow("standard error") << QByteArray(" >&2");
    }

    void aMegabyteOfOutputArrivesWhole()
    {
        QFETCH(QByteArray, channel);
        const FakeSudo sudo("[ \"$1\" = cp ] || exit 0\n"
                            "head -c 524288 /dev/zero | sed 's/\\x00/ж/g'"
            + channel);
        QuickConfigurator configurator({}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(textOf(log), QString(524288, QChar(0x0436)));
    }

    void standardErrorComesFirst()
    {
        const FakeSudo sudo("echo output; echo error >&2");
        QuickConfigurator configurator({}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        QProcess *const running = process(configurator);
        configurator.applySettings({});
        {
            const QSignalBlocker bothTogether(running);
            QVERIFY(running->waitForFinished());
        }
        configurator.processReadyRead();
        QCOMPARE(log.count(), 2);
        QCOMPARE(log.at(0).first().toString(), s("error\n"));
        QCOMPARE(log.at(1).first().toString(), s("output\n"));
        configurator.processReadyRead();
        QCOMPARE(log.count(), 2); // nothing new, no message
    }

    void aCharacterInTwoPiecesIsOneCharacter()
    {
        const FakeSudo sudo(
            "[ \"$1\" = cp ] || exit 0\nprintf 'A\\320'\n" + untilLetGo + "printf '\\266B'");
        QuickConfigurator configurator({}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({});
        QTRY_COMPARE(textOf(log), s("A"));
        letGo(sudo);
        waitForEnd(configurator, sudo);
        QCOMPARE(textOf(log), s("AжB"));
    }

    void invalidOutputIsReplaced()
    {
        const FakeSudo sudo("[ \"$1\" = cp ] || exit 0\nprintf 'a\\377b\\000c\\320'");
        QuickConfigurator configurator({}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({});
        waitForEnd(configurator, sudo);
        QCOMPARE(textOf(log), s("a\xEF\xBF\xBD") + s("b") + QChar(0) + s("c"));
    }

    void anUnwritableTemporaryFileRunsNothing_data()
    {
        QTest::addColumn<QString>("directory");
        // Root may write anywhere, but not over a directory, nor where no file can be made.
        QTest::newRow("a directory in its place") << QString();
        QTest::newRow("a temporary directory that nobody can write to") << s("/proc");
        QTest::newRow("a file for a temporary directory") << s("/dev/null");
    }

    void anUnwritableTemporaryFileRunsNothing()
    {
        QFETCH(QString, directory);
        QTemporaryDir box;
        QVERIFY(QDir(box.path()).mkdir(s("interfaces.tmp")));
        const FakeSudo sudo;
        const TempPath temp(directory.isEmpty() ? box.path() : directory);
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.applySettings({{s("eth0"), InterfaceSettings()}});
        configurator.startProcessing();
        QCOMPARE(process(configurator)->state(), QProcess::NotRunning);
        QVERIFY(sudo.calls().isEmpty());
        QCOMPARE(log.count(), 0);
    }

    void anUnwritableTemporaryFileLeavesTheQueueAsItWas()
    {
        const FakeSudo sudo(untilLetGo);
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.applySettings({});
        QTRY_COMPARE(sudo.calls().size(), 1);
        const QString copy = copyCall(s("/target"));
        QTemporaryDir box;
        QVERIFY(QDir(box.path()).mkdir(s("interfaces.tmp")));
        {
            const TempPath temp(box.path());
            configurator.applySettings({});
        }
        letGo(sudo);
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(), (QStringList{s("[ifconfig][eth0][down]"), copy, restart}));
    }

    // The next to apply may be another user of the group, who could not write to it and would see
    // nothing happen.
    void theTemporaryFileIsAsOpenToTheGroupAsItsDirectory_data()
    {
        QTest::addColumn<mode_t>("directoryMode");
        QTest::addColumn<mode_t>("fileMode");
        QTest::newRow("directory of a group's") << mode_t(02770) << mode_t(0664);
        QTest::newRow("directory of one user's") << mode_t(0700) << mode_t(0644);
    }

    void theTemporaryFileIsAsOpenToTheGroupAsItsDirectory()
    {
        QFETCH(mode_t, directoryMode);
        const QTemporaryDir box;
        QVERIFY(::chmod(QFile::encodeName(box.path()).constData(), directoryMode) == 0);
        const TempPath temp(box.path());
        const FakeSudo sudo;
        QuickConfigurator configurator({}, s("/target"));
        const mode_t before = ::umask(S_IWGRP | S_IWOTH);
        configurator.applySettings({});
        ::umask(before);
        waitForEnd(configurator, sudo);
        struct stat status = {};
        const QByteArray file = QFile::encodeName(box.filePath(s("interfaces.tmp")));
        QVERIFY(::stat(file.constData(), &status) == 0);
        QTEST(status.st_mode & ACCESSPERMS, "fileMode");
    }

    void aFullDiskRunsNothing_data()
    {
        QTest::addColumn<rlim_t>("room");
        QTest::newRow("no room at all") << rlim_t(0);
        QTest::newRow("room for a part") << rlim_t(100);
    }

    void aFullDiskRunsNothing()
    {
        QFETCH(rlim_t, room);
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(s("interfaces.tmp.*File too large")));
        {
            const FullDisk disk(room);
            configurator.applySettings({{s("eth0"), InterfaceSettings()}});
        }
        configurator.startProcessing();
        QCOMPARE(process(configurator)->state(), QProcess::NotRunning);
        QVERIFY(sudo.calls().isEmpty());
    }

    void anApplyDuringAnApplyLosesItsFirstCommand()
    {
        const FakeSudo sudo(untilLetGo);
        QuickConfigurator configurator({s("eth0"), s("eth1")}, s("/target"));
        const QStringList names = configurator.availableEthernetInterfaces().keys();
        configurator.applySettings({});
        QTRY_COMPARE(sudo.calls().size(), 1);

        QTest::ignoreMessage(QtWarningMsg, "QProcess::start: Process is already running");
        configurator.applySettings({{s("eth0"), InterfaceSettings()}});
        letGo(sudo);
        waitForEnd(configurator, sudo);
        QCOMPARE(sudo.calls(),
            (QStringList{s("[ifconfig][%1][down]").arg(names[0]),
                s("[ifconfig][%1][down]").arg(names[1]), copyCall(s("/target")), restart}));
    }

    void eventsBeforeThePauseMayEmptyTheQueue()
    {
        const FakeSudo sudo(untilLetGo);
        QuickConfigurator configurator({}, s("/target"));
        for (int i = 0; i < 2; ++i)
            QTimer::singleShot(0, &configurator, &EthernetConfigurator::startProcessing);
        QTest::ignoreMessage(QtWarningMsg, "QProcess::start: Process is already running");
        configurator.applySettings({});
        letGo(sudo);
        QTRY_COMPARE(process(configurator)->state(), QProcess::NotRunning);
        QCOMPARE(sudo.calls(), QStringList{copyCall(s("/target"))});
    }

    void mayBeDeletedBeforeThePause()
    {
        const FakeSudo sudo;
        auto *const configurator = new QuickConfigurator({}, s("/target"));
        const QPointer<EthernetConfigurator> guard(configurator);
        QTimer::singleShot(0, this, [configurator] { delete configurator; });
        configurator->applySettings({});
        QVERIFY(!guard);
        QVERIFY(sudo.calls().isEmpty());
    }

    void pendingEventsComeBeforeThePause()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({}, s("/target"));
        bool isShown = false;
        QVector<bool> shown;
        configurator.atPause = [&] { shown += isShown; };
        QTimer::singleShot(0, this, [&isShown] { isShown = true; });
        configurator.applySettings({});
        QCOMPARE(shown, QVector<bool>{true});
        waitForEnd(configurator, sudo);
    }

    void anEmptyQueueStartsNothing()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.pause = std::chrono::hours(1); // would hang
        configurator.startProcessing();
        configurator.processFinished(0, QProcess::NormalExit);
        QVERIFY(sudo.calls().isEmpty());
    }

    void withoutACommandThereIsNoOutput()
    {
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        QSignalSpy log(&configurator, &EthernetConfigurator::logMessage);
        configurator.processReadyRead();
        QCOMPARE(log.count(), 0);
    }

    // The program ends in the middle: a terminal without its network would be out of reach.
    void whatWasBegunIsFinishedWithoutPauses()
    {
        const FakeSudo sudo(untilLetGo);
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.applySettings({});
        QTRY_COMPARE(sudo.calls().size(), 1);
        letGo(sudo);
        configurator.pause = std::chrono::hours(1); // would hang
        configurator.finishApplying();
        const QStringList all{s("[ifconfig][eth0][down]"), copyCall(s("/target")), restart};
        QCOMPARE(sudo.calls(), all);
        QCOMPARE(process(configurator)->state(), QProcess::NotRunning);
        QCoreApplication::processEvents();
        configurator.startProcessing();
        QCOMPARE(sudo.calls(), all); // each once
    }

    void theEndMayComeBeforeThePause()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.pause = std::chrono::hours(1); // would hang
        QTimer::singleShot(0, &configurator, &EthernetConfigurator::finishApplying);
        configurator.applySettings({});
        QCOMPARE(sudo.calls(),
            (QStringList{s("[ifconfig][eth0][down]"), copyCall(s("/target")), restart}));
    }

    void withNothingBegunThereIsNothingToFinish()
    {
        const FakeSudo sudo;
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.finishApplying();
        QVERIFY(sudo.calls().isEmpty());
    }

    void aCommandThatHangsIsNotWaitedForForever()
    {
        const FakeSudo sudo(untilLetGo);
        QuickConfigurator configurator({s("eth0")}, s("/target"));
        configurator.applySettings({});
        QTRY_COMPARE(sudo.calls().size(), 1);
        configurator.longest = std::chrono::milliseconds(50);
        QTest::ignoreMessage(QtWarningMsg,
            QRegularExpression(
                s("left half applied.*ifconfig.*eth0.*sudo cp.*networking restart")));
        configurator.finishApplying();
        letGo(sudo);
        QVERIFY(process(configurator)->waitForFinished());
        QCOMPARE(sudo.calls().size(), 1);
    }

    void aNameThatOccursTwiceKeepsTheLastFlag()
    {
        QuickConfigurator configurator;
        configurator.interfaces
            = {{s("eth0"), true}, {s("eth1"), false}, {s("eth0"), false}, {s("eth1"), true}};
        QCOMPARE(configurator.availableEthernetInterfaces(),
            (QHash<QString, bool>{{s("eth0"), false}, {s("eth1"), true}}));
    }

    void theSystemsInterfacesAreItsEthernetOnes()
    {
        const EthernetConfigurator configurator;
        const QHash<QString, bool> listed = configurator.availableEthernetInterfaces();
        QStringList ethernet;
        const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
        for (const QNetworkInterface &interface : all) {
            if (interface.type() == QNetworkInterface::Ethernet)
                ethernet += interface.name();
        }
        QStringList names = listed.keys();
        for (const QString &name : qAsConst(names))
            QVERIFY2(ethernet.contains(name), qPrintable(name));
        const auto isUp = [](const QString &name) {
            const auto flags = QNetworkInterface::interfaceFromName(name).flags();
            return flags.testFlag(QNetworkInterface::IsRunning);
        };
        for (const QString &name : qAsConst(ethernet)) {
            if (isUp(name)
                && !QNetworkInterface::interfaceFromName(name).addressEntries().isEmpty())
                QVERIFY2(listed.value(name), qPrintable(name));
        }
        QVERIFY(configurator.isOnline() || !listed.values().contains(true));
    }

private:
    static QProcess *process(const EthernetConfigurator &configurator)
    {
        return configurator.findChild<QProcess *>();
    }

    static void waitForEnd(const EthernetConfigurator &configurator, const FakeSudo &sudo)
    {
        QTRY_VERIFY(!sudo.calls().isEmpty() && sudo.calls().last() == restart
            && process(configurator)->state() == QProcess::NotRunning);
    }
};

QTEST_GUILESS_MAIN(TestApplyNetwork)
#include "tst_applynetwork.moc"
