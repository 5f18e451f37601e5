#include "networks.h"

#include "interfaceshead.h"
#include "kernelview.h"
#include "networkview.h"
#include "window.h"

#include <QHostAddress>
#include <QLineEdit>
#include <QProcess>
#include <QRegularExpression>
#include <QTcpSocket>

#include <unistd.h>

using namespace std::chrono_literals;
using namespace networkview;
using window::find;

namespace {

const QString kBefore = QStringLiteral("eth0"); // in use when the terminal comes up, by DHCP
const QString kInterface = QStringLiteral("eth1");
const QString kFile = QStringLiteral("/etc/network/interfaces");
const QString kNameServers = QStringLiteral("/etc/resolv.conf");

// Addresses that the DHCP server gives out.
const QRegularExpression kGivenOut(QStringLiteral("^192\\.168\\.0\\.1[0-9][0-9]$"));

QList<QByteArray> nameServers(const QByteArray &text)
{
    QList<QByteArray> servers;
    const QList<QByteArray> lines = text.split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("nameserver "))
            servers.append(line.mid(11).trimmed());
    }
    return servers;
}

} // namespace

void Networks::network()
{
    isNobodySpecial();
    opens();
    click(QStringLiteral("pbEth"));
    mustShow(QStringLiteral("the page lists the terminal's two interfaces, the first in use"), [] {
        return interfaces()->rowCount() == 2 && rowOf(kInterface).isValid() && isEdited(kBefore);
    });
    mustShow(QStringLiteral("it has an address by DHCP and the default route"), [] {
        return kGivenOut.match(kernelview::addressOf(kBefore)).hasMatch()
            && kernelview::addressOf(kInterface).isEmpty() && kernelview::defaultRoute() == kBefore;
    });
    picture(QStringLiteral("before"));
    setsAnAddress();
    mayDoNothingElse();
    goesBackToDhcp();
    closes();
}

void Networks::isNobodySpecial()
{
    if (geteuid() == 0)
        fail(QStringLiteral("the tool runs as root"));
    seen(QStringLiteral("the tool runs as user %1").arg(geteuid()));
}

void Networks::setsAnAddress()
{
    clickAt([] { return placeOf(rowOf(kInterface)); });
    mustShow(QStringLiteral("the second is switched on"), [] { return isEdited(kInterface); });
    choose(QStringLiteral("cbUseDHCP"), QStringLiteral("STATIC"));
    type(QStringLiteral("leIP"), QStringLiteral("10.20.30.40"));
    type(QStringLiteral("leNetmask"), QStringLiteral("255.255.255.0"));
    type(QStringLiteral("leGateway"), QStringLiteral("10.20.30.1"));
    type(QStringLiteral("leDNS"), QStringLiteral("10.20.30.53 10.20.30.54"));
    // Each brings a default route, and there can be only one.
    clickAt([] { return placeOf(rowOf(kBefore)); });
    mustShow(QStringLiteral("the first is switched off"), [] { return isShown(kBefore, false); });
    clickAt([] { return placeOf(rowOf(kInterface).siblingAtColumn(1)); });
    mustShow(QStringLiteral("what was typed is kept"), [] {
        return isEdited(kInterface)
            && find<QLineEdit>(QStringLiteral("leDNS"))->text()
            == QLatin1String("10.20.30.53 10.20.30.54");
    });
    picture(QStringLiteral("static"));
    appliesTheNetwork();
    mustShow(QStringLiteral("the log ends with \"done.\" and tells of no failure"), [] {
        return log().trimmed().endsWith(QLatin1String("done."))
            && !log().contains(QLatin1String("failed")) && !log().contains(QLatin1String("sudo:"));
    });
    picture(QStringLiteral("static-applied"));
    mustShow(
        QStringLiteral("the kernel has address and route on the second, none on the first"), [] {
            return kernelview::addressOf(kInterface) == QLatin1String("10.20.30.40")
                && kernelview::defaultRoute() == kInterface
                && kernelview::addressOf(kBefore).isEmpty();
        });
    fileReads(interfacesHead
        + "\nauto eth1\nallow-hotplug eth1\niface eth1 inet static\n\taddress 10.20.30.40\n"
          "\tnetmask 255.255.255.0\n\tgateway 10.20.30.1\n"
          "\tdns-nameservers 10.20.30.53 10.20.30.54\n");
    // The first interface's DHCP client has not been told to end, and its server is still named.
    mustShow(QStringLiteral("the system has its name servers"), [] {
        return nameServers(contents(kNameServers)).mid(1)
            == QList<QByteArray>{"10.20.30.53", "10.20.30.54"};
    });
    answers(QStringLiteral("10.20.30.1"), QStringLiteral("10.20.30.40"));
}

// Each as the rule allows it but for one argument.
void Networks::mayDoNothingElse()
{
    const QList<QStringList> others{
        {QStringLiteral("ifconfig"), kInterface, QStringLiteral("up")},
        {QStringLiteral("ifconfig"), kInterface, QStringLiteral("10.20.30.41"),
            QStringLiteral("down")},
        {QStringLiteral("cp"), QStringLiteral("/run/ovrel/other.tmp"), kFile},
        {QStringLiteral("cp"), QStringLiteral("/run/ovrel/interfaces.tmp"),
            QStringLiteral("/etc/resolv.conf")},
        {QStringLiteral("cp"), QStringLiteral("-f"), QStringLiteral("/run/ovrel/interfaces.tmp"),
            kFile},
        {QStringLiteral("service"), QStringLiteral("networking"), QStringLiteral("stop")},
        {QStringLiteral("sh"), QStringLiteral("-c"), QStringLiteral("id")},
    };
    const QByteArray before = contents(kFile) + contents(kNameServers);
    for (const QStringList &command : others) {
        QProcess sudo;
        sudo.setProcessChannelMode(QProcess::MergedChannels);
        sudo.start(QStringLiteral("sudo"), QStringList{QStringLiteral("-n")} + command);
        if (!sudo.waitForFinished() || sudo.exitStatus() != QProcess::NormalExit
            || sudo.exitCode() == 0)
            fail(QStringLiteral("this was not refused: ") + command.join(QLatin1Char(' ')));
        const QString said = QString::fromUtf8(sudo.readAll().trimmed());
        if (!said.startsWith(QLatin1String("sudo: ")))
            fail(QStringLiteral("not sudo has refused: ") + said);
        seen(QStringLiteral("refused, %1: %2").arg(said, command.join(QLatin1Char(' '))));
    }
    mustShow(QStringLiteral("none of it has changed anything"), [=] {
        return contents(kFile) + contents(kNameServers) == before
            && kernelview::addressOf(kInterface) == QLatin1String("10.20.30.40");
    });
}

void Networks::goesBackToDhcp()
{
    mustShow(
        QStringLiteral("the page has its buttons back"), [] { return buttonsAreEnabled(true); },
        kSlow);
    click(QStringLiteral("pbReload"));
    mustShow(QStringLiteral("after a reload the second alone is in use, with its address"), [] {
        return isEdited(kInterface)
            && find<QLineEdit>(QStringLiteral("leIP"))->text() == QLatin1String("10.20.30.40");
    });
    choose(QStringLiteral("cbUseDHCP"), QStringLiteral("DHCP"));
    appliesTheNetwork();
    // The network is stopped by the new file, which knows nothing of the address before: that stays
    // beside the new one.
    const auto given
        = [] { return kernelview::addressesOf(kInterface).filter(kGivenOut).value(0); };
    mustShow(
        QStringLiteral("the kernel has the second's new address, and the route that came with it"),
        [=] { return !given().isEmpty() && kernelview::defaultRoute() == kInterface; });
    mustShow(QStringLiteral("the log tells of that address and of no failure"), [=] {
        return log().contains(QStringLiteral("bound to %1 ").arg(given()))
            && log().trimmed().endsWith(QLatin1String("done."))
            && !log().contains(QLatin1String("failed"));
    });
    picture(QStringLiteral("dhcp-applied"));
    fileReads(interfacesHead + "\nauto eth1\nallow-hotplug eth1\niface eth1 inet dhcp\n");
    mustShow(QStringLiteral("the router is the system's one name server"),
        [] { return nameServers(contents(kNameServers)) == QList<QByteArray>{"192.168.0.1"}; });
    answers(QStringLiteral("192.168.0.1"), given());
}

void Networks::fileReads(const QByteArray &text)
{
    const QByteArray file = contents(kFile);
    if (file != text)
        fail(QStringLiteral("the interfaces file reads:\n") + QString::fromUtf8(file));
    seen(QStringLiteral("the interfaces file is what it must be, to the letter"));
}

void Networks::answers(const QString &router, const QString &from)
{
    QTcpSocket socket;
    socket.connectToHost(router, 80);
    if (!socket.waitForConnected() || socket.localAddress().toString() != from)
        fail(QStringLiteral("%1 cannot be reached from %2: %3")
                 .arg(router, from, socket.errorString()));
    seen(QStringLiteral("the web server at %1 answers to %2").arg(router, from));
}
