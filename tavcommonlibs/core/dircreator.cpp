#include "dircreator.h"

#include <QDir>
#include <QFileInfo>

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
        return QFile::setPermissions(info.filePath(), mode);
    // Another program may have been faster.
    return QFileInfo(info.filePath()).isDir();
}
