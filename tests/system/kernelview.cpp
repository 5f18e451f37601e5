#include "kernelview.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <arpa/inet.h>
#include <ifaddrs.h>
#include <memory>
#include <net/if.h>
#include <netinet/in.h>

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString textOf(const sockaddr *address)
{
    char text[INET_ADDRSTRLEN] = {};
    inet_ntop(
        AF_INET, &reinterpret_cast<const sockaddr_in *>(address)->sin_addr, text, sizeof text);
    return QString::fromLatin1(text);
}

} // namespace

QString kernelview::addressOf(const QString &interface)
{
    return addressesOf(interface).value(0);
}

QStringList kernelview::addressesOf(const QString &interface)
{
    ifaddrs *first = nullptr;
    if (getifaddrs(&first) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, &freeifaddrs);
    QStringList addresses;
    for (const ifaddrs *each = first; each != nullptr; each = each->ifa_next) {
        if (each->ifa_addr == nullptr || each->ifa_addr->sa_family != AF_INET
            || (each->ifa_flags & IFF_UP) == 0 || interface != QLatin1String(each->ifa_name))
            continue;
        QString text = textOf(each->ifa_addr);
        if ((each->ifa_flags & IFF_POINTOPOINT) != 0 && each->ifa_dstaddr != nullptr)
            text += QStringLiteral(" peer ") + textOf(each->ifa_dstaddr);
        addresses.append(text);
    }
    return addresses;
}

// proc(5): interface, destination, gateway, flags, ..., mask as the eighth.
QString kernelview::defaultRoute()
{
    const QList<QByteArray> lines = contents(QStringLiteral("/proc/net/route")).split('\n');
    for (const QByteArray &line : lines) {
        const QList<QByteArray> fields = line.split('\t');
        if (fields.value(1) == "00000000" && fields.value(7) == "00000000")
            return QString::fromLatin1(fields.first());
    }
    return {};
}

QStringList kernelview::processes()
{
    QStringList names;
    const QStringList all
        = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[1-9]*")}, QDir::Dirs);
    for (const QString &process : all) {
        const QString name
            = QString::fromUtf8(contents(QStringLiteral("/proc/%1/comm").arg(process)).trimmed());
        if (!name.isEmpty())
            names.append(name);
    }
    return names;
}

QStringList kernelview::usbManufacturers()
{
    QStringList names;
    const QString devices = QStringLiteral("/sys/bus/usb/devices");
    const QStringList all = QDir(devices).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &device : all) {
        const QByteArray name
            = contents(devices + QLatin1Char('/') + device + QStringLiteral("/manufacturer"));
        if (!name.isEmpty())
            names.append(QString::fromUtf8(name.trimmed()));
    }
    return names;
}

// A port's own directory is that of its interface, which lies in the device's.
int kernelview::usbPorts(const QString &manufacturer)
{
    int count = 0;
    const QDir ports(QStringLiteral("/sys/bus/usb-serial/devices"));
    const QStringList all = ports.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &port : all) {
        const QDir device(QFileInfo(ports.filePath(port)).canonicalFilePath());
        if (contents(device.filePath(QStringLiteral("../../manufacturer"))).trimmed()
            == manufacturer.toUtf8())
            ++count;
    }
    return count;
}
