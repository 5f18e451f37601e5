#pragma once

#include <QString>
#include <QStringList>

/**
 * The lock file by which programs on a serial port keep out of each other's way: LCK..NAME in
 * /run/lock, holding the process number in ten characters and a line end (the HDB UUCP form, that
 * of wvdial and pppd). A lock whose process has ended is taken over. Destruction gives the lock
 * back. Any thread may hold locks; one lock is used by one thread.
 */
class PortLock
{
    Q_DISABLE_COPY_MOVE(PortLock)

public:
    static const QString DIRECTORY; ///< "/run/lock"

    explicit PortLock(const QString &directory = DIRECTORY);
    ~PortLock();

    /**
     * Locks the device of that path. False, with error() naming the holder, only when another
     * process (or another lock of this one) holds it: a directory this user cannot write is logged
     * and locks nothing.
     */
    bool lock(const QString &device);
    void unlock();

    QString error() const { return m_error; }

    /**
     * The names under which a device is locked. Programs disagree on devices in folders of /dev
     * (wvdial: "3" for /dev/pts/3, pppd: "pts_3") and behind links, so there is one for each way.
     */
    static QStringList names(const QString &device);

private:
    enum class Outcome { Locked, Held, NoRight };
    Outcome lockFile(const QString &path);

    QString m_directory;
    QString m_error;
    QStringList m_files; // held, full paths
};
