#include "modemstate.h"

#include <QRegularExpression>

#include <utility>

namespace {

// A hexadecimal number of the scenario as a format of the profile wants it: "04X", "x", "d".
QByteArray formatted(const QString &hex, const QString &format)
{
    const uint number = hex.toUInt(nullptr, 16);
    if (format.isEmpty())
        return hex.toLatin1();
    if (format == QLatin1String("d"))
        return QByteArray::number(number);
    const int width = format.chopped(1).toInt();
    const QByteArray digits = QByteArray::number(number, 16).rightJustified(width, '0');
    return format.endsWith(QLatin1Char('X')) ? digits.toUpper() : digits;
}

} // namespace

ModemState::ModemState(ModemProfile modemProfile, ScenarioModem scenarioModem)
    : profile(std::move(modemProfile))
    , scenario(std::move(scenarioModem))
    , smsCentre(scenario.sim.smsCentre)
    , portsWhenPlugged(profile.ports)
{
    if (!scenario.fault.isEmpty())
        faults.insert(scenario.fault);
    for (const ScenarioSms &waiting : scenario.sim.sms)
        keepScenarioSms(waiting);
    powerUp();
}

void ModemState::powerUp()
{
    m_sincePower.start();
    pinGiven = scenario.sim.pin.isEmpty();
    functionality = 1;
    detached = false;
    newSmsMode = 0;
    newSmsSetting = "0,0,0,0,0";
}

bool ModemState::simReady() const
{
    return simPresent() && pinGiven && m_sincePower.elapsed() >= scenario.sim.readyMs;
}

int ModemState::registration() const
{
    if (functionality != 1 || !simReady() || detached)
        return 0;
    if (!scenario.network.registered || has("notRegistered")
        || m_sincePower.elapsed() < scenario.network.registerMs)
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

QList<gsmtext::Sms> ModemState::newSms(
    const QString &sender, const QDateTime &time, const QString &text)
{
    const QStringList texts = gsmtext::smsParts(text);
    QList<gsmtext::Sms> parts;
    gsmtext::Sms part;
    part.sender = sender;
    part.time = time;
    part.ucs2 = !gsmtext::isDefaultAlphabet(text);
    part.parts = texts.size();
    part.reference = ++messageReference & 0xff;
    for (part.part = 1; part.part <= part.parts; ++part.part) {
        part.text = texts.at(part.part - 1);
        parts.append(part);
    }
    return parts;
}

int ModemState::keepSms(const QByteArray &store, const gsmtext::Sms &sms)
{
    QMap<int, gsmtext::Sms> &messages = smsStores[store];
    if (messages.size() >= smsCapacity())
        return -1;
    int index = profile.firstSmsIndex;
    while (messages.contains(index))
        ++index;
    messages.insert(index, sms);
    return index;
}

void ModemState::keepScenarioSms(const ScenarioSms &waiting)
{
    const QDateTime given = QDateTime::fromString(waiting.time, Qt::ISODate);
    const QDateTime time = given.isValid() ? given : QDateTime::currentDateTime();
    const QByteArray store
        = (waiting.store.isEmpty() ? profile.smsStores.first() : waiting.store).toLatin1();
    QList<gsmtext::Sms> parts = newSms(waiting.sender, time, waiting.text);
    if (!waiting.pdu.isEmpty()) {
        parts.first().kind = gsmtext::Sms::Kind::Raw;
        parts.first().data = waiting.pdu.toLatin1();
    } else if (!waiting.data.isEmpty()) {
        parts.first().kind = gsmtext::Sms::Kind::Data;
        parts.first().data = QByteArray::fromHex(waiting.data.toLatin1());
    } else if (waiting.report) {
        parts.first().kind = gsmtext::Sms::Kind::Report;
    }
    for (int i = 0; i < parts.size(); ++i) {
        gsmtext::Sms part = parts.at(waiting.order.isEmpty() ? i : waiting.order.at(i) - 1);
        part.read = waiting.read;
        keepSms(store, part);
    }
}

QByteArray ModemState::valueOf(const QString &name) const
{
    const ScenarioNetwork &network = scenario.network;
    const int rssi = isRegistered() ? network.rssi : 99;
    const int dbm = rssi == 99 ? -113 : 2 * rssi - 113; // 3GPP TS 27.007, 8.5
    const QByteArray mnc = QByteArray::number(network.mnc).rightJustified(2, '0');
    const bool isInternational = scenario.sim.number.startsWith(QLatin1Char('+'));
    const QMap<QString, QByteArray> values{
        {QStringLiteral("manufacturer"), profile.manufacturer.toUtf8()},
        {QStringLiteral("model"), profile.model.toUtf8()},
        {QStringLiteral("revision"), profile.revision.toUtf8()},
        {QStringLiteral("imei"), scenario.imei.toUtf8()},
        {QStringLiteral("imsi"), scenario.sim.imsi.toUtf8()},
        {QStringLiteral("iccid"), scenario.sim.iccid.toUtf8()},
        {QStringLiteral("number"), scenario.sim.number.toUtf8()},
        {QStringLiteral("numberType"), isInternational ? "145" : "129"},
        {QStringLiteral("balance"), scenario.sim.balance.toUtf8()},
        {QStringLiteral("operator"), network.name.toUtf8()},
        {QStringLiteral("plmn"), QByteArray::number(network.mcc) + mnc},
        {QStringLiteral("mcc"), QByteArray::number(network.mcc)},
        {QStringLiteral("mnc"), mnc},
        {QStringLiteral("rssi"), QByteArray::number(rssi)},
        {QStringLiteral("dbm"), QByteArray::number(dbm)},
        {QStringLiteral("hcsq"), QByteArray::number(dbm + 121)}, // Huawei's ^HCSQ
        {QStringLiteral("stat"), QByteArray::number(registration())},
        {QStringLiteral("service"), isRegistered() ? "2" : "0"},
        {QStringLiteral("sim"), simReady() ? "1" : "255"},
        {QStringLiteral("act"), QByteArray::number(profile.accessTechnology)},
    };
    return values.value(name, '{' + name.toUtf8() + '}');
}

QByteArray ModemState::filled(const QString &text) const
{
    static const QRegularExpression place(QStringLiteral("\\{(\\w+)(?::(0?\\d*[Xx]|d))?\\}"));
    QByteArray result;
    int end = 0;
    QRegularExpressionMatchIterator matches = place.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += text.mid(end, match.capturedStart() - end).toUtf8();
        const QString name = match.captured(1);
        if (name == QLatin1String("lac") || name == QLatin1String("cid")) {
            const ScenarioNetwork &network = scenario.network;
            result += formatted(
                name == QLatin1String("lac") ? network.lac : network.cid, match.captured(2));
        } else {
            result += valueOf(name);
        }
        end = match.capturedEnd();
    }
    return result + text.mid(end).toUtf8();
}
