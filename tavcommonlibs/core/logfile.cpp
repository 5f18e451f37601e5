#include "logfile.h"

#include "dircreator.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <spdlog/logger.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr std::size_t kFileSize = 8'000'000; // bytes
constexpr unsigned int kMostFiles = 1000; // spdlog renames them one by one

QString filePath(const QString &path)
{
    const QFileInfo info(path);
    const bool isDirectory = info.isDir() || path.endsWith(QLatin1Char('/'))
        || (!info.exists() && info.suffix().isEmpty());
    if (!isDirectory)
        return path;
    const QString name = QCoreApplication::applicationName();
    return QDir::cleanPath(path) + QLatin1Char('/')
        + (name.isEmpty() ? QStringLiteral("program") : name) + QLatin1String(".log");
}

/// Gives the group what the owner has. Of a file of another user's nothing changes.
void openToGroup(std::FILE *file)
{
    struct stat status = {};
    if (fstat(fileno(file), &status) == 0)
        fchmod(fileno(file), (status.st_mode & ALLPERMS) | (status.st_mode & S_IRWXU) >> 3);
}

spdlog::sink_ptr openFile(const QString &path, unsigned int keep)
{
    if (path.isEmpty())
        throw spdlog::spdlog_ex("no path is given");
    const QFileInfo info(filePath(path));
    DirCreator::checkAndCreate(info.absolutePath(), DirCreator::DEFAULT_ALL);
    // A pipe would block, and rotation would rename a device.
    if (info.exists() && !info.isFile())
        throw spdlog::spdlog_ex("not a regular file");
    spdlog::file_event_handlers handlers;
    // In a directory that a group shares, the next to write to it may be another user of the group.
    if (QFileInfo(info.absolutePath()).permission(QFile::WriteGroup))
        handlers.after_open = [](const auto &, std::FILE *file) { openToGroup(file); };
    return std::make_shared<spdlog::sinks::rotating_file_sink_mt>(
        QFile::encodeName(info.absoluteFilePath()).toStdString(), kFileSize,
        std::min(keep, kMostFiles), false, handlers);
}

std::unique_ptr<spdlog::logger> openLog(const QString &path, unsigned int keep, bool echo)
{
    auto logger = std::make_unique<spdlog::logger>("log");
    logger->set_level(spdlog::level::trace);
    logger->flush_on(spdlog::level::trace);
    const auto toStandardError = std::make_shared<spdlog::sinks::stderr_sink_mt>();
    try {
        logger->sinks().push_back(openFile(path, keep));
        if (echo)
            logger->sinks().push_back(toStandardError);
        logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %-8l %v");
    } catch (const spdlog::spdlog_ex &error) {
        logger->sinks() = {toStandardError};
        logger->set_pattern("%Y-%m-%d %H:%M:%S.%e %-8l %v");
        logger->error("The log {} cannot be opened, standard error takes its place: {}",
            path.toStdString(), error.what());
    }
    return logger;
}

spdlog::level::level_enum spdlogLevel(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return spdlog::level::debug;
    case QtInfoMsg:
        return spdlog::level::info;
    case QtWarningMsg:
        return spdlog::level::warn;
    case QtCriticalMsg:
        return spdlog::level::err;
    case QtFatalMsg:
        break;
    }
    return spdlog::level::critical;
}

void appendReadable(QByteArray &line, const QByteArray &text)
{
    constexpr char kDigits[] = "0123456789abcdef";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '\n')
            line += "\n    ";
        else if (c == '\t' || (byte >= 0x20 && byte != 0x7f))
            line += c;
        else
            line.append("\\x").append(kDigits[byte >> 4]).append(kDigits[byte & 0xf]);
    }
}

} // namespace

LogFile::LogFile(const QString &path, unsigned int keep, bool echo)
    : m_logger(openLog(path, keep, echo))
{
}

LogFile::~LogFile() = default;

void LogFile::write(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    const QByteArray record = line(context, text);
    m_logger->log(spdlogLevel(type),
        spdlog::string_view_t(record.constData(), static_cast<std::size_t>(record.size())));
}

QByteArray LogFile::line(const QMessageLogContext &context, const QString &text)
{
    QByteArray record(context.category ? context.category : "default");
    if (const auto thread = gettid(); thread != getpid())
        record.append(" [").append(QByteArray::number(thread)).append(']');
    record.append(' ');

    QByteArray bytes = text.toUtf8();
    while (bytes.endsWith('\n') || bytes.endsWith('\r'))
        bytes.chop(1);
    bytes.replace("\r\n", "\n");
    record.reserve(record.size() + bytes.size() + 16);
    appendReadable(record, bytes);
    return record;
}
