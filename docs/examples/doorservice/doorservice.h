#pragma once

#include <tavbusagent.h>

#include <QTimer>

/// Tells on the bus whether the cabinet's door is open. The agent's name is "door".
///
/// Settings: one map with "sensor" (a file that holds 1 while the door is open) and "periodMs".
/// State: {"mode": one of Mode, "open": bool}. Commands: "stop", "restart".
class DoorService : public QObject
{
    Q_OBJECT

public:
    enum Mode { Running = 1, Stopped = 2 };

    DoorService();

    /// False when the bus cannot be reached.
    bool start();

private:
    void obey(const TavBusCommand &command);
    void run();
    void stop();
    void look();
    void publish();

    tavbus::TavBusAgent m_agent;
    QTimer m_period; // runs while Running
    QTimer m_repeat;
    QString m_sensor;
    bool m_isOpen = false;
};
