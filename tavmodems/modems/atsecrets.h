#pragma once

#include <QByteArray>

/** What may be shown of AT traffic: PINs and passwords never. */
namespace atsecrets {

/** Whether the line is, or holds, a command with a PIN or a password. */
bool isSecret(const QByteArray &line);

/** The line with everything after the first such command replaced by "***". */
QByteArray masked(const QByteArray &line);

} // namespace atsecrets
