#pragma once

#include "gsmtext.h"
#include "modemprofile.h"
#include "scenario.h"

#include <QElapsedTimer>
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
    bool simReady() const;
    /// <stat> of +CREG (3GPP TS 27.007, 7.2).
    int registration() const;
    bool isRegistered() const { return registration() == 1 || registration() == 5; }
    /// Whether a data connection with the chosen context would be accepted.
    bool apnFits() const;
    /// A text as the messages that the network makes of it, in their order.
    QList<gsmtext::Sms> newSms(const QString &sender, const QDateTime &time, const QString &text);
    /// Puts a message into the lowest free place of a store; -1 when it is full.
    int keepSms(const QByteArray &store, const gsmtext::Sms &sms);
    int smsCapacity() const { return scenario.sim.smsCapacity; }
    /// Replaces {imei} and the like; {lac:04X} and {cid:d} are written as Python's format does.
    QByteArray filled(const QString &text) const;

    const ModemProfile profile;
    const ScenarioModem scenario;
    QSet<QString> faults;

    bool pinGiven = false;
    int pinTries = 3;
    int functionality = 1; ///< +CFUN
    QMap<int, QByteArray> contexts; ///< +CGDCONT, what follows the number
    bool detached = false; ///< by +COPS=2
    QMap<QByteArray, QMap<int, gsmtext::Sms>> smsStores; ///< "SM" -> place -> message
    QString smsCentre; ///< +CSCA
    QByteArray newSmsSetting; ///< +CNMI
    int newSmsMode = 0; ///< <mt> of it
    int messageReference = 0;
    QMap<QString, QString> compositions; ///< by command, what was chosen
    QStringList portsWhenPlugged; ///< roles, from the next plugging in on

private:
    QByteArray valueOf(const QString &name) const;
    void keepScenarioSms(const ScenarioSms &waiting);

    QElapsedTimer m_sincePower;
};
