#include "runtimedirectory.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// As the program was started, whatever TMPDIR has become since.
const QString &originalTemporary()
{
    static const QString directory = QDir::tempPath();
    return directory;
}

} // namespace

QString RuntimeDirectory::path()
{
    QString given = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (QDir::isAbsolutePath(given) && isSafe(given, Owner::Self))
        return given;
    return own(originalTemporary() + QStringLiteral("/ovrel-%1").arg(geteuid()));
}

QString RuntimeDirectory::own(const QString &path)
{
    const QByteArray name = QFile::encodeName(path);
    if (mkdir(name.constData(), S_IRWXU) != 0 && errno != EEXIST)
        return QString();
    if (!isSafe(path, Owner::Self) || chmod(name.constData(), S_IRWXU) != 0)
        return QString();
    return path;
}

QString RuntimeDirectory::lastResort()
{
    static const QTemporaryDir directory(originalTemporary() + QStringLiteral("/ovrel-XXXXXX"));
    return directory.isValid() ? directory.path() : QString();
}

bool RuntimeDirectory::isSafe(const QString &path, Owner owner)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (lstat(name.constData(), &status) != 0 || !S_ISDIR(status.st_mode))
        return false;
    const bool isOwned
        = status.st_uid == geteuid() || (owner == Owner::SelfOrRoot && status.st_uid == 0);
    return isOwned && (status.st_mode & S_IWOTH) == 0 && access(name.constData(), W_OK | X_OK) == 0;
}

void RuntimeDirectory::setTemporary(const QString &directory)
{
    originalTemporary();
    qputenv("TMPDIR", QFile::encodeName(directory));
}
