#include "exithook.h"

#include <QProcess>
#include <QTest>

#include <cstdlib>
#include <thread>

#include <unistd.h>

namespace {

void say(const char *letter)
{
    if (::write(STDOUT_FILENO, letter, 1) != 1)
        ::_exit(101);
}

// What is done in a process of its own, which exit() ends.

[[noreturn]] void exitWithAHook()
{
    const ExitHook hook([] { say("a"); });
    std::exit(3);
}

[[noreturn]] void exitOnceTheHookHasGone()
{
    {
        const ExitHook hook([] { say("a"); });
    }
    std::exit(0);
}

[[noreturn]] void exitWithTheSecondHook()
{
    {
        const ExitHook former([] { say("a"); });
    }
    const ExitHook hook([] { say("b"); });
    std::exit(0);
}

[[noreturn]] void exitWithALateStaticObject()
{
    const ExitHook hook([] { say("a"); });
    struct Late
    {
        ~Late() { say(letter); }
        const char *letter;
    };
    static const Late late{"b"}; // first used when the hook is there
    std::exit(0);
}

[[noreturn]] void exitInAnotherThread()
{
    const ExitHook hook([] { say("a"); });
    std::thread([] { std::exit(4); }).join();
    ::_exit(100);
}

struct Case
{
    const char *name;
    void (*work)();
    const char *written;
    int status;
};

constexpr Case kCases[] = {
    {"runs when the process exits", exitWithAHook, "a", 3},
    {"does not run once it has gone", exitOnceTheHookHasGone, "", 0},
    {"the latest one runs, and once", exitWithTheSecondHook, "b", 0},
    {"static objects are still there", exitWithALateStaticObject, "ab", 0},
    {"does not run in another thread", exitInAnotherThread, "", 4},
};

} // namespace

class ExitHookTest : public QObject
{
    Q_OBJECT

private slots:
    void ends_data()
    {
        QTest::addColumn<QByteArray>("written");
        QTest::addColumn<int>("status");
        for (const Case &each : kCases)
            QTest::newRow(each.name) << QByteArray(each.written) << each.status;
    }

    void ends()
    {
        QFETCH(int, status);
        QProcess process;
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QCoreApplication::applicationFilePath(),
            {QStringLiteral("end"), QString::fromLatin1(QTest::currentDataTag())});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QTEST(process.readAllStandardOutput(), "written");
        QCOMPARE(process.exitCode(), status);
    }
};

int main(int argc, char **argv)
{
    for (const Case &each : kCases) {
        if (argc == 3 && qstrcmp(argv[1], "end") == 0 && qstrcmp(argv[2], each.name) == 0)
            each.work();
    }
    QCoreApplication application(argc, argv);
    ExitHookTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_exithook.moc"
