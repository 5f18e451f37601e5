#include "qtsingleapplication.h"

#include "runtimedirectory.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QFileInfo>

namespace {

// How long another instance may take from creating the lock file to having written it.
constexpr int kWritingTime = 1000; // ms

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
    const QString directory = RuntimeDirectory::path();
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
