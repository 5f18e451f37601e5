#include "smsstorage.h"

#include "atmodemlog.h"
#include "atsession.h"
#include "smslisting.h"
#include "smspdu.h"
#include "smsstores.h"

#include <algorithm>

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSetting = 1s;
constexpr milliseconds kStoreQuery = 5s; // the modem itself may be waiting for the card
constexpr milliseconds kListing = 30s; // a full store over a slow line
constexpr milliseconds kRemoval = 5s;
constexpr milliseconds kSending = 30s;
// Tells the indexes of one store from those of another; no store has so many places.
constexpr int kStride = 1000000;

} // namespace

bool SmsStorage::read(QList<SmsMessage> &messages)
{
    if (!choosePduMode())
        return false;
    if (m_stores.isEmpty()) {
        const AtReply reply = m_session.ask("AT+CPMS?", kStoreQuery);
        if (reply.isLost())
            return m_session.failLost(reply);
        m_stores = parseSmsStores(reply.lines);
        if (m_stores.isEmpty())
            m_stores << QByteArray(); // whichever it is
    }
    m_hasNews = false;
    QList<StoredSms> stored;
    for (int store = 0; store < m_stores.size(); ++store) {
        const AtReply reply = choose(store);
        if (reply.isLost())
            return m_session.failLost(reply);
        // One that cannot be chosen is passed over.
        if (reply.isOk() && !list(store, stored))
            return false;
    }
    const AtReply restored = choose(0);
    if (restored.isLost())
        return m_session.failLost(restored);
    messages = assembleMessages(stored);
    return true;
}

bool SmsStorage::remove(const QList<SmsMessage> &messages)
{
    QList<int> places;
    for (const SmsMessage &message : messages)
        places += message.indexes;
    std::sort(places.begin(), places.end());
    AtReply refusal;
    refusal.status = AtReply::Status::Ok;
    for (const int place : qAsConst(places)) {
        AtReply reply = choose(place / kStride);
        if (reply.isOk())
            reply = m_session.ask("AT+CMGD=" + QByteArray::number(place % kStride), kRemoval);
        if (reply.isLost())
            return m_session.failLost(reply);
        if (!reply.isOk())
            refusal = reply;
    }
    const AtReply restored = choose(0);
    if (restored.isLost())
        return m_session.failLost(restored);
    return refusal.isOk()
        || m_session.failAnswer(refusal, QStringLiteral("A message could not be deleted"));
}

bool SmsStorage::send(const QString &recipient, const QString &text)
{
    const auto submit = encodeSmsSubmit(recipient, text);
    if (!submit)
        return m_session.fail(
            AtError::Refused, QStringLiteral("A message to %1 cannot be written.").arg(recipient));
    if (!choosePduMode())
        return false;
    const AtReply reply = m_session.askWithText("AT+CMGS=" + QByteArray::number(submit->tpduLength),
        submit->octets.toHex().toUpper(), kSending);
    return reply.isOk()
        || m_session.failAnswer(reply, QStringLiteral("The message could not be sent"));
}

bool SmsStorage::choosePduMode()
{
    if (m_isPduMode)
        return true;
    const AtReply reply = m_session.ask("AT+CMGF=0", kSetting);
    m_isPduMode = reply.isOk();
    return m_isPduMode
        || m_session.failAnswer(reply, QStringLiteral("The modem has no short messages"));
}

bool SmsStorage::list(int store, QList<StoredSms> &into)
{
    const AtReply reply = m_session.ask("AT+CMGL=4", kListing); // 27.005 3.4.2: all
    if (!reply.isOk())
        return m_session.failAnswer(reply, QStringLiteral("The messages could not be read"));
    m_hasNews = m_hasNews
        || std::any_of(reply.unsolicited.begin(), reply.unsolicited.end(),
            [](const QByteArray &line) { return line.startsWith("+CMTI:"); });
    const SmsListing listing = parseSmsListing("+CMGL", reply.lines);
    for (const BrokenSms &broken : listing.broken)
        qCWarning(AT_MODEM).noquote() << m_session.path() << "the message" << broken.index
                                      << "cannot be read:" << broken.error;
    for (StoredSms sms : listing.messages) {
        sms.index += store * kStride;
        into << sms;
    }
    return true;
}

AtReply SmsStorage::choose(int store)
{
    AtReply reply;
    reply.status = AtReply::Status::Ok;
    if (store == m_chosen)
        return reply;
    reply = m_session.ask("AT+CPMS=\"" + m_stores.at(store) + '"', kStoreQuery);
    if (reply.isOk())
        m_chosen = store;
    return reply;
}
