#pragma once

#include "usbdevice.h"

class DeviceTree;

/// One USB device with serial ports in the terminal's device tree, as the kernel and udev lay it
/// out (Documentation/ABI of the kernel; sd-device).
class UsbSerialDevice : public UsbDevice
{
public:
    /// `number` is the USB port it is plugged into, from 1.
    UsbSerialDevice(DeviceTree *tree, int number, UsbIdentity identity);

    void setPorts(const QList<int> &portNumbers) override { m_ports = portNumbers; }
    SerialLine *makeLine(int index, QObject *parent) const override;
    bool plug() override;
    void unplug() override;

private:
    bool addPort(int interface, int portNumber);

    DeviceTree *const m_tree; // the rack's
    const int m_number;
    const UsbIdentity m_identity;
    QList<int> m_ports;
    QByteArray m_path; // while it is plugged
};
