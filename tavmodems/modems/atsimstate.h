#pragma once

#include "atreply.h"

/** How the SIM card is. */
enum class AtSimState {
    Ready,
    Busy, ///< starting: ask again
    Missing,
    PinNeeded,
    PukNeeded,
    Failed, ///< broken, or of another operator than the modem takes
    Unknown, ///< the modem does not tell
};

/** The answer to AT+CPIN? (3GPP TS 27.007 8.3), errors of 9.2.1 included. */
AtSimState parseSimState(const AtReply &reply);
