#pragma once

#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

class Machine;
class SimulatedService;

/// The machine's control interface on the terminal's bus: what org.ovrel.TerminalSim1.xml
/// describes.
class Control : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Control)

public:
    /// `machine` outlives this.
    explicit Control(Machine *machine, QObject *parent = nullptr);

    bool publish();

public slots:
    QStringList modems();
    void modemFault(const QString &modem, const QString &fault);
    void clearModemFault(const QString &modem);
    void unplug(const QString &modem);
    void plug(const QString &modem);
    void unplugOn(const QString &modem, const QString &commandPrefix);
    QStringList modemCommands(const QString &modem);
    void holdPort(const QString &modem, bool held);
    void serviceFault(const QString &service, const QString &fault);
    void serviceState(const QString &service, const QVariantMap &body, qlonglong stampMs);
    QStringList serviceCommands(const QString &service);
    void page(const QString &page, bool answers);
    void killBroker();
    uint brokerPid();
    QStringList journal();

private:
    bool knows(const QString &modem);
    SimulatedService *serviceOf(const QString &name);
    void refuse(const QString &why);

    Machine *const m_machine;
};
