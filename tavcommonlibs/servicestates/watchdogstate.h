#pragma once

#include "clientstate.h"

/// State of the watchdogs service: a value. Its body on the bus is {"state": int}.
class WatchdogState
{
public:
    /// Set in state() while the watchdogs run.
    static constexpr int RUNNING = 2;

    /// False, with no bit set in state(), when the body does not hold what it must.
    bool setClientState(const tavbus::ClientState &state);

    int state() const { return m_state; }
    void setState(int state) { m_state = state; }
    bool isRunning() const { return (m_state & RUNNING) != 0; }

    QVariantMap toStateBody() const;

private:
    int m_state = 0;
};
