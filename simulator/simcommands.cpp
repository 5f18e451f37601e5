#include "simcommands.h"

#include "gsmtext.h"
#include "modemstate.h"
#include "portsession.h"

namespace {

constexpr int kOperationNotAllowed = 3;
constexpr int kSimNotInserted = 10;
constexpr int kIncorrectPassword = 16;
constexpr int kReadBinary = 176; // 3GPP TS 27.007, 8.18

// The files that programs read, as they lie on the card (3GPP TS 51.011, 10.1.1 and 10.3); empty
// for one that this card does not have.
QByteArray cardFile(int file, const ScenarioSim &sim, const ScenarioNetwork &network)
{
    switch (file) {
    case 0x2fe2: // ICCID
        return gsmtext::swappedDigits(sim.iccid.toLatin1(), 'F').leftJustified(10, '\xff');
    case 0x6f07: { // IMSI: the length, then the digits behind a nibble that tells their parity
        const QByteArray digits = sim.imsi.toLatin1();
        const QByteArray packed
            = gsmtext::swappedDigits((digits.size() % 2 != 0 ? "9" : "1") + digits, 'F');
        return static_cast<char>(packed.size()) + packed;
    }
    case 0x6f46: // name of the service provider
        return QByteArray(1, '\0')
            + gsmtext::toSeptets(network.name).leftJustified(16, '\xff', true);
    case 0x6fad: // administrative data: the fourth octet is the length of the network code
        return QByteArray("\x00\x00\x00", 3) + (network.mnc > 99 ? '\x03' : '\x02');
    default:
        return {};
    }
}

} // namespace

SimCommands::SimCommands(PortSession *session)
    : m_session(session)
{
}

std::optional<CommandReply> SimCommands::execute(const ParsedCommand &command) const
{
    using Kind = ParsedCommand::Kind;
    if (command.is(Kind::Read, "+CPIN"))
        return pinState();
    if (command.is(Kind::Set, "+CPIN"))
        return enterPin(command);
    if (command.is(Kind::Set, "+CLCK"))
        return lock(command);
    if (command.is(Kind::Set, "+CRSM"))
        return readFile(command);
    if (command.is(Kind::Run, "+CNUM"))
        return ownNumber();
    if (command.is(Kind::Run, "+CIMI")) {
        return m_session->modem->simReady()
            ? CommandReply::ok({m_session->modem->scenario.sim.imsi.toLatin1()})
            : m_session->needSim();
    }
    if (command.kind == Kind::Test
        && (command.name == "+CPIN" || command.name == "+CIMI" || command.name == "+CNUM"
            || command.name == "+CRSM"))
        return CommandReply::ok();
    if (command.is(Kind::Test, "+CLCK"))
        return CommandReply::ok({"+CLCK: (\"SC\")"});
    return {};
}

CommandReply SimCommands::pinState() const
{
    const ModemState &modem = *m_session->modem;
    if (!modem.simPresent() || (modem.pinGiven && !modem.simReady()))
        return m_session->needSim();
    return CommandReply::ok({modem.pinGiven ? "+CPIN: READY" : "+CPIN: SIM PIN"});
}

CommandReply SimCommands::enterPin(const ParsedCommand &command) const
{
    ModemState *modem = m_session->modem;
    if (!modem->simPresent())
        return m_session->equipmentError(kSimNotInserted);
    if (modem->pinGiven)
        return m_session->equipmentError(kOperationNotAllowed);
    if (modem->pinTries == 0 || QString::fromLatin1(command.text(0)) != modem->scenario.sim.pin) {
        modem->pinTries = qMax(0, modem->pinTries - 1);
        return m_session->equipmentError(kIncorrectPassword);
    }
    modem->pinTries = 3;
    modem->pinGiven = true;
    return CommandReply::ok();
}

CommandReply SimCommands::lock(const ParsedCommand &command) const
{
    if (!m_session->modem->simPresent())
        return m_session->equipmentError(kSimNotInserted);
    const bool locked = command.text(0) == "SC" && !m_session->modem->scenario.sim.pin.isEmpty();
    return command.number(1) == 2 ? CommandReply::ok({locked ? "+CLCK: 1" : "+CLCK: 0"})
                                  : CommandReply::ok();
}

CommandReply SimCommands::ownNumber() const
{
    const ModemState &modem = *m_session->modem;
    if (!modem.simReady())
        return m_session->needSim();
    const bool isThere = modem.scenario.sim.numberOnCard && !modem.scenario.sim.number.isEmpty();
    const QString &line = isThere ? modem.profile.ownNumber : modem.profile.noOwnNumber;
    if (line.isEmpty())
        return CommandReply::ok();
    return CommandReply::ok({modem.filled(line)});
}

CommandReply SimCommands::readFile(const ParsedCommand &command) const
{
    const ModemState &modem = *m_session->modem;
    if (!modem.simReady())
        return m_session->needSim();
    if (command.number(0) != kReadBinary)
        return m_session->equipmentError(kOperationNotAllowed);
    const QByteArray content
        = cardFile(command.number(1), modem.scenario.sim, modem.scenario.network);
    if (content.isEmpty())
        return CommandReply::ok({"+CRSM: 148,4"}); // file not found (3GPP TS 51.011, 9.4.4)
    const int length = command.number(4, 0);
    const QByteArray part = content.mid(command.number(2, 0) * 256 + command.number(3, 0));
    const QByteArray wanted = length > 0 ? part.left(length) : part;
    return CommandReply::ok({"+CRSM: 144,0," + quoted(wanted.toHex().toUpper())});
}
