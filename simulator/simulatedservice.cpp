#include "simulatedservice.h"

#include "acceptorstate.h"
#include "busnames.h"
#include "journal.h"
#include "modemservicestate.h"
#include "portuser.h"
#include "printservicestatetavbuswrapper.h"
#include "watchdogstate.h"

namespace {

constexpr int kPublishPeriodMs = 10000; // a state counts as stale after 60 s
constexpr int kSlowMs = 5000;

} // namespace

SimulatedService::SimulatedService(const QString &name, const ScenarioService &scenario,
    const QStringList &ports, Journal *journal, QObject *parent)
    : QObject(parent)
    , m_name(name)
    , m_scenario(scenario)
    , m_journal(journal)
    , m_agent(name)
    , m_period(this)
    , m_change(this)
    , m_fault(scenario.fault)
{
    for (const QString &port : ports)
        m_ports.push_back(std::make_unique<PortUser>(port));
    connect(&m_agent, &tavbus::TavBusAgent::commandReceived, this, &SimulatedService::obey);
    // A broker that came back without its store would not know the state.
    connect(&m_agent, &tavbus::TavBusAgent::opened, this, &SimulatedService::publishState);
    m_period.setInterval(kPublishPeriodMs);
    connect(&m_period, &QTimer::timeout, this, [this] {
        holdPorts(); // a modem that was away may be back
        publishState();
    });
    m_change.setSingleShot(true);
    connect(&m_change, &QTimer::timeout, this, [this] { setRunning(m_target); });
}

SimulatedService::~SimulatedService() = default;

QStringList SimulatedService::faultNames()
{
    return {QString(), QStringLiteral("slow"), QStringLiteral("deaf"), QStringLiteral("dead"),
        QStringLiteral("stuck")};
}

bool SimulatedService::start()
{
    holdPorts();
    m_period.start();
    if (m_fault == QLatin1String("dead"))
        return true;
    return m_agent.open();
}

void SimulatedService::setFault(const QString &fault)
{
    m_journal->add(QStringLiteral("%1: fault \"%2\"").arg(m_name, fault));
    m_fault = fault;
    m_holding = false;
    if (fault == QLatin1String("dead"))
        m_agent.close();
    else if (!m_agent.isOpen())
        m_agent.open();
    else
        publishState();
}

bool SimulatedService::publish(const QVariantMap &body, qint64 stampMs)
{
    tavbus::ClientState state;
    state.setBody(body);
    state.setDt(QDateTime::fromMSecsSinceEpoch(stampMs));
    m_holding = true;
    return m_agent.publishState(state);
}

void SimulatedService::obey(const TavBusCommand &command)
{
    if (m_fault == QLatin1String("deaf"))
        return;
    const QString name = command.name();
    m_commands.append(name);
    m_journal->add(m_name + QStringLiteral(" < ") + name);
    if (m_fault == QLatin1String("stuck"))
        return;
    bool running = false;
    if (name == QLatin1String("restart") || name == QLatin1String("enable")
        || name == QLatin1String("runTouch"))
        running = true;
    else if (name != QLatin1String("stop") && name != QLatin1String("disable"))
        return;
    m_target = running;
    m_change.start(m_scenario.delayMs + (m_fault == QLatin1String("slow") ? kSlowMs : 0));
    publishState();
}

void SimulatedService::setRunning(bool running)
{
    m_running = running;
    holdPorts();
    m_journal->add(m_name + (running ? QStringLiteral(": running") : QStringLiteral(": stopped")));
    publishState();
}

void SimulatedService::holdPorts()
{
    for (const auto &port : m_ports) {
        if (m_running)
            port->hold();
        else
            port->release();
    }
}

void SimulatedService::publishState()
{
    if (!m_holding && m_agent.isOpen())
        m_agent.publishState(body());
}

QVariantMap SimulatedService::body() const
{
    if (m_name == tavbus::BUSNAME_TAVMODEMS) {
        ModemServiceState state;
        if (m_change.isActive())
            state.setServiceMode(
                m_target ? ModemServiceState::Starting : ModemServiceState::Stopping);
        else
            state.setServiceMode(m_running ? ModemServiceState::Ready : ModemServiceState::Stopped);
        return state.toStateBody();
    }
    if (m_name == tavbus::BUSNAME_WATCHDOGS) {
        WatchdogState state;
        state.setState(m_running ? WatchdogState::RUNNING : 0);
        return state.toStateBody();
    }
    if (m_name == tavbus::BUSNAME_PRINTSERVICE) {
        constexpr int kReady = 2;
        PrintServiceStateTavbusWrapper state;
        state.setState(PrintServiceState(m_running ? kReady : PrintServiceState::STOPPED));
        return state.toStateBody();
    }
    if (m_name == tavbus::BUSNAME_ACCEPTORS) {
        AcceptorState state;
        state.setAcceptors({{0, !m_running}, {1, !m_running}}); // a bill and a coin acceptor
        return state.toStateBody();
    }
    return {{QStringLiteral("touch"), m_running}};
}
