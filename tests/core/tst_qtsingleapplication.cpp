#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QByteArray kFirst = "first\n";
const QByteArray kAnotherRuns = "another runs\n";

/// One running instance; ends with the object.
class Instance
{
    Q_DISABLE_COPY_MOVE(Instance)

public:
    explicit Instance(const QProcessEnvironment &environment, const QStringList &arguments = {})
    {
        m_process.setProcessEnvironment(environment);
        m_process.start(QStringLiteral(PROBE), arguments);
    }
    // Not by a kill, which leaves no count of what was reached.
    ~Instance() { end(); }

    QByteArray answer()
    {
        while (!m_process.canReadLine()) {
            if (!m_process.waitForReadyRead(20'000))
                return m_process.readAllStandardError();
        }
        return m_process.readLine();
    }

    QByteArray askAgain()
    {
        m_process.write("\n");
        return answer();
    }

    void end()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    void crash()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    QByteArray complaints() { return m_process.readAllStandardError(); }

private:
    QProcess m_process;
};

} // namespace

class TestQtSingleApplication : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_box = std::make_unique<QTemporaryDir>();
        m_environment = QProcessEnvironment::systemEnvironment();
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_box->path());
    }

    void theSecondInstanceKnows()
    {
        Instance first(m_environment);
        QCOMPARE(first.answer(), kFirst);
        Instance second(m_environment);
        QCOMPARE(second.answer(), kAnotherRuns);
        QCOMPARE(first.askAgain(), kFirst);
        QCOMPARE(second.askAgain(), kAnotherRuns);
    }

    void whoWaitsTakesOverWhenTheFirstHasEnded()
    {
        Instance first(m_environment);
        QCOMPARE(first.answer(), kFirst);
        Instance second(m_environment);
        QCOMPARE(second.answer(), kAnotherRuns);
        first.end();
        QCOMPARE(second.askAgain(), kFirst);
    }

    void aCrashedInstanceDoesNotBlock()
    {
        crashOne();
        Instance next(m_environment);
        QCOMPARE(next.answer(), kFirst);
    }

    void aProcessIdThatAnotherProgramHasGotDoesNotBlock()
    {
        crashOne();
        replaceProcessId(QCoreApplication::applicationPid());
        Instance next(m_environment);
        QCOMPARE(next.answer(), kFirst);
    }

    void aProcessIdThatACopyOfTheProgramHasGotDoesNotBlock()
    {
        crashOne();
        const QString copy = m_box->filePath(QStringLiteral("copy/singleprobe"));
        QVERIFY(QDir().mkdir(QFileInfo(copy).path()));
        QVERIFY(QFile::copy(QStringLiteral(PROBE), copy));
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start(copy, QStringList());
        QVERIFY(process.waitForReadyRead(20'000));
        QCOMPARE(process.readLine(), kFirst); // another path: another program
        replaceProcessId(process.processId());

        Instance next(m_environment);
        QCOMPARE(next.answer(), kFirst);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished());
    }

    void aLockFileLeftEmptyDoesNotBlock()
    {
        crashOne();
        QFile file(lockFile());
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.close();
        Instance next(m_environment);
        QCOMPARE(next.answer(), kFirst);
    }

    void withoutARunTimeDirectoryTheTemporaryOneHasAPrivatePart_data()
    {
        QTest::addColumn<QString>("runTime");
        QTest::newRow("not set") << QString();
        QTest::newRow("gone") << QStringLiteral("/nonexistent/run");
        QTest::newRow("relative") << QStringLiteral("run");
        QTest::newRow("somebody else's")
            << (geteuid() == 0 ? foreignDirectory() : QStringLiteral("/"));
    }

    void withoutARunTimeDirectoryTheTemporaryOneHasAPrivatePart()
    {
        QFETCH(QString, runTime);
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runTime);
        m_environment.insert(QStringLiteral("TMPDIR"), m_box->path());
        Instance first(m_environment);
        QCOMPARE(first.answer(), kFirst);
        Instance second(m_environment);
        QCOMPARE(second.answer(), kAnotherRuns);

        struct stat status = {};
        QCOMPARE(stat(QFile::encodeName(fallback()).constData(), &status), 0);
        QCOMPARE(static_cast<int>(status.st_mode & 07777), 0700);
    }

    void theLockStaysWhereItIsWhateverTheTemporaryDirectoryBecomes()
    {
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString());
        m_environment.insert(QStringLiteral("TMPDIR"), m_box->path());
        const QStringList ownTemporary(QStringLiteral("own temporary directory"));
        const auto directories = [this] {
            return QDir(m_box->path()).entryList({QStringLiteral("ovrel-*")}, QDir::Dirs).size();
        };
        Instance first(m_environment, ownTemporary);
        QCOMPARE(first.answer(), kFirst);
        Instance second(m_environment, ownTemporary);
        QCOMPARE(second.answer(), kAnotherRuns);
        Instance third(m_environment);
        QCOMPARE(third.answer(), kAnotherRuns);
        // One of each that made one, and that of the lock.
        QCOMPARE(directories(), 3);
        first.end();
        second.end();
        QCOMPARE(directories(), 1);
    }

    void withNoPlaceForALockTheProgramStartsAndSaysSo()
    {
        m_environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), QString());
        m_environment.insert(QStringLiteral("TMPDIR"), m_box->path());
        // A link that somebody laid where our directory should be.
        QVERIFY(QFile::link(QStringLiteral("/"), fallback()));
        Instance instance(m_environment);
        QCOMPARE(instance.answer(), kFirst);
        QVERIFY(instance.complaints().contains("No lock file"));
    }

    void ofManyAtOnceOneIsTheFirst()
    {
        std::vector<std::unique_ptr<Instance>> instances;
        instances.reserve(8);
        for (int i = 0; i < 8; ++i)
            instances.push_back(std::make_unique<Instance>(m_environment));
        int firsts = 0;
        for (const auto &instance : instances) {
            const QByteArray answer = instance->answer();
            QVERIFY2(answer == kFirst || answer == kAnotherRuns, answer.constData());
            firsts += answer == kFirst ? 1 : 0;
        }
        QCOMPARE(firsts, 1);
    }

private:
    void crashOne()
    {
        Instance instance(m_environment);
        QCOMPARE(instance.answer(), kFirst);
        instance.crash();
        QVERIFY(QFile::exists(lockFile()));
    }

    QString lockFile() const
    {
        return m_box->filePath(QDir(m_box->path())
                                   .entryList({QStringLiteral("singleprobe-*.lock")}, QDir::Files)
                                   .value(0));
    }

    /// The lock file's first line is the holder's process id.
    void replaceProcessId(qint64 pid)
    {
        QFile file(lockFile());
        QVERIFY(file.open(QIODevice::ReadWrite));
        file.readLine();
        const QByteArray rest = file.readAll();
        QVERIFY(file.resize(0) && file.seek(0));
        file.write(QByteArray::number(pid) + '\n' + rest);
    }

    QString fallback() const { return m_box->filePath(QStringLiteral("ovrel-%1").arg(geteuid())); }

    QString foreignDirectory()
    {
        const QString path = m_shared.filePath(QStringLiteral("foreign"));
        const bool isMade
            = QDir().mkdir(path) && chown(QFile::encodeName(path).constData(), 65534, 65534) == 0;
        return isMade ? path : QString();
    }

    QTemporaryDir m_shared;
    std::unique_ptr<QTemporaryDir> m_box;
    QProcessEnvironment m_environment;
};

QTEST_GUILESS_MAIN(TestQtSingleApplication)
#include "tst_qtsingleapplication.moc"
