#pragma once

#include <QStringList>

/// What the kernel says of itself, read from where it says it.
namespace kernelview {

/** "ADDRESS peer PEER" of an interface that is up; empty when it is down or there is none. */
QString addressOf(const QString &interface);
/** All that it has. */
QStringList addressesOf(const QString &interface);
/** The interface that the default route goes through; empty without one. */
QString defaultRoute();
/** Names of all processes, each as often as it runs. */
QStringList processes();
/** How many serial ports of ttyUSB* the USB device of that manufacturer has. */
int usbPorts(const QString &manufacturer);
/** USB devices by their manufacturer texts. */
QStringList usbManufacturers();

} // namespace kernelview
