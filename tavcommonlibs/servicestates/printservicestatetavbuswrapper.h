#pragma once

#include "clientstate.h"
#include "printservicestate.h"

/// Carries the printer service's state over the bus: a value. The body is {"serviceState": int}.
class PrintServiceStateTavbusWrapper
{
public:
    /// False, with a state() of 0, when the body does not hold what it must.
    bool setClientState(const tavbus::ClientState &state);

    PrintServiceState state() const { return m_state; }
    void setState(const PrintServiceState &state) { m_state = state; }

    QVariantMap toStateBody() const;

private:
    PrintServiceState m_state;
};
