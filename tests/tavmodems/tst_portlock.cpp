#include "fulldisk.h"
#include "portholder.h"
#include "portlock.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

class TestPortLock : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void namesDevices_data();
    void namesDevices();
    void namesALinkAndWhatItPointsTo();
    void writesTheNumberInTenCharacters();
    void givesBackOnUnlockAndDestruction();
    void leavesNothingElseBehind();
    void isHeldByALivingProcess_data();
    void isHeldByALivingProcess();
    void isHeldByAnotherLockOfThisProcess();
    void takesOverWhatNobodyHolds_data();
    void takesOverWhatNobodyHolds();
    void waitsForAFreshLockToBeWritten();
    void canBeReadByAllWhateverTheMask();
    void leavesALockThatItMayNotRead();
    void goesOnBesideALockThatItMayNotRemove();
    void locksAllNamesOrNone();
    void doesNotFollowLinks();
    void doesNotWaitForAPipe();
    void goesOnWithoutADirectory();
    void goesOnWithoutRoomOnTheDisk();
    void leavesALockThatIsNotItsOwn();
    void onlyOneOfManyGetsIt();
    void findsTheProcessThatHasADeviceOpen();

private:
    QString file(const QString &name) const { return m_directory->filePath(name); }
    void shareDirectory();
    void write(const QString &name, const QByteArray &content, int age = 0) const;
    QByteArray read(const QString &name) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

namespace {

const QString DEVICE = QStringLiteral("/dev/ttyUSB0");
const QString LOCK = QStringLiteral("LCK..ttyUSB0");

// The number of a process that has ended.
qint64 deadPid()
{
    const pid_t pid = ::fork();
    if (pid == 0)
        ::_exit(0);
    ::waitpid(pid, nullptr, 0);
    return pid;
}

QByteArray text(qint64 pid)
{
    return QByteArray::number(pid).rightJustified(10) + '\n';
}

// A living process of another name.
class Sleeper
{
    Q_DISABLE_COPY_MOVE(Sleeper)

public:
    Sleeper()
    {
        m_process.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        if (!m_process.waitForStarted())
            qFatal("no process for the test");
    }
    ~Sleeper()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    qint64 pid() const { return m_process.processId(); }

private:
    QProcess m_process;
};

// Root is somebody else while this lives.
class OrdinaryUser
{
    Q_DISABLE_COPY_MOVE(OrdinaryUser)

public:
    OrdinaryUser()
    {
        constexpr uid_t nobody = 65534;
        if (m_isRoot && ::seteuid(nobody) != 0)
            qFatal("no other user for the test");
    }
    ~OrdinaryUser()
    {
        if (m_isRoot && ::seteuid(0) != 0)
            qFatal("no root any more");
    }

private:
    const bool m_isRoot = ::geteuid() == 0;
};

} // namespace

void TestPortLock::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void TestPortLock::cleanup()
{
    m_directory.reset();
}

// One like /run/lock, where every user gets to.
void TestPortLock::shareDirectory()
{
    m_directory = std::make_unique<QTemporaryDir>(QStringLiteral("/tmp/portlock.XXXXXX"));
    QCOMPARE(::chmod(QFile::encodeName(m_directory->path()).constData(), 01777), 0);
}

void TestPortLock::write(const QString &name, const QByteArray &content, int age) const
{
    QFile lock(file(name));
    QVERIFY(lock.open(QFile::WriteOnly));
    QCOMPARE(lock.write(content), content.size());
    lock.close();
    const timeval time{::time(nullptr) - age, 0};
    const timeval times[2] = {time, time};
    QCOMPARE(::utimes(QFile::encodeName(lock.fileName()).constData(), times), 0);
}

QByteArray TestPortLock::read(const QString &name) const
{
    QFile lock(file(name));
    return lock.open(QFile::ReadOnly) ? lock.readAll() : QByteArray();
}

void TestPortLock::namesDevices_data()
{
    QTest::addColumn<QString>("device");
    QTest::addColumn<QStringList>("expected");
    const auto row = [](const char *device, const QStringList &expected) {
        QTest::newRow(device) << QString::fromLatin1(device) << expected;
    };
    row("/dev/ttyNone0", {QStringLiteral("ttyNone0")});
    row("/dev//ttyNone0", {QStringLiteral("ttyNone0")});
    row("/dev/pts/none", {QStringLiteral("none"), QStringLiteral("pts_none")});
    row("/tmp/none/tty", {QStringLiteral("tty")});
}

void TestPortLock::namesDevices()
{
    QFETCH(QString, device);
    QTEST(PortLock::names(device), "expected");
}

void TestPortLock::namesALinkAndWhatItPointsTo()
{
    QVERIFY(QFile::link(QStringLiteral("/dev/null"), file(QStringLiteral("modem"))));
    QCOMPARE(PortLock::names(file(QStringLiteral("modem"))),
        QStringList({QStringLiteral("modem"), QStringLiteral("null")}));
}

void TestPortLock::writesTheNumberInTenCharacters()
{
    PortLock lock(m_directory->path());
    QVERIFY(lock.lock(DEVICE));
    QCOMPARE(read(LOCK), text(::getpid()));
    QCOMPARE(read(LOCK).size(), 11);
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(file(LOCK)).constData(), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0644U);
}

void TestPortLock::givesBackOnUnlockAndDestruction()
{
    {
        PortLock lock(m_directory->path());
        QVERIFY(lock.lock(DEVICE));
        lock.unlock();
        QVERIFY(!QFile::exists(file(LOCK)));
        QVERIFY(lock.lock(DEVICE));
        QVERIFY(QFile::exists(file(LOCK)));
    }
    QVERIFY(!QFile::exists(file(LOCK)));
}

void TestPortLock::leavesNothingElseBehind()
{
    write(LOCK, text(deadPid()));
    PortLock lock(m_directory->path());
    QVERIFY(lock.lock(DEVICE));
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList(LOCK));
}

void TestPortLock::isHeldByALivingProcess_data()
{
    QTest::addColumn<int>("form");
    QTest::newRow("ten characters") << 0;
    QTest::newRow("no padding, no line end") << 1;
    QTest::newRow("with a name behind") << 2;
    QTest::newRow("binary number") << 3;
}

void TestPortLock::isHeldByALivingProcess()
{
    QFETCH(int, form);
    const Sleeper other;
    const int pid = static_cast<int>(other.pid());
    const QByteArray forms[]
        = {text(pid), QByteArray::number(pid), text(pid).trimmed() + " wvdial uucp\n",
            QByteArray(reinterpret_cast<const char *>(&pid), sizeof pid)};
    write(LOCK, forms[form], 3600);
    PortLock lock(m_directory->path());
    QVERIFY(!lock.lock(DEVICE));
    QCOMPARE(lock.error(), QStringLiteral("sleep (process %1)").arg(pid));
    QCOMPARE(read(LOCK), forms[form]);
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList(LOCK));
}

void TestPortLock::isHeldByAnotherLockOfThisProcess()
{
    PortLock first(m_directory->path());
    QVERIFY(first.lock(DEVICE));
    PortLock second(m_directory->path());
    QVERIFY(!second.lock(DEVICE));
    QCOMPARE(second.error(), QStringLiteral("this program itself"));
    first.unlock();
    QVERIFY(second.lock(DEVICE));
    QCOMPARE(second.error(), QString());
}

void TestPortLock::takesOverWhatNobodyHolds_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("dead process") << text(deadPid());
    QTest::newRow("own number, left by an earlier process") << text(::getpid());
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("garbage") << QByteArray("what is this?\n");
    QTest::newRow("process 0") << text(0);
    QTest::newRow("all processes") << text(-1);
    QTest::newRow("number beyond any process") << QByteArray("99999999999999\n");
    QTest::newRow("number beyond pid_t that ends in a living one") << text(0x100000001LL);
    QTest::newRow("a megabyte") << QByteArray(1 << 20, ' ');
}

void TestPortLock::takesOverWhatNobodyHolds()
{
    QFETCH(QByteArray, content);
    write(LOCK, content, 3600);
    PortLock lock(m_directory->path());
    QVERIFY2(lock.lock(DEVICE), qPrintable(lock.error()));
    QCOMPARE(read(LOCK), text(::getpid()));
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList(LOCK));
}

void TestPortLock::waitsForAFreshLockToBeWritten()
{
    write(LOCK, QByteArray());
    PortLock lock(m_directory->path());
    QVERIFY(!lock.lock(DEVICE));
    QCOMPARE(lock.error(), QStringLiteral("another program"));
}

void TestPortLock::canBeReadByAllWhateverTheMask()
{
    PortLock lock(m_directory->path());
    const mode_t before = ::umask(077);
    const bool isLocked = lock.lock(DEVICE);
    ::umask(before);
    QVERIFY(isLocked);
    struct stat status = {};
    QCOMPARE(::stat(QFile::encodeName(file(LOCK)).constData(), &status), 0);
    QCOMPARE(status.st_mode & ACCESSPERMS, mode_t(0644));
}

void TestPortLock::leavesALockThatItMayNotRead()
{
    shareDirectory();
    write(LOCK, text(deadPid()), 3600);
    QCOMPARE(::chmod(QFile::encodeName(file(LOCK)).constData(), 0), 0);
    const OrdinaryUser user;
    PortLock lock(m_directory->path());
    QVERIFY(!lock.lock(DEVICE));
    QCOMPARE(lock.error(), QStringLiteral("another program"));
}

void TestPortLock::goesOnBesideALockThatItMayNotRemove()
{
    if (::geteuid() != 0)
        QSKIP("It takes root to leave a file of another user.");
    shareDirectory();
    const QByteArray left = text(deadPid());
    write(LOCK, left, 3600);
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^No lock file .*/LCK\\.\\.ttyUSB0: Operation not "
                                          "permitted\\. Other programs do not see")));
    {
        const OrdinaryUser user;
        PortLock lock(m_directory->path());
        QVERIFY(lock.lock(DEVICE));
    }
    QCOMPARE(read(LOCK), left);
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList(LOCK));
}

void TestPortLock::locksAllNamesOrNone()
{
    const Sleeper other;
    write(QStringLiteral("LCK..pts_none"), text(other.pid()));
    PortLock lock(m_directory->path());
    QVERIFY(!lock.lock(QStringLiteral("/dev/pts/none")));
    QVERIFY(!QFile::exists(file(QStringLiteral("LCK..none"))));
    QFile::remove(file(QStringLiteral("LCK..pts_none")));
    QVERIFY(lock.lock(QStringLiteral("/dev/pts/none")));
    QVERIFY(QFile::exists(file(QStringLiteral("LCK..none"))));
    QVERIFY(QFile::exists(file(QStringLiteral("LCK..pts_none"))));
}

void TestPortLock::doesNotFollowLinks()
{
    write(QStringLiteral("precious"), QByteArray("data"));
    QVERIFY(QFile::link(file(QStringLiteral("precious")), file(LOCK)));
    {
        PortLock lock(m_directory->path());
        QVERIFY(lock.lock(DEVICE)); // a link is no lock
        QVERIFY(!QFileInfo(file(LOCK)).isSymLink());
    }
    QCOMPARE(read(QStringLiteral("precious")), QByteArray("data"));
}

void TestPortLock::doesNotWaitForAPipe()
{
    QCOMPARE(::mkfifo(QFile::encodeName(file(LOCK)).constData(), 0666), 0);
    PortLock lock(m_directory->path());
    QVERIFY(lock.lock(DEVICE));
    QCOMPARE(read(LOCK), text(::getpid()));
}

void TestPortLock::goesOnWithoutADirectory()
{
    PortLock lock(file(QStringLiteral("missing")));
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^No lock file .*/missing/LCK\\.\\.ttyUSB0: No such file "
                                          "or directory\\. Other programs do not see")));
    QVERIFY(lock.lock(DEVICE));
    lock.unlock();
}

void TestPortLock::goesOnWithoutRoomOnTheDisk()
{
    PortLock lock(m_directory->path());
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^No lock file .*/LCK\\.\\.ttyUSB0: File too large\\. "
                                          "Other programs do not see")));
    {
        const FullDisk disk(0);
        QVERIFY(lock.lock(DEVICE));
    }
    QCOMPARE(QDir(m_directory->path()).entryList(QDir::Files), QStringList()); // nor half of one
}

void TestPortLock::leavesALockThatIsNotItsOwn()
{
    const Sleeper other;
    PortLock lock(m_directory->path());
    QVERIFY(lock.lock(DEVICE));
    write(LOCK, text(other.pid()));
    lock.unlock();
    QCOMPARE(read(LOCK), text(other.pid()));
}

void TestPortLock::onlyOneOfManyGetsIt()
{
    for (int round = 0; round < 50; ++round) {
        write(LOCK, text(deadPid()));
        std::atomic<int> winners{0};
        std::array<PortLock, 4> locks{PortLock(m_directory->path()), PortLock(m_directory->path()),
            PortLock(m_directory->path()), PortLock(m_directory->path())};
        std::array<std::thread, 4> threads;
        for (size_t i = 0; i < locks.size(); ++i)
            threads[i] = std::thread(
                [&winners, &lock = locks[i]] { winners += lock.lock(DEVICE) ? 1 : 0; });
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(winners.load(), 1);
    }
}

void TestPortLock::findsTheProcessThatHasADeviceOpen()
{
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    QVERIFY(master >= 0 && ::grantpt(master) == 0 && ::unlockpt(master) == 0);
    char name[64] = {};
    QCOMPARE(::ptsname_r(master, name, sizeof name), 0);
    const QString device = QFile::decodeName(name);
    QCOMPARE(portholder::find(device), QString());
    {
        QProcess other;
        other.setStandardInputFile(device);
        other.start(QStringLiteral("sleep"), {QStringLiteral("60")});
        QVERIFY(other.waitForStarted());
        QCOMPARE(
            portholder::find(device), QStringLiteral("sleep (process %1)").arg(other.processId()));
        other.kill();
        other.waitForFinished();
    }
    QCOMPARE(portholder::find(device), QString());
    QCOMPARE(portholder::find(QStringLiteral("/dev/none")), QString());
    ::close(master);
}

QTEST_APPLESS_MAIN(TestPortLock)

#include "tst_portlock.moc"
