#pragma once

#include <QApplication>
#include <QMessageBox>
#include <QWidget>

/// The tool's window as the tour finds it. onGuiThread() is for the tour's own thread, all else for
/// the GUI thread.
namespace window {

/** Runs @p work on the GUI thread, nested event loops of message boxes included; waits for it. */
template <typename Work>
auto onGuiThread(Work work)
{
    decltype(work()) result{};
    QMetaObject::invokeMethod(
        qApp, [&] { result = work(); }, Qt::BlockingQueuedConnection);
    return result;
}

inline QWidget *mainDialog()
{
    const auto windows = QApplication::topLevelWidgets();
    for (auto *window : windows) {
        if (window->objectName() == QLatin1String("MainDialog"))
            return window;
    }
    return nullptr;
}

/** The one on the page that is shown, if several pages use the name. */
template <typename Widget>
Widget *find(const QString &objectName)
{
    auto *dialog = mainDialog();
    if (dialog == nullptr)
        return nullptr;
    const auto all = dialog->findChildren<Widget *>(objectName);
    for (auto *each : all) {
        if (each->isVisible())
            return each;
    }
    return all.value(0);
}

inline QMessageBox *messageBox()
{
    return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

} // namespace window
