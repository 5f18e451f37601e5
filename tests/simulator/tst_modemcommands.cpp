#include "conversation.h"
#include "gsmtext.h"

#include <QElapsedTimer>
#include <QRegularExpression>

#include <algorithm>

// What a modem answers to the commands of a query, in the manner of its family.
class TestModemCommands : public QObject
{
    Q_OBJECT

private slots:
    void everyPlaceInEveryProfileIsFilled_data();
    void everyPlaceInEveryProfileIsFilled();
    void network_data();
    void network();
    void networkTakesItsTime();
    void cardTakesItsTime();
    void sim_data();
    void sim();
    void cardFiles_data();
    void cardFiles();
    void charsets_data();
    void charsets();
    void composition_data();
    void composition();

    void ussd_data();
    void ussd();
    void ussdOfTheNetwork_data();
    void ussdOfTheNetwork();
    void ussdAnswerTakesItsTime();

    void smsStores();
    void smsStoreThatIsFull();
    void smsInTheOrderOfTheScenario();
    void fiftySmsOfTheScenario();
    void smsKinds();
    void smsInUcs2Charset();
    void smsDetails();
    void smsNumbersOfOneZero();
    void smsErrors_data();
    void smsErrors();
    void smsSending_data();
    void smsSending();
    void smsAnswerTakesItsTime();
    void smsIsHandedOver_data();
    void smsIsHandedOver();
};

namespace {

ScenarioModem roamer()
{
    ScenarioModem modem = withSim();
    modem.network.mcc = 255;
    modem.network.mnc = 3;
    modem.network.name = QStringLiteral("Kyivstar UA");
    modem.network.shortName = QStringLiteral("Kyivstar");
    modem.network.lac = QStringLiteral("F");
    modem.network.cid = QStringLiteral("1B2");
    modem.network.rssi = 31;
    modem.network.roaming = true;
    return modem;
}

} // namespace

void TestModemCommands::everyPlaceInEveryProfileIsFilled_data()
{
    QTest::addColumn<QString>("profile");
    for (const QString &name : ModemProfile::names())
        QTest::newRow(qPrintable(name)) << name;
}

void TestModemCommands::everyPlaceInEveryProfileIsFilled()
{
    QFETCH(QString, profile);
    Conversation modem(roamer(), profile);
    const ModemProfile &table = modem.state->profile;
    QStringList texts = {table.location, table.noLocation, table.ownNumber, table.noOwnNumber};
    texts += table.bootLines;
    for (const PeriodicLine &line : table.periodicLines)
        texts += line.text;
    for (const ModemAnswer &answer : table.answers)
        texts += answer.lines + answer.later;
    const QRegularExpression left(QStringLiteral("\\{\\w+"));
    for (const QString &text : qAsConst(texts)) {
        const QString filled = QString::fromUtf8(modem.state->filled(text));
        QVERIFY2(!left.match(filled).hasMatch(), qPrintable(filled));
    }
}

void TestModemCommands::network_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char *profile, const char *command, const QByteArray &answer) {
        QTest::addRow("%s %s", profile, command)
            << QString::fromLatin1(profile) << QByteArray(command) << answer;
    };
    row("generic", "AT+COPS?", info("+COPS: 0,0,\"Kyivstar UA\""));
    row("generic", "AT+COPS=3,1;+COPS?", info("+COPS: 0,1,\"Kyivstar\""));
    row("generic", "AT+COPS=3,2;+COPS?", info("+COPS: 0,2,\"25503\""));
    row("generic", "AT+COPS=3,3", kError);
    row("generic", "AT+COPS=3,2;+COPS=3;+COPS?", info("+COPS: 0,2,\"25503\""));
    row("generic", "AT+COPS=2;+COPS?;+CREG?", "\r\n+COPS: 2\r\n" + info("+CREG: 0,0"));
    row("generic", "AT+COPS=2;+COPS=0;+CREG?", info("+CREG: 0,5"));
    row("generic", "AT+COPS=1,2,\"25503\";+CREG?", info("+CREG: 0,5"));
    row("generic", "AT+CMEE=1;+COPS=1,2,\"25001\"", "\r\n+CME ERROR: 30\r\n");
    row("generic", "AT+COPS=?",
        info("+COPS: (2,\"Kyivstar UA\",\"Kyivstar\",\"25503\",0),,(0,1,2,3,4),(0,1,2)"));
    row("generic", "AT+CSCS=\"UCS2\";+COPS=3,1;+COPS?",
        info("+COPS: 0,1,\"004B0079006900760073007400610072\""));
    row("generic", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"000f\",\"000001b2\""));
    row("generic", "AT+CGREG=2;+CGREG?;+CREG?",
        "\r\n+CGREG: 2,5,\"000f\",\"000001b2\"\r\n" + info("+CREG: 0,5"));
    row("generic", "AT+CREG=3", kError);
    row("generic", "AT+CREG=?", info("+CREG: (0-2)"));
    row("generic", "AT+CSQ", info("+CSQ: 31,99"));
    row("generic", "AT+CSQ=?", info("+CSQ: (0-31,99),(0-7,99)"));
    row("generic", "AT+CFUN=0;+CSQ", info("+CSQ: 99,99"));
    row("generic", "AT+CGATT?", info("+CGATT: 1"));
    row("huawei-e173", "AT+COPS?", info("+COPS: 0,0,\"Kyivstar UA\",2"));
    row("huawei-e173", "AT+CREG=2;+CREG?", info("+CREG: 2,5,F,1B2"));
    row("huawei-e173", "AT+CREG=2;+CFUN=4;+CREG?", info("+CREG: 2,0,00,0"));
    row("huawei-e173", "AT^RSSI?", info("^RSSI:31"));
    row("zte-mf180", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"F\",\"1B2\""));
    row("simcom-sim800", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"000F\",\"01B2\""));
    row("quectel-ec25", "AT+CEREG=2;+CEREG?", info("+CEREG: 2,5,\"F\",\"1B2\",7"));
    row("huawei-e3372", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"F\",\"000001B2\""));
    row("huawei-e3372", "AT^HCSQ?", info("^HCSQ:\"LTE\",70,35,86,14"));
    row("huawei-e3372", "AT+COPS?", info("+COPS: 0,0,\"Kyivstar UA\",7"));
    row("zte-mf823", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"F\",\"1B2\",7"));
    row("zte-mf823", "AT+CEREG?", info("+CEREG: 0,5"));
    row("telit", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"000F\",\"000001B2\",7"));
    row("telit", "AT#SERVINFO",
        info("#SERVINFO: 1300,-51,\"Kyivstar UA\",\"25503\",00001B2,000F,64,3,-88"));
    row("ublox", "AT+CREG=2;+CREG?", info("+CREG: 2,5,\"000F\",\"000001B2\",2"));
    row("sierra", "AT+CREG=2;+CREG?", info("+CREG: 2,5,000F,000001B2"));
}

void TestModemCommands::network()
{
    QFETCH(QString, profile);
    QFETCH(QByteArray, command);
    Conversation modem(roamer(), profile);
    QTEST(modem.ask(command), "answer");
}

void TestModemCommands::networkTakesItsTime()
{
    ScenarioModem scenario = withSim();
    scenario.network.registerMs = 100;
    Conversation modem(scenario);
    modem.state->powerUp();
    QCOMPARE(modem.ask("AT+CREG?"), info("+CREG: 0,2"));
    QCOMPARE(modem.ask("AT+CIMI"), info("250011234567890"));
    QTRY_COMPARE(modem.ask("AT+CREG?"), info("+CREG: 0,1"));
}

void TestModemCommands::cardTakesItsTime()
{
    ScenarioModem scenario = withSim();
    scenario.sim.readyMs = 100;
    Conversation modem(scenario);
    modem.ask("AT+CMEE=1");
    modem.state->powerUp();
    QCOMPARE(modem.ask("AT+CPIN?"), QByteArray("\r\n+CME ERROR: 14\r\n"));
    QCOMPARE(modem.ask("AT+CIMI"), QByteArray("\r\n+CME ERROR: 14\r\n"));
    QTRY_COMPARE(modem.ask("AT+CPIN?"), info("+CPIN: READY"));
}

void TestModemCommands::sim_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<bool>("numberOnCard");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    const auto row
        = [](const char *profile, bool onCard, const char *command, const QByteArray &answer) {
              QTest::addRow("%s %s%s", profile, command, onCard ? "" : ", no number")
                  << QString::fromLatin1(profile) << onCard << QByteArray(command) << answer;
          };
    const QByteArray iccid = "8970101";
    row("generic", true, "AT+CNUM", info("+CNUM: ,\"+79161234567\",145"));
    row("generic", false, "AT+CNUM", kOk);
    row("generic", true, "AT+CSCS=\"UCS2\";+CNUM", info("+CNUM: ,\"+79161234567\",145"));
    row("generic", true, "AT+CCID", info("+CCID: " + iccid));
    row("huawei-e173", true, "AT+CNUM", info("+CNUM: \"\",\"+79161234567\",145"));
    row("huawei-e173", true, "AT^ICCID?", info("^ICCID: " + iccid));
    row("simcom-sim800", true, "AT+CNUM", info("+CNUM: \"\",\"+79161234567\",145,7,4"));
    row("simcom-sim800", true, "AT+CCID", info(iccid));
    row("quectel-ec25", true, "AT+CNUM", info("+CNUM: ,\"+79161234567\",145"));
    row("quectel-ec25", true, "AT+QCCID", info("+QCCID: " + iccid));
    row("zte-mf180", true, "AT+ZGETICCID", info("ICCID: " + iccid));
    row("huawei-e3372", false, "AT+CNUM", info("+CNUM: \"\",\"\",129"));
    row("huawei-e3372", true, "AT^ICCID?", info("^ICCID: " + iccid));
    row("zte-mf823", true, "AT+ZGETICCID", info("+ZGETICCID: " + iccid));
    row("telit", true, "AT+CNUM", info("+CNUM: \"PHONENUM1\",\"+79161234567\",145"));
    row("telit", true, "AT#CCID", info("#CCID: " + iccid));
    row("telit", true, "AT#CIMI", info("#CIMI: 250011234567890"));
    row("ublox", true, "AT+CCID", info("+CCID: " + iccid));
    row("sierra", true, "AT+CNUM", info("+CNUM: \"Line 1\",\"+79161234567\",145"));
    row("sierra", true, "AT!ICCID?", info("!ICCID: " + iccid));
    row("cinterion-bgs2", true, "AT^SCID", info("^SCID: " + iccid));
}

void TestModemCommands::sim()
{
    QFETCH(QString, profile);
    QFETCH(bool, numberOnCard);
    QFETCH(QByteArray, command);
    ScenarioModem scenario = withSim();
    scenario.sim.numberOnCard = numberOnCard;
    Conversation modem(scenario, profile);
    QTEST(modem.ask(command), "answer");
}

void TestModemCommands::cardFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QByteArray>("answer");
    // The digits turned round in pairs, as 3GPP TS 51.011 has them on the card.
    QTest::newRow("serial number")
        << QByteArray("12258,0,0,10") << info("+CRSM: 144,0,\"98070101214365870910\"");
    QTest::newRow("subscriber") << QByteArray("28423,0,0,9")
                                << info("+CRSM: 144,0,\"082905101032547698\"");
    QTest::newRow("network code of two digits")
        << QByteArray("28589,0,0,4") << info("+CRSM: 144,0,\"00000002\"");
    QTest::newRow("part of a file") << QByteArray("28589,0,2,2") << info("+CRSM: 144,0,\"0002\"");
    QTest::newRow("a file that is not there") << QByteArray("28999,0,0,0") << info("+CRSM: 148,4");
}

void TestModemCommands::cardFiles()
{
    QFETCH(QByteArray, file);
    ScenarioModem scenario = withSim();
    scenario.sim.iccid = QStringLiteral("89701010123456789001");
    scenario.sim.imsi = QStringLiteral("250010123456789");
    Conversation modem(scenario);
    QTEST(modem.ask("AT+CRSM=176," + file), "answer");
}

void TestModemCommands::charsets_data()
{
    QTest::addColumn<QByteArray>("charset");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("GSM") << QByteArray("GSM") << QByteArray("a\x02\x11z", 4);
    QTest::newRow("IRA") << QByteArray("IRA") << QByteArray("a$_z");
    QTest::newRow("UCS2") << QByteArray("UCS2") << QByteArray("00610024005F007A");
}

void TestModemCommands::charsets()
{
    QFETCH(QByteArray, charset);
    QFETCH(QByteArray, name);
    ScenarioModem scenario = withSim();
    scenario.network.name = QStringLiteral("a$_z");
    Conversation modem(scenario);
    QCOMPARE(modem.ask("AT+CSCS=\"" + charset + "\";+CSCS?;+COPS?"),
        "\r\n+CSCS: \"" + charset + "\"\r\n" + info("+COPS: 0,0,\"" + name + "\""));
    QCOMPARE(modem.ask("AT+CSCS=\"KLINGON\""), kError);
}

void TestModemCommands::composition_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QByteArray>("set");
    QTest::addColumn<QByteArray>("result");
    QTest::addColumn<QByteArray>("read");
    QTest::addColumn<QByteArray>("told");
    QTest::addColumn<QStringList>("ports");
    const QStringList fewer{QStringLiteral("data"), QStringLiteral("control")};
    const QStringList all{
        QStringLiteral("data"), QStringLiteral("diagnostic"), QStringLiteral("control")};
    QTest::newRow("modem only") << "huawei-e173" << QByteArray("AT^U2DIAG=0") << kOk
                                << QByteArray("AT^U2DIAG?") << info("^U2DIAG: 0") << fewer;
    QTest::newRow("back again") << "huawei-e173" << QByteArray("AT^U2DIAG=0;^U2DIAG=255") << kOk
                                << QByteArray("AT^U2DIAG?") << info("^U2DIAG: 255") << all;
    QTest::newRow("unknown value") << "huawei-e173" << QByteArray("AT^U2DIAG=77") << kError
                                   << QByteArray("AT^U2DIAG?") << info("^U2DIAG: 255") << all;
    QTest::newRow("list of ports")
        << "huawei-e173" << QByteArray("AT^SETPORT=\"A1,A2;1,2\"") << kOk
        << QByteArray("AT^SETPORT?") << info("^SETPORT:A1,A2;1,2") << fewer;
    QTest::newRow("list without a modem")
        << "huawei-e173" << QByteArray("AT^SETPORT=\"A1,A2;2,3\"") << kError
        << QByteArray("AT^SETPORT?") << info("^SETPORT:A1,A2;1,16,3,2,A1,A2") << all;
    QTest::newRow("list of an LTE stick")
        << "huawei-e3372" << QByteArray("AT^SETPORT=\"FF;10,12\"") << kOk
        << QByteArray("AT^SETPORT?") << info("^SETPORT:FF;10,12") << fewer;
    QTest::newRow("an LTE stick has no such command")
        << "huawei-e3372" << QByteArray("AT^U2DIAG=0") << kError << QByteArray("AT^SETPORT?")
        << info("^SETPORT:A1,A2;10,13,12,16,A1,A2") << all;
    QTest::newRow("another maker")
        << "quectel-ec25" << QByteArray("AT^U2DIAG=0") << kError << QByteArray("AT^U2DIAG?")
        << kError
        << QStringList{QStringLiteral("diagnostic"), QStringLiteral("diagnostic"),
               QStringLiteral("control"), QStringLiteral("data")};
}

void TestModemCommands::composition()
{
    QFETCH(QString, profile);
    QFETCH(QByteArray, set);
    QFETCH(QByteArray, read);
    Conversation modem(withSim(), profile);
    QTEST(modem.ask(set), "result");
    QTEST(modem.ask(read), "told");
    QTEST(modem.state->portsWhenPlugged, "ports");
    modem.state->powerUp(); // the device keeps it
    QTEST(modem.ask(read), "told");
}

void TestModemCommands::ussd_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QByteArray>("request");
    QTest::addColumn<QByteArray>("answer"); // everything that is said
    const auto row = [](const char *profile, const char *request, const QByteArray &answer) {
        QTest::addRow("%s %s", profile, request)
            << QString::fromLatin1(profile) << QByteArray(request) << answer;
    };
    const auto after = [](const QByteArray &line) { return kOk + "\r\n" + line + "\r\n"; };
    const QByteArray yes = "041404300021"; // "Да!"
    row("generic", "AT+CUSD=1,\"*100#\",15", info("+CUSD: 0,\"Balance: 150.50\",15"));
    row("generic", "AT+CUSD=1,\"*101#\",15", info("+CUSD: 0,\"" + yes + "\",72"));
    row("generic", "AT+CUSD=1,*100#,15", info("+CUSD: 0,\"Balance: 150.50\",15"));
    row("generic", "AT+CSCS=\"UCS2\";+CUSD=1,\"002A0031003000300023\",15",
        info("+CUSD: 0,\"00420061006C0061006E00630065003A0020003100350030002E00350030\",15"));
    row("generic", "AT+CSCS=\"UCS2\";+CUSD=1,\"*100#\",15", kError);
    // *100#, *102# and *105# packed after 3GPP TS 23.038, 6.1.2.3.
    row("huawei-e173", "AT+CUSD=1,\"AA18AC3602\",15",
        after("+CUSD: 0,\"" + QByteArray("C834") + "\",15"));
    row("huawei-e173", "AT+CUSD=1,\"AA184C3602\",15", after("+CUSD: 0,\"" + yes + "\",72"));
    row("huawei-e173", "AT+CUSD=1,\"*100#\",15", kError);
    row("zte-mf180", "AT+CUSD=1,\"*100#\",15",
        after("+CUSD: 0,\"00420061006C0061006E00630065003A0020003100350030002E00350030\",72"));
    row("simcom-sim800", "AT+CUSD=1,\"*100#\"", after("+CUSD: 0, \"Balance: 150.50\",15"));
    row("quectel-ec25", "AT+CUSD=1,\"*101#\",15", after("+CUSD: 0,\"" + yes + "\",72"));
    row("quectel-ec25", "AT+CUSD=2", kOk);
    row("quectel-ec25", "AT+CUSD?", info("+CUSD: 0"));
}

void TestModemCommands::ussd()
{
    QFETCH(QString, profile);
    QFETCH(QByteArray, request);
    QFETCH(QByteArray, answer);
    ScenarioModem scenario = withSim();
    scenario.network.answerMs = 1;
    scenario.sim.ussd = {{QStringLiteral("*100#"), QStringLiteral("Balance: 150.50")},
        {QStringLiteral("*101#"), QString::fromUtf8("Да!")},
        {QStringLiteral("*102#"), QString::fromUtf8("Да!")},
        {QStringLiteral("*105#"), QStringLiteral("Hi")}};
    Conversation modem(scenario, profile);
    modem.ask(request);
    QTRY_COMPARE(modem.said, answer);
}

void TestModemCommands::ussdOfTheNetwork_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("several lines")
        << "Balance: 1.00\nBonus: 2" << info("+CUSD: 0,\"Balance: 1.00\nBonus: 2\",15");
    QTest::newRow("amount and number of the scenario")
        << "{balance} r. on {number}" << info("+CUSD: 0,\"73.10 r. on +79161234567\",15");
    QTest::newRow("nothing in it") << "" << info("+CUSD: 0,\"\",15");
    QTest::newRow("terminated by the network") << "+CUSD: 2" << info("+CUSD: 2");
    QTest::newRow("without a coding scheme") << "+CUSD: 0,\"plain\"" << info("+CUSD: 0,\"plain\"");
    QTest::newRow("refused") << "+CME ERROR: 100" << QByteArray("\r\n+CME ERROR: 100\r\n");
}

void TestModemCommands::ussdOfTheNetwork()
{
    QFETCH(QString, text);
    ScenarioModem scenario = withSim();
    scenario.network.answerMs = 0;
    scenario.sim.balance = QStringLiteral("73.10");
    scenario.sim.ussd = {{QStringLiteral("*100#"), text}};
    Conversation modem(scenario);
    QTEST(modem.ask("AT+CUSD=1,\"*100#\",15"), "answer");
}

void TestModemCommands::ussdAnswerTakesItsTime()
{
    for (const char *profile : {"generic", "simcom-sim800"}) { // before OK and after it
        ScenarioModem scenario = withSim();
        scenario.network.answerMs = 150;
        Conversation modem(scenario, QString::fromLatin1(profile));
        modem.said.clear();
        QElapsedTimer clock;
        clock.start();
        modem.port->receive("AT+CUSD=1,\"*100#\",15\r");
        QVERIFY(modem.waitFor("Balance"));
        QVERIFY(clock.elapsed() >= 150);
    }
}

void TestModemCommands::smsStores()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "on the card"),
        waitingSms("MTS", "2026-03-01T12:00:01+03:00", "in the modem")};
    scenario.sim.sms[1].store = QStringLiteral("ME");
    scenario.sim.sms[1].read = true;
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1");
    QCOMPARE(modem.ask("AT+CPMS?"), info("+CPMS: \"SM\",1,50,\"SM\",1,50,\"SM\",1,50"));
    QCOMPARE(
        modem.ask("AT+CPMS=?"), info("+CPMS: (\"SM\",\"ME\"),(\"SM\",\"ME\"),(\"SM\",\"ME\")"));
    QVERIFY(modem.ask("AT+CMGL=\"ALL\"").contains("on the card"));
    QCOMPARE(modem.ask("AT+CPMS=\"ME\""), info("+CPMS: 1,50,1,50,1,50"));
    QCOMPARE(modem.ask("AT+CMGL=\"REC READ\""),
        info("+CMGL: 1,\"REC READ\",\"MTS\",,\"26/03/01,12:00:01+12\"\r\nin the modem"));
    QCOMPARE(modem.ask("AT+CMGD=1"), kOk);
    QCOMPARE(modem.ask("AT+CPMS=\"ME\",\"ME\",\"SM\";+CPMS?"),
        "\r\n+CPMS: 0,50,0,50,1,50\r\n" + info("+CPMS: \"ME\",0,50,\"ME\",0,50,\"SM\",1,50"));
    QCOMPARE(modem.ask("AT+CPMS=\"XX\""), QByteArray("\r\n+CMS ERROR: 302\r\n"));
}

void TestModemCommands::smsStoreThatIsFull()
{
    ScenarioModem scenario = withSim();
    scenario.network.answerMs = 0;
    scenario.sim.smsCapacity = 1;
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "first"),
        waitingSms("MTS", "2026-03-01T12:00:01+03:00", "second")};
    Conversation modem(scenario);
    QCOMPARE(modem.ask("AT+CPMS?"), info("+CPMS: \"SM\",1,1,\"SM\",1,1,\"SM\",1,1"));
    modem.ask("AT+CMGF=1;+CNMI=2,1");
    modem.ask("AT+CMGS=\"111\"");
    modem.port->receive("number please\x1a");
    QVERIFY(modem.waitFor("+CMGS: "));
    QTest::qWait(50);
    QVERIFY(!modem.said.contains("+CMTI"));
}

void TestModemCommands::smsInTheOrderOfTheScenario()
{
    ScenarioModem scenario = withSim();
    ScenarioSms sms = waitingSms("MTS", "2026-03-01T12:00:00+03:00", "");
    sms.text = QString(160, QLatin1Char('a')) + QString(150, QLatin1Char('b'));
    sms.order = {3, 1, 2};
    scenario.sim.sms = {sms};
    Conversation modem(scenario);
    const QList<gsmtext::Sms> kept = modem.state->smsStores.value("SM").values();
    QCOMPARE(kept.size(), 3);
    QCOMPARE(kept.at(0).part, 3);
    QCOMPARE(kept.at(1).part, 1);
    QCOMPARE(kept.at(1).text + kept.at(2).text + kept.at(0).text, sms.text);
    QCOMPARE(kept.at(2).reference, kept.at(0).reference);
}

void TestModemCommands::fiftySmsOfTheScenario()
{
    Scenario scenario;
    QString error;
    QVERIFY2(Scenario::load(QStringLiteral("fifty-sms"), &scenario, &error), qPrintable(error));
    const ScenarioModem &described = scenario.modems.first();
    Conversation modem(described, described.profile);
    const QList<gsmtext::Sms> kept = modem.state->smsStores.value("SM").values();
    QCOMPARE(kept.size(), 50);
    using Kind = gsmtext::Sms::Kind;
    int kinds[4] = {};
    int ucs2 = 0;
    int parts = 0;
    int surrogates = 0;
    for (const gsmtext::Sms &sms : kept) {
        ++kinds[static_cast<int>(sms.kind)];
        ucs2 += sms.ucs2 ? 1 : 0;
        parts += sms.parts > 1 ? 1 : 0;
        surrogates += std::any_of(sms.text.begin(), sms.text.end(),
                          [](QChar character) { return character.isSurrogate(); })
            ? 1
            : 0;
    }
    QCOMPARE(kinds[static_cast<int>(Kind::Data)], 1);
    QCOMPARE(kinds[static_cast<int>(Kind::Report)], 1);
    QCOMPARE(kinds[static_cast<int>(Kind::Raw)], 1);
    QCOMPARE(parts, 6);
    QCOMPARE(surrogates, 3);
    QVERIFY(ucs2 > 15 && ucs2 < 35);
    QCOMPARE(modem.ask("AT+CMGL=4").count("+CMGL: "), 50);
}

void TestModemCommands::smsKinds()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("+31641600986", "2002-08-26T19:37:41-05:00", "x"),
        waitingSms("+31641600986", "2002-08-26T19:37:41-05:00", ""),
        waitingSms("", "2002-08-26T19:37:41-05:00", "")};
    scenario.sim.sms[0].data = QStringLiteral("00ff10");
    scenario.sim.sms[1].report = true;
    scenario.sim.sms[2].pdu = QStringLiteral("0791BROKEN");
    scenario.sim.smsCentre.clear();
    Conversation modem(scenario);
    // Octets after 3GPP TS 23.040, 9.2.2.1 and 9.2.2.3.
    QCOMPARE(modem.ask("AT+CMGL=4"),
        info("+CMGL: 1,0,,22\r\n00040B911346610089F60004208062917314"
             "0A"
             "0300FF10\r\n"
             "+CMGL: 2,0,,25\r\n0006020B911346610089F6208062917314"
             "0A208062917364"
             "0A00\r\n"
             "+CMGL: 3,0,,0\r\n0791BROKEN"));
}

void TestModemCommands::smsInUcs2Charset()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "Hi")};
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1;+CSCS=\"UCS2\"");
    QCOMPARE(modem.ask("AT+CMGR=1"),
        info("+CMGR: \"REC UNREAD\",\"004D00540053\",,\"26/03/01,12:00:00+12\"\r\n00480069"));
    QCOMPARE(modem.ask("AT+CSCA?"),
        info("+CSCA: \"002B00370039003100360038003900390039003100300030\",145"));
}

void TestModemCommands::smsDetails()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("+79160000001", "2026-03-01T12:00:00+03:00", "Hello")};
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1;+CSDH=1");
    QCOMPARE(modem.ask("AT+CMGR=1"),
        info("+CMGR: \"REC UNREAD\",\"+79160000001\",,\"26/03/01,12:00:00+12\",145,5\r\nHello"));
    QCOMPARE(modem.ask("AT+CSMS=1;+CSMS?"), "\r\n+CSMS: 1,1,1\r\n" + info("+CSMS: 1,1,1,1"));
    QCOMPARE(modem.ask("AT+CNMI=2,1,0,1,0;+CNMI?"), info("+CNMI: 2,1,0,1,0"));
    QCOMPARE(modem.ask("AT+CMGF=?"), info("+CMGF: (0,1)"));
}

void TestModemCommands::smsNumbersOfOneZero()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "Hello")};
    Conversation modem(scenario, QStringLiteral("huawei-e173"));
    QVERIFY(modem.ask("AT+CMGL=4").contains("+CMGL: 0,0,,"));
    QCOMPARE(modem.ask("AT+CMGD=0"), kOk);
}

void TestModemCommands::smsErrors_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("result");
    QTest::newRow("by number") << QByteArray("AT+CMGR=9") << QByteArray("+CMS ERROR: 321");
    QTest::newRow("in words") << QByteArray("AT+CMEE=2;+CMGD=9")
                              << QByteArray("+CMS ERROR: invalid memory index");
    QTest::newRow("format out of range") << QByteArray("AT+CMGF=2") << QByteArray("ERROR");
    QTest::newRow("sending without a length")
        << QByteArray("AT+CMGS=\"111\"") << QByteArray("+CMS ERROR: 304");
}

void TestModemCommands::smsErrors()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, result);
    Conversation modem(withSim());
    QCOMPARE(modem.ask(command), "\r\n" + result + "\r\n");
}

void TestModemCommands::smsSending_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("said");
    const QByteArray pdu = "000100039111F1000005E8329BFD06"; // "hello" to +111
    QTest::newRow("PDU") << QByteArray("AT+CMGS=14") << pdu << QByteArray("\r\n+CMGS: 1\r\n");
    QTest::newRow("wrong length") << QByteArray("AT+CMGS=13") << pdu
                                  << QByteArray("\r\n+CMS ERROR: 304\r\n");
    QTest::newRow("no PDU") << QByteArray("AT+CMGS=3") << QByteArray("hello")
                            << QByteArray("\r\n+CMS ERROR: 304\r\n");
    QTest::newRow("text") << QByteArray("AT+CMGF=1;+CMGS=\"+111\"") << QByteArray("hello")
                          << QByteArray("\r\n+CMGS: 1\r\n");
}

void TestModemCommands::smsSending()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, said);
    Conversation modem(withSim());
    QCOMPARE(modem.ask(command), QByteArray("\r\n> "));
    modem.said.clear();
    modem.port->receive(text + '\x1a');
    QVERIFY2(modem.waitFor(said), modem.said.constData());
}

void TestModemCommands::smsAnswerTakesItsTime()
{
    ScenarioModem scenario = withSim();
    scenario.network.answerMs = 150;
    scenario.sim.smsAnswers = {{QStringLiteral("111"), QStringLiteral("You are {number}")}};
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1");
    modem.ask("AT+CMGS=\"111\"");
    QElapsedTimer clock;
    clock.start();
    modem.port->receive("number please\x1a");
    QVERIFY(modem.waitFor("+CMGS: "));
    QTRY_VERIFY(modem.ask("AT+CMGL=\"ALL\"").contains("\r\nYou are +79161234567\r\n"));
    QVERIFY(clock.elapsed() >= 150);
    QVERIFY(!modem.said.contains("+CMTI")); // AT+CNMI was not set
}

void TestModemCommands::smsIsHandedOver_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QByteArray>("begin");
    QTest::addColumn<QByteArray>("end");
    QTest::newRow("text") << QByteArray("AT+CMGF=1") << QByteArray("\r\n+CMT: \"111\",,\"")
                          << QByteArray("\"\r\n\r\nNumber 7\r\n");
    // "Number 7" in septets
    QTest::newRow("PDU") << QByteArray("AT+CMGF=0") << QByteArray("\r\n+CMT: ,")
                         << QByteArray("08CE7A5B5C96836E\r\n");
}

void TestModemCommands::smsIsHandedOver()
{
    QFETCH(QByteArray, format);
    QFETCH(QByteArray, begin);
    QFETCH(QByteArray, end);
    ScenarioModem scenario = withSim();
    scenario.network.answerMs = 0;
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1;+CNMI=2,2");
    modem.ask("AT+CMGS=\"111\"");
    modem.port->receive("number please\x1a" + format + '\r');
    QVERIFY2(modem.waitFor(begin), modem.said.constData());
    QVERIFY2(modem.said.contains(end), modem.said.constData());
    QCOMPARE(modem.state->smsStores.value("SM").size(), 0);
}

QTEST_GUILESS_MAIN(TestModemCommands)

#include "tst_modemcommands.moc"
