#include "runtimeenvironment.h"

#include <QDebug>
#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// No link is followed anywhere here: a name may lie in a directory that everybody writes to.
bool isSafe(const QByteArray &path, bool rootMayOwn)
{
    struct stat status = {};
    if (lstat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return false;
    const bool isOwned = status.st_uid == geteuid() || (rootMayOwn && status.st_uid == 0);
    return isOwned && (status.st_mode & S_IWOTH) == 0 && access(path.constData(), W_OK | X_OK) == 0;
}

QString ownDirectory(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    if (mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST)
        return QString();
    if (!isSafe(name, false) || chmod(name.constData(), S_IRWXU) != 0)
        return QString();
    return path;
}

} // namespace

void RuntimeEnvironment::prepare()
{
    qputenv("LD_BIND_NOW", "1");
    const QString directory = privateTempDir();
    if (directory.isEmpty())
        qWarning("No private temporary directory can be made: files in %s may be swapped by others",
            qPrintable(QDir::tempPath()));
    else
        qputenv("TMPDIR", QFile::encodeName(directory));
}

QString RuntimeEnvironment::privateTempDir(const QString &shared)
{
    if (isSafe(QFile::encodeName(shared), true))
        return shared;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(runtime) && isSafe(QFile::encodeName(runtime), false)) {
        QString own = ownDirectory(runtime + QStringLiteral("/ovrel"));
        if (!own.isEmpty())
            return own;
    }
    QString own = ownDirectory(QDir::tempPath() + QStringLiteral("/ovrel-%1").arg(geteuid()));
    if (!own.isEmpty())
        return own;
    // Somebody else sits on that name: take one that cannot be foreseen.
    QByteArray pattern = QFile::encodeName(QDir::tempPath() + QStringLiteral("/ovrel-XXXXXX"));
    return mkdtemp(pattern.data()) ? QFile::decodeName(pattern) : QString();
}
