#include "tavbusagent.h"

#include "brokerlink.h"
#include "busnames.h"
#include "tavbus1proxy.h"
#include "wire.h"

#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>

namespace tavbus {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds kFirstRetry = 1s;
constexpr std::chrono::milliseconds kLongestRetry = 30s;

} // namespace

TavBusAgent::TavBusAgent(const QString &agent, QObject *parent)
    : QObject(parent)
    , m_link(new BrokerLink(agent, BrokerLink::Role::Listens, this))
    , m_brokerWatcher(new QDBusServiceWatcher(this))
{
    m_brokerWatcher->setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
    m_brokerWatcher->addWatchedService(BROKER_SERVICE);
    connect(m_brokerWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        &TavBusAgent::brokerChanged);
    connect(m_link, &BrokerLink::opened, this, &TavBusAgent::listen);
    connect(m_link, &BrokerLink::connectionLost, this, &TavBusAgent::cutOff);
    m_retry.setSingleShot(true);
    m_retry.setInterval(kFirstRetry);
    connect(&m_retry, &QTimer::timeout, this, &TavBusAgent::tryAgain);
}

TavBusAgent::~TavBusAgent() = default;

QString TavBusAgent::agent() const
{
    return m_link->agent();
}

bool TavBusAgent::open()
{
    if (isOpen())
        return true;
    close();
    if (!wire::isName(agent()) || !m_link->open())
        return false;
    m_wanted = true;
    setOpen(true);
    return true;
}

bool TavBusAgent::isOpen() const
{
    return m_open && m_link->isOpen();
}

void TavBusAgent::close()
{
    m_wanted = false;
    m_retry.stop();
    m_link->close();
    setOpen(false);
}

bool TavBusAgent::publishState(const QVariantMap &body)
{
    ClientState state;
    state.setDt(QDateTime::currentDateTime());
    state.setBody(body);
    return publishState(state);
}

bool TavBusAgent::publishState(const tavbus::ClientState &state)
{
    const auto body = wire::checked(state.body(), wire::kMaxState);
    if (!m_link->isOpen() || !body)
        return false;
    const auto reply = m_link->ask([&] {
        return m_link->broker()->publishState(agent(), wire::fromDateTime(state.dt()), *body);
    });
    return !reply.isError();
}

void TavBusAgent::setOpen(bool open)
{
    if (open) {
        m_retry.stop();
        m_retry.setInterval(kFirstRetry);
    }
    if (m_open == open)
        return;
    m_open = open;
    if (open)
        emit opened();
    else
        emit closed();
}

void TavBusAgent::listen()
{
    // Before the registration, so that not even its first command is missed.
    m_brokerWatcher->setConnection(m_link->bus());
    connect(m_link->broker(), &TavBus1Proxy::commandReceived, this,
        [this](const QString &agent, const QString &name, const QVariantMap &data) {
            const auto plain = wire::checked(data, wire::kMaxState);
            if (!plain)
                return;
            TavBusCommand command;
            command.setAgent(agent);
            command.setName(name);
            command.setData(*plain);
            emit commandReceived(command);
        });
}

void TavBusAgent::brokerChanged(
    const QString & /*service*/, const QString & /*before*/, const QString &now)
{
    if (!m_wanted)
        return;
    // The first registration at a broker that has just been started comes by here as well; it is
    // the same to the broker.
    if (now.isEmpty())
        cutOff();
    else
        registerAgain();
}

void TavBusAgent::cutOff()
{
    if (!m_wanted)
        return;
    m_retry.start();
    // A call to the broker starts it again, if it can be started.
    if (m_link->isOpen())
        registerAgain();
    setOpen(false);
}

void TavBusAgent::tryAgain()
{
    m_retry.setInterval(qMin(2 * m_retry.intervalAsDuration(), kLongestRetry));
    m_retry.start();
    if (m_link->isOpen())
        registerAgain();
    else if (m_link->open())
        setOpen(true);
}

void TavBusAgent::registerAgain()
{
    auto *const watcher = new QDBusPendingCallWatcher(
        m_link->registerAgent(m_link->newDeadline()), m_link->broker());
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        if (!m_wanted)
            return;
        if (!watcher->isError())
            setOpen(true);
        else if (!m_retry.isActive())
            m_retry.start();
    });
}

} // namespace tavbus
