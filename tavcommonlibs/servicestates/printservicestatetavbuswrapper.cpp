#include "printservicestatetavbuswrapper.h"

#include "statebody.h"

namespace {

const auto kServiceState = QStringLiteral("serviceState");

} // namespace

bool PrintServiceStateTavbusWrapper::setClientState(const tavbus::ClientState &state)
{
    const auto number = statebody::integer(state.body(), kServiceState);
    m_state = PrintServiceState(number.value_or(0));
    return number.has_value();
}

QVariantMap PrintServiceStateTavbusWrapper::toStateBody() const
{
    return {{kServiceState, m_state.serviceState()}};
}
