#pragma once

#include "commandreply.h"
#include "parsedcommand.h"

#include <QMap>

#include <optional>

class PortSession;

namespace gsmtext {
struct Sms;
}

/// Short messages in PDU and in text mode (3GPP TS 27.005): the stores, listing, reading, deleting,
/// sending and the announcement of new ones.
class SmsCommands
{
public:
    explicit SmsCommands(PortSession *session);

    void powerUp();
    /// Nothing when the command is none of these.
    std::optional<CommandReply> execute(const ParsedCommand &command);
    /// The text that followed the prompt of the last AT+CMGS.
    CommandReply send(const QByteArray &text);

private:
    CommandReply test(const QByteArray &name) const;
    CommandReply setting(const QByteArray &name) const;
    CommandReply set(const ParsedCommand &command);
    CommandReply setFormat(int format);
    CommandReply stores() const;
    CommandReply chooseStores(const ParsedCommand &command);
    CommandReply list(const QByteArray &which);
    CommandReply read(int index);
    CommandReply remove(const ParsedCommand &command);
    CommandReply startSending(const ParsedCommand &command);
    QMap<int, gsmtext::Sms> *store() const;
    QList<QByteArray> linesOf(gsmtext::Sms *sms, int index) const;
    QByteArray textHeader(const gsmtext::Sms &sms) const;
    QList<QByteArray> announce(const QString &sender, const QString &text) const;

    PortSession *const m_session; // the port's
    bool m_textMode = false;
    bool m_details = false; // AT+CSDH
    int m_service = 0; // AT+CSMS
    QByteArray m_readStore; // of AT+CPMS
    QByteArray m_writeStore;
    QByteArray m_receiveStore;
    QByteArray m_destination; // of the message that is being typed
    int m_length = 0; // of its PDU
};
