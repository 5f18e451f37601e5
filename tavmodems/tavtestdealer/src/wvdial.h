#pragma once

#include <QLoggingCategory>
#include <QObject>
#include <QPointer>
#include <QProcess>
#include <QStringList>

/// What the dialer says and what is done with it.
Q_DECLARE_LOGGING_CATEGORY(DIALUP)

/// Drives the external dialer for one test dial: resets the modem, runs the dialer on the test
/// configuration file, logs what it prints, reports its end, and clears the machine of dialers.
///
/// For the GUI thread, which start() blocks for the modem's reset and stop() for as long as a
/// dialer or pppd takes to end, 30 s a wait.
class Wvdial : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Wvdial)

public:
    static const QString WVDIAL_COMMAND; ///< path of the dialer

    explicit Wvdial(QObject *parent = nullptr, const QString &command = WVDIAL_COMMAND);
    ~Wvdial() override;

    /// Whether a dialer of this program runs.
    bool isDialling() const;

public slots:
    /// Dials the active connection of the test configuration and after that, where it is another
    /// one, `connection`.
    void start(const QString &connection);

    /// Ends the dial and every dialer and pppd of the machine.
    void stop();

signals:
    /// The dialer has ended and nothing more is pending.
    void dialdowned();

    /// What was to be dialled could not even be started, so that no dialdowned() will follow; the
    /// reason is in the log. Comes through the event loop, never from within start().
    void dialNotStarted();

protected:
    /// Longest wait for a process to end, ms. Tests shorten it.
    virtual int processWait() const { return kProcessWait; }

private slots:
    void wvDialError(QProcess::ProcessError error);
    void wvDialFinished(int code, QProcess::ExitStatus status);
    void wvDialReadyReadStandardError();
    void wvDialReadyReadStandardOutput();
    void wvDialStarted();
    void wvDialStateChanged(QProcess::ProcessState state);

private:
    static constexpr int kProcessWait = 30000;

    void startWvDial(const QString &name);
    bool isDialable(const QString &name) const;
    void notStarted();
    void endAll(const QString &program);
    QString runningProcesses() const;

    QPointer<QProcess> m_process; // child of this
    QStringList m_pending; // connections still to be dialled, in order
};
