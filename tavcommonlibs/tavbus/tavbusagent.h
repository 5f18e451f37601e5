#pragma once

#include "clientstate.h"
#include "tavbuscommand.h"

#include <QObject>
#include <QTimer>

namespace tavbus {

class BrokerLink;

/**
 * A service's side of the bus: hears the commands given to its name and publishes its state.
 *
 * Once opened it stays so by itself until close(): after a restart of the broker it registers
 * again, after one of the whole bus it connects again. closed() tells of the gap, opened() of its
 * end. Commands given in between are refused to their sender, never lost unsaid.
 *
 * Belongs to one thread, which needs an event loop. The connection is the agent's own.
 */
class TavBusAgent : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TavBusAgent)

public:
    explicit TavBusAgent(const QString &agent, QObject *parent = nullptr);
    ~TavBusAgent() override;

    QString agent() const;

    /// Connects and registers; blocks for 5 s at most. After false nothing goes on by itself.
    bool open();
    /// Registered: commands come in.
    bool isOpen() const;
    void close();

    /// Publishes the state, stamped now. True once the broker keeps it; blocks for 5 s at most.
    bool publishState(const QVariantMap &body);
    /// The same with the state's own time stamp.
    bool publishState(const tavbus::ClientState &state);

signals:
    void commandReceived(const TavBusCommand &command);
    void opened();
    void closed();

private:
    void setOpen(bool open);
    void listen();
    void brokerChanged(const QString &owner);
    void cutOff();
    void tryAgain();
    void registerAgain();

    BrokerLink *const m_link; // child of this
    QTimer m_retry; // runs while opened but cut off
    bool m_wanted = false; // between open() and close()
    bool m_open = false;
};

} // namespace tavbus
