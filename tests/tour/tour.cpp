#include "tour.h"

#include "busnames.h"
#include "window.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QDBusMessage>
#include <QLineEdit>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTextBrowser>
#include <QTextStream>
#include <QThread>
#include <QToolButton>

#include <cstdlib>

using namespace std::chrono_literals;
using window::find;
using window::mainDialog;
using window::messageBox;
using window::onGuiThread;

namespace {

constexpr auto kLookAgainAfter = 50ms;
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

void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

} // namespace

Tour::Tour(const QString &pictures)
    : m_pictures(pictures)
    , m_bus(QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("tour")))
{
    if (!m_pictures.mkpath(QStringLiteral(".")))
        fail(QStringLiteral("cannot make the directory %1").arg(pictures));
    if (!m_pointer.isValid())
        fail(QStringLiteral("there is no X display with the XTEST extension"));
    if (!m_bus.isConnected())
        fail(QStringLiteral("there is no terminal bus: start the tour with scripts/run --tour"));
}

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

void Tour::mustShow(const QString &what, const Look &look, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!onGuiThread(look)) {
        if (std::chrono::steady_clock::now() > deadline)
            fail(QStringLiteral("not seen within %1 ms: %2").arg(limit.count()).arg(what));
        QThread::msleep(kLookAgainAfter.count());
    }
    seen(what);
}

void Tour::seen(const QString &what)
{
    say(QStringLiteral("  seen: ") + what);
}

void Tour::click(const QString &objectName)
{
    mustShow(QStringLiteral("%1 can be pressed").arg(objectName), [=] {
        auto *widget = find<QWidget>(objectName);
        return widget != nullptr && widget->isVisible() && widget->isEnabled();
    });
    clickAt([=] {
        auto *widget = find<QWidget>(objectName);
        return widget->mapToGlobal(widget->rect().center());
    });
}

void Tour::clickAt(const std::function<QPoint()> &place)
{
    m_pointer.click(onGuiThread(place));
}

void Tour::clickInBox(const QString &buttonText)
{
    const auto button = [=]() -> QAbstractButton * {
        auto *box = messageBox();
        if (box == nullptr || !box->isVisible())
            return nullptr;
        const auto buttons = box->buttons();
        for (auto *each : buttons) {
            if (each->text().remove(QLatin1Char('&')) == buttonText)
                return each;
        }
        return nullptr;
    };
    mustShow(
        QStringLiteral("the box offers %1").arg(buttonText), [=] { return button() != nullptr; });
    clickAt([=] { return button()->mapToGlobal(button()->rect().center()); });
}

void Tour::choose(const QString &comboBox, const QString &item)
{
    click(comboBox);
    mustShow(QStringLiteral("the list of %1 opens").arg(comboBox),
        [=] { return find<QComboBox>(comboBox)->view()->isVisible(); });
    clickAt([=] {
        auto *box = find<QComboBox>(comboBox);
        auto *view = box->view();
        const auto place = view->visualRect(view->model()->index(box->findText(item), 0)).center();
        return view->viewport()->mapToGlobal(place);
    });
    mustShow(QStringLiteral("%1 is chosen").arg(item), [=] {
        auto *box = find<QComboBox>(comboBox);
        return box->currentText() == item && !box->view()->isVisible();
    });
}

void Tour::type(const QString &lineEdit, const QString &text)
{
    click(lineEdit);
    for (const auto &keys : {QStringList{QStringLiteral("key"), QStringLiteral("ctrl+a"),
                                 QStringLiteral("Delete"), QStringLiteral("Home")},
             QStringList{QStringLiteral("type"), text}}) {
        if (QProcess::execute(QStringLiteral("xdotool"), keys) != 0)
            fail(QStringLiteral("xdotool cannot press keys"));
    }
    mustShow(QStringLiteral("%1 reads %2").arg(lineEdit, text),
        [=] { return find<QLineEdit>(lineEdit)->text() == text; });
}

void Tour::picture(const QString &name)
{
    const auto file = m_pictures.filePath(
        QStringLiteral("%1-%2.png").arg(++m_pictureNumber, 2, 10, QLatin1Char('0')).arg(name));
    const auto taken = onGuiThread([=] {
        auto area = mainDialog()->frameGeometry();
        if (auto *box = messageBox())
            area = area.united(box->frameGeometry());
        return QApplication::primaryScreen()
            ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
            .save(file);
    });
    if (!taken)
        fail(QStringLiteral("cannot write the picture %1").arg(file));
    say(QStringLiteral("%1: %2").arg(m_pictureNumber).arg(file));
}

void Tour::fail(const QString &what)
{
    say(QStringLiteral("FAILED: ") + what);
    if (qApp != nullptr && mainDialog() != nullptr) {
        onGuiThread([this] {
            return QApplication::primaryScreen()->grabWindow(0).save(
                m_pictures.filePath(QStringLiteral("failed.png")));
        });
    }
    std::_Exit(EXIT_FAILURE);
}

QVariant Tour::terminal(const QString &method, const QVariantList &arguments)
{
    auto call = QDBusMessage::createMethodCall(QStringLiteral("org.ovrel.TerminalSim"),
        QStringLiteral("/org/ovrel/TerminalSim"), QStringLiteral("org.ovrel.TerminalSim1"), method);
    call.setArguments(arguments);
    const auto answer = m_bus.call(call);
    if (answer.type() != QDBusMessage::ReplyMessage)
        fail(QStringLiteral("the simulated terminal refuses %1: %2")
                 .arg(method, answer.errorMessage()));
    return answer.arguments().value(0);
}
