#include "portuser.h"

#include <QFile>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

PortUser::PortUser(const QString &port)
    : m_port(QStringLiteral("/dev/") + port)
{
}

PortUser::~PortUser()
{
    release();
}

bool PortUser::hold()
{
    if (m_file >= 0)
        return true;
    if (!m_lock.lock(m_port))
        return false;
    m_file
        = open(QFile::encodeName(m_port).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
    if (m_file >= 0 && ioctl(m_file, TIOCEXCL) == 0)
        return true;
    release();
    return false;
}

void PortUser::release()
{
    if (m_file >= 0) {
        ioctl(m_file, TIOCNXCL);
        close(std::exchange(m_file, -1));
    }
    m_lock.unlock();
}
