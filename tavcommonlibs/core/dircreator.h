#pragma once

#include <QFile>

/// Makes sure that a directory is there.
class DirCreator
{
public:
    /// Owner and group work in the directory, others may look (0775).
    static const QFile::Permissions DEFAULT_ALL;

    /// True when `path` is a directory at the end. What is missing of it, parents included, is
    /// created with `mode`, whatever the process's umask, and inherits a group as usual; what was
    /// there keeps its permissions. False when it cannot be created or when a file stands in its
    /// place.
    static bool checkAndCreate(const QString &path, QFile::Permissions mode);
};
