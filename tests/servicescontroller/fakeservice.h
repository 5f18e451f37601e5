#pragma once

#include "acceptorstate.h"
#include "modemservicestate.h"
#include "printservicestatetavbuswrapper.h"
#include "tavbusagent.h"
#include "watchdogstate.h"

#include <QHash>
#include <QStringList>

/// A service on the bus: publishes states, notes the commands it gets and answers each with the
/// state that the test laid out for it.
class FakeService : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FakeService)

public:
    explicit FakeService(const QString &agent);

    /// Publishes `body`, `age` seconds ago.
    void publish(const QVariantMap &body, int age = 0);
    /// From now on `command` makes the service publish `body`; a command without a reaction is
    /// heard and nothing more.
    void reactTo(const QString &command, const QVariantMap &body) { m_reactions[command] = body; }

    void forgetReactions() { m_reactions.clear(); }

    QStringList commands() const { return m_commands; }
    tavbus::TavBusAgent &agent() { return m_agent; }

private:
    bool tryToPublish(const QVariantMap &body, int age);
    void obey(const TavBusCommand &command);

    tavbus::TavBusAgent m_agent;
    QHash<QString, QVariantMap> m_reactions;
    QStringList m_commands;
};

QVariantMap modemsBody(int mode);
QVariantMap watchdogsBody(int state);
QVariantMap printersBody(int serviceState);
/// One acceptor for each value.
QVariantMap acceptorsBody(const QVector<bool> &disabled);

/// The four services that have a state, at work and obedient.
struct FakeTerminal
{
    FakeTerminal();

    FakeService modems;
    FakeService watchdogs;
    FakeService printers;
    FakeService acceptors;
    FakeService gui;

    /// The services hear their commands and do nothing.
    void makeDeaf();
    void publishRunning();
    void publishStopped();
};
