#pragma once

/** Why something that was asked of a modem did not come about. */
enum class AtError {
    None,
    Port, ///< there is no such port, another program holds it, or it has vanished
    NoAnswer, ///< the modem, or the network behind it, did not answer in time
    Refused ///< the modem or the network refused, or has no answer to give
};
