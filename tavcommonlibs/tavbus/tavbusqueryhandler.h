#pragma once

#include "clientsettings.h"
#include "clientstate.h"
#include "message.h"

#include <QObject>
#include <QStringList>

#include <chrono>

namespace tavbus {

class BrokerLink;

/**
 * A tool's side of the bus: reads and writes settings, reads states, sends commands.
 *
 * Every call blocks until the broker has answered and gives up after timeLimit(), a dead or frozen
 * bus included; none runs an event loop and none logs. After a call that got no answer in that time
 * all others, open() included, fail at once until the event loop has turned: one slot blocks for
 * one limit at most, however many calls it makes. All fail with false while the handler is not
 * open. A broker that died is started again by the next call, unnoticed by the caller.
 *
 * Belongs to one thread. The connection is the handler's own and ends with it.
 */
class TavBusQueryHandler : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TavBusQueryHandler)

public:
    /// Speaks as \a agent; does not connect.
    explicit TavBusQueryHandler(const QString &agent, QObject *parent = nullptr);
    ~TavBusQueryHandler() override;

    bool isOpen() const;
    /// Connects to the bus that InitConfig::busAddress() names and tells the broker who speaks.
    /// True at once when already open.
    bool open();
    void close();

    /// Stores the record under its owner. True only once it outlives a crash or power cut.
    bool saveSettings(tavbus::ClientSettings settings);
    /// False, with \a settings unchanged, when the owner has no record.
    bool loadSettings(const QString &owner, tavbus::ClientSettings &settings);
    /// Records in the order of \a owners; owners without one are left out. False, with \a list
    /// unchanged, when the broker could not be asked.
    bool loadSettings(const QStringList &owners, QList<tavbus::ClientSettings> &list);
    /// True when no record is left, whether there was one or not. \a withState: also forget the
    /// state that the owner last published.
    bool removeSettings(QString owner, bool withState);

    /// The state last published by \a agent, however old. False, with \a state unchanged, when it
    /// never published one.
    bool loadState(const QString &agent, tavbus::ClientState &state);

    /// True when the message went to at least one live connection of its receiver.
    bool sendMessage(tavbus::Message message);

    /// How long a call may take in all, 5 s at first.
    std::chrono::milliseconds timeLimit() const;
    void setTimeLimit(std::chrono::milliseconds limit);

private:
    BrokerLink *const m_link; // child of this
};

} // namespace tavbus
