#pragma once

#include "agentregistry.h"
#include "ratelimit.h"
#include "store.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QElapsedTimer>
#include <QHash>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

namespace tavbus {

/**
 * The broker as the bus sees it: checks what callers give, asks the store and the registry, answers
 * with a result or a D-Bus error. A call that is answered with an error has changed nothing.
 *
 * The public slots are the methods of org.ovrel.TavBus1.
 */
class Broker : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Broker)

public:
    /// \a store must be open and outlive the broker.
    Broker(Store *store, const QDBusConnection &bus, QObject *parent = nullptr);

    /// Takes the well-known name; false with a message logged when another broker has it.
    bool start();

public slots:
    void registerAgent(const QString &agent, bool listen);
    void saveSettings(const QString &owner, const QString &description, qlonglong stamp,
        const QVariantList &settings);
    QString loadSettings(const QString &owner, qlonglong &stamp, QVariantList &settings);
    void removeSettings(const QString &owner, bool withState);
    void publishState(const QString &agent, qlonglong stamp, const QVariantMap &body);
    qlonglong loadState(const QString &agent, QVariantMap &body);
    bool sendCommand(const QString &agent, const QString &command, const QVariantMap &data);

private:
    struct HeldCommand
    {
        QDBusMessage call; // waits for its answer
        QString agent;
        QString command;
        QVariantMap data;
    };

    bool namesAreGood(const QStringList &names) const;
    bool callerIsKnown() const;
    bool mayDeliver(int copies);
    void answer(Store::Change change) const;
    bool deliver(const QString &agent, const QString &command, const QVariantMap &data);
    void deliverHeld();

    Store *const m_store;
    QDBusConnection m_bus;
    AgentRegistry m_agents;
    QHash<QString, RateLimit> m_deliveries; // by sending connection
    QElapsedTimer m_clock;
    QDBusServiceWatcher m_callers; // registered connections
    // A broker that takes the place of one that died is there before the agents have found it: for
    // a moment commands wait for their agent instead of being refused.
    QTimer m_settling;
    QList<HeldCommand> m_held;
};

} // namespace tavbus
