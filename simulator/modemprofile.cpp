#include "modemprofile.h"

#include "builtinfiles.h"
#include "jsonreader.h"

namespace {

UsbIdentity readUsb(JsonReader reader)
{
    UsbIdentity usb;
    const auto hexNumber = [&reader](const QString &key) {
        bool isNumber = false;
        const quint16 number = reader.text(key).toUShort(&isNumber, 16);
        if (!isNumber)
            reader.fail(key, QStringLiteral("must be four hexadecimal digits"));
        return number;
    };
    usb.vendorId = hexNumber(QStringLiteral("vendorId"));
    usb.productId = hexNumber(QStringLiteral("productId"));
    usb.vendor = reader.text(QStringLiteral("vendor"));
    usb.product = reader.text(QStringLiteral("product"));
    usb.serial = reader.text(QStringLiteral("serial"));
    usb.driver = reader.text(QStringLiteral("driver"), usb.driver);
    const QMap<QString, QString> properties = reader.textMap(QStringLiteral("properties"));
    for (auto it = properties.begin(); it != properties.end(); ++it)
        usb.properties.insert(it.key(), it.value());
    JsonReader ports = reader.object(QStringLiteral("portProperties"));
    for (const QString &port : ports.keys())
        usb.portProperties.insert(port, ports.textMap(port));
    reader.finish();
    return usb;
}

const QStringList &portRoles()
{
    static const QStringList roles{
        QStringLiteral("data"), QStringLiteral("control"), QStringLiteral("diagnostic")};
    return roles;
}

void checkPorts(JsonReader &reader, const QString &key, const QStringList &ports)
{
    for (const QString &port : ports) {
        if (!portRoles().contains(port)) {
            reader.fail(key,
                QStringLiteral("\"%1\" is none of \"data\", \"control\", \"diagnostic\"")
                    .arg(port));
        }
    }
    if (ports.count(QStringLiteral("data")) != 1)
        reader.fail(key, QStringLiteral("must have one \"data\" port"));
}

PortComposition readComposition(JsonReader reader)
{
    PortComposition composition;
    composition.command = reader.text(QStringLiteral("command"));
    composition.separator = reader.text(QStringLiteral("separator"), composition.separator);
    composition.initial = reader.text(QStringLiteral("initial"));
    JsonReader ports = reader.object(QStringLiteral("ports"));
    for (const QString &value : ports.keys()) {
        composition.ports.insert(value, ports.texts(value));
        checkPorts(ports, value, composition.ports.value(value));
    }
    composition.roles = reader.textMap(QStringLiteral("roles"));
    reader.finish();
    return composition;
}

UssdCoding ussdCoding(JsonReader &reader, const QString &key)
{
    const QStringList words{
        QStringLiteral("charset"), QStringLiteral("packed"), QStringLiteral("ucs2")};
    static const QList<UssdCoding> forms{UssdCoding::Charset, UssdCoding::Packed, UssdCoding::Ucs2};
    return forms.at(words.indexOf(reader.word(key, words)));
}

void readUssd(JsonReader reader, ModemProfile *profile)
{
    profile->ussdRequest = ussdCoding(reader, QStringLiteral("request"));
    profile->ussdAnswer = ussdCoding(reader, QStringLiteral("answer"));
    profile->ussdPrefix = reader.text(QStringLiteral("prefix"), profile->ussdPrefix);
    profile->ussdCodingScheme = reader.flag(QStringLiteral("codingScheme"), true);
    profile->ussdBeforeOk = reader.flag(QStringLiteral("beforeOk"), false);
    reader.finish();
}

// A list of one text or more; the fallback when the key is not there.
QStringList textsOr(JsonReader &reader, const QString &key, const QStringList &fallback)
{
    if (!reader.has(key))
        return fallback;
    const QStringList texts = reader.texts(key);
    if (texts.isEmpty())
        reader.fail(key, QStringLiteral("must not be empty"));
    return texts.isEmpty() ? fallback : texts;
}

} // namespace

QStringList PortComposition::portsOf(const QString &value) const
{
    if (ports.contains(value))
        return ports.value(value);
    QStringList found;
    const QStringList codes = value.section(QLatin1Char(';'), 1).split(QLatin1Char(','));
    for (const QString &code : codes) {
        if (roles.contains(code))
            found.append(roles.value(code));
    }
    return found;
}

ModemAnswer ModemAnswer::read(JsonReader &reader, const QString &key)
{
    ModemAnswer answer;
    const QJsonValue value = reader.raw(key);
    if (value.isString()) {
        if (!value.toString().isEmpty())
            answer.lines = QStringList(value.toString());
    } else if (value.isArray()) {
        answer.lines = reader.texts(key);
    } else {
        JsonReader inner = reader.object(key);
        answer.lines = inner.texts(QStringLiteral("lines"));
        answer.result = inner.text(QStringLiteral("result"), answer.result);
        answer.delayMs = inner.number(QStringLiteral("delayMs"), 0, 0, 600000);
        answer.needsSim = inner.flag(QStringLiteral("needsSim"), false);
        answer.resets = inner.flag(QStringLiteral("resets"), false);
        answer.later = inner.texts(QStringLiteral("later"));
        answer.laterMs = inner.number(QStringLiteral("laterMs"), answer.laterMs, 0, 600000);
        inner.finish();
    }
    return answer;
}

QStringList ModemProfile::names()
{
    return BuiltInFiles::names(BuiltInFiles::Kind::Profile);
}

bool ModemProfile::load(const QString &nameOrPath, ModemProfile *profile, QString *error)
{
    return BuiltInFiles::load(
        BuiltInFiles::Kind::Profile, nameOrPath,
        [profile](const QByteArray &json, QString *parseError) {
            return parse(json, profile, parseError);
        },
        error);
}

bool ModemProfile::parse(const QByteArray &json, ModemProfile *profile, QString *error)
{
    JsonReader reader = JsonReader::ofFile(json, error);
    ModemProfile read;
    read.source = reader.text(QStringLiteral("source"));
    if (read.source.isEmpty())
        reader.fail(
            QStringLiteral("source"), QStringLiteral("must name where the answers come from"));
    read.manufacturer = reader.text(QStringLiteral("manufacturer"));
    read.model = reader.text(QStringLiteral("model"));
    read.revision = reader.text(QStringLiteral("revision"));
    read.imei = reader.text(QStringLiteral("imei"));
    read.usb = readUsb(reader.object(QStringLiteral("usb")));
    read.ports = reader.texts(QStringLiteral("ports"));
    checkPorts(reader, QStringLiteral("ports"), read.ports);
    const QList<JsonReader> compositions = reader.objects(QStringLiteral("compositions"));
    for (const JsonReader &composition : compositions)
        read.compositions.append(readComposition(composition));
    read.connectText = reader.text(QStringLiteral("connectText"), read.connectText);
    read.accessTechnology = reader.number(QStringLiteral("accessTechnology"), 0, 0, 7);
    read.firstSmsIndex = reader.number(QStringLiteral("firstSmsIndex"), 1, 0, 1);
    read.location
        = reader.text(QStringLiteral("location"), QStringLiteral(",\"{lac:04X}\",\"{cid:04X}\""));
    read.noLocation = reader.text(QStringLiteral("noLocation"));
    read.ownNumber = reader.text(
        QStringLiteral("ownNumber"), QStringLiteral("+CNUM: ,\"{number}\",{numberType}"));
    read.noOwnNumber = reader.text(QStringLiteral("noOwnNumber"));
    read.charsets = textsOr(reader, QStringLiteral("charsets"),
        {QStringLiteral("GSM"), QStringLiteral("IRA"), QStringLiteral("UCS2")});
    read.smsStores = textsOr(
        reader, QStringLiteral("smsStores"), {QStringLiteral("SM"), QStringLiteral("ME")});
    readUssd(reader.object(QStringLiteral("ussd")), &read);
    read.dialsAnyNumber = reader.flag(QStringLiteral("dialsAnyNumber"), false);
    read.resetReplugs = reader.flag(QStringLiteral("resetReplugs"), false);
    read.bootMs = reader.number(QStringLiteral("bootMs"), read.bootMs, 0, 60000);
    read.bootLines = reader.texts(QStringLiteral("bootLines"));
    const QList<JsonReader> periodic = reader.objects(QStringLiteral("periodicLines"));
    for (JsonReader line : periodic) {
        read.periodicLines.append({line.text(QStringLiteral("text")),
            line.number(QStringLiteral("periodMs"), 1000, 10, 3600000),
            line.text(QStringLiteral("stoppedBy")), line.text(QStringLiteral("startedBy"))});
        line.finish();
    }
    JsonReader answers = reader.object(QStringLiteral("answers"));
    for (const QString &command : answers.keys()) {
        if (!command.startsWith(QLatin1String("AT")))
            answers.fail(command, QStringLiteral("must begin with AT"));
        read.answers.insert(command, ModemAnswer::read(answers, command));
    }
    reader.finish();
    if (!error->isEmpty())
        return false;
    *profile = read;
    return true;
}
