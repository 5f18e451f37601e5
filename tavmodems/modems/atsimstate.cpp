#include "atsimstate.h"

#include "atfields.h"

AtSimState parseSimState(const AtReply &reply)
{
    switch (reply.errorCode) {
    case 10:
        return AtSimState::Missing;
    case 11:
        return AtSimState::PinNeeded;
    case 12:
        return AtSimState::PukNeeded;
    case 13:
    case 15:
        return AtSimState::Failed;
    case 14:
        return AtSimState::Busy;
    default:
        break;
    }
    const auto value = atfields::valueOf("+CPIN", reply.lines);
    if (!reply.isOk() || !value)
        return AtSimState::Unknown;
    const QByteArray code = atfields::unquoted(*value);
    if (code == "READY")
        return AtSimState::Ready;
    if (code == "NOT INSERTED") // said by some with OK behind it
        return AtSimState::Missing;
    if (code == "NOT READY")
        return AtSimState::Busy;
    if (code.endsWith("PUK") || code.endsWith("PUK2"))
        return AtSimState::PukNeeded;
    return code.endsWith("PIN") || code.endsWith("PIN2") ? AtSimState::PinNeeded
                                                         : AtSimState::Unknown;
}
