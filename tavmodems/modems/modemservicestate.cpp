#include "modemservicestate.h"

#include "wholenumber.h"

namespace {

const QString SERVICE_MODE = QStringLiteral("serviceMode");

} // namespace

void ModemServiceState::setClientState(const tavbus::ClientState &state)
{
    const int number = wholeNumber(state.body().value(SERVICE_MODE)).value_or(Unknown);
    m_mode = number >= Unknown && number <= Stopped ? static_cast<Mode>(number) : Unknown;
}

QVariantMap ModemServiceState::toStateBody() const
{
    return {{SERVICE_MODE, static_cast<int>(m_mode)}};
}
