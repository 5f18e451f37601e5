#include "scenario.h"

#include "builtinfiles.h"
#include "busnames.h"
#include "gsmtext.h"
#include "jsonreader.h"
#include "modemprofile.h"
#include "simulatedmodem.h"
#include "simulatedservice.h"

#include <QDateTime>

#include <algorithm>

namespace {

ScenarioSms readSms(JsonReader reader)
{
    ScenarioSms sms;
    sms.sender = reader.text(QStringLiteral("sender"));
    sms.time = reader.text(QStringLiteral("time"));
    sms.text = reader.text(QStringLiteral("text"));
    sms.order = reader.numbers(QStringLiteral("order"), 1, 255);
    sms.data = reader.text(QStringLiteral("data"));
    sms.report = reader.flag(QStringLiteral("report"), false);
    sms.pdu = reader.text(QStringLiteral("pdu"));
    sms.read = reader.flag(QStringLiteral("read"), false);
    sms.store = reader.text(QStringLiteral("store"));
    if (!sms.time.isEmpty() && !QDateTime::fromString(sms.time, Qt::ISODate).isValid())
        reader.fail(
            QStringLiteral("time"), QStringLiteral("must be like 2026-03-01T12:00:00+03:00"));
    QList<int> sorted = sms.order;
    std::sort(sorted.begin(), sorted.end());
    const int parts = gsmtext::smsParts(sms.text).size();
    for (int i = 0; i < sorted.size(); ++i) {
        if (sorted.at(i) != i + 1 || sorted.size() != parts)
            reader.fail(QStringLiteral("order"),
                QStringLiteral("must name each of the %1 parts once").arg(parts));
    }
    reader.finish();
    return sms;
}

ScenarioSim readSim(JsonReader reader)
{
    ScenarioSim sim;
    sim.present = reader.flag(QStringLiteral("present"), true);
    sim.pin = reader.text(QStringLiteral("pin"));
    sim.imsi = reader.text(QStringLiteral("imsi"));
    sim.iccid = reader.text(QStringLiteral("iccid"));
    sim.number = reader.text(QStringLiteral("number"));
    sim.ussd = reader.textMap(QStringLiteral("ussd"));
    sim.smsAnswers = reader.textMap(QStringLiteral("smsAnswers"));
    sim.numberOnCard = reader.flag(QStringLiteral("numberOnCard"), true);
    sim.balance = reader.text(QStringLiteral("balance"));
    sim.smsCentre = reader.text(QStringLiteral("smsCentre"), sim.smsCentre);
    sim.smsCapacity = reader.number(QStringLiteral("smsCapacity"), sim.smsCapacity, 0, 255);
    sim.readyMs = reader.number(QStringLiteral("readyMs"), 0, 0, 600000);
    const QList<JsonReader> messages = reader.objects(QStringLiteral("sms"));
    for (const JsonReader &message : messages)
        sim.sms.append(readSms(message));
    reader.finish();
    return sim;
}

ScenarioLogin readLogin(JsonReader reader)
{
    ScenarioLogin login;
    login.protocol
        = reader.word(QStringLiteral("protocol"), {QStringLiteral("chap"), QStringLiteral("pap")});
    login.user = reader.text(QStringLiteral("user"));
    login.password = reader.text(QStringLiteral("password"));
    reader.finish();
    return login;
}

ScenarioNetwork readNetwork(JsonReader reader)
{
    ScenarioNetwork network;
    network.registered = reader.flag(QStringLiteral("registered"), network.registered);
    network.roaming = reader.flag(QStringLiteral("roaming"), network.roaming);
    network.mcc = reader.number(QStringLiteral("mcc"), network.mcc, 1, 999);
    network.mnc = reader.number(QStringLiteral("mnc"), network.mnc, 0, 999);
    network.name = reader.text(QStringLiteral("name"), network.name);
    network.shortName = reader.text(QStringLiteral("shortName"), network.name.left(8).trimmed());
    network.registerMs = reader.number(QStringLiteral("registerMs"), 0, 0, 600000);
    network.answerMs = reader.number(QStringLiteral("answerMs"), network.answerMs, 0, 600000);
    network.lac = reader.text(QStringLiteral("lac"), network.lac);
    network.cid = reader.text(QStringLiteral("cid"), network.cid);
    network.rssi = reader.number(QStringLiteral("rssi"), network.rssi, 0, 99);
    network.apn = reader.text(QStringLiteral("apn"));
    network.login = readLogin(reader.object(QStringLiteral("login")));
    reader.finish();
    return network;
}

ScenarioConnection readConnection(JsonReader reader, const QString &modem)
{
    ScenarioConnection connection;
    connection.name = reader.text(QStringLiteral("name"), modem);
    connection.user = reader.text(QStringLiteral("user"));
    connection.password = reader.text(QStringLiteral("password"));
    connection.phone = reader.text(QStringLiteral("phone"), connection.phone);
    connection.baudrate
        = reader.number(QStringLiteral("baudrate"), connection.baudrate, 300, 4000000);
    connection.initLines = reader.texts(QStringLiteral("initLines"));
    reader.finish();
    return connection;
}

ScenarioModem readModem(JsonReader &reader)
{
    ScenarioModem modem;
    modem.name = reader.text(QStringLiteral("name"));
    if (modem.name.isEmpty())
        reader.fail(QStringLiteral("name"), QStringLiteral("must be given"));
    modem.profile = reader.text(QStringLiteral("profile"));
    ModemProfile profile;
    QString profileError;
    if (!ModemProfile::load(modem.profile, &profile, &profileError))
        reader.fail(QStringLiteral("profile"), profileError);
    modem.imei = reader.text(QStringLiteral("imei"));
    modem.sim = readSim(reader.object(QStringLiteral("sim")));
    for (const ScenarioSms &sms : qAsConst(modem.sim.sms)) {
        if (!sms.store.isEmpty() && !profile.smsStores.contains(sms.store))
            reader.fail(QStringLiteral("sim.sms"),
                QStringLiteral("the profile has no memory \"%1\"").arg(sms.store));
    }
    modem.network = readNetwork(reader.object(QStringLiteral("network")));
    modem.latencyMs = reader.number(QStringLiteral("latencyMs"), modem.latencyMs, 0, 600000);
    modem.latency = reader.numberMap(QStringLiteral("latency"), 0, 600000);
    modem.connectMs = reader.number(QStringLiteral("connectMs"), modem.connectMs, 0, 600000);
    if (reader.has(QStringLiteral("answers"))) {
        JsonReader answers = reader.object(QStringLiteral("answers"));
        for (const QString &command : answers.keys())
            modem.answers.insert(command, answers.texts(command));
    }
    modem.fault = reader.word(
        QStringLiteral("fault"), QStringList(QString()) + SimulatedModem::faultNames());
    modem.plugged = reader.flag(QStringLiteral("plugged"), true);
    modem.hasConnection = reader.has(QStringLiteral("connection"));
    if (modem.hasConnection)
        modem.connection = readConnection(reader.object(QStringLiteral("connection")), modem.name);
    reader.finish();
    return modem;
}

QMap<QString, ScenarioService> readServices(JsonReader reader)
{
    QMap<QString, ScenarioService> services;
    for (const QString &name :
        {tavbus::BUSNAME_TAVMODEMS, tavbus::BUSNAME_ACCEPTORS, tavbus::BUSNAME_PRINTSERVICE,
            tavbus::BUSNAME_WATCHDOGS, tavbus::BUSNAME_TERMINAL_GUI}) {
        JsonReader item = reader.object(name);
        ScenarioService service;
        service.present = item.flag(QStringLiteral("present"), true);
        service.fault = item.word(QStringLiteral("fault"), SimulatedService::faultNames());
        service.delayMs = item.number(QStringLiteral("delayMs"), service.delayMs, 0, 600000);
        service.holdsPorts
            = item.flag(QStringLiteral("holdsPorts"), name == tavbus::BUSNAME_TAVMODEMS);
        item.finish();
        services.insert(name, service);
    }
    reader.finish();
    return services;
}

} // namespace

bool Scenario::load(const QString &nameOrPath, Scenario *scenario, QString *error)
{
    return BuiltInFiles::load(
        BuiltInFiles::Kind::Scenario, nameOrPath,
        [scenario](const QByteArray &json, QString *parseError) {
            return parse(json, scenario, parseError);
        },
        error);
}

bool Scenario::parse(const QByteArray &json, Scenario *scenario, QString *error)
{
    JsonReader reader = JsonReader::ofFile(json, error);
    Scenario read;
    QSet<QString> names;
    const QList<JsonReader> modems = reader.objects(QStringLiteral("modems"));
    for (JsonReader item : modems) {
        const ScenarioModem modem = readModem(item);
        if (names.contains(modem.name))
            item.fail(
                QStringLiteral("name"), QStringLiteral("\"%1\" is there twice").arg(modem.name));
        names.insert(modem.name);
        read.modems.append(modem);
    }
    read.services = readServices(reader.object(QStringLiteral("services")));
    JsonReader pages = reader.object(QStringLiteral("pages"));
    for (const QString &page : {QStringLiteral("maker"), QStringLiteral("public")})
        read.pages.insert(page,
            pages.word(
                page, {QStringLiteral("always"), QStringLiteral("ppp"), QStringLiteral("never")}));
    pages.finish();
    read.ethernet = reader.texts(QStringLiteral("ethernet"));
    read.interfaces = reader.texts(QStringLiteral("interfaces")).join(QLatin1Char('\n'));
    if (!read.interfaces.isEmpty())
        read.interfaces += QLatin1Char('\n');
    reader.finish();
    if (!error->isEmpty())
        return false;
    *scenario = read;
    return true;
}
