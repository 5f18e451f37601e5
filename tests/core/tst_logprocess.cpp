#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

struct Outcome
{
    QString standardError;
    QProcess::ExitStatus status;
};

Outcome run(const QString &path, int keep, bool echo, const QString &last = {})
{
    QProcess process;
    process.start(QStringLiteral(PROBE),
        {path, QString::number(keep), echo ? QStringLiteral("1") : QStringLiteral("0"), last});
    if (!process.waitForFinished(60'000)) // hundreds of thousands of lines on a busy machine
        qFatal("the probe hangs");
    return {QString::fromUtf8(process.readAllStandardError()), process.exitStatus()};
}

QString read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace

class TestLogProcess : public QObject
{
    Q_OBJECT

private slots:
    void standardErrorHasWhatTheLogDoesNot()
    {
        const QString path = m_box.filePath(QStringLiteral("plain.log"));
        const Outcome outcome = run(path, 2, false);
        QCOMPARE(outcome.standardError, QStringLiteral("before the log\nafter the log\n"));
        const QRegularExpression line(QStringLiteral(
            "^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} debug    default in the log\n$"));
        QVERIFY2(line.match(read(path)).hasMatch(), qPrintable(read(path)));
    }

    void echoGoesToStandardErrorToo()
    {
        const QString path = m_box.filePath(QStringLiteral("echo.log"));
        const Outcome outcome = run(path, 2, true);
        QCOMPARE(outcome.standardError,
            QLatin1String("before the log\n") + read(path) + QLatin1String("after the log\n"));
        QVERIFY(read(path).contains(QLatin1String("in the log")));
    }

    void aDirectoryGetsAFileNamedAfterTheProgram()
    {
        run(m_box.path(), 2, false);
        QVERIFY(read(m_box.filePath(QStringLiteral("logprobe.log")))
                    .contains(QLatin1String("in the log")));
        run(m_box.filePath(QStringLiteral("new/deep")), 2, false);
        QVERIFY(QFile::exists(m_box.filePath(QStringLiteral("new/deep/logprobe.log"))));
    }

    void aSecondRunAppends()
    {
        const QString path = m_box.filePath(QStringLiteral("twice.log"));
        run(path, 2, false);
        run(path, 2, false);
        QCOMPARE(read(path).count(QLatin1String("in the log")), 2);
    }

    void aLogThatCannotBeOpenedGoesOnOnStandardError_data()
    {
        QTest::addColumn<QString>("path");
        const QString pipe = m_box.filePath(QStringLiteral("pipe.log"));
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
        QTest::newRow("where not even root may") << QStringLiteral("/proc/ovrel/tool.log");
        QTest::newRow("a pipe nobody reads") << pipe;
        QTest::newRow("a device") << QStringLiteral("/dev/null");
        QTest::newRow("no path") << QString();
    }

    void aLogThatCannotBeOpenedGoesOnOnStandardError()
    {
        QFETCH(QString, path);
        const Outcome outcome = run(path, 2, false);
        QCOMPARE(outcome.status, QProcess::NormalExit);
        QVERIFY2(outcome.standardError.contains(QLatin1String("cannot be opened")),
            qPrintable(outcome.standardError));
        QVERIFY(outcome.standardError.contains(QLatin1String("debug    default in the log\n")));
    }

    void keepsThatManyFullFiles_data()
    {
        QTest::addColumn<int>("keep");
        QTest::newRow("none") << 0;
        QTest::newRow("two") << 2;
    }

    void keepsThatManyFullFiles()
    {
        QFETCH(int, keep);
        const QTemporaryDir box;
        run(box.filePath(QStringLiteral("tool.log")), keep, false, QStringLiteral("300000"));
        QStringList names = {QStringLiteral("tool.log")};
        for (int i = 1; i <= keep; ++i)
            names << QStringLiteral("tool.%1.log").arg(i);
        names.sort();
        QCOMPARE(QDir(box.path()).entryList(QDir::Files, QDir::Name), names);
        QVERIFY(
            read(box.filePath(QStringLiteral("tool.log"))).contains(QLatin1String("line 299999 ")));
    }

    void aKilledProgramLosesNoLine()
    {
        const QString path = m_box.filePath(QStringLiteral("killed.log"));
        QCOMPARE(run(path, 2, false, QStringLiteral("abort")).status, QProcess::CrashExit);
        QVERIFY(read(path).contains(QLatin1String("in the log\n")));
    }

    void aFatalMessageIsInTheLog()
    {
        const QString path = m_box.filePath(QStringLiteral("fatal.log"));
        QCOMPARE(run(path, 2, false, QStringLiteral("fatal")).status, QProcess::CrashExit);
        QVERIFY(read(path).contains(QLatin1String("critical default the end\n")));
    }

    void aFullDiskDoesNotStopTheProgram()
    {
        // A limit on the file's size stands in for a full disk: writes fail the same way.
        QProcess process;
        const QString path = m_box.filePath(QStringLiteral("full.log"));
        process.start(QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"), QStringLiteral("trap '' XFSZ; ulimit -f 8; exec \"$0\" \"$@\""),
                QStringLiteral(PROBE), path, QStringLiteral("2"), QStringLiteral("0"),
                QStringLiteral("2000")});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        const QString said = QString::fromUtf8(process.readAllStandardError());
        const int complaint = said.indexOf(QLatin1String("LOG ERROR"));
        QVERIFY2(complaint >= 0, qPrintable(said));
        // A program that counts what it reaches cannot write that either, and says so at its end.
        QVERIFY2(said.indexOf(QLatin1String("\nafter the log\n")) > complaint, qPrintable(said));
    }

private:
    QTemporaryDir m_box;
};

QTEST_GUILESS_MAIN(TestLogProcess)
#include "tst_logprocess.moc"
