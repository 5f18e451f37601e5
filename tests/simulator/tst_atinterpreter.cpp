#include "conversation.h"
#include "gsmtext.h"

#include <QSignalSpy>
#include <QTest>

class TestAtInterpreter : public QObject
{
    Q_OBJECT

private slots:
    void basics_data();
    void basics();
    void family_data();
    void family();
    void echoIsOnUntilSwitchedOff();
    void terseResultsAreNumbers();
    void quietModeSaysNothing();
    void backspaceTakesACharacterBack();
    void lastLineIsRepeated();
    void noiseBeforeTheAttentionCodeIsIgnored();
    void overlongLineDoesNotGrow();
    void firstFailingCommandEndsTheLine();
    void commandsAheadWaitForTheirTurn();
    void latencyIsPerCommand();
    void scenarioAnswersReplaceTheProfiles();
    void dialling_data();
    void dialling();
    void anyCharacterGivesTheDialUp();
    void dataGoesThroughAfterConnect();
    void escapeAndReturn();
    void plusesInsideDataAreData();
    void hangUpEndsTheCall();
    void otherEndEndsTheCall();
    void unsolicitedLinesWaitForTheEndOfData();
    void simPin();
    void withoutSim_data();
    void withoutSim();
    void errorsAsAsked();
    void unknownUssdCode();
    void smsInTextMode();
    void smsInPduMode();
    void sendingAnSmsBringsTheAnswer();
    void sendingIsGivenUpWithEscape();
    void resetIsAsked();
};

void TestAtInterpreter::basics_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("attention") << QByteArray("AT") << kOk;
    QTest::newRow("lower case") << QByteArray("at") << kOk;
    QTest::newRow("unknown") << QByteArray("AT+NOSUCH") << kError;
    QTest::newRow("unknown reading") << QByteArray("AT+NOSUCH?") << kError;
    QTest::newRow("unknown setting") << QByteArray("AT+NOSUCH=1") << kError;
    QTest::newRow("unknown vendor command") << QByteArray("AT^SYSINFO") << kError;
    QTest::newRow("echo with a wrong value") << QByteArray("ATE7") << kError;
    QTest::newRow("register") << QByteArray("ATS7?") << info("050");
    QTest::newRow("register set and read") << QByteArray("ATS0=3S0?") << info("003");
    QTest::newRow("the dialer's line") << QByteArray("ATQ0 V1 E0 S0=0 &C1 &D2 +FCLASS=0") << kOk;
    QTest::newRow("two in a row") << QByteArray("AT+CGMM;+CSQ")
                                  << QByteArray("\r\nGPRS Modem\r\n") + info("+CSQ: 18,99");
    QTest::newRow("blanks") << QByteArray("AT +CREG = 2 ; +CREG ?")
                            << info("+CREG: 2,1,\"1f40\",\"00a1b2c3\"");
    QTest::newRow("registration") << QByteArray("AT+CREG?") << info("+CREG: 0,1");
    QTest::newRow("LTE registration of a GSM modem") << QByteArray("AT+CEREG?") << kError;
    QTest::newRow("operator") << QByteArray("AT+COPS?") << info("+COPS: 0,0,\"MTS RUS\"");
    QTest::newRow("operator by number")
        << QByteArray("AT+COPS=3,2;+COPS?") << info("+COPS: 0,2,\"25001\"");
    QTest::newRow("identity") << QByteArray("AT+CIMI") << info("250011234567890");
    QTest::newRow("number") << QByteArray("AT+CNUM") << info("+CNUM: ,\"+79161234567\",145");
    QTest::newRow("context is kept") << QByteArray("AT+CGDCONT=1,\"IP\",\"internet\";+CGDCONT?")
                                     << info("+CGDCONT: 1,\"IP\",\"internet\"");
    QTest::newRow("semicolon inside quotes") << QByteArray("AT+CGDCONT=1,\"IP\",\"a;b\";+CGDCONT?")
                                             << info("+CGDCONT: 1,\"IP\",\"a;b\"");
    QTest::newRow("range of a setting") << QByteArray("AT+CTZU=?") << info("+CTZU: (0,1)");
    QTest::newRow("setting") << QByteArray("AT+CTZU=1;+CTZU?") << info("+CTZU: 1");
    QTest::newRow("context out of range") << QByteArray("AT+CGDCONT=99,\"IP\",\"a\"") << kError;
    QTest::newRow("functionality off ends the registration")
        << QByteArray("AT+CFUN=4;+CREG?") << info("+CREG: 0,0");
    QTest::newRow("a voice call") << QByteArray("ATD+79161234567;") << kOk;
}

void TestAtInterpreter::basics()
{
    QFETCH(QByteArray, command);
    Conversation modem(withSim());
    QTEST(modem.ask(command), "answer");
}

void TestAtInterpreter::family_data()
{
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char *profile, const char *command, const QByteArray &answer) {
        QTest::addRow("%s %s", profile, command)
            << QString::fromLatin1(profile) << QByteArray(command) << info(answer);
    };
    row("huawei-e173", "AT+CGMI", "huawei");
    row("huawei-e173", "ATI",
        "Manufacturer: huawei\r\nModel: E173\r\nRevision: 11.126.29.00.143\r\n"
        "IMEI: 353142033840706\r\n+GCAP: +CGSM,+DS,+ES");
    row("huawei-e173", "AT^SYSINFO", "^SYSINFO:2,3,0,5,1,,4");
    row("huawei-e173", "AT^ICCID?", "^ICCID: 8970101");
    row("huawei-e173", "AT+CREG=2;+CREG?", "+CREG: 2,1,1F40,A1B2C3");
    row("huawei-e173", "AT+CREG=2;+CFUN=4;+CREG?", "+CREG: 2,0,00,0");
    row("huawei-e173", "AT+CNUM", "+CNUM: \"\",\"+79161234567\",145");
    row("huawei-e173", "AT^U2DIAG?", "^U2DIAG: 255");
    row("huawei-e173", "AT^U2DIAG=0;^U2DIAG?", "^U2DIAG: 0");
    row("huawei-e173", "AT^SETPORT?", "^SETPORT:A1,A2;1,16,3,2,A1,A2");
    row("zte-mf180", "AT+CGMI", "ZTE INCORPORATED");
    row("zte-mf180", "AT+CREG=2;+CREG?", "+CREG: 2,1,\"1F40\",\"A1B2C3\"");
    row("zte-mf180", "AT+COPS?", "+COPS: 0,0,\"MTS RUS\",2");
    row("zte-mf180", "AT+ZPAS?", "+ZPAS: \"UMTS\",\"CS_PS\"");
    row("simcom-sim800", "AT+CGMM", "SIMCOM_SIM800");
    row("simcom-sim800", "ATI", "SIM800 R14.18");
    row("simcom-sim800", "AT+CCID", "8970101");
    row("quectel-ec25", "ATI", "Quectel\r\nEC25\r\nRevision: EC25EFAR06A03M4G");
    row("quectel-ec25", "AT+QCCID", "+QCCID: 8970101");
    row("simcom-sim800", "AT+CREG=2;+CREG?", "+CREG: 2,1,\"1F40\",\"A1B2C3\"");
    row("simcom-sim800", "AT+COPS?", "+COPS: 0,0,\"MTS RUS\"");
    row("simcom-sim800", "AT+CNUM", "+CNUM: \"\",\"+79161234567\",145,7,4");
    row("quectel-ec25", "AT+CREG=2;+CREG?", "+CREG: 2,1,\"1F40\",\"A1B2C3\",7");
    row("quectel-ec25", "AT+CEREG?", "+CEREG: 0,1");
    row("quectel-ec25", "AT+QNWINFO", "+QNWINFO: \"FDD LTE\",\"25001\",\"LTE BAND 3\",1300");
    row("generic", "AT+CGSN", "490154203237518");
}

void TestAtInterpreter::family()
{
    QFETCH(QString, profile);
    QFETCH(QByteArray, command);
    Conversation modem(withSim(), profile);
    QTEST(modem.ask(command), "answer");
}

void TestAtInterpreter::echoIsOnUntilSwitchedOff()
{
    Conversation modem;
    modem.ask("ATZ");
    QCOMPARE(modem.ask("AT+CFUN?"), QByteArray("AT+CFUN?\r") + info("+CFUN: 1"));
    modem.ask("ATE0");
    QCOMPARE(modem.ask("AT+CFUN?"), info("+CFUN: 1"));
}

void TestAtInterpreter::terseResultsAreNumbers()
{
    Conversation modem;
    modem.port->receive("ATV0\r");
    QVERIFY(modem.waitFor("0\r"));
    modem.said.clear();
    modem.port->receive("AT+CFUN?;+NOSUCH\r");
    QVERIFY(modem.waitFor("4\r"));
    QCOMPARE(modem.said, QByteArray("+CFUN: 1\r\n4\r"));
}

void TestAtInterpreter::quietModeSaysNothing()
{
    Conversation modem;
    modem.port->receive("ATQ1\rAT+NOSUCH\rATQ0\r");
    QVERIFY(modem.waitFor("OK"));
    QCOMPARE(modem.said, kOk);
}

void TestAtInterpreter::backspaceTakesACharacterBack()
{
    Conversation modem;
    QCOMPARE(modem.ask("AT+CFUM\bN?"), info("+CFUN: 1"));
}

void TestAtInterpreter::lastLineIsRepeated()
{
    Conversation modem;
    modem.ask("AT+CFUN?");
    modem.said.clear();
    modem.port->receive("A/"); // needs no line end
    QVERIFY(modem.waitFor("OK"));
    QCOMPARE(modem.said, info("+CFUN: 1"));
}

void TestAtInterpreter::noiseBeforeTheAttentionCodeIsIgnored()
{
    Conversation modem;
    QCOMPARE(modem.ask("~x}AT+CFUN?"), info("+CFUN: 1"));
    modem.said.clear();
    modem.port->receive("no command at all\r");
    QCOMPARE(modem.ask("AT"), kOk);
}

void TestAtInterpreter::overlongLineDoesNotGrow()
{
    Conversation modem;
    QSignalSpy lines(modem.port.get(), &AtInterpreter::commandArrived);
    QCOMPARE(modem.ask("AT+" + QByteArray(1000000, 'X')), kError);
    QVERIFY(lines.last().first().toByteArray().size() <= 4096);
}

void TestAtInterpreter::firstFailingCommandEndsTheLine()
{
    Conversation modem;
    QCOMPARE(modem.ask("AT+NOSUCH;+CFUN?"), kError);
}

void TestAtInterpreter::commandsAheadWaitForTheirTurn()
{
    ScenarioModem scenario;
    scenario.latencyMs = 30;
    Conversation modem(scenario);
    modem.port->receive("AT+CFUN?\rAT+CMEE?\r");
    QVERIFY(modem.waitFor("+CMEE: 0\r\n\r\nOK"));
    QCOMPARE(modem.said, info("+CFUN: 1") + info("+CMEE: 0"));
}

void TestAtInterpreter::latencyIsPerCommand()
{
    ScenarioModem scenario;
    scenario.latency = {{QStringLiteral("AT+C"), 0}, {QStringLiteral("AT+CSQ"), 150}};
    Conversation modem(scenario);
    QElapsedTimer clock;
    clock.start();
    modem.ask("AT+CSQ");
    QVERIFY(clock.elapsed() >= 150);
}

void TestAtInterpreter::scenarioAnswersReplaceTheProfiles()
{
    ScenarioModem scenario = withSim();
    scenario.answers = {
        {QStringLiteral("AT+CSQ"), {QStringLiteral("+CSQ: 99,99")}},
        {QStringLiteral("AT+CIMI"), {QStringLiteral("+CME ERROR: 14")}},
        {QStringLiteral("AT+COPS?"), {QStringLiteral("ERROR")}},
    };
    Conversation modem(scenario);
    QCOMPARE(modem.ask("AT+CSQ"), info("+CSQ: 99,99"));
    QCOMPARE(modem.ask("AT+CIMI"), QByteArray("\r\n+CME ERROR: 14\r\n"));
    QCOMPARE(modem.ask("AT+COPS?"), kError);
}

void TestAtInterpreter::dialling_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("apn");
    QTest::addColumn<QString>("profile");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("result");
    const QString huawei = QStringLiteral("huawei-e173");
    QTest::newRow("tone") << ""
                          << "" << huawei << QByteArray("ATDT*99#")
                          << QByteArray("\r\nCONNECT 3600000\r\n");
    QTest::newRow("plain") << ""
                           << "" << huawei << QByteArray("ATD*99#")
                           << QByteArray("\r\nCONNECT 3600000\r\n");
    QTest::newRow("with context") << ""
                                  << "" << huawei << QByteArray("atdt *99***1#")
                                  << QByteArray("\r\nCONNECT 3600000\r\n");
    QTest::newRow("a number that is no data service")
        << ""
        << "" << huawei << QByteArray("ATDT5551234") << QByteArray("\r\nNO CARRIER\r\n");
    QTest::newRow("a modem that dials anything")
        << ""
        << ""
        << "generic" << QByteArray("ATDT5551234") << QByteArray("\r\nCONNECT 115200\r\n");
    QTest::newRow("context as the network wants it")
        << ""
        << "internet" << huawei << QByteArray("AT+CGDCONT=1,\"IP\",\"Internet\";D*99#")
        << QByteArray("\r\nCONNECT 3600000\r\n");
    QTest::newRow("context not set")
        << ""
        << "internet" << huawei << QByteArray("ATD*99#") << QByteArray("\r\nNO CARRIER\r\n");
    QTest::newRow("another context")
        << ""
        << "internet" << huawei << QByteArray("AT+CGDCONT=1,\"IP\",\"other\";D*99#")
        << QByteArray("\r\nNO CARRIER\r\n");
    for (const char *fault : {"wrongApn", "noCarrier", "noSim", "notRegistered"})
        QTest::newRow(fault) << QString::fromLatin1(fault) << "" << huawei << QByteArray("ATD*99#")
                             << QByteArray("\r\nNO CARRIER\r\n");
    QTest::newRow("busy") << "busy"
                          << "" << huawei << QByteArray("ATD*99#") << QByteArray("\r\nBUSY\r\n");
    QTest::newRow("no dial tone") << "noDialtone"
                                  << "" << huawei << QByteArray("ATD*99#")
                                  << QByteArray("\r\nNO DIALTONE\r\n");
}

void TestAtInterpreter::dialling()
{
    QFETCH(QString, fault);
    QFETCH(QString, apn);
    QFETCH(QString, profile);
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, result);
    ScenarioModem scenario = withSim();
    scenario.fault = fault;
    scenario.network.apn = apn;
    Conversation modem(scenario, profile);
    QSignalSpy calls(modem.port.get(), &AtInterpreter::callStarted);
    QCOMPARE(modem.ask(command), result);
    QCOMPARE(calls.count(), result.contains("CONNECT") ? 1 : 0);
}

void TestAtInterpreter::anyCharacterGivesTheDialUp()
{
    ScenarioModem scenario = withSim();
    scenario.connectMs = 60000;
    Conversation modem(scenario);
    QSignalSpy calls(modem.port.get(), &AtInterpreter::callStarted);
    modem.port->receive("ATD*99#\r\n"); // the line feed is no character of its own
    QTest::qWait(50);
    QCOMPARE(modem.said, QByteArray());
    modem.port->receive("x");
    QVERIFY(modem.waitFor("NO CARRIER"));
    QCOMPARE(modem.ask("AT"), kOk);
    QCOMPARE(calls.count(), 0);
}

void TestAtInterpreter::dataGoesThroughAfterConnect()
{
    Conversation modem(withSim());
    QSignalSpy data(modem.port.get(), &AtInterpreter::dataReceived);
    modem.ask("ATD*99#");
    modem.said.clear();
    modem.port->receive("~\xff}#AT\r");
    QCOMPARE(data.count(), 1);
    QCOMPARE(data.first().first().toByteArray(), QByteArray("~\xff}#AT\r"));
    QCOMPARE(modem.said, QByteArray()); // no echo, no command
}

void TestAtInterpreter::escapeAndReturn()
{
    Conversation modem(withSim());
    QSignalSpy dropped(modem.port.get(), &AtInterpreter::callDropped);
    modem.ask("ATD*99#");
    modem.said.clear();
    modem.port->receive("+++");
    QVERIFY(modem.waitFor("OK"));
    QCOMPARE(modem.ask("AT+CFUN?"), info("+CFUN: 1"));
    QCOMPARE(modem.ask("ATO"), QByteArray("\r\nCONNECT\r\n"));
    QSignalSpy data(modem.port.get(), &AtInterpreter::dataReceived);
    modem.port->receive("data");
    QCOMPARE(data.count(), 1);
    QTest::qWait(1000); // the guard time
    modem.said.clear();
    modem.port->receive("+++");
    QVERIFY(modem.waitFor("OK"));
    QCOMPARE(modem.ask("ATH"), kOk);
    QCOMPARE(dropped.count(), 1);
    QCOMPARE(modem.ask("ATO"), QByteArray("\r\nNO CARRIER\r\n"));
}

void TestAtInterpreter::plusesInsideDataAreData()
{
    Conversation modem(withSim());
    modem.ask("ATD*99#");
    modem.said.clear();
    modem.port->receive("data");
    modem.port->receive("+++"); // no silence before
    QTest::qWait(1200);
    modem.port->receive("+++");
    modem.port->receive("data"); // no silence after
    QTest::qWait(1200);
    QCOMPARE(modem.said, QByteArray());
}

void TestAtInterpreter::hangUpEndsTheCall()
{
    Conversation modem(withSim());
    QSignalSpy dropped(modem.port.get(), &AtInterpreter::callDropped);
    modem.ask("ATD*99#");
    modem.port->hangUp();
    QCOMPARE(dropped.count(), 1);
    modem.port->hangUp();
    QCOMPARE(dropped.count(), 1);
    QCOMPARE(modem.ask("AT"), kOk);
}

void TestAtInterpreter::otherEndEndsTheCall()
{
    Conversation modem(withSim());
    QSignalSpy dropped(modem.port.get(), &AtInterpreter::callDropped);
    modem.ask("ATD*99#");
    modem.said.clear();
    modem.port->callEnded();
    QCOMPARE(modem.said, QByteArray("\r\nNO CARRIER\r\n"));
    QCOMPARE(modem.ask("AT"), kOk);
    QCOMPARE(dropped.count(), 0);
}

void TestAtInterpreter::unsolicitedLinesWaitForTheEndOfData()
{
    Conversation modem(withSim());
    modem.port->notify("^RSSI:18");
    QCOMPARE(modem.said, QByteArray("\r\n^RSSI:18\r\n"));
    modem.ask("ATD*99#");
    modem.said.clear();
    modem.port->notify("^RSSI:18");
    QCOMPARE(modem.said, QByteArray());
}

void TestAtInterpreter::simPin()
{
    ScenarioModem scenario = withSim();
    scenario.sim.pin = QStringLiteral("1234");
    Conversation modem(scenario);
    modem.ask("AT+CMEE=1");
    QCOMPARE(modem.ask("AT+CPIN?"), info("+CPIN: SIM PIN"));
    QCOMPARE(modem.ask("AT+CIMI"), QByteArray("\r\n+CME ERROR: 11\r\n"));
    QCOMPARE(modem.ask("AT+CREG?"), info("+CREG: 0,0"));
    QCOMPARE(modem.ask("AT+CPIN=\"0000\""), QByteArray("\r\n+CME ERROR: 16\r\n"));
    QCOMPARE(modem.ask("AT+CPIN=\"1234\""), kOk);
    QCOMPARE(modem.ask("AT+CPIN?"), info("+CPIN: READY"));
    QCOMPARE(modem.ask("AT+CREG?"), info("+CREG: 0,1"));
}

void TestAtInterpreter::withoutSim_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("state") << QByteArray("AT+CPIN?") << QByteArray("\r\n+CME ERROR: 10\r\n");
    QTest::newRow("identity") << QByteArray("AT+CIMI") << QByteArray("\r\n+CME ERROR: 10\r\n");
    QTest::newRow("messages") << QByteArray("AT+CMGL=4") << QByteArray("\r\n+CMS ERROR: 310\r\n");
    QTest::newRow("registration") << QByteArray("AT+CREG?") << info("+CREG: 0,0");
    QTest::newRow("operator") << QByteArray("AT+COPS?") << info("+COPS: 0");
    QTest::newRow("signal") << QByteArray("AT+CSQ") << info("+CSQ: 99,99");
}

void TestAtInterpreter::withoutSim()
{
    QFETCH(QByteArray, command);
    ScenarioModem scenario = withSim();
    scenario.sim.present = false;
    Conversation modem(scenario);
    modem.ask("AT+CMEE=1");
    QTEST(modem.ask(command), "answer");
}

void TestAtInterpreter::errorsAsAsked()
{
    ScenarioModem scenario;
    scenario.sim.present = false;
    Conversation modem(scenario);
    QCOMPARE(modem.ask("AT+CIMI"), kError);
    modem.ask("AT+CMEE=2");
    QCOMPARE(modem.ask("AT+CIMI"), QByteArray("\r\n+CME ERROR: SIM not inserted\r\n"));
}

void TestAtInterpreter::unknownUssdCode()
{
    Conversation modem(withSim());
    modem.ask("AT+CUSD=1,\"*999#\",15");
    QVERIFY(modem.waitFor("\r\n+CUSD: 4\r\n"));
}

void TestAtInterpreter::smsInTextMode()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "Hello"),
        waitingSms("+7916", "2026-03-02T12:00:00+03:00", "Да")};
    Conversation modem(scenario);
    modem.ask("AT+CMGF=1");
    QCOMPARE(modem.ask("AT+CMGR=1"),
        info("+CMGR: \"REC UNREAD\",\"MTS\",,\"26/03/01,12:00:00+12\"\r\nHello"));
    QCOMPARE(modem.ask("AT+CMGL=\"REC UNREAD\""),
        info("+CMGL: 2,\"REC UNREAD\",\"+7916\",,\"26/03/02,12:00:00+12\"\r\n04140430"));
    QCOMPARE(modem.ask("AT+CMGD=2"), kOk);
    QCOMPARE(modem.ask("AT+CMGL=\"ALL\""),
        info("+CMGL: 1,\"REC READ\",\"MTS\",,\"26/03/01,12:00:00+12\"\r\nHello"));
    QCOMPARE(modem.ask("AT+CMGR=2"), QByteArray("\r\n+CMS ERROR: 321\r\n"));
    QCOMPARE(modem.ask("AT+CMGD=1,4"), kOk);
    QCOMPARE(modem.ask("AT+CMGL=\"ALL\""), kOk);
    QCOMPARE(modem.ask("AT+CPMS?"), info("+CPMS: \"SM\",0,50,\"SM\",0,50,\"SM\",0,50"));
}

void TestAtInterpreter::smsInPduMode()
{
    ScenarioModem scenario = withSim();
    scenario.sim.sms = {waitingSms("MTS", "2026-03-01T12:00:00+03:00", "Hello")};
    Conversation modem(scenario);
    const QByteArray pdu = gsmtext::storedPdu(
        modem.state->smsStores.value("SM").first(), QStringLiteral("+79168999100"));
    QCOMPARE(modem.ask("AT+CMGL=4"),
        info("+CMGL: 1,0,," + QByteArray::number(pdu.size() / 2 - 8) + "\r\n" + pdu));
}

void TestAtInterpreter::sendingAnSmsBringsTheAnswer()
{
    Conversation modem(withSim());
    modem.ask("AT+CMGF=1;+CNMI=2,1");
    QCOMPARE(modem.ask("AT+CMGS=\"111\""), QByteArray("\r\n> "));
    modem.said.clear();
    modem.port->receive("number please\x1a");
    QVERIFY(modem.waitFor("+CMTI: \"SM\",1"));
    QVERIFY(modem.said.startsWith("\r\n+CMGS: "));
    QVERIFY(modem.ask("AT+CMGR=1").contains("\r\nNumber 7\r\n"));
}

void TestAtInterpreter::sendingIsGivenUpWithEscape()
{
    Conversation modem(withSim());
    modem.ask("AT+CMGF=1");
    modem.ask("AT+CMGS=\"111\"");
    modem.said.clear();
    modem.port->receive("number\x1b");
    QVERIFY(modem.waitFor("OK"));
    QVERIFY(!modem.said.contains("+CMGS"));
    QCOMPARE(modem.state->smsStores.value("SM").size(), 0);
}

void TestAtInterpreter::resetIsAsked()
{
    Conversation modem;
    QSignalSpy reset(modem.port.get(), &AtInterpreter::resetWanted);
    QCOMPARE(modem.ask("AT+CFUN=1"), kOk);
    QCOMPARE(reset.count(), 0);
    QCOMPARE(modem.ask("AT+CFUN=1,1"), kOk);
    QCOMPARE(reset.count(), 1);
}

QTEST_GUILESS_MAIN(TestAtInterpreter)

#include "tst_atinterpreter.moc"
