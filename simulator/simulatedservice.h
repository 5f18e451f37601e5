#pragma once

#include "scenario.h"
#include "tavbusagent.h"

#include <QObject>
#include <QTimer>
#include <memory>
#include <vector>

class Journal;
class PortUser;

/// One of the terminal's services on the bus: obeys its commands, publishes its state when it
/// changes and every few seconds, and holds the modems' ports while it runs when it is the one that
/// does. Lives in the machine's thread.
class SimulatedService : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SimulatedService)

public:
    /// `ports` are held while the service runs.
    SimulatedService(const QString &name, const ScenarioService &scenario, const QStringList &ports,
        Journal *journal, QObject *parent = nullptr);
    ~SimulatedService() override;

    static QStringList faultNames();

    bool start();
    void setFault(const QString &fault);
    /// Publishes exactly this, once; nothing more is published until setFault() is called.
    bool publish(const QVariantMap &body, qint64 stampMs);
    QStringList commands() const { return m_commands; }

private:
    void obey(const TavBusCommand &command);
    void setRunning(bool running);
    void holdPorts();
    void publishState();
    QVariantMap body() const;

    const QString m_name;
    const ScenarioService m_scenario;
    Journal *const m_journal; // the machine's
    tavbus::TavBusAgent m_agent;
    std::vector<std::unique_ptr<PortUser>> m_ports;
    QTimer m_period;
    QTimer m_change; // from a command to the new state
    QString m_fault;
    QStringList m_commands;
    bool m_running = true;
    bool m_target = true; // while m_change runs
    bool m_holding = false; // a state given by publish() is not to be replaced
};
