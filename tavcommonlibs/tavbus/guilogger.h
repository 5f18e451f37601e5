#pragma once

#include <QLoggingCategory>

/// "guilogger": what a program with a window says about the services on the bus.
Q_DECLARE_LOGGING_CATEGORY(GUILOGGER)
