#include "loggermanager.h"

#include "logfile.h"
#include "logoutputs.h"

#include <QLoggingCategory>

#include <atomic>

namespace {

/// QtMsgType's values are in order of birth, not of weight.
int severity(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return 0;
    case QtInfoMsg:
        return 1;
    case QtWarningMsg:
        return 2;
    case QtCriticalMsg:
        return 3;
    case QtFatalMsg:
        break;
    }
    return 4;
}

struct Log
{
    Log(const QString &path, unsigned int keep, bool echo, QtMsgType lowest)
        : file(path, keep, echo)
        , level(severity(lowest))
    {
    }

    LogFile file;
    const int level;
};

struct Manager
{
    std::mutex installing; // of handler and filter; taken before everything else
    std::atomic<QtMessageHandler> previousHandler{nullptr};
    std::atomic<QLoggingCategory::CategoryFilter> previousFilter{nullptr};
    std::mutex mutex;
    std::shared_ptr<Log> log; // under mutex; null while no log is open
    LogOutputs outputs;

    std::shared_ptr<Log> currentLog()
    {
        const std::lock_guard lock(mutex);
        return log;
    }

    void setLog(std::shared_ptr<Log> next)
    {
        const std::lock_guard lock(mutex);
        log.swap(next);
    }
};

/// Never destroyed: other static objects may log in their destructors.
Manager &manager()
{
    static Manager &instance = *new Manager;
    return instance;
}

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    Manager &m = manager();
    if (const auto log = m.currentLog()) {
        if (severity(type) >= log->level)
            log->file.write(type, context, text);
    } else if (const auto previous = m.previousHandler.load()) {
        previous(type, context, text);
    }
    m.outputs.pass(type, context, text);
}

/// Runs under Qt's category lock, at the birth of a category and at each change of the rules. It
/// has the last word: it only opens, so what the rules opened stays so.
void openCategory(QLoggingCategory *category)
{
    Manager &m = manager();
    if (const auto previous = m.previousFilter.load())
        previous(category);

    const QByteArray name(category->categoryName());
    if (m.outputs.contains(name)) {
        for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg})
            category->setEnabled(type, true);
    }
    const auto log = m.currentLog();
    if (!log || name == "qt" || name.startsWith("qt."))
        return;
    for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg}) {
        if (severity(type) >= log->level)
            category->setEnabled(type, true);
    }
}

/// Installs handler and filter, or lets the filter see every category again.
void install()
{
    Manager &m = manager();
    const std::lock_guard lock(m.installing);
    const QtMessageHandler handler = qInstallMessageHandler(handleMessage);
    if (handler != handleMessage)
        m.previousHandler = handler;

    // Installing a filter runs it at once, so the one before must be known first. A filter that
    // came after ours leads to ours, and is only run again.
    const auto filter = QLoggingCategory::installFilter(nullptr);
    if (!m.previousFilter)
        m.previousFilter = filter;
    QLoggingCategory::installFilter(m.previousFilter == filter ? openCategory : filter);
}

} // namespace

void LoggerManager::initLog(const QString &path, unsigned int keep, bool echo, QtMsgType level)
{
    manager().setLog(std::make_shared<Log>(path, keep, echo, level));
    install();
}

void LoggerManager::releaseLog()
{
    manager().setLog(nullptr);
    install();
}

void LoggerManager::setOutputs(const QString &name, Output output)
{
    manager().outputs.set(name.toUtf8(), std::move(output));
    install();
}

void LoggerManager::removeOutput(const QString &name)
{
    manager().outputs.remove(name.toUtf8());
}
