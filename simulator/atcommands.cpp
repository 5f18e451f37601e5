#include "atcommands.h"

#include "modemstate.h"

#include <QRegularExpression>

namespace {

// A command that a modem takes, keeps and gives back, and that needs no more than that here.
struct PlainSetting
{
    QByteArray name;
    QByteArray value; // after power-up
    QByteArray range; // what "=?" gives (3GPP TS 27.007, 27.005 and V.250)
};

const QList<PlainSetting> &plainSettings()
{
    static const QList<PlainSetting> settings{
        {"+CSMP", "17,167,0,0", ""},
        {"+CLIP", "0", "(0,1)"},
        {"+CRC", "0", "(0,1)"},
        {"+COLP", "0", "(0,1)"},
        {"+CCWA", "0", "(0,1)"},
        {"+CGEREP", "0", "(0-2),(0,1)"},
        {"+CTZU", "0", "(0,1)"},
        {"+CTZR", "0", "(0,1)"},
        {"+CR", "0", "(0,1)"},
        {"+IPR", "0", "(),(0,9600,19200,38400,57600,115200)"},
        {"+IFC", "2,2", "(0-2),(0-2)"},
        {"+ICF", "3,3", "(1-6),(0-3)"},
        {"+CBST", "7,0,1", "(0,7,12,14,71),(0),(0,1)"},
        {"+CGATT", "1", "(0,1)"},
        {"+CGACT", "1,0", "(0,1)"},
        {"+FCLASS", "0", "(0,1)"},
        {"+DS", "3,0,4096,20", "(0-3),(0),(4096),(20)"},
        {"+CSAS", "0", "(0)"},
        {"+CRES", "0", "(0)"},
        {"+CSCB", "0", "(0,1)"},
        {"+CGSMS", "1", "(0-3)"},
        {"+CPBS", "\"SM\"", "(\"SM\")"},
        {"+CMMS", "0", "(0-2)"},
    };
    return settings;
}

// What every modem tells of itself, in the form of a profile's answers.
const QMap<QByteArray, QStringList> &identity()
{
    static const QStringList manufacturer(QStringLiteral("{manufacturer}"));
    static const QStringList model(QStringLiteral("{model}"));
    static const QStringList revision(QStringLiteral("{revision}"));
    static const QStringList imei(QStringLiteral("{imei}"));
    static const QStringList all{QStringLiteral("{manufacturer}"), QStringLiteral("{model}"),
        QStringLiteral("Revision: {revision}"), QStringLiteral("IMEI: {imei}"),
        QStringLiteral("+GCAP: +CGSM")};
    static const QMap<QByteArray, QStringList> answers{{"I", all}, {"I0", all},
        {"+CGMI", manufacturer}, {"+GMI", manufacturer}, {"+CGMM", model}, {"+GMM", model},
        {"+CGMR", revision}, {"+GMR", revision}, {"+CGSN", imei}, {"+GSN", imei},
        {"+GCAP", {QStringLiteral("+GCAP: +CGSM,+DS,+ES")}},
        {"+CPAS", {QStringLiteral("+CPAS: 0")}}};
    return answers;
}

} // namespace

AtCommands::AtCommands(ModemState *modem)
    : m_modem(modem)
    , m_session(modem)
    , m_sim(&m_session)
    , m_network(&m_session)
    , m_sms(&m_session)
    , m_ussd(&m_session)
    , m_composition(&m_session)
{
    powerUp();
}

void AtCommands::powerUp()
{
    m_session.powerUp();
    m_network.powerUp();
    m_sms.powerUp();
    m_settings.clear();
    for (const PlainSetting &setting : plainSettings())
        m_settings.insert(setting.name, setting.value);
}

CommandReply AtCommands::execute(const QByteArray &text)
{
    if (const auto listed = fromTable(text))
        return *listed;
    if (text.startsWith('D')) {
        CommandReply reply;
        reply.kind = CommandReply::Kind::Dial;
        return reply;
    }
    const ParsedCommand command = ParsedCommand::parse(text);
    if (const auto reply = general(command))
        return *reply;
    if (const auto reply = m_sim.execute(command))
        return *reply;
    if (const auto reply = m_network.execute(command))
        return *reply;
    if (const auto reply = m_sms.execute(command))
        return *reply;
    if (const auto reply = m_ussd.execute(command))
        return *reply;
    if (const auto reply = m_composition.execute(command))
        return *reply;
    if (command.kind != ParsedCommand::Kind::Run)
        return plainSetting(command);
    // The basic commands of V.250 that set what has no effect here.
    static const QRegularExpression harmless(QStringLiteral("^(&[A-Z]|\\\\[A-Z]|[A-Z])[0-9]*$"));
    static const QRegularExpression unknown(QStringLiteral("^([IQVEDS]|I[1-9])"));
    const QString name = QString::fromLatin1(command.name);
    return harmless.match(name).hasMatch() && !unknown.match(name).hasMatch()
        ? CommandReply::ok()
        : CommandReply::error();
}

std::optional<CommandReply> AtCommands::fromTable(const QByteArray &command) const
{
    const QString key = QStringLiteral("AT") + QString::fromUtf8(command);
    const QString anyValue = key.left(key.indexOf(QLatin1Char('=')) + 1) + QLatin1Char('*');
    const auto own = m_modem->scenario.answers.constFind(key);
    CommandReply reply;
    if (own != m_modem->scenario.answers.constEnd()) {
        for (const QString &line : own.value())
            reply.lines.append(m_modem->filled(line));
        if (!reply.lines.isEmpty()
            && (reply.lines.last() == "ERROR" || reply.lines.last().contains(" ERROR: ")))
            reply.result = reply.lines.takeLast();
        return reply;
    }
    auto entry = m_modem->profile.answers.constFind(key);
    if (entry == m_modem->profile.answers.constEnd())
        entry = m_modem->profile.answers.constFind(anyValue);
    if (entry == m_modem->profile.answers.constEnd())
        return {};
    if (entry->needsSim && !m_modem->simReady())
        return m_session.needSim();
    for (const QString &line : entry->lines)
        reply.lines.append(m_modem->filled(line));
    reply.result = entry->result.toLatin1();
    reply.delayMs = entry->delayMs;
    reply.resets = entry->resets;
    if (!entry->later.isEmpty()) {
        reply.later = [modem = m_modem, texts = entry->later] {
            QList<QByteArray> lines;
            for (const QString &line : texts)
                lines.append(modem->filled(line));
            return lines;
        };
        reply.laterMs = entry->laterMs;
    }
    return reply;
}

// Identity, and how errors and texts are written.
std::optional<CommandReply> AtCommands::general(const ParsedCommand &command)
{
    using Kind = ParsedCommand::Kind;
    const auto facts = identity().constFind(command.name);
    if (facts != identity().constEnd()) {
        CommandReply reply = CommandReply::ok();
        if (command.kind == Kind::Run) {
            for (const QString &line : facts.value())
                reply.lines.append(m_modem->filled(line));
        }
        return command.kind == Kind::Run || command.kind == Kind::Test ? reply
                                                                       : CommandReply::error();
    }
    if (command.is(Kind::Read, "+CMEE"))
        return CommandReply::ok({"+CMEE: " + QByteArray::number(m_session.errorMode)});
    if (command.is(Kind::Test, "+CMEE"))
        return CommandReply::ok({"+CMEE: (0-2)"});
    if (command.is(Kind::Set, "+CMEE")) {
        const int mode = command.number(0);
        if (mode < 0 || mode > 2)
            return CommandReply::error();
        m_session.errorMode = mode;
        return CommandReply::ok();
    }
    const QStringList &charsets = m_modem->profile.charsets;
    if (command.is(Kind::Read, "+CSCS"))
        return CommandReply::ok({"+CSCS: " + quoted(m_session.charset)});
    if (command.is(Kind::Test, "+CSCS"))
        return CommandReply::ok(
            {"+CSCS: (\"" + charsets.join(QLatin1String("\",\"")).toLatin1() + "\")"});
    if (command.is(Kind::Set, "+CSCS")) {
        if (!charsets.contains(QString::fromLatin1(command.text(0))))
            return CommandReply::error();
        m_session.charset = command.text(0);
        return CommandReply::ok();
    }
    return {};
}

CommandReply AtCommands::plainSetting(const ParsedCommand &command)
{
    const auto setting = m_settings.find(command.name);
    if (setting == m_settings.end())
        return CommandReply::error();
    if (command.kind == ParsedCommand::Kind::Read)
        return CommandReply::ok({command.name + ": " + setting.value()});
    if (command.kind == ParsedCommand::Kind::Set)
        setting.value() = command.arguments.join(',');
    if (command.kind == ParsedCommand::Kind::Test) {
        for (const PlainSetting &known : plainSettings()) {
            if (known.name == command.name && !known.range.isEmpty())
                return CommandReply::ok({command.name + ": " + known.range});
        }
    }
    return CommandReply::ok();
}
