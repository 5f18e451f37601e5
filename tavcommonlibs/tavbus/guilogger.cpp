#include "guilogger.h"

Q_LOGGING_CATEGORY(GUILOGGER, "guilogger")
