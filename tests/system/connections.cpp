#include "connections.h"

#include "kernelview.h"

#include <QFile>

void Connections::dial()
{
    opens();
    mustShow(
        QStringLiteral("the indicator is red, there is no link and no route"),
        [] {
            return indicator() == QLatin1String("Connection off")
                && kernelview::addressOf(kLink).isEmpty() && kernelview::defaultRoute().isEmpty();
        },
        kSlow);
    picture(QStringLiteral("red"));
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    mustShow(
        QStringLiteral("the indicator is green within one round"),
        [] { return indicator() == QLatin1String("Connection on"); }, kRound);
    picture(QStringLiteral("green"));
    stopsDial();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    closes();
}

// The terminal's own service has both modems' ports and a call of its own through the second.
void Connections::takeover()
{
    opens();
    const QString second = QStringLiteral("/run/lock/LCK..ttyUSB3");
    const QByteArray service = contents(QStringLiteral("/run/lock/LCK..ttyUSB0"));
    const QByteArray ownCall = contents(QStringLiteral("/run/terminal/own-call.pid")).trimmed();
    mustShow(
        QStringLiteral("the terminal is connected by a call of its own: the indicator is green"),
        [] {
            return indicator() == QLatin1String("Connection on")
                && kernelview::defaultRoute() == kLink;
        },
        kSlow);
    if (service.isEmpty() || contents(second) != service || ownCall.isEmpty())
        fail(QStringLiteral("the modem service does not have its ports"));
    picture(QStringLiteral("own-call"));
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    mustShow(QStringLiteral("the terminal's own pppd is gone"),
        [&] { return !QFile::exists(QStringLiteral("/proc/") + QString::fromLatin1(ownCall)); });
    mustShow(QStringLiteral("the dialer has the port"), [&] {
        const QByteArray holder = contents(QStringLiteral("/run/lock/LCK..ttyUSB0"));
        return !holder.isEmpty() && holder != service;
    });
    stopsDial();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    mustShow(QStringLiteral("the modem service has its ports back"), [&] {
        return contents(QStringLiteral("/run/lock/LCK..ttyUSB0")) == service
            && contents(second) == service;
    });
    mustShow(
        QStringLiteral("the indicator is red within one round"),
        [] { return indicator() == QLatin1String("Connection off"); }, kRound);
    picture(QStringLiteral("red"));
    closes();
}
