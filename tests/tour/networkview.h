#pragma once

#include <QModelIndex>
#include <QPoint>
#include <QString>

class QAbstractItemModel;

/// The Local network page as whoever walks over it sees it. For the GUI thread.
namespace networkview {

/** The table of interfaces. */
QAbstractItemModel *interfaces();
/** The icon of that interface, which switches it; not valid when it is not listed. */
QModelIndex rowOf(const QString &name);
/** Where on the screen to click a cell of the table. */
QPoint placeOf(const QModelIndex &cell);
/** That interface's settings are shown, and can be edited when it is used. */
bool isShown(const QString &name, bool used);
bool isEdited(const QString &name);
/** What the commands have printed. */
QString log();
/** Apply and Reload both are. */
bool buttonsAreEnabled(bool enabled);

} // namespace networkview
