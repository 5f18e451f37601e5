#include "networkview.h"

#include "window.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTextBrowser>

using window::find;

QAbstractItemModel *networkview::interfaces()
{
    return find<QTableView>(QStringLiteral("tvInterfaces"))->model();
}

QModelIndex networkview::rowOf(const QString &name)
{
    for (int row = 0; row < interfaces()->rowCount(); ++row) {
        if (interfaces()->index(row, 1).data().toString() == name)
            return interfaces()->index(row, 0);
    }
    return {};
}

QPoint networkview::placeOf(const QModelIndex &cell)
{
    auto *view = find<QTableView>(QStringLiteral("tvInterfaces"));
    return view->viewport()->mapToGlobal(view->visualRect(cell).center());
}

bool networkview::isShown(const QString &name, bool used)
{
    return find<QLabel>(QStringLiteral("lIface"))->text() == name
        && find<QGroupBox>(QStringLiteral("gbSettings"))->isEnabled() == used;
}

bool networkview::isEdited(const QString &name)
{
    return isShown(name, true);
}

QString networkview::log()
{
    return find<QTextBrowser>(QStringLiteral("tbLog"))->toPlainText();
}

bool networkview::buttonsAreEnabled(bool enabled)
{
    return find<QPushButton>(QStringLiteral("pbApply"))->isEnabled() == enabled
        && find<QPushButton>(QStringLiteral("pbReload"))->isEnabled() == enabled;
}
