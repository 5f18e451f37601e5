#include "portlock.h"

#include "atmodemlog.h"
#include "portholder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <mutex>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace std::chrono_literals;

const QString PortLock::DIRECTORY = QStringLiteral("/run/lock");

namespace {

// A lock without a number is being written by a program that does not write it at once; later it
// is what a crash left behind.
constexpr std::chrono::seconds kHalfWritten = 10s;

// The files this process holds: one that bears our number and is not among them was left by an
// earlier process of the same number. The mutex is held while files are made and removed, so that
// the two always agree.
struct Held
{
    std::mutex mutex;
    QSet<QString> files;
    int counter = 0;
};

Held &held()
{
    static Held theHeld;
    return theHeld;
}

class Descriptor
{
    Q_DISABLE_COPY_MOVE(Descriptor)

public:
    explicit Descriptor(int fd)
        : m_fd(fd)
    {
    }
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    int get() const { return m_fd; }

private:
    const int m_fd;
};

struct LockContent
{
    bool exists = false;
    qint64 pid = 0; // 0: none to be read
    bool fresh = false;
};

LockContent readLock(const QByteArray &path)
{
    // What lies there may be anybody's making: no link is followed, no pipe waited for.
    const Descriptor file(::open(path.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    LockContent content;
    if (file.get() < 0) {
        content.exists = errno != ENOENT;
        content.fresh = errno == EACCES; // somebody's, and not for us to judge
        return content;
    }
    content.exists = true;
    struct stat status = {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return content;
    const qint64 age = QDateTime::currentSecsSinceEpoch() - status.st_mtim.tv_sec;
    content.fresh = qAbs(age) < kHalfWritten.count();
    char buffer[32] = {};
    const ssize_t size = ::read(file.get(), buffer, sizeof buffer - 1);
    // Some programs add their name and user.
    const QByteArray text(buffer, static_cast<int>(qMax<ssize_t>(size, 0)));
    bool isText = false;
    const qlonglong number = text.simplified().split(' ').first().toLongLong(&isText);
    int binary = 0;
    if (isText && number > 0) {
        content.pid = number;
    } else if (!isText && size == sizeof binary) { // the form of the oldest programs
        std::memcpy(&binary, buffer, sizeof binary);
        content.pid = qMax(binary, 0);
    }
    return content;
}

bool isAlive(qint64 pid)
{
    const auto number = static_cast<pid_t>(pid);
    return number == pid && (::kill(number, 0) == 0 || errno == EPERM);
}

bool isStale(const LockContent &content, const QString &path)
{
    if (content.pid == 0)
        return !content.fresh;
    if (content.pid == ::getpid())
        return !held().files.contains(path);
    return !isAlive(content.pid);
}

// A file of its own name with our number in it; empty when there is none to be had.
QByteArray writeOwn(const QString &directory)
{
    QByteArray path = QFile::encodeName(
        QStringLiteral("%1/LTMP.%2.%3").arg(directory).arg(::getpid()).arg(++held().counter));
    ::unlink(path.constData());
    const Descriptor file(
        ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (file.get() < 0)
        return {};
    const QByteArray text = QByteArray::number(::getpid()).rightJustified(10) + '\n';
    if (::write(file.get(), text.constData(), static_cast<size_t>(text.size())) != text.size()) {
        const int reason = errno;
        ::unlink(path.constData());
        errno = reason;
        return {};
    }
    ::fchmod(file.get(), 0644); // readable for all, whatever the umask
    return path;
}

// Takes a stale lock away. It is moved first and looked at again: another program may just have
// taken it over, and its lock goes back then.
bool removeStale(const QByteArray &path, const QString &name, const QByteArray &aside)
{
    if (::rename(path.constData(), aside.constData()) != 0)
        return errno == ENOENT;
    const LockContent content = readLock(aside);
    if (content.exists && !isStale(content, name)
        && ::link(aside.constData(), path.constData()) != 0 && errno != EEXIST)
        qCWarning(AT_MODEM).noquote()
            << QStringLiteral("The lock file %1 of process %2 could not be put back: %3.")
                   .arg(name, QString::number(content.pid), qt_error_string());
    ::unlink(aside.constData());
    return true;
}

} // namespace

PortLock::PortLock(const QString &directory)
    : m_directory(directory)
{
}

PortLock::~PortLock()
{
    unlock();
}

bool PortLock::lock(const QString &device)
{
    unlock();
    m_error.clear();
    const QStringList all = names(device);
    for (const QString &name : all) {
        const QString path = QStringLiteral("%1/LCK..%2").arg(m_directory, name);
        switch (lockFile(path)) {
        case Outcome::Locked:
            m_files << path;
            break;
        case Outcome::Held:
            unlock();
            return false;
        case Outcome::NoRight:
            qCWarning(AT_MODEM).noquote() << QStringLiteral("No lock file %1: %2. Other programs "
                                                            "do not see that the port is in use.")
                                                 .arg(path, qt_error_string());
            break;
        }
    }
    return true;
}

PortLock::Outcome PortLock::lockFile(const QString &path)
{
    const std::lock_guard<std::mutex> guard(held().mutex);
    const QByteArray file = QFile::encodeName(path);
    // Who takes it away in between, and gives it back, is not waited for any longer.
    for (int attempt = 0; attempt < 3; ++attempt) {
        const LockContent content = readLock(file);
        if (content.exists && !isStale(content, path)) {
            m_error = content.pid > 0 ? portholder::describe(content.pid)
                                      : QStringLiteral("another program");
            return Outcome::Held;
        }
        const QByteArray own = writeOwn(m_directory);
        if (own.isEmpty())
            return Outcome::NoRight;
        bool done = true;
        if (content.exists) {
            qCDebug(AT_MODEM).noquote() << "stale lock file" << path << "of process" << content.pid;
            done = removeStale(file, path, own + ".old");
        }
        // Made whole under another name and then given this one: nobody ever reads half of it.
        done = done && ::link(own.constData(), file.constData()) == 0;
        const int reason = errno;
        ::unlink(own.constData());
        if (done) {
            held().files.insert(path);
            return Outcome::Locked;
        }
        errno = reason;
        if (reason != EEXIST)
            return Outcome::NoRight;
    }
    m_error = QStringLiteral("another program");
    return Outcome::Held;
}

void PortLock::unlock()
{
    const std::lock_guard<std::mutex> guard(held().mutex);
    for (const QString &path : qAsConst(m_files)) {
        const QByteArray file = QFile::encodeName(path);
        if (readLock(file).pid == ::getpid())
            ::unlink(file.constData());
        held().files.remove(path);
    }
    m_files.clear();
}

QStringList PortLock::names(const QString &device)
{
    QStringList all;
    const QString canonical = QFileInfo(device).canonicalFilePath();
    for (const QString &path : {QDir::cleanPath(device), canonical}) {
        if (path.isEmpty())
            continue;
        all << path.section(QLatin1Char('/'), -1);
        const QString devices = QStringLiteral("/dev/");
        if (path.startsWith(devices))
            all << path.mid(devices.size()).replace(QLatin1Char('/'), QLatin1Char('_'));
    }
    all.removeDuplicates();
    return all;
}
