#include "modemreset.h"

#include "atmodem.h"
#include "modeminfo.h"
#include "signalnotifier.h"

#include <QElapsedTimer>

void ModemReset::run(const ModemInfo &modem, QObject *parent, const Tell &tell)
{
    auto *const driver = new AtModem(parent);
    driver->setAbortFlag(SignalNotifier::flag());
    const QString port = modem.portName();
    tell(QtDebugMsg, QStringLiteral("Open port %1").arg(port));
    if (driver->open(port, qMin(modem.baudrate(), kHighestBaudrate), kOpenAttempts)) {
        tell(QtDebugMsg, QStringLiteral("Modem name is ") + driver->modemName());
        tell(QtDebugMsg, QStringLiteral("Modem dialect is ") + driver->gsmDialect());
        tell(QtDebugMsg, QStringLiteral("Start modem resetting"));
        QElapsedTimer watch;
        watch.start();
        driver->reset(false);
        tell(QtDebugMsg, QStringLiteral("Modem reseted for %1 ms").arg(watch.elapsed()));
        const QString resetError = driver->lastError();
        if (!resetError.isEmpty())
            tell(QtWarningMsg, resetError);
        driver->beforeDial();
        // A modem that the reset has lost already is not reported twice.
        if (!driver->lastError().isEmpty() && driver->lastError() != resetError)
            tell(QtWarningMsg, driver->lastError());
        driver->close();
        tell(QtDebugMsg, QStringLiteral("Modem is closed"));
    } else {
        tell(QtDebugMsg,
            QStringLiteral("The porg %1 is not opened: %2").arg(port, driver->lastError()));
    }
    driver->deleteLater();
}

void ModemReset::run(const ModemInfo &modem, QObject *parent)
{
    run(modem, parent, [](QtMsgType, const QString &) {});
}
