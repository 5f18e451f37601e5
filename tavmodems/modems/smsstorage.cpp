#include "smsstorage.h"

#include "atmodemlog.h"
#include "atsession.h"
#include "smslisting.h"
#include "smspdu.h"
#include "smsstores.h"

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSetting = 1s;
constexpr milliseconds kStoreQuery = 5s; // the modem itself may be waiting for the card
constexpr milliseconds kListing = 30s; // a full store over a slow line
constexpr milliseconds kRemoval = 5s;
constexpr milliseconds kSending = 30s;

} // namespace

bool SmsStorage::read(QList<Store> &stores)
{
    if (!choosePduMode())
        return false;
    const AtReply reply = m_session.ask("AT+CPMS?", kStoreQuery);
    if (reply.isLost())
        return m_session.failLost(reply);
    QList<QByteArray> names = parseSmsStores(reply.lines);
    m_chosen = names.value(0);
    if (names.isEmpty())
        names << QByteArray();
    QList<Store> all;
    for (const QByteArray &name : qAsConst(names)) {
        Store store{name, {}};
        if (!choose(name) || !list(store))
            return false;
        all << store;
    }
    stores = all;
    return true;
}

bool SmsStorage::remove(const QList<Store> &stores)
{
    AtReply refusal;
    refusal.status = AtReply::Status::Ok;
    for (const Store &store : stores) {
        if (store.messages.isEmpty())
            continue;
        if (!choose(store.name))
            return false;
        for (const SmsMessage &message : store.messages) {
            for (const int index : message.indexes) {
                const AtReply reply
                    = m_session.ask("AT+CMGD=" + QByteArray::number(index), kRemoval);
                if (reply.isLost())
                    return m_session.failLost(reply);
                if (!reply.isOk())
                    refusal = reply;
            }
        }
    }
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
    const AtReply reply = m_session.ask("AT+CMGF=0", kSetting);
    return reply.isOk()
        || m_session.failAnswer(reply, QStringLiteral("The modem has no short messages"));
}

bool SmsStorage::list(Store &store)
{
    const AtReply reply = m_session.ask("AT+CMGL=4", kListing);
    if (!reply.isOk())
        return m_session.failAnswer(reply, QStringLiteral("The messages could not be read"));
    const SmsListing listing = parseSmsListing("+CMGL", reply.lines);
    for (const BrokenSms &broken : listing.broken)
        qCWarning(AT_MODEM).noquote() << m_session.path() << "the message" << broken.index
                                      << "cannot be read:" << broken.error;
    store.messages = assembleMessages(listing.messages);
    return true;
}

bool SmsStorage::choose(const QByteArray &store)
{
    if (store == m_chosen)
        return true;
    const AtReply reply = m_session.ask("AT+CPMS=\"" + store + '"', kStoreQuery);
    if (!reply.isOk())
        return m_session.failAnswer(
            reply, QStringLiteral("The store %1 cannot be chosen").arg(QString::fromUtf8(store)));
    m_chosen = store;
    return true;
}
