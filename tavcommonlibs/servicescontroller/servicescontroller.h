#pragma once

#include "clientsettings.h"
#include "clientstate.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <optional>

namespace tavbus {
class TavBusQueryHandler;
}

/// A tool's way to the terminal's services: reads and writes their settings and states over the
/// bus, sends them commands, and stops and starts them around work with the hardware that they
/// hold.
///
/// Stopping and starting run on the event loop: commands go out, then the services' states are
/// asked for once a second until all are where they should be or a minute has passed. Each sequence
/// ends with its signal, whatever went wrong; what is not done by then is in the log. Sequences
/// that overlap share one clock. All calls to the bus in one turn of the event loop together block
/// for 5 s at most when it does not answer. Belongs to one thread.
class ServicesController : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServicesController)

public:
    enum EService {
        TouchScreen = 1, ///< the customers' GUI's hold on it; has no state to wait for
        Modems = 2,
        Watchdogs = 4,
        Printers = 8,
        Acceptors = 16,
    };
    Q_DECLARE_FLAGS(Services, EService)
    Q_FLAG(Services)

    /// Speaks on the bus as `agent`; connects at the first call that needs it.
    explicit ServicesController(const QString &agent, QObject *parent = nullptr);
    ~ServicesController() override;

    /// The bus client's operations; false on any failure.
    bool saveSettings(const tavbus::ClientSettings &settings);
    bool loadSettings(const QString &owner, tavbus::ClientSettings &settings);
    bool loadSettings(const QStringList &owners, QList<tavbus::ClientSettings> &list);
    bool removeSettings(const QString &owner, bool flag);

    /// The state last published by `agent`. One that is more than 60 s old is none: false, and
    /// `state` stays as it was. A stamp in the future counts as new.
    bool getClientState(const QString &agent, tavbus::ClientState &state);

    bool sendTavBusCommand(
        const QString &agent, const QString &name, const QMap<QString, QVariant> &data = {});

    /// Whether a service is where the last stop, or a start, wants it. A service that the last stop
    /// did not concern counts as stopped. One without a usable state counts as stopped and as
    /// started, so that a dead service holds nothing up; only the printers count as not started. A
    /// body that cannot be read is no usable state either, but for the modem service: one that says
    /// nothing of its mode may still hold the port, and counts as not stopped (and as started).
    bool modemsServiceIsStopped();
    bool modemsServiceIsStarted();
    bool watchdogsServiceIsStopped();
    bool watchdogsServiceIsStarted();
    bool printersServiceIsStopped();
    bool printersServiceIsStarted();
    bool acceptorsServiceIsStopped();
    bool acceptorsServiceIsStarted();

    /// Tells the services that this has stopped and not seen running since to start again, whatever
    /// their states, but for those that were just told to and have time left to come up. After
    /// startServices() one without a usable state counts as running; after startModemsService() it
    /// does not. Waits for none of them; a command that does not get through is in the log. The
    /// sequence under way ends without its signal. For the end of a program whose event loop does
    /// not go on.
    void giveServicesBack();

public slots:
    void stopServices(); ///< all of them
    void stopServices(ServicesController::Services services);
    void startServices(); ///< all of them, whatever was stopped
    void stopModemsService();
    void startModemsService();
    void stopTouch();
    void startTouch();

signals:
    void stopped();
    void started();
    void modemsServiceStopped();
    void modemsServiceStarted();

protected:
    /// Milliseconds. Tests shorten them.
    virtual int pollPeriod() const { return kPollPeriod; }
    virtual int longestWait() const { return kLongestWait; }

private slots:
    void checkServicesStopped();
    void checkServicesStarted();
    void checkModemsStopped();
    void checkModemsStarted();

private:
    static constexpr int kPollPeriod = 1000;
    static constexpr int kLongestWait = 60000;

    using Check = void (ServicesController::*)();
    using Test = bool (ServicesController::*)();

    bool ensureOpen();
    std::optional<bool> modemsServiceRuns(); // empty: its state is not known
    bool sendToAcceptors(const QString &name);
    bool sendStart(EService service);
    void startWaiting(Check check);
    void pollAgain(Check check);
    bool waitIsOver() const;

    Services m_services; // those that the last stop affected
    Services m_held; // those that a stop affected and that are not known to run again
    Services m_told; // those that were told to start and are waited for
    bool m_isOver = false; // they were given back
    QPointer<tavbus::TavBusQueryHandler> m_handler; // child of this
    // Not a QTime, which midnight and every correction of the clock would upset.
    QElapsedTimer m_timer;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ServicesController::Services)
