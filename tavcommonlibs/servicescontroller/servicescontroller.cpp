#include "servicescontroller.h"

#include "acceptorstate.h"
#include "busnames.h"
#include "guilogger.h"
#include "modemservicestate.h"
#include "printservicestatetavbuswrapper.h"
#include "tavbuscommand.h"
#include "tavbusqueryhandler.h"
#include "touchscreenconfigurator.h"
#include "watchdogstate.h"

#include <QTimer>

using namespace tavbus;

namespace {

constexpr qint64 kLongestAge = 60; // s; an older state is none

const auto kStop = QStringLiteral("stop");
const auto kRestart = QStringLiteral("restart");
const auto kDisable = QStringLiteral("disable");
const auto kEnable = QStringLiteral("enable");
const auto kRunTouch = QStringLiteral("runTouch");
const auto kThreadId = QStringLiteral("thread_id");

constexpr int kAllThreads = -1;

qint64 ageOf(const ClientState &state)
{
    return state.dt().secsTo(QDateTime::currentDateTime());
}

/// The start tests of printers and acceptors want it a little newer than the rest.
bool isFresh(const ClientState &state)
{
    return ageOf(state) < kLongestAge;
}

} // namespace

ServicesController::ServicesController(const QString &agent, QObject *parent)
    : QObject(parent)
    , m_handler(new TavBusQueryHandler(agent, this))
{
}

ServicesController::~ServicesController() = default;

bool ServicesController::ensureOpen()
{
    return m_handler && (m_handler->isOpen() || m_handler->open());
}

bool ServicesController::saveSettings(const ClientSettings &settings)
{
    return ensureOpen() && m_handler->saveSettings(settings);
}

bool ServicesController::loadSettings(const QString &owner, ClientSettings &settings)
{
    return ensureOpen() && m_handler->loadSettings(owner, settings);
}

bool ServicesController::loadSettings(const QStringList &owners, QList<ClientSettings> &list)
{
    return ensureOpen() && m_handler->loadSettings(owners, list);
}

bool ServicesController::removeSettings(const QString &owner, bool flag)
{
    return ensureOpen() && m_handler->removeSettings(owner, flag);
}

bool ServicesController::getClientState(const QString &agent, ClientState &state)
{
    ClientState last;
    if (!ensureOpen() || !m_handler->loadState(agent, last))
        return false;
    // Without a stamp nobody can say that it is not from last week.
    if (!last.dt().isValid() || ageOf(last) > kLongestAge)
        return false;
    state = last;
    return true;
}

bool ServicesController::sendTavBusCommand(
    const QString &agent, const QString &name, const QMap<QString, QVariant> &data)
{
    TavBusCommand command;
    command.setAgent(agent);
    command.setName(name);
    if (!data.isEmpty())
        command.setData(data);
    return ensureOpen() && m_handler->sendMessage(command.toOutgoingMessage());
}

bool ServicesController::sendToAcceptors(const QString &name)
{
    return sendTavBusCommand(BUSNAME_ACCEPTORS, name, {{kThreadId, kAllThreads}});
}

bool ServicesController::sendStart(EService service)
{
    switch (service) {
    case TouchScreen:
        return sendTavBusCommand(BUSNAME_TERMINAL_GUI, kRunTouch);
    case Modems:
        return sendTavBusCommand(BUSNAME_TAVMODEMS, kRestart);
    case Watchdogs:
        return sendTavBusCommand(BUSNAME_WATCHDOGS, kRestart);
    case Printers:
        return sendTavBusCommand(BUSNAME_PRINTSERVICE, kRestart);
    case Acceptors:
        return sendToAcceptors(kEnable);
    }
    return false;
}

// --- Where the services are

bool ServicesController::modemsServiceIsStopped()
{
    ClientState state;
    if (!m_services.testFlag(Modems) || !getClientState(BUSNAME_TAVMODEMS, state))
        return true;
    ModemServiceState modems;
    modems.setClientState(state);
    const int mode = modems.serviceMode();
    if (mode == ModemServiceState::Dialling || mode == ModemServiceState::Connected)
        qCWarning(GUILOGGER, "The modem service still has a connection, its mode is %d", mode);
    return mode == ModemServiceState::Stopped;
}

bool ServicesController::modemsServiceIsStarted()
{
    return modemsServiceRuns().value_or(true);
}

std::optional<bool> ServicesController::modemsServiceRuns()
{
    ClientState state;
    if (!getClientState(BUSNAME_TAVMODEMS, state))
        return std::nullopt;
    ModemServiceState modems;
    modems.setClientState(state);
    return modems.serviceMode() != ModemServiceState::Stopped;
}

bool ServicesController::watchdogsServiceIsStopped()
{
    ClientState state;
    WatchdogState watchdogs;
    if (!m_services.testFlag(Watchdogs) || !getClientState(BUSNAME_WATCHDOGS, state)
        || !watchdogs.setClientState(state))
        return true;
    return !watchdogs.isRunning();
}

bool ServicesController::watchdogsServiceIsStarted()
{
    ClientState state;
    WatchdogState watchdogs;
    if (!getClientState(BUSNAME_WATCHDOGS, state) || !watchdogs.setClientState(state))
        return true;
    return watchdogs.isRunning();
}

bool ServicesController::printersServiceIsStopped()
{
    ClientState state;
    PrintServiceStateTavbusWrapper printers;
    if (!m_services.testFlag(Printers) || !getClientState(BUSNAME_PRINTSERVICE, state)
        || !printers.setClientState(state))
        return true;
    return printers.state().isStopped();
}

bool ServicesController::printersServiceIsStarted()
{
    ClientState state;
    PrintServiceStateTavbusWrapper printers;
    if (!getClientState(BUSNAME_PRINTSERVICE, state) || !isFresh(state)
        || !printers.setClientState(state))
        return false;
    return !printers.state().isStopped();
}

bool ServicesController::acceptorsServiceIsStopped()
{
    ClientState state;
    AcceptorState acceptors;
    if (!m_services.testFlag(Acceptors) || !getClientState(BUSNAME_ACCEPTORS, state)
        || !acceptors.loadFromClientState(state))
        return true;
    return acceptors.allDisabled();
}

bool ServicesController::acceptorsServiceIsStarted()
{
    ClientState state;
    AcceptorState acceptors;
    if (!getClientState(BUSNAME_ACCEPTORS, state) || !isFresh(state)
        || !acceptors.loadFromClientState(state))
        return true;
    return !acceptors.allDisabled();
}

// --- Waiting

void ServicesController::startWaiting(Check check)
{
    m_timer.start();
    pollAgain(check);
}

void ServicesController::pollAgain(Check check)
{
    QTimer::singleShot(pollPeriod(), this, [this, check] {
        if (!m_isOver)
            (this->*check)();
    });
}

bool ServicesController::waitIsOver() const
{
    return m_timer.elapsed() > longestWait();
}

// --- All services

void ServicesController::stopServices()
{
    stopServices(TouchScreen | Modems | Watchdogs | Printers | Acceptors);
}

void ServicesController::stopServices(Services services)
{
    qCDebug(GUILOGGER).noquote() << tr("Stop services");
    m_services = services;
    if (services.testFlag(TouchScreen))
        stopTouch();

    if (!services || !ensureOpen()) {
        qCDebug(GUILOGGER, "Services are stopped");
        emit stopped();
        return;
    }
    m_held |= services;
    m_told &= ~services;
    // A command that reaches nobody ends nothing: the service may be on its way up.
    if (services.testFlag(Modems))
        sendTavBusCommand(BUSNAME_TAVMODEMS, kStop);
    if (services.testFlag(Watchdogs))
        sendTavBusCommand(BUSNAME_WATCHDOGS, kStop);
    if (services.testFlag(Printers))
        sendTavBusCommand(BUSNAME_PRINTSERVICE, kStop);
    if (services.testFlag(Acceptors))
        sendToAcceptors(kDisable);
    startWaiting(&ServicesController::checkServicesStopped);
}

void ServicesController::checkServicesStopped()
{
    if (waitIsOver()) {
        qCWarning(GUILOGGER).noquote()
            << tr("Services were stopped by timeout") << m_timer.elapsed();
        emit stopped();
        return;
    }
    QString waitsFor;
    if (!modemsServiceIsStopped())
        waitsFor = tr("Modems are not stopped");
    else if (!watchdogsServiceIsStopped())
        waitsFor = tr("Watchdogs are not stopped");
    else if (!printersServiceIsStopped())
        waitsFor = tr("Printers are not stopped");
    else if (!acceptorsServiceIsStopped())
        waitsFor = tr("Acceptors are not stopped");

    if (!waitsFor.isEmpty()) {
        qCWarning(GUILOGGER).noquote() << waitsFor << m_timer.elapsed();
        pollAgain(&ServicesController::checkServicesStopped);
        return;
    }
    qCDebug(GUILOGGER, "Services are stopped");
    emit stopped();
}

void ServicesController::startServices()
{
    qCDebug(GUILOGGER).noquote() << tr("Start services");
    startTouch();
    if (!ensureOpen()) {
        if (m_held)
            qCWarning(GUILOGGER, "Services were stopped and cannot be told to start");
        emit started();
        return;
    }

    bool allStarted = true;
    const auto startUnless = [&](Test isStarted, const char *message, EService service) {
        if ((this->*isStarted)())
            return;
        allStarted = false;
        qCDebug(GUILOGGER, "%s", message);
        if (sendStart(service))
            m_told.setFlag(service);
        else if (m_held.testFlag(service))
            qCWarning(GUILOGGER) << service << "was stopped and cannot be told to start";
    };
    startUnless(&ServicesController::modemsServiceIsStarted, "Modems are stopped", Modems);
    startUnless(&ServicesController::watchdogsServiceIsStarted, "Watchdogs are stopped", Watchdogs);
    startUnless(&ServicesController::printersServiceIsStarted, "Printers are stopped", Printers);
    startUnless(&ServicesController::acceptorsServiceIsStarted, "Acceptors are stopped", Acceptors);
    if (!allStarted) {
        startWaiting(&ServicesController::checkServicesStarted);
        return;
    }
    qCDebug(GUILOGGER, "Services are started");
    m_held &= TouchScreen;
    const QPointer<TavBusQueryHandler> handler = m_handler; // goes with this, if a listener ends it
    emit started();
    if (handler)
        handler->close();
}

void ServicesController::checkServicesStarted()
{
    if (waitIsOver()) {
        m_told = {};
        qCWarning(GUILOGGER).noquote()
            << tr("Services were started by timeout") << m_timer.elapsed();
        emit started();
        return;
    }
    QString waitsFor;
    if (!modemsServiceIsStarted())
        waitsFor = tr("Modems are not started");
    else if (!watchdogsServiceIsStarted())
        waitsFor = tr("Watchdogs are not started");
    else if (!printersServiceIsStarted())
        waitsFor = tr("Printers are not started");
    else if (!acceptorsServiceIsStarted())
        waitsFor = tr("Acceptors are not started");

    if (!waitsFor.isEmpty()) {
        qCWarning(GUILOGGER).noquote() << waitsFor << m_timer.elapsed();
        pollAgain(&ServicesController::checkServicesStarted);
        return;
    }
    qCDebug(GUILOGGER, "Services are started");
    m_told = {};
    m_held &= TouchScreen;
    emit started();
}

// --- The modem service alone

void ServicesController::stopModemsService()
{
    // A stop like the others: without this the polling would not look at the modem service at all.
    m_services = Modems;
    m_told.setFlag(Modems, false);
    const bool isOpen = ensureOpen();
    if (isOpen)
        m_held.setFlag(Modems); // a broker that does not answer in time may do it later
    if (!isOpen || !sendTavBusCommand(BUSNAME_TAVMODEMS, kStop)) {
        emit modemsServiceStopped();
        return;
    }
    startWaiting(&ServicesController::checkModemsStopped);
}

void ServicesController::checkModemsStopped()
{
    if (!waitIsOver() && !modemsServiceIsStopped())
        pollAgain(&ServicesController::checkModemsStopped);
    else
        emit modemsServiceStopped();
}

void ServicesController::startModemsService()
{
    const std::optional<bool> runs = modemsServiceRuns();
    if (!m_handler || runs.value_or(true)) {
        if (runs)
            m_held.setFlag(Modems, false);
        else if (m_held.testFlag(Modems))
            qCWarning(GUILOGGER, "The modem service may stay stopped: its state is not known");
        emit modemsServiceStarted();
        return;
    }
    if (!ensureOpen() || !sendStart(Modems)) {
        if (m_held.testFlag(Modems))
            qCWarning(GUILOGGER, "The modem service was stopped and cannot be told to start");
        const QPointer<TavBusQueryHandler> handler = m_handler;
        emit modemsServiceStarted();
        if (handler)
            handler->close();
        return;
    }
    m_told.setFlag(Modems);
    startWaiting(&ServicesController::checkModemsStarted);
}

void ServicesController::checkModemsStarted()
{
    const bool isOver = waitIsOver();
    const std::optional<bool> runs = isOver ? std::nullopt : modemsServiceRuns();
    if (!isOver && !runs.value_or(true)) {
        pollAgain(&ServicesController::checkModemsStarted);
        return;
    }
    m_told.setFlag(Modems, false);
    if (runs)
        m_held.setFlag(Modems, false);
    emit modemsServiceStarted();
}

// --- The touch screen

void ServicesController::stopTouch()
{
    TouchScreenConfigurator().stopTouches();
}

void ServicesController::startTouch()
{
    // It has no state to be seen by: that the command got through is all there is to know.
    if (sendStart(TouchScreen))
        m_held.setFlag(TouchScreen, false);
}

// --- The end of the program

void ServicesController::giveServicesBack()
{
    m_isOver = true;
    for (const EService service : {TouchScreen, Modems, Watchdogs, Printers, Acceptors}) {
        if (!m_held.testFlag(service) || m_told.testFlag(service))
            continue;
        m_held.setFlag(service, false);
        if (sendStart(service))
            qCDebug(GUILOGGER) << service << "is told to start";
        else
            qCWarning(GUILOGGER) << service << "was stopped and cannot be told to start";
    }
}
