#include "brokerlink.h"

#include "buserrors.h"
#include "busnames.h"
#include "initconfig.h"
#include "tavbus1proxy.h"

#include <QTimer>

namespace tavbus {

namespace {

bool isUnanswered(const QDBusError &error)
{
    return error.type() == QDBusError::NoReply || error.type() == QDBusError::Timeout
        || error.type() == QDBusError::TimedOut;
}

} // namespace

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
    if (isMute())
        return false;
    const QDeadlineTimer deadline = newDeadline();
    if (!m_connection.open(InitConfig().busAddress(), deadline)) {
        noteSilence(deadline);
        return false;
    }
    m_broker = std::make_unique<TavBus1Proxy>(BROKER_SERVICE, BROKER_PATH, m_connection.bus());
    emit opened();
    if (introduce(deadline))
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

QDBusPendingCall BrokerLink::ask(const Call &call, const QDeadlineTimer &deadline)
{
    if (isMute())
        return QDBusPendingCall::fromError(
            QDBusError(QDBusError::Timeout, QStringLiteral("the broker did not answer just now")));
    limitCallsTo(deadline);
    QDBusPendingCall reply = call();
    if (!wait(reply, deadline) && isAnotherBroker(reply.error()) && introduce(deadline)) {
        limitCallsTo(deadline);
        reply = call();
        wait(reply, deadline);
    }
    return reply;
}

bool BrokerLink::introduce(const QDeadlineTimer &deadline)
{
    const QDBusPendingCall reply = registerAgent(deadline);
    return wait(reply, deadline)
        || (isAnotherBroker(reply.error()) && wait(registerAgent(deadline), deadline));
}

bool BrokerLink::isAnotherBroker(const QDBusError &error) const
{
    return error.name() == ERROR_NOT_REGISTERED || (isUnanswered(error) && !isMute());
}

bool BrokerLink::wait(QDBusPendingCall call, const QDeadlineTimer &deadline)
{
    call.waitForFinished();
    if (call.isError() && isUnanswered(call.error()))
        noteSilence(deadline);
    return !call.isError();
}

void BrokerLink::noteSilence(const QDeadlineTimer &deadline)
{
    // One that died in mid-call, or a refused connection, is over sooner: the next call may well
    // succeed. Qt's timers may end a little before their time.
    if (isMute() || deadline.remainingTimeAsDuration() > m_limit / 10)
        return;
    m_mute.setRemainingTime(m_limit);
    QTimer::singleShot(0, this, [this] { m_mute.setRemainingTime(0); });
}

bool BrokerLink::isMute() const
{
    return !m_mute.hasExpired();
}

void BrokerLink::limitCallsTo(const QDeadlineTimer &deadline)
{
    // 0 and less mean something else to D-Bus.
    m_broker->setTimeout(qMax(1, int(deadline.remainingTime())));
}

} // namespace tavbus
