#include "smscommands.h"

#include "gsmtext.h"
#include "modemstate.h"
#include "portsession.h"

using gsmtext::Sms;

namespace {

// 3GPP TS 27.005, 3.2.5
constexpr int kOperationNotAllowed = 302;
constexpr int kInvalidPdu = 304;
constexpr int kSimNotInserted = 310;
constexpr int kInvalidIndex = 321;
constexpr int kNoNetwork = 331;

} // namespace

SmsCommands::SmsCommands(PortSession *session)
    : m_session(session)
{
    powerUp();
}

void SmsCommands::powerUp()
{
    m_textMode = m_details = false;
    m_service = 0;
    m_readStore = m_writeStore = m_receiveStore
        = m_session->modem->profile.smsStores.first().toLatin1();
}

std::optional<CommandReply> SmsCommands::execute(const ParsedCommand &command)
{
    using Kind = ParsedCommand::Kind;
    static const QList<QByteArray> known{"+CMGF", "+CMGL", "+CMGR", "+CMGD", "+CMGS", "+CPMS",
        "+CNMI", "+CSCA", "+CSMS", "+CSDH", "+CNMA"};
    if (!known.contains(command.name))
        return {};
    switch (command.kind) {
    case Kind::Test:
        return test(command.name);
    case Kind::Read:
        return setting(command.name);
    case Kind::Set:
        return set(command);
    case Kind::Run:
        break;
    }
    if (command.name == "+CMGL")
        return list(m_textMode ? "REC UNREAD" : "0");
    return command.name == "+CNMA" ? CommandReply::ok() : CommandReply::error();
}

CommandReply SmsCommands::test(const QByteArray &name) const
{
    static const QMap<QByteArray, QByteArray> ranges{{"+CMGF", "(0,1)"}, {"+CSMS", "(0,1)"},
        {"+CNMI", "(0-2),(0-2),(0),(0,1),(0)"}, {"+CSDH", "(0,1)"}};
    if (ranges.contains(name))
        return CommandReply::ok({name + ": " + ranges.value(name)});
    if (name == "+CPMS") {
        const QByteArray stores = "(\""
            + m_session->modem->profile.smsStores.join(QLatin1String("\",\"")).toLatin1() + "\")";
        return CommandReply::ok({"+CPMS: " + stores + ',' + stores + ',' + stores});
    }
    if (name == "+CMGL")
        return CommandReply::ok({m_textMode ? "+CMGL: (\"REC UNREAD\",\"REC READ\",\"STO UNSENT\","
                                              "\"STO SENT\",\"ALL\")"
                                            : "+CMGL: (0-4)"});
    return CommandReply::ok();
}

CommandReply SmsCommands::setting(const QByteArray &name) const
{
    const ModemState &modem = *m_session->modem;
    if (name == "+CMGF")
        return CommandReply::ok({m_textMode ? "+CMGF: 1" : "+CMGF: 0"});
    if (name == "+CSDH")
        return CommandReply::ok({m_details ? "+CSDH: 1" : "+CSDH: 0"});
    if (name == "+CSMS")
        return CommandReply::ok({"+CSMS: " + QByteArray::number(m_service) + ",1,1,1"});
    if (name == "+CNMI")
        return CommandReply::ok({"+CNMI: " + modem.newSmsSetting});
    if (name == "+CPMS")
        return stores();
    if (name != "+CSCA")
        return CommandReply::error();
    if (!modem.simReady())
        return m_session->messageError(kSimNotInserted);
    const bool isInternational = modem.smsCentre.startsWith(QLatin1Char('+'));
    return CommandReply::ok({"+CSCA: " + quoted(m_session->toCharset(modem.smsCentre))
        + (isInternational ? ",145" : ",129")});
}

CommandReply SmsCommands::set(const ParsedCommand &command)
{
    ModemState *modem = m_session->modem;
    if (command.name == "+CMGF")
        return setFormat(command.number(0));
    if (command.name == "+CPMS")
        return chooseStores(command);
    if (command.name == "+CMGL")
        return list(command.text(0));
    if (command.name == "+CMGR")
        return read(command.number(0));
    if (command.name == "+CMGD")
        return remove(command);
    if (command.name == "+CMGS")
        return startSending(command);
    if (command.name == "+CSDH") {
        m_details = command.number(0) == 1;
    } else if (command.name == "+CSMS") {
        m_service = command.number(0);
        return CommandReply::ok({"+CSMS: 1,1,1"});
    } else if (command.name == "+CSCA") {
        modem->smsCentre = m_session->fromCharset(command.text(0));
    } else if (command.name == "+CNMI") {
        if (command.number(1, 0) > 3)
            return CommandReply::error();
        modem->newSmsSetting = command.arguments.join(',');
        modem->newSmsMode = command.number(1, 0);
    }
    return CommandReply::ok();
}

CommandReply SmsCommands::setFormat(int format)
{
    if (format != 0 && format != 1)
        return CommandReply::error();
    m_textMode = format == 1;
    return CommandReply::ok();
}

QMap<int, Sms> *SmsCommands::store() const
{
    return &m_session->modem->smsStores[m_readStore];
}

CommandReply SmsCommands::stores() const
{
    if (!m_session->modem->simReady())
        return m_session->messageError(kSimNotInserted);
    QByteArray line = "+CPMS: ";
    for (const QByteArray &name : {m_readStore, m_writeStore, m_receiveStore}) {
        line += quoted(name) + ','
            + QByteArray::number(m_session->modem->smsStores.value(name).size()) + ','
            + QByteArray::number(m_session->modem->smsCapacity()) + ',';
    }
    return CommandReply::ok({line.chopped(1)});
}

CommandReply SmsCommands::chooseStores(const ParsedCommand &command)
{
    ModemState *modem = m_session->modem;
    if (!modem->simReady())
        return m_session->messageError(kSimNotInserted);
    QList<QByteArray> chosen{m_readStore, m_writeStore, m_receiveStore};
    for (int i = 0; i < command.count() && i < chosen.size(); ++i) {
        if (!modem->profile.smsStores.contains(QString::fromLatin1(command.text(i))))
            return m_session->messageError(kOperationNotAllowed);
        chosen[i] = command.text(i);
    }
    m_readStore = chosen.at(0);
    m_writeStore = chosen.at(1);
    m_receiveStore = chosen.at(2);
    QByteArray line = "+CPMS: ";
    for (const QByteArray &name : qAsConst(chosen)) {
        line += QByteArray::number(modem->smsStores.value(name).size()) + ','
            + QByteArray::number(modem->smsCapacity()) + ',';
    }
    return CommandReply::ok({line.chopped(1)});
}

QByteArray SmsCommands::textHeader(const Sms &sms) const
{
    QByteArray header = quoted(sms.read ? "REC READ" : "REC UNREAD") + ',';
    if (sms.kind == Sms::Kind::Report) {
        // <fo>,<mr>[,<ra>][,<tora>],<scts>,<dt>,<st>
        const QByteArray time = quoted(gsmtext::timeText(sms.time));
        return header + "6," + QByteArray::number(sms.reference) + ','
            + quoted(m_session->toCharset(sms.sender)) + ",145," + time + ',' + time + ",0";
    }
    header += quoted(m_session->toCharset(sms.sender)) + ",," + quoted(gsmtext::timeText(sms.time));
    if (m_details)
        header += (sms.sender.startsWith(QLatin1Char('+')) ? ",145," : ",129,")
            + QByteArray::number(sms.text.size());
    return header;
}

// Reading marks a message as read.
QList<QByteArray> SmsCommands::linesOf(Sms *sms, int index) const
{
    QByteArray header
        = index < 0 ? QByteArray("+CMGR: ") : "+CMGL: " + QByteArray::number(index) + ',';
    const QByteArray pdu = gsmtext::storedPdu(*sms, m_session->modem->smsCentre);
    if (m_textMode) {
        header += textHeader(*sms);
        sms->read = true;
        switch (sms->kind) {
        case Sms::Kind::Text:
            return {header,
                sms->ucs2 ? gsmtext::toUcs2Hex(sms->text) : m_session->toCharset(sms->text)};
        case Sms::Kind::Data:
            return {header, sms->data.toHex().toUpper()};
        case Sms::Kind::Raw:
            return {header, pdu};
        case Sms::Kind::Report:
            return {header};
        }
    }
    // The length leaves the service centre's address out.
    const int length = pdu.size() / 2 - 1 - pdu.left(2).toInt(nullptr, 16);
    header += QByteArray(sms->read ? "1" : "0") + ",," + QByteArray::number(qMax(0, length));
    sms->read = true;
    return {header, pdu};
}

CommandReply SmsCommands::list(const QByteArray &which)
{
    if (!m_session->modem->simReady())
        return m_session->messageError(kSimNotInserted);
    const QByteArray wanted = which.toUpper();
    const bool all = wanted == (m_textMode ? "ALL" : "4");
    const bool onlyRead = wanted == (m_textMode ? "REC READ" : "1");
    const bool unread = wanted == (m_textMode ? "REC UNREAD" : "0");
    CommandReply reply = CommandReply::ok();
    QMap<int, Sms> *messages = store();
    for (auto it = messages->begin(); it != messages->end(); ++it) {
        if (all || (onlyRead && it->read) || (unread && !it->read))
            reply.lines += linesOf(&it.value(), it.key());
    }
    return reply;
}

CommandReply SmsCommands::read(int index)
{
    if (!m_session->modem->simReady())
        return m_session->messageError(kSimNotInserted);
    const auto sms = store()->find(index);
    return sms == store()->end() ? m_session->messageError(kInvalidIndex)
                                 : CommandReply::ok(linesOf(&sms.value(), -1));
}

CommandReply SmsCommands::remove(const ParsedCommand &command)
{
    if (!m_session->modem->simReady())
        return m_session->messageError(kSimNotInserted);
    const int flag = command.number(1, 0); // 1 to 3: read ones, 4: all
    QMap<int, Sms> *messages = store();
    if (flag == 0) {
        return messages->remove(command.number(0)) > 0 ? CommandReply::ok()
                                                       : m_session->messageError(kInvalidIndex);
    }
    for (auto it = messages->begin(); it != messages->end();)
        it = flag == 4 || it->read ? messages->erase(it) : it + 1;
    return CommandReply::ok();
}

CommandReply SmsCommands::startSending(const ParsedCommand &command)
{
    if (!m_session->modem->simReady())
        return m_session->messageError(kSimNotInserted);
    m_destination = command.text(0);
    m_length = command.number(0);
    if (!m_textMode && m_length < 0)
        return m_session->messageError(kInvalidPdu);
    CommandReply reply;
    reply.kind = CommandReply::Kind::SmsText;
    return reply;
}

CommandReply SmsCommands::send(const QByteArray &text)
{
    ModemState *modem = m_session->modem;
    QString destination = m_session->fromCharset(m_destination);
    if (!m_textMode) {
        QString content;
        int octets = 0;
        if (!gsmtext::readSubmitPdu(text, &destination, &content, &octets) || octets != m_length)
            return m_session->messageError(kInvalidPdu);
    }
    if (!modem->isRegistered())
        return m_session->messageError(kNoNetwork);
    CommandReply reply
        = CommandReply::ok({"+CMGS: " + QByteArray::number(++modem->messageReference & 0xff)});
    const QMap<QString, QString> &answers = modem->scenario.sim.smsAnswers;
    if (answers.contains(destination)) {
        const QString answer = QString::fromUtf8(modem->filled(answers.value(destination)));
        reply.laterMs = modem->scenario.network.answerMs;
        reply.later = [this, destination, answer] { return announce(destination, answer); };
    }
    return reply;
}

// A message comes in from the network; gives the lines that say so.
QList<QByteArray> SmsCommands::announce(const QString &sender, const QString &text) const
{
    ModemState *modem = m_session->modem;
    const QList<Sms> parts = modem->newSms(sender, QDateTime::currentDateTime(), text);
    QList<QByteArray> lines;
    for (Sms part : parts) {
        if (modem->newSmsMode == 2) { // straight to the program
            const QList<QByteArray> listed = linesOf(&part, -1);
            if (m_textMode)
                lines += "+CMT: " + listed.first().mid(listed.first().indexOf(',') + 1);
            else
                lines += "+CMT: ," + listed.first().mid(listed.first().lastIndexOf(',') + 1);
            lines += listed.last();
            continue;
        }
        const int index = modem->keepSms(m_receiveStore, part);
        if (modem->newSmsMode == 1 && index >= 0)
            lines += "+CMTI: " + quoted(m_receiveStore) + ',' + QByteArray::number(index);
    }
    return lines;
}
