#include "printservicestate.h"

PrintServiceState::PrintServiceState(int serviceState)
    : m_serviceState(serviceState)
{
}

bool PrintServiceState::isStopped() const
{
    return m_serviceState == STOPPED || m_serviceState == DISABLED;
}
