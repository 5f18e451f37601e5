#include "atmodemlog.h"

Q_LOGGING_CATEGORY(AT_MODEM, "atmodem")
