#pragma once

#include <QElapsedTimer>
#include <QPair>
#include <QString>
#include <QTimer>

#include <deque>

class QLoggingCategory;
class QMutex;
class QTextBrowser;

/// Shows the messages of one logging category in a text browser, coloured by their type, for as
/// long as it lives. Every screen with a log pane owns one, made at the end of its constructor and
/// gone before its form is.
///
/// Lives in the GUI thread, on which the logging back end then calls it. A message is shown before
/// the call that logged it returns, unless there are so many of them that the window would stand
/// still: the rest of a flood follows from the event loop, in order, in one share a turn. A turn is
/// one round of the event loop, in which it also gets to the user's input and to painting. A
/// category has one pane at a time: a later LogPane takes it over.
///
/// Markup in a line is taken for markup, and what it points to is neither opened nor gone to; a
/// line with a table, or with very many tags, stands there as it came instead.
class LogPane
{
    Q_DISABLE_COPY_MOVE(LogPane)

public:
    /// Gives the mutex that serialises the appends of one class of screens.
    using Lock = QMutex &(*)();

    /// Shows category's messages in pane (not owned; nothing is shown when it is null), under the
    /// mutex that lock gives, where there is one.
    LogPane(QTextBrowser *pane, const QLoggingCategory &category, Lock lock = nullptr);

    /// Messages logged afterwards no longer reach the pane.
    ~LogPane();

    /// Empties the pane; what is still to follow of a flood is dropped with it.
    void clear();

    /// Shows on the screen what has come so far, without waiting for the event loop.
    void paint();
    /// While it is live it does so by itself, ten times a second while lines come: for work that
    /// keeps the GUI thread from its event loop. Off at first.
    void setLive(bool live);

private:
    using Line = QPair<QString, QString>; // colour, text

    void show(QtMsgType type, const QString &text);
    void append(const Line &line);
    void goOn();
    void appendWaiting();

    const QString m_name; // the category's name: the key of the output
    QTextBrowser *const m_pane;
    const Lock m_lock;
    std::deque<Line> m_waiting;
    QTimer m_turn; // runs from a line until the event loop has come round
    QElapsedTimer m_sincePainted; // runs while live
    qint64 m_spent = 0; // ns spent on appending in this turn
};
