#include "networkquery.h"

#include "atcardnumbers.h"
#include "atdialect.h"
#include "atfields.h"
#include "atsession.h"
#include "atsignal.h"

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSetting = 1s;
constexpr milliseconds kQuery = 2s;
constexpr milliseconds kCardQuery = 5s; // the modem itself may be waiting for the card
constexpr milliseconds kNetworkQuery = 5s; // or for the network

const char *registrationText(AtRegistration registration)
{
    switch (registration) {
    case AtRegistration::NotSearching:
        return "not searching";
    case AtRegistration::Home:
    case AtRegistration::SmsOnlyHome:
    case AtRegistration::HomeNoFallback:
        return "home";
    case AtRegistration::Searching:
        return "searching";
    case AtRegistration::Denied:
        return "denied";
    case AtRegistration::Roaming:
    case AtRegistration::SmsOnlyRoaming:
    case AtRegistration::RoamingNoFallback:
        return "roaming";
    case AtRegistration::EmergencyOnly:
        return "emergency calls only";
    case AtRegistration::Unknown:
        break;
    }
    return "unknown";
}

// <AcT> of 3GPP TS 27.007 7.3
const char *technologyText(int technology)
{
    switch (technology) {
    case 0:
    case 1:
    case 3:
    case 8:
        return "GSM";
    case 2:
    case 4:
    case 5:
    case 6:
        return "UMTS";
    case 7:
    case 9:
        return "LTE";
    case 10:
    case 11:
    case 12:
    case 13:
        return "5G";
    default:
        return "";
    }
}

void put(QMap<QString, QVariant> &into, const char *key, const QString &value)
{
    if (!value.isEmpty())
        into.insert(QLatin1String(key), value);
}

} // namespace

std::optional<MobileNetwork> NetworkQuery::network()
{
    // 3GPP TS 27.007 7.3: format 2 is the codes.
    AtReply reply = ask("AT+COPS=3,2", kSetting);
    if (!isLost())
        reply = ask("AT+COPS?", kNetworkQuery);
    const auto selected = parseOperator(reply.lines);
    if (reply.isOk() && selected && selected->network)
        return selected->network;
    return cardNetwork(QStringLiteral("The modem does not tell its network"));
}

std::optional<MobileNetwork> NetworkQuery::homeNetwork()
{
    return cardNetwork(QStringLiteral("The SIM card does not tell its network"));
}

std::optional<MobileNetwork> NetworkQuery::cardNetwork(const QString &complaint)
{
    const AtReply reply = ask("AT+CIMI", kCardQuery);
    const auto home = networkOfImsi(parseImsi(reply.lines));
    if (!home && !isLost())
        m_session.failAnswer(reply, complaint);
    return home;
}

std::optional<QString> NetworkQuery::imei()
{
    const AtReply reply = ask("AT+CGSN", kQuery);
    const QByteArray imei = parseImei(reply.lines);
    if (!imei.isEmpty())
        return QString::fromLatin1(imei);
    if (!isLost())
        m_session.failAnswer(reply, QStringLiteral("The modem does not tell its serial number"));
    return std::nullopt;
}

std::optional<AtCell> NetworkQuery::cell()
{
    auto known = registration();
    if (isLost())
        return std::nullopt;
    if (known && !known->area.isEmpty())
        return known;
    m_session.fail(AtError::Refused,
        known && !isRegistered(known->registration)
            ? QStringLiteral("The modem is in no network.")
            : QStringLiteral("The modem does not tell its cell."));
    return std::nullopt;
}

std::optional<int> NetworkQuery::signalLevel()
{
    AtReply reply = ask("AT+CSQ", kQuery);
    auto level = parseSignalLevel(reply.lines);
    if (!level && !isLost()) { // 27.007 8.69: what a modem has that measures no GSM signal
        reply = ask("AT+CESQ", kQuery);
        level = parseExtendedSignalLevel(reply.lines);
    }
    if (!level && !isLost())
        m_session.fail(AtError::Refused,
            QStringLiteral("The modem does not know the strength of the signal."));
    return level;
}

std::optional<QMap<QString, QVariant>> NetworkQuery::info()
{
    QMap<QString, QVariant> facts;
    put(facts, "manufacturer", m_session.identity.maker);
    put(facts, "model", m_session.identity.model);
    const QByteArray revisionCommand = "AT+CGMR";
    put(facts, "revision", parseIdentityText(revisionCommand, ask(revisionCommand, kQuery).lines));
    put(facts, "imei", imei().value_or(QString()));
    put(facts, "imsi", QString::fromLatin1(parseImsi(ask("AT+CIMI", kCardQuery).lines)));
    put(facts, "iccid", QString::fromLatin1(iccid()));
    put(facts, "simNumber", parseOwnNumber(ask("AT+CNUM", kCardQuery).lines));
    const AtOperator named = namedOperator();
    put(facts, "operator", named.name);
    if (isLost())
        return std::nullopt;
    const auto serving = registration();
    if (isLost())
        return std::nullopt;
    // Older modems tell the technology at the operator's name alone.
    std::optional<int> technology = serving ? serving->technology : std::nullopt;
    if (!technology)
        technology = named.technology;
    if (serving)
        put(facts, "registration", QLatin1String(registrationText(serving->registration)));
    put(facts, "technology", QLatin1String(technologyText(technology.value_or(-1))));
    QVariantList cells;
    if (serving && !serving->area.isEmpty()) {
        QMap<QString, QVariant> cell;
        put(cell, "lac", serving->area);
        put(cell, "cid", serving->cell);
        put(cell, "technology", QLatin1String(technologyText(technology.value_or(-1))));
        cells << cell;
    }
    facts.insert(QStringLiteral("gsmCells"), cells);
    m_session.begin(); // what it does not tell is no failure
    return facts;
}

// Of the network that tells the cell, or else the one that the modem is registered in, or else any.
std::optional<AtCell> NetworkQuery::registration()
{
    std::optional<AtCell> best;
    for (const QByteArray &name :
        {QByteArray("+CREG"), QByteArray("+CGREG"), QByteArray("+CEREG")}) {
        if (!m_session.cellReports.contains(name)) {
            if (!ask("AT" + name + "=2", kSetting).isOk())
                continue;
            m_session.cellReports << name;
        }
        auto cell = parseCell(name, ask("AT" + name + '?', kQuery).lines);
        if (cell && !cell->area.isEmpty())
            return cell;
        if (cell
            && (!best || (!isRegistered(best->registration) && isRegistered(cell->registration))))
            best = cell;
    }
    return best;
}

// A modem that has gone, or has twice in a row said nothing, is not asked any more.
AtReply NetworkQuery::ask(const QByteArray &command, milliseconds limit)
{
    AtReply reply;
    if (isLost())
        return reply;
    reply = m_session.ask(command, limit);
    m_unanswered = reply.isLost() ? m_unanswered + 1 : 0;
    if (isLost())
        m_session.failLost(reply);
    return reply;
}

bool NetworkQuery::isLost() const
{
    return !m_session.isOpen() || m_unanswered >= 2;
}

QByteArray NetworkQuery::iccid()
{
    if (isLost()) // and with it the dialect
        return {};
    QByteArray iccid = parseIccid(ask(m_session.dialect->cardNumberCommand, kCardQuery).lines);
    if (!iccid.isEmpty())
        return iccid;
    // 27.007 8.18: READ BINARY of EF ICCID, 2FE2 of 3GPP TS 31.101 or ETSI TS 102 221 13.2.
    const auto read = atfields::valueOf("+CRSM", ask("AT+CRSM=176,12258,0,0,10", kCardQuery).lines);
    return read ? parseIccid({atfields::split(*read).value(2)}) : QByteArray();
}

AtOperator NetworkQuery::namedOperator()
{
    ask("AT+COPS=3,0", kSetting); // 27.007 7.3: the long name
    return parseOperator(ask("AT+COPS?", kNetworkQuery).lines).value_or(AtOperator());
}
