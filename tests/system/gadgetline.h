#pragma once

#include "portlock.h"
#include "serialline.h"

#include <QByteArray>

class QSocketNotifier;

/// The inside of one port of a USB gadget: what the kernel's serial function shows on this side.
///
/// The function carries neither DTR nor whether anybody has the port open: hungUp() tells only of
/// unplugging, and what is sent while nobody listens waits, in the few kilobytes that the kernel
/// has for it, for the next one who opens the port. The rest of it is lost.
class GadgetLine final : public SerialLine
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GadgetLine)

public:
    /// `device` is the ttyGS* of the port.
    explicit GadgetLine(QByteArray device, QObject *parent = nullptr);
    ~GadgetLine() override;

    bool isPlugged() const override { return m_file >= 0; }
    bool plug() override;
    void unplug() override;
    void send(const QByteArray &bytes) override;

private:
    void readBytes();
    void writeRest();

    const QByteArray m_device;
    PortLock m_lock; // who looks for modems is to leave this side alone
    int m_file = -1;
    QByteArray m_unsent;
    QSocketNotifier *m_reader = nullptr; // children of this, while plugged
    QSocketNotifier *m_writer = nullptr;
};
