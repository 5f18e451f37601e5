#pragma once

#include <QCoreApplication>
#include <QMap>
#include <QString>

#include <functional>

class AtModem;
class ModemInfo;
class OperatorData;

/// Asks a connection's modem for all that the "Ask modem" page shows: network and cell, operator,
/// number, balance, signal; the messages that were received go to the log with everything else that
/// the modem tells. Blocks for as long as the driver's calls do, in the driver's thread.
class ConnectionQuery
{
    Q_DECLARE_TR_FUNCTIONS(ModemAckWidget) // its texts are that page's

public:
    /// Hears of a result as soon as it is there: a paragraph of rich text.
    using Show = std::function<void(const QString &html)>;

    /// The driver is not owned.
    ConnectionQuery(AtModem &driver, Show show);

    /// Opens the modem's port, asks, and closes the port. The record under `name` is completed from
    /// the operator's data; a missing one is added empty. False when the port does not open, or the
    /// network or its operator is not known; why is in the log.
    bool run(const QString &name, QMap<QString, ModemInfo> &modems);

    /// Adds the operator's initialisation line, unless the record has it, and fills in a user name
    /// and a password that are empty.
    static void complete(ModemInfo &modem, const OperatorData &operatorData);

private:
    bool ask(const QString &name, ModemInfo &modem);
    bool identify(OperatorData &operatorData);
    void askNumber(const OperatorData &operatorData);
    void askBalance(const OperatorData &operatorData);
    void askSignal();
    void takeMessages();
    void show(const QString &label, const QString &value);

    AtModem &m_driver;
    const Show m_show;
};
