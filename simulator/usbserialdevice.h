#pragma once

#include <QString>
#include <QStringList>

/// How a USB serial device shows itself to whoever lists ports.
struct UsbIdentity
{
    quint16 vendorId = 0;
    quint16 productId = 0;
    QString vendor; ///< manufacturer text of the device descriptor
    QString product;
    QString serial;
    QString driver = QStringLiteral("option");
};

/// The part of /sys and of udev's database that describes one USB device with serial ports, as the
/// kernel and udev lay it out (Documentation/ABI of the kernel; sd-device), in a /sys that is the
/// terminal's own. libudev shows it to every client once SYSTEMD_DEVICE_VERIFY_SYSFS=0 tells it
/// that /sys need not be the kernel's.
class UsbSerialDevice
{
public:
    /// `number` is the USB port it is plugged into, from 1; `portNumbers` are those of ttyUSB*.
    UsbSerialDevice(int number, UsbIdentity identity, QList<int> portNumbers);

    bool plug();
    void unplug();

private:
    bool addPort(int interface, int portNumber);
    void announce(const char *action) const;

    const int m_number;
    const UsbIdentity m_identity;
    const QList<int> m_ports;
    const QString m_path; // of the device, below /sys
};
