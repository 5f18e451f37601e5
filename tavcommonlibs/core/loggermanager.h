#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>

/// The program's log: receives everything that is logged through Qt, writes it to a file that is
/// rotated, and passes single categories on to outputs (the log panes). All functions may be called
/// from any thread.
class LoggerManager
{
public:
    using Output = std::function<void(QtMsgType, const QMessageLogContext &, const QString &)>;

    LoggerManager() = delete;

    /// Starts the log. `path`: a file, or a directory (the file is then named after the
    /// application); `keep`: how many full files are kept beside the current one; `echo`: also to
    /// standard error; `level`: nothing below it is written. Categories (but Qt's own, "qt" and
    /// "qt.*") are opened down to `level` and stay open, whatever rules are set elsewhere. A log
    /// that cannot be opened is reported on standard error, which then takes its place.
    static void initLog(const QString &path, unsigned int keep, bool echo, QtMsgType level);

    /// Flushes and closes the log. Before initLog() and from here on messages go where Qt sends
    /// them by itself: to standard error.
    static void releaseLog();

    /// Registers `output` for the messages of the category `name`, in place of an earlier one; the
    /// category is opened down to debug, whatever the log's level. The output is called on the
    /// thread that calls this function: at once when that thread logs, else through its event loop.
    /// It may log: while it is called at once Qt passes that to standard error alone; otherwise it
    /// is logged like all else, but what belongs to its own category is not passed to it again. It
    /// goes with its thread.
    static void setOutputs(const QString &name, Output output);

    /// After this has returned the output is not called any more, queued messages included. Waits
    /// for a call that runs on another thread: hold nothing that the output may wait for.
    static void removeOutput(const QString &name);
};
