#include "ussdsession.h"

#include "atdialect.h"
#include "atsession.h"
#include "atunsolicited.h"
#include "onelinetext.h"
#include "ussd.h"

#include <QDeadlineTimer>
#include <QMap>

#include <algorithm>

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds kSetting = 1s;
// Silence after which a text that does not show its end is taken to have ended.
constexpr milliseconds kQuiet = 300ms;
// Silence after which no answer to a request that was given up is taken to be under way.
constexpr milliseconds kSettled = 500ms;
constexpr milliseconds kSettling = 2s;
// A text has 160 octets (23.038 5); a modem that sends ever more lines is not listened to for ever.
constexpr int kMostLines = 1000;

// What a modem says to a text in a form that it does not take, 27.007 9.2.1: not allowed, not
// supported, not text at all, wrong parameters, unknown; or ERROR and no more.
bool isAboutForm(const AtReply &reply)
{
    constexpr int CODES[] = {3, 4, 25, 50, 100};
    return reply.status == AtReply::Status::Error
        && (!reply.errorText.startsWith('+')
            || std::find(std::begin(CODES), std::end(CODES), reply.errorCode) != std::end(CODES));
}

QList<QByteArray> without(const QList<QByteArray> &unsolicited, const QByteArray &command)
{
    QList<QByteArray> rest;
    for (const QByteArray &line : unsolicited) {
        if (!isUnsolicited(line, command))
            rest << line;
    }
    return rest;
}

milliseconds remaining(const QDeadlineTimer &deadline)
{
    return milliseconds(deadline.remainingTime());
}

} // namespace

bool UssdSession::request(const QString &code, QString &answer)
{
    const QList<UssdForm> forms
        = m_session.ussdForm ? QList<UssdForm>{*m_session.ussdForm} : m_session.dialect->ussdForms;
    QMap<UssdForm, QByteArray> commands;
    for (const UssdForm form : forms) {
        if (const auto command = ussdCommand(code, form))
            commands.insert(form, *command);
    }
    if (commands.isEmpty())
        return m_session.fail(AtError::Refused,
            code.isEmpty() ? QStringLiteral("There is no USSD code to send.")
                           : QStringLiteral("The USSD code %1 cannot be sent.")
                                 .arg(onelinetext::cleaned(code)));
    if (!m_session.isPlainCharset && !choosePlainCharset())
        return false;
    if (m_session.isUssdPending && !settle())
        return false;
    const QDeadlineTimer deadline(m_limit);
    for (const UssdForm form : forms) {
        bool isFormRefused = !commands.contains(form);
        const bool isAnswered = !isFormRefused && m_session.begin()
            && exchange(commands.value(form), deadline, answer, isFormRefused);
        if (isAnswered)
            m_session.ussdForm = form;
        if (isAnswered || !isFormRefused)
            return isAnswered;
    }
    return false; // with the error of the last exchange
}

// A code is written in the character set of 27.007 5.5, which another program may have changed.
bool UssdSession::choosePlainCharset()
{
    for (const char *command : {"AT+CSCS=\"GSM\"", "AT+CSCS=\"IRA\""}) {
        const AtReply reply = m_session.ask(command, kSetting);
        if (reply.isLost())
            return m_session.failLost(reply);
        if (reply.isOk())
            break;
    }
    m_session.isPlainCharset = true;
    return true;
}

bool UssdSession::exchange(
    const QByteArray &command, const QDeadlineTimer &deadline, QString &answer, bool &isFormRefused)
{
    const AtReply reply = m_session.ask(command, remaining(deadline));
    isFormRefused = isAboutForm(reply);
    if (reply.isLost())
        callOff();
    if (!reply.isOk())
        return m_session.failAnswer(reply, QStringLiteral("The USSD request was refused"));
    // The network's text comes before the OK or behind it.
    QList<QByteArray> lines = reply.lines + without(reply.unsolicited, command);
    for (;;) {
        const auto received = parseUssdAnswer(lines);
        const bool isEnd = received && received->isWhole;
        const AtReply more
            = isEnd ? AtReply() : m_session.listen(received ? kQuiet : remaining(deadline));
        if (more.status == AtReply::Status::PortGone)
            return false;
        lines += without(more.unsolicited, command);
        if (more.isOk() && !deadline.hasExpired() && lines.size() < kMostLines)
            continue;
        if (!received || received->status == UssdAnswer::Status::ReplyWanted)
            callOff();
        if (!received)
            return m_session.fail(AtError::NoAnswer,
                QStringLiteral("The network did not answer the USSD request in time."));
        if (received->text.isEmpty()) {
            const bool isLate = received->status == UssdAnswer::Status::NetworkTimeout;
            return m_session.fail(isLate ? AtError::NoAnswer : AtError::Refused,
                QStringLiteral("The USSD request came to nothing: %1.").arg(received->error()));
        }
        answer = received->text;
        return true;
    }
}

// Else the next code would be taken for the reply to this one's menu, or this one's late answer for
// the next one's.
void UssdSession::callOff()
{
    m_session.isUssdPending = true;
    m_session.ask("AT+CUSD=2", kSetting);
}

// Lets what is still to come of a request that was called off pass.
bool UssdSession::settle()
{
    const QDeadlineTimer deadline(kSettling);
    AtReply reply;
    do
        reply = m_session.listen(kSettled);
    while (reply.isOk() && !deadline.hasExpired());
    m_session.isUssdPending = false;
    return reply.status != AtReply::Status::PortGone;
}
