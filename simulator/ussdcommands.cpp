#include "ussdcommands.h"

#include "gsmtext.h"
#include "modemstate.h"
#include "portsession.h"

namespace {

constexpr int kNoNetwork = 30;
constexpr auto kNotSupported = "+CUSD: 4"; // by the network

bool isHex(const QByteArray &text)
{
    for (const char character : text) {
        if (QByteArray("0123456789ABCDEFabcdef").indexOf(character) < 0)
            return false;
    }
    return !text.isEmpty() && text.size() % 2 == 0;
}

} // namespace

UssdCommands::UssdCommands(PortSession *session)
    : m_session(session)
{
}

std::optional<CommandReply> UssdCommands::execute(const ParsedCommand &command) const
{
    using Kind = ParsedCommand::Kind;
    if (command.name != "+CUSD")
        return {};
    if (command.kind == Kind::Read)
        return CommandReply::ok({"+CUSD: 0"});
    if (command.kind == Kind::Test)
        return CommandReply::ok({"+CUSD: (0-2)"});
    if (command.count() < 2)
        return CommandReply::ok(); // only how answers are shown, or the end of a session
    const ModemState &modem = *m_session->modem;
    if (!modem.isRegistered())
        return m_session->equipmentError(kNoNetwork);
    const std::optional<QString> code = codeOf(command.text(1));
    if (!code)
        return CommandReply::error();
    const QMap<QString, QString> &answers = modem.scenario.sim.ussd;
    QByteArray line = kNotSupported;
    if (answers.contains(*code)) {
        const QString text = QString::fromUtf8(modem.filled(answers.value(*code)));
        if (text.contains(QLatin1String("ERROR")))
            return CommandReply::failed(text.toLatin1());
        line = text.startsWith(QLatin1String("+CUSD:")) ? text.toLatin1() : answerLine(text);
    }
    CommandReply reply = CommandReply::ok();
    const int delayMs = modem.scenario.network.answerMs;
    if (modem.profile.ussdBeforeOk) {
        reply.lines = {line};
        reply.delayMs = delayMs;
    } else {
        reply.later = [line] { return QList<QByteArray>{line}; };
        reply.laterMs = delayMs;
    }
    return reply;
}

std::optional<QString> UssdCommands::codeOf(const QByteArray &sent) const
{
    switch (m_session->modem->profile.ussdRequest) {
    case UssdCoding::Packed: {
        if (!isHex(sent))
            return {};
        const QByteArray octets = QByteArray::fromHex(sent);
        QByteArray septets = gsmtext::unpack(octets, octets.size() * 8 / 7);
        if (septets.endsWith('\0') || septets.endsWith('\r'))
            septets.chop(1); // filled up to the octet
        return gsmtext::fromSeptets(septets);
    }
    case UssdCoding::Ucs2:
        if (!isHex(sent))
            return {};
        return gsmtext::fromUcs2Hex(sent);
    case UssdCoding::Charset:
        break;
    }
    if (m_session->charset == "UCS2" && !isHex(sent))
        return {};
    return m_session->fromCharset(sent);
}

QByteArray UssdCommands::answerLine(const QString &text) const
{
    const ModemProfile &profile = m_session->modem->profile;
    const bool ucs2 = profile.ussdAnswer == UssdCoding::Ucs2 || !gsmtext::isDefaultAlphabet(text);
    QByteArray encoded;
    if (ucs2)
        encoded = gsmtext::toUcs2Hex(text);
    else if (profile.ussdAnswer == UssdCoding::Packed)
        encoded = gsmtext::pack(gsmtext::toSeptets(text)).toHex().toUpper();
    else
        encoded = m_session->toCharset(text);
    QByteArray line = profile.ussdPrefix.toLatin1() + quoted(encoded);
    if (profile.ussdCodingScheme)
        line += ucs2 ? ",72" : ",15"; // 3GPP TS 23.038, 5
    return line;
}
