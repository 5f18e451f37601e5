#include "networkcommands.h"

#include "gsmtext.h"
#include "modemstate.h"
#include "portsession.h"

namespace {

constexpr int kNoNetwork = 30;
constexpr int kLte = 7; // <AcT> of 3GPP TS 27.007, 7.3

} // namespace

NetworkCommands::NetworkCommands(PortSession *session)
    : m_session(session)
{
    powerUp();
}

void NetworkCommands::powerUp()
{
    m_operatorFormat = 0;
    m_registrationModes.clear();
}

std::optional<CommandReply> NetworkCommands::execute(const ParsedCommand &command)
{
    using Kind = ParsedCommand::Kind;
    ModemState *modem = m_session->modem;
    if (command.name == "+CREG" || command.name == "+CGREG" || command.name == "+CEREG") {
        if (!knowsRegistration(command.name))
            return CommandReply::error();
        if (command.kind == Kind::Read)
            return registration(command.name);
        if (command.kind == Kind::Test)
            return CommandReply::ok({command.name + ": (0-2)"});
        const int mode = command.number(0);
        if (mode < 0 || mode > 2)
            return CommandReply::error();
        m_registrationModes.insert(command.name, mode);
        return CommandReply::ok();
    }
    if (command.name == "+CSQ") {
        if (command.kind == Kind::Test)
            return CommandReply::ok({"+CSQ: (0-31,99),(0-7,99)"});
        if (command.kind == Kind::Run)
            return CommandReply::ok({modem->filled(QStringLiteral("+CSQ: {rssi},99"))});
    }
    if (command.is(Kind::Read, "+COPS"))
        return operatorName();
    if (command.is(Kind::Test, "+COPS"))
        return operators();
    if (command.is(Kind::Set, "+COPS"))
        return setOperator(command);
    if (command.is(Kind::Read, "+CFUN"))
        return CommandReply::ok({"+CFUN: " + QByteArray::number(modem->functionality)});
    if (command.is(Kind::Test, "+CFUN"))
        return CommandReply::ok({"+CFUN: (0,1,4),(0,1)"});
    if (command.is(Kind::Set, "+CFUN"))
        return setFunctionality(command);
    if (command.is(Kind::Read, "+CCLK")) {
        return CommandReply::ok(
            {"+CCLK: " + quoted(gsmtext::timeText(QDateTime::currentDateTimeUtc()))});
    }
    if (command.is(Kind::Read, "+CGATT"))
        return CommandReply::ok({modem->isRegistered() ? "+CGATT: 1" : "+CGATT: 0"});
    if (command.is(Kind::Read, "+CGDCONT"))
        return contexts();
    if (command.is(Kind::Set, "+CGDCONT"))
        return setContext(command);
    if (command.is(Kind::Test, "+CGDCONT"))
        return CommandReply::ok({"+CGDCONT: (1-16),\"IP\",,,(0-2),(0-4)"});
    return {};
}

// A modem of an older generation than the network part asked for does not know the command.
bool NetworkCommands::knowsRegistration(const QByteArray &name) const
{
    return name != "+CEREG" || m_session->modem->profile.accessTechnology == kLte;
}

CommandReply NetworkCommands::setFunctionality(const ParsedCommand &command)
{
    const int level = command.number(0);
    if (level != 0 && level != 1 && level != 4)
        return CommandReply::error();
    m_session->modem->functionality = level;
    CommandReply reply = CommandReply::ok();
    reply.resets = command.number(1) == 1;
    return reply;
}

CommandReply NetworkCommands::registration(const QByteArray &name) const
{
    const ModemState &modem = *m_session->modem;
    const int mode = m_registrationModes.value(name);
    QByteArray line
        = name + ": " + QByteArray::number(mode) + ',' + QByteArray::number(modem.registration());
    if (mode == 2)
        line += modem.filled(
            modem.isRegistered() ? modem.profile.location : modem.profile.noLocation);
    return CommandReply::ok({line});
}

CommandReply NetworkCommands::operatorName() const
{
    const ModemState &modem = *m_session->modem;
    if (!modem.isRegistered())
        return CommandReply::ok({modem.detached ? "+COPS: 2" : "+COPS: 0"});
    QByteArray name = modem.filled(QStringLiteral("{plmn}"));
    if (m_operatorFormat != 2) {
        const ScenarioNetwork &network = modem.scenario.network;
        name = m_session->toCharset(m_operatorFormat == 1 ? network.shortName : network.name);
    }
    QByteArray line = "+COPS: 0," + QByteArray::number(m_operatorFormat) + ',' + quoted(name);
    if (modem.profile.accessTechnology > 0)
        line += modem.filled(QStringLiteral(",{act}"));
    return CommandReply::ok({line});
}

CommandReply NetworkCommands::operators() const
{
    const ModemState &modem = *m_session->modem;
    if (!modem.isRegistered())
        return m_session->equipmentError(kNoNetwork);
    const QByteArray names = quoted(m_session->toCharset(modem.scenario.network.name)) + ','
        + quoted(m_session->toCharset(modem.scenario.network.shortName));
    return CommandReply::ok({"+COPS: (2," + names
        + modem.filled(QStringLiteral(",\"{plmn}\",{act}),,(0,1,2,3,4),(0,1,2)"))});
}

CommandReply NetworkCommands::setOperator(const ParsedCommand &command)
{
    ModemState *modem = m_session->modem;
    const int mode = command.number(0);
    const int format = command.number(1, m_operatorFormat);
    if (mode < 0 || mode > 4 || format < 0 || format > 2)
        return CommandReply::error();
    if (mode != 3 && !modem->simReady())
        return m_session->needSim();
    if ((mode == 1 || mode == 4) && format == 2
        && command.text(2) != modem->filled(QStringLiteral("{plmn}")))
        return m_session->equipmentError(kNoNetwork);
    m_operatorFormat = format;
    if (mode != 3)
        modem->detached = mode == 2;
    return CommandReply::ok();
}

CommandReply NetworkCommands::contexts() const
{
    CommandReply reply = CommandReply::ok();
    const QMap<int, QByteArray> &contexts = m_session->modem->contexts;
    for (auto it = contexts.constBegin(); it != contexts.constEnd(); ++it)
        reply.lines.append("+CGDCONT: " + QByteArray::number(it.key()) + ',' + it.value());
    return reply;
}

CommandReply NetworkCommands::setContext(const ParsedCommand &command)
{
    const int number = command.number(0);
    if (number < 1 || number > 16)
        return CommandReply::error();
    if (command.count() == 1)
        m_session->modem->contexts.remove(number);
    else
        m_session->modem->contexts.insert(number, command.arguments.mid(1).join(','));
    return CommandReply::ok();
}
