#include "searchport.h"

#include "atport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSerialPortInfo>
#include <QSet>

namespace {

QByteArray attribute(const QString &folder, const char *name)
{
    QFile file(folder + QLatin1Char('/') + QLatin1String(name));
    return file.open(QFile::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

// The device behind links, or the path itself when there is none.
QString devicePath(const QString &device)
{
    const QString path = AtPort::pathOf(device);
    const QString canonical = QFileInfo(path).canonicalFilePath();
    return canonical.isEmpty() ? QDir::cleanPath(path) : canonical;
}

} // namespace

SearchPort searchPortOf(const QString &device, const QString &sysfs)
{
    SearchPort port;
    const QString devices = QStringLiteral("/dev/");
    const QString path = QDir::cleanPath(AtPort::pathOf(device));
    const QString bare = path.mid(devices.size());
    const bool isBare = path.startsWith(devices) && !bare.contains(QLatin1Char('/'));
    port.name = isBare ? bare : path;

    // The port of a USB serial converter hangs below its USB interface, that of a modem by the
    // CDC class is its child: the interface is the first folder upwards that has a number.
    const QString tty = QFileInfo(devicePath(device)).fileName();
    QString folder
        = QFileInfo(QStringLiteral("%1/class/tty/%2/device").arg(sysfs, tty)).canonicalFilePath();
    while (folder.size() > 1) {
        bool isNumber = false;
        const int number = attribute(folder, "bInterfaceNumber").toInt(&isNumber, 16);
        const QString parent = QFileInfo(folder).path();
        if (isNumber) {
            port.usbInterface = number;
            port.usbDevice = parent;
            break;
        }
        folder = parent;
    }
    return port;
}

QList<SearchPort> allSearchPorts(const QStringList &furtherDevices)
{
    QStringList devices;
    const auto listed = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &info : listed)
        devices << info.systemLocation();
    devices += furtherDevices;

    QList<SearchPort> ports;
    QSet<QString> seen;
    for (const QString &device : qAsConst(devices)) {
        const QString path = devicePath(device);
        if (!seen.contains(path))
            ports << searchPortOf(device);
        seen.insert(path);
    }
    return ports;
}
