#include "doorservice.h"

#include <tavbusqueryhandler.h>

#include <QDebug>
#include <QFile>

using namespace std::chrono_literals;

namespace {

const QString kAgent = QStringLiteral("door");
constexpr std::chrono::milliseconds kRepeat = 20s; // readers take a state of a minute ago for none

} // namespace

DoorService::DoorService()
    : m_agent(kAgent)
{
    connect(&m_agent, &tavbus::TavBusAgent::commandReceived, this, &DoorService::obey);
    connect(&m_agent, &tavbus::TavBusAgent::opened, this, &DoorService::publish);
    connect(&m_period, &QTimer::timeout, this, &DoorService::look);
    connect(&m_repeat, &QTimer::timeout, this, &DoorService::publish);
    m_repeat.start(kRepeat);
}

bool DoorService::start()
{
    run();
    return m_agent.open();
}

void DoorService::obey(const TavBusCommand &command)
{
    if (command.name() == QLatin1String("stop"))
        stop();
    else if (command.name() == QLatin1String("restart"))
        run();
    else
        qWarning().noquote() << "There is no command" << command.name();
}

void DoorService::run()
{
    QVariantMap settings;
    tavbus::TavBusQueryHandler bus(kAgent);
    tavbus::ClientSettings record;
    if (bus.open() && bus.loadSettings(kAgent, record))
        settings = record.settings().value(0).toMap();
    m_sensor = settings.value(QStringLiteral("sensor"), QStringLiteral("/run/door")).toString();
    m_period.start(qMax(10, settings.value(QStringLiteral("periodMs"), 1000).toInt()));
    look();
    publish();
}

void DoorService::stop()
{
    m_period.stop();
    publish();
}

void DoorService::look()
{
    QFile sensor(m_sensor);
    const bool isOpen = sensor.open(QIODevice::ReadOnly) && sensor.read(1) == "1";
    if (isOpen == m_isOpen)
        return;
    m_isOpen = isOpen;
    publish();
}

void DoorService::publish()
{
    const int mode = m_period.isActive() ? Running : Stopped;
    m_agent.publishState({{QStringLiteral("mode"), mode}, {QStringLiteral("open"), m_isOpen}});
}
