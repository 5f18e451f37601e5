#pragma once

#include "ussd.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

struct AtIdentity;

/** What one family of modems has of its own: data only. */
struct AtDialect
{
    QString name; ///< "Huawei"; "generic 3GPP" for what no table knows
    QStringList makers; ///< how the maker's name begins, lower case
    QString models; ///< pattern of models sold under the chip maker's name; may be empty
    QList<QByteArray> quietCommands; ///< stop the maker's own unsolicited lines
    QList<UssdForm> ussdForms; ///< the one to try first, and what else it may take
    QByteArray cardNumberCommand; ///< asks for the SIM card's serial number (ICCID)
    /** Leave a stick no other device than the modem: the first that is taken does it. */
    QList<QByteArray> modemOnlyCommands;
    /** Lists a stick's devices ("=?") and chooses among them; empty: there is none such. */
    QByteArray devicesCommand;
};

/** The dialect of a modem; the generic one when it is none of the known. Never fails. */
const AtDialect &findDialect(const AtIdentity &identity);

/** All dialects, the generic one last. */
const QList<AtDialect> &allDialects();
