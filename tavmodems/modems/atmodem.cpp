#include "atmodem.h"

#include "atchannel.h"
#include "atdialect.h"
#include "atfunctionality.h"
#include "atidentity.h"
#include "atmodemlog.h"
#include "atport.h"
#include "atregistration.h"
#include "atsimstate.h"
#include "balancetext.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <limits>

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

// The longest that is waited for an answer; a modem that answers is never waited for.
constexpr milliseconds kHandshake = 1s; // also the silence that must come before an escape
constexpr milliseconds kEscape = 1500ms; // S12's second after the plus signs, and the answer
constexpr milliseconds kQuery = 2s;
constexpr milliseconds kCardQuery = 5s; // the modem itself may be waiting for the card
constexpr milliseconds kSetting = 1s;
constexpr milliseconds kHangUp = 3s;
constexpr milliseconds kReset = 3s;
constexpr milliseconds kRadioOn = 15s;
constexpr milliseconds kSimReady = 10s;
constexpr milliseconds kSimAppears = 3s; // a card is not seen at once after a reset
constexpr milliseconds kRegistered = 30s;
// Between two questions whether something has come about; a line from the modem ends it.
constexpr milliseconds kAskAgain = 500ms;

const char *simText(AtSimState state)
{
    switch (state) {
    case AtSimState::Missing:
        return "There is no SIM card in the modem.";
    case AtSimState::PinNeeded:
        return "The SIM card asks for its PIN.";
    case AtSimState::PukNeeded:
        return "The SIM card is locked: it asks for its PUK.";
    case AtSimState::Failed:
        return "The SIM card does not work in this modem.";
    case AtSimState::Busy:
        return "The SIM card does not become ready.";
    case AtSimState::Ready:
    case AtSimState::Unknown:
        break;
    }
    return "The modem does not tell the state of its SIM card.";
}

} // namespace

class AtModem::Private
{
public:
    explicit Private(const QString &lockDirectory)
        : port(lockDirectory)
    {
    }

    bool handshake(int attempts);
    bool leaveData();
    void identify();
    bool restoreCommandState();
    bool switchRadioOn();
    bool waitForSim();
    bool waitForRegistration(milliseconds longest);
    bool sendAll(const QList<QByteArray> &commands);
    AtReply ask(const QByteArray &command, milliseconds limit);
    bool pause();
    bool isAborted() const { return abortFlag && *abortFlag; }
    bool fail(const QString &text);
    bool failLost(const AtReply &reply);
    void close();

    AtPort port;
    std::unique_ptr<AtChannel> channel; // while the port is open
    const AtDialect *dialect = nullptr; // of the static table; while the port is open
    AtIdentity identity;
    QString lastError;
    const std::atomic<bool> *abortFlag = nullptr; // the caller's
};

AtModem::AtModem(QObject *parent, const QString &lockDirectory)
    : QObject(parent)
    , m_d(std::make_unique<Private>(lockDirectory))
{
}

AtModem::~AtModem() = default;

void AtModem::setAbortFlag(const std::atomic<bool> *flag)
{
    m_d->abortFlag = flag;
}

bool AtModem::open(const QString &port, int baudrate, int attempts)
{
    m_d->close();
    m_d->lastError.clear();
    if (!m_d->port.open(port, baudrate))
        return m_d->fail(m_d->port.error());
    m_d->channel = std::make_unique<AtChannel>(m_d->port.device(), m_d->port.path(),
        [this] { return m_d->isAborted() || m_d->port.isGone(); });
    if (!m_d->handshake(std::max(attempts, 1))) {
        m_d->close();
        return false;
    }
    m_d->identify();
    return isOpen();
}

bool AtModem::isOpen() const
{
    return m_d->channel != nullptr;
}

QString AtModem::gsmDialect() const
{
    return m_d->dialect ? m_d->dialect->name : QString();
}

QString AtModem::modemName() const
{
    return m_d->identity.name();
}

QString AtModem::lastError() const
{
    return m_d->lastError;
}

void AtModem::reset(bool waitForNetwork)
{
    if (!isOpen())
        return;
    m_d->lastError.clear();
    if (m_d->restoreCommandState() && waitForNetwork && m_d->switchRadioOn() && m_d->waitForSim())
        m_d->waitForRegistration(registrationLimit());
}

void AtModem::beforeDial()
{
    if (!isOpen())
        return;
    m_d->lastError.clear();
    // 3GPP TS 27.007 7.2, 10.1.20, 10.1.22.
    m_d->sendAll(
        QList<QByteArray>{"AT+CREG=0", "AT+CGREG=0", "AT+CEREG=0"} + m_d->dialect->quietCommands);
}

double AtModem::parseModemBalance(const QString &answer)
{
    return findBalance(answer).value_or(std::numeric_limits<double>::quiet_NaN());
}

void AtModem::close()
{
    m_d->close();
}

milliseconds AtModem::registrationLimit() const
{
    return kRegistered;
}

// The first question is the plainest; the further ones also undo what may have kept its answer
// back (ITU-T V.250 6.2.5, 6.2.6).
bool AtModem::Private::handshake(int attempts)
{
    bool heard = false;
    AtReply reply;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        reply = channel->send(attempt == 0 ? "AT" : "ATQ0V1", kHandshake);
        heard = heard || reply.heard;
        if (attempt == 0 && reply.status == AtReply::Status::Timeout && leaveData())
            reply = channel->send("AT", kHandshake);
        if (reply.isOk())
            return true;
        if (reply.status == AtReply::Status::PortGone)
            return failLost(reply);
    }
    if (reply.status == AtReply::Status::Error)
        return fail(QStringLiteral("The modem on %1 refuses every command.").arg(port.path()));
    if (heard)
        return fail(QStringLiteral("What answers on %1 is not a modem, or its speed is another.")
                        .arg(port.path()));
    return fail(QStringLiteral("The modem on %1 does not answer.").arg(port.path()));
}

// The modem may be in a data call that a dialer left behind. The unanswered question before is the
// silence that the escape needs in front of it.
bool AtModem::Private::leaveData()
{
    const AtReply reply = channel->sendEscape(kEscape);
    if (reply.isLost())
        return false;
    qCDebug(AT_MODEM).noquote() << port.path() << "a data call was left open, it is ended";
    return !channel->send("ATH", kHangUp).isLost();
}

// A modem that does not tell is spoken to as 3GPP has it.
void AtModem::Private::identify()
{
    dialect = &allDialects().last();
    const QByteArray makerCommand = "AT+CGMI";
    const QByteArray modelCommand = "AT+CGMM";
    const AtReply maker = ask(makerCommand, kQuery);
    const AtReply model = maker.isLost() ? maker : ask(modelCommand, kQuery);
    if (maker.isOk())
        identity.maker = parseIdentityText(makerCommand, maker.lines);
    if (model.isOk())
        identity.model = parseIdentityText(modelCommand, model.lines);
    if (!model.isLost() && identity.name().isEmpty())
        identity = parseInformation(ask("ATI", kQuery).lines);
    if (channel)
        dialect = &findDialect(identity);
    else
        identity = {};
}

bool AtModem::Private::restoreCommandState()
{
    AtReply reply = ask("ATZ", kReset);
    if (reply.status == AtReply::Status::Timeout) // some answer nothing while they restart
        reply = ask("AT", kHandshake);
    if (reply.status == AtReply::Status::Error) // no stored profile: the maker's
        reply = ask("AT&F", kReset);
    if (reply.isLost())
        return failLost(reply);
    return sendAll({"ATQ0V1E0", "AT+CMEE=1"});
}

bool AtModem::Private::switchRadioOn()
{
    AtReply reply = ask("AT+CFUN?", kQuery);
    const auto level = parseFunctionality(reply.lines);
    if (reply.isOk() && level && *level != 1)
        reply = ask("AT+CFUN=1", kRadioOn);
    return reply.isLost() ? failLost(reply) : true;
}

bool AtModem::Private::waitForSim()
{
    const QDeadlineTimer ready(kSimReady);
    const QDeadlineTimer appears(kSimAppears);
    for (;;) {
        const AtReply reply = ask("AT+CPIN?", kCardQuery);
        if (reply.isLost())
            return failLost(reply);
        const AtSimState state = parseSimState(reply);
        if (state == AtSimState::Ready)
            return true;
        const bool isHopeless = state == AtSimState::PinNeeded || state == AtSimState::PukNeeded;
        const QDeadlineTimer &limit = state == AtSimState::Busy ? ready : appears;
        if (isHopeless || limit.hasExpired())
            return fail(QString::fromLatin1(simText(state)));
        if (!pause())
            return false;
    }
}

bool AtModem::Private::waitForRegistration(milliseconds longest)
{
    const QDeadlineTimer limit(longest);
    for (;;) {
        bool denied = false;
        for (const QByteArray &name :
            {QByteArray("+CREG"), QByteArray("+CGREG"), QByteArray("+CEREG")}) {
            const AtReply reply = ask("AT" + name + '?', kQuery);
            if (reply.isLost())
                return failLost(reply);
            const auto registration = parseRegistration(name, reply.lines);
            if (registration && isRegistered(*registration))
                return true;
            denied = denied || registration == AtRegistration::Denied;
        }
        if (limit.hasExpired())
            return fail(denied ? QStringLiteral("The network refuses the SIM card.")
                               : QStringLiteral("The modem finds no network."));
        if (!pause())
            return false;
    }
}

// False when the modem is lost. What it refuses it does not have, and can do without.
bool AtModem::Private::sendAll(const QList<QByteArray> &commands)
{
    for (const QByteArray &command : commands) {
        const AtReply reply = ask(command, kSetting);
        if (reply.isLost())
            return failLost(reply);
    }
    return true;
}

AtReply AtModem::Private::ask(const QByteArray &command, milliseconds limit)
{
    if (!channel) {
        AtReply gone;
        gone.status = AtReply::Status::PortGone;
        return gone;
    }
    AtReply reply = channel->send(command, limit);
    if (reply.status == AtReply::Status::PortGone)
        failLost(reply);
    return reply;
}

bool AtModem::Private::pause()
{
    const AtReply reply = channel->waitUnsolicited(kAskAgain);
    return reply.status == AtReply::Status::PortGone ? failLost(reply) : true;
}

bool AtModem::Private::fail(const QString &text)
{
    lastError = text;
    qCDebug(AT_MODEM).noquote() << text;
    return false;
}

// A port that has vanished is closed: there is nothing to be had from it.
bool AtModem::Private::failLost(const AtReply &reply)
{
    const QString path = port.path();
    if (reply.status != AtReply::Status::PortGone)
        return fail(QStringLiteral("The modem on %1 no longer answers.").arg(path));
    close();
    if (isAborted())
        return fail(QStringLiteral("The work with the modem on %1 was broken off.").arg(path));
    return fail(
        QStringLiteral("The modem on %1 has gone: its port was unplugged or hung up.").arg(path));
}

void AtModem::Private::close()
{
    channel.reset();
    port.close();
    dialect = nullptr;
    identity = {};
}
