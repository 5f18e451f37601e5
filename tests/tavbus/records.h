#pragma once

#include "clientsettings.h"
#include "clientstate.h"
#include "tavbuscommand.h"

/// Values that several tests of the bus send.
namespace records {

inline tavbus::ClientSettings settings(const QString &owner, const QVariantList &list)
{
    tavbus::ClientSettings result;
    result.setOwner(owner);
    result.setDescription(QStringLiteral("From test dealer"));
    result.setDt(QDateTime::currentDateTime());
    result.setSettings(list);
    return result;
}

inline tavbus::ClientState state(const QDateTime &dt, int mode)
{
    tavbus::ClientState result;
    result.setDt(dt);
    result.setBody({{QStringLiteral("serviceMode"), mode}});
    return result;
}

inline TavBusCommand command(
    const QString &agent, const QString &name, const QVariantMap &data = {})
{
    TavBusCommand result;
    result.setAgent(agent);
    result.setName(name);
    if (!data.isEmpty())
        result.setData(data);
    return result;
}

/// A value inside so many lists.
inline QVariant nested(int levels, QVariant value = 1)
{
    for (int i = 0; i < levels; ++i)
        value = QVariantList({value});
    return value;
}

} // namespace records
