#include "fakeservice.h"

#include "busnames.h"

using namespace tavbus;

FakeService::FakeService(const QString &agent)
    : m_agent(agent)
{
    connect(&m_agent, &TavBusAgent::commandReceived, this, &FakeService::obey);
    if (!m_agent.open())
        qFatal("%s cannot speak on the bus", qUtf8Printable(agent));
}

void FakeService::publish(const QVariantMap &body, int age)
{
    if (!tryToPublish(body, age))
        qFatal("%s cannot publish its state", qUtf8Printable(m_agent.agent()));
}

bool FakeService::tryToPublish(const QVariantMap &body, int age)
{
    ClientState state;
    state.setBody(body);
    state.setDt(QDateTime::currentDateTime().addSecs(-age));
    return m_agent.publishState(state);
}

void FakeService::obey(const TavBusCommand &command)
{
    m_commands << command.name();
    const auto reaction = m_reactions.constFind(command.name());
    if (reaction != m_reactions.constEnd())
        tryToPublish(*reaction, 0); // the bus may have gone since
}

QVariantMap modemsBody(int mode)
{
    ModemServiceState state;
    state.setServiceMode(static_cast<ModemServiceState::Mode>(mode));
    return state.toStateBody();
}

QVariantMap watchdogsBody(int state)
{
    WatchdogState watchdogs;
    watchdogs.setState(state);
    return watchdogs.toStateBody();
}

QVariantMap printersBody(int serviceState)
{
    PrintServiceStateTavbusWrapper wrapper;
    wrapper.setState(PrintServiceState(serviceState));
    return wrapper.toStateBody();
}

QVariantMap acceptorsBody(const QVector<bool> &disabled)
{
    QVector<AcceptorState::Acceptor> acceptors;
    for (const bool isDisabled : disabled)
        acceptors.append({int(acceptors.size()), isDisabled});
    AcceptorState state;
    state.setAcceptors(acceptors);
    return state.toStateBody();
}

FakeTerminal::FakeTerminal()
    : modems(BUSNAME_TAVMODEMS)
    , watchdogs(BUSNAME_WATCHDOGS)
    , printers(BUSNAME_PRINTSERVICE)
    , acceptors(BUSNAME_ACCEPTORS)
    , gui(BUSNAME_TERMINAL_GUI)
{
    const auto stop = QStringLiteral("stop");
    const auto restart = QStringLiteral("restart");
    modems.reactTo(stop, modemsBody(ModemServiceState::Stopped));
    modems.reactTo(restart, modemsBody(ModemServiceState::Ready));
    watchdogs.reactTo(stop, watchdogsBody(0));
    watchdogs.reactTo(restart, watchdogsBody(WatchdogState::RUNNING));
    printers.reactTo(stop, printersBody(PrintServiceState::STOPPED));
    printers.reactTo(restart, printersBody(0));
    acceptors.reactTo(QStringLiteral("disable"), acceptorsBody({true, true}));
    acceptors.reactTo(QStringLiteral("enable"), acceptorsBody({false, true}));
}

void FakeTerminal::makeDeaf()
{
    for (FakeService *service : {&modems, &watchdogs, &printers, &acceptors})
        service->forgetReactions();
}

void FakeTerminal::publishRunning()
{
    modems.publish(modemsBody(ModemServiceState::Ready));
    watchdogs.publish(watchdogsBody(WatchdogState::RUNNING));
    printers.publish(printersBody(0));
    acceptors.publish(acceptorsBody({false, true}));
}

void FakeTerminal::publishStopped()
{
    modems.publish(modemsBody(ModemServiceState::Stopped));
    watchdogs.publish(watchdogsBody(0));
    printers.publish(printersBody(PrintServiceState::STOPPED));
    acceptors.publish(acceptorsBody({true, true}));
}
