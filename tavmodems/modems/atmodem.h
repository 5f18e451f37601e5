#pragma once

#include "aterror.h"
#include "portlock.h"

#include <QDateTime>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

#include <atomic>
#include <chrono>
#include <functional>
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
    using Error = AtError;

    /** A short message that was received, put together when it came in parts. */
    struct SSms
    {
        QDateTime time; ///< by the service centre, with its zone; invalid when it does not tell
        QString sender;
        QString text; ///< an ellipsis stands for parts that are missing
    };

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
    /** The two apart. */
    QString manufacturer() const;
    QString model() const;
    /** Why the last call failed: a sentence for the technician, else empty. */
    QString lastError() const;
    /** The same for programs. */
    Error error() const;

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

    /**
     * The calls below ask for one thing each, best after reset(). Each is false, with the reason
     * in lastError() and error() and its parameters as they were, when it came to nothing, and at
     * once when no port is open.
     */

    /** Country and network code of the network that the modem is registered in, or else of the
     * SIM card's own; 12 s at most. */
    bool getMnc(int &mcc, int &mnc);

    /** Those of the SIM card's own network, whose access point and codes it uses abroad too; 5 s
     * at most. */
    bool getHomeNetwork(int &mcc, int &mnc);

    /** The modem's own serial number alone, 14 to 16 digits; 2 s at most. */
    bool getImei(QString &imei);

    /** Location (or tracking) area code and cell identity, hexadecimal in capitals with at least
     * four digits; 9 s at most. From then on the modem tells of a new cell unasked, up to
     * beforeDial(). */
    bool getGsmCells(QString &lac, QString &cid);

    /**
     * What the modem knows of itself, each key only when it does: "manufacturer", "model",
     * "revision", "imei"; of the SIM card "imsi", "iccid", "simNumber"; "operator" (the name that
     * the network gives itself), "registration" ("home", "roaming", "searching", "denied"...),
     * "technology" ("GSM", "UMTS", "LTE", "5G"), all texts; and "gsmCells", a list that may be
     * empty of maps with "lac" and "cid" as of getGsmCells() and "technology". 40 s at most,
     * 10 s when the modem has gone silent. What it asks for as getGsmCells() does has the
     * same consequence.
     */
    bool getInfo(QMap<QString, QVariant> &info);

    /**
     * Asks the operator for the card's own telephone number: by a USSD code `phone`, 35 s at most,
     * or by a message to the service number `phone`, behind which, after a blank, the text to
     * send; its answer is awaited for a minute from then, with a modem slow in listing its
     * messages four minutes in all at the very most. The message stays on the modem.
     */
    bool requestSelfNumber(bool fromSms, const QString &phone, QString &number);

    /** Sends a USSD code to the network and gives its answer, 35 s at most. When the answer is a
     * menu, it is called off. */
    bool sendUSSD(const QString &code, QString &answer);

    /** The strength of the received signal in dBm, a negative number; 4 s at most. */
    bool getSignalLevel(int &level);

    /**
     * Replaces `list` by all messages that the modem has received, the earliest first, and deletes
     * those from the modem, after it has read them all. What cannot be read, was sent or is a
     * status report stays. True once all are read: what then cannot be deleted comes again the
     * next time, and lastError() tells. 40 s at most for reading, for each of the two stores that
     * a modem may have, and 5 s to delete each.
     */
    bool takeMessages(QList<SSms> &list);
    /** Gives the messages that were read to `keep` before any is deleted; when it answers false,
     * all stay on the modem. Otherwise the same. */
    bool takeMessages(const std::function<bool(const QList<SSms> &)> &keep);
    /** The same without deleting anything. The modem notes that they have been read. */
    bool readMessages(QList<SSms> &list);

    /** Makes a stick show only its modem, no drive or network card, from when it is plugged in
     * again; 10 s at most. Refused for modems that have no command for it. */
    bool toModemOnly();

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
    /** How long the network's answer to a USSD code is awaited. */
    virtual std::chrono::milliseconds ussdLimit() const;
    /** How long the operator's answer to a message is awaited. */
    virtual std::chrono::milliseconds messageLimit() const;

private:
    class Private;
    const std::unique_ptr<Private> m_d;
};
