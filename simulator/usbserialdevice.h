#pragma once

#include <QMap>
#include <QString>

class DeviceTree;

/// How a USB serial device shows itself to whoever lists ports.
struct UsbIdentity
{
    quint16 vendorId = 0;
    quint16 productId = 0;
    QString vendor; ///< manufacturer text of the device descriptor
    QString product;
    QString serial;
    QString driver = QStringLiteral("option");
    /// What else udev's rules would say of its ports; this one is ModemManager's for every tty.
    QMap<QString, QString> properties{{QStringLiteral("ID_MM_CANDIDATE"), QStringLiteral("1")}};
    QMap<QString, QMap<QString, QString>> portProperties; ///< the same by "00", "01"... of a port
};

/// One USB device with serial ports in the terminal's device tree, as the kernel and udev lay it
/// out (Documentation/ABI of the kernel; sd-device).
class UsbSerialDevice
{
public:
    /// `number` is the USB port it is plugged into, from 1; `portNumbers` are those of ttyUSB*.
    UsbSerialDevice(DeviceTree *tree, int number, UsbIdentity identity, QList<int> portNumbers);

    /// The ports it has from the next plugging in on.
    void setPorts(const QList<int> &portNumbers) { m_ports = portNumbers; }
    bool plug();
    void unplug();

private:
    bool addPort(int interface, int portNumber);

    DeviceTree *const m_tree; // the rack's
    const int m_number;
    const UsbIdentity m_identity;
    QList<int> m_ports;
    QByteArray m_path; // while it is plugged
};
