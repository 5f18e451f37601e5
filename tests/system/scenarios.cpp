#include "scenarios.h"

#include "connections.h"
#include "failures.h"
#include "networks.h"
#include "powercuts.h"
#include "searches.h"
#include "users.h"

#include <QMap>

namespace {

using Walk = std::function<void(const QString &)>;

template <typename Group>
Walk of(void (Group::*walk)())
{
    return [walk](const QString &pictures) { (Group(pictures).*walk)(); };
}

} // namespace

Walk walkThrough(const QString &scenario)
{
    static const QMap<QString, Walk> all{
        {QStringLiteral("dial"), of(&Connections::dial)},
        {QStringLiteral("takeover"), of(&Connections::takeover)},
        {QStringLiteral("search"), of(&Searches::search)},
        {QStringLiteral("ask"), of(&Searches::ask)},
        {QStringLiteral("refused"), of(&Failures::refused)},
        {QStringLiteral("unplugged"), of(&Failures::unplugged)},
        {QStringLiteral("network"), of(&Networks::network)},
        {QStringLiteral("modem-settings"), of(&PowerCuts::modemSettings)},
        {QStringLiteral("network-settings"), of(&PowerCuts::networkSettings)},
        {QStringLiteral("password"), of(&Failures::password)},
        {QStringLiteral("silence"), of(&Failures::silence)},
        {QStringLiteral("users"), of(&Users::users)},
        {QStringLiteral("second-user"), of(&Users::secondUser)},
        {QStringLiteral("second-user-again"), of(&Users::secondUserAgain)},
        {QStringLiteral("outsider"), of(&Users::outsider)},
        {QStringLiteral("display"), of(&Users::display)},
    };
    return all.value(scenario);
}
