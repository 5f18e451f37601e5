#pragma once

#include "portlock.h"

#include <QString>

/// A program that uses a serial port the way polite ones do: with its lock file, and the device
/// open for sole use.
class PortUser
{
    Q_DISABLE_COPY_MOVE(PortUser)

public:
    explicit PortUser(const QString &port);
    ~PortUser();

    /// False when the device is not there or another holds it.
    bool hold();
    void release();

private:
    const QString m_port;
    PortLock m_lock;
    int m_file = -1;
};
