#include "failures.h"

#include "kernelview.h"

#include <QFile>

void Failures::refused()
{
    opens();
    isRefused(QStringLiteral("busy"), QStringLiteral("BUSY"));
    isRefused(QStringLiteral("noDialtone"), QStringLiteral("NO DIALTONE"));
    isRefused(QStringLiteral("noCarrier"), QStringLiteral("NO CARRIER"));
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    stopsDial();
    closes();
}

void Failures::unplugged()
{
    opens();
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    terminal(QStringLiteral("unplug"), {QStringLiteral("gsm1")});
    mustShow(
        QStringLiteral("the kernel has lost the port, and with it the link"),
        [] {
            return !QFile::exists(QStringLiteral("/dev/ttyUSB0"))
                && kernelview::addressOf(kLink).isEmpty();
        },
        kSlow);
    mustShow(
        QStringLiteral("the dialer gives up and the page is idle again"),
        [] { return isIdle() && !runs(QStringLiteral("wvdial")); }, kRound);
    mustShow(QStringLiteral("the log tells that the port cannot be opened"),
        [] { return log().contains(QLatin1String("Cannot open /dev/ttyUSB0")); });
    picture(QStringLiteral("unplugged"));
    terminal(QStringLiteral("plug"), {QStringLiteral("gsm1")});
    mustShow(
        QStringLiteral("the kernel has the port again"),
        [] { return QFile::exists(QStringLiteral("/dev/ttyUSB0")); }, kSlow);
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    stopsDial();
    closes();
}

// The far end wants a password that the record does not have.
void Failures::password()
{
    opens();
    startsDial(QStringLiteral("gsm1"));
    mustShow(
        QStringLiteral("the log tells that the far end refuses the password"),
        [] { return log().contains(QLatin1String("Authentication error.")); }, kSlow);
    dialHasEnded();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    click(QStringLiteral("pbSearchPage"));
    selects(QStringLiteral("gsm1"));
    type(QStringLiteral("lePassword"), QStringLiteral("mts"));
    picture(QStringLiteral("corrected"));
    click(QStringLiteral("pbDialPage"));
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    stopsDial();
    closes();
}

// The call is connected, but nobody speaks PPP at its other end.
void Failures::silence()
{
    opens();
    terminal(QStringLiteral("modemFault"), {QStringLiteral("gsm1"), QStringLiteral("noPpp")});
    startsDial(QStringLiteral("gsm1"));
    mustShow(
        QStringLiteral("PPP is tried"), [] { return runs(QStringLiteral("pppd")); }, kSlow);
    mustShow(
        QStringLiteral("the log tells that PPP has given up"),
        [] { return log().contains(QLatin1String("The PPP daemon has died")); }, kRound);
    picture(QStringLiteral("silence"));
    // The modem does not hear that the dialer hangs up: it is in the call, and answers nothing.
    mustShow(
        QStringLiteral("the log tells that the modem does not answer"),
        [] { return log().contains(QLatin1String("Modem not responding")); }, kSlow);
    dialHasEnded();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    terminal(QStringLiteral("clearModemFault"), {QStringLiteral("gsm1")});
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    stopsDial();
    closes();
}

// What the far end does to a call: the dialer tries for ever, until it is stopped.
void Failures::isRefused(const QString &fault, const QString &told)
{
    terminal(QStringLiteral("modemFault"), {QStringLiteral("gsm1"), fault});
    startsDial(QStringLiteral("gsm1"));
    mustShow(
        QStringLiteral("the log tells %1").arg(told), [=] { return log().contains(told); }, kSlow);
    picture(fault);
    stopsDial();
    terminal(QStringLiteral("clearModemFault"), {QStringLiteral("gsm1")});
}
