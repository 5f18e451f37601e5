#pragma once

#include "modeminfo.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

/// What the Settings page does to the store of modems (ModemSettings). Every call is in the store
/// when it returns; saving the store is another's job. Any thread may call.
class ConnectionEdits
{
public:
    /// Changes a record as the user did.
    using Change = std::function<void(ModemInfo &modem)>;

    ConnectionEdits() = delete;

    /// All numbers of a connection as one list, the main one first.
    static QStringList phones(const ModemInfo &modem);
    /// The first number becomes the main one, the rest the further ones; without any there is none.
    static void setPhones(ModemInfo &modem, const QStringList &phones);

    /// These connections take the place of all others, in the order of their names. Of two with one
    /// name the later one counts.
    static void replaceAll(const QList<ModemInfo> &modems);

    /// Forgets all connections. Their order stays: found again, they are used in it.
    static void forgetAll();

    /// Changes the connection `name` if there is one. Then the store holds what the user sees, in
    /// that order and nothing else: a listed name without a record gets a default one.
    static void change(const QString &name, const QStringList &listed, const Change &change);

    /// Takes the connection `name` out; `listed` are the names that stay, in their order.
    static void remove(const QString &name, const QStringList &listed);
};
