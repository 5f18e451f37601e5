#include "exithook.h"

#include <QTest>

#include <cstdlib>
#include <functional>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

// Each in a process of its own, which exit() ends.

namespace {

struct Ended
{
    int status = -1;
    QByteArray written;
};

Ended inAnotherProcess(const std::function<void(int out)> &work)
{
    int ends[2];
    if (::pipe(ends) != 0)
        qFatal("no pipe");
    const pid_t child = ::fork();
    if (child == 0) {
        work(ends[1]);
        ::_exit(100);
    }
    ::close(ends[1]);
    Ended ended;
    char byte = 0;
    while (::read(ends[0], &byte, 1) == 1)
        ended.written += byte;
    ::close(ends[0]);
    int status = 0;
    if (::waitpid(child, &status, 0) == child && WIFEXITED(status))
        ended.status = WEXITSTATUS(status);
    return ended;
}

void say(int out, const char *letter)
{
    if (::write(out, letter, 1) != 1)
        ::_exit(101);
}

} // namespace

class ExitHookTest : public QObject
{
    Q_OBJECT

private slots:
    void runsWhenTheProcessExits()
    {
        const Ended ended = inAnotherProcess([](int out) {
            const ExitHook hook([out] { say(out, "a"); });
            std::exit(3);
        });
        QCOMPARE(ended.written, QByteArray("a"));
        QCOMPARE(ended.status, 3);
    }

    void doesNotRunOnceItHasGone()
    {
        const Ended ended = inAnotherProcess([](int out) {
            {
                const ExitHook hook([out] { say(out, "a"); });
            }
            std::exit(0);
        });
        QCOMPARE(ended.written, QByteArray());
        QCOMPARE(ended.status, 0);
    }

    void latestOneRunsAndOnce()
    {
        const Ended ended = inAnotherProcess([](int out) {
            {
                const ExitHook former([out] { say(out, "a"); });
            }
            const ExitHook hook([out] { say(out, "b"); });
            std::exit(0);
        });
        QCOMPARE(ended.written, QByteArray("b"));
    }

    void staticObjectsAreStillThere()
    {
        const Ended ended = inAnotherProcess([](int out) {
            const ExitHook hook([out] { say(out, "a"); });
            struct Late
            {
                ~Late() { say(descriptor, "b"); }
                int descriptor;
            };
            static const Late late{out}; // first used when the hook is there
            std::exit(0);
        });
        QCOMPARE(ended.written, QByteArray("ab"));
    }

    void doesNotRunInAnotherThread()
    {
        const Ended ended = inAnotherProcess([](int out) {
            const ExitHook hook([out] { say(out, "a"); });
            std::thread([] { std::exit(4); }).join();
        });
        QCOMPARE(ended.written, QByteArray());
        QCOMPARE(ended.status, 4);
    }
};

QTEST_GUILESS_MAIN(ExitHookTest)
#include "tst_exithook.moc"
