#pragma once

#include "commandreply.h"
#include "parsedcommand.h"

#include <QMap>

#include <optional>

class PortSession;

/// The commands about the mobile network: functionality, registration, operator, signal, clock and
/// contexts (3GPP TS 27.007, 7.2, 7.3, 8.2, 8.5, 8.15 and 10.1).
class NetworkCommands
{
public:
    explicit NetworkCommands(PortSession *session);

    void powerUp();
    /// Nothing when the command is none of these.
    std::optional<CommandReply> execute(const ParsedCommand &command);

private:
    bool knowsRegistration(const QByteArray &name) const;
    CommandReply setFunctionality(const ParsedCommand &command);
    CommandReply registration(const QByteArray &name) const;
    CommandReply operatorName() const;
    CommandReply operators() const;
    CommandReply setOperator(const ParsedCommand &command);
    CommandReply contexts() const;
    CommandReply setContext(const ParsedCommand &command);

    PortSession *const m_session; // the port's
    int m_operatorFormat = 0;
    QMap<QByteArray, int> m_registrationModes; // <n> of AT+CREG and its like
};
