#pragma once

#include <QObject>

#include <atomic>

/// Catches the signals by which a process is told to end (SIGTERM, SIGINT, SIGHUP) for as long as
/// it lives. One at a time, in the main thread.
///
/// Each signal is caught once: the same one again ends the process at once, as it would without
/// this, so that an end that takes too long can be cut short. One that was ignored when the program
/// started (nohup, a background job) stays ignored. Programs that are started meanwhile take their
/// signals as usual.
class SignalNotifier : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SignalNotifier)

public:
    explicit SignalNotifier(QObject *parent = nullptr);
    ~SignalNotifier() override;

    /// Set in the moment a signal comes, whatever the event loop is busy with: for work that blocks
    /// it and can be broken off. Lives as long as the process; false until a notifier catches one.
    static const std::atomic<bool> *flag();

signals:
    /// From the event loop, once for each signal.
    void caught(int number);

private:
    void readNumbers();
};
