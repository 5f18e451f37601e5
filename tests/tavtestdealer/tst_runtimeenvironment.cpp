#include "runtimeenvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace {

mode_t modeOf(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
}

void setMode(const QString &path, mode_t mode)
{
    QCOMPARE(::chmod(QFile::encodeName(path).constData(), mode), 0);
}

const QString none = QStringLiteral("/nowhere/at/all");

} // namespace

class RuntimeEnvironmentTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_box = std::make_unique<QTemporaryDir>();
        QVERIFY(m_box->isValid());
        m_runtime = m_box->filePath(QStringLiteral("run"));
        m_shared = m_box->filePath(QStringLiteral("shared"));
        QVERIFY(QDir().mkdir(m_runtime));
        QVERIFY(QDir().mkdir(m_shared));
        setMode(m_runtime, 0700);
        qputenv("XDG_RUNTIME_DIR", QFile::encodeName(m_runtime));
    }

    void cleanup() { qputenv("TMPDIR", m_temporary); } // prepare() has left the box's in there

    void sharedDirectoryIsTakenWhenOthersCannotWriteToIt()
    {
        setMode(m_shared, 02770);
        QCOMPARE(RuntimeEnvironment::privateTempDir(m_shared), m_shared);
        QCOMPARE(modeOf(m_shared), mode_t(02770));
    }

    void sharedDirectoryThatAnybodyWritesToIsNotTaken()
    {
        setMode(m_shared, 01777);
        QCOMPARE(
            RuntimeEnvironment::privateTempDir(m_shared), m_runtime + QStringLiteral("/ovrel"));
    }

    void linkIsNotTakenForTheSharedDirectory()
    {
        const QString link = m_box->filePath(QStringLiteral("link"));
        QVERIFY(QFile::link(m_shared, link));
        QCOMPARE(RuntimeEnvironment::privateTempDir(link), m_runtime + QStringLiteral("/ovrel"));
    }

    void ownDirectoryIsClosedToOthers()
    {
        const QString own = RuntimeEnvironment::privateTempDir(none);
        QCOMPARE(own, m_runtime + QStringLiteral("/ovrel"));
        QCOMPARE(modeOf(own), mode_t(0700));
        // The next start finds it again.
        QCOMPARE(RuntimeEnvironment::privateTempDir(none), own);
    }

    void ownDirectoryThatWasLeftOpenIsClosed()
    {
        QVERIFY(QDir().mkdir(m_runtime + QStringLiteral("/ovrel")));
        setMode(m_runtime + QStringLiteral("/ovrel"), 0750);
        QCOMPARE(modeOf(RuntimeEnvironment::privateTempDir(none)), mode_t(0700));
    }

    void withoutARuntimeDirectoryThereIsStillAPrivateOne()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        const QString own = RuntimeEnvironment::privateTempDir(none);
        QVERIFY(own.startsWith(QDir::tempPath() + QStringLiteral("/ovrel-")));
        QCOMPARE(modeOf(own), mode_t(0700));
    }

    void nameTakenBySomebodyElseIsPassedOver()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        const QString taken = QDir::tempPath() + QStringLiteral("/ovrel-%1").arg(geteuid());
        QVERIFY(QDir(taken).removeRecursively());
        QVERIFY(QFile::link(m_shared, taken));
        const QString own = RuntimeEnvironment::privateTempDir(none);
        QVERIFY(own != taken);
        QCOMPARE(modeOf(own), mode_t(0700));
        QVERIFY(QFileInfo(own).isDir() && !QFileInfo(own).isSymLink());
        QVERIFY(QDir(m_shared).isEmpty());
        QVERIFY(QFile::remove(taken));
    }

    void prepareSetsTheVariables()
    {
        qunsetenv("LD_BIND_NOW");
        qunsetenv("QT_XCB_GL_INTEGRATION");
        RuntimeEnvironment::prepare();
        QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("none"));
        QCOMPARE(qgetenv("LD_BIND_NOW"), QByteArray("1"));
        QCOMPARE(QDir::tempPath(), RuntimeEnvironment::privateTempDir());
        QVERIFY(modeOf(QDir::tempPath()) != 0 && (modeOf(QDir::tempPath()) & S_IWOTH) == 0);
    }

    void anIntegrationOfOpenGlThatSomebodyChoseIsKept()
    {
        qputenv("QT_XCB_GL_INTEGRATION", "xcb_egl");
        RuntimeEnvironment::prepare();
        QCOMPARE(qgetenv("QT_XCB_GL_INTEGRATION"), QByteArray("xcb_egl"));
    }

private:
    const QByteArray m_temporary = qgetenv("TMPDIR");
    std::unique_ptr<QTemporaryDir> m_box;
    QString m_runtime;
    QString m_shared;
};

QTEST_GUILESS_MAIN(RuntimeEnvironmentTest)
#include "tst_runtimeenvironment.moc"
