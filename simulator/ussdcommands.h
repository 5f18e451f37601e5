#pragma once

#include "commandreply.h"
#include "parsedcommand.h"

#include <QString>

#include <optional>

class PortSession;

/// AT+CUSD (3GPP TS 27.007, 7.15) with the habits of the family: in which form requests and answers
/// travel, whether the answer comes before OK, whether it names its coding scheme.
class UssdCommands
{
public:
    explicit UssdCommands(PortSession *session);

    /// Nothing when the command is none of these.
    std::optional<CommandReply> execute(const ParsedCommand &command) const;

private:
    std::optional<QString> codeOf(const QByteArray &sent) const;
    QByteArray answerLine(const QString &text) const;

    PortSession *const m_session; // the port's
};
