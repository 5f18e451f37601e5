#include "modemsmodel.h"

ModemsModel::ModemsModel(QObject *parent)
    : QStringListModel(parent)
{
}

ModemsModel::~ModemsModel() = default;

QString ModemsModel::connectionName(const QModelIndex &idx) const
{
    return idx.isValid() && idx.row() < rowCount() ? stringList().at(idx.row()) : QString();
}
