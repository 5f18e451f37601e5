#pragma once

#include "commandreply.h"
#include "parsedcommand.h"

#include <optional>

class PortSession;

/// The commands about the SIM card: its PIN, its numbers, its files (3GPP TS 27.007, 5.6, 7.1, 7.4,
/// 8.3 and 8.18).
class SimCommands
{
public:
    explicit SimCommands(PortSession *session);

    /// Nothing when the command is none of these.
    std::optional<CommandReply> execute(const ParsedCommand &command) const;

private:
    CommandReply pinState() const;
    CommandReply enterPin(const ParsedCommand &command) const;
    CommandReply lock(const ParsedCommand &command) const;
    CommandReply ownNumber() const;
    CommandReply readFile(const ParsedCommand &command) const;

    PortSession *const m_session; // the port's
};
