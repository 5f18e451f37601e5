#pragma once

#include <QMetaType>
#include <QString>

/// IPv4 settings of one wired interface. Nothing is checked or normalised here: what was typed is
/// what is kept.
class InterfaceSettings
{
public:
    /// True: the address comes by DHCP and the texts below mean nothing.
    bool useDhcp() const { return m_useDhcp; }
    void setUseDhcp(bool useDhcp) { m_useDhcp = useDhcp; }

    QString address() const { return m_address; }
    void setAddress(const QString &address) { m_address = address; }

    QString netMask() const { return m_netMask; }
    void setNetMask(const QString &netMask) { m_netMask = netMask; }

    QString gateway() const { return m_gateway; }
    void setGateway(const QString &gateway) { m_gateway = gateway; }

    /// Addresses with a space between them.
    QString dnsServers() const { return m_dnsServers; }
    void setDnsServers(const QString &dnsServers) { m_dnsServers = dnsServers; }

    /// All five fields count, the texts of a DHCP record too.
    bool operator==(const InterfaceSettings &other) const;
    bool operator!=(const InterfaceSettings &other) const { return !(*this == other); }

private:
    bool m_useDhcp = true;
    QString m_address;
    QString m_netMask;
    QString m_gateway;
    QString m_dnsServers;
};

Q_DECLARE_METATYPE(InterfaceSettings)
