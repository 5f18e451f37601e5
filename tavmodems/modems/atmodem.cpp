#include "atmodem.h"

#include "atdialect.h"
#include "atfunctionality.h"
#include "atmodemlog.h"
#include "atregistration.h"
#include "atsession.h"
#include "atsimstate.h"
#include "balancetext.h"
#include "modemalone.h"
#include "networkquery.h"
#include "numberrequest.h"
#include "smsstorage.h"
#include "ussdsession.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <limits>

using namespace std::chrono_literals;
using std::chrono::milliseconds;

namespace {

// The longest that is waited for an answer; a modem that answers is never waited for.
constexpr milliseconds kHandshake = 1s;
// The first question is the silence before an escape, too: S12's second as the
// modem must see it, whom buffers on the way may give the question late.
constexpr milliseconds kSilence = 1300ms;
// S12's second after the plus signs, and the answer. A port on which nothing answers costs a search
// both, which is to be done with it in three seconds.
constexpr milliseconds kEscape = 1400ms;
constexpr milliseconds kQuery = 2s;
constexpr milliseconds kCardQuery = 5s; // the modem itself may be waiting for the card
constexpr milliseconds kSetting = 1s;
constexpr milliseconds kHangUp = 3s;
constexpr milliseconds kReset = 3s;
constexpr milliseconds kSwitch = 4s; // a stick writes it into its memory
constexpr milliseconds kRadioOn = 15s;
constexpr milliseconds kSimReady = 10s;
constexpr milliseconds kSimAppears = 3s; // a card is not seen at once after a reset
constexpr milliseconds kRegistered = 30s;
constexpr milliseconds kUssdAnswer = 30s;
constexpr milliseconds kMessageAnswer = 60s;
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

QList<AtModem::SSms> delivered(const QList<SmsMessage> &messages)
{
    QList<AtModem::SSms> list;
    for (const SmsMessage &message : messages)
        list << AtModem::SSms{message.time, message.sender, message.text};
    return list;
}

} // namespace

class AtModem::Private
{
public:
    explicit Private(const QString &lockDirectory)
        : session(lockDirectory)
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
    bool chooseModemAlone();
    bool pause();

    AtSession session;
};

AtModem::AtModem(QObject *parent, const QString &lockDirectory)
    : QObject(parent)
    , m_d(std::make_unique<Private>(lockDirectory))
{
}

AtModem::~AtModem() = default;

void AtModem::setAbortFlag(const std::atomic<bool> *flag)
{
    m_d->session.abortFlag = flag;
}

bool AtModem::open(const QString &port, int baudrate, int attempts)
{
    if (!m_d->session.open(port, baudrate))
        return false;
    if (!m_d->handshake(std::max(attempts, 1))) {
        m_d->session.close();
        return false;
    }
    m_d->identify();
    return isOpen();
}

bool AtModem::isOpen() const
{
    return m_d->session.isOpen();
}

QString AtModem::gsmDialect() const
{
    return m_d->session.dialect ? m_d->session.dialect->name : QString();
}

QString AtModem::modemName() const
{
    return m_d->session.identity.name();
}

QString AtModem::manufacturer() const
{
    return m_d->session.identity.maker;
}

QString AtModem::model() const
{
    return m_d->session.identity.model;
}

QString AtModem::lastError() const
{
    return m_d->session.errorText();
}

AtModem::Error AtModem::error() const
{
    return m_d->session.error();
}

void AtModem::reset(bool waitForNetwork)
{
    if (!m_d->session.begin())
        return;
    if (m_d->restoreCommandState() && waitForNetwork && m_d->switchRadioOn() && m_d->waitForSim())
        m_d->waitForRegistration(registrationLimit());
}

void AtModem::beforeDial()
{
    if (!m_d->session.begin())
        return;
    m_d->session.cellReports.clear();
    // 3GPP TS 27.007 7.2, 10.1.20, 10.1.22.
    m_d->sendAll(QList<QByteArray>{"AT+CREG=0", "AT+CGREG=0", "AT+CEREG=0"}
        + m_d->session.dialect->quietCommands);
}

bool AtModem::getMnc(int &mcc, int &mnc)
{
    if (!m_d->session.begin())
        return false;
    const auto network = NetworkQuery(m_d->session).network();
    if (!network)
        return false;
    mcc = network->mcc;
    mnc = network->mnc;
    return true;
}

bool AtModem::getHomeNetwork(int &mcc, int &mnc)
{
    if (!m_d->session.begin())
        return false;
    const auto network = NetworkQuery(m_d->session).homeNetwork();
    if (!network)
        return false;
    mcc = network->mcc;
    mnc = network->mnc;
    return true;
}

bool AtModem::getImei(QString &imei)
{
    if (!m_d->session.begin())
        return false;
    const auto number = NetworkQuery(m_d->session).imei();
    if (!number)
        return false;
    imei = *number;
    return true;
}

bool AtModem::getGsmCells(QString &lac, QString &cid)
{
    if (!m_d->session.begin())
        return false;
    const auto cell = NetworkQuery(m_d->session).cell();
    if (!cell)
        return false;
    lac = cell->area;
    cid = cell->cell;
    return true;
}

bool AtModem::getInfo(QMap<QString, QVariant> &info)
{
    if (!m_d->session.begin())
        return false;
    const auto facts = NetworkQuery(m_d->session).info();
    if (!facts)
        return false;
    info = *facts;
    return true;
}

bool AtModem::requestSelfNumber(bool fromSms, const QString &phone, QString &number)
{
    if (!m_d->session.begin())
        return false;
    return fromSms ? NumberRequest(m_d->session, messageLimit()).bySms(phone, number)
                   : NumberRequest(m_d->session, ussdLimit()).byUssd(phone, number);
}

bool AtModem::sendUSSD(const QString &code, QString &answer)
{
    return m_d->session.begin() && UssdSession(m_d->session, ussdLimit()).request(code, answer);
}

bool AtModem::getSignalLevel(int &level)
{
    if (!m_d->session.begin())
        return false;
    const auto dBm = NetworkQuery(m_d->session).signalLevel();
    if (!dBm)
        return false;
    level = *dBm;
    return true;
}

bool AtModem::takeMessages(QList<SSms> &list)
{
    return takeMessages([&list](const QList<SSms> &messages) {
        list = messages;
        return true;
    });
}

bool AtModem::takeMessages(const std::function<bool(const QList<SSms> &)> &keep)
{
    QList<SmsMessage> messages;
    SmsStorage storage(m_d->session);
    if (!m_d->session.begin() || !storage.read(messages))
        return false;
    if (keep(delivered(messages)))
        storage.remove(messages);
    return true;
}

bool AtModem::readMessages(QList<SSms> &list)
{
    QList<SmsMessage> messages;
    if (!m_d->session.begin() || !SmsStorage(m_d->session).read(messages))
        return false;
    list = delivered(messages);
    return true;
}

bool AtModem::toModemOnly()
{
    return m_d->session.begin() && m_d->chooseModemAlone();
}

double AtModem::parseModemBalance(const QString &answer)
{
    return findBalance(answer).value_or(std::numeric_limits<double>::quiet_NaN());
}

void AtModem::close()
{
    m_d->session.close();
}

milliseconds AtModem::registrationLimit() const
{
    return kRegistered;
}

milliseconds AtModem::ussdLimit() const
{
    return kUssdAnswer;
}

milliseconds AtModem::messageLimit() const
{
    return kMessageAnswer;
}

// The first question is the plainest; the further ones also undo what may have kept its answer
// back (ITU-T V.250 6.2.5, 6.2.6).
bool AtModem::Private::handshake(int attempts)
{
    bool heard = false;
    AtReply reply;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        reply = attempt == 0 ? session.ask("AT", kSilence) : session.ask("ATQ0V1", kHandshake);
        heard = heard || reply.heard;
        if (attempt == 0 && reply.status == AtReply::Status::Timeout && leaveData())
            reply = session.ask("AT", kHandshake);
        if (reply.isOk())
            return true;
        if (reply.status == AtReply::Status::PortGone)
            return session.failLost(reply);
    }
    if (reply.status == AtReply::Status::Error)
        return session.fail(AtError::Refused,
            QStringLiteral("The modem on %1 refuses every command.").arg(session.path()));
    const QString text = heard
        ? QStringLiteral("What answers on %1 is not a modem, or its speed is another.")
        : QStringLiteral("The modem on %1 does not answer.");
    return session.fail(AtError::NoAnswer, text.arg(session.path()));
}

// The modem may be in a data call that a dialer left behind. The unanswered question before is the
// silence that the escape needs in front of it.
bool AtModem::Private::leaveData()
{
    const AtReply reply = session.escape(kEscape);
    if (reply.isLost())
        return false;
    qCDebug(AT_MODEM).noquote() << session.path() << "a data call was left open, it is ended";
    return !session.ask("ATH", kHangUp).isLost();
}

// A modem that does not tell is spoken to as 3GPP has it.
void AtModem::Private::identify()
{
    AtIdentity identity;
    const QByteArray makerCommand = "AT+CGMI";
    const QByteArray modelCommand = "AT+CGMM";
    const AtReply maker = session.ask(makerCommand, kQuery);
    const AtReply model = maker.isLost() ? maker : session.ask(modelCommand, kQuery);
    if (maker.isOk())
        identity.maker = parseIdentityText(makerCommand, maker.lines);
    if (model.isOk())
        identity.model = parseIdentityText(modelCommand, model.lines);
    if (!model.isLost() && identity.name().isEmpty())
        identity = parseInformation(session.ask("ATI", kQuery).lines);
    if (!session.isOpen())
        return;
    session.identity = identity;
    session.dialect = &findDialect(identity);
}

bool AtModem::Private::restoreCommandState()
{
    session.forgetSettings();
    AtReply reply = session.ask("ATZ", kReset);
    if (reply.status == AtReply::Status::Timeout) // some answer nothing while they restart
        reply = session.ask("AT", kHandshake);
    if (reply.status == AtReply::Status::Error) // no stored profile: the maker's
        reply = session.ask("AT&F", kReset);
    if (reply.isLost())
        return session.failLost(reply);
    return sendAll({"ATQ0V1E0", "AT+CMEE=1"});
}

bool AtModem::Private::switchRadioOn()
{
    AtReply reply = session.ask("AT+CFUN?", kQuery);
    const auto level = parseFunctionality(reply.lines);
    if (reply.isOk() && level && *level != 1)
        reply = session.ask("AT+CFUN=1", kRadioOn);
    return reply.isLost() ? session.failLost(reply) : true;
}

bool AtModem::Private::waitForSim()
{
    const QDeadlineTimer ready(kSimReady);
    const QDeadlineTimer appears(kSimAppears);
    for (;;) {
        const AtReply reply = session.ask("AT+CPIN?", kCardQuery);
        if (reply.isLost())
            return session.failLost(reply);
        const AtSimState state = parseSimState(reply);
        if (state == AtSimState::Ready)
            return true;
        const bool isHopeless = state == AtSimState::PinNeeded || state == AtSimState::PukNeeded;
        const QDeadlineTimer &limit = state == AtSimState::Busy ? ready : appears;
        if (isHopeless || limit.hasExpired())
            return session.fail(AtError::Refused, QString::fromLatin1(simText(state)));
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
            const AtReply reply = session.ask("AT" + name + '?', kQuery);
            if (reply.isLost())
                return session.failLost(reply);
            const auto registration = parseRegistration(name, reply.lines);
            if (registration && isRegistered(*registration))
                return true;
            denied = denied || registration == AtRegistration::Denied;
        }
        if (limit.hasExpired())
            return session.fail(AtError::Refused,
                denied ? QStringLiteral("The network refuses the SIM card.")
                       : QStringLiteral("The modem finds no network."));
        if (!pause())
            return false;
    }
}

// False when the modem is lost. What it refuses it does not have, and can do without.
bool AtModem::Private::sendAll(const QList<QByteArray> &commands)
{
    for (const QByteArray &command : commands) {
        const AtReply reply = session.ask(command, kSetting);
        if (reply.isLost())
            return session.failLost(reply);
    }
    return true;
}

bool AtModem::Private::chooseModemAlone()
{
    const AtDialect &dialect = *session.dialect;
    AtReply reply;
    reply.status = AtReply::Status::Refused; // when there is nothing to send
    for (const QByteArray &command : dialect.modemOnlyCommands) {
        reply = session.ask(command, kSwitch);
        if (reply.isOk() && !tellsFailure(reply.lines))
            return true;
        if (reply.isLost())
            return session.failLost(reply);
    }
    if (!dialect.devicesCommand.isEmpty()) {
        const AtReply devices = session.ask(dialect.devicesCommand + "=?", kQuery);
        if (devices.isLost())
            return session.failLost(devices);
        if (const auto choice = modemAlone(dialect.devicesCommand, devices.lines)) {
            reply = session.ask(*choice, kSwitch);
            if (reply.isOk())
                return true;
        }
    }
    return session.failAnswer(
        reply, QStringLiteral("The modem cannot be switched to modem only mode"));
}

bool AtModem::Private::pause()
{
    return session.listen(kAskAgain).status != AtReply::Status::PortGone;
}
