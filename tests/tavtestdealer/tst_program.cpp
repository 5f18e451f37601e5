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

/// A display without a screen.
class Display
{
public:
    Display()
    {
        m_server.setProcessChannelMode(QProcess::SeparateChannels);
        m_server.start(QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("1024x768x24"), QStringLiteral("-nolisten"),
                QStringLiteral("tcp"), QStringLiteral("-noreset")});
        QByteArray number;
        while (!number.endsWith('\n')) {
            if (!m_server.waitForReadyRead(kLong))
                qFatal("Xvfb does not start: %s", qPrintable(m_server.errorString()));
            number += m_server.readAllStandardOutput();
        }
        name = QString::fromLatin1(':' + number.trimmed());
    }
    ~Display()
    {
        m_server.terminate();
        m_server.waitForFinished(kLong);
    }
    Display(const Display &) = delete;
    Display &operator=(const Display &) = delete;

    QString name;

private:
    QProcess m_server;
};

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
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Tav test dialer")), kLong);
        QCOMPARE(program->state(), QProcess::Running);
        // Without a bus the one answer is to go.
        press(QStringLiteral("Tav test dialer"), QStringLiteral("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Settings saving error")), kLong);
        press(QStringLiteral("Settings saving error"), QStringLiteral("Escape"));
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
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Tav test dialer")), kLong);
        const auto second = start(arguments);
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Warning")), kLong);
        press(QStringLiteral("Warning"), QStringLiteral("Return"));
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
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Tav test dialer")), kLong);
        press(QStringLiteral("Tav test dialer"), QStringLiteral("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(isShown(QStringLiteral("Settings saving error")), kLong);
        press(QStringLiteral("Settings saving error"), QStringLiteral("Escape"));
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
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), m_display->name);
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("xcb"));
        program->setProcessEnvironment(environment);
        program->setProcessChannelMode(QProcess::ForwardedChannels);
        program->start(path, arguments);
        return program;
    }

    QByteArray xdotool(const QStringList &arguments)
    {
        QProcess tool;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), m_display->name);
        tool.setProcessEnvironment(environment);
        tool.start(QStringLiteral("xdotool"), arguments);
        if (!tool.waitForFinished(kLong))
            qFatal("xdotool: %s", qPrintable(tool.errorString()));
        return tool.readAllStandardOutput().trimmed();
    }

    QByteArray window(const QString &title)
    {
        return xdotool({QStringLiteral("search"), QStringLiteral("--onlyvisible"),
                           QStringLiteral("--name"), QStringLiteral("^%1$").arg(title)})
            .split('\n')
            .last();
    }
    bool isShown(const QString &title) { return !window(title).isEmpty(); }

    void press(const QString &title, const QString &key)
    {
        // There is no window manager: keys go where the pointer is.
        const QString id = QString::fromLatin1(window(title));
        xdotool({QStringLiteral("mousemove"), QStringLiteral("--window"), id, QStringLiteral("10"),
            QStringLiteral("10"), QStringLiteral("key"), key});
    }

    std::unique_ptr<Display> m_display;
};

QTEST_GUILESS_MAIN(ProgramTest)
#include "tst_program.moc"
