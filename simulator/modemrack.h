#pragma once

#include "devicetree.h"
#include "scenario.h"
#include "threadcalls.h"
#include "usbdevice.h"

#include <QMap>
#include <QObject>
#include <QThread>

class Journal;
class SimulatedModem;

/// All modems of the terminal, in the one thread that they have to themselves. Calls may come from
/// the machine's thread and take as long as the modems' thread needs to get to them.
class ModemRack : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModemRack)

public:
    /// Modems are plugged into `bus`, or, without one, into a device tree of the terminal's own.
    ModemRack(const QList<ScenarioModem> &modems, Journal *journal, UsbBus bus = {},
        QObject *parent = nullptr);
    ~ModemRack() override;

    /// Plugs in what the scenario has plugged.
    bool start(QString *error);
    bool has(const QString &modem) const { return m_modems.contains(modem); }
    /// Device name of the port that data calls go through; empty for a modem that is not there.
    QString dataPort(const QString &modem) const { return m_dataPorts.value(modem); }
    QStringList dataPorts() const { return m_dataPorts.values(); }

    bool plug(const QString &modem);
    void unplug(const QString &modem);
    void setFault(const QString &modem, const QString &fault);
    void clearFaults(const QString &modem);
    void unplugOn(const QString &modem, const QString &commandPrefix);
    QStringList commands(const QString &modem) const;

private:
    template <typename Function>
    void inThread(const QString &modem, Function function) const;

    const QList<ScenarioModem> m_scenarios;
    Journal *const m_journal; // the machine's
    std::unique_ptr<DeviceTree> m_tree;
    UsbBus m_bus;
    QThread m_thread;
    mutable ThreadCalls m_calls; // lives in the thread
    QMap<QString, SimulatedModem *> m_modems; // deleted when the thread has ended
    QMap<QString, QString> m_dataPorts;
};
