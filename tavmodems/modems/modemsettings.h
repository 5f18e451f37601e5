#pragma once

#include "modeminfo.h"
#include "operatordata.h"

#include <QList>
#include <QMap>
#include <QStringList>
#include <QVariant>

/**
 * The store of all connections and of their order of use. There is one store in a process: every
 * instance is a handle on it, made where it is needed. Any thread may use it.
 *
 * The settings list is the form in which the store is saved: first a map with "version" (1) and
 * "order" (the connections, preferred first), then one map per record: ModemInfo::toMap() and
 * "key", the record's name in the store.
 */
class ModemSettings
{
public:
    /** The connections by name. */
    QMap<QString, ModemInfo> modems() const;
    /** Replaces all connections; the order stays as it is. Names lose their control characters. */
    void setModems(const QMap<QString, ModemInfo> &modems);

    /** Names in order of use. It may name connections that are not there, and leave some out. */
    QStringList connectionsOrder() const;
    /** Replaces the order. Names lose their control characters. */
    void setConnectionsOrder(const QStringList &order);

    QList<QVariant> toSettingsList() const;

    /**
     * Replaces the whole store by what toSettingsList() described; an empty list is an empty
     * store. Keys unknown here are kept and come out of toSettingsList() again. A list of a later
     * version, or one that toSettingsList() cannot have written (something that is not a map, a
     * record without a name, two of one name, a wrong type, a control character, absurd sizes), is
     * refused whole: the store stays as it was, the reason is logged as a warning, false returned.
     * An order that names unknown connections or leaves some out is taken as it is: both arise
     * in use.
     */
    bool setSettingsList(const QList<QVariant> &list);

    /**
     * What is known of the operator of a network, by its mobile country and network codes. The
     * table (OperatorTable::SYSTEM_FILE, ModemsEnvs::operatorsFile() laid over it) is read at the
     * first call in the process, some tens of milliseconds; then a call takes microseconds. False
     * when the network is unknown: `data` stays as it was.
     */
    bool getOperatorData(int mcc, int mnc, OperatorData &data) const;
};
