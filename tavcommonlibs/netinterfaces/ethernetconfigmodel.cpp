#include "ethernetconfigmodel.h"

#include "ethernetconfigurator.h"

#include <QFont>
#include <QIcon>

namespace {

enum Column { UsedColumn, NameColumn, ColumnCount };

constexpr int namePointSize = 18;

} // namespace

// Outside any namespace, as the macro wants it: a static library's resources are not registered by
// themselves.
static void registerIcons()
{
    Q_INIT_RESOURCE(netinterfaces);
}

EthernetConfigModel::EthernetConfigModel(QObject *parent)
    : EthernetConfigModel(new EthernetConfigurator, parent)
{
}

EthernetConfigModel::EthernetConfigModel(EthernetConfigurator *configurator, QObject *parent)
    : QAbstractTableModel(parent)
    , m_configurator(configurator)
{
    registerIcons();
    m_configurator->setParent(this);
    connect(
        m_configurator, &EthernetConfigurator::logMessage, this, &EthernetConfigModel::logMessage);
}

EthernetConfigModel::~EthernetConfigModel() = default;

int EthernetConfigModel::rowCount(const QModelIndex &parent) const
{
    Q_UNUSED(parent)
    return m_interfaces.size();
}

int EthernetConfigModel::columnCount(const QModelIndex &parent) const
{
    Q_UNUSED(parent)
    return ColumnCount;
}

QVariant EthernetConfigModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal)
        return QString();
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags EthernetConfigModel::flags(const QModelIndex &index) const
{
    Q_UNUSED(index)
    return Qt::ItemIsSelectable | Qt::ItemIsEnabled;
}

QVariant EthernetConfigModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount() || index.column() >= ColumnCount)
        return QVariant();
    const QString name = m_interfaces.keys().at(index.row());
    if (index.column() == UsedColumn && role == Qt::DecorationRole)
        return QIcon(m_interfaces.value(name) ? QStringLiteral(":/icons/usedinterface.png")
                                              : QStringLiteral(":/icons/unusedinterface.png"));
    if (index.column() == NameColumn && role == Qt::DisplayRole)
        return name;
    if (index.column() == NameColumn && role == Qt::FontRole) {
        auto font = data(index.siblingAtColumn(UsedColumn), Qt::FontRole).value<QFont>();
        font.setPointSize(namePointSize);
        return font;
    }
    return QVariant();
}

void EthernetConfigModel::switchAllow(const QModelIndex &index)
{
    if (!index.isValid() || index.column() != UsedColumn || index.row() >= rowCount())
        return;
    const QString name = m_interfaces.keys().at(index.row());
    beginResetModel();
    m_interfaces[name] = !m_interfaces.value(name);
    endResetModel();
}

bool EthernetConfigModel::getSettings(
    const QModelIndex &index, QString &iface, InterfaceSettings &sts, bool &used) const
{
    iface.clear();
    sts = InterfaceSettings();
    if (!index.isValid() || index.row() >= rowCount())
        return false;
    iface = m_interfaces.keys().at(index.row());
    sts = m_settings.value(iface);
    used = m_interfaces.value(iface);
    return true;
}

void EthernetConfigModel::apply()
{
    QHash<QString, InterfaceSettings> used;
    for (auto it = m_interfaces.cbegin(); it != m_interfaces.cend(); ++it) {
        if (!it.key().isEmpty() && it.value())
            used.insert(it.key(), m_settings.value(it.key()));
    }
    if (m_configurator)
        m_configurator->applySettings(used);
}

void EthernetConfigModel::finishApplying()
{
    if (m_configurator)
        m_configurator->finishApplying();
}

void EthernetConfigModel::reload()
{
    beginResetModel();
    m_interfaces.clear();
    m_settings.clear();
    if (m_configurator) {
        m_interfaces = m_configurator->availableEthernetInterfaces();
        m_settings = m_configurator->availableEthernetSettings();
    }
    endResetModel();
}

void EthernetConfigModel::setSettings(const QString &iface, const InterfaceSettings &sts)
{
    if (m_interfaces.contains(iface))
        m_settings.insert(iface, sts);
}
