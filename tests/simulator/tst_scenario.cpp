#include "builtinfiles.h"
#include "modemprofile.h"
#include "scenario.h"

#include <QTest>

class TestScenario : public QObject
{
    Q_OBJECT

private slots:
    void everyScenarioThatComesAlongIsRead_data();
    void everyScenarioThatComesAlongIsRead();
    void everyProfileThatComesAlongIsRead_data();
    void everyProfileThatComesAlongIsRead();
    void badScenarioIsRefusedWithItsPlace_data();
    void badScenarioIsRefusedWithItsPlace();
    void badProfileIsRefusedWithItsPlace_data();
    void badProfileIsRefusedWithItsPlace();
    void everyProfileIsInTheScenarioOfAll();
    void emptyScenarioIsATerminalWithoutModems();
    void unknownNameListsWhatThereIs();
    void onlyAFileOfReasonableSizeIsRead_data();
    void onlyAFileOfReasonableSizeIsRead();
};

void TestScenario::everyScenarioThatComesAlongIsRead_data()
{
    QTest::addColumn<QString>("name");
    const QStringList names = BuiltInFiles::names(BuiltInFiles::Kind::Scenario);
    QVERIFY(names.contains(QStringLiteral("default")));
    for (const QString &name : names)
        QTest::newRow(qPrintable(name)) << name;
}

void TestScenario::everyScenarioThatComesAlongIsRead()
{
    QFETCH(QString, name);
    Scenario scenario;
    QString error;
    QVERIFY2(Scenario::load(name, &scenario, &error), qPrintable(error));
}

void TestScenario::everyProfileThatComesAlongIsRead_data()
{
    QTest::addColumn<QString>("name");
    for (const QString &name : ModemProfile::names())
        QTest::newRow(qPrintable(name)) << name;
}

void TestScenario::everyProfileThatComesAlongIsRead()
{
    QFETCH(QString, name);
    ModemProfile profile;
    QString error;
    QVERIFY2(ModemProfile::load(name, &profile, &error), qPrintable(error));
    QVERIFY(!profile.manufacturer.isEmpty());
    QVERIFY(!profile.model.isEmpty());
    QCOMPARE(profile.imei.size(), 15);
}

void TestScenario::badScenarioIsRefusedWithItsPlace_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    const auto modem = [](const char *inside) {
        return QByteArray(R"({"modems": [{"name": "gsm1", "profile": "huawei-e173", )") + inside
            + "}]}";
    };
    QTest::newRow("no JSON") << QByteArray("{,}") << "not JSON: unterminated object at byte 2";
    QTest::newRow("a list") << QByteArray("[]") << "the whole file: must be an object";
    QTest::newRow("unknown key") << QByteArray(R"({"modem": []})") << "modem: is not known";
    QTest::newRow("modems not a list")
        << QByteArray(R"({"modems": {}})") << "modems: must be a list";
    QTest::newRow("modem not an object")
        << QByteArray(R"({"modems": ["gsm1"]})") << "modems[0]: must be an object";
    QTest::newRow("modem without a name")
        << QByteArray(R"({"modems": [{"profile": "huawei-e173"}]})")
        << "modems[0].name: must be given";
    QTest::newRow("two modems of one name")
        << QByteArray(R"({"modems": [{"name": "a", "profile": "huawei-e173"},
                                     {"name": "a", "profile": "huawei-e173"}]})")
        << "modems[1].name: \"a\" is there twice";
    QTest::newRow("unknown key of a modem")
        << modem(R"("simm": {})") << "modems[0].simm: is not known";
    QTest::newRow("unknown key deep inside")
        << modem(R"("sim": {"pim": "1"})") << "modems[0].sim.pim: is not known";
    QTest::newRow("number for a text")
        << modem(R"("sim": {"pin": 1234})") << "modems[0].sim.pin: must be a text";
    QTest::newRow("text for a flag")
        << modem(R"("plugged": "yes")") << "modems[0].plugged: must be true or false";
    QTest::newRow("number out of range")
        << modem(R"("network": {"rssi": 100})")
        << "modems[0].network.rssi: must be a whole number from 0 to 99";
    QTest::newRow("login by a protocol that the far end does not have")
        << modem(R"("network": {"login": {"protocol": "eap", "user": "a"}})")
        << "modems[0].network.login.protocol: \"eap\" is none of \"chap\", \"pap\"";
    QTest::newRow("half a millisecond") << modem(
        R"("latencyMs": 0.5)") << "modems[0].latencyMs: must be a whole number from 0 to 600000";
    QTest::newRow("latency of a command")
        << modem(R"("latency": {"AT+COPS": -1})")
        << "modems[0].latency.AT+COPS: must be a whole number from 0 to 600000";
    QTest::newRow("time of a message")
        << modem(R"("sim": {"sms": [{"sender": "1", "time": "yesterday", "text": ""}]})")
        << "modems[0].sim.sms[0].time: must be like 2026-03-01T12:00:00+03:00";
    QTest::newRow("parts of a message that has none")
        << modem(R"("sim": {"sms": [{"sender": "1", "text": "short", "order": [2, 1]}]})")
        << "modems[0].sim.sms[0].order: must name each of the 1 parts once";
    QTest::newRow("order not numbers")
        << modem(R"("sim": {"sms": [{"sender": "1", "order": ["1"]}]})")
        << "modems[0].sim.sms[0].order: must be a list of whole numbers from 1 to 255";
    QTest::newRow("memory that the modem does not have")
        << modem(R"("sim": {"sms": [{"sender": "1", "store": "XX"}]})")
        << "modems[0].sim.sms: the profile has no memory \"XX\"";
    QTest::newRow("unknown service")
        << QByteArray(R"({"services": {"printer": {}}})") << "services.printer: is not known";
    QTest::newRow("page") << QByteArray(R"({"pages": {"maker": "sometimes"}})")
                          << "pages.maker: \"sometimes\" is none of \"always\", \"ppp\", \"never\"";
    QTest::newRow("interfaces not texts")
        << QByteArray(R"({"interfaces": [1]})") << "interfaces: must be a list of texts";
}

void TestScenario::badScenarioIsRefusedWithItsPlace()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    Scenario scenario;
    scenario.ethernet = QStringList(QStringLiteral("untouched"));
    QString told;
    QVERIFY(!Scenario::parse(json, &scenario, &told));
    QCOMPARE(told, error);
    QCOMPARE(scenario.ethernet, QStringList(QStringLiteral("untouched")));
}

void TestScenario::badProfileIsRefusedWithItsPlace_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    const auto profile = [](const char *inside) {
        return QByteArray(R"({"source": "a manual", "usb": {"vendorId": "1", "productId": "2"}, )")
            + inside + "}";
    };
    QTest::newRow("no JSON") << QByteArray("{,}") << "not JSON: unterminated object at byte 2";
    QTest::newRow("a list") << QByteArray("[]") << "the whole file: must be an object";
    QTest::newRow("answers from nowhere")
        << QByteArray("{}") << "source: must name where the answers come from";
    QTest::newRow("vendor not a number")
        << QByteArray(R"({"source": "a", "usb": {"vendorId": "zte", "productId": "2"}})")
        << "usb.vendorId: must be four hexadecimal digits";
    QTest::newRow("no data port") << profile(R"("ports": ["control"])")
                                  << "ports: must have one \"data\" port";
    QTest::newRow("port of another kind")
        << profile(R"("ports": ["data", "voice"])")
        << "ports: \"voice\" is none of \"data\", \"control\", \"diagnostic\"";
    QTest::newRow("command without AT") << profile(R"("ports": ["data"], "answers": {"+CSQ": ""})")
                                        << "answers.+CSQ: must begin with AT";
    QTest::newRow("answer a number") << profile(R"("ports": ["data"], "answers": {"AT+CSQ": 5})")
                                     << "answers.AT+CSQ: must be an object";
    QTest::newRow("unknown key of an answer")
        << profile(R"("ports": ["data"], "answers": {"AT+CSQ": {"line": []}})")
        << "answers.AT+CSQ.line: is not known";
    QTest::newRow("no character set")
        << profile(R"("ports": ["data"], "charsets": [])") << "charsets: must not be empty";
    QTest::newRow("form of USSD")
        << profile(R"("ports": ["data"], "ussd": {"answer": "hex"})")
        << "ussd.answer: \"hex\" is none of \"charset\", \"packed\", \"ucs2\"";
    QTest::newRow("composition without a data port")
        << profile(R"("ports": ["data"], "compositions": [{"ports": {"0": ["control"]}}])")
        << "compositions[0].ports.0: must have one \"data\" port";
    QTest::newRow("unknown key of a composition")
        << profile(R"("ports": ["data"], "compositions": [{"values": {}}])")
        << "compositions[0].values: is not known";
}

void TestScenario::badProfileIsRefusedWithItsPlace()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    ModemProfile profile;
    QString told;
    QVERIFY(!ModemProfile::parse(json, &profile, &told));
    QCOMPARE(told, error);
}

// What a query must show can be told from what another modem has.
void TestScenario::everyProfileIsInTheScenarioOfAll()
{
    Scenario scenario;
    QString error;
    QVERIFY2(Scenario::load(QStringLiteral("all-profiles"), &scenario, &error), qPrintable(error));
    QStringList profiles;
    QSet<QString> cells;
    QSet<QString> numbers;
    QSet<QString> balances;
    QSet<int> signalLevels;
    for (const ScenarioModem &modem : qAsConst(scenario.modems)) {
        profiles.append(modem.profile);
        cells.insert(modem.network.cid);
        numbers.insert(modem.sim.number);
        balances.insert(modem.sim.balance);
        signalLevels.insert(modem.network.rssi);
    }
    profiles.sort();
    QCOMPARE(profiles, ModemProfile::names());
    QCOMPARE(cells.size(), profiles.size());
    QCOMPARE(numbers.size(), profiles.size());
    QCOMPARE(balances.size(), profiles.size());
    QCOMPARE(signalLevels.size(), profiles.size());
}

void TestScenario::emptyScenarioIsATerminalWithoutModems()
{
    Scenario scenario;
    QString error;
    QVERIFY(Scenario::parse("{}", &scenario, &error));
    QVERIFY(scenario.modems.isEmpty());
    QCOMPARE(scenario.services.size(), 5);
    QCOMPARE(scenario.pages.value(QStringLiteral("maker")), QStringLiteral("always"));
}

void TestScenario::unknownNameListsWhatThereIs()
{
    Scenario scenario;
    QString error;
    QVERIFY(!Scenario::load(QStringLiteral("nowhere"), &scenario, &error));
    QVERIFY2(error.contains(QLatin1String("there is no \"nowhere\"")), qPrintable(error));
    QVERIFY2(error.contains(QLatin1String("default")), qPrintable(error));
}

void TestScenario::onlyAFileOfReasonableSizeIsRead_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("reason");
    QTest::newRow("device without end")
        << QStringLiteral("/dev/zero") << QStringLiteral("larger than 1 MB");
    QTest::newRow("directory") << QStringLiteral("/tmp/") << QStringLiteral("cannot read");
    QTest::newRow("no file") << QStringLiteral("missing.json") << QStringLiteral("No such file");
}

void TestScenario::onlyAFileOfReasonableSizeIsRead()
{
    QFETCH(QString, path);
    QFETCH(QString, reason);
    Scenario scenario;
    ModemProfile profile;
    QString error;
    QVERIFY(!Scenario::load(path, &scenario, &error));
    QVERIFY2(error.contains(reason), qPrintable(error));
    QVERIFY(!ModemProfile::load(path, &profile, &error));
    QVERIFY2(error.contains(reason), qPrintable(error));
}

QTEST_APPLESS_MAIN(TestScenario)

#include "tst_scenario.moc"
