#pragma once

#include "busconnection.h"

#include <QDBusPendingCall>
#include <QObject>

#include <chrono>
#include <functional>
#include <memory>

class TavBus1Proxy;

namespace tavbus {

/**
 * One connection that speaks to the broker as an agent: what the tool's and the service's side of
 * the bus share. Belongs to one thread.
 *
 * A call that got no answer within timeLimit() makes the link mute: open() and ask() fail at once
 * until the event loop has turned, in a thread without one for as long again. So one slot blocks
 * for one limit, however many calls it makes.
 */
class BrokerLink : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(BrokerLink)

public:
    enum class Role { Speaks, Listens };

    BrokerLink(const QString &agent, Role role, QObject *parent);
    ~BrokerLink() override;

    QString agent() const { return m_agent; }

    bool open();
    bool isOpen() const;
    void close();

    /// Only while open.
    TavBus1Proxy *broker() const { return m_broker.get(); }
    QDBusConnection bus() const { return m_connection.bus(); }

    /// Says again who speaks here, without waiting.
    QDBusPendingCall registerAgent(const QDeadlineTimer &deadline);

    /// Makes \a call (one of broker()'s) and waits for its end; once more after registering again,
    /// when the broker was a new one that did not know this connection, or died before it answered
    /// (what it did of the call is then done twice).
    using Call = std::function<QDBusPendingCall()>;
    QDBusPendingCall ask(const Call &call, const QDeadlineTimer &deadline);
    QDBusPendingCall ask(const Call &call) { return ask(call, newDeadline()); }

    QDeadlineTimer newDeadline() const { return QDeadlineTimer(m_limit); }

    std::chrono::milliseconds timeLimit() const { return m_limit; }
    void setTimeLimit(std::chrono::milliseconds limit) { m_limit = limit; }

signals:
    /// Connected, but not registered yet: broker() can be connected to.
    void opened();
    void connectionLost();

private:
    bool introduce(const QDeadlineTimer &deadline);
    bool isAnotherBroker(const QDBusError &error) const;
    bool isMute() const;
    bool wait(QDBusPendingCall call, const QDeadlineTimer &deadline);
    void noteSilence(const QDeadlineTimer &deadline);
    void limitCallsTo(const QDeadlineTimer &deadline);

    const QString m_agent;
    const Role m_role;
    std::chrono::milliseconds m_limit{5000};
    QDeadlineTimer m_mute{0};
    BusConnection m_connection;
    std::unique_ptr<TavBus1Proxy> m_broker; // null when closed; goes before its connection
};

} // namespace tavbus
