#include "tour.h"

#include "busnames.h"
#include "window.h"

#include <QComboBox>
#include <QTextBrowser>
#include <QToolButton>

using namespace std::chrono_literals;
using window::find;
using window::mainDialog;
using window::messageBox;

namespace {

// One round of the Internet check a minute, and some air.
constexpr auto kNextInternetCheck = 75s;

QString log()
{
    return find<QTextBrowser>(QStringLiteral("tbLog"))->toPlainText();
}

QString logAsHtml()
{
    return find<QTextBrowser>(QStringLiteral("tbLog"))->toHtml();
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

} // namespace

void Tour::run()
{
    showsWhatTheBusHolds();
    goesRedWithoutAPage();
    dials();
    refusesToCloseMeanwhile();
    stops();
    goesGreenWithOnePage();
    searches();
    edits();
    reorders();
    removes();
    asks();
    saves();
    configuresTheNetwork();
    asksBeforeItCloses();
    savesAndCloses();
}

void Tour::showsWhatTheBusHolds()
{
    mustShow(QStringLiteral("the main dialog opens"), [] {
        auto *dialog = mainDialog();
        return dialog != nullptr && dialog->isVisible() && dialog->size() == QSize(800, 600);
    });
    mustShow(QStringLiteral("the connections come from the bus"),
        [] { return find<QComboBox>(QStringLiteral("cbModem"))->count() >= 2; });
    picture(QStringLiteral("start"));
}

void Tour::goesRedWithoutAPage()
{
    mustShow(
        QStringLiteral("no page answers: the indicator is red"),
        [] { return indicator() == QLatin1String("Connection off"); }, 15s);
    picture(QStringLiteral("indicator-red"));
    terminal(QStringLiteral("page"), {QStringLiteral("public"), true});
}

void Tour::dials()
{
    choose(QStringLiteral("cbModem"), QStringLiteral("gsm1"));
    picture(QStringLiteral("modem-chosen"));
    click(QStringLiteral("cbDial"));
    mustShow(QStringLiteral("the dial test runs"), [] { return !isIdle(); });
    mustShow(
        QStringLiteral("the modem is reset before the dial"),
        [] { return log().contains(QLatin1String("Modem reseted for ")); }, 30s);
    mustShow(
        QStringLiteral("the dialer reaches CONNECT"),
        [] { return log().contains(QLatin1String("CONNECT")); }, 30s);
    mustShow(QStringLiteral("the dialer starts pppd"),
        [] { return log().contains(QLatin1String("Starting pppd")); });
    mustShow(QStringLiteral("the log is black for what is usual"),
        [] { return logAsHtml().contains(QLatin1String("color:#000000")); });
    picture(QStringLiteral("dialling"));
}

void Tour::refusesToCloseMeanwhile()
{
    click(QStringLiteral("pbClose"));
    mustShow(QStringLiteral("the window stays while the test runs"), [] {
        return mainDialog()->isVisible() && mainDialog()->isEnabled() && messageBox() == nullptr;
    });
}

void Tour::stops()
{
    click(QStringLiteral("pbStop"));
    mustShow(
        QStringLiteral("the page is idle again"), [] { return isIdle(); }, 60s);
    mustShow(QStringLiteral("the log tells how the dialer ended, in colour"), [] {
        return log().contains(QLatin1String("WvDial finished with code "))
            && logAsHtml().contains(QLatin1String("color:#ff0000"));
    });
    const auto commands = terminal(QStringLiteral("serviceCommands"), {tavbus::BUSNAME_TAVMODEMS});
    if (commands.toStringList() != QStringList{QStringLiteral("stop"), QStringLiteral("restart")})
        fail(QStringLiteral("the modem service was told: ")
            + commands.toStringList().join(QLatin1String(", ")));
    seen(QStringLiteral("the modem service was stopped before and restarted after"));
    picture(QStringLiteral("stopped"));
}

void Tour::goesGreenWithOnePage()
{
    mustShow(
        QStringLiteral("one page answers: the indicator is green"),
        [] { return indicator() == QLatin1String("Connection on"); }, kNextInternetCheck);
    picture(QStringLiteral("indicator-green"));
}

void Tour::asksBeforeItCloses()
{
    click(QStringLiteral("pbClose"));
    mustShow(QStringLiteral("the tool asks before it closes"), [] {
        return messageBox() != nullptr
            && messageBox()->text() == QLatin1String("Save modems settings?");
    });
    picture(QStringLiteral("close-question"));
    clickInBox(QStringLiteral("Cancel"));
    mustShow(QStringLiteral("after Cancel the window goes on"), [] {
        return messageBox() == nullptr && mainDialog()->isVisible() && mainDialog()->isEnabled();
    });
}

void Tour::savesAndCloses()
{
    click(QStringLiteral("pbClose"));
    mustShow(QStringLiteral("the tool asks again"), [] { return messageBox() != nullptr; });
    clickInBox(QStringLiteral("Save"));
}
