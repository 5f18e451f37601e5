#pragma once

#include "atcell.h"
#include "atnetwork.h"

#include <QMap>
#include <QString>
#include <QVariant>

#include <chrono>
#include <optional>

class AtSession;
struct AtReply;

/** What an open modem knows of itself, its SIM card and the network it is in. */
class NetworkQuery
{
public:
    /** `session` outlives this. */
    explicit NetworkQuery(AtSession &session)
        : m_session(session)
    {
    }

    /** The network that the modem is registered in, or else the one its SIM card is of; 12 s at
     * most. None with the session's error. */
    std::optional<MobileNetwork> network();
    /** The network that its SIM card is of, 5 s at most. None with the session's error. */
    std::optional<MobileNetwork> homeNetwork();
    /** The modem's serial number, 2 s at most. None with the session's error. */
    std::optional<QString> imei();
    /** The cell that the modem is registered in, 9 s at most. None with the session's error. */
    std::optional<AtCell> cell();
    /** The signal's strength in dBm, 4 s at most. None with the session's error. */
    std::optional<int> signalLevel();
    /** AtModem::getInfo(). None with the session's error. */
    std::optional<QMap<QString, QVariant>> info();

private:
    AtReply ask(const QByteArray &command, std::chrono::milliseconds limit);
    bool isLost() const;
    std::optional<MobileNetwork> cardNetwork(const QString &complaint);
    std::optional<AtCell> registration();
    QByteArray iccid();
    AtOperator namedOperator();

    AtSession &m_session;
    int m_unanswered = 0; // questions in a row
};
