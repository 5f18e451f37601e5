// Logs at each stage of a log's life: logprobe PATH KEEP ECHO(0|1) [LINES | "abort" | "fatal"].
#include "loggermanager.h"

#include <QCoreApplication>
#include <QDebug>

#include <csignal>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 4)
        return 2;
    const QString last = arguments.value(4);

    qDebug("before the log");
    LoggerManager::initLog(
        arguments[1], arguments[2].toUInt(), arguments[3] == QLatin1String("1"), QtDebugMsg);
    qDebug("in the log");
    for (int i = 0; i < last.toInt(); ++i)
        qDebug("line %d of many, as long as a line of a modem's chat may well become", i);
    if (last == QLatin1String("abort"))
        raise(SIGKILL);
    if (last == QLatin1String("fatal"))
        qFatal("the end");
    LoggerManager::releaseLog();
    qDebug("after the log");
}
