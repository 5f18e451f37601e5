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
{
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
    // The watcher goes with the proxy, or it would keep the connection open.
    auto *const watcher = new QDBusServiceWatcher(
        BROKER_SERVICE, m_link->bus(), QDBusServiceWatcher::WatchForOwnerChange, m_link->broker());
    // Queued: the watcher goes on after this signal, and a listener of closed() may delete the
    // agent.
    connect(
        watcher, &QDBusServiceWatcher::serviceOwnerChanged, m_link->broker(),
        [this](const QString & /*service*/, const QString & /*before*/, const QString &now) {
            brokerChanged(now);
        },
        Qt::QueuedConnection);
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

void TavBusAgent::brokerChanged(const QString &owner)
{
    if (!m_wanted)
        return;
    // A registration that started the broker comes by here too: twice is the same to the broker.
    if (owner.isEmpty())
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
