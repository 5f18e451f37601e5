#include "compositioncommands.h"

#include "modemstate.h"
#include "portsession.h"

CompositionCommands::CompositionCommands(PortSession *session)
    : m_session(session)
{
}

std::optional<CommandReply> CompositionCommands::execute(const ParsedCommand &command) const
{
    ModemState *modem = m_session->modem;
    for (const PortComposition &composition : modem->profile.compositions) {
        if (composition.command.toLatin1() != "AT" + command.name)
            continue;
        if (command.kind == ParsedCommand::Kind::Read) {
            const QString value
                = modem->compositions.value(composition.command, composition.initial);
            return CommandReply::ok(
                {command.name + composition.separator.toLatin1() + value.toLatin1()});
        }
        if (command.kind != ParsedCommand::Kind::Set)
            return CommandReply::error();
        const QString value = QString::fromLatin1(
            command.count() == 1 ? command.text(0) : command.arguments.join(','));
        const QStringList ports = composition.portsOf(value);
        if (!ports.contains(QStringLiteral("data")))
            return CommandReply::error();
        modem->compositions.insert(composition.command, value);
        modem->portsWhenPlugged = ports;
        return CommandReply::ok();
    }
    return {};
}
