#pragma once

#include <QLoggingCategory>

/** The modems library's category, "atmodem": AT traffic both ways at debug level, secrets masked.
 */
Q_DECLARE_LOGGING_CATEGORY(AT_MODEM)
