#pragma once

#include <QString>

/// Gives the mount namespace it is called in the terminal's own /dev, /run, /proc, /etc,
/// /var/log and /var/lib, so that what runs there finds the real layout and can write to it without
/// touching the machine. The rest of the machine's files stays as it is: programs, build
/// directories, the directory a program was started in, /tmp with the sockets of X servers.
class PrivateFiles
{
public:
    bool setUp();
    QString errorText() const { return m_errorText; }

    /// Writes a file of the terminal's own, with the directories above it.
    static bool write(const QString &path, const QByteArray &text, int mode = 0644);
    /// Bind-mounts a file or directory over `target`, which must exist.
    static bool bind(const QString &source, const QString &target);

private:
    bool mountDev();
    bool makePrivate(const QString &directory);
    bool fillEtc();
    bool copyPppSettings();
    bool makeDialerRunnable();
    bool fail(const QString &what);

    QString m_errorText;
};
