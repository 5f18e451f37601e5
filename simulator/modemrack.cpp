#include "modemrack.h"

#include "journal.h"
#include "simulatedmodem.h"
#include "usbserialdevice.h"

#include <utility>

ModemRack::ModemRack(
    const QList<ScenarioModem> &modems, Journal *journal, UsbBus bus, QObject *parent)
    : QObject(parent)
    , m_scenarios(modems)
    , m_journal(journal)
    , m_bus(std::move(bus))
{
    m_thread.setObjectName(QStringLiteral("modems"));
    m_calls.moveToThread(&m_thread);
    if (m_bus)
        return;
    m_tree = std::make_unique<DeviceTree>();
    m_bus = [this](int number, const UsbIdentity &identity) {
        return std::make_unique<UsbSerialDevice>(m_tree.get(), number, identity);
    };
}

ModemRack::~ModemRack()
{
    m_thread.quit();
    m_thread.wait();
    qDeleteAll(m_modems);
}

template <typename Function>
void ModemRack::inThread(const QString &modem, Function function) const
{
    SimulatedModem *const target = m_modems.value(modem);
    if (target != nullptr)
        m_calls.run([target, &function] { function(target); });
}

bool ModemRack::start(QString *error)
{
    if (m_tree && !m_tree->mount(error))
        return false;
    m_thread.start();
    int number = 1;
    int firstPort = 0;
    for (const ScenarioModem &scenario : m_scenarios) {
        ModemProfile profile;
        if (!ModemProfile::load(scenario.profile, &profile, error))
            return false;
        ScenarioModem modem = scenario;
        if (modem.imei.isEmpty())
            modem.imei = profile.imei;
        auto *simulated = new SimulatedModem(m_bus, modem, profile, number++, firstPort, m_journal);
        simulated->moveToThread(&m_thread);
        m_modems.insert(modem.name, simulated);
        m_dataPorts.insert(modem.name,
            QStringLiteral("ttyUSB%1")
                .arg(firstPort + profile.ports.indexOf(QStringLiteral("data"))));
        firstPort += profile.ports.size();
        if (modem.plugged && !plug(modem.name)) {
            *error = QStringLiteral("modem %1 cannot be plugged in").arg(modem.name);
            return false;
        }
    }
    return true;
}

bool ModemRack::plug(const QString &modem)
{
    bool plugged = false;
    inThread(modem, [&plugged](SimulatedModem *target) { plugged = target->plug(); });
    return plugged;
}

void ModemRack::unplug(const QString &modem)
{
    inThread(modem, [](SimulatedModem *target) { target->unplug(); });
}

void ModemRack::setFault(const QString &modem, const QString &fault)
{
    inThread(modem, [fault](SimulatedModem *target) { target->setFault(fault); });
}

void ModemRack::clearFaults(const QString &modem)
{
    inThread(modem, [](SimulatedModem *target) { target->clearFaults(); });
}

void ModemRack::unplugOn(const QString &modem, const QString &commandPrefix)
{
    inThread(modem, [commandPrefix](SimulatedModem *target) { target->unplugOn(commandPrefix); });
}

QStringList ModemRack::commands(const QString &modem) const
{
    QStringList commands;
    inThread(modem, [&commands](SimulatedModem *target) { commands = target->commands(); });
    return commands;
}
