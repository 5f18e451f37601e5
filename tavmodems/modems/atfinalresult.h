#pragma once

#include "atreply.h"

#include <optional>

/**
 * Whether a line ends the answer to `command`, and how: the result codes of ITU-T V.250 5.7.1, of
 * 3GPP TS 27.007 9.2 and 27.005 3.2.5 by number and by text, and what makers say instead of ERROR.
 * Only `status`, `errorCode` and `errorText` of the result are set.
 *
 * What becomes of a call (CONNECT, NO CARRIER, BUSY...) ends the answer only to a command that
 * makes, takes or resumes one: elsewhere it tells of another call and comes unasked.
 */
std::optional<AtReply> parseFinalResult(const QByteArray &line, const QByteArray &command);
