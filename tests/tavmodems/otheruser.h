#pragma once

#include <QFile>

#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

/// Another process that has a terminal open for itself (TIOCEXCL), as long as this lives.
class OtherUser
{
    Q_DISABLE_COPY_MOVE(OtherUser)

public:
    explicit OtherUser(const QString &path)
    {
        const QByteArray name = QFile::encodeName(path);
        int ready[2] = {-1, -1};
        if (::pipe2(ready, O_CLOEXEC) != 0)
            qFatal("no pipe for the test");
        m_pid = ::fork();
        if (m_pid == 0) {
            const int fd = ::open(name.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
            const bool done
                = fd >= 0 && ::ioctl(fd, TIOCEXCL) == 0 && ::write(ready[1], "x", 1) == 1;
            for (;;) {
                if (!done)
                    ::_exit(1);
                ::pause();
            }
        }
        ::close(ready[1]);
        char answer = 0;
        if (m_pid < 0 || ::read(ready[0], &answer, 1) != 1)
            qFatal("no other user for the test");
        ::close(ready[0]);
    }
    ~OtherUser()
    {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    pid_t pid() const { return m_pid; }

private:
    pid_t m_pid = -1;
};
