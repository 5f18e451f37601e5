#include "numberrequest.h"

#include "atsession.h"
#include "phonenumbertext.h"
#include "smsstorage.h"
#include "ussdsession.h"

#include <QDeadlineTimer>

#include <algorithm>

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSetting = 1s;
// Between two looks for new messages; a line from the modem, which announces one, ends it.
constexpr milliseconds kLookAgain = 2s;
constexpr int kMostServiceDigits = 6;

bool isSame(const SmsMessage &one, const SmsMessage &other)
{
    return one.indexes == other.indexes && one.time == other.time && one.sender == other.sender
        && one.text == other.text;
}

// Operators answer from the number asked, from another short one, or under a name. A subscriber may
// happen to write at the same time.
bool isFromService(const QString &sender, const QString &recipient)
{
    const bool isNumber = std::all_of(
        sender.begin(), sender.end(), [](QChar c) { return c.isDigit() || c == QLatin1Char('+'); });
    return sender == recipient || !isNumber || sender.size() <= kMostServiceDigits;
}

} // namespace

bool NumberRequest::byUssd(const QString &code, QString &number)
{
    QString answer;
    if (!UssdSession(m_session, m_limit).request(code, answer))
        return false;
    const auto found = findPhoneNumber(answer);
    if (!found)
        return m_session.fail(AtError::Refused,
            QStringLiteral("There is no telephone number in the operator's answer: %1")
                .arg(answer.simplified()));
    number = *found;
    return true;
}

bool NumberRequest::bySms(const QString &service, QString &number)
{
    const QString recipient = service.section(QLatin1Char(' '), 0, 0);
    const QString text = service.section(QLatin1Char(' '), 1).trimmed();
    if (recipient.isEmpty())
        return m_session.fail(
            AtError::Refused, QStringLiteral("There is no service number to write to."));
    // 3GPP TS 27.005 3.4.1: to the store, and tell of it. What a modem refuses is looked for.
    const AtReply setting = m_session.ask("AT+CNMI=2,1", kSetting);
    if (setting.isLost())
        return m_session.failLost(setting);
    SmsStorage storage(m_session);
    QList<SmsMessage> known;
    return storage.read(known) && storage.send(recipient, text)
        && awaitAnswer(storage, recipient, known, number);
}

bool NumberRequest::awaitAnswer(
    SmsStorage &storage, const QString &recipient, const QList<SmsMessage> &known, QString &number)
{
    const QDeadlineTimer deadline(m_limit);
    for (;;) {
        QList<SmsMessage> messages;
        if (!storage.read(messages))
            return false;
        for (const SmsMessage &message : qAsConst(messages)) {
            const bool isOld = std::any_of(known.begin(), known.end(),
                [&message](const SmsMessage &old) { return isSame(old, message); });
            const auto found = isOld || !isFromService(message.sender, recipient)
                ? std::nullopt
                : findPhoneNumber(message.text);
            if (found) {
                number = *found;
                return true;
            }
        }
        if (deadline.hasExpired())
            return m_session.fail(AtError::NoAnswer,
                QStringLiteral("The operator did not answer the message to %1 in time.")
                    .arg(recipient));
        const milliseconds left(deadline.remainingTime());
        if (!storage.hasNews()
            && m_session.listen(std::min(left, kLookAgain)).status == AtReply::Status::PortGone)
            return false;
    }
}
