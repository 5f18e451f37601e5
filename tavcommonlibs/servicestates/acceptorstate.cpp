#include "acceptorstate.h"

#include "statebody.h"

#include <algorithm>

namespace {

const auto kAcceptors = QStringLiteral("acceptors");
const auto kThreadId = QStringLiteral("thread_id");
const auto kDisabled = QStringLiteral("disabled");

} // namespace

bool AcceptorState::loadFromClientState(const tavbus::ClientState &state)
{
    m_acceptors.clear();
    const QVariant list = state.body().value(kAcceptors);
    if (list.type() != QVariant::List)
        return false;

    QVector<Acceptor> acceptors;
    const QVariantList entries = list.toList();
    for (const QVariant &entry : entries) {
        const QVariantMap map = entry.toMap();
        const auto threadId = statebody::integer(map, kThreadId);
        const auto disabled = statebody::boolean(map, kDisabled);
        if (!threadId || !disabled)
            return false;
        acceptors.append({*threadId, *disabled});
    }
    m_acceptors = acceptors;
    return true;
}

bool AcceptorState::allDisabled() const
{
    return std::all_of(m_acceptors.begin(), m_acceptors.end(),
        [](const Acceptor &acceptor) { return acceptor.disabled; });
}

QVariantMap AcceptorState::toStateBody() const
{
    QVariantList list;
    for (const Acceptor &acceptor : m_acceptors)
        list << QVariantMap{{kThreadId, acceptor.threadId}, {kDisabled, acceptor.disabled}};
    return {{kAcceptors, list}};
}
