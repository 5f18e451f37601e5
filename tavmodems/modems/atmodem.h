#pragma once

#include "portlock.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>

/**
 * A modem on a serial port, spoken to in AT commands. Every call does its work before it returns
 * and runs no event loop; each is bounded in time as said at it, and a modem that vanishes ends
 * the call at once. To be used in the thread that made it. Destruction closes the port.
 */
class AtModem : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(AtModem)

public:
    /** `lockDirectory` is where the lock files of serial ports lie. */
    explicit AtModem(QObject *parent = nullptr, const QString &lockDirectory = PortLock::DIRECTORY);
    ~AtModem() override;

    /**
     * While `*flag` is true every call fails as if the modem had vanished, the one under way
     * within a tenth of a second: how another thread or a signal handler ends the work. The flag
     * outlives this object; null, as at first, for none.
     */
    void setAbortFlag(const std::atomic<bool> *flag);

    /**
     * Opens the port, gets the modem to answer and learns what it is. `port` is a bare device
     * name or the path of any terminal, `baudrate` bits per second, `attempts` how often the modem
     * is asked for a sign of life (at least once). An open port is closed first. False, with the
     * reason in lastError(), when there is no such port, another program holds it, or what is
     * there does not answer as a modem does. A silent port costs a second per attempt, and one and
     * a half to call a modem back that was left in a data call; a modem that falls silent while it
     * is asked what it is costs two more.
     */
    bool open(const QString &port, int baudrate, int attempts);
    bool isOpen() const;

    /** The family of commands found by open(), such as "Huawei"; empty while closed. */
    QString gsmDialect() const;
    /** Maker and model as the modem tells them; empty while closed or when it does not tell. */
    QString modemName() const;
    /** Why the last open(), reset() or beforeDial() failed: a sentence for the technician, else
     * empty. */
    QString lastError() const;

    /**
     * Brings the modem into a known command state: stored profile, no echo, results as words,
     * errors by number; at most 9 s, and 4 s when the modem has gone silent. With
     * `waitForNetwork` it also switches the radio on and waits until the SIM card is ready and the
     * modem is registered: about 15, 10 and 30 s more at most, less when waiting is of no use (no
     * card, PIN asked). Returns at once when no port is open. How it failed is in lastError().
     */
    void reset(bool waitForNetwork);

    /**
     * Silences the lines that a modem sends unasked, which the dialer would take for answers; a
     * second at most for each of a handful, and a second for all when the modem is silent. Returns
     * at once when no port is open.
     */
    void beforeDial();

    /** Closes the port and gives it free for other programs. */
    void close();

    /**
     * The balance in an operator's answer (findBalance()): the amount in the operator's currency,
     * negative for a debt. Not a number (NaN) when the answer holds no amount, which no caller can
     * take for an empty account; findBalance() tells the same by an empty optional.
     */
    static double parseModemBalance(const QString &answer);

protected:
    /** How long reset() waits for a network. */
    virtual std::chrono::milliseconds registrationLimit() const;

private:
    class Private;
    const std::unique_ptr<Private> m_d;
};
