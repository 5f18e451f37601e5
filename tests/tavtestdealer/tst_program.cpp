#include "display.h"
#include "initconfig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

// The program itself as a process of its own, on a display of its own, used by keyboard as a person
// would. It has no bus to talk to.

namespace {

constexpr int kLong = 30000; // ms

} // namespace

class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_display = std::make_unique<Display>(); }
    void cleanupTestCase() { m_display.reset(); }

    void init()
    {
        QFile::remove(record());
        QDir(InitConfig().loggerPath()).removeRecursively();
    }

    void versionQueryEndsAtOnce_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("short") << QStringList{QStringLiteral("-v")};
        QTest::newRow("long") << QStringList{QStringLiteral("--version")};
        QTest::newRow("last of several")
            << QStringList{QStringLiteral("other"), QStringLiteral("x"), QStringLiteral("-v")};
        QTest::newRow("both") << QStringList{QStringLiteral("--version"), QStringLiteral("-v")};
    }
    void versionQueryEndsAtOnce()
    {
        QFETCH(QStringList, arguments);
        const auto program = start(arguments);
        QVERIFY(program->waitForFinished(kLong));
        QCOMPARE(program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(program->exitCode(), 0);
        QVERIFY(QFileInfo::exists(record()));
    }

    void otherSpellingsShowTheWindow_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("nothing") << QStringList();
        QTest::newRow("upper case") << QStringList{QStringLiteral("-V")};
        QTest::newRow("upper case, long") << QStringList{QStringLiteral("--VERSION")};
        QTest::newRow("with more to it") << QStringList{QStringLiteral("--version=1")};
    }
    void otherSpellingsShowTheWindow()
    {
        QFETCH(QStringList, arguments);
        const auto program = start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Tav test dialer")), kLong);
        QTRY_COMPARE(program->state(), QProcess::Running);
        // Without a bus the one answer is to go.
        m_display->press(QStringLiteral("Tav test dialer"), QStringLiteral("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Settings saving error")), kLong);
        m_display->press(QStringLiteral("Settings saving error"), QStringLiteral("Escape"));
        QVERIFY(program->waitForFinished(kLong));
        QCOMPARE(program->exitStatus(), QProcess::NormalExit);
        QCOMPARE(program->exitCode(), 0);
    }

    void secondInstanceIsRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("plain") << QStringList();
        QTest::newRow("even to tell its version") << QStringList{QStringLiteral("--version")};
    }
    void secondInstanceIsRefused()
    {
        QFETCH(QStringList, arguments);
        const auto first = start({});
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Tav test dialer")), kLong);
        const auto second = start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Warning")), kLong);
        m_display->press(QStringLiteral("Warning"), QStringLiteral("Return"));
        QVERIFY(second->waitForFinished(kLong));
        QCOMPARE(second->exitStatus(), QProcess::NormalExit);
        QCOMPARE(second->exitCode(), 255);
        QCOMPARE(first->state(), QProcess::Running);
        first->kill();
        QVERIFY(first->waitForFinished(kLong));
        // One that was killed does not block the next.
        const auto third = start({QStringLiteral("-v")});
        QVERIFY(third->waitForFinished(kLong));
        QCOMPARE(third->exitCode(), 0);
    }

    void recordHoldsThePathAsStarted()
    {
        const QTemporaryDir box;
        const QString path = box.filePath(QStringLiteral("программа"));
        QVERIFY(QFile::link(QStringLiteral(TAVTESTDIALER), path));
        const auto program = start({QStringLiteral("-v")}, path);
        QVERIFY(program->waitForFinished(kLong));
        QFile file(record());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
        QCOMPARE(object.value(QLatin1String("exepath")).toString(), path);
    }

    void startThroughPathWritesNoRecord()
    {
        const QFileInfo program(QStringLiteral(TAVTESTDIALER));
        QProcess shell;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PATH"),
            program.path() + QLatin1Char(':') + environment.value(QStringLiteral("PATH")));
        shell.setProcessEnvironment(environment);
        shell.start(QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), program.fileName() + QStringLiteral(" -v")});
        QVERIFY(shell.waitForFinished(kLong));
        QCOMPARE(shell.exitCode(), 0);
        QVERIFY(!QFileInfo::exists(record()));
    }

    void logIsWrittenWhereTheTerminalKeepsIt()
    {
        const auto program = start({});
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Tav test dialer")), kLong);
        m_display->press(QStringLiteral("Tav test dialer"), QStringLiteral("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(m_display->shows(QStringLiteral("Settings saving error")), kLong);
        m_display->press(QStringLiteral("Settings saving error"), QStringLiteral("Escape"));
        QVERIFY(program->waitForFinished(kLong));
        QByteArray log;
        const QFileInfoList files
            = QDir(InitConfig().loggerPath()).entryInfoList(QDir::Files | QDir::NoDotAndDotDot);
        for (const QFileInfo &info : files) {
            QFile file(info.filePath());
            QVERIFY(file.open(QIODevice::ReadOnly));
            log += file.readAll();
        }
        QVERIFY(log.contains("Start test")); // of the Internet check, at debug level
    }

    void temporaryFilesAreTheProgramsOwn()
    {
        const QString directory
            = qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/ovrel");
        // On a machine that is set up as a terminal that one is taken.
        const bool isTerminal = QFileInfo(QStringLiteral("/run/ovrel")).isWritable();
        QDir(directory).removeRecursively();
        const auto program = start({QStringLiteral("-v")});
        QVERIFY(program->waitForFinished(kLong));
        QCOMPARE(QFileInfo(directory).isDir(), !isTerminal);
        QVERIFY(!(QFileInfo(directory).permissions()
            & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther)));
    }

private:
    static QString record()
    {
        return InitConfig().versionsPath() + QStringLiteral("/tavtestdialer.ver");
    }

    std::unique_ptr<QProcess> start(
        const QStringList &arguments, const QString &path = QStringLiteral(TAVTESTDIALER))
    {
        auto program = std::make_unique<QProcess>();
        program->setProcessEnvironment(m_display->environment());
        program->setProcessChannelMode(QProcess::ForwardedChannels);
        program->start(path, arguments);
        return program;
    }

    std::unique_ptr<Display> m_display;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
