#include "modemstate.h"

#include <utility>

ModemState::ModemState(ModemProfile modemProfile, ScenarioModem scenarioModem)
    : profile(std::move(modemProfile))
    , scenario(std::move(scenarioModem))
{
    if (!scenario.fault.isEmpty())
        faults.insert(scenario.fault);
    for (const ScenarioSms &waiting : scenario.sim.sms) {
        const QDateTime time = QDateTime::fromString(waiting.time, Qt::ISODate);
        addSms(waiting.sender, time.isValid() ? time : QDateTime::currentDateTime(), waiting.text);
    }
    powerUp();
}

void ModemState::powerUp()
{
    pinGiven = scenario.sim.pin.isEmpty();
    functionality = 1;
    newSmsMode = 0;
}

int ModemState::registration() const
{
    if (functionality != 1 || !simReady())
        return 0;
    if (!scenario.network.registered || has("notRegistered"))
        return 2; // searching
    return scenario.network.roaming ? 5 : 1;
}

bool ModemState::apnFits() const
{
    if (has("wrongApn"))
        return false;
    const QString &wanted = scenario.network.apn;
    return wanted.isEmpty()
        || contexts.value(1).toLower().contains('"' + wanted.toLower().toLatin1() + '"');
}

int ModemState::addSms(const QString &sender, const QDateTime &time, const QString &text)
{
    const QStringList parts = gsmtext::smsParts(text);
    const bool ucs2 = !gsmtext::isDefaultAlphabet(text);
    const int reference = ++messageReference & 0xff;
    int last = 0;
    for (int i = 0; i < parts.size(); ++i) {
        gsmtext::Sms part;
        part.sender = sender;
        part.time = time;
        part.text = parts.at(i);
        part.part = i + 1;
        part.parts = parts.size();
        part.reference = reference;
        part.ucs2 = ucs2;
        last = 0;
        while (last < sms.size() && sms.at(last).parts > 0)
            ++last;
        if (last == sms.size())
            sms.append(part);
        else
            sms[last] = part;
    }
    return last;
}

QByteArray ModemState::filled(const QString &text) const
{
    if (!text.contains(QLatin1Char('{')))
        return text.toUtf8();
    const ScenarioNetwork &network = scenario.network;
    const int rssi = isRegistered() ? network.rssi : 99;
    const QString plmn
        = QStringLiteral("%1%2").arg(network.mcc).arg(network.mnc, 2, 10, QLatin1Char('0'));
    const QMap<QString, QString> values{
        {QStringLiteral("{manufacturer}"), profile.manufacturer},
        {QStringLiteral("{model}"), profile.model},
        {QStringLiteral("{revision}"), profile.revision},
        {QStringLiteral("{imei}"), scenario.imei},
        {QStringLiteral("{imsi}"), scenario.sim.imsi},
        {QStringLiteral("{iccid}"), scenario.sim.iccid},
        {QStringLiteral("{number}"), scenario.sim.number},
        {QStringLiteral("{operator}"), network.name},
        {QStringLiteral("{plmn}"), plmn},
        {QStringLiteral("{mcc}"), QString::number(network.mcc)},
        {QStringLiteral("{mnc}"), QStringLiteral("%1").arg(network.mnc, 2, 10, QLatin1Char('0'))},
        {QStringLiteral("{lac}"), network.lac},
        {QStringLiteral("{cid}"), network.cid},
        {QStringLiteral("{rssi}"), QString::number(rssi)},
        {QStringLiteral("{dbm}"), QString::number(rssi == 99 ? -113 : 2 * rssi - 113)},
        {QStringLiteral("{stat}"), QString::number(registration())},
        {QStringLiteral("{service}"), QString::number(isRegistered() ? 2 : 0)},
        {QStringLiteral("{sim}"), QString::number(simReady() ? 1 : 255)},
        {QStringLiteral("{act}"), QString::number(profile.accessTechnology)},
    };
    QString result = text;
    for (auto it = values.begin(); it != values.end(); ++it)
        result.replace(it.key(), it.value());
    return result.toUtf8();
}
