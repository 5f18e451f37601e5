#include "touchscreenconfigurator.h"

#include "guilogger.h"
#include "initconfig.h"

#include <QProcess>

TouchScreenConfigurator::TouchScreenConfigurator(std::chrono::milliseconds limit)
    : m_limit(limit)
{
}

bool TouchScreenConfigurator::stopTouches()
{
    const QString command = InitConfig().touchStopCommand();
    QStringList arguments = QProcess::splitCommand(command);
    if (arguments.isEmpty()) {
        qCInfo(GUILOGGER, "No touch/stopCommand is configured: the touch screen is left as it is");
        return false;
    }

    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(arguments.takeFirst(), arguments);
    if (!process.waitForFinished(static_cast<int>(m_limit.count()))) {
        qCWarning(GUILOGGER).noquote()
            << "The touch screen's command failed:" << command << process.errorString();
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
        return false;
    }
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        qCWarning(GUILOGGER).noquote()
            << "The touch screen's command failed:" << command << "status" << process.exitCode()
            << QString::fromUtf8(process.readAll());
        return false;
    }
    return true;
}
