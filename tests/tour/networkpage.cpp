#include "networkview.h"
#include "tour.h"
#include "window.h"

#include <QElapsedTimer>
#include <QLineEdit>
#include <QProcess>

// The part of the tour that goes over the Local network page: an interface nobody has used gets an
// address, a wrong one is told, and the right one holds.

using namespace std::chrono_literals;
using namespace networkview;
using window::find;

namespace {

constexpr auto kQuiet = 5s; // until the buttons come back

const QString kBefore = QStringLiteral("eth0"); // in use when the terminal comes up
const QString kInterface = QStringLiteral("eth1");

/** What the kernel has, whatever the window shows. */
QString addressesOf(const QString &name)
{
    QProcess ip;
    ip.start(QStringLiteral("ip"),
        {QStringLiteral("-4"), QStringLiteral("-br"), QStringLiteral("address"),
            QStringLiteral("show"), name});
    ip.waitForFinished();
    return QString::fromUtf8(ip.readAllStandardOutput()).simplified();
}

} // namespace

void Tour::configuresTheNetwork()
{
    click(QStringLiteral("pbEth"));
    mustShow(QStringLiteral("the Local network page lists two interfaces, one in use"), [] {
        return find<QWidget>(QStringLiteral("pageEth"))->isVisible()
            && interfaces()->rowCount() == 2 && rowOf(kInterface).isValid() && isEdited(kBefore);
    });
    picture(QStringLiteral("network"));

    clickAt([] { return placeOf(rowOf(kInterface)); });
    mustShow(QStringLiteral("the other one is switched on and can be edited"),
        [] { return isEdited(kInterface); });
    picture(QStringLiteral("network-switched-on"));

    choose(QStringLiteral("cbUseDHCP"), QStringLiteral("STATIC"));
    type(QStringLiteral("leIP"), QStringLiteral("300.1.1.1"));
    type(QStringLiteral("leNetmask"), QStringLiteral("255.255.255.0"));
    type(QStringLiteral("leGateway"), QStringLiteral("10.20.30.1"));
    picture(QStringLiteral("network-static"));
    appliesTheNetwork();
    waitsForTheButtons();
    mustShow(QStringLiteral("the log says which address cannot be"), [] {
        return log().contains(QLatin1String("300.1.1.1"))
            && log().contains(QLatin1String("failed to bring up eth1"));
    });
    picture(QStringLiteral("network-wrong"));

    // Each brings a default gateway, and there can be only one.
    clickAt([] { return placeOf(rowOf(kBefore)); });
    mustShow(
        QStringLiteral("the first one is switched off"), [] { return isShown(kBefore, false); });
    clickAt([] { return placeOf(rowOf(kInterface).siblingAtColumn(1)); });
    mustShow(QStringLiteral("the other one is edited again"), [] { return isEdited(kInterface); });
    type(QStringLiteral("leIP"), QStringLiteral("10.20.30.40"));
    appliesTheNetwork();
    waitsForTheButtons();
    mustShow(QStringLiteral("the log complains of nothing"), [] {
        return log().contains(QLatin1String("done.\n")) && !log().contains(QLatin1String("failed"));
    });
    const auto addresses = addressesOf(kInterface);
    if (!addresses.contains(QLatin1String(" 10.20.30.40/24")))
        fail(QStringLiteral("the interface has not got its address: ") + addresses);
    seen(QStringLiteral("the kernel has the address: ") + addresses);

    click(QStringLiteral("pbReload"));
    mustShow(QStringLiteral("after a reload the other one alone is in use"),
        [] { return isEdited(kInterface); });
    clickAt([] { return placeOf(rowOf(kBefore).siblingAtColumn(1)); });
    mustShow(QStringLiteral("the first one is not"), [] { return isShown(kBefore, false); });
    clickAt([] { return placeOf(rowOf(kInterface).siblingAtColumn(1)); });
    mustShow(QStringLiteral("the address is read back"), [] {
        return isEdited(kInterface)
            && find<QLineEdit>(QStringLiteral("leIP"))->text() == QLatin1String("10.20.30.40");
    });
    picture(QStringLiteral("network-applied"));
    click(QStringLiteral("pbModems"));
}

void Tour::waitsForTheButtons()
{
    QElapsedTimer quiet;
    quiet.start();
    mustShow(
        QStringLiteral("the buttons come back"), [] { return buttonsAreEnabled(true); },
        2 * kQuiet);
    if (std::chrono::milliseconds(quiet.elapsed()) < kQuiet - 500ms)
        fail(QStringLiteral("the buttons came back too soon: after %1 ms").arg(quiet.elapsed()));
}
