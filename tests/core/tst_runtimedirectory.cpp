#include "runtimedirectory.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <sys/stat.h>

using Owner = RuntimeDirectory::Owner;

class TestRuntimeDirectory : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_box = std::make_unique<QTemporaryDir>(); }

    void onlyADirectoryThatOthersCannotWriteToIsSafe_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("isSafe");
        QTest::newRow("private") << 0700 << true;
        QTest::newRow("readable") << 0755 << true;
        QTest::newRow("the group's") << 0770 << true;
        QTest::newRow("everybody's") << 0777 << false;
        QTest::newRow("everybody's, sticky") << 01777 << false;
    }

    void onlyADirectoryThatOthersCannotWriteToIsSafe()
    {
        QFETCH(int, mode);
        QFETCH(bool, isSafe);
        const QString path = m_box->filePath(QStringLiteral("directory"));
        QVERIFY(QDir().mkdir(path));
        QCOMPARE(chmod(QFile::encodeName(path).constData(), mode_t(mode)), 0);
        QCOMPARE(RuntimeDirectory::isSafe(path, Owner::Self), isSafe);
    }

    void whatIsNoDirectoryIsNotSafe()
    {
        const QString link = m_box->filePath(QStringLiteral("link"));
        const QString file = m_box->filePath(QStringLiteral("file"));
        QVERIFY(QFile::link(m_box->path(), link));
        QVERIFY(QFile(file).open(QIODevice::WriteOnly));
        for (const QString &path : {link, file, m_box->filePath(QStringLiteral("missing"))}) {
            QVERIFY(!RuntimeDirectory::isSafe(path, Owner::Self));
            QVERIFY(!RuntimeDirectory::isSafe(path, Owner::SelfOrRoot));
        }
    }

    void ownIsMadeOrClosedButNeverTakenOver()
    {
        const QString fresh = m_box->filePath(QStringLiteral("fresh"));
        QCOMPARE(RuntimeDirectory::own(fresh), fresh);
        QCOMPARE(modeOf(fresh), mode_t(0700));
        QCOMPARE(chmod(QFile::encodeName(fresh).constData(), 0750), 0);
        QCOMPARE(RuntimeDirectory::own(fresh), fresh);
        QCOMPARE(modeOf(fresh), mode_t(0700));
        const QString link = m_box->filePath(QStringLiteral("link"));
        QVERIFY(QFile::link(fresh, link));
        QCOMPARE(RuntimeDirectory::own(link), QString());
        QCOMPARE(RuntimeDirectory::own(QStringLiteral("/nonexistent/directory")), QString());
    }

    void theLastResortIsOnePrivateDirectoryAProcess()
    {
        const QString directory = RuntimeDirectory::lastResort();
        QVERIFY(QFileInfo(directory).isDir());
        QCOMPARE(modeOf(directory), mode_t(0700));
        QCOMPARE(RuntimeDirectory::lastResort(), directory);
    }

    void pathDoesNotFollowTheTemporaryDirectory()
    {
        qunsetenv("XDG_RUNTIME_DIR");
        const QString before = RuntimeDirectory::path();
        QVERIFY(before.startsWith(QDir::tempPath() + QStringLiteral("/ovrel-")));
        RuntimeDirectory::setTemporary(m_box->path());
        QCOMPARE(QDir::tempPath(), m_box->path());
        QCOMPARE(RuntimeDirectory::path(), before);
    }

private:
    static mode_t modeOf(const QString &path)
    {
        struct stat status = {};
        return stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    std::unique_ptr<QTemporaryDir> m_box;
};

QTEST_APPLESS_MAIN(TestRuntimeDirectory)
#include "tst_runtimedirectory.moc"
