#include "technician.h"

#include "busnames.h"
#include "kernelview.h"
#include "window.h"

#include <QFile>
#include <QLineEdit>
#include <QListView>
#include <QTextBrowser>
#include <QToolButton>

using namespace std::chrono_literals;
using window::find;
using window::mainDialog;

void Technician::opens()
{
    mustShow(
        QStringLiteral("the main dialog opens"),
        [] { return mainDialog() != nullptr && mainDialog()->isVisible(); }, kSlow);
}

void Technician::startsDial(const QString &connection)
{
    choose(QStringLiteral("cbModem"), connection);
    click(QStringLiteral("cbDial"));
    mustShow(QStringLiteral("the dial test runs"), [] { return !isIdle(); });
    mustShow(
        QStringLiteral("the modem is reset before the dial"),
        [] { return log().contains(QLatin1String("Modem reseted for ")); }, kSlow);
    services({QStringLiteral("stop")});
}

void Technician::isConnected()
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

void Technician::stopsDial()
{
    click(QStringLiteral("pbStop"));
    dialHasEnded();
}

void Technician::dialHasEnded()
{
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

void Technician::selects(const QString &connection)
{
    mustShow(QStringLiteral("%1 is listed").arg(connection), [=] {
        return find<QListView>(QStringLiteral("listView"))->isVisible()
            && listed().contains(connection);
    });
    clickAt([=] {
        auto *view = find<QListView>(QStringLiteral("listView"));
        const auto row = view->model()->index(listed().indexOf(connection), 0);
        return view->viewport()->mapToGlobal(view->visualRect(row).center());
    });
    mustShow(QStringLiteral("the settings of %1 are shown").arg(connection),
        [=] { return find<QLineEdit>(QStringLiteral("leName"))->text() == connection; });
}

void Technician::closes()
{
    click(QStringLiteral("pbClose"));
    clickInBox(QStringLiteral("Save"));
}

void Technician::services(const QStringList &told)
{
    const auto commands
        = terminal(QStringLiteral("serviceCommands"), {tavbus::BUSNAME_TAVMODEMS}).toStringList();
    // Of the dials so far only the last is looked at.
    if (commands.mid((commands.size() - 1) / 2 * 2) != told)
        fail(QStringLiteral("the modem service was told: ") + commands.join(QStringLiteral(", ")));
    seen(QStringLiteral("the modem service was told: ") + told.join(QStringLiteral(", ")));
}

bool Technician::isEnabled(const char *name)
{
    return find<QWidget>(QLatin1String(name))->isEnabled();
}

bool Technician::isIdle()
{
    return find<QWidget>(QStringLiteral("cbDial"))->isEnabled()
        && !find<QWidget>(QStringLiteral("pbStop"))->isEnabled();
}

QStringList Technician::listed()
{
    const auto *model = find<QListView>(QStringLiteral("listView"))->model();
    QStringList names;
    for (int row = 0; row < model->rowCount(); ++row)
        names.append(model->index(row, 0).data().toString());
    return names;
}

QString Technician::log()
{
    return find<QTextBrowser>(QStringLiteral("tbLog"))->toPlainText();
}

QString Technician::indicator()
{
    return find<QToolButton>(QStringLiteral("toolButton"))->toolTip();
}

bool Technician::runs(const QString &program)
{
    return kernelview::processes().contains(program);
}

QByteArray Technician::contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
