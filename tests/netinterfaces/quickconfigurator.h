#pragma once

#include "ethernetconfigurator.h"

#include <functional>

/// A configurator whose interfaces the test names, which reads the file it is given, does not wait
/// before each command, and calls the test at the beginning of each such pause and instead of
/// flushing to the disk.
class QuickConfigurator : public EthernetConfigurator
{
public:
    explicit QuickConfigurator(const QStringList &active = {}, const QString &file = QString(),
        const QStringList &inactive = {})
        : EthernetConfigurator(nullptr, file)
    {
        for (const QString &name : active)
            interfaces.append({name, true});
        for (const QString &name : inactive)
            interfaces.append({name, false});
    }

    QVector<QPair<QString, bool>> interfaces;
    std::chrono::milliseconds pause{0};
    std::chrono::milliseconds longest{30000}; // to wait for at the end of the program
    std::function<void()> atPause = [] {};
    std::function<void()> atFlush = [] {};

protected:
    QVector<QPair<QString, bool>> ethernetInterfaces() const override { return interfaces; }
    std::chrono::milliseconds pauseBeforeCommand() const override
    {
        atPause();
        return pause;
    }
    std::chrono::milliseconds longestFinish() const override { return longest; }
    void flushToDisk() const override { atFlush(); }
};

using SettingsMap = QHash<QString, InterfaceSettings>;
Q_DECLARE_METATYPE(SettingsMap)

inline InterfaceSettings staticSettings(const QString &address = {}, const QString &netMask = {},
    const QString &gateway = {}, const QString &dnsServers = {})
{
    InterfaceSettings settings;
    settings.setUseDhcp(false);
    settings.setAddress(address);
    settings.setNetMask(netMask);
    settings.setGateway(gateway);
    settings.setDnsServers(dnsServers);
    return settings;
}
