#pragma once

#include "smsassembler.h"

#include <QString>

#include <chrono>

class AtSession;
class SmsStorage;

/** Asks the operator for the SIM card's own number. */
class NumberRequest
{
public:
    /** `session` outlives this; the operator's answer is awaited no longer than `limit`. */
    NumberRequest(AtSession &session, std::chrono::milliseconds limit)
        : m_session(session)
        , m_limit(limit)
    {
    }

    /** By a USSD code. False with the session's error. */
    bool byUssd(const QString &code, QString &number);

    /**
     * By a message to `service`, the service's number and, behind a blank, what to write. The
     * limit runs from when the message is on its way. The answer stays on the modem. False with
     * the session's error.
     */
    bool bySms(const QString &service, QString &number);

private:
    bool awaitAnswer(SmsStorage &storage, const QString &recipient, const QList<SmsMessage> &known,
        QString &number);

    AtSession &m_session;
    const std::chrono::milliseconds m_limit;
};
