#include "pseudoline.h"

#include "privatefiles.h"

#include <QFile>
#include <QSocketNotifier>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <termios.h>
#include <unistd.h>
#include <utility>

namespace {

// A program that has stopped reading must not make us keep its unread bytes for ever.
constexpr int kMostUnsent = 1 << 20;

void closeFile(int *file)
{
    if (*file >= 0)
        close(*file);
    *file = -1;
}

} // namespace

PseudoLine::PseudoLine(const QString &name, QObject *parent)
    : SerialLine(parent)
    , m_name(name)
{
}

PseudoLine::~PseudoLine()
{
    unplug();
}

bool PseudoLine::plug()
{
    if (isPlugged())
        return true;
    if (makeLine())
        return true;
    dropLine();
    return false;
}

void PseudoLine::unplug()
{
    dropLine();
    if (std::exchange(m_open, false))
        emit hungUp();
}

bool PseudoLine::makeLine()
{
    m_master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    char path[64] = {};
    if (m_master < 0 || grantpt(m_master) != 0 || unlockpt(m_master) != 0
        || ptsname_r(m_master, path, sizeof path) != 0)
        return false;
    m_outerPath = path;
    m_watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    const QString device = QStringLiteral("/dev/") + m_name;
    if (!resetLine()
        || inotify_add_watch(m_watch, path, IN_OPEN | IN_CLOSE_WRITE | IN_CLOSE_NOWRITE) < 0
        || !(QFile::exists(device) || PrivateFiles::write(device, {}))
        || !PrivateFiles::bind(QString::fromLatin1(m_outerPath), device))
        return false;
    m_reader = new QSocketNotifier(m_master, QSocketNotifier::Read, this);
    m_reader->setEnabled(false); // a line that nobody has open reads as hung up all the time
    connect(m_reader, &QSocketNotifier::activated, this, &PseudoLine::readBytes);
    m_writer = new QSocketNotifier(m_master, QSocketNotifier::Write, this);
    m_writer->setEnabled(false);
    connect(m_writer, &QSocketNotifier::activated, this, &PseudoLine::writeRest);
    m_userWatcher = new QSocketNotifier(m_watch, QSocketNotifier::Read, this);
    connect(m_userWatcher, &QSocketNotifier::activated, this, &PseudoLine::updateUsers);
    return true;
}

void PseudoLine::dropLine()
{
    const QByteArray device = "/dev/" + m_name.toLatin1();
    while (umount2(device.constData(), MNT_DETACH) == 0)
        continue;
    ::unlink(device.constData());
    dropNotifiers();
    closeFile(&m_master); // hangs up whoever has the other end open
    closeFile(&m_watch);
    m_unsent.clear();
}

void PseudoLine::dropNotifiers()
{
    for (QSocketNotifier **notifier : {&m_reader, &m_writer, &m_userWatcher}) {
        if (*notifier != nullptr) {
            (*notifier)->setEnabled(false);
            (*notifier)->deleteLater(); // it may be its own signal that brought us here
            *notifier = nullptr;
        }
    }
}

// A new line is mounted over the old one before that goes, so that the device is never missing.
void PseudoLine::replaceLine()
{
    int oldMaster = std::exchange(m_master, -1);
    int oldWatch = std::exchange(m_watch, -1);
    dropNotifiers();
    if (!makeLine())
        dropLine();
    closeFile(&oldMaster);
    closeFile(&oldWatch);
}

// Makes the line as a real one is when it is opened for the first time, whatever the last program
// left set. Opening and closing the outer end once also makes the kernel tell, from then on,
// whether anybody has it open. False when a program died that had asked for sole use: nobody can
// open this line any more.
bool PseudoLine::resetLine()
{
    int outer = open(m_outerPath.constData(), O_RDONLY | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
    if (outer < 0)
        return false;
    termios settings{};
    if (tcgetattr(outer, &settings) == 0) {
        cfmakeraw(&settings);
        tcsetattr(outer, TCSANOW, &settings);
    }
    tcflush(outer, TCIFLUSH);
    closeFile(&outer);
    return true;
}

void PseudoLine::readBytes()
{
    const QByteArray bytes = takeBytes();
    if (!bytes.isEmpty())
        emit received(bytes);
    updateUsers();
}

QByteArray PseudoLine::takeBytes()
{
    QByteArray bytes;
    char chunk[4096];
    ssize_t count = 0;
    while (m_master >= 0 && bytes.size() < kMostUnsent
        && (count = read(m_master, chunk, sizeof chunk)) > 0)
        bytes.append(chunk, static_cast<int>(count));
    return bytes;
}

bool PseudoLine::isHungUp() const
{
    pollfd line{m_master, 0, 0};
    return poll(&line, 1, 0) > 0 && (line.revents & POLLHUP) != 0;
}

// Whether somebody has closed the line since the last time, perhaps before it was even seen open.
// resetLine() opens it for reading only and is told apart by that.
bool PseudoLine::takeEvents()
{
    alignas(inotify_event) char events[4096];
    bool wasUsed = false;
    ssize_t size = 0;
    while (m_watch >= 0 && (size = read(m_watch, events, sizeof events)) > 0) {
        for (ssize_t at = 0; at < size;) {
            inotify_event event{};
            std::memcpy(&event, events + at, sizeof event);
            at += static_cast<ssize_t>(sizeof event + event.len);
            wasUsed = wasUsed || (event.mask & IN_CLOSE_WRITE) != 0;
        }
    }
    return wasUsed;
}

void PseudoLine::updateUsers()
{
    // The events only say that something changed (equal ones are merged, so they cannot be
    // counted); whether anybody has the line open, the line itself knows.
    const bool wasUsed = takeEvents();
    if (!isPlugged())
        return;
    if (!isHungUp()) {
        m_open = true;
        m_reader->setEnabled(true);
        return;
    }
    const QByteArray rest = takeBytes();
    if (!m_open && !wasUsed && rest.isEmpty())
        return;
    m_reader->setEnabled(false);
    m_unsent.clear();
    m_open = false;
    if (isHungUp()) {
        // What a quick program left counts, though nobody is there any more for the answer.
        if (!rest.isEmpty())
            emit received(rest);
        if (isPlugged() && !resetLine() && isHungUp())
            replaceLine();
        emit hungUp();
    } else {
        // The next program is there already, and it may have been the one that wrote.
        emit hungUp();
        m_open = true;
        m_reader->setEnabled(true);
        if (!rest.isEmpty())
            emit received(rest);
    }
}

void PseudoLine::send(const QByteArray &bytes)
{
    if (!m_open || m_unsent.size() + bytes.size() > kMostUnsent)
        return;
    m_unsent += bytes;
    writeRest();
}

void PseudoLine::writeRest()
{
    while (!m_unsent.isEmpty() && m_master >= 0) {
        const ssize_t count
            = write(m_master, m_unsent.constData(), static_cast<size_t>(m_unsent.size()));
        if (count < 0)
            break;
        m_unsent.remove(0, static_cast<int>(count));
    }
    if (m_writer != nullptr)
        m_writer->setEnabled(!m_unsent.isEmpty());
}
