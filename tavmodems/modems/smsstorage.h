#pragma once

#include "smsassembler.h"

#include <QByteArray>
#include <QList>
#include <QString>

class AtSession;

/** The short messages that an open modem keeps, in PDU mode (3GPP TS 27.005). */
class SmsStorage
{
public:
    /** `session` outlives this. */
    explicit SmsStorage(AtSession &session)
        : m_session(session)
    {
    }

    /** One store of the modem: "SM" on the card, "ME" in the modem... */
    struct Store
    {
        QByteArray name; ///< empty for the one that the modem has chosen
        QList<SmsMessage> messages;
    };

    /**
     * Reads what was received, from the store that the modem reads from and from the one that it
     * puts new messages in; 35 s at most for each. What cannot be read is logged and left out.
     * False with the session's error when a store cannot be listed.
     */
    bool read(QList<Store> &stores);

    /** Deletes all parts of these messages, 5 s at most for each. False with the session's error
     * when one could not be deleted; the others are deleted all the same. */
    bool remove(const QList<Store> &stores);

    /** Sends a message, 30 s at most. */
    bool send(const QString &recipient, const QString &text);

private:
    bool choosePduMode();
    bool list(Store &store);
    bool choose(const QByteArray &store);

    AtSession &m_session;
    QByteArray m_chosen; // the store that is read from
};
