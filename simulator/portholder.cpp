#include "portholder.h"

#include <QFile>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace {

QByteArray lockFile(const QString &port)
{
    return "/run/lock/LCK.." + port.toLatin1();
}

} // namespace

PortHolder::PortHolder(QString port)
    : m_port(std::move(port))
{
}

PortHolder::~PortHolder()
{
    release();
}

bool PortHolder::hold()
{
    if (isHeld())
        return true;
    const int lock
        = open(lockFile(m_port).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (lock < 0)
        return false;
    const QByteArray holder = QByteArray::number(getpid()).rightJustified(10, ' ') + '\n';
    const bool written
        = ::write(lock, holder.constData(), static_cast<size_t>(holder.size())) == holder.size();
    close(lock);
    m_file = open(
        ("/dev/" + m_port.toLatin1()).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (written && m_file >= 0 && ioctl(m_file, TIOCEXCL) == 0)
        return true;
    ::unlink(lockFile(m_port).constData());
    if (m_file >= 0)
        close(std::exchange(m_file, -1));
    return false;
}

void PortHolder::release()
{
    if (!isHeld())
        return;
    ioctl(m_file, TIOCNXCL);
    close(std::exchange(m_file, -1));
    ::unlink(lockFile(m_port).constData());
}
