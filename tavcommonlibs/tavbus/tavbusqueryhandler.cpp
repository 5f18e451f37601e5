#include "tavbusqueryhandler.h"

#include "brokerlink.h"
#include "buserrors.h"
#include "tavbus1proxy.h"
#include "wire.h"

#include <algorithm>

namespace tavbus {

namespace {

using SettingsReply = QDBusPendingReply<QString, qlonglong, QVariantList>;

std::optional<ClientSettings> record(const QString &owner, const SettingsReply &reply)
{
    if (reply.isError())
        return {};
    const auto settings = wire::checked(reply.argumentAt<2>(), wire::kMaxRecord);
    if (!settings)
        return {};
    ClientSettings result;
    result.setOwner(owner);
    result.setDescription(reply.argumentAt<0>());
    result.setDt(wire::toDateTime(reply.argumentAt<1>()));
    result.setSettings(*settings);
    return result;
}

} // namespace

TavBusQueryHandler::TavBusQueryHandler(const QString &agent, QObject *parent)
    : QObject(parent)
    , m_link(new BrokerLink(agent, BrokerLink::Role::Speaks, this))
{
}

TavBusQueryHandler::~TavBusQueryHandler() = default;

bool TavBusQueryHandler::isOpen() const
{
    return m_link->isOpen();
}

bool TavBusQueryHandler::open()
{
    return wire::isName(m_link->agent()) && m_link->open();
}

void TavBusQueryHandler::close()
{
    m_link->close();
}

// The terminal's other programs are written against this signature.
// cppcheck-suppress passedByValue
bool TavBusQueryHandler::saveSettings(tavbus::ClientSettings settings)
{
    const auto list = wire::checked(settings.settings(), wire::kMaxRecord);
    if (!isOpen() || !list || !wire::isName(settings.owner())
        || !wire::isText(settings.description()))
        return false;
    const auto reply = m_link->ask([&] {
        return m_link->broker()->saveSettings(
            settings.owner(), settings.description(), wire::fromDateTime(settings.dt()), *list);
    });
    return !reply.isError();
}

bool TavBusQueryHandler::loadSettings(const QString &owner, tavbus::ClientSettings &settings)
{
    QList<ClientSettings> list;
    if (!loadSettings(QStringList(owner), list) || list.isEmpty())
        return false;
    settings = list.constFirst();
    return true;
}

bool TavBusQueryHandler::loadSettings(
    const QStringList &owners, QList<tavbus::ClientSettings> &list)
{
    if (!isOpen() || !std::all_of(owners.cbegin(), owners.cend(), wire::isName))
        return false;
    const QDeadlineTimer deadline = m_link->newDeadline(); // for all of them together
    QList<ClientSettings> found;
    for (const QString &owner : owners) {
        const SettingsReply reply
            = m_link->ask([&] { return m_link->broker()->loadSettings(owner); }, deadline);
        if (reply.isError() && reply.error().name() == ERROR_NOT_FOUND)
            continue;
        const auto settings = record(owner, reply);
        if (!settings)
            return false;
        found.append(*settings);
    }
    list = found;
    return true;
}

bool TavBusQueryHandler::removeSettings(QString owner, bool withState)
{
    if (!isOpen() || !wire::isName(owner))
        return false;
    const auto reply
        = m_link->ask([&] { return m_link->broker()->removeSettings(owner, withState); });
    return !reply.isError();
}

bool TavBusQueryHandler::loadState(const QString &agent, tavbus::ClientState &state)
{
    if (!isOpen() || !wire::isName(agent))
        return false;
    const QDBusPendingReply<qlonglong, QVariantMap> reply
        = m_link->ask([&] { return m_link->broker()->loadState(agent); });
    if (reply.isError())
        return false;
    const auto body = wire::checked(reply.argumentAt<1>(), wire::kMaxState);
    if (!body)
        return false;
    state.setDt(wire::toDateTime(reply.argumentAt<0>()));
    state.setBody(*body);
    return true;
}

bool TavBusQueryHandler::sendMessage(tavbus::Message message)
{
    const auto data = wire::checked(message.data, wire::kMaxState);
    if (!isOpen() || !data || !wire::isName(message.receiver) || !wire::isName(message.name))
        return false;
    const QDBusPendingReply<bool> reply = m_link->ask(
        [&] { return m_link->broker()->sendCommand(message.receiver, message.name, *data); });
    return !reply.isError() && reply.value();
}

std::chrono::milliseconds TavBusQueryHandler::timeLimit() const
{
    return m_link->timeLimit();
}

void TavBusQueryHandler::setTimeLimit(std::chrono::milliseconds limit)
{
    m_link->setTimeLimit(limit);
}

} // namespace tavbus
