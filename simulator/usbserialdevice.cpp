#include "usbserialdevice.h"

#include "privatefiles.h"
#include "udevmonitor.h"

#include <QDir>
#include <utility>

namespace {

constexpr int kUsbSerialMajor = 188; // Documentation/admin-guide/devices.txt of the kernel

QString interfaceName(int number, int interface)
{
    return QStringLiteral("1-%1:1.%2").arg(number).arg(interface);
}

QByteArray hex4(quint16 value)
{
    return QByteArray::number(value, 16).rightJustified(4, '0');
}

// udev replaces what is not fit for a file name the same way.
QByteArray udevName(const QString &text)
{
    QByteArray name = text.toUtf8();
    for (char &character : name) {
        const bool plain = (character >= '0' && character <= '9')
            || (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z')
            || QByteArrayLiteral("#+-.:=@_").contains(character);
        if (!plain)
            character = '_';
    }
    return name;
}

bool link(const QString &target, const QString &path)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile::remove(path);
    return QFile::link(target, path);
}

QString databaseFile(int portNumber)
{
    return QStringLiteral("/run/udev/data/c%1:%2").arg(kUsbSerialMajor).arg(portNumber);
}

QString portPath(const QString &device, int number, int interface, int portNumber)
{
    const QString tty = QStringLiteral("ttyUSB%1").arg(portNumber);
    return device + QLatin1Char('/') + interfaceName(number, interface) + QLatin1Char('/') + tty
        + QStringLiteral("/tty/") + tty;
}

} // namespace

UsbSerialDevice::UsbSerialDevice(int number, UsbIdentity identity, QList<int> portNumbers)
    : m_number(number)
    , m_identity(std::move(identity))
    , m_ports(std::move(portNumbers))
    , m_path(QStringLiteral("/sys/devices/pci0000:00/0000:00:14.0/usb1/1-%1").arg(number))
{
}

bool UsbSerialDevice::plug()
{
    const auto attribute = [this](const char *name, const QByteArray &value) {
        return PrivateFiles::write(m_path + QLatin1Char('/') + QLatin1String(name), value + '\n');
    };
    bool done = attribute("idVendor", hex4(m_identity.vendorId))
        && attribute("idProduct", hex4(m_identity.productId))
        && attribute("manufacturer", m_identity.vendor.toUtf8())
        && attribute("product", m_identity.product.toUtf8())
        && attribute("serial", m_identity.serial.toUtf8()) && attribute("busnum", "1")
        && attribute("devnum", QByteArray::number(m_number + 1))
        && PrivateFiles::write(m_path + QStringLiteral("/uevent"),
            "DEVTYPE=usb_device\nDRIVER=usb\nPRODUCT=" + QByteArray::number(m_identity.vendorId, 16)
                + '/' + QByteArray::number(m_identity.productId, 16) + "/0\nTYPE=0/0/0\n")
        && link(QStringLiteral("/sys/bus/usb"), m_path + QStringLiteral("/subsystem"))
        && link(m_path, QStringLiteral("/sys/bus/usb/devices/1-%1").arg(m_number));
    for (int i = 0; i < m_ports.size(); ++i)
        done = done && addPort(i, m_ports.at(i));
    if (done)
        announce("add");
    return done;
}

bool UsbSerialDevice::addPort(int interface, int portNumber)
{
    const QString name = interfaceName(m_number, interface);
    const QString tty = QStringLiteral("ttyUSB%1").arg(portNumber);
    const QString usbInterface = m_path + QLatin1Char('/') + name;
    const QString usbPort = usbInterface + QLatin1Char('/') + tty;
    const QString port = portPath(m_path, m_number, interface, portNumber);
    const QString drivers = QStringLiteral("/sys/bus/usb-serial/drivers/") + m_identity.driver;
    QDir().mkpath(drivers);
    const QByteArray number = QByteArray::number(portNumber);
    const QByteArray major = QByteArray::number(kUsbSerialMajor);
    const QByteArray interfaceNumber = QByteArray::number(interface).rightJustified(2, '0');
    return PrivateFiles::write(usbInterface + QStringLiteral("/uevent"),
               "DEVTYPE=usb_interface\nDRIVER=" + m_identity.driver.toLatin1() + '\n')
        && PrivateFiles::write(
            usbInterface + QStringLiteral("/bInterfaceNumber"), interfaceNumber + '\n')
        && link(QStringLiteral("/sys/bus/usb"), usbInterface + QStringLiteral("/subsystem"))
        && link(usbInterface, QStringLiteral("/sys/bus/usb/devices/") + name)
        && PrivateFiles::write(
            usbPort + QStringLiteral("/uevent"), "DRIVER=" + m_identity.driver.toLatin1() + '\n')
        && link(QStringLiteral("/sys/bus/usb-serial"), usbPort + QStringLiteral("/subsystem"))
        && link(drivers, usbPort + QStringLiteral("/driver"))
        && link(usbPort, QStringLiteral("/sys/bus/usb-serial/devices/") + tty)
        && PrivateFiles::write(port + QStringLiteral("/uevent"),
            "MAJOR=" + major + "\nMINOR=" + number + "\nDEVNAME=" + tty.toLatin1() + '\n')
        && PrivateFiles::write(port + QStringLiteral("/dev"), major + ':' + number + '\n')
        && link(QStringLiteral("/sys/class/tty"), port + QStringLiteral("/subsystem"))
        && link(port, QStringLiteral("/sys/class/tty/") + tty)
        && PrivateFiles::write(databaseFile(portNumber),
            "I:1\nE:ID_BUS=usb\nE:ID_VENDOR=" + udevName(m_identity.vendor) + "\nE:ID_VENDOR_ID="
                + hex4(m_identity.vendorId) + "\nE:ID_MODEL=" + udevName(m_identity.product)
                + "\nE:ID_MODEL_ID=" + hex4(m_identity.productId) + "\nE:ID_SERIAL_SHORT="
                + udevName(m_identity.serial) + "\nE:ID_USB_INTERFACE_NUM=" + interfaceNumber
                + "\nE:ID_USB_DRIVER=" + m_identity.driver.toLatin1() + "\nV:1\n");
}

void UsbSerialDevice::unplug()
{
    announce("remove");
    for (int i = 0; i < m_ports.size(); ++i) {
        const QString tty = QStringLiteral("ttyUSB%1").arg(m_ports.at(i));
        QFile::remove(QStringLiteral("/sys/class/tty/") + tty);
        QFile::remove(QStringLiteral("/sys/bus/usb-serial/devices/") + tty);
        QFile::remove(QStringLiteral("/sys/bus/usb/devices/") + interfaceName(m_number, i));
        QFile::remove(databaseFile(m_ports.at(i)));
    }
    QFile::remove(QStringLiteral("/sys/bus/usb/devices/1-%1").arg(m_number));
    QDir(m_path).removeRecursively();
}

void UsbSerialDevice::announce(const char *action) const
{
    for (int i = 0; i < m_ports.size(); ++i) {
        const int port = m_ports.at(i);
        const QByteArray tty = "ttyUSB" + QByteArray::number(port);
        UdevMonitor::announce(action, "tty",
            {
                {"DEVPATH", portPath(m_path, m_number, i, port).mid(4).toUtf8()}, // below /sys
                {"DEVNAME", "/dev/" + tty},
                {"MAJOR", QByteArray::number(kUsbSerialMajor)},
                {"MINOR", QByteArray::number(port)},
                {"ID_BUS", "usb"},
                {"ID_VENDOR_ID", hex4(m_identity.vendorId)},
                {"ID_MODEL_ID", hex4(m_identity.productId)},
            });
    }
}
