#pragma once

#include <QByteArray>

/**
 * Whether a line inside the answer to `command` has nothing to do with it: a result code that
 * modems send unasked. A line that begins with the very name that the command asks for is taken
 * for its answer.
 */
bool isUnsolicited(const QByteArray &line, const QByteArray &command);
