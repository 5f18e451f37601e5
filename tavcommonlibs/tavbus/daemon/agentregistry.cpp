#include "agentregistry.h"

#include <algorithm>

namespace tavbus {

AgentRegistry::Answer AgentRegistry::add(
    const QString &agent, const QString &connection, uint user, bool listens)
{
    const QList<Member> members = m_members.value(agent);
    const auto same = std::find_if(members.cbegin(), members.cend(),
        [&](const Member &member) { return member.connection == connection; });
    if (same != members.cend()) {
        m_members[agent][int(same - members.cbegin())].listens = listens;
        return Answer::Registered;
    }
    if (!members.isEmpty() && user != 0 && members.constFirst().user != user)
        return Answer::Taken;
    if (members.size() >= kMaxConnectionsOfAgent
        || m_agentsOf.value(connection).size() >= kMaxAgentsOfConnection)
        return Answer::TooMany;
    m_members[agent].append({connection, user, listens});
    m_agentsOf[connection].insert(agent);
    return Answer::Registered;
}

void AgentRegistry::removeConnection(const QString &connection)
{
    const QSet<QString> agents = m_agentsOf.take(connection);
    for (const QString &agent : agents) {
        QList<Member> &members = m_members[agent];
        members.erase(std::remove_if(members.begin(), members.end(),
                          [&](const Member &member) { return member.connection == connection; }),
            members.end());
        if (members.isEmpty())
            m_members.remove(agent);
    }
}

bool AgentRegistry::speaksAs(const QString &connection, const QString &agent) const
{
    return m_agentsOf.value(connection).contains(agent);
}

std::optional<uint> AgentRegistry::userOf(const QString &connection) const
{
    const QSet<QString> agents = m_agentsOf.value(connection);
    if (agents.isEmpty())
        return std::nullopt;
    const QList<Member> members = m_members.value(*agents.cbegin());
    return std::find_if(members.cbegin(), members.cend(), [&](const Member &member) {
        return member.connection == connection;
    })->user;
}

QStringList AgentRegistry::listeners(const QString &agent) const
{
    QStringList connections;
    const QList<Member> members = m_members.value(agent);
    for (const Member &member : members) {
        if (member.listens)
            connections.append(member.connection);
    }
    return connections;
}

} // namespace tavbus
