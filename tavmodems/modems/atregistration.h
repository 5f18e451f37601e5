#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/** <stat> of 3GPP TS 27.007 7.2, 10.1.20 and 10.1.22. */
enum class AtRegistration {
    NotSearching = 0,
    Home = 1,
    Searching = 2,
    Denied = 3,
    Unknown = 4,
    Roaming = 5,
    SmsOnlyHome = 6,
    SmsOnlyRoaming = 7,
    EmergencyOnly = 8,
    HomeNoFallback = 9,
    RoamingNoFallback = 10,
};

/**
 * The answer to the read form of `name` ("+CREG", "+CGREG", "+CEREG"): "+CREG: <n>,<stat>[,...]".
 * The unsolicited form, "+CREG: <stat>[,<lac>...]", may stand in between and is told apart by its
 * missing or quoted second field.
 */
std::optional<AtRegistration> parseRegistration(
    const QByteArray &name, const QList<QByteArray> &lines);

/** Whether data can be had with it. */
bool isRegistered(AtRegistration registration);
