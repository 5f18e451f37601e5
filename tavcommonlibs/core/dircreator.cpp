#include "dircreator.h"

#include <QDir>
#include <QFileInfo>

#include <sys/stat.h>

namespace {

/// Like QFile::setPermissions(), but what is created in a group's directory stays the group's: Qt
/// would drop the set-group-ID bit that the directory has from its parent.
bool setMode(const QString &path, QFile::Permissions permissions)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    if (stat(name.constData(), &status) != 0)
        return false;
    const auto bits = static_cast<unsigned int>(permissions);
    const mode_t mode = ((bits >> 12 & 7U) << 6) | ((bits >> 4 & 7U) << 3) | (bits & 7U);
    return chmod(name.constData(), mode | (status.st_mode & S_ISGID)) == 0;
}

} // namespace

const QFile::Permissions DirCreator::DEFAULT_ALL = QFile::ReadOwner | QFile::WriteOwner
    | QFile::ExeOwner | QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup | QFile::ReadOther
    | QFile::ExeOther;

bool DirCreator::checkAndCreate(const QString &path, QFile::Permissions mode)
{
    if (path.isEmpty())
        return false;
    const QFileInfo info(QDir::cleanPath(path));
    if (info.exists() || info.isSymLink())
        return info.isDir();
    if (!info.isRoot() && !checkAndCreate(info.path(), mode))
        return false;
    if (QDir().mkdir(info.filePath()))
        return setMode(info.filePath(), mode);
    // Another program may have been faster.
    return QFileInfo(info.filePath()).isDir();
}
