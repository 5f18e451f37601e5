#include "brokerlink.h"

#include "buserrors.h"
#include "busnames.h"
#include "initconfig.h"
#include "tavbus1proxy.h"

namespace tavbus {

BrokerLink::BrokerLink(const QString &agent, Role role, QObject *parent)
    : QObject(parent)
    , m_agent(agent)
    , m_role(role)
{
    connect(&m_connection, &BusConnection::lost, this, &BrokerLink::connectionLost);
}

BrokerLink::~BrokerLink() = default;

bool BrokerLink::open()
{
    if (isOpen())
        return true;
    close();
    const QDeadlineTimer deadline(m_limit);
    if (!m_connection.open(InitConfig().busAddress(), deadline))
        return false;
    m_broker = std::make_unique<TavBus1Proxy>(BROKER_SERVICE, BROKER_PATH, m_connection.bus());
    emit opened();
    leave(deadline);
    if (wait(registerAgent()))
        return true;
    close();
    return false;
}

bool BrokerLink::isOpen() const
{
    return m_broker && m_connection.isOpen();
}

void BrokerLink::close()
{
    m_broker.reset();
    m_connection.close();
}

QDBusPendingCall BrokerLink::registerAgent()
{
    return m_broker->registerAgent(m_agent, m_role == Role::Listens);
}

bool BrokerLink::wait(QDBusPendingCall call) const
{
    call.waitForFinished();
    return !call.isError();
}

bool BrokerLink::mustRegister(const QDBusPendingCall &call) const
{
    return call.isError() && call.error().name() == ERROR_NOT_REGISTERED;
}

void BrokerLink::leave(const QDeadlineTimer &deadline)
{
    // 0 and less mean something else to D-Bus.
    m_broker->setTimeout(qMax(1, int(deadline.remainingTime())));
}

} // namespace tavbus
