#include "systemtest.h"

#include "busnames.h"
#include "kernelview.h"
#include "window.h"

#include <QComboBox>
#include <QDir>
#include <QListView>
#include <QMap>
#include <QSerialPortInfo>
#include <QTextBrowser>
#include <QToolButton>

using namespace std::chrono_literals;
using window::find;
using window::mainDialog;

namespace {

// An emulated processor takes several times as long as a real one.
constexpr auto kSlow = 30s;
// The Internet check looks once a minute.
constexpr auto kRound = 75s;

const QString kLink = QStringLiteral("ppp0");

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isEnabled(const char *name)
{
    return find<QWidget>(QLatin1String(name))->isEnabled();
}

QStringList listed()
{
    const auto *model = find<QListView>(QStringLiteral("listView"))->model();
    QStringList names;
    for (int row = 0; row < model->rowCount(); ++row)
        names.append(model->index(row, 0).data().toString());
    return names;
}

QString log()
{
    return find<QTextBrowser>(QStringLiteral("tbLog"))->toPlainText();
}

bool isIdle()
{
    return find<QWidget>(QStringLiteral("cbDial"))->isEnabled()
        && !find<QWidget>(QStringLiteral("pbStop"))->isEnabled();
}

QString indicator()
{
    return find<QToolButton>(QStringLiteral("toolButton"))->toolTip();
}

bool runs(const QString &program)
{
    return kernelview::processes().contains(program);
}

} // namespace

bool SystemTest::walk(const QString &scenario)
{
    const QMap<QString, void (SystemTest::*)()> scenarios{
        {QStringLiteral("dial"), &SystemTest::dial},
        {QStringLiteral("takeover"), &SystemTest::takeover},
        {QStringLiteral("search"), &SystemTest::search},
        {QStringLiteral("refused"), &SystemTest::refused},
        {QStringLiteral("unplugged"), &SystemTest::unplugged},
    };
    const auto walk = scenarios.value(scenario);
    if (walk == nullptr)
        return false;
    (this->*walk)();
    return true;
}

void SystemTest::opens()
{
    mustShow(
        QStringLiteral("the main dialog opens"),
        [] { return mainDialog() != nullptr && mainDialog()->isVisible(); }, kSlow);
}

void SystemTest::dial()
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
void SystemTest::takeover()
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

void SystemTest::search()
{
    opens();
    mustShow(QStringLiteral("the kernel has two modems, of four ports, among other ports"), [] {
        const auto makers = kernelview::usbManufacturers();
        const auto ports = QDir(QStringLiteral("/sys/class/tty"))
                               .entryList({QStringLiteral("ttyUSB*"), QStringLiteral("ttyS0")},
                                   QDir::Dirs | QDir::NoDotAndDotDot);
        return makers.contains(QLatin1String("HUAWEI Technology"))
            && makers.contains(QLatin1String("Silicon Labs")) && ports.size() == 5;
    });
    mustShow(QStringLiteral("the system tells the ports' manufacturers"), [] {
        return QSerialPortInfo(QStringLiteral("ttyUSB0")).manufacturer()
            == QLatin1String("HUAWEI Technology")
            && QSerialPortInfo(QStringLiteral("ttyUSB3")).manufacturer()
            == QLatin1String("Silicon Labs");
    });
    click(QStringLiteral("pbSearchPage"));
    click(QStringLiteral("tbSearch"));
    mustShow(QStringLiteral("the search runs"), [] { return !isEnabled("tbSearch"); });
    picture(QStringLiteral("searching"));
    mustShow(
        QStringLiteral("each modem is found once, by its data port"),
        [] {
            return isEnabled("tbSearch")
                && listed()
                == QStringList(
                    {QStringLiteral("E173-ttyUSB0"), QStringLiteral("SIMCOM_SIM800-ttyUSB3")});
        },
        kRound);
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    picture(QStringLiteral("found"));
    closes();
}

void SystemTest::refused()
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

// What the far end does to a call: the dialer tries for ever, until it is stopped.
void SystemTest::isRefused(const QString &fault, const QString &told)
{
    terminal(QStringLiteral("modemFault"), {QStringLiteral("gsm1"), fault});
    startsDial(QStringLiteral("gsm1"));
    mustShow(
        QStringLiteral("the log tells %1").arg(told), [=] { return log().contains(told); }, kSlow);
    picture(fault);
    stopsDial();
    terminal(QStringLiteral("clearModemFault"), {QStringLiteral("gsm1")});
}

void SystemTest::unplugged()
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

void SystemTest::startsDial(const QString &connection)
{
    choose(QStringLiteral("cbModem"), connection);
    click(QStringLiteral("cbDial"));
    mustShow(QStringLiteral("the dial test runs"), [] { return !isIdle(); });
    mustShow(
        QStringLiteral("the modem is reset before the dial"),
        [] { return log().contains(QLatin1String("Modem reseted for ")); }, kSlow);
    services({QStringLiteral("stop")});
}

void SystemTest::isConnected()
{
    mustShow(
        QStringLiteral("the dialer reaches CONNECT"),
        [] { return log().contains(QLatin1String("CONNECT")); }, kSlow);
    mustShow(
        QStringLiteral("ppp0 is up, with an address and the default route"),
        [] {
            return kernelview::addressOf(kLink) == QLatin1String("10.0.2.15 peer 10.0.2.2")
                && kernelview::defaultRoute() == kLink;
        },
        kSlow);
    mustShow(QStringLiteral("wvdial and pppd run"),
        [] { return runs(QStringLiteral("wvdial")) && runs(QStringLiteral("pppd")); });
    mustShow(QStringLiteral("the log tells the address"),
        [] { return log().contains(QLatin1String("IP address 10.0.2.15")); });
    picture(QStringLiteral("connected"));
}

void SystemTest::stopsDial()
{
    click(QStringLiteral("pbStop"));
    mustShow(
        QStringLiteral("the page is idle again"), [] { return isIdle(); }, 60s);
    mustShow(QStringLiteral("ppp0, its route, wvdial and pppd are gone"), [] {
        return kernelview::addressOf(kLink).isEmpty() && kernelview::defaultRoute().isEmpty()
            && !runs(QStringLiteral("wvdial")) && !runs(QStringLiteral("pppd"));
    });
    mustShow(QStringLiteral("the log tells how the dialer ended"),
        [] { return log().contains(QLatin1String("WvDial finished with code ")); });
    picture(QStringLiteral("stopped"));
}

void SystemTest::services(const QStringList &told)
{
    const auto commands
        = terminal(QStringLiteral("serviceCommands"), {tavbus::BUSNAME_TAVMODEMS}).toStringList();
    // Of the dials so far only the last is looked at.
    if (commands.mid((commands.size() - 1) / 2 * 2) != told)
        fail(QStringLiteral("the modem service was told: ") + commands.join(QStringLiteral(", ")));
    seen(QStringLiteral("the modem service was told: ") + told.join(QStringLiteral(", ")));
}

void SystemTest::closes()
{
    click(QStringLiteral("pbClose"));
    clickInBox(QStringLiteral("Save"));
}
