#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <unistd.h>

/// Who may not write the terminal's own directories gets some that the user can.
class TestConfigDirectories : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // Where the program was built may be closed to other users.
        QVERIFY(QFile::setPermissions(m_open.path(), QFile::Permissions(0x7755)));
        QVERIFY(QFile::copy(QStringLiteral(PROBE), m_open.filePath(QStringLiteral("probe"))));
    }

    void init()
    {
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(QStringLiteral("TAV_TERMINAL_CONF"), QStringLiteral("/nonexistent"));
        m_environment.insert(QStringLiteral("HOME"), QStringLiteral("/home/somebody"));
        m_environment.remove(QStringLiteral("XDG_DATA_HOME"));
        m_environment.remove(QStringLiteral("XDG_STATE_HOME"));
    }

    void areInTheHomeDirectory()
    {
        QCOMPARE(directories(),
            QStringList({QStringLiteral("/home/somebody/.local/share/ovrel"),
                QStringLiteral("/home/somebody/.local/state/ovrel"),
                QStringLiteral("/home/somebody/.local/share/ovrel/versions")}));
    }

    void followTheXdgVariables()
    {
        m_environment.insert(QStringLiteral("XDG_DATA_HOME"), QStringLiteral("/data"));
        m_environment.insert(QStringLiteral("XDG_STATE_HOME"), QStringLiteral("/state"));
        QCOMPARE(directories(),
            QStringList({QStringLiteral("/data/ovrel"), QStringLiteral("/state/ovrel"),
                QStringLiteral("/data/ovrel/versions")}));
    }

    void aRelativeStateDirectoryIsNone()
    {
        m_environment.insert(QStringLiteral("XDG_STATE_HOME"), QStringLiteral("state"));
        QCOMPARE(directories().value(1), QStringLiteral("/home/somebody/.local/state/ovrel"));
    }

private:
    /// What the configuration's defaults are for a user without any rights of their own.
    QStringList directories() const
    {
        QStringList command;
        if (geteuid() == 0) {
            command << QStringLiteral("setpriv") << QStringLiteral("--reuid=65534")
                    << QStringLiteral("--regid=65534") << QStringLiteral("--clear-groups");
        }
        command << m_open.filePath(QStringLiteral("probe"));

        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(command.takeFirst(), command);
        if (!process.waitForFinished() || process.exitCode() != 0)
            qFatal("the probe fails: %s", process.readAllStandardError().constData());
        return QString::fromUtf8(process.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

    QTemporaryDir m_open{QStringLiteral("/tmp/tav.XXXXXX")};
    QProcessEnvironment m_environment;
};

QTEST_GUILESS_MAIN(TestConfigDirectories)
#include "tst_configdirectories.moc"
