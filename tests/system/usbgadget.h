#pragma once

#include "usbdevice.h"

#include <QByteArray>

/// A modem as a USB device that the kernel itself plugs into its dummy controller: this side says
/// what the device is (configfs, Documentation/usb/gadget_configfs.rst of the kernel), the other
/// side enumerates it, binds its driver for mobile modems to it and makes ttyUSB* of its ports.
///
/// The ports get the lowest free numbers, as the kernel gives them: the modems of a scenario come
/// to the numbers that it expects as long as they are plugged in in its order.
class UsbGadget : public UsbDevice
{
public:
    /// Takes the dummy controller's port `number`, from 1.
    UsbGadget(int number, UsbIdentity identity);
    ~UsbGadget() override;

    void setPorts(const QList<int> &portNumbers) override;
    SerialLine *makeLine(int index, QObject *parent) const override;
    bool plug() override;
    void unplug() override;

private:
    bool describe() const;
    bool addPort(int index);
    void dissolve();
    bool awaitPorts(bool present) const;

    const int m_number;
    const UsbIdentity m_identity;
    const QString m_path; // in configfs
    QList<int> m_ports; // ttyUSB*
    QList<QByteArray> m_insides; // ttyGS*
};
