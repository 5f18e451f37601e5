#include "rawbus.h"

#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr int kPatienceMs = 10000;

QByteArray uint32(quint32 number)
{
    QByteArray bytes(4, '\0');
    for (int i = 0; i < 4; ++i)
        bytes[i] = char(number >> (8 * i));
    return bytes;
}

void align(QByteArray &bytes, int to)
{
    while (bytes.size() % to != 0)
        bytes.append('\0');
}

void addField(QByteArray &fields, char code, char type, const QByteArray &value)
{
    align(fields, 8);
    fields += QByteArray(1, code) + QByteArray("\1", 1) + type + QByteArray(1, 0);
    if (type == 'g')
        fields += QByteArray(1, char(value.size())) + value + QByteArray(1, 0);
    else
        fields += RawBus::string(value);
}

} // namespace

RawBus::RawBus(const QString &address)
    : m_path(
        address.section(QLatin1String("path="), 1).section(QLatin1Char(','), 0, 0).toLocal8Bit())
{
}

RawBus::~RawBus()
{
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

bool RawBus::open()
{
    m_descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un to{};
    to.sun_family = AF_UNIX;
    std::strncpy(to.sun_path, m_path.constData(), sizeof(to.sun_path) - 1);
    if (::connect(m_descriptor, reinterpret_cast<sockaddr *>(&to), sizeof(to)) != 0)
        return false;
    const QByteArray user = QByteArray::number(::getuid()).toHex();
    const QString bus = QStringLiteral("org.freedesktop.DBus");
    return send(QByteArray(1, 0) + "AUTH EXTERNAL " + user + "\r\n") && hears("OK ")
        && send("BEGIN\r\n")
        && send(methodCall(
            bus, QStringLiteral("/org/freedesktop/DBus"), bus, QStringLiteral("Hello"), {}, {}))
        && hears("NameAcquired");
}

bool RawBus::send(const QByteArray &bytes)
{
    return ::send(m_descriptor, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL)
        == bytes.size();
}

void RawBus::hangUp()
{
    ::shutdown(m_descriptor, SHUT_RDWR);
}

bool RawBus::isDisconnected()
{
    pollfd wanted{m_descriptor, POLLIN, 0};
    char rest[4096];
    while (::poll(&wanted, 1, kPatienceMs) == 1) {
        if (::recv(m_descriptor, rest, sizeof(rest), 0) <= 0)
            return true;
    }
    return false;
}

bool RawBus::hears(const QByteArray &text)
{
    QByteArray heard;
    pollfd wanted{m_descriptor, POLLIN, 0};
    while (!heard.contains(text)) {
        char bytes[4096];
        if (::poll(&wanted, 1, kPatienceMs) != 1)
            return false;
        const ssize_t count = ::recv(m_descriptor, bytes, sizeof(bytes), 0);
        if (count <= 0)
            return false;
        heard.append(bytes, int(count));
    }
    return true;
}

QByteArray RawBus::string(const QByteArray &text)
{
    return uint32(quint32(text.size())) + text + QByteArray(1, 0);
}

QByteArray RawBus::methodCall(const QString &service, const QString &path, const QString &interface,
    const QString &method, const QByteArray &signature, const QByteArray &body)
{
    QByteArray fields;
    addField(fields, 1, 'o', path.toUtf8());
    addField(fields, 6, 's', service.toUtf8());
    addField(fields, 2, 's', interface.toUtf8());
    addField(fields, 3, 's', method.toUtf8());
    if (!signature.isEmpty())
        addField(fields, 8, 'g', signature);
    static quint32 serial = 0;
    QByteArray message = QByteArray("l\1\0\1", 4) + uint32(quint32(body.size())) + uint32(++serial)
        + uint32(quint32(fields.size())) + fields;
    align(message, 8);
    return message + body;
}
