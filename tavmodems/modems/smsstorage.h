#pragma once

#include "atreply.h"
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

    /**
     * Reads what was received, from the store that the modem reads from and from the one that it
     * puts new messages in; 35 s at most for each. What cannot be read is logged and left out. The
     * messages' indexes are for remove() of this object alone. False with the session's error.
     */
    bool read(QList<SmsMessage> &messages);
    /** Whether the modem told of a new message while it was read, which may not be among them. */
    bool hasNews() const { return m_hasNews; }

    /** Deletes all parts of messages that were read, 5 s at most for each. False with the
     * session's error when one could not be deleted; the others are deleted all the same. */
    bool remove(const QList<SmsMessage> &messages);

    /** Sends a message, 30 s at most. */
    bool send(const QString &recipient, const QString &text);

private:
    bool choosePduMode();
    bool list(int store, QList<StoredSms> &into);
    AtReply choose(int store);

    AtSession &m_session;
    QList<QByteArray> m_stores; // their names, the one that the modem had chosen first
    int m_chosen = 0;
    bool m_isPduMode = false;
    bool m_hasNews = false;
};
