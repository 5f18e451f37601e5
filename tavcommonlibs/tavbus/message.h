#pragma once

#include <QString>
#include <QVariantMap>

namespace tavbus {

/**
 * What TavBusQueryHandler::sendMessage() carries to an agent: a value. Made by
 * TavBusCommand::toOutgoingMessage().
 */
struct Message
{
    QString receiver; ///< bus name of the agent
    QString name; ///< the command
    QVariantMap data; ///< its arguments, empty when it has none

    friend bool operator==(const Message &a, const Message &b)
    {
        return a.receiver == b.receiver && a.name == b.name && a.data == b.data;
    }
    friend bool operator!=(const Message &a, const Message &b) { return !(a == b); }
};

} // namespace tavbus
