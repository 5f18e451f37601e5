#pragma once

#include <QString>

/// Holds a serial port the way programs do that share ports politely: an UUCP-style lock file in
/// /run/lock with the holder's process id, the device open for sole use.
class PortHolder
{
public:
    explicit PortHolder(QString port);
    ~PortHolder();
    PortHolder(const PortHolder &) = delete;
    PortHolder &operator=(const PortHolder &) = delete;

    /// False when the device is not there or another holds it.
    bool hold();
    void release();
    bool isHeld() const { return m_file >= 0; }

private:
    const QString m_port;
    int m_file = -1;
};
