#include "guide.h"

#include "networkview.h"
#include "window.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QDBusMessage>
#include <QLineEdit>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTextStream>
#include <QThread>

#include <cstdlib>

using namespace std::chrono_literals;
using window::find;
using window::mainDialog;
using window::messageBox;
using window::onGuiThread;

namespace {

constexpr auto kLookAgainAfter = 50ms;
// A second before each command that applies the network, and what they take themselves.
constexpr auto kApplied = 60s; // much more on an emulated processor

void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

} // namespace

Guide::Guide(const QString &pictures)
    : m_pictures(pictures)
    , m_bus(QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("guide")))
{
    if (!m_pictures.mkpath(QStringLiteral(".")))
        fail(QStringLiteral("cannot make the directory %1").arg(pictures));
    if (!m_pointer.isValid())
        fail(QStringLiteral("there is no X display with the XTEST extension"));
    if (!m_bus.isConnected())
        fail(QStringLiteral("there is no terminal bus"));
}

void Guide::mustShow(const QString &what, const Look &look, std::chrono::milliseconds limit)
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!onGuiThread(look)) {
        if (std::chrono::steady_clock::now() > deadline)
            fail(QStringLiteral("not seen within %1 ms: %2").arg(limit.count()).arg(what));
        QThread::msleep(kLookAgainAfter.count());
    }
    seen(what);
}

void Guide::seen(const QString &what)
{
    say(QStringLiteral("  seen: ") + what);
}

void Guide::click(const QString &objectName)
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

void Guide::clickAt(const std::function<QPoint()> &place)
{
    m_pointer.click(onGuiThread(place));
}

void Guide::clickInBox(const QString &buttonText)
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

void Guide::choose(const QString &comboBox, const QString &item)
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

void Guide::type(const QString &lineEdit, const QString &text)
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

void Guide::picture(const QString &name)
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

void Guide::startsToApplyTheNetwork()
{
    click(QStringLiteral("pbApply"));
    mustShow(QStringLiteral("the page asks, with one button"), [] {
        return messageBox() != nullptr && messageBox()->buttons().size() == 1
            && messageBox()->text()
            == QLatin1String("The network settings will reconfigures. continue?");
    });
    picture(QStringLiteral("network-question"));
    clickInBox(QStringLiteral("Yes"));
    mustShow(QStringLiteral("the buttons are out"),
        [] { return networkview::buttonsAreEnabled(false); });
}

void Guide::appliesTheNetwork()
{
    startsToApplyTheNetwork();
    mustShow(
        QStringLiteral("the log shows the restart of the network to its end"),
        [] {
            return networkview::log().contains(QLatin1String("Reconfiguring network interfaces..."))
                && (networkview::log().contains(QLatin1String("done.\n"))
                    || networkview::log().contains(QLatin1String("failed.\n")));
        },
        kApplied);
}

void Guide::fail(const QString &what)
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

QVariant Guide::terminal(const QString &method, const QVariantList &arguments)
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
