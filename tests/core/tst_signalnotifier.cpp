#include "signalnotifier.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTest>

#include <csignal>
#include <memory>

#include <sys/wait.h>
#include <unistd.h>

class SignalNotifierTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // However the test was started: a background job ignores the interrupt.
        for (const int number : {SIGTERM, SIGINT, SIGHUP})
            std::signal(number, SIG_DFL);
    }

    void signalIsCaught_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("told to end") << SIGTERM;
        QTest::newRow("interrupted at the keyboard") << SIGINT;
        QTest::newRow("terminal hung up") << SIGHUP;
    }
    void signalIsCaught()
    {
        QFETCH(int, number);
        SignalNotifier notifier;
        QSignalSpy caught(&notifier, &SignalNotifier::caught);
        QVERIFY(!*SignalNotifier::flag());
        ::raise(number);
        QVERIFY(*SignalNotifier::flag()); // at once
        QCOMPARE(caught.count(), 0); // from the loop
        QTRY_COMPARE(caught.count(), 1);
        QCOMPARE(caught.first().first().toInt(), number);
    }

    void nothingIsLostWhenSeveralCome()
    {
        SignalNotifier notifier;
        QSignalSpy caught(&notifier, &SignalNotifier::caught);
        ::raise(SIGHUP);
        ::raise(SIGTERM);
        QTRY_COMPARE(caught.count(), 2);
        QCOMPARE(caught.at(0).first().toInt(), SIGHUP);
        QCOMPARE(caught.at(1).first().toInt(), SIGTERM);
    }

    void sameSignalAgainEndsTheProcess()
    {
        const pid_t child = ::fork();
        if (child == 0) {
            const SignalNotifier notifier;
            ::raise(SIGTERM);
            if (!*SignalNotifier::flag())
                ::_exit(1);
            ::raise(SIGTERM);
            ::_exit(2);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QVERIFY2(WIFSIGNALED(status), qPrintable(QString::number(WEXITSTATUS(status))));
        QCOMPARE(WTERMSIG(status), SIGTERM);
    }

    void ignoredSignalStaysIgnored()
    {
        std::signal(SIGHUP, SIG_IGN);
        {
            const SignalNotifier notifier;
            ::raise(SIGHUP);
            QVERIFY(!*SignalNotifier::flag());
        }
        QVERIFY(std::signal(SIGHUP, SIG_DFL) == SIG_IGN);
    }

    void handlersAreGivenBack()
    {
        std::make_unique<SignalNotifier>().reset();
        QVERIFY(std::signal(SIGTERM, SIG_DFL) == SIG_DFL);
        const SignalNotifier next; // and it can be made anew
        ::raise(SIGTERM);
        QVERIFY(*SignalNotifier::flag());
    }

    void programsStartedMeanwhileTakeTheirSignals()
    {
        const SignalNotifier notifier;
        QProcess other;
        other.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        QVERIFY(other.waitForStarted());
        other.terminate();
        QVERIFY(other.waitForFinished());
        QCOMPARE(other.exitStatus(), QProcess::CrashExit);
        QVERIFY(!*SignalNotifier::flag());
    }
};

QTEST_GUILESS_MAIN(SignalNotifierTest)
#include "tst_signalnotifier.moc"
