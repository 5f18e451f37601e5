#include "watchdogstate.h"

#include "statebody.h"

namespace {

const auto kState = QStringLiteral("state");

} // namespace

bool WatchdogState::setClientState(const tavbus::ClientState &state)
{
    const auto number = statebody::integer(state.body(), kState);
    m_state = number.value_or(0);
    return number.has_value();
}

QVariantMap WatchdogState::toStateBody() const
{
    return {{kState, m_state}};
}
