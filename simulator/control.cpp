#include "control.h"

#include "machine.h"
#include "simulatedmodem.h"
#include "simulatedservice.h"
#include "terminalsim1adaptor.h"

#include <QDBusArgument>
#include <QDBusConnection>

namespace {

// What came inside a variant is still in its wire form.
QVariant plain(const QVariant &value)
{
    if (value.userType() != qMetaTypeId<QDBusArgument>()) {
        if (value.userType() == QMetaType::QVariantMap) {
            QVariantMap map = value.toMap();
            for (QVariant &item : map)
                item = plain(item);
            return map;
        }
        if (value.userType() == QMetaType::QVariantList) {
            QVariantList list = value.toList();
            for (QVariant &item : list)
                item = plain(item);
            return list;
        }
        return value;
    }
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() == QDBusArgument::MapType)
        return plain(QVariant(qdbus_cast<QVariantMap>(argument)));
    if (argument.currentType() == QDBusArgument::ArrayType)
        return plain(QVariant(qdbus_cast<QVariantList>(argument)));
    return value;
}

} // namespace

Control::Control(Machine *machine, QObject *parent)
    : QObject(parent)
    , m_machine(machine)
{
    new TerminalSim1Adaptor(this); // a child of this
}

bool Control::publish()
{
    QDBusConnection bus = QDBusConnection::systemBus();
    return bus.registerObject(QStringLiteral("/org/ovrel/TerminalSim"), this)
        && bus.registerService(QStringLiteral("org.ovrel.TerminalSim"));
}

void Control::refuse(const QString &why)
{
    if (calledFromDBus())
        sendErrorReply(QDBusError::InvalidArgs, why);
}

bool Control::knows(const QString &modem)
{
    if (m_machine->modems().has(modem))
        return true;
    refuse(QStringLiteral("no modem \"%1\"").arg(modem));
    return false;
}

SimulatedService *Control::serviceOf(const QString &name)
{
    SimulatedService *const service = m_machine->service(name);
    if (service == nullptr)
        refuse(QStringLiteral("no service \"%1\"").arg(name));
    return service;
}

QStringList Control::modems()
{
    return m_machine->modemNames();
}

void Control::modemFault(const QString &modem, const QString &fault)
{
    if (!knows(modem))
        return;
    if (SimulatedModem::faultNames().contains(fault))
        m_machine->modems().setFault(modem, fault);
    else
        refuse(QStringLiteral("no fault \"%1\"").arg(fault));
}

void Control::clearModemFault(const QString &modem)
{
    if (knows(modem))
        m_machine->modems().clearFaults(modem);
}

void Control::unplug(const QString &modem)
{
    if (knows(modem))
        m_machine->modems().unplug(modem);
}

void Control::plug(const QString &modem)
{
    if (knows(modem) && !m_machine->modems().plug(modem))
        sendErrorReply(QDBusError::Failed, QStringLiteral("cannot be plugged in"));
}

void Control::unplugOn(const QString &modem, const QString &commandPrefix)
{
    if (knows(modem))
        m_machine->modems().unplugOn(modem, commandPrefix);
}

QStringList Control::modemCommands(const QString &modem)
{
    return knows(modem) ? m_machine->modems().commands(modem) : QStringList();
}

void Control::holdPort(const QString &modem, bool held)
{
    if (knows(modem) && !m_machine->holdPort(modem, held))
        sendErrorReply(QDBusError::Failed, QStringLiteral("the port is not to be had"));
}

void Control::serviceFault(const QString &service, const QString &fault)
{
    SimulatedService *const target = serviceOf(service);
    if (target == nullptr)
        return;
    if (SimulatedService::faultNames().contains(fault))
        target->setFault(fault);
    else
        refuse(QStringLiteral("no fault \"%1\"").arg(fault));
}

void Control::serviceState(const QString &service, const QVariantMap &body, qlonglong stampMs)
{
    SimulatedService *const target = serviceOf(service);
    if (target != nullptr && !target->publish(plain(body).toMap(), stampMs))
        sendErrorReply(QDBusError::Failed, QStringLiteral("the broker did not take it"));
}

QStringList Control::serviceCommands(const QString &service)
{
    SimulatedService *const target = serviceOf(service);
    return target == nullptr ? QStringList() : target->commands();
}

void Control::page(const QString &page, bool answers)
{
    if (!m_machine->setPage(page, answers))
        refuse(QStringLiteral("no page \"%1\"").arg(page));
}

void Control::killBroker()
{
    m_machine->killBroker();
}

uint Control::brokerPid()
{
    return m_machine->brokerPid();
}

QStringList Control::journal()
{
    return m_machine->journal().lines();
}
