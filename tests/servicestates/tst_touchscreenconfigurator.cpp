#include "touchscreenconfigurator.h"

#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

class TestTouchScreenConfigurator : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_box = std::make_unique<QTemporaryDir>(); }

    void runsTheCommandWithItsArgumentsAndNoShell()
    {
        const QString script = writeScript("printf '%s|' \"$@\" > \"$0.out\"\n");
        configure(script + QStringLiteral(" --off \\\"main panel\\\" $HOME ;ls"));
        QVERIFY(TouchScreenConfigurator().stopTouches());
        QFile out(script + QStringLiteral(".out"));
        QVERIFY(out.open(QIODevice::ReadOnly));
        QCOMPARE(out.readAll(), QByteArray("--off|main panel|$HOME|;ls|"));
    }

    void withoutACommandNothingRuns()
    {
        configure(QString());
        QTest::ignoreMessage(
            QtInfoMsg, "No touch/stopCommand is configured: the touch screen is left as it is");
        QVERIFY(!TouchScreenConfigurator().stopTouches());
    }

    void saysWhyItFailed_data()
    {
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("complaint");
        QTest::newRow("fails") << QByteArray("echo no panel >&2; exit 3\n")
                               << QStringLiteral("status 3 no panel");
        QTest::newRow("crashes") << QByteArray("kill -9 $$\n") << QStringLiteral("status 9");
        QTest::newRow("is not there") << QByteArray() << QStringLiteral("No such file");
    }

    void saysWhyItFailed()
    {
        QFETCH(QByteArray, script);
        QFETCH(QString, complaint);
        configure(script.isEmpty() ? m_box->filePath(QStringLiteral("none")) : writeScript(script));
        QTest::ignoreMessage(QtWarningMsg,
            QRegularExpression(
                QLatin1String("^The touch screen's command failed: .*") + complaint));
        QVERIFY(!TouchScreenConfigurator().stopTouches());
    }

    void aCommandThatHangsIsKilled()
    {
        const QString script = writeScript("echo $$ > \"$0.pid\"\nexec sleep 1000\n");
        configure(script);
        QElapsedTimer clock;
        clock.start();
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(QStringLiteral("command failed: .*timed out")));
        QVERIFY(!TouchScreenConfigurator(std::chrono::milliseconds(300)).stopTouches());
        QVERIFY(clock.elapsed() < 20'000);
        QFile pid(script + QStringLiteral(".pid"));
        QVERIFY(pid.open(QIODevice::ReadOnly));
        QVERIFY(!QFile::exists(
            QStringLiteral("/proc/") + QString::fromLatin1(pid.readAll().trimmed())));
    }

    void aCommandThatReadsItsInputMeetsItsEnd()
    {
        configure(writeScript("read line && exit 1 || exit 0\n"));
        QVERIFY(TouchScreenConfigurator().stopTouches());
    }

private:
    QString writeScript(const QByteArray &body)
    {
        QString path = m_box->filePath(QStringLiteral("touchctl"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write("#!/bin/sh\n" + body) < 0)
            qFatal("the test's own script cannot be written");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path;
    }

    void configure(const QString &command)
    {
        QFile file(m_box->filePath(QStringLiteral("terminal.conf")));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("the test's own configuration cannot be written");
        file.write("[touch]\nstopCommand=\"" + command.toUtf8() + "\"\n");
        qputenv("TAV_TERMINAL_CONF", QFile::encodeName(file.fileName()));
    }

    std::unique_ptr<QTemporaryDir> m_box;
};

QTEST_GUILESS_MAIN(TestTouchScreenConfigurator)
#include "tst_touchscreenconfigurator.moc"
