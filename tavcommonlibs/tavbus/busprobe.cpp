#include "busprobe.h"

#include <QByteArray>
#include <QFile>
#include <QHash>
#include <QList>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tavbus {

namespace {

constexpr int kFullQueuePauseMs = 20;

// The socket's name as the kernel wants it; a leading NUL marks an abstract one.
QByteArray socketName(const QString &address)
{
    const QByteArray bytes = address.toLocal8Bit();
    QHash<QByteArray, QByteArray> values;
    for (const QByteArray &pair : bytes.mid(bytes.indexOf(':') + 1).split(',')) {
        const int equals = pair.indexOf('=');
        values.insert(pair.left(equals), QByteArray::fromPercentEncoding(pair.mid(equals + 1)));
    }
    if (values.contains("abstract"))
        return '\0' + values.value("abstract");
    if (values.value("runtime") == "yes")
        return qgetenv("XDG_RUNTIME_DIR") + "/bus";
    return values.value("path");
}

class Socket
{
    Q_DISABLE_COPY_MOVE(Socket)

public:
    Socket()
        : m_descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
    }
    ~Socket()
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
    }

    bool connectTo(const QByteArray &name, const QDeadlineTimer &deadline) const
    {
        sockaddr_un to{};
        to.sun_family = AF_UNIX;
        if (name.isEmpty() || size_t(name.size()) >= sizeof(to.sun_path))
            return false;
        std::memcpy(to.sun_path, name.constData(), size_t(name.size()));
        const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + size_t(name.size()));
        // A full queue of waiting connections gives EAGAIN: poll() cannot wait for its end.
        while (::connect(m_descriptor, reinterpret_cast<sockaddr *>(&to), length) != 0) {
            if (errno != EAGAIN || deadline.hasExpired())
                return false;
            ::poll(nullptr, 0, kFullQueuePauseMs);
        }
        return true;
    }

    bool send(const QByteArray &bytes) const
    {
        return ::send(m_descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL)
            == bytes.size();
    }

    bool hearsSomething(const QDeadlineTimer &deadline) const
    {
        pollfd wanted{m_descriptor, POLLIN, 0};
        int ready = 0;
        do {
            ready = ::poll(&wanted, 1, int(deadline.remainingTime()));
        } while (ready < 0 && errno == EINTR);
        char byte = 0;
        return ready == 1 && ::recv(m_descriptor, &byte, 1, 0) == 1;
    }

private:
    const int m_descriptor;
};

} // namespace

bool busAnswers(const QString &address, QDeadlineTimer deadline)
{
    if (!address.startsWith(QLatin1String("unix:")))
        return true;
    const Socket socket;
    const QByteArray user = QByteArray::number(::geteuid()).toHex();
    return socket.connectTo(socketName(address), deadline)
        && socket.send(QByteArray(1, '\0') + "AUTH EXTERNAL " + user + "\r\n")
        && socket.hearsSomething(deadline);
}

} // namespace tavbus
