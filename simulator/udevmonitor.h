#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>

/// Tells the clients of libudev's monitor in this network namespace that a device came or went, in
/// the message format that udev itself multicasts (sd-device's monitor, "libudev" header).
class UdevMonitor
{
public:
    using Properties = QList<QPair<QByteArray, QByteArray>>;

    /// `action` is "add" or "remove". False when the kernel did not take the message.
    static bool announce(
        const QByteArray &action, const QByteArray &subsystem, const Properties &properties);
};
