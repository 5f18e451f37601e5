#pragma once

#include "smsassembler.h"

#include <QString>

class AtSession;

/** Asks the operator for the SIM card's own number. */
class NumberRequest
{
public:
    /** `session` outlives this. */
    explicit NumberRequest(AtSession &session)
        : m_session(session)
    {
    }

    /** By a USSD code, as long as UssdSession::request(). False with the session's error. */
    bool byUssd(const QString &code, QString &number);

    /**
     * By a message to `service`, the service's number and, behind a blank, what to write. The
     * answer is awaited for 60 s from when the message is on its way, and stays on the modem.
     * False with the session's error.
     */
    bool bySms(const QString &service, QString &number);

private:
    bool awaitAnswer(const QString &recipient, const QList<SmsMessage> &known, QString &number);

    AtSession &m_session;
};
