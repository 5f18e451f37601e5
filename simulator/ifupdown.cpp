#include "ifupdown.h"

#include "privatefiles.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <cstring>
#include <sys/mount.h>

namespace {

// What was in the directories that get something laid over.
const QString kBefore = QStringLiteral("/run/terminal/before");

bool linkAll(const QString &from, const QString &to)
{
    const QFileInfoList entries = QDir(from).entryInfoList(
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System);
    for (const QFileInfo &entry : entries) {
        const QString link = to + QLatin1Char('/') + entry.fileName();
        if (!QFileInfo::exists(link) && !QFile::link(entry.filePath(), link))
            return false;
    }
    return true;
}

} // namespace

// Beside the folders of the build presets, one of which this program runs from.
Ifupdown::Ifupdown()
    : m_unpacked(
        QDir::cleanPath(QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path()
            + QStringLiteral("/../../ifupdown")))
{
}

bool Ifupdown::putInPlace()
{
    for (const char *directory : {"/sbin", "/etc/init.d", "/etc/default", "/etc/dhcp"}) {
        if (!layOver(QLatin1String(directory))) {
            m_errorText = QStringLiteral("%1: %2").arg(
                QLatin1String(directory), QString::fromLocal8Bit(std::strerror(errno)));
            return false;
        }
    }
    QDir().mkpath(QStringLiteral("/var/lib/dhcp")); // leases
    if (QFileInfo::exists(QStringLiteral("/sbin/ifup"))
        && QFileInfo::exists(QStringLiteral("/etc/init.d/networking")))
        return true;
    m_errorText
        = QStringLiteral("there is no ifupdown, neither installed nor in %1").arg(m_unpacked);
    return false;
}

QString Ifupdown::find(const QString &name) const
{
    for (const char *directory : {"/bin", "/sbin", "/usr/bin", "/usr/sbin"}) {
        const QFileInfo file(m_unpacked + QLatin1String(directory) + QLatin1Char('/') + name);
        if (file.isExecutable())
            return file.filePath();
    }
    return QStandardPaths::findExecutable(name);
}

// The machine's own entries win. Links in a file system of the terminal's own, because nothing may
// be written to the machine's directory and what is in it is not the terminal's to copy.
bool Ifupdown::layOver(const QString &directory)
{
    const QString extra = m_unpacked + directory;
    if (!QFileInfo::exists(extra))
        return true;
    const QString before = kBefore + directory;
    return QDir().mkpath(before) && QDir().mkpath(directory)
        && PrivateFiles::bind(directory, before)
        && mount("tmpfs", QFile::encodeName(directory).constData(), "tmpfs", MS_NOSUID, "mode=755")
        == 0
        && linkAll(before, directory) && linkAll(extra, directory);
}
