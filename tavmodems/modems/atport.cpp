#include "atport.h"

#include "portholder.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

// Nobody reads between calls: what a babbling modem sends then is left to the kernel.
constexpr qint64 kReadBuffer = 65536;

struct Probe
{
    explicit Probe(const QString &path)
        : fd(
            ::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
        , reason(fd < 0 ? errno : 0)
    {
    }
    ~Probe()
    {
        if (fd >= 0)
            ::close(fd);
    }
    Q_DISABLE_COPY_MOVE(Probe)

    // Root may open what another has for itself, so it must be asked.
    bool isExclusive() const
    {
        int exclusive = 0;
        return reason == EBUSY || (fd >= 0 && ::ioctl(fd, TIOCGEXCL, &exclusive) == 0 && exclusive);
    }

    const int fd;
    const int reason;
};

} // namespace

AtPort::AtPort(const QString &lockDirectory)
    : m_lock(lockDirectory)
{
    m_port.setReadBufferSize(kReadBuffer);
}

AtPort::~AtPort()
{
    close();
}

QString AtPort::pathOf(const QString &name)
{
    return name.startsWith(QLatin1Char('/')) ? name : QStringLiteral("/dev/") + name;
}

bool AtPort::open(const QString &name, int baudrate)
{
    close();
    m_error.clear();
    m_path = pathOf(name);
    if (name.isEmpty())
        return fail(QStringLiteral("No port is chosen."));
    if (baudrate <= 0)
        return fail(QStringLiteral("%1 is not a line speed.").arg(baudrate));
    if (!m_lock.lock(m_path))
        return fail(heldText(m_lock.error()));

    // Kept until the port is open, so that the line's signals do not drop in between.
    const Probe probe(m_path);
    if (probe.isExclusive())
        return fail(heldText(portholder::find(m_path)));
    if (probe.fd < 0 && (probe.reason == ENOENT || probe.reason == ENXIO || probe.reason == ENODEV))
        return fail(QStringLiteral("There is no port %1.").arg(m_path));
    if (probe.fd < 0)
        return fail(QStringLiteral("The port %1 cannot be opened: %2.")
                        .arg(m_path, qt_error_string(probe.reason)));
    if (!::isatty(probe.fd))
        return fail(QStringLiteral("%1 is not a serial port.").arg(m_path));

    m_port.setPortName(m_path);
    m_port.setBaudRate(baudrate);
    m_port.setDataBits(QSerialPort::Data8);
    m_port.setParity(QSerialPort::NoParity);
    m_port.setStopBits(QSerialPort::OneStop);
    m_port.setFlowControl(QSerialPort::NoFlowControl);
    if (!m_port.open(QIODevice::ReadWrite))
        return fail(QStringLiteral("The port %1 cannot be opened at %2 bits per second: %3.")
                        .arg(m_path)
                        .arg(baudrate)
                        .arg(m_port.errorString()));
    return true;
}

bool AtPort::isGone() const
{
    if (!m_port.isOpen())
        return true;
    // The error is not enough: a hang-up is an end of file to Qt, told as a read error.
    pollfd state = {m_port.handle(), 0, 0};
    return m_port.error() == QSerialPort::ResourceError
        || (::poll(&state, 1, 0) == 1 && (state.revents & (POLLHUP | POLLERR | POLLNVAL)) != 0);
}

void AtPort::close()
{
    if (m_port.isOpen()) {
        // The kernel would hold the close up, for half a minute by default, until a modem that
        // takes nothing has taken it all.
        if (!isGone())
            m_port.clear();
        m_port.close();
    }
    m_lock.unlock();
}

bool AtPort::fail(const QString &error)
{
    close();
    m_error = error;
    return false;
}

QString AtPort::heldText(const QString &holder) const
{
    return holder.isEmpty()
        ? QStringLiteral("The port %1 is in use by another program.").arg(m_path)
        : QStringLiteral("The port %1 is in use by %2.").arg(m_path, holder);
}
