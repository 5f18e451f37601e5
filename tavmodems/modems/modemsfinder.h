#pragma once

#include "aterror.h"
#include "foundmodem.h"
#include "portlock.h"

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <memory>
#include <vector>

/** A port on which a search found no modem. */
struct PortFailure
{
    QString port; ///< its name
    AtError error = AtError::None;
    QString text; ///< a sentence for the technician; it names a program that holds the port
};

/**
 * Looks for modems on all serial ports: those the system lists and those of modems/extraPorts.
 * The ports are probed side by side, each in a thread of its own, so that a search takes as long as
 * its slowest port: a port on which nothing answers is given up after 2.5 s, one that another
 * program holds is passed over and named in the log with its holder. Progress goes to AT_MODEM.
 *
 * A probe only asks: it changes nothing on the SIM card or in the modem's profile, types no PIN and
 * does not wait for a network.
 *
 * Signals come in the finder's own thread, whose event loop they need. Destruction breaks a search
 * off and waits for its threads, some tenths of a second.
 */
class ModemsFinder : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModemsFinder)

public:
    /** `lockDirectory` is where the lock files of serial ports lie. */
    explicit ModemsFinder(
        QObject *parent = nullptr, const QString &lockDirectory = PortLock::DIRECTORY);
    ~ModemsFinder() override;

    /** Whether a search is under way: from start() until just before finished(). */
    bool isRunning() const { return m_running; }

    /** What the last search found, with more than is in the records; from devicesFinded() on. */
    QList<FoundModem> found() const { return m_found; }
    /** The other ports that it looked at. */
    QList<PortFailure> failures() const { return m_failures; }

    /** Breaks off a search under way, of which nothing more is heard, and lets none start any more.
     * Waits for its threads, some tenths of a second. */
    void breakOff();

public slots:
    /** Starts a search and returns at once; ignored while one is running. */
    void start();

signals:
    /** The records of all modems found, at least one, named as modemsBehind() tells. */
    void devicesFinded(const QList<ModemInfo> &modems);
    /** Instead of devicesFinded(): why there is none, for the operator. */
    void noDevices(const QString &err);
    /** After either of them. */
    void finished();

protected:
    /** The ports to look at. */
    virtual QList<SearchPort> ports() const;
    /** At how many bits per second to ask on a port: as its record in ModemSettings has it. */
    virtual int baudrateOf(const SearchPort &port) const;

private:
    struct Probe;

    void probeEnded();
    void finish();
    QString whyNone() const;

    const QString m_lockDirectory;
    bool m_running = false;
    std::atomic<bool> m_abort{false};
    QElapsedTimer m_clock; // since start()
    std::size_t m_pending = 0; // probes that have not ended
    std::vector<std::unique_ptr<Probe>> m_probes; // of the search under way
    QList<FoundModem> m_found;
    QList<PortFailure> m_failures;
};
