#pragma once

#include "pointer.h"

#include <QDBusConnection>
#include <QDir>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <functional>

class QWidget;

/**
 * Walks through the tool as a technician would: real clicks on the real window, in the simulated
 * terminal, and after each step a look at what the window shows, with a picture of it.
 *
 * Lives on a thread of its own, so that a GUI thread that waits for a modem does not stop it; looks
 * at the widgets on the GUI thread. The first step that does not show what it must ends the
 * process with status 1.
 */
class Tour
{
public:
    /** @param pictures directory for the pictures, made if it is missing. */
    explicit Tour(const QString &pictures);
    Q_DISABLE_COPY_MOVE(Tour)

    /** The whole walk; returns after the click that closes the main dialog. */
    void run();

private:
    using Look = std::function<bool()>;

    void showsWhatTheBusHolds();
    void goesRedWithoutAPage();
    void dials();
    void refusesToCloseMeanwhile();
    void stops();
    void goesGreenWithOnePage();
    void searches(); // this and what follows up to saves() in modempages.cpp
    void edits();
    void reorders();
    void removes();
    void asks();
    void saves();
    void configuresTheNetwork(); // this and the next in networkpage.cpp
    void appliesTheNetwork();
    void asksBeforeItCloses();
    void savesAndCloses();

    /** Ends the process unless @p look comes true on the GUI thread within @p limit. */
    void mustShow(const QString &what, const Look &look,
        std::chrono::milliseconds limit = std::chrono::seconds(10));
    void click(const QString &objectName);
    void clickAt(const std::function<QPoint()> &place);
    void clickInBox(const QString &buttonText);
    void choose(const QString &comboBox, const QString &item);
    void type(const QString &lineEdit, const QString &text);
    void select(const QString &connection);
    void picture(const QString &name);
    /** Tells what was seen apart from the window. */
    static void seen(const QString &what);
    [[noreturn]] void fail(const QString &what);

    QVariant terminal(const QString &method, const QVariantList &arguments = {});

    QDir m_pictures;
    int m_pictureNumber = 0;
    Pointer m_pointer;
    QDBusConnection m_bus;
};
