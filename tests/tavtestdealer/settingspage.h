#pragma once

#include "modemsmodel.h"
#include "searchwidget.h"
#include "shortstringlisteditor.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListView>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QToolButton>

/// The Settings page, wherever it stands: its widgets by their names, and a user's touches.
class SettingsPage
{
public:
    explicit SettingsPage(SearchWidget *page)
        : m_page(page)
    {
    }

    QToolButton *tool(const char *name) const
    {
        return m_page->findChild<QToolButton *>(QLatin1String(name));
    }
    QLineEdit *line(const char *name) const
    {
        return m_page->findChild<QLineEdit *>(QLatin1String(name));
    }
    QCheckBox *box(const char *name) const
    {
        return m_page->findChild<QCheckBox *>(QLatin1String(name));
    }
    QComboBox *port() const { return m_page->findChild<QComboBox *>(QStringLiteral("cbPort")); }
    QComboBox *baudrate() const
    {
        return m_page->findChild<QComboBox *>(QStringLiteral("cbBaudrate"));
    }
    QPushButton *modemOnly() const
    {
        return m_page->findChild<QPushButton *>(QStringLiteral("pbModemOnly"));
    }
    QGroupBox *settings() const
    {
        return m_page->findChild<QGroupBox *>(QStringLiteral("gbSettings"));
    }
    QTabWidget *tabs() const
    {
        return m_page->findChild<QTabWidget *>(QStringLiteral("tabWidget"));
    }
    QListView *list() const { return m_page->findChild<QListView *>(QStringLiteral("listView")); }
    QStringList names() const { return model()->stringList(); }
    ShortStringListEditor *editor(const char *tab) const
    {
        return m_page->findChild<QWidget *>(QLatin1String(tab))
            ->findChild<ShortStringListEditor *>();
    }

    void press(const char *name) { QTest::mouseClick(tool(name), Qt::LeftButton); }
    /// Touches a row of the list.
    void select(int row)
    {
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier,
            list()->visualRect(model()->index(row)).center());
    }
    /// Brings up the tab of a widget and touches that.
    void touch(QWidget *widget)
    {
        bringUp(widget);
        QTest::mouseClick(widget, Qt::LeftButton);
    }
    void bringUp(QWidget *widget)
    {
        for (int i = 0; i < tabs()->count(); ++i) {
            if (tabs()->widget(i)->isAncestorOf(widget))
                QTest::mouseClick(tabs()->tabBar(), Qt::LeftButton, Qt::NoModifier,
                    tabs()->tabBar()->tabRect(i).center());
        }
    }
    void tick(const char *name)
    {
        bringUp(box(name));
        QTest::mouseClick(
            box(name), Qt::LeftButton, Qt::NoModifier, QPoint(10, box(name)->height() / 2));
    }
    /// Types a text in the place of what a line holds.
    void type(QLineEdit *line, const QString &text)
    {
        touch(line);
        QTest::keyClick(line, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClick(line, Qt::Key_Delete);
        // By their characters, as a keyboard of any language gives them.
        for (const QChar &character : text)
            QTest::sendKeyEvent(
                QTest::Click, line, Qt::Key_unknown, QString(character), Qt::NoModifier);
    }

private:
    ModemsModel *model() const { return qobject_cast<ModemsModel *>(list()->model()); }

    SearchWidget *const m_page;
};
