#pragma once

#include "ifupdown.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

class Journal;

/// The terminal's wired interfaces, veth pairs, and what their cables lead to: a network namespace
/// named "lan" in which all far ends hang on one switch, with a router at 192.168.0.1/24 that gives
/// out 192.168.0.100 to .199 by DHCP and says of everything else that it cannot be reached. In the
/// terminal nothing shows of it but the interfaces.
///
/// Where no such network can be made, `ifconfig` and `service` are stand-ins that only record how
/// they were called; without ifupdown `service` is.
class WiredNetwork : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(WiredNetwork)

public:
    explicit WiredNetwork(Journal *journal, QObject *parent = nullptr);
    ~WiredNetwork() override;

    /// Makes the interfaces and configures them as /etc/network/interfaces says, as a terminal does
    /// at boot; what ifupdown says to that stands in the journal. False when commands are only
    /// recorded; errorText() tells which and why.
    bool start(const QStringList &interfaces);
    QString errorText() const { return m_errorText; }

private:
    bool makeNetwork(const QStringList &interfaces);
    bool run(const QString &program, const QStringList &arguments, const QByteArray &input = {});
    void startDhcpServer();
    void configure();
    void record(const QStringList &commands);

    Journal *const m_journal;
    Ifupdown m_ifupdown;
    QProcess m_dhcpServer;
    QString m_errorText;
};
