#include "fault.h"

#include "shiftedclock.h"
#include "terminalsim1proxy.h"

#include "busnames.h"

#include <QFile>

#include <cerrno>
#include <csignal>
#include <cstring>

#include <sys/mount.h>
#include <sys/statvfs.h>

namespace {

using Terminal = OrgOvrelTerminalSim1Interface;

const QString gsm1 = QStringLiteral("gsm1");

constexpr int kHour = 3600;

// Where the tool writes: its work directory (the broker keeps its store there, too), its log, and
// the temporary and run-time directories. Each is a file system of the terminal's own.
constexpr const char *kWritten[] = {"/var/lib/ovrel", "/var/log/ovrel", "/run"};

void signalBroker(Terminal &terminal, int number)
{
    const auto pid = static_cast<pid_t>(terminal.brokerPid().value());
    if (pid > 0)
        ::kill(pid, number);
}

QString fillerOn(const char *disk)
{
    return QString::fromLatin1(disk) + QStringLiteral("/filler");
}

// A little larger than what is in it, and that little full.
void fillDisks(Terminal & /*terminal*/)
{
    constexpr qulonglong kRoom = 65536;
    for (const char *disk : kWritten) {
        struct statvfs status = {};
        ::statvfs(disk, &status);
        const qulonglong used = (status.f_blocks - status.f_bfree) * status.f_frsize;
        const QByteArray size = "size=" + QByteArray::number(used + kRoom);
        if (::mount(nullptr, disk, nullptr, MS_REMOUNT | MS_NOSUID, size.constData()) != 0)
            qFatal("%s cannot be filled: %s", disk, std::strerror(errno));
        QFile filler(fillerOn(disk));
        if (!filler.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
            qFatal("%s cannot be filled: %s", disk, qPrintable(filler.errorString()));
        const QByteArray block(4096, '0');
        while (filler.write(block) == block.size()) { }
    }
}

void emptyDisks(Terminal & /*terminal*/)
{
    for (const char *disk : kWritten) {
        QFile::remove(fillerOn(disk));
        if (::mount(nullptr, disk, nullptr, MS_REMOUNT | MS_NOSUID, "size=50%") != 0)
            qFatal("%s cannot be emptied: %s", disk, std::strerror(errno));
    }
}

// Another mount over the same files: what is open already can still be written to, as by the
// broker. The run-time directory stays as it is, which on a terminal is in memory.
constexpr const char *kOnDisk[] = {"/var/lib/ovrel", "/var/log/ovrel"};

void makeReadOnly(Terminal & /*terminal*/)
{
    for (const char *disk : kOnDisk) {
        if (::mount(disk, disk, nullptr, MS_BIND, nullptr) != 0
            || ::mount(
                   nullptr, disk, nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY | MS_NOSUID, nullptr)
                != 0)
            qFatal("%s cannot be made read-only: %s", disk, std::strerror(errno));
    }
}

void makeWritable(Terminal & /*terminal*/)
{
    for (const char *disk : kOnDisk) {
        struct statvfs status = {};
        while (::statvfs(disk, &status) == 0 && (status.f_flag & ST_RDONLY) != 0
            && ::umount2(disk, MNT_DETACH) == 0) { }
    }
}

std::function<void(Terminal &)> modemFault(const char *name)
{
    return [name](Terminal &terminal) {
        terminal.modemFault(gsm1, QLatin1String(name)).waitForFinished();
    };
}

std::function<void(Terminal &)> serviceFault(const char *name)
{
    return [name](Terminal &terminal) {
        terminal.serviceFault(tavbus::BUSNAME_TAVMODEMS, QLatin1String(name)).waitForFinished();
    };
}

std::function<void(Terminal &)> shift(int seconds)
{
    return [seconds](Terminal &) { clockShift = seconds; };
}

void mendModem(Terminal &terminal)
{
    terminal.clearModemFault(gsm1).waitForFinished();
    terminal.plug(gsm1).waitForFinished();
}

} // namespace

const QList<Fault> &faults()
{
    const auto nothing = [](Terminal &) {};
    static const QList<Fault> list{
        {"broker killed", [](Terminal &terminal) { terminal.killBroker().waitForFinished(); },
            nothing},
        {"broker frozen", [](Terminal &terminal) { signalBroker(terminal, SIGSTOP); },
            [](Terminal &terminal) { signalBroker(terminal, SIGCONT); }},
        {"agent dead", serviceFault("dead"), serviceFault("")},
        {"agent frozen", serviceFault("deaf"), serviceFault("")},
        {"modem unplugged", [](Terminal &terminal) { terminal.unplug(gsm1).waitForFinished(); },
            mendModem},
        {"modem frozen", modemFault("hung"), mendModem},
        {"modem babbling", modemFault("babble"), mendModem},
        {"port grabbed",
            [](Terminal &terminal) { terminal.holdPort(gsm1, true).waitForFinished(); },
            [](Terminal &terminal) { terminal.holdPort(gsm1, false).waitForFinished(); }},
        {"disk full", fillDisks, emptyDisks},
        {"disk read-only", makeReadOnly, makeWritable},
        {"clock an hour back", shift(-kHour), shift(0)},
        {"clock an hour ahead", shift(kHour), shift(0)},
    };
    return list;
}
