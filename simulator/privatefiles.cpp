#include "privatefiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString kStaging = QStringLiteral("/run/terminal/staging");

bool mountFileSystem(const char *type, const QString &target, const char *options = nullptr)
{
    return mount(type, QFile::encodeName(target).constData(), type, MS_NOSUID, options) == 0;
}

bool makeDirectory(const QString &path)
{
    return QDir().mkpath(path);
}

// A symbolic link is copied as it is, since what it points at may be private or elsewhere.
bool copyLink(const QFileInfo &link, const QString &target)
{
    char text[PATH_MAX] = {};
    const ssize_t size
        = readlink(QFile::encodeName(link.filePath()).constData(), text, sizeof text - 1);
    return size > 0 && symlink(text, QFile::encodeName(target).constData()) == 0;
}

// What the user may not read is left out: nothing in the terminal needs the machine's secrets.
void copyFile(const QString &source, const QString &target)
{
    QFile file(source);
    if (file.open(QIODevice::ReadOnly))
        PrivateFiles::write(
            target, file.readAll(), (file.permissions() & QFile::ExeOther) != 0 ? 0755 : 0644);
}

void copyTree(const QString &source, const QString &target)
{
    makeDirectory(target);
    const QFileInfoList entries = QDir(source).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &entry : entries) {
        const QString to = target + QLatin1Char('/') + entry.fileName();
        if (entry.isSymLink())
            copyLink(entry, to);
        else if (entry.isDir())
            copyTree(entry.filePath(), to);
        else if (entry.isFile())
            copyFile(entry.filePath(), to);
    }
}

} // namespace

bool PrivateFiles::fail(const QString &what)
{
    if (m_errorText.isEmpty())
        m_errorText
            = QStringLiteral("%1: %2").arg(what, QString::fromLocal8Bit(std::strerror(errno)));
    return false;
}

bool PrivateFiles::write(const QString &path, const QByteArray &text, int mode)
{
    makeDirectory(QFileInfo(path).path());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.flush()
        && fchmod(file.handle(), static_cast<mode_t>(mode)) == 0;
}

bool PrivateFiles::bind(const QString &source, const QString &target)
{
    // Recursive, because the kernel does not let an unprivileged user uncover what a mount hides.
    return mount(QFile::encodeName(source).constData(), QFile::encodeName(target).constData(),
               nullptr, MS_BIND | MS_REC, nullptr)
        == 0;
}

bool PrivateFiles::setUp()
{
    umask(022);
    if (mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return fail(QStringLiteral("making mounts private"));
    if (!mountFileSystem("tmpfs", QStringLiteral("/run"), "mode=755"))
        return fail(QStringLiteral("mounting a private /run"));
    for (const char *directory :
        {"terminal/staging", "lock", "dbus", "network", "terminal/home", "terminal/tmp", "user/0"})
        makeDirectory(QStringLiteral("/run/") + QLatin1String(directory));
    chmod("/run/user/0", 0700);
    chmod("/run/lock", 01777);
    if (!mountDev())
        return false;
    if (mount("proc", "/proc", "proc", MS_NOSUID | MS_NODEV | MS_NOEXEC, nullptr) != 0)
        return fail(QStringLiteral("mounting a private /proc"));
    if (!makePrivate(QStringLiteral("/etc")) || !makePrivate(QStringLiteral("/var/lib"))
        || !mountFileSystem("tmpfs", QStringLiteral("/var/log"), "mode=755"))
        return fail(QStringLiteral("making /etc, /var/lib and /var/log private"));
    return fillEtc() && makeDialerRunnable();
}

bool PrivateFiles::mountDev()
{
    if (!mountFileSystem("tmpfs", kStaging, "mode=755"))
        return fail(QStringLiteral("mounting a private /dev"));
    for (const char *name : {"null", "zero", "full", "random", "urandom", "tty", "ppp"}) {
        const QString device = QStringLiteral("/dev/") + QLatin1String(name);
        const QString target = kStaging + QLatin1Char('/') + QLatin1String(name);
        if (QFileInfo::exists(device) && (!write(target, {}) || !bind(device, target)))
            return fail(device);
    }
    makeDirectory(kStaging + QStringLiteral("/shm"));
    chmod(QFile::encodeName(kStaging + QStringLiteral("/shm")).constData(), 01777);
    makeDirectory(kStaging + QStringLiteral("/pts"));
    if (!mountFileSystem(
            "devpts", kStaging + QStringLiteral("/pts"), "newinstance,ptmxmode=0666,mode=0620"))
        return fail(QStringLiteral("mounting private pseudo-terminals"));
    QFile::link(QStringLiteral("pts/ptmx"), kStaging + QStringLiteral("/ptmx"));
    QFile::link(QStringLiteral("/proc/self/fd"), kStaging + QStringLiteral("/fd"));
    QFile::link(QStringLiteral("/proc/self/fd/0"), kStaging + QStringLiteral("/stdin"));
    QFile::link(QStringLiteral("/proc/self/fd/1"), kStaging + QStringLiteral("/stdout"));
    QFile::link(QStringLiteral("/proc/self/fd/2"), kStaging + QStringLiteral("/stderr"));
    if (mount(QFile::encodeName(kStaging).constData(), "/dev", nullptr, MS_MOVE, nullptr) != 0)
        return fail(QStringLiteral("mounting a private /dev"));
    return true;
}

// A tmpfs over `directory` that shows what was there: files copied, directories bind-mounted
// read-only. An overlay would do it in one mount, but cannot copy up files of a user that is not
// mapped, which for an ordinary user are all of them.
bool PrivateFiles::makePrivate(const QString &directory)
{
    if (!bind(directory, kStaging) || !mountFileSystem("tmpfs", directory, "mode=755"))
        return false;
    const QFileInfoList entries = QDir(kStaging).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &entry : entries) {
        const QString to = directory + QLatin1Char('/') + entry.fileName();
        if (entry.isSymLink()) {
            copyLink(entry, to);
        } else if (entry.isFile()) {
            copyFile(entry.filePath(), to);
        } else if (entry.isDir()) {
            makeDirectory(to);
            mount_attr readOnly{};
            readOnly.attr_set = MOUNT_ATTR_RDONLY;
            if (!bind(entry.filePath(), to)
                || mount_setattr(AT_FDCWD, QFile::encodeName(to).constData(), AT_RECURSIVE,
                       &readOnly, sizeof readOnly)
                    != 0)
                return false;
        }
    }
    return umount2(QFile::encodeName(kStaging).constData(), MNT_DETACH) == 0;
}

bool PrivateFiles::fillEtc()
{
    makeDirectory(QStringLiteral("/etc/network"));
    if (!mountFileSystem("tmpfs", QStringLiteral("/etc/network"), "mode=755") || !copyPppSettings())
        return fail(QStringLiteral("filling the private /etc"));
    for (const char *directory : {"if-up.d", "if-down.d", "if-pre-up.d", "if-post-down.d"})
        makeDirectory(QStringLiteral("/etc/network/") + QLatin1String(directory));
    // The machine may be a terminal itself: its own are there to be read by then.
    for (const char *directory : {"/etc/ovrel", "/var/lib/ovrel", "/var/log/ovrel"}) {
        makeDirectory(QLatin1String(directory));
        if (!mountFileSystem("tmpfs", QLatin1String(directory), "mode=755"))
            return fail(QStringLiteral("making the terminal's directories private"));
    }
    return true;
}

bool PrivateFiles::copyPppSettings()
{
    const QString ppp = QStringLiteral("/etc/ppp");
    makeDirectory(ppp);
    makeDirectory(kStaging);
    const bool installed = bind(ppp, kStaging);
    if (!installed || !mountFileSystem("tmpfs", ppp, "mode=755"))
        return false;
    copyTree(kStaging, ppp);
    umount2(QFile::encodeName(kStaging).constData(), MNT_DETACH);
    // The dialer rewrites these and the PPP daemon insists on the mode; the machine's own accounts
    // stay where they are.
    for (const char *secrets : {"/pap-secrets", "/chap-secrets"}) {
        QFile::remove(ppp + QLatin1String(secrets));
        if (!write(ppp + QLatin1String(secrets), "# client server secret addresses\n", 0600))
            return false;
    }
    // Debian keeps this file from ordinary users.
    const QString peer = ppp + QStringLiteral("/peers/wvdial");
    return QFileInfo::exists(peer) || write(peer, "noauth\nname wvdial\nusepeerdns\n");
}

// Debian lets only the group "dip" run the PPP daemon, which an ordinary user is not in. In here
// the user is root: a copy does as well.
bool PrivateFiles::makeDialerRunnable()
{
    const QString daemon = QStringLiteral("/usr/sbin/pppd");
    if (!QFileInfo::exists(daemon) || access(QFile::encodeName(daemon).constData(), X_OK) == 0)
        return true;
    const QString copy = QStringLiteral("/run/terminal/pppd");
    copyFile(daemon, copy);
    chmod(QFile::encodeName(copy).constData(), 0755);
    return bind(copy, daemon) ? true : fail(daemon);
}
