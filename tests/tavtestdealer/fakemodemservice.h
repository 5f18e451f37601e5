#pragma once

#include "busnames.h"
#include "modemservicestate.h"
#include "tavbusagent.h"

#include <QStringList>

/// The terminal's modem service: obeys "stop" and "restart" at once and publishes that it did.
class FakeModemService : public tavbus::TavBusAgent
{
public:
    FakeModemService()
        : TavBusAgent(tavbus::BUSNAME_TAVMODEMS)
    {
        connect(this, &TavBusAgent::commandReceived, this, [this](const TavBusCommand &command) {
            commands.append(command.name());
            if (isObedient)
                publish(command.name() == QLatin1String("stop") ? kStopped : kReady);
        });
        if (!open() || !publish(kReady))
            qFatal("the fake modem service cannot reach the bus");
    }

    bool publish(int mode)
    {
        ModemServiceState state;
        state.setServiceMode(static_cast<ModemServiceState::Mode>(mode));
        return publishState(state.toStateBody());
    }

    static constexpr int kReady = 2;
    static constexpr int kStopped = 6;

    QStringList commands;
    bool isObedient = true;
};
