#pragma once

#include <QString>
#include <QtGlobal>

#include <memory>

namespace spdlog {
class logger;
}

/// One open log: a file that is rotated by size, standard error, or both. May be used from any
/// thread. A line reaches the kernel before write() returns (a crash loses none), but nothing waits
/// for the disk.
class LogFile
{
    Q_DISABLE_COPY_MOVE(LogFile)

public:
    /// `path` is a file, or a directory that gets a file named after the application: what exists
    /// decides, else a name with a suffix is a file. Missing directories are created. Beside the
    /// file, `keep` full ones are kept (NAME.1.log the youngest). With `echo` standard error gets
    /// every line too; it gets them alone, and is told why, when the file cannot be opened.
    LogFile(const QString &path, unsigned int keep, bool echo);
    ~LogFile();

    void write(QtMsgType type, const QMessageLogContext &context, const QString &text);

    /// "category text", with "[thread id]" between where that is not the main thread. Further lines
    /// of the text are indented, control characters shown in hexadecimal: a record begins where a
    /// line begins with a time, whatever was logged.
    static QByteArray line(const QMessageLogContext &context, const QString &text);

private:
    const std::unique_ptr<spdlog::logger> m_logger;
};
