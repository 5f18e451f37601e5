#include "interfacesettings.h"

bool InterfaceSettings::operator==(const InterfaceSettings &other) const
{
    return m_useDhcp == other.m_useDhcp && m_address == other.m_address
        && m_netMask == other.m_netMask && m_gateway == other.m_gateway
        && m_dnsServers == other.m_dnsServers;
}
