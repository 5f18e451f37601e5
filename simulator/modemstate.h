#pragma once

#include "gsmtext.h"
#include "modemprofile.h"
#include "scenario.h"

#include <QSet>

/// What all ports of one modem share: the device, its SIM card, the network it sees and the faults
/// it has. A plain value that its commands change.
struct ModemState
{
    ModemState(ModemProfile profile, ScenarioModem scenario);

    /// As after power-up: what is kept in the device stays, what is set by commands is forgotten.
    void powerUp();

    bool has(const char *fault) const { return faults.contains(QLatin1String(fault)); }
    bool simPresent() const { return scenario.sim.present && !has("noSim"); }
    bool simReady() const { return simPresent() && pinGiven; }
    /// <stat> of +CREG (3GPP TS 27.007, 7.2).
    int registration() const;
    bool isRegistered() const { return registration() == 1 || registration() == 5; }
    /// Whether a data connection with the chosen context would be accepted.
    bool apnFits() const;
    int addSms(const QString &sender, const QDateTime &time, const QString &text);
    /// Replaces {imei} and the like.
    QByteArray filled(const QString &text) const;

    const ModemProfile profile;
    const ScenarioModem scenario;
    QSet<QString> faults;

    bool pinGiven = false;
    int pinTries = 3;
    int functionality = 1; ///< +CFUN
    QMap<int, QByteArray> contexts; ///< +CGDCONT, what follows the number
    QList<gsmtext::Sms> sms; ///< holes are messages without parts
    int newSmsMode = 0; ///< <mt> of +CNMI
    int messageReference = 0;
};
