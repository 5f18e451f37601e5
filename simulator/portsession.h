#pragma once

#include "commandreply.h"

#include <QString>

struct ModemState;

/// What one port of a modem keeps between commands and what the answers on it have in common.
class PortSession
{
public:
    explicit PortSession(ModemState *modemState);

    void powerUp();

    /// "+CME ERROR" as AT+CMEE wants it; the codes are those of 3GPP TS 27.007, 9.2.
    CommandReply equipmentError(int code) const;
    /// "+CMS ERROR"; the codes are those of 3GPP TS 27.005, 3.2.5.
    CommandReply messageError(int code) const;
    /// The error of a command that wants a card, for the reason why there is none to use.
    CommandReply needSim() const;

    /// A text in the character set that AT+CSCS chose (3GPP TS 27.007, 5.5).
    QByteArray toCharset(const QString &text) const;
    QString fromCharset(const QByteArray &text) const;

    ModemState *const modem; // the caller's
    int errorMode = 0; ///< AT+CMEE
    QByteArray charset; ///< AT+CSCS
};
