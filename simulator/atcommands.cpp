#include "atcommands.h"

#include "gsmtext.h"
#include "modemstate.h"

#include <QRegularExpression>

namespace {

// 3GPP TS 27.007, 9.2
constexpr int kSimNotInserted = 10;
constexpr int kSimPinRequired = 11;
constexpr int kIncorrectPassword = 16;
constexpr int kNoNetwork = 30;
// 3GPP TS 27.005, 3.2.5
constexpr int kCmsSimNotInserted = 310;
constexpr int kCmsInvalidIndex = 321;

QByteArray errorText(int code)
{
    switch (code) {
    case kSimNotInserted:
        return "SIM not inserted";
    case kSimPinRequired:
        return "SIM PIN required";
    case kIncorrectPassword:
        return "incorrect password";
    case kNoNetwork:
        return "no network service";
    default:
        return "unknown error";
    }
}

QByteArray quoted(const QByteArray &text)
{
    return '"' + text + '"';
}

QByteArray unquoted(const QByteArray &text)
{
    return text.size() >= 2 && text.startsWith('"') && text.endsWith('"')
        ? text.mid(1, text.size() - 2)
        : text;
}

// Splits at commas outside of quotes.
QList<QByteArray> split(const QByteArray &text)
{
    QList<QByteArray> parts{QByteArray()};
    bool inQuotes = false;
    for (const char character : text) {
        inQuotes = inQuotes != (character == '"');
        if (character == ',' && !inQuotes)
            parts.append(QByteArray());
        else
            parts.last().append(character);
    }
    return parts;
}

// Commands that a modem takes, keeps and gives back, and that need no more than that here; the
// values are those after power-up.
const QMap<QByteArray, QByteArray> &plainSettings()
{
    static const QMap<QByteArray, QByteArray> settings{{"+CREG", "0"}, {"+CGREG", "0"},
        {"+CEREG", "0"}, {"+CSMS", "0"}, {"+CSDH", "0"}, {"+CSMP", "17,167,0,0"},
        {"+CSCA", "\"+79168999100\",145"}, {"+CNMI", "0,0,0,0,0"}, {"+CLIP", "0"}, {"+CRC", "0"},
        {"+COLP", "0"}, {"+CCWA", "0"}, {"+CGEREP", "0"}, {"+CTZU", "0"}, {"+CTZR", "0"},
        {"+CR", "0"}, {"+IPR", "0"}, {"+IFC", "2,2"}, {"+ICF", "3,3"}, {"+CBST", "7,0,1"},
        {"+CMGW", ""}, {"+CGATT", "1"}, {"+CGACT", "1,0"}, {"+FCLASS", "0"}, {"+DS", "3,0,4096,20"},
        {"+CSAS", "0"}, {"+CRES", "0"}, {"+CSCB", "0"}, {"+CGSMS", "1"}, {"+CPBS", "\"SM\""},
        {"+CMMS", "0"}};
    return settings;
}

} // namespace

AtReply AtReply::ok(const QList<QByteArray> &lines)
{
    AtReply reply;
    reply.lines = lines;
    return reply;
}

AtReply AtReply::failed(const QByteArray &result)
{
    AtReply reply;
    reply.result = result;
    return reply;
}

AtCommands::AtCommands(ModemState *modem)
    : m_modem(modem)
{
    powerUp();
}

void AtCommands::powerUp()
{
    m_errorMode = 0;
    m_operatorFormat = 0;
    m_smsTextMode = false;
    m_charset = "GSM";
    m_settings = plainSettings();
}

AtReply AtCommands::equipmentError(int code) const
{
    if (m_errorMode == 0)
        return AtReply::error();
    return AtReply::failed(
        "+CME ERROR: " + (m_errorMode == 1 ? QByteArray::number(code) : errorText(code)));
}

AtReply AtCommands::messageError(int code) const
{
    return AtReply::failed("+CMS ERROR: " + QByteArray::number(code));
}

AtReply AtCommands::needSim() const
{
    return equipmentError(m_modem->simPresent() ? kSimPinRequired : kSimNotInserted);
}

AtReply AtCommands::execute(const QByteArray &command)
{
    bool found = false;
    const AtReply listed = fromTable(command, &found);
    if (found)
        return listed;
    if (command.startsWith('D')) {
        AtReply reply;
        reply.kind = AtReply::Kind::Dial;
        return reply;
    }
    const int sign = command.indexOf('=');
    if (sign < 0)
        return command.endsWith('?') ? read(command.chopped(1)) : run(command);
    const QByteArray name = command.left(sign);
    const QByteArray value = command.mid(sign + 1);
    return value == "?" ? test(name) : set(name, split(value));
}

AtReply AtCommands::fromTable(const QByteArray &command, bool *found) const
{
    const QString key = QStringLiteral("AT") + QString::fromUtf8(command);
    const QString anyValue = key.left(key.indexOf(QLatin1Char('=')) + 1) + QLatin1Char('*');
    const auto own = m_modem->scenario.answers.constFind(key);
    AtReply reply;
    if (own != m_modem->scenario.answers.constEnd()) {
        *found = true;
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
        return reply;
    *found = true;
    if (entry->needsSim && !m_modem->simReady())
        return needSim();
    for (const QString &line : entry->lines)
        reply.lines.append(m_modem->filled(line));
    reply.result = entry->result.toLatin1();
    reply.delayMs = entry->delayMs;
    for (const QString &line : entry->later)
        reply.later.append(m_modem->filled(line));
    reply.laterMs = entry->laterMs;
    return reply;
}

AtReply AtCommands::run(const QByteArray &name)
{
    const ModemProfile &profile = m_modem->profile;
    if (name == "I" || name == "I0")
        return AtReply::ok({profile.manufacturer.toUtf8(), profile.model.toUtf8(),
            "Revision: " + profile.revision.toUtf8(), "IMEI: " + m_modem->scenario.imei.toUtf8(),
            "+GCAP: +CGSM"});
    if (name == "+CGMI" || name == "+GMI")
        return AtReply::ok({profile.manufacturer.toUtf8()});
    if (name == "+CGMM" || name == "+GMM")
        return AtReply::ok({profile.model.toUtf8()});
    if (name == "+CGMR" || name == "+GMR")
        return AtReply::ok({profile.revision.toUtf8()});
    if (name == "+CGSN" || name == "+GSN")
        return AtReply::ok({m_modem->scenario.imei.toUtf8()});
    if (name == "+GCAP")
        return AtReply::ok({"+GCAP: +CGSM,+DS,+ES"});
    if (name == "+CPAS")
        return AtReply::ok({"+CPAS: 0"});
    if (name == "+CSQ")
        return AtReply::ok({m_modem->filled(QStringLiteral("+CSQ: {rssi},99"))});
    if (name == "+CIMI")
        return m_modem->simReady() ? AtReply::ok({m_modem->scenario.sim.imsi.toUtf8()}) : needSim();
    if (name == "+CNUM") {
        if (!m_modem->simReady())
            return needSim();
        const QString &number = m_modem->scenario.sim.number;
        if (number.isEmpty())
            return AtReply::ok();
        const int type = number.startsWith(QLatin1Char('+')) ? 145 : 129;
        return AtReply::ok({"+CNUM: ,\"" + ownText(number) + "\"," + QByteArray::number(type)});
    }
    if (name == "+CMGL")
        return listSms(m_smsTextMode ? "\"REC UNREAD\"" : "0");
    static const QRegularExpression harmless(QStringLiteral("^(&[A-Z]|\\\\[A-Z]|[A-Z])[0-9]*$"));
    static const QRegularExpression unknown(QStringLiteral("^([IQVEDS]|I[1-9])"));
    const QString text = QString::fromLatin1(name);
    return harmless.match(text).hasMatch() && !unknown.match(text).hasMatch() ? AtReply::ok()
                                                                              : AtReply::error();
}

AtReply AtCommands::read(const QByteArray &name)
{
    if (name == "+CREG" || name == "+CGREG" || name == "+CEREG")
        return registration(name);
    if (name == "+COPS")
        return operatorName();
    if (name == "+CPIN") {
        if (!m_modem->simPresent())
            return equipmentError(kSimNotInserted);
        return AtReply::ok({m_modem->pinGiven ? "+CPIN: READY" : "+CPIN: SIM PIN"});
    }
    if (name == "+CFUN")
        return AtReply::ok({"+CFUN: " + QByteArray::number(m_modem->functionality)});
    if (name == "+CMEE")
        return AtReply::ok({"+CMEE: " + QByteArray::number(m_errorMode)});
    if (name == "+CMGF")
        return AtReply::ok({m_smsTextMode ? "+CMGF: 1" : "+CMGF: 0"});
    if (name == "+CSCS")
        return AtReply::ok({"+CSCS: " + quoted(m_charset)});
    if (name == "+CPMS") {
        int used = 0;
        for (const gsmtext::Sms &sms : qAsConst(m_modem->sms))
            used += sms.parts > 0 ? 1 : 0;
        const QByteArray store = "\"SM\"," + QByteArray::number(used) + ",50";
        return m_modem->simReady() ? AtReply::ok({"+CPMS: " + store + ',' + store + ',' + store})
                                   : messageError(kCmsSimNotInserted);
    }
    if (name == "+CCLK")
        return AtReply::ok(
            {"+CCLK: " + quoted(gsmtext::timeText(QDateTime::currentDateTimeUtc()))});
    if (name == "+CGDCONT") {
        AtReply reply = AtReply::ok();
        for (auto it = m_modem->contexts.constBegin(); it != m_modem->contexts.constEnd(); ++it)
            reply.lines.append("+CGDCONT: " + QByteArray::number(it.key()) + ',' + it.value());
        return reply;
    }
    if (name == "+CUSD")
        return AtReply::ok({"+CUSD: 0"});
    const auto setting = m_settings.constFind(name);
    return setting == m_settings.constEnd() ? AtReply::error()
                                            : AtReply::ok({name + ": " + setting.value()});
}

AtReply AtCommands::test(const QByteArray &name) const
{
    if (name == "+COPS") {
        if (!m_modem->isRegistered())
            return equipmentError(kNoNetwork);
        return AtReply::ok({m_modem->filled(QStringLiteral(
            "+COPS: (2,\"{operator}\",\"{operator}\",\"{plmn}\",{act}),,(0,1,2,3,4),(0,1,2)"))});
    }
    static const QMap<QByteArray, QByteArray> ranges{{"+CSCS", "(\"GSM\",\"IRA\",\"UCS2\")"},
        {"+CMGF", "(0,1)"}, {"+CPMS", "(\"SM\"),(\"SM\"),(\"SM\")"}, {"+CFUN", "(0,1,4),(0,1)"},
        {"+CMEE", "(0-2)"}, {"+CREG", "(0-2)"}, {"+CGREG", "(0-2)"}, {"+CUSD", "(0-2)"},
        {"+CNMI", "(0-2),(0-2),(0),(0,1),(0)"}, {"+CMGL", "(0-4)"}, {"+CPBS", "(\"SM\")"},
        {"+CGDCONT", "(1-3),\"IP\",,,(0),(0)"}, {"+FCLASS", "(0,1)"}, {"+IFC", "(0-2),(0-2)"}};
    if (ranges.contains(name))
        return AtReply::ok({name + ": " + ranges.value(name)});
    return m_settings.contains(name) ? AtReply::ok() : AtReply::error();
}

AtReply AtCommands::set(const QByteArray &name, const Arguments &arguments)
{
    bool isNumber = false;
    const int first = arguments.first().toInt(&isNumber);
    if (name == "+CMEE" || name == "+CMGF") {
        if (!isNumber || first < 0 || first > (name == "+CMEE" ? 2 : 1))
            return AtReply::error();
        if (name == "+CMEE")
            m_errorMode = first;
        else
            m_smsTextMode = first == 1;
        return AtReply::ok();
    }
    if (name == "+CFUN") {
        if (first != 0 && first != 1 && first != 4)
            return AtReply::error();
        AtReply reply = AtReply::ok();
        reply.resets = arguments.value(1) == "1";
        m_modem->functionality = first;
        return reply;
    }
    if (name == "+COPS")
        return setOperator(arguments);
    if (name == "+CPIN")
        return enterPin(arguments);
    if (name == "+CUSD")
        return ussd(arguments);
    if (name == "+CSCS") {
        const QByteArray charset = unquoted(arguments.first());
        if (charset != "GSM" && charset != "IRA" && charset != "UCS2")
            return AtReply::error();
        m_charset = charset;
        return AtReply::ok();
    }
    if (name == "+CGDCONT") {
        if (!isNumber || first < 1 || first > 16)
            return AtReply::error();
        if (arguments.size() == 1)
            m_modem->contexts.remove(first);
        else
            m_modem->contexts.insert(first, arguments.mid(1).join(','));
        return AtReply::ok();
    }
    if (name == "+CLCK") {
        if (!m_modem->simPresent())
            return equipmentError(kSimNotInserted);
        const bool locked = arguments.first() == "\"SC\"" && !m_modem->scenario.sim.pin.isEmpty();
        return arguments.value(1) == "2" ? AtReply::ok({locked ? "+CLCK: 1" : "+CLCK: 0"})
                                         : AtReply::ok();
    }
    if (name == "+CPMS")
        return m_modem->simReady() ? AtReply::ok({"+CPMS: 0,50,0,50,0,50"})
                                   : messageError(kCmsSimNotInserted);
    if (name == "+CNMI")
        m_modem->newSmsMode = arguments.value(1).toInt();
    if (name == "+CMGL")
        return listSms(arguments.first());
    if (name == "+CMGR")
        return isNumber ? readSms(first - m_modem->profile.firstSmsIndex) : AtReply::error();
    if (name == "+CMGD")
        return isNumber ? removeSms(arguments) : AtReply::error();
    if (name == "+CMGS") {
        if (!m_modem->simReady())
            return messageError(kCmsSimNotInserted);
        m_smsDestination = unquoted(arguments.first());
        AtReply reply;
        reply.kind = AtReply::Kind::SmsText;
        return reply;
    }
    if (!m_settings.contains(name))
        return AtReply::error();
    m_settings.insert(name, arguments.join(','));
    return AtReply::ok();
}

AtReply AtCommands::registration(const QByteArray &name) const
{
    // A modem of an older generation than the network part asked for does not know the command.
    if (name == "+CEREG" && m_modem->profile.accessTechnology != 7)
        return AtReply::error();
    const QByteArray mode = m_settings.value(name);
    QByteArray line = name + ": " + mode + ',' + QByteArray::number(m_modem->registration());
    if (mode == "2" && m_modem->isRegistered()) {
        line += m_modem->filled(QStringLiteral(",\"{lac}\",\"{cid}\""));
        if (m_modem->profile.accessTechnology > 0)
            line += m_modem->filled(QStringLiteral(",{act}"));
    }
    return AtReply::ok({line});
}

AtReply AtCommands::operatorName() const
{
    if (!m_modem->isRegistered())
        return AtReply::ok({"+COPS: 0"});
    const QByteArray name = m_operatorFormat == 2 ? m_modem->filled(QStringLiteral("{plmn}"))
                                                  : ownText(m_modem->scenario.network.name);
    QByteArray line = "+COPS: 0," + QByteArray::number(m_operatorFormat) + ',' + quoted(name);
    if (m_modem->profile.accessTechnology > 0)
        line += m_modem->filled(QStringLiteral(",{act}"));
    return AtReply::ok({line});
}

AtReply AtCommands::setOperator(const Arguments &arguments)
{
    const int mode = arguments.first().toInt();
    if (mode < 0 || mode > 4)
        return AtReply::error();
    if (arguments.size() > 1) {
        const int format = arguments.at(1).toInt();
        if (format < 0 || format > 2)
            return AtReply::error();
        m_operatorFormat = format;
    }
    if (mode != 3 && !m_modem->simReady())
        return needSim();
    return AtReply::ok();
}

AtReply AtCommands::enterPin(const Arguments &arguments)
{
    if (!m_modem->simPresent())
        return equipmentError(kSimNotInserted);
    if (m_modem->pinGiven)
        return equipmentError(3); // operation not allowed
    if (m_modem->pinTries == 0
        || QString::fromLatin1(unquoted(arguments.first())) != m_modem->scenario.sim.pin) {
        m_modem->pinTries = qMax(0, m_modem->pinTries - 1);
        return equipmentError(kIncorrectPassword);
    }
    m_modem->pinTries = 3;
    m_modem->pinGiven = true;
    return AtReply::ok();
}

// A text in the character set that +CSCS chose.
QByteArray AtCommands::ownText(const QString &text) const
{
    return m_charset == "UCS2" ? gsmtext::toUcs2Hex(text) : text.toLatin1();
}

AtReply AtCommands::ussd(const Arguments &arguments) const
{
    if (arguments.size() < 2)
        return AtReply::ok(); // only how answers are shown, or the end of a session
    if (!m_modem->isRegistered())
        return equipmentError(kNoNetwork);
    const QByteArray sent = unquoted(arguments.at(1));
    const bool packed = m_modem->profile.packedUssd;
    QString code = QString::fromLatin1(sent);
    if (packed) {
        const QByteArray octets = QByteArray::fromHex(sent);
        QByteArray septets = gsmtext::unpack(octets, octets.size() * 8 / 7);
        if (septets.endsWith('\0') || septets.endsWith('\r'))
            septets.chop(1); // filled up to the octet
        code = gsmtext::fromSeptets(septets);
    } else if (m_charset == "UCS2") {
        code = gsmtext::fromUcs2Hex(sent);
    }
    AtReply reply = AtReply::ok();
    reply.laterMs = 300;
    const auto answer = m_modem->scenario.sim.ussd.constFind(code);
    if (answer == m_modem->scenario.sim.ussd.constEnd()) {
        reply.later = {"+CUSD: 4"}; // operation not supported
        return reply;
    }
    const bool plain = gsmtext::isDefaultAlphabet(answer.value());
    QByteArray text;
    if (!plain || (!packed && m_charset == "UCS2"))
        text = gsmtext::toUcs2Hex(answer.value());
    else if (packed)
        text = gsmtext::pack(gsmtext::toSeptets(answer.value())).toHex().toUpper();
    else
        text = answer.value().toLatin1();
    reply.later = {"+CUSD: 0," + quoted(text) + (plain ? ",15" : ",72")};
    return reply;
}

QByteArray AtCommands::smsText(const QString &text, bool ucs2) const
{
    return ucs2 ? gsmtext::toUcs2Hex(text) : ownText(text);
}

QList<QByteArray> AtCommands::smsLines(int index, bool inList)
{
    gsmtext::Sms &sms = m_modem->sms[index];
    QByteArray header = inList
        ? "+CMGL: " + QByteArray::number(index + m_modem->profile.firstSmsIndex) + ','
        : QByteArray("+CMGR: ");
    const bool wasRead = sms.read;
    sms.read = true;
    if (m_smsTextMode) {
        header += quoted(wasRead ? "REC READ" : "REC UNREAD") + ',' + quoted(ownText(sms.sender))
            + ",," + quoted(gsmtext::timeText(sms.time));
        return {header, smsText(sms.text, sms.ucs2)};
    }
    const QByteArray pdu = gsmtext::deliverPdu(sms);
    header += QByteArray(wasRead ? "1" : "0") + ",," + QByteArray::number(pdu.size() / 2 - 1);
    return {header, pdu};
}

AtReply AtCommands::listSms(const QByteArray &which)
{
    if (!m_modem->simReady())
        return messageError(kCmsSimNotInserted);
    const QByteArray wanted = unquoted(which).toUpper();
    const bool all = wanted == "4" || wanted == "ALL";
    const bool onlyRead = wanted == "1" || wanted == "REC READ";
    const bool unread = wanted == "0" || wanted == "REC UNREAD";
    AtReply reply = AtReply::ok();
    for (int i = 0; i < m_modem->sms.size(); ++i) {
        const gsmtext::Sms &sms = m_modem->sms.at(i);
        if (sms.parts > 0 && (all || (onlyRead && sms.read) || (unread && !sms.read)))
            reply.lines += smsLines(i, true);
    }
    return reply;
}

AtReply AtCommands::readSms(int index)
{
    if (!m_modem->simReady())
        return messageError(kCmsSimNotInserted);
    if (index < 0 || index >= m_modem->sms.size() || m_modem->sms.at(index).parts == 0)
        return messageError(kCmsInvalidIndex);
    return AtReply::ok(smsLines(index, false));
}

AtReply AtCommands::removeSms(const Arguments &arguments)
{
    if (!m_modem->simReady())
        return messageError(kCmsSimNotInserted);
    const int flag = arguments.value(1).toInt(); // 1 to 3: read ones, 4: all
    const int index = arguments.first().toInt() - m_modem->profile.firstSmsIndex;
    if (flag == 0) {
        if (index < 0 || index >= m_modem->sms.size() || m_modem->sms.at(index).parts == 0)
            return messageError(kCmsInvalidIndex);
        m_modem->sms[index].parts = 0;
        return AtReply::ok();
    }
    for (gsmtext::Sms &sms : m_modem->sms) {
        if (flag == 4 || sms.read)
            sms.parts = 0;
    }
    return AtReply::ok();
}

AtReply AtCommands::sendSms(const QByteArray &text)
{
    QString destination = QString::fromLatin1(m_smsDestination);
    if (m_smsTextMode) {
        if (m_charset == "UCS2")
            destination = gsmtext::fromUcs2Hex(m_smsDestination);
    } else {
        QString content;
        if (!gsmtext::readSubmitPdu(text, &destination, &content))
            return messageError(304); // invalid PDU mode parameter
    }
    if (!m_modem->isRegistered())
        return messageError(331); // no network service
    AtReply reply
        = AtReply::ok({"+CMGS: " + QByteArray::number(++m_modem->messageReference & 0xff)});
    const auto answer = m_modem->scenario.sim.smsAnswers.constFind(destination);
    if (answer != m_modem->scenario.sim.smsAnswers.constEnd()) {
        const int index
            = m_modem->addSms(destination, QDateTime::currentDateTime(), answer.value());
        if (m_modem->newSmsMode == 1)
            reply.later
                = {"+CMTI: \"SM\"," + QByteArray::number(index + m_modem->profile.firstSmsIndex)};
    }
    return reply;
}
