#pragma once

#include "interfacesettings.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QPointer>

class EthernetConfigurator;

/// The wired interfaces of the system, one a row: column 0 shows by its icon whether the interface
/// is used, column 1 its name. Holds the settings of the interfaces file with the user's edits laid
/// over them. Rows stand in the order of an unordered map. GUI thread only.
class EthernetConfigModel : public QAbstractTableModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(EthernetConfigModel)

public:
    /// Empty until the first reload().
    explicit EthernetConfigModel(QObject *parent = nullptr);
    /// Takes over the configurator.
    EthernetConfigModel(EthernetConfigurator *configurator, QObject *parent);
    ~EthernetConfigModel() override;

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant headerData(
        int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

    /// Uses the interface from now on, or no longer; only column 0 can be switched. The whole model
    /// is reset, so that views drop their selection.
    void switchAllow(const QModelIndex &index);

    /// False, with iface empty, sts at its defaults and used untouched, when there is no such row.
    bool getSettings(
        const QModelIndex &index, QString &iface, InterfaceSettings &sts, bool &used) const;

    /// Hands the settings of the used interfaces over to be written and applied. All others are
    /// missing in the written file and are without configuration afterwards.
    void apply();

    /// EthernetConfigurator::finishApplying().
    void finishApplying();

public slots:
    /// Asks the system and the interfaces file anew; edits are lost.
    void reload();
    /// Keeps the settings of an interface that the system knows; others are ignored.
    void setSettings(const QString &iface, const InterfaceSettings &sts);

signals:
    void logMessage(const QString &text);

private:
    QPointer<EthernetConfigurator> m_configurator; // child of this
    QHash<QString, bool> m_interfaces; // true: used
    QHash<QString, InterfaceSettings> m_settings;
};
