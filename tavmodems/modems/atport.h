#pragma once

#include "portlock.h"

#include <QSerialPort>

/**
 * A serial port that this program has for itself: locked for those who look at lock files and
 * opened exclusively for those who do not. Any terminal will do, pseudo-terminals too. To be used
 * in one thread.
 */
class AtPort
{
    Q_DISABLE_COPY_MOVE(AtPort)

public:
    explicit AtPort(const QString &lockDirectory);
    ~AtPort();

    /** The path of a port given by its bare name or its path. */
    static QString pathOf(const QString &name);

    /** Opens with eight data bits, no parity, one stop bit. False with the reason in error(). */
    bool open(const QString &name, int baudrate);
    bool isOpen() const { return m_port.isOpen(); }
    /** Whether an open port has vanished or was hung up. */
    bool isGone() const;
    /** Drops what is not yet sent and gives the port free. */
    void close();

    QIODevice *device() { return &m_port; }
    QString path() const { return m_path; }
    /** Why the last open() failed: a sentence. */
    QString error() const { return m_error; }

private:
    bool fail(const QString &error);
    QString heldText(const QString &holder) const;

    QSerialPort m_port;
    PortLock m_lock;
    QString m_path;
    QString m_error;
};
