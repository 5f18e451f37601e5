#include "modemsettings.h"

#include "atmodemlog.h"
#include "modemsenvs.h"
#include "onelinetext.h"
#include "operatortable.h"
#include "wholenumber.h"

#include <mutex>

namespace {

constexpr int kVersion = 1;
const QString VERSION = QStringLiteral("version");
const QString ORDER = QStringLiteral("order");
const QString KEY = QStringLiteral("key");

struct Store
{
    QMap<QString, ModemInfo> modems;
    QStringList order;
    QVariantMap unknown; // header keys of a newer program
};

struct GuardedStore
{
    std::mutex mutex;
    Store data;
};

GuardedStore &store()
{
    static GuardedStore theStore;
    return theStore;
}

bool isName(const QVariant &value)
{
    return value.userType() == QMetaType::QString
        && value.toString().size() <= onelinetext::kMaxLength
        && onelinetext::isValid(value.toString());
}

// Why the header cannot be used; empty when it was read.
QString readHeader(QVariantMap header, Store &into)
{
    const auto version = wholeNumber(header.take(VERSION));
    if (!version || *version < 1)
        return QStringLiteral("its version is missing");
    if (*version > kVersion)
        return QStringLiteral("it is of version %1, newer than this program knows (%2)")
            .arg(*version)
            .arg(kVersion);
    const QVariant order = header.take(ORDER);
    if (order.userType() != QMetaType::QStringList && order.userType() != QMetaType::QVariantList)
        return QStringLiteral("the order of connections is missing");
    const QVariantList names = order.toList();
    if (names.size() > onelinetext::kMaxEntries)
        return QStringLiteral("the order of connections is too long");
    for (const QVariant &name : names) {
        if (!isName(name))
            return QStringLiteral("the order of connections holds something that is not a name");
        into.order << name.toString();
    }
    into.unknown = header;
    return {};
}

QString readRecord(const QVariant &record, Store &into)
{
    if (record.userType() != QMetaType::QVariantMap)
        return QStringLiteral("it is not a map");
    QVariantMap map = record.toMap();
    const QVariant key = map.take(KEY);
    if (!isName(key))
        return QStringLiteral("it has no name");
    if (into.modems.contains(key.toString()))
        return QStringLiteral("the name \"%1\" was there before").arg(key.toString());
    QString error;
    const auto info = ModemInfo::fromMap(map, &error);
    if (!info)
        return error;
    into.modems.insert(key.toString(), *info);
    return {};
}

QString read(const QList<QVariant> &list, Store &into)
{
    if (list.isEmpty())
        return {};
    if (list.size() - 1 > onelinetext::kMaxEntries)
        return QStringLiteral("it has %1 records").arg(list.size() - 1);
    if (list.first().userType() != QMetaType::QVariantMap)
        return QStringLiteral("it has no header");
    QString error = readHeader(list.first().toMap(), into);
    if (!error.isEmpty())
        return error;
    for (int i = 1; i < list.size(); ++i) {
        const QString recordError = readRecord(list.at(i), into);
        if (!recordError.isEmpty())
            return QStringLiteral("record %1: %2").arg(i).arg(recordError);
    }
    return {};
}

OperatorTable readOperators()
{
    OperatorTable table;
    table.read(OperatorTable::SYSTEM_FILE);
    const QString local = ModemsEnvs().operatorsFile();
    if (!local.isEmpty())
        table.read(local);
    return table;
}

} // namespace

QMap<QString, ModemInfo> ModemSettings::modems() const
{
    const std::lock_guard<std::mutex> lock(store().mutex);
    return store().data.modems;
}

void ModemSettings::setModems(const QMap<QString, ModemInfo> &modems)
{
    QMap<QString, ModemInfo> cleaned;
    for (auto it = modems.cbegin(); it != modems.cend(); ++it)
        cleaned.insert(onelinetext::cleaned(it.key()), it.value());
    const std::lock_guard<std::mutex> lock(store().mutex);
    store().data.modems = cleaned;
}

QStringList ModemSettings::connectionsOrder() const
{
    const std::lock_guard<std::mutex> lock(store().mutex);
    return store().data.order;
}

void ModemSettings::setConnectionsOrder(const QStringList &order)
{
    const std::lock_guard<std::mutex> lock(store().mutex);
    store().data.order = onelinetext::cleaned(order);
}

QList<QVariant> ModemSettings::toSettingsList() const
{
    const std::lock_guard<std::mutex> lock(store().mutex);
    const Store &data = store().data;
    QVariantMap header = data.unknown;
    header[VERSION] = kVersion;
    header[ORDER] = data.order;
    QList<QVariant> list{header};
    for (auto it = data.modems.cbegin(); it != data.modems.cend(); ++it) {
        QVariantMap record = it->toMap();
        record[KEY] = it.key();
        list << record;
    }
    return list;
}

bool ModemSettings::setSettingsList(const QList<QVariant> &list)
{
    Store fresh;
    const QString error = read(list, fresh);
    if (!error.isEmpty()) {
        qCWarning(AT_MODEM).noquote() << "The modems settings are not taken:" << error;
        return false;
    }
    const std::lock_guard<std::mutex> lock(store().mutex);
    store().data = fresh;
    return true;
}

bool ModemSettings::getOperatorData(int mcc, int mnc, OperatorData &data) const
{
    static const OperatorTable table = readOperators(); // by one thread, the others wait
    const auto found = table.find(mcc, mnc);
    if (found)
        data = *found;
    return found.has_value();
}
