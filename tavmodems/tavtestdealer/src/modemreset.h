#pragma once

#include <QString>
#include <QtGlobal>

#include <functional>

class ModemInfo;
class QObject;

/// Brings a modem into the state that the dialer expects: opens its port, resets it, silences it
/// and closes the port again, so that the dialer finds it free. Whatever comes of it, the dial goes
/// on: the dialer may get along with the modem.
///
/// For any thread with an event loop; blocks for as long as AtModem's calls do.
class ModemReset
{
public:
    static constexpr int kHighestBaudrate = 57600; ///< no port is opened faster
    static constexpr int kOpenAttempts = 3;

    /// Hears of the steps as they are made: debug messages, and warnings with the reason of a
    /// failure.
    using Tell = std::function<void(QtMsgType type, const QString &text)>;

    ModemReset() = delete;

    /// The driver is a child of parent until the event loop comes round.
    static void run(const ModemInfo &modem, QObject *parent, const Tell &tell);

    /// The same without a word.
    static void run(const ModemInfo &modem, QObject *parent);
};
