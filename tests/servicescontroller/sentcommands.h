#pragma once

#include <QProcess>
#include <QStringList>

/// Every command that anybody gives to the broker, in the order in which the bus carried them, as
/// "AGENT NAME" or "AGENT NAME KEY=TYPE VALUE": a D-Bus monitor of its own listens.
class SentCommands
{
    Q_DISABLE_COPY_MOVE(SentCommands)

public:
    explicit SentCommands(const QString &busAddress);
    ~SentCommands();

    /// All so far and none that is still to come: what was sent before the call is in it.
    QStringList take();

private:
    QString line();

    QString m_address;
    QProcess m_monitor;
};
