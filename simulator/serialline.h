#pragma once

#include <QObject>

/// The inside of one serial port: the modem's end of what programs open under /dev. Lives in the
/// modems' thread.
class SerialLine : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SerialLine)

public:
    using QObject::QObject;

    virtual bool isPlugged() const = 0;
    virtual bool plug() = 0;
    /// Hangs the line up: whoever has it open gets an error; the device node goes.
    virtual void unplug() = 0;
    virtual void send(const QByteArray &bytes) = 0;

signals:
    void received(const QByteArray &bytes);
    /// Nobody has the port open any more.
    void hungUp();
};
