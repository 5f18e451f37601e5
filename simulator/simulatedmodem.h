#pragma once

#include "modemstate.h"
#include "usbdevice.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

class AtInterpreter;
class Journal;
class PppPeer;
class SerialLine;

/// One modem: its ports, what is spoken on them, its calls and its faults. Lives in the modems'
/// thread, which nothing else uses, so that a modem answers in its own time whatever the rest of
/// the terminal is busy with.
class SimulatedModem : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SimulatedModem)

public:
    /// `number` is its USB port, from 1; its serial ports are ttyUSB`firstPort` and up.
    SimulatedModem(const UsbBus &bus, const ScenarioModem &scenario, const ModemProfile &profile,
        int number, int firstPort, Journal *journal);
    ~SimulatedModem() override;

    static QStringList faultNames();

    bool plug();
    void unplug();
    void setFault(const QString &fault);
    void clearFaults();
    void unplugOn(const QString &commandPrefix);
    QStringList commands() const { return m_commands; }

private:
    struct Port
    {
        SerialLine *line = nullptr; // children of this
        AtInterpreter *interpreter = nullptr;
        bool notifies = false;
    };

    void makePorts();
    void addPort(const QString &role, int index);
    void heard(AtInterpreter *interpreter, const QByteArray &bytes);
    void say(SerialLine *line, const QByteArray &bytes);
    void commandArrived(const QByteArray &line);
    void startCall(const Port &port);
    void reset();
    void notifyAll(const QString &text);
    void setPeriodicLines(bool on);

    ModemState m_state;
    Journal *const m_journal; // the machine's
    const int m_firstPort;
    const std::unique_ptr<UsbDevice> m_usb;
    QStringList m_roles; // of the ports
    QList<Port> m_ports;
    QPointer<PppPeer> m_call; // child of this
    QList<QTimer *> m_periodic; // children of this
    QTimer m_babble;
    QStringList m_commands;
    QByteArray m_unplugOn;
    quint32 m_noise = 1;
};
