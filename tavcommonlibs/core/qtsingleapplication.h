#pragma once

#include <QApplication>
#include <QLockFile>

#include <memory>

/// The application object of a program that runs once per user: the first instance holds a lock
/// file in the user's run-time directory, named after the executable's path. The kernel drops the
/// lock with the process, so an instance that crashed never stands in the way of the next.
class QtSingleApplication : public QApplication
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QtSingleApplication)

public:
    /// `gui` is taken for compatibility; the application is a GUI one either way.
    QtSingleApplication(int &argc, char **argv, bool gui = true);
    ~QtSingleApplication() override;

    /// Whether another instance runs. When the one that ran has ended, the lock is taken over here.
    /// False as well, with a warning, when no lock can be had at all: better two than none.
    bool isRunning();

private:
    bool takeLock();

    std::unique_ptr<QLockFile> m_lock; // null when there is no place for it
};
