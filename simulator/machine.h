#pragma once

#include "journal.h"
#include "messagebus.h"
#include "modemrack.h"
#include "scenario.h"
#include "wirednetwork.h"

#include <QObject>
#include <map>
#include <memory>

class PortUser;
class SimulatedService;
class WebPage;

/// What the terminal's configuration says of its language.
struct TerminalLanguage
{
    QString locale; ///< as QLocale names it; empty = that of the environment
    QString translations; ///< directory; empty = the default one
};

/// The terminal's hardware, services and surroundings, put together as a scenario says. Its
/// thread's event loop must run. The public calls are what the control interface offers; those
/// with a bool give false for a name that is not known.
class Machine : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Machine)

public:
    /// Without a broker the system bus that is there is used as it stands. Modems are plugged into
    /// `usb`, or, without one, into a device tree of the terminal's own.
    Machine(const Scenario &scenario, QString brokerProgram, const UsbBus &usb = {},
        QObject *parent = nullptr);
    ~Machine() override;

    /// Writes the files that programs in the terminal find. Before any program is started.
    static bool writeFiles(
        const Scenario &scenario, const TerminalLanguage &language, QString *error);
    /// Sets the environment of the terminal's programs in the calling process.
    static void setEnvironment();

    bool start(QString *error);

    ModemRack &modems() { return m_modems; }
    QStringList modemNames() const;
    SimulatedService *service(const QString &name) const { return m_services.value(name); }
    bool holdPort(const QString &modem, bool held);
    bool setPage(const QString &page, bool answers);
    uint brokerPid() const;
    void killBroker();
    Journal &journal() { return m_journal; }

private:
    bool startNetwork(QString *error);
    bool startServices(QString *error);
    bool writePppOptions(QString *error);
    bool saveConnections(QString *error);

    const Scenario m_scenario;
    const QString m_brokerProgram;
    Journal m_journal;
    WiredNetwork m_wiredNetwork{&m_journal};
    MessageBus m_bus;
    ModemRack m_modems;
    QMap<QString, SimulatedService *> m_services; // children of this
    QMap<QString, WebPage *> m_pages; // children of this
    std::map<QString, std::unique_ptr<PortUser>> m_otherHolders;
};
