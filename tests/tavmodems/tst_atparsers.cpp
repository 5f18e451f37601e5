#include "atdialect.h"
#include "atfields.h"
#include "atfunctionality.h"
#include "atidentity.h"
#include "atregistration.h"
#include "atsecrets.h"
#include "atsimstate.h"

#include <QTest>

#include <random>

using Lines = QList<QByteArray>;

Q_DECLARE_METATYPE(AtReply)
Q_DECLARE_METATYPE(AtSimState)

class TestAtParsers : public QObject
{
    Q_OBJECT

private slots:
    void splitsFields_data();
    void splitsFields();
    void findsValues_data();
    void findsValues();
    void readsIdentity_data();
    void readsIdentity();
    void readsInformation_data();
    void readsInformation();
    void namesModems_data();
    void namesModems();
    void readsRegistration_data();
    void readsRegistration();
    void knowsWhatRegistrationIsGoodFor();
    void readsSimState_data();
    void readsSimState();
    void readsFunctionality_data();
    void readsFunctionality();
    void findsDialects_data();
    void findsDialects();
    void dialectsAreSound();
    void masksSecrets_data();
    void masksSecrets();
    void surviveNoise();
};

void TestAtParsers::splitsFields_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<Lines>("expected");
    QTest::newRow("one") << QByteArray("1") << Lines{"1"};
    QTest::newRow("several") << QByteArray("1, 2 ,3") << Lines{"1", "2", "3"};
    QTest::newRow("empty ones") << QByteArray(",1,,") << Lines{"", "1", "", ""};
    QTest::newRow("comma in quotes") << QByteArray("\"a,b\",2") << Lines{"\"a,b\"", "2"};
    QTest::newRow("quote left open") << QByteArray("\"a,b") << Lines{"\"a,b"};
    QTest::newRow("nothing") << QByteArray() << Lines{""};
}

void TestAtParsers::splitsFields()
{
    QFETCH(QByteArray, value);
    QTEST(atfields::split(value), "expected");
}

void TestAtParsers::findsValues_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("blank after the colon") << Lines{"+CSQ: 1"} << QByteArray("1");
    QTest::newRow("none after the colon") << Lines{"+CSQ:1"} << QByteArray("1");
    QTest::newRow("the last of two") << Lines{"+CSQ: 1", "+CSQ: 2"} << QByteArray("2");
    QTest::newRow("empty") << Lines{"+CSQ:"} << QByteArray("");
    QTest::newRow("another name that begins so") << Lines{"+CSQX: 1"} << QByteArray();
    QTest::newRow("no line") << Lines() << QByteArray();
}

void TestAtParsers::findsValues()
{
    QFETCH(Lines, lines);
    QFETCH(QByteArray, expected);
    const auto value = atfields::valueOf("+CSQ", lines);
    QCOMPARE(value.has_value(), !expected.isNull());
    QCOMPARE(value.value_or(QByteArray()), expected);
}

void TestAtParsers::readsIdentity_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("expected");
    const QByteArray maker = "AT+CGMI";
    QTest::newRow("plain") << maker << Lines{"huawei"} << QStringLiteral("huawei");
    QTest::newRow("named") << maker << Lines{"+CGMI: Telit"} << QStringLiteral("Telit");
    QTest::newRow("named and quoted")
        << maker << Lines{"+CGMI: \"ZTE INCORPORATED\""} << QStringLiteral("ZTE INCORPORATED");
    QTest::newRow("quoted") << maker << Lines{"\"Sierra Wireless\""}
                            << QStringLiteral("Sierra Wireless");
    QTest::newRow("named after another line")
        << maker << Lines{"?", "+CGMI: u-blox"} << QStringLiteral("u-blox");
    QTest::newRow("other command")
        << QByteArray("AT+GMM") << Lines{"+GMM: E173"} << QStringLiteral("E173");
    QTest::newRow("nothing") << maker << Lines() << QString();
    QTest::newRow("bytes that are no text") << maker << Lines{"a\xff\x01z"} << QStringLiteral("az");
    QTest::newRow("endless") << maker << Lines{QByteArray(4000, 'x')}
                             << QString(64, QLatin1Char('x'));
}

void TestAtParsers::readsIdentity()
{
    QFETCH(QByteArray, command);
    QFETCH(Lines, lines);
    QTEST(parseIdentityText(command, lines), "expected");
}

void TestAtParsers::readsInformation_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("maker");
    QTest::addColumn<QString>("model");
    QTest::newRow("marked lines") << Lines{"Manufacturer: huawei", "Model: E1550",
        "Revision: 11.608.12.00.00", "IMEI: 350000000000000", "+GCAP: +CGSM,+DS,+ES"}
                                  << QStringLiteral("huawei") << QStringLiteral("E1550");
    QTest::newRow("plain lines") << Lines{"Quectel", "EC25", "Revision: EC25EFAR06A03M4G"}
                                 << QStringLiteral("Quectel") << QStringLiteral("EC25");
    QTest::newRow("model alone") << Lines{"SIM800 R14.18"} << QString()
                                 << QStringLiteral("SIM800 R14.18");
    QTest::newRow("marked model alone") << Lines{"Model: X"} << QString() << QStringLiteral("X");
    QTest::newRow("nothing") << Lines() << QString() << QString();
}

void TestAtParsers::readsInformation()
{
    QFETCH(Lines, lines);
    const AtIdentity identity = parseInformation(lines);
    QTEST(identity.maker, "maker");
    QTEST(identity.model, "model");
}

void TestAtParsers::namesModems_data()
{
    QTest::addColumn<QString>("maker");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("expected");
    const QString none;
    QTest::newRow("both") << QStringLiteral("huawei") << QStringLiteral("E1550")
                          << QStringLiteral("huawei E1550");
    QTest::newRow("maker in the model")
        << QStringLiteral("SIMCOM") << QStringLiteral("SIMCom_SIM800")
        << QStringLiteral("SIMCom_SIM800");
    QTest::newRow("maker alone") << QStringLiteral("huawei") << none << QStringLiteral("huawei");
    QTest::newRow("model alone") << none << QStringLiteral("E1550") << QStringLiteral("E1550");
    QTest::newRow("neither") << none << none << none;
}

void TestAtParsers::namesModems()
{
    QFETCH(QString, maker);
    QFETCH(QString, model);
    QTEST((AtIdentity{maker, model}.name()), "expected");
}

void TestAtParsers::readsRegistration_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<int>("expected");
    QTest::newRow("home") << Lines{"+CREG: 0,1"} << 1;
    QTest::newRow("no blank") << Lines{"+CREG:0,2"} << 2;
    QTest::newRow("roaming with a cell") << Lines{"+CREG: 2,5,\"00F1\",\"0A2B\""} << 5;
    QTest::newRow("cell without quotes, technology") << Lines{"+CREG: 2,1,00F1,0A2B,7"} << 1;
    QTest::newRow("unsolicited form before it") << Lines{"+CREG: 5", "+CREG: 1,3"} << 3;
    QTest::newRow("unsolicited form after it") << Lines{"+CREG: 1,3", "+CREG: 5"} << 3;
    QTest::newRow("unsolicited form with a cell")
        << Lines{"+CREG: 5,\"00F1\",\"0A2B\"", "+CREG: 2,1,\"00F1\",\"0A2B\""} << 1;
    QTest::newRow("unsolicited form alone") << Lines{"+CREG: 1"} << -1;
    QTest::newRow("other name") << Lines{"+CGREG: 0,1"} << -1;
    QTest::newRow("number beyond the list") << Lines{"+CREG: 0,11"} << -1;
    QTest::newRow("negative") << Lines{"+CREG: 0,-1"} << -1;
    QTest::newRow("no number") << Lines{"+CREG: a,b"} << -1;
    QTest::newRow("cut off") << Lines{"+CREG: 0,"} << -1;
    QTest::newRow("nothing") << Lines() << -1;
}

void TestAtParsers::readsRegistration()
{
    QFETCH(Lines, lines);
    QFETCH(int, expected);
    const auto registration = parseRegistration("+CREG", lines);
    QCOMPARE(registration.has_value(), expected >= 0);
    if (registration)
        QCOMPARE(static_cast<int>(*registration), expected);
}

// 3GPP TS 27.007 7.2: 6 and 7 carry messages only, 8 emergency calls.
void TestAtParsers::knowsWhatRegistrationIsGoodFor()
{
    QList<int> good;
    for (int stat = 0; stat <= 10; ++stat) {
        if (isRegistered(static_cast<AtRegistration>(stat)))
            good << stat;
    }
    QCOMPARE(good, QList<int>({1, 5, 9, 10}));
}

void TestAtParsers::readsSimState_data()
{
    QTest::addColumn<AtReply>("reply");
    QTest::addColumn<AtSimState>("expected");
    const auto answer = [](const char *name, const char *line, AtSimState expected) {
        AtReply reply;
        reply.status = AtReply::Status::Ok;
        reply.lines = {line};
        QTest::newRow(name) << reply << expected;
    };
    const auto error = [](const char *name, int code, AtSimState expected) {
        AtReply reply;
        reply.status = AtReply::Status::Error;
        reply.errorCode = code;
        QTest::newRow(name) << reply << expected;
    };
    answer("ready", "+CPIN: READY", AtSimState::Ready);
    answer("ready in quotes", "+CPIN: \"READY\"", AtSimState::Ready);
    answer("PIN", "+CPIN: SIM PIN", AtSimState::PinNeeded);
    answer("second PIN", "+CPIN: SIM PIN2", AtSimState::PinNeeded);
    answer("network PIN", "+CPIN: PH-NET PIN", AtSimState::PinNeeded);
    answer("PUK", "+CPIN: SIM PUK", AtSimState::PukNeeded);
    answer("second PUK", "+CPIN: SIM PUK2", AtSimState::PukNeeded);
    answer("not inserted, as an answer", "+CPIN: NOT INSERTED", AtSimState::Missing);
    answer("not ready", "+CPIN: NOT READY", AtSimState::Busy);
    answer("unheard of", "+CPIN: WHAT", AtSimState::Unknown);
    answer("empty", "+CPIN:", AtSimState::Unknown);
    answer("other line", "hello", AtSimState::Unknown);
    error("not inserted", 10, AtSimState::Missing);
    error("PIN as an error", 11, AtSimState::PinNeeded);
    error("PUK as an error", 12, AtSimState::PukNeeded);
    error("failure", 13, AtSimState::Failed);
    error("busy", 14, AtSimState::Busy);
    error("wrong", 15, AtSimState::Failed);
    error("other error", 3, AtSimState::Unknown);
    error("error without a number", -1, AtSimState::Unknown);
}

void TestAtParsers::readsSimState()
{
    QFETCH(AtReply, reply);
    QTEST(parseSimState(reply), "expected");
}

void TestAtParsers::readsFunctionality_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<int>("expected");
    QTest::newRow("full") << Lines{"+CFUN: 1"} << 1;
    QTest::newRow("off, with reset field") << Lines{"+CFUN: 4,0"} << 4;
    QTest::newRow("minimum") << Lines{"+CFUN:0"} << 0;
    QTest::newRow("no number") << Lines{"+CFUN: x"} << -1;
    QTest::newRow("negative") << Lines{"+CFUN: -1"} << -1;
    QTest::newRow("nothing") << Lines() << -1;
}

void TestAtParsers::readsFunctionality()
{
    QFETCH(Lines, lines);
    QTEST(parseFunctionality(lines).value_or(-1), "expected");
}

void TestAtParsers::findsDialects_data()
{
    QTest::addColumn<QString>("maker");
    QTest::addColumn<QString>("model");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *maker, const char *model, const char *expected) {
        QTest::addRow("%s, %s", maker, model)
            << QString::fromLatin1(maker) << QString::fromLatin1(model)
            << QString::fromLatin1(expected);
    };
    row("huawei", "E1550", "Huawei");
    row("Huawei Technologies Co., Ltd.", "ME909s-120", "Huawei");
    row("ZTE CORPORATION", "MF823", "ZTE");
    row("ZTE INCORPORATED", "MF180", "ZTE");
    row("QUALCOMM INCORPORATED", "MF626", "ZTE");
    row("SIMCOM_Ltd", "SIMCOM_SIM800", "SIMCom");
    row("SIMCOM INCORPORATED", "SIM5320E", "SIMCom");
    row("QUALCOMM INCORPORATED", "SIM7600E", "SIMCom");
    row("Quectel", "EC25", "Quectel");
    row("Quectel_Ltd", "Quectel_M95", "Quectel");
    row("Telit", "GE910-QUAD", "Telit");
    row("Sierra Wireless, Incorporated", "MC7304", "Sierra");
    row("WAVECOM MODEM", "900E  1800", "Sierra");
    row("u-blox", "SARA-U201", "u-blox");
    row("Cinterion", "BGS2-W", "Cinterion");
    row("SIEMENS", "MC35i", "Cinterion");
    row("Gemalto M2M", "EHS6", "Cinterion");
    row("Aztech", "MX1", "generic 3GPP");
    row("Nokia", "Nokia 7110", "generic 3GPP");
    row("", "", "generic 3GPP");
}

void TestAtParsers::findsDialects()
{
    QFETCH(QString, maker);
    QFETCH(QString, model);
    QTEST((findDialect(AtIdentity{maker, model}).name), "expected");
}

void TestAtParsers::dialectsAreSound()
{
    QSet<QString> names;
    for (const AtDialect &dialect : allDialects()) {
        QVERIFY(!names.contains(dialect.name));
        names.insert(dialect.name);
        for (const QString &maker : dialect.makers)
            QCOMPARE(findDialect(AtIdentity{maker, QString()}).name, dialect.name);
        for (const QByteArray &command : dialect.quietCommands)
            QVERIFY(command.startsWith("AT"));
        for (const QByteArray &command : dialect.modemOnlyCommands)
            QVERIFY(command.startsWith("AT"));
        QVERIFY(dialect.cardNumberCommand.startsWith("AT"));
        QVERIFY(!dialect.ussdForms.isEmpty());
    }
    QCOMPARE(names.size(), 9);
    QCOMPARE(allDialects().last().name, QStringLiteral("generic 3GPP"));
}

void TestAtParsers::masksSecrets_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("expected");
    const auto row = [](const char *line, const char *expected) {
        QTest::newRow(line) << QByteArray(line) << QByteArray(expected);
    };
    row("AT+CPIN=\"1234\"", "AT+CPIN=***");
    row("AT+CPIN =1234", "AT+CPIN =***");
    row("AT+CPIN2=1234", "AT+CPIN2=***");
    row("AT+CGDCONT=1,\"IP\",\"a\";+CGAUTH=1,1,\"u\",\"p\"",
        "AT+CGDCONT=1,\"IP\",\"a\";+CGAUTH=***");
    row("+CGAUTH: 1,1,\"u\",\"p\"", "+CGAUTH:***");
    row("+CPIN: READY", "+CPIN: READY");
    row("AT+CPIN?", "AT+CPIN?");
    row("AT+CPIN=?", "AT+CPIN=?");
    row("AT+CGDCONT=1,\"IP\",\"internet\"", "AT+CGDCONT=1,\"IP\",\"internet\"");
    row("OK", "OK");
    row("", "");
}

void TestAtParsers::masksSecrets()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, expected);
    QCOMPARE(atsecrets::masked(line), expected);
    QCOMPARE(atsecrets::isSecret(line), line != expected);
}

void TestAtParsers::surviveNoise()
{
    std::mt19937 random(27007); // fixed: a failure can be repeated
    const Lines words{"+CREG: ", "+CPIN:", "+CFUN: ", "+CGMI:", "Model:", "Manufacturer:", "\"",
        ",", "1", "-", "99999999999999999999", "=", "AT+CPIN="};
    for (int round = 0; round < 5000; ++round) {
        Lines lines;
        for (auto i = random() % 4; i > 0; --i) {
            QByteArray line;
            for (auto j = random() % 8; j > 0; --j) {
                if (random() % 2)
                    line += words.at(
                        static_cast<int>(random() % static_cast<unsigned>(words.size())));
                else
                    line += static_cast<char>(random() % 256);
            }
            lines << line;
            QVERIFY(atsecrets::masked(line).size() <= line.size() + 3);
        }
        AtReply reply;
        reply.status = AtReply::Status::Ok;
        reply.lines = lines;
        parseSimState(reply);
        const auto registration = parseRegistration("+CREG", lines);
        QVERIFY(!registration || static_cast<int>(*registration) <= 10);
        QVERIFY(parseFunctionality(lines).value_or(0) >= 0);
        QVERIFY(parseIdentityText("AT+CGMI", lines).size() <= 64);
        QVERIFY(!findDialect(parseInformation(lines)).name.isEmpty());
    }
}

QTEST_APPLESS_MAIN(TestAtParsers)

#include "tst_atparsers.moc"
