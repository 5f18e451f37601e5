#include "usbserialdevice.h"

#include "devicetree.h"
#include "pseudoline.h"

#include <utility>

namespace {

constexpr char kUsbSerialMajor[] = "188"; // Documentation/admin-guide/devices.txt of the kernel

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

} // namespace

UsbSerialDevice::UsbSerialDevice(DeviceTree *tree, int number, UsbIdentity identity)
    : m_tree(tree)
    , m_number(number)
    , m_identity(std::move(identity))
{
}

SerialLine *UsbSerialDevice::makeLine(int index, QObject *parent) const
{
    return new PseudoLine(QStringLiteral("ttyUSB%1").arg(m_ports.at(index)), parent);
}

bool UsbSerialDevice::plug()
{
    m_path
        = m_tree->add("usb", "pci0000:00/0000:00:14.0/usb1/1-" + QByteArray::number(m_number), {},
            {
                {"idVendor", hex4(m_identity.vendorId)},
                {"idProduct", hex4(m_identity.productId)},
                {"manufacturer", m_identity.vendor.toUtf8()},
                {"product", m_identity.product.toUtf8()},
                {"serial", m_identity.serial.toUtf8()},
                {"busnum", "1"},
                {"devnum", QByteArray::number(m_number + 1)},
            },
            {
                {"DEVTYPE", "usb_device"},
                {"DRIVER", "usb"},
                {"PRODUCT",
                    QByteArray::number(m_identity.vendorId, 16) + '/'
                        + QByteArray::number(m_identity.productId, 16) + "/0"},
                {"TYPE", "0/0/0"},
            });
    bool done = !m_path.isEmpty();
    for (int i = 0; i < m_ports.size(); ++i)
        done = done && addPort(i, m_ports.at(i));
    return done;
}

bool UsbSerialDevice::addPort(int interface, int portNumber)
{
    const QByteArray number = QByteArray::number(portNumber);
    const QByteArray tty = "ttyUSB" + number;
    const QByteArray driver = m_identity.driver.toLatin1();
    const QByteArray interfaceNumber = QByteArray::number(interface).rightJustified(2, '0');
    DeviceTree::Values properties{
        {"DEVNAME", "/dev/" + tty},
        {"MAJOR", kUsbSerialMajor},
        {"MINOR", number},
        {"ID_BUS", "usb"},
        {"ID_VENDOR", udevName(m_identity.vendor)},
        {"ID_VENDOR_ID", hex4(m_identity.vendorId)},
        {"ID_MODEL", udevName(m_identity.product)},
        {"ID_MODEL_ID", hex4(m_identity.productId)},
        {"ID_SERIAL_SHORT", udevName(m_identity.serial)},
        {"ID_USB_INTERFACE_NUM", interfaceNumber},
        {"ID_USB_DRIVER", driver},
    };
    for (auto it = m_identity.properties.begin(); it != m_identity.properties.end(); ++it)
        properties.append({it.key().toUtf8(), it.value().toUtf8()});
    const auto own = m_identity.portProperties.value(QString::fromLatin1(interfaceNumber));
    for (auto it = own.begin(); it != own.end(); ++it)
        properties.append({it.key().toUtf8(), it.value().toUtf8()});

    const QByteArray usbInterface = m_tree->add("usb",
        "1-" + QByteArray::number(m_number) + ":1." + QByteArray::number(interface), m_path,
        {{"bInterfaceNumber", interfaceNumber}},
        {{"DEVTYPE", "usb_interface"}, {"DRIVER", driver}});
    const QByteArray usbPort = usbInterface.isEmpty()
        ? QByteArray()
        : m_tree->add("usb-serial", tty, usbInterface, {}, {{"DRIVER", driver}});
    if (usbPort.isEmpty())
        return false;
    const QByteArray port = m_tree->add("tty", "tty/" + tty, usbPort,
        {{"dev", QByteArray(kUsbSerialMajor) + ':' + number}}, properties);
    if (port.isEmpty())
        return false;
    m_tree->link(port, "device", usbPort);
    return true;
}

void UsbSerialDevice::unplug()
{
    if (!m_path.isEmpty())
        m_tree->remove(m_path);
    m_path.clear();
}
