#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/** A serial port that a search looks at. */
struct SearchPort
{
    QString name; ///< bare device name ("ttyUSB0"); the path of a device in a folder of /dev
    QString usbDevice; ///< tells the ports of one USB device from others; empty: not on USB
    int usbInterface = -1; ///< number of the USB interface behind the port; -1: not on USB
};

/**
 * The port of a device given by its bare name or its path. What it is on USB is read from `sysfs`
 * (Documentation/ABI/testing/sysfs-class-tty and sysfs-bus-usb of the kernel).
 */
SearchPort searchPortOf(const QString &device, const QString &sysfs = QStringLiteral("/sys"));

/**
 * All ports that the system lists, in its order, then the further ones, each device once, however
 * many names it has.
 */
QList<SearchPort> allSearchPorts(const QStringList &furtherDevices);
