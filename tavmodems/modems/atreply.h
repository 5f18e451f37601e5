#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>

/** How one AT command ended and what came before the end. */
struct AtReply
{
    Q_GADGET

public:
    enum class Status {
        Ok,
        Connect, ///< a data call is up; what follows is data
        NoCarrier,
        Busy,
        NoAnswer,
        NoDialtone,
        Error, ///< ERROR, +CME ERROR, +CMS ERROR and their relatives
        Timeout, ///< no final result within the limit
        Flood, ///< more than any answer holds: not a modem, or one gone mad
        PortGone, ///< the port vanished or was hung up
        Refused ///< not sent: the command holds a control character
    };
    Q_ENUM(Status)

    Status status = Status::Timeout;
    QList<QByteArray> lines; ///< without echo, unsolicited lines and the final result
    QList<QByteArray> unsolicited; ///< lines that had nothing to do with the command
    int errorCode = -1; ///< number of a +CME or +CMS error (3GPP TS 27.007 9.2, 27.005 3.2.5)
    QByteArray errorText; ///< the final line of a failure, as it came
    bool heard = false; ///< something came from the port, be it garbage

    bool isOk() const { return status == Status::Ok; }
    /** The modem did not end its answer: what it does next cannot be relied on. */
    bool isLost() const
    {
        return status == Status::Timeout || status == Status::Flood || status == Status::PortGone;
    }
};
