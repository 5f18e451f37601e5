#include "qtsingleapplication.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// How long another instance may take from creating the lock file to having written it.
constexpr int kWritingTime = 1000; // ms

/// XDG_RUNTIME_DIR where it is usable, else (su keeps another user's) a private directory under the
/// temporary one; empty when somebody else sits on that name.
QString runtimeDirectory()
{
    QString given = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QFileInfo info(given);
    if (QDir::isAbsolutePath(given) && info.isDir() && info.ownerId() == geteuid()
        && info.isWritable())
        return given;

    QString own = QDir::tempPath() + QStringLiteral("/ovrel-%1").arg(geteuid());
    const QByteArray name = QFile::encodeName(own);
    struct stat status = {};
    if (mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST)
        return {};
    // No link followed: the name lies in a directory that everybody writes to.
    if (lstat(name.constData(), &status) != 0 || !S_ISDIR(status.st_mode)
        || status.st_uid != geteuid() || chmod(name.constData(), S_IRWXU) != 0)
        return {};
    return own;
}

QString lockName()
{
    const QString program = QCoreApplication::applicationFilePath();
    const QByteArray id = QCryptographicHash::hash(program.toUtf8(), QCryptographicHash::Sha256);
    return QStringLiteral("/%1-%2.lock")
        .arg(QFileInfo(program).fileName(), QString::fromLatin1(id.toHex().left(16)));
}

} // namespace

QtSingleApplication::QtSingleApplication(int &argc, char **argv, bool gui)
    : QApplication(argc, argv)
{
    Q_UNUSED(gui)
    const QString directory = runtimeDirectory();
    if (directory.isEmpty())
        return;
    m_lock = std::make_unique<QLockFile>(directory + lockName());
    m_lock->setStaleLockTime(0); // an instance may run for weeks
    takeLock();
}

QtSingleApplication::~QtSingleApplication() = default;

bool QtSingleApplication::isRunning()
{
    if (takeLock())
        return false;
    if (m_lock && m_lock->error() == QLockFile::LockFailedError)
        return true;
    qWarning("No lock file can be made in the run-time directory: "
             "a second instance of the program would go unnoticed");
    return false;
}

bool QtSingleApplication::takeLock()
{
    if (!m_lock)
        return false;
    if (m_lock->isLocked() || m_lock->tryLock(0))
        return true;
    if (m_lock->error() != QLockFile::LockFailedError)
        return false;

    // QLockFile judges by process id and program name, which another copy of this program may have
    // got since. Removal judges by the kernel's lock, which only a living holder has; but a file
    // that says nothing yet may belong to an instance just about to lock it.
    qint64 pid = 0;
    QString host;
    QString program;
    if (!m_lock->getLockInfo(&pid, &host, &program) && m_lock->tryLock(kWritingTime))
        return true;
    return m_lock->removeStaleLockFile() && m_lock->tryLock(0);
}
