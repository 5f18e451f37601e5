#include "busnames.h"
#include "modemsettings.h"
#include "tavbusqueryhandler.h"
#include "tour.h"
#include "window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTabWidget>
#include <QTextBrowser>

// The part of the tour that goes over the Settings and the Ask modem page: what is plugged in is
// found, set right, asked and saved for the modem service.

using namespace std::chrono_literals;
using window::find;
using window::messageBox;

namespace {

constexpr auto kSearched = 30s; // stopping, a silent port's time, starting
constexpr auto kAsked = 60s;

const QString kHuawei = QStringLiteral("E173-ttyUSB0");
const QString kSimcom = QStringLiteral("SIMCOM_SIM800-ttyUSB3");

QAbstractItemModel *connections()
{
    return find<QListView>(QStringLiteral("listView"))->model();
}

QStringList listed()
{
    QStringList names;
    for (int row = 0; row < connections()->rowCount(); ++row)
        names.append(connections()->index(row, 0).data().toString());
    return names;
}

QPoint placeOf(const QString &name)
{
    auto *view = find<QListView>(QStringLiteral("listView"));
    const auto row = connections()->index(listed().indexOf(name), 0);
    return view->viewport()->mapToGlobal(view->visualRect(row).center());
}

QPoint placeOfTab(const QString &page)
{
    auto *tabs = find<QTabWidget>(QStringLiteral("tabWidget"));
    const int index = tabs->indexOf(find<QWidget>(page));
    return tabs->tabBar()->mapToGlobal(tabs->tabBar()->tabRect(index).center());
}

bool isEnabled(const char *name)
{
    return find<QWidget>(QLatin1String(name))->isEnabled();
}

bool pagesAreHeld()
{
    return !isEnabled("pbDialPage") && !isEnabled("pbAskPage") && !isEnabled("pbSearchPage")
        && !isEnabled("pbSaveSettings");
}

ModemInfo stored(const QString &name)
{
    return ModemSettings().modems().value(name);
}

QStringList results()
{
    return find<QTextBrowser>(QStringLiteral("tbModemData"))
        ->toPlainText()
        .split(QLatin1Char('\n'));
}

} // namespace

void Tour::searches()
{
    click(QStringLiteral("pbSearchPage"));
    mustShow(QStringLiteral("the connections are listed, none is edited"), [] {
        return listed() == QStringList({QStringLiteral("gsm1"), QStringLiteral("gsm2")})
            && !isEnabled("gbSettings") && !isEnabled("tbRemove");
    });
    picture(QStringLiteral("settings"));
    click(QStringLiteral("tbSearch"));
    mustShow(QStringLiteral("the search empties the list and holds the pages"),
        [] { return listed().isEmpty() && !isEnabled("tbSearch") && pagesAreHeld(); });
    picture(QStringLiteral("searching"));
    click(QStringLiteral("pbClose"));
    mustShow(
        QStringLiteral("it finds each modem once, by its name, and lets the pages go"),
        [] {
            return listed() == QStringList({kHuawei, kSimcom}) && isEnabled("tbSearch")
                && !pagesAreHeld() && messageBox() == nullptr;
        },
        kSearched);
    picture(QStringLiteral("found"));
}

void Tour::edits()
{
    select(kHuawei);
    mustShow(QStringLiteral("the first can only go down, and be made a modem alone"), [] {
        return find<QComboBox>(QStringLiteral("cbPort"))->currentText() == QLatin1String("ttyUSB0")
            && !isEnabled("tbUp") && isEnabled("tbDown") && isEnabled("pbModemOnly");
    });
    picture(QStringLiteral("selected"));
    type(QStringLiteral("leUser"), QStringLiteral("service"));
    type(QStringLiteral("lePassword"), QStringLiteral("secret"));
    choose(QStringLiteral("cbBaudrate"), QStringLiteral("115200"));
    picture(QStringLiteral("edited-main"));

    clickAt([] { return placeOfTab(QStringLiteral("tabAdditional")); });
    click(QStringLiteral("leModemType"));
    type(QStringLiteral("leModemType"), QStringLiteral("USB Modem"));
    clickAt([] {
        auto *box = find<QCheckBox>(QStringLiteral("cbStupidMode"));
        return box->mapToGlobal(QPoint(10, box->height() / 2));
    });
    mustShow(QStringLiteral("the box is unticked"),
        [] { return !find<QCheckBox>(QStringLiteral("cbStupidMode"))->isChecked(); });
    picture(QStringLiteral("edited-additional"));

    clickAt([] { return placeOfTab(QStringLiteral("tabPhones")); });
    type(QStringLiteral("le1"), QStringLiteral("*99***1#"));
    click(QStringLiteral("tbUp1"));
    mustShow(QStringLiteral("the new number is the main one"),
        [] { return find<QLineEdit>(QStringLiteral("le0"))->text() == QLatin1String("*99***1#"); });
    picture(QStringLiteral("edited-phones"));
    clickAt([] { return placeOfTab(QStringLiteral("tabAPN")); });
    picture(QStringLiteral("edited-apn"));
    clickAt([] { return placeOfTab(QStringLiteral("tabPort")); });

    mustShow(QStringLiteral("every edit is in the store"), [] {
        const auto modem = stored(kHuawei);
        return modem.userName() == QLatin1String("service")
            && modem.password() == QLatin1String("secret") && modem.baudrate() == 115200
            && modem.modemType() == QLatin1String("USB Modem") && !modem.stupidMode()
            && modem.phone() == QLatin1String("*99***1#")
            && modem.phones() == QStringList{QStringLiteral("*99#")};
    });
}

void Tour::reorders()
{
    click(QStringLiteral("tbDown"));
    mustShow(QStringLiteral("the other connection is the preferred one"), [] {
        return listed() == QStringList({kSimcom, kHuawei})
            && ModemSettings().connectionsOrder() == listed() && !isEnabled("gbSettings");
    });
    picture(QStringLiteral("reordered"));
}

void Tour::removes()
{
    select(kSimcom);
    click(QStringLiteral("tbRemove"));
    mustShow(QStringLiteral("it is gone from list and store"), [] {
        return listed() == QStringList{kHuawei} && ModemSettings().modems().keys() == listed();
    });
    picture(QStringLiteral("removed"));
}

void Tour::asks()
{
    click(QStringLiteral("pbAskPage"));
    mustShow(QStringLiteral("what is left can be asked"),
        [] { return find<QComboBox>(QStringLiteral("cbModem"))->currentText() == kHuawei; });
    click(QStringLiteral("pbAsk"));
    mustShow(
        QStringLiteral("the modem tells its network, operator, balance and signal"),
        [] {
            return results()
                == QStringList({kHuawei, QStringLiteral("MCC: 250"), QStringLiteral("MNC: 1"),
                    QStringLiteral("LAC: 1F40"), QStringLiteral("CID: A1B2C3"),
                    QStringLiteral("Operator: MTS"), QStringLiteral("Balance: 150.5"),
                    QStringLiteral("Signal level: -71 dB")});
        },
        kAsked);
    mustShow(QStringLiteral("the log has the message that it had received"), [] {
        return find<QTextBrowser>(QStringLiteral("tbLog"))
            ->toPlainText()
            .contains(QLatin1String("MTS -> Welcome!"));
    });
    mustShow(
        QStringLiteral("the service is back, and the page can ask again"),
        [] { return isEnabled("pbAsk") && !pagesAreHeld(); }, kAsked);
    picture(QStringLiteral("asked"));
}

void Tour::saves()
{
    click(QStringLiteral("pbSaveSettings"));
    mustShow(QStringLiteral("the modem service's record is what the page shows"), [] {
        tavbus::TavBusQueryHandler bus(tavbus::BUSNAME_TESTDEALER);
        tavbus::ClientSettings record;
        return bus.open() && bus.loadSettings(tavbus::BUSNAME_TAVMODEMS, record)
            && record.settings() == ModemSettings().toSettingsList() && messageBox() == nullptr;
    });
}

void Tour::select(const QString &connection)
{
    clickAt([=] { return placeOf(connection); });
    mustShow(QStringLiteral("%1 is shown").arg(connection), [=] {
        return isEnabled("gbSettings")
            && find<QLineEdit>(QStringLiteral("leName"))->text() == connection
            && find<QGroupBox>(QStringLiteral("gbSettings"))->title() == connection;
    });
}
