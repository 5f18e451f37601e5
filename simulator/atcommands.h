#pragma once

#include "compositioncommands.h"
#include "networkcommands.h"
#include "portsession.h"
#include "simcommands.h"
#include "smscommands.h"
#include "ussdcommands.h"

#include <QMap>

struct ModemState;

/// The commands of one port: the profile's table first, then what every modem does (3GPP TS 27.007
/// and 27.005), by subject. A command that none knows is an error. Keeps what is set by commands
/// and belongs to the port; the rest is in the modem's state, which the caller owns.
class AtCommands
{
    Q_DISABLE_COPY_MOVE(AtCommands)

public:
    explicit AtCommands(ModemState *modem);

    /// `command` is one command without "AT", its name in capitals: "+CREG=2", "I", "&F".
    CommandReply execute(const QByteArray &command);
    /// The text that followed the prompt of the last +CMGS.
    CommandReply sendSms(const QByteArray &text) { return m_sms.send(text); }
    void powerUp();

private:
    std::optional<CommandReply> fromTable(const QByteArray &command) const;
    std::optional<CommandReply> general(const ParsedCommand &command);
    CommandReply plainSetting(const ParsedCommand &command);

    ModemState *const m_modem;
    PortSession m_session;
    SimCommands m_sim;
    NetworkCommands m_network;
    SmsCommands m_sms;
    UssdCommands m_ussd;
    CompositionCommands m_composition;
    QMap<QByteArray, QByteArray> m_settings; // set and read back, without any other effect
};
