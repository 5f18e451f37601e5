#pragma once

#include <QStringListModel>

/// The names of the connections in their order of use, for a list on the screen.
class ModemsModel : public QStringListModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ModemsModel)

public:
    explicit ModemsModel(QObject *parent = nullptr);
    ~ModemsModel() override;

    /// The name in the row of an index; empty for an index that is none of this list's.
    QString connectionName(const QModelIndex &idx) const;
};
