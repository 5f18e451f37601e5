#include "tavbuscommand.h"

tavbus::Message TavBusCommand::toOutgoingMessage() const
{
    return {m_agent, m_name, m_data};
}
