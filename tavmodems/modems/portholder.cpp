#include "portholder.h"

#include <QDir>
#include <QFile>

#include <sys/stat.h>
#include <unistd.h>

namespace {

bool hasOpen(const QString &pid, const struct stat &device)
{
    const QString folder = QStringLiteral("/proc/%1/fd").arg(pid);
    const QStringList files = QDir(folder).entryList(QDir::Files | QDir::System);
    for (const QString &file : files) {
        struct stat status = {};
        const QByteArray path = QFile::encodeName(folder + QLatin1Char('/') + file);
        // Numbers of pseudo-terminals are given once per file system, so that counts too.
        if (::stat(path.constData(), &status) == 0 && S_ISCHR(status.st_mode)
            && status.st_rdev == device.st_rdev && status.st_dev == device.st_dev)
            return true;
    }
    return false;
}

} // namespace

QString portholder::describe(qint64 pid)
{
    if (pid == ::getpid())
        return QStringLiteral("this program itself");
    QFile file(QStringLiteral("/proc/%1/comm").arg(pid));
    QString name;
    if (file.open(QFile::ReadOnly))
        name = QString::fromLocal8Bit(file.readLine()).trimmed();
    return name.isEmpty() ? QStringLiteral("process %1").arg(pid)
                          : QStringLiteral("%1 (process %2)").arg(name).arg(pid);
}

QString portholder::find(const QString &device)
{
    struct stat status = {};
    if (::stat(QFile::encodeName(device).constData(), &status) != 0)
        return {};
    const QStringList entries
        = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isPid = false;
        const qint64 pid = entry.toLongLong(&isPid);
        if (isPid && pid != ::getpid() && hasOpen(entry, status))
            return describe(pid);
    }
    return {};
}
