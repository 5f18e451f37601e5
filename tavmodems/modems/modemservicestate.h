#pragma once

#include <clientstate.h>

/**
 * The modem service's state as it is published on the bus, for those who read it and for the
 * service that writes it: body {"serviceMode": int}.
 */
class ModemServiceState
{
public:
    enum Mode {
        Unknown = 0,
        Starting = 1,
        Ready = 2,
        Dialling = 3,
        Connected = 4,
        Stopping = 5,
        Stopped = 6,
    };

    /** Takes the mode from a published state; a body without a mode of the list is Unknown. */
    void setClientState(const tavbus::ClientState &state);

    /** One of Mode. */
    int serviceMode() const { return m_mode; }
    void setServiceMode(Mode mode) { m_mode = mode; }

    /** The body to publish. */
    QVariantMap toStateBody() const;

private:
    Mode m_mode = Unknown;
};
