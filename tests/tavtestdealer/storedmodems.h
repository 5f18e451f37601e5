#pragma once

#include "modemsettings.h"

const QString gsm1 = QStringLiteral("gsm1");

/// A record that says no more than its name and where its modem is.
inline ModemInfo modemOn(const QString &port, const QString &name = gsm1)
{
    ModemInfo modem;
    modem.setConnectionName(name);
    modem.setPortName(port);
    return modem;
}

/// Has the process's store hold these records alone, in this order.
inline void store(const QList<ModemInfo> &modems)
{
    QMap<QString, ModemInfo> map;
    QStringList order;
    for (const ModemInfo &modem : modems) {
        map.insert(modem.connectionName(), modem);
        order.append(modem.connectionName());
    }
    ModemSettings().setModems(map);
    ModemSettings().setConnectionsOrder(order);
}
