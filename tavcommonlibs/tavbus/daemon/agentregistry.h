#pragma once

#include <QHash>
#include <QSet>
#include <QString>
#include <QStringList>

#include <optional>

namespace tavbus {

/**
 * Which connection of the bus speaks as which agent.
 *
 * The user who comes first holds an agent's name as long as one of its connections lives: other
 * users are refused, further connections of the same user are not. Root may join any name, and
 * keeps it from others once it is there alone.
 */
class AgentRegistry
{
public:
    enum class Answer { Registered, Taken, TooMany };

    static constexpr int kMaxAgentsOfConnection = 16;
    static constexpr int kMaxConnectionsOfAgent = 256;

    /// \a connection: unique bus name; \a user: the uid behind it. Registering again only changes
    /// whether it listens.
    Answer add(const QString &agent, const QString &connection, uint user, bool listens);
    void removeConnection(const QString &connection);

    /// Whether the connection speaks as this agent; as any agent.
    bool speaksAs(const QString &connection, const QString &agent) const;
    bool isKnown(const QString &connection) const { return m_agentsOf.contains(connection); }

    /// The user behind a known connection.
    std::optional<uint> userOf(const QString &connection) const;

    QStringList listeners(const QString &agent) const;

private:
    struct Member
    {
        QString connection;
        uint user = 0;
        bool listens = false;
    };

    QHash<QString, QList<Member>> m_members; // by agent, first come first; never an empty list
    QHash<QString, QSet<QString>> m_agentsOf; // by connection
};

} // namespace tavbus
