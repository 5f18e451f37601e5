#pragma once

#include "udevmonitor.h"

#include <QMap>
#include <memory>

/// The terminal's /sys: the devices that umockdev's testbed holds, and the real network interfaces.
/// All programs of the terminal see it, whatever they load and however they were started, because
/// the testbed is mounted there. umockdev's own way of showing it, a library preloaded into each
/// program, loses those that clear their environment, comes before the runtime of a sanitizer,
/// which refuses to start then, and would put a path of its own between the programs and the
/// ports. What it carries besides, device nodes and the messages about them, comes from PseudoLine
/// and UdevMonitor here.
///
/// One thing of the environment is left: libudev takes no /sys but the kernel's unless
/// SYSTEMD_DEVICE_VERIFY_SYSFS=0 tells it to (umockdev's library would have to deceive it as well).
/// The calling process needs it, too.
///
/// Made and mounted before there are threads that read the environment; used by one thread.
class DeviceTree
{
public:
    using Values = UdevMonitor::Properties;

    DeviceTree();

    /// Puts the tree over /sys, in the mount namespace it is called in.
    bool mount(QString *error);

    /// Adds a device below `parent`, or below /sys/devices, and tells whoever listens to udev.
    /// `name` may begin with directories; `attributes` are its files. Gives its path, or nothing.
    QByteArray add(const QByteArray &subsystem, const QByteArray &name, const QByteArray &parent,
        const Values &attributes, const Values &properties);
    /// Adds a link, in the directory of a device.
    void link(const QByteArray &path, const QByteArray &name, const QByteArray &target);
    /// Removes a device and those below it, the lowest first, and tells whoever listens to udev.
    void remove(const QByteArray &path);

private:
    struct Device
    {
        QByteArray subsystem;
        Values properties;
        QString database; // its file in udev's database
    };

    static bool announce(const QByteArray &action, const QByteArray &path, const Device &device);

    const std::unique_ptr<void, void (*)(void *)> m_testbed; // an UMockdevTestbed
    QMap<QByteArray, Device> m_devices; // by their paths
};
