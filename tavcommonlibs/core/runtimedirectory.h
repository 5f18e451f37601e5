#pragma once

#include <QString>

/// Places for what a program keeps only while it runs. May be used in any thread, setTemporary()
/// apart.
///
/// No link is followed anywhere: a name may lie in a directory that everybody writes to.
class RuntimeDirectory
{
public:
    enum class Owner { Self, SelfOrRoot };

    RuntimeDirectory() = delete;

    /// XDG_RUNTIME_DIR where it is this user's (su keeps another's), else "ovrel-UID" under the
    /// temporary directory that the program was started with: the same at each start, as a lock
    /// needs it. Empty when somebody else sits on that name.
    static QString path();

    /// `path` as a directory of this user's that is closed to all others, created where missing;
    /// empty when that cannot be had.
    static QString own(const QString &path);

    /// A directory of a name that nobody can foresee, for when the others are taken; one a process,
    /// removed at its normal end. Empty when none can be made.
    static QString lastResort();

    /// Whether `path` is a directory of the owner's that this user can write to and others cannot.
    static bool isSafe(const QString &path, Owner owner);

    /// Makes `directory` the temporary one of this process and its children; what path() gives
    /// stays. To be called before the first thread is started.
    static void setTemporary(const QString &directory);
};
