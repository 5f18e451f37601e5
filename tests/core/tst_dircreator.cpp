#include "dircreator.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

namespace {

int modeOf(const QString &path)
{
    struct stat status = {};
    return stat(QFile::encodeName(path).constData(), &status) == 0
        ? static_cast<int>(status.st_mode & 07777)
        : -1;
}

} // namespace

class TestDirCreator : public QObject
{
    Q_OBJECT

private slots:
    void createsWhatIsMissing()
    {
        const mode_t umaskBefore = umask(077);
        const QString path = m_box.filePath(QStringLiteral("a/b/c"));
        const bool created = DirCreator::checkAndCreate(path, DirCreator::DEFAULT_ALL);
        umask(umaskBefore);
        QVERIFY(created);
        for (const char *part : {"a", "a/b", "a/b/c"})
            QCOMPARE(modeOf(m_box.filePath(QString::fromLatin1(part))), 0775);
    }

    void leavesWhatIsThere()
    {
        const QString path = m_box.filePath(QStringLiteral("mine"));
        QVERIFY(QDir().mkdir(path));
        QVERIFY(
            QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        QVERIFY(DirCreator::checkAndCreate(path + QLatin1Char('/'), DirCreator::DEFAULT_ALL));
        QCOMPARE(modeOf(path), 0700);
    }

    void whatIsCreatedInAGroupsDirectoryStaysTheGroups()
    {
        const QString path = m_box.filePath(QStringLiteral("shared"));
        QVERIFY(QDir().mkdir(path));
        QCOMPARE(chmod(QFile::encodeName(path).constData(), 02770), 0);
        QVERIFY(DirCreator::checkAndCreate(path + QLatin1String("/a/b"), DirCreator::DEFAULT_ALL));
        QCOMPARE(modeOf(path + QLatin1String("/a")), 02775);
        QCOMPARE(modeOf(path + QLatin1String("/a/b")), 02775);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("path");
        QFile file(m_box.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QFile::link(QStringLiteral("/nowhere"), m_box.filePath(QStringLiteral("dead"))));
        QTest::newRow("no path") << QString();
        QTest::newRow("a file in its place") << file.fileName();
        QTest::newRow("a file in the way") << file.fileName() + QLatin1String("/below");
        QTest::newRow("a link to nothing") << m_box.filePath(QStringLiteral("dead"));
        QTest::newRow("where not even root may") << QStringLiteral("/proc/ovrel");
    }

    void refuses()
    {
        QFETCH(QString, path);
        QVERIFY(!DirCreator::checkAndCreate(path, DirCreator::DEFAULT_ALL));
    }

    void followsALinkToADirectory()
    {
        const QString link = m_box.filePath(QStringLiteral("link"));
        QVERIFY(QFile::link(m_box.path(), link));
        QVERIFY(
            DirCreator::checkAndCreate(link + QLatin1String("/linked"), DirCreator::DEFAULT_ALL));
        QVERIFY(QFileInfo(m_box.filePath(QStringLiteral("linked"))).isDir());
    }

private:
    QTemporaryDir m_box;
};

QTEST_APPLESS_MAIN(TestDirCreator)
#include "tst_dircreator.moc"
