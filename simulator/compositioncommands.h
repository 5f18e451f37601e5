#pragma once

#include "commandreply.h"
#include "parsedcommand.h"

#include <optional>

class PortSession;

/// The family's commands that choose which ports the device shows when it is next plugged in, as
/// the profile tells them: Huawei's AT^U2DIAG and AT^SETPORT.
class CompositionCommands
{
public:
    explicit CompositionCommands(PortSession *session);

    /// Nothing when the command is none of these.
    std::optional<CommandReply> execute(const ParsedCommand &command) const;

private:
    PortSession *const m_session; // the port's
};
