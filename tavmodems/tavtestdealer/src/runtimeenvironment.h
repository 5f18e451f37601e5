#pragma once

#include <QString>

/// What the program changes in its own environment, for itself and for the programs it starts.
class RuntimeEnvironment
{
public:
    RuntimeEnvironment() = delete;

    /// To be called once, before the first thread is started and before anything asks for the
    /// temporary directory:
    ///  - TMPDIR becomes a directory that no other user can write to, because files in it are
    ///    copied into the system as root;
    ///  - LD_BIND_NOW is set: Debian's wvdial otherwise aborts at random on processors with wide
    ///    vector registers ("stack_magic == WVTASK_MAGIC"), which the dynamic linker saves on the
    ///    dialer's small task stacks when it resolves a function at its first call;
    ///  - QT_XCB_GL_INTEGRATION becomes "none" where nobody has set it: nothing here is drawn with
    ///    OpenGL, whose drivers Qt else loads for the first window, at the cost of half of the time
    ///    to the first frame and half of the memory.
    static void prepare();

    /// `shared` where it is a directory that root or this user owns, that this user can write to
    /// and that is closed to others; else a 0700 directory of the user's own, created on demand;
    /// the last resort among those is removed when the program ends.
    static QString privateTempDir(const QString &shared = QStringLiteral("/run/ovrel"));
};
