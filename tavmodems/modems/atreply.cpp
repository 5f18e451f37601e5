#include "atreply.h"

namespace {

const char *name(AtReply::Status status)
{
    switch (status) {
    case AtReply::Status::Ok:
        return "Ok";
    case AtReply::Status::Connect:
        return "Connect";
    case AtReply::Status::NoCarrier:
        return "NoCarrier";
    case AtReply::Status::Busy:
        return "Busy";
    case AtReply::Status::NoAnswer:
        return "NoAnswer";
    case AtReply::Status::NoDialtone:
        return "NoDialtone";
    case AtReply::Status::Error:
        return "Error";
    case AtReply::Status::Timeout:
        return "Timeout";
    case AtReply::Status::Flood:
        return "Flood";
    case AtReply::Status::PortGone:
        return "PortGone";
    case AtReply::Status::Refused:
        return "Refused";
    }
    return "?";
}

} // namespace

QDebug operator<<(QDebug debug, AtReply::Status status)
{
    return debug << name(status);
}

QDebug operator<<(QDebug debug, const AtReply &reply)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "AtReply(" << name(reply.status) << ", " << reply.lines << ", "
                           << reply.errorCode << ')';
}
