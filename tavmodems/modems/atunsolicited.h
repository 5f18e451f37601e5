#pragma once

#include <QByteArray>
#include <QList>

/**
 * Whether a line inside the answer to `command` has nothing to do with it: a result code that
 * modems send unasked. A line that begins with the very name that the command asks for is taken
 * for its answer.
 */
bool isUnsolicited(const QByteArray &line, const QByteArray &command);

/**
 * The same for the lines of an answer one after another: what belongs to such a result code without
 * a name of its own counts too, the PDU behind +CMT (3GPP TS 27.005 3.4.1) and the further lines of
 * a +CUSD.
 */
class AtUnsolicited
{
public:
    explicit AtUnsolicited(const QByteArray &command)
        : m_command(command)
    {
    }

    bool takes(const QByteArray &line);

private:
    const QByteArray m_command;
    int m_pduOctets = 0; // at least so many are in the next line
    bool m_isTextOpen = false; // the quote at its end is still to come
};
