#include "users.h"

#include "kernelview.h"
#include "window.h"

#include <QComboBox>
#include <QFile>
#include <QMessageBox>
#include <QProcess>

#include <unistd.h>

using namespace std::chrono_literals;
using window::find;
using window::messageBox;

void Users::users()
{
    opens();
    isNotRoot();
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    startsAgain();
    leaveMark();
    mustShow(
        QStringLiteral("the second user came and went"),
        [] { return QFile::exists(QStringLiteral("/run/marks/second-went")); }, 2 * kRound);
    mustShow(QStringLiteral("the call goes on"), [] {
        return kernelview::addressOf(kLink) == QLatin1String("10.0.2.15 peer 10.0.2.2")
            && runs(QStringLiteral("wvdial"));
    });
    stopsDial();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    closes();
}

// For who waits outside of the tool.
void Users::leaveMark()
{
    QFile(QStringLiteral("/run/marks/connected")).open(QIODevice::WriteOnly);
}

// The same program a second time, which has no technician of its own.
void Users::startsAgain()
{
    QProcess second;
    second.setProcessChannelMode(QProcess::ForwardedChannels);
    second.start(QCoreApplication::applicationFilePath(), QStringList());
    QProcess search;
    search.start(QStringLiteral("xdotool"),
        {QStringLiteral("search"), QStringLiteral("--sync"), QStringLiteral("--onlyvisible"),
            QStringLiteral("--name"), QStringLiteral("^Warning$")});
    if (!search.waitForFinished(30000))
        fail(QStringLiteral("the second start does not warn"));
    seen(QStringLiteral("the second start of the same user warns"));
    picture(QStringLiteral("second-start"));
    const QString box = QString::fromLatin1(search.readAllStandardOutput().trimmed());
    QProcess::execute(QStringLiteral("xdotool"),
        {QStringLiteral("windowfocus"), QStringLiteral("--sync"), box, QStringLiteral("key"),
            QStringLiteral("Return")});
    if (!second.waitForFinished(30000) || second.exitStatus() != QProcess::NormalExit
        || second.exitCode() != 255)
        fail(QStringLiteral("the second start did not end with 255 but %1").arg(second.exitCode()));
    seen(QStringLiteral("it ends with status 255"));
}

// The first user's tool has the name on the bus.
void Users::secondUser()
{
    opens();
    isNotRoot();
    mustShow(QStringLiteral("no connection is offered"),
        [] { return find<QComboBox>(QStringLiteral("cbModem"))->count() == 0; });
    click(QStringLiteral("cbDial"));
    mustShow(QStringLiteral("nothing is dialled"), [] { return isIdle() && log().isEmpty(); });
    picture(QStringLiteral("second-user"));
    saysThatNothingIsSaved();
}

void Users::secondUserAgain()
{
    opens();
    isNotRoot();
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    stopsDial();
    services({QStringLiteral("stop"), QStringLiteral("restart")});
    closes();
}

// Of no group: bus, ports and dialer are closed to him.
void Users::outsider()
{
    opens();
    isNotRoot();
    mustShow(QStringLiteral("no connection is offered"),
        [] { return find<QComboBox>(QStringLiteral("cbModem"))->count() == 0; });
    click(QStringLiteral("pbAskPage"));
    click(QStringLiteral("pbAsk"));
    mustShow(
        QStringLiteral("the log tells that there is nothing to ask"),
        [] {
            return isEnabled("pbAsk") && log().contains(QLatin1String("There are no any modems"));
        },
        kSlow);
    picture(QStringLiteral("asked"));
    click(QStringLiteral("pbSearchPage"));
    click(QStringLiteral("tbSearch"));
    mustShow(
        QStringLiteral("the search tells that there is no modem to be had"),
        [] {
            return messageBox() != nullptr
                && messageBox()->windowTitle() == QLatin1String("No modems");
        },
        kSlow);
    picture(QStringLiteral("searched"));
    clickInBox(QStringLiteral("OK"));
    mustShow(
        QStringLiteral("the page can search again"), [] { return isEnabled("tbSearch"); }, kSlow);
    saysThatNothingIsSaved();
}

void Users::display()
{
    opens();
    isNotRoot();
    startsDial(QStringLiteral("gsm1"));
    isConnected();
    leaveMark();
}

void Users::saysThatNothingIsSaved()
{
    click(QStringLiteral("pbSaveSettings"));
    mustShow(
        QStringLiteral("a box tells that the settings are not saved"),
        [] {
            return messageBox() != nullptr
                && messageBox()->text() == QLatin1String("Modems settings saving error");
        },
        kSlow);
    picture(QStringLiteral("not-saved"));
    clickInBox(QStringLiteral("OK"));
    click(QStringLiteral("pbClose"));
    mustShow(
        QStringLiteral("a box asks whether to leave without saving"),
        [] {
            return messageBox() != nullptr
                && messageBox()->text().contains(QLatin1String("Continue exit?"));
        },
        kSlow);
    picture(QStringLiteral("leaving"));
    clickInBox(QStringLiteral("Yes"));
}

void Users::isNotRoot()
{
    if (getuid() == 0)
        fail(QStringLiteral("the tool runs as root"));
    seen(QStringLiteral("the tool runs as user %1").arg(getuid()));
}
