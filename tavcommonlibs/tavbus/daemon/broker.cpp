#include "broker.h"

#include "buserrors.h"
#include "busnames.h"
#include "tavbus1adaptor.h"
#include "wire.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>

#include <algorithm>

namespace tavbus {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kSettlingTime = 1s;
constexpr int kMaxHeld = 64;
// Commands of one connection, each counted once for every listener: far more than people and
// services send, and little enough that one that floods its own listeners leaves the bus to others.
constexpr int kDeliveriesAtOnce = 1000;
constexpr int kDeliveriesPerSecond = 200;

} // namespace

Broker::Broker(Store *store, const QDBusConnection &bus, QObject *parent)
    : QObject(parent)
    , m_store(store)
    , m_bus(bus)
{
    new TavBus1Adaptor(this);
    m_callers.setConnection(m_bus);
    m_callers.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_callers, &QDBusServiceWatcher::serviceUnregistered, this,
        [this](const QString &connection) {
            m_callers.removeWatchedService(connection);
            m_agents.removeConnection(connection);
            m_deliveries.remove(connection);
        });
    m_clock.start();
    m_settling.setSingleShot(true);
    connect(&m_settling, &QTimer::timeout, this, &Broker::deliverHeld);
}

bool Broker::start()
{
    if (m_bus.registerObject(BROKER_PATH, this) && m_bus.registerService(BROKER_SERVICE)) {
        m_settling.start(kSettlingTime);
        return true;
    }
    qCritical("cannot take the name %s on the bus: %s", qUtf8Printable(BROKER_SERVICE),
        qUtf8Printable(m_bus.lastError().message()));
    return false;
}

void Broker::registerAgent(const QString &agent, bool listen)
{
    if (!namesAreGood({agent}))
        return;
    const QString caller = message().service();
    // Watched before the bus is asked whose connection it is: its end cannot be missed then.
    if (!m_agents.isKnown(caller))
        m_callers.addWatchedService(caller);
    // Asked once: the answer stands behind everything that is under way to the broker.
    std::optional<uint> user = m_agents.userOf(caller);
    if (!user) {
        const QDBusReply<uint> reply = m_bus.interface()->serviceUid(caller);
        if (reply.isValid())
            user = reply.value();
    }
    auto result = AgentRegistry::Answer::Taken;
    if (user)
        result = m_agents.add(agent, caller, *user, listen);
    if (!m_agents.isKnown(caller))
        m_callers.removeWatchedService(caller);
    if (result == AgentRegistry::Answer::Taken)
        sendErrorReply(
            ERROR_NAME_TAKEN, QStringLiteral("\"%1\" is held by another user").arg(agent));
    else if (result == AgentRegistry::Answer::TooMany)
        sendErrorReply(
            QDBusError::LimitsExceeded, QStringLiteral("too many agents or connections"));
    else if (listen)
        deliverHeld();
}

void Broker::saveSettings(
    const QString &owner, const QString &description, qlonglong stamp, const QVariantList &settings)
{
    if (!callerIsKnown() || !namesAreGood({owner}))
        return;
    const auto list = wire::checked(settings, wire::kMaxRecord);
    if (!list || description.size() > wire::kMaxDescription) {
        sendErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("the record is too large, nested too deep or of a type not kept"));
        return;
    }
    ClientSettings record;
    record.setOwner(owner);
    record.setDescription(description);
    record.setDt(wire::toDateTime(stamp));
    record.setSettings(*list);
    answer(m_store->saveSettings(record));
}

QString Broker::loadSettings(const QString &owner, qlonglong &stamp, QVariantList &settings)
{
    ClientSettings record;
    if (!namesAreGood({owner}))
        return {};
    switch (m_store->loadSettings(owner, record)) {
    case Store::Look::Found:
        break;
    case Store::Look::Missing:
        sendErrorReply(ERROR_NOT_FOUND, QStringLiteral("no settings of \"%1\"").arg(owner));
        return {};
    case Store::Look::Failed:
        qCritical(
            "settings of %s: %s", qUtf8Printable(owner), qUtf8Printable(m_store->errorText()));
        sendErrorReply(ERROR_STORE_FAILED, m_store->errorText());
        return {};
    }
    stamp = wire::fromDateTime(record.dt());
    settings = record.settings();
    return record.description();
}

void Broker::removeSettings(const QString &owner, bool withState)
{
    if (callerIsKnown() && namesAreGood({owner}))
        answer(m_store->removeSettings(owner, withState));
}

void Broker::publishState(const QString &agent, qlonglong stamp, const QVariantMap &body)
{
    if (!callerIsKnown() || !namesAreGood({agent}))
        return;
    if (!m_agents.speaksAs(message().service(), agent)) {
        sendErrorReply(QDBusError::AccessDenied,
            QStringLiteral("this connection does not speak as \"%1\"").arg(agent));
        return;
    }
    const auto map = wire::checked(body, wire::kMaxState);
    if (!map) {
        sendErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("the state is too large, nested too deep or of a type not kept"));
        return;
    }
    ClientState state;
    state.setDt(wire::toDateTime(stamp));
    state.setBody(*map);
    answer(m_store->saveState(agent, state));
}

qlonglong Broker::loadState(const QString &agent, QVariantMap &body)
{
    if (!namesAreGood({agent}))
        return 0;
    const auto state = m_store->state(agent);
    if (!state) {
        sendErrorReply(ERROR_NOT_FOUND, QStringLiteral("no state of \"%1\"").arg(agent));
        return 0;
    }
    body = state->body();
    return wire::fromDateTime(state->dt());
}

bool Broker::sendCommand(const QString &agent, const QString &command, const QVariantMap &data)
{
    if (!callerIsKnown() || !namesAreGood({agent, command}))
        return false;
    const auto map = wire::checked(data, wire::kMaxState);
    if (!map) {
        sendErrorReply(QDBusError::InvalidArgs,
            QStringLiteral("the data are too large, nested too deep or of a type not carried"));
        return false;
    }
    if (!mayDeliver(m_agents.listeners(agent).size()))
        return false;
    if (deliver(agent, command, *map))
        return true;
    if (m_settling.isActive() && m_held.size() < kMaxHeld) {
        setDelayedReply(true);
        m_held.append({message(), agent, command, *map});
    }
    return false;
}

bool Broker::deliver(const QString &agent, const QString &command, const QVariantMap &data)
{
    const QStringList listeners = m_agents.listeners(agent);
    bool delivered = false;
    for (const QString &listener : listeners) {
        auto signal = QDBusMessage::createTargetedSignal(
            listener, BROKER_PATH, BROKER_INTERFACE, QStringLiteral("commandReceived"));
        signal.setArguments({agent, command, data});
        delivered = m_bus.send(signal) || delivered;
    }
    return delivered;
}

void Broker::deliverHeld()
{
    QList<HeldCommand> stillHeld;
    for (const HeldCommand &held : qAsConst(m_held)) {
        const bool delivered = deliver(held.agent, held.command, held.data);
        if (delivered || !m_settling.isActive())
            m_bus.send(held.call.createReply(delivered));
        else
            stillHeld.append(held);
    }
    m_held = stillHeld;
}

bool Broker::namesAreGood(const QStringList &names) const
{
    if (std::all_of(names.cbegin(), names.cend(), wire::isName))
        return true;
    sendErrorReply(QDBusError::InvalidArgs,
        QStringLiteral("a name is 1 to %1 characters of A-Z a-z 0-9 . _ and -")
            .arg(wire::kMaxName));
    return false;
}

bool Broker::callerIsKnown() const
{
    if (m_agents.isKnown(message().service()))
        return true;
    sendErrorReply(ERROR_NOT_REGISTERED, QStringLiteral("the caller has not registered"));
    return false;
}

bool Broker::mayDeliver(int copies)
{
    const QString caller = message().service();
    auto limit = m_deliveries.find(caller);
    if (limit == m_deliveries.end())
        limit = m_deliveries.insert(caller, RateLimit(kDeliveriesAtOnce, kDeliveriesPerSecond));
    if (limit->take(std::max(copies, 1), m_clock.elapsed()))
        return true;
    sendErrorReply(QDBusError::LimitsExceeded, QStringLiteral("too many commands"));
    return false;
}

void Broker::answer(Store::Change change) const
{
    if (change == Store::Change::Full) {
        sendErrorReply(QDBusError::LimitsExceeded, QStringLiteral("too many owners are kept"));
    } else if (change == Store::Change::Failed) {
        qCritical("cannot write: %s", qUtf8Printable(m_store->errorText()));
        sendErrorReply(ERROR_STORE_FAILED, m_store->errorText());
    }
}

} // namespace tavbus
