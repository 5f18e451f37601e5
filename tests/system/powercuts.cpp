#include "powercuts.h"

#include "busnames.h"
#include "clientsettings.h"
#include "interfaceshead.h"
#include "kernelview.h"
#include "modeminfo.h"
#include "modemsettings.h"
#include "networkview.h"
#include "tavbusqueryhandler.h"
#include "window.h"

#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QRegularExpression>
#include <QThread>

#include <cstdlib>

using namespace networkview;
using window::find;
using window::messageBox;

namespace {

const QString kInterface = QStringLiteral("eth1");
constexpr int kNone = -1;
constexpr int kFirstHost = 100;

QString user(int number)
{
    return QStringLiteral("user%1").arg(number);
}

QString password(int number)
{
    return QStringLiteral("password%1").arg(number);
}

QString address(int number)
{
    return QStringLiteral("10.20.30.%1").arg(kFirstHost + number);
}

QString nameServers(int number)
{
    return QStringLiteral("10.20.%1.1 10.20.%1.2").arg(kFirstHost + number);
}

QByteArray interfacesFile(int number)
{
    return interfacesHead
        + QStringLiteral("\nauto %1\n"
                         "allow-hotplug %1\n"
                         "iface %1 inet static\n"
                         "\taddress %2\n"
                         "\tnetmask 255.255.255.0\n"
                         "\tgateway 10.20.30.1\n"
                         "\tdns-nameservers %3\n")
              .arg(kInterface, address(number), nameServers(number))
              .toUtf8();
}

// What stands at the end of a text that a number tells apart.
int numberIn(const QString &text)
{
    static const QRegularExpression digits(QStringLiteral("[0-9]+$"));
    return digits.match(text).captured().toInt();
}

QString shownIn(const char *lineEdit)
{
    return find<QLineEdit>(QLatin1String(lineEdit))->text();
}

} // namespace

PowerCuts::PowerCuts(const QString &pictures)
    : Technician(pictures)
    , m_number(QCoreApplication::arguments().value(3).toInt())
    , m_moment(QCoreApplication::arguments().value(4))
{
}

void PowerCuts::modemSettings()
{
    opens();
    const int own = savedNumber(tavbus::BUSNAME_TESTDEALER);
    const int services = savedNumber(tavbus::BUSNAME_TAVMODEMS);
    // What the tool has saved for itself comes before what it has saved for the service.
    const int shown = own == kNone ? services : own;
    click(QStringLiteral("pbSearchPage"));
    selects(0);
    mustShow(QStringLiteral("the page shows what is saved"), [=] {
        return shownIn("leUser") == user(shown) && shownIn("lePassword") == password(shown);
    });
    picture(QStringLiteral("found"));
    finds(QStringLiteral("%1 %2").arg(own).arg(services));
    if (m_moment.isEmpty()) {
        closes();
        return;
    }
    type(QStringLiteral("leUser"), user(m_number));
    type(QStringLiteral("lePassword"), password(m_number));
    selects(1);
    type(QStringLiteral("leUser"), user(m_number));
    picture(QStringLiteral("edited"));
    if (m_moment == QLatin1String("asked") || m_moment == QLatin1String("checkpointed")) {
        click(QStringLiteral("pbClose"));
        reaches(QStringLiteral("asked"),
            [] { return messageBox() != nullptr && messageBox()->isVisible(); });
        clickInBox(QStringLiteral("Save"));
        return;
    }
    click(QStringLiteral("pbSaveSettings"));
    reaches(QStringLiteral("pressed"), [] { return true; });
    reaches(QStringLiteral("saved"),
        [this] { return savedNumber(tavbus::BUSNAME_TAVMODEMS) == m_number; });
    awaitsTheCut();
}

void PowerCuts::networkSettings()
{
    opens();
    click(QStringLiteral("pbEth"));
    const QByteArray file = contents(QStringLiteral("/etc/network/interfaces"));
    const int number
        = numberIn(QString::fromLatin1(file).section(QStringLiteral("netmask"), 0, 0).trimmed())
        - kFirstHost;
    if (file != interfacesFile(number))
        fail(QStringLiteral("the interfaces file is neither the old nor the new one:\n")
            + QString::fromUtf8(file));
    finds(QString::number(number));
    mustShow(
        QStringLiteral("the terminal has come up with its address, and the page shows it"), [=] {
            return kernelview::addressOf(kInterface) == address(number) && isEdited(kInterface)
                && shownIn("leIP") == address(number) && shownIn("leDNS") == nameServers(number);
        });
    picture(QStringLiteral("found"));
    if (m_moment.isEmpty()) {
        closes();
        return;
    }
    type(QStringLiteral("leIP"), address(m_number));
    type(QStringLiteral("leDNS"), nameServers(m_number));
    startsToApplyTheNetwork();
    reaches(QStringLiteral("down"), [] { return kernelview::addressOf(kInterface).isEmpty(); });
    reaches(QStringLiteral("restarting"),
        [] { return log().contains(QLatin1String("Reconfiguring network interfaces...")); });
    awaitsTheCut();
}

int PowerCuts::savedNumber(const QString &owner)
{
    tavbus::TavBusQueryHandler bus(tavbus::BUSNAME_TESTDEALER);
    if (!bus.open())
        fail(QStringLiteral("the broker does not answer"));
    tavbus::ClientSettings record;
    if (!bus.loadSettings(owner, record))
        return kNone;
    QList<int> numbers;
    const QList<QVariant> maps = record.settings();
    for (const QVariant &each : maps) {
        const std::optional<ModemInfo> modem = ModemInfo::fromMap(each.toMap());
        if (!modem || modem->connectionName().isEmpty())
            continue; // the order of the others
        numbers.append(numberIn(modem->userName()));
        if (numbers.size() == 1)
            numbers.append(numberIn(modem->password()));
    }
    if (numbers.size() != 3 || numbers.count(numbers.first()) != 3)
        fail(QStringLiteral("the record of %1 is of several savings").arg(owner));
    return numbers.first();
}

void PowerCuts::finds(const QString &numbers)
{
    QFile file(QStringLiteral("/out/found"));
    if (!file.open(QIODevice::WriteOnly) || file.write(numbers.toLatin1() + '\n') < 0)
        fail(QStringLiteral("cannot tell what was found"));
    seen(QStringLiteral("found: ") + numbers);
}

void PowerCuts::selects(int row)
{
    mustShow(QStringLiteral("connection %1 is listed").arg(row + 1), [row] {
        const auto *view = find<QListView>(QStringLiteral("listView"));
        return view->isVisible() && view->model()->rowCount() > row;
    });
    clickAt([row] {
        auto *view = find<QListView>(QStringLiteral("listView"));
        return view->viewport()->mapToGlobal(
            view->visualRect(view->model()->index(row, 0)).center());
    });
    mustShow(QStringLiteral("connection %1 is shown").arg(row + 1), [row] {
        return isEnabled("gbSettings")
            && shownIn("leName")
            == find<QListView>(QStringLiteral("listView"))
                   ->model()
                   ->index(row, 0)
                   .data()
                   .toString();
    });
}

void PowerCuts::reaches(const QString &moment, const Look &look)
{
    if (moment != m_moment)
        return;
    mustShow(moment, look, kSlow);
    QFile power(QStringLiteral("/dev/virtio-ports/power"));
    if (!power.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || power.write("cut\n") < 0)
        fail(QStringLiteral("the power cannot be cut"));
    awaitsTheCut();
}

void PowerCuts::awaitsTheCut()
{
    QThread::sleep(60);
    fail(QStringLiteral("the power was not cut"));
}
