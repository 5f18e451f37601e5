#pragma once

#include <QString>
#include <QtGlobal>

/** Who uses a serial port: for messages, as far as it can be seen. */
namespace portholder {

/** "wvdial (process 123)"; the number alone when the process has no name to be read. */
QString describe(qint64 pid);

/**
 * Describes another process that has the device open; empty when none is seen (an ordinary user
 * sees only its own processes).
 */
QString find(const QString &device);

} // namespace portholder
