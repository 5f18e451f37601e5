#pragma once

#include "atregistration.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

/** Where a modem is registered. */
struct AtCell
{
    AtRegistration registration = AtRegistration::Unknown;
    QString area; ///< location or tracking area code: hexadecimal, upper case, at least 4 digits
    QString cell; ///< cell identity, likewise; both empty when the modem does not tell
    std::optional<int> technology; ///< AcT of 3GPP TS 27.007 7.3: 0 GSM, 2 UTRAN, 7 E-UTRAN...
};

/**
 * The answer to the read form of `name` ("+CREG", "+CGREG", "+CEREG"; 3GPP TS 27.007 7.2, 10.1.20,
 * 10.1.22) after it was set to 2: "2,1,\"00C3\",\"0A12F3B4\",7", the codes quoted or bare. The
 * unsolicited form, "1,\"00C3\",...", will do where there is no other. None when there is neither.
 */
std::optional<AtCell> parseCell(const QByteArray &name, const QList<QByteArray> &lines);
