#pragma once

#include "pointer.h"

#include <QDBusConnection>
#include <QDir>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <functional>

/**
 * A hand and an eye for the tool's window: real clicks and keys through the X server, and looks at
 * what the window shows, with pictures of it.
 *
 * Lives on a thread of its own, so that a GUI thread that waits for a modem does not stop it; looks
 * at the widgets on the GUI thread. The first look that does not come true ends the process with
 * status 1.
 */
class Guide
{
public:
    /** @param pictures directory for the pictures, made if it is missing. */
    explicit Guide(const QString &pictures);
    Q_DISABLE_COPY_MOVE(Guide)

protected:
    using Look = std::function<bool()>;

    ~Guide() = default;

    /** Ends the process unless @p look comes true on the GUI thread within @p limit. */
    void mustShow(const QString &what, const Look &look,
        std::chrono::milliseconds limit = std::chrono::seconds(10));
    void click(const QString &objectName);
    void clickAt(const std::function<QPoint()> &place);
    void clickInBox(const QString &buttonText);
    void choose(const QString &comboBox, const QString &item);
    void type(const QString &lineEdit, const QString &text);
    void picture(const QString &name);
    /** Presses Apply on the Local network page and agrees. */
    void startsToApplyTheNetwork();
    /** Does so and waits until the log shows the end of it. */
    void appliesTheNetwork();
    /** Tells what was seen apart from the window. */
    static void seen(const QString &what);
    [[noreturn]] void fail(const QString &what);

    QVariant terminal(const QString &method, const QVariantList &arguments = {});

private:
    QDir m_pictures;
    int m_pictureNumber = 0;
    Pointer m_pointer;
    QDBusConnection m_bus;
};
