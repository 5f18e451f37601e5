#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

class AtSession;
class QDeadlineTimer;

/** USSD requests to the network over an open modem (3GPP TS 27.007 7.15). */
class UssdSession
{
public:
    /** `session` outlives this; the network's text is awaited no longer than `limit`. */
    UssdSession(AtSession &session, std::chrono::milliseconds limit)
        : m_session(session)
        , m_limit(limit)
    {
    }

    /**
     * Sends a code and waits for the network's text; then whatever the network still waits for is
     * called off. After a request that was not answered in time, which is called off too, the next
     * one waits for a moment without an answer to that. Written in the dialect's first form, and in
     * its next one when the modem refuses that. False with the session's error when there is no
     * text.
     */
    bool request(const QString &code, QString &answer);

private:
    bool choosePlainCharset();
    bool exchange(const QByteArray &command, const QDeadlineTimer &deadline, QString &answer,
        bool &isFormRefused);
    void callOff();
    bool settle();

    AtSession &m_session;
    const std::chrono::milliseconds m_limit;
};
