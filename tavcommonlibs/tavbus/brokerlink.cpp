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
    const QDeadlineTimer deadline = newDeadline();
    if (!m_connection.open(InitConfig().busAddress(), deadline))
        return false;
    m_broker = std::make_unique<TavBus1Proxy>(BROKER_SERVICE, BROKER_PATH, m_connection.bus());
    emit opened();
    if (wait(registerAgent(deadline)))
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

QDBusPendingCall BrokerLink::registerAgent(const QDeadlineTimer &deadline)
{
    limitCallsTo(deadline);
    return m_broker->registerAgent(m_agent, m_role == Role::Listens);
}

bool BrokerLink::wait(QDBusPendingCall call)
{
    call.waitForFinished();
    return !call.isError();
}

bool BrokerLink::isUnknown(const QDBusPendingCall &call)
{
    return call.isError() && call.error().name() == ERROR_NOT_REGISTERED;
}

void BrokerLink::limitCallsTo(const QDeadlineTimer &deadline)
{
    // 0 and less mean something else to D-Bus.
    m_broker->setTimeout(qMax(1, int(deadline.remainingTime())));
}

} // namespace tavbus
