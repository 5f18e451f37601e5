#pragma once

#include <QDeadlineTimer>
#include <QString>

namespace tavbus {

/**
 * Whether a bus behind this one D-Bus address answers the first line of the authentication before
 * the deadline: a frozen one takes connections (the kernel does) but never speaks.
 *
 * Knows unix sockets; an address of another kind is taken to answer.
 */
bool busAnswers(const QString &address, QDeadlineTimer deadline);

} // namespace tavbus
