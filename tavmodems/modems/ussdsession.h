#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

class AtSession;

/** USSD requests to the network over an open modem (3GPP TS 27.007 7.15). */
class UssdSession
{
public:
    /** `session` outlives this. */
    explicit UssdSession(AtSession &session)
        : m_session(session)
    {
    }

    /**
     * Sends a code and waits for the network's text, 30 s at most; then whatever the network still
     * waits for is called off. Written in the form that the dialect has, and in the other one when
     * the modem refuses that. False with the session's error when there is no text.
     */
    bool request(const QString &code, QString &answer);

private:
    bool exchange(const QByteArray &command, QString &answer, bool &isFormRefused);
    void callOff();

    AtSession &m_session;
};
