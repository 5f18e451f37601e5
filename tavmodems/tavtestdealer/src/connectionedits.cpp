#include "connectionedits.h"

#include "modemsettings.h"

QStringList ConnectionEdits::phones(const ModemInfo &modem)
{
    return QStringList(modem.phone()) + modem.phones();
}

void ConnectionEdits::setPhones(ModemInfo &modem, const QStringList &phones)
{
    modem.setPhone(phones.value(0));
    modem.setPhones(phones.mid(1));
}

void ConnectionEdits::replaceAll(const QList<ModemInfo> &modems)
{
    QMap<QString, ModemInfo> map;
    for (const ModemInfo &modem : modems)
        map.insert(modem.connectionName(), modem);
    ModemSettings store;
    store.setModems(map);
    store.setConnectionsOrder(map.keys());
}

void ConnectionEdits::forgetAll()
{
    ModemSettings().setModems({});
}

void ConnectionEdits::change(
    const QString &name, const QStringList &listed, const ConnectionEdits::Change &change)
{
    ModemSettings store;
    QMap<QString, ModemInfo> modems = store.modems();
    const auto edited = modems.find(name);
    if (edited != modems.end())
        change(*edited);
    QMap<QString, ModemInfo> kept;
    for (const QString &each : listed)
        kept.insert(each, modems.value(each));
    store.setModems(kept);
    store.setConnectionsOrder(listed);
}

void ConnectionEdits::remove(const QString &name, const QStringList &listed)
{
    ModemSettings store;
    QMap<QString, ModemInfo> modems = store.modems();
    modems.remove(name);
    store.setModems(modems);
    store.setConnectionsOrder(listed);
}
