#include "atcardnumbers.h"
#include "atcell.h"
#include "atnetwork.h"
#include "atsignal.h"
#include "attext.h"
#include "modemalone.h"
#include "smsstores.h"

#include <QTest>

#include <random>

using Lines = QList<QByteArray>;

// What a modem tells of its network and its card.
class TestAtAnswers : public QObject
{
    Q_OBJECT

private slots:
    void readsTexts_data();
    void readsTexts();
    void readsSignal_data();
    void readsSignal();
    void readsExtendedSignal_data();
    void readsExtendedSignal();
    void readsStores_data();
    void readsStores();
    void choosesTheModemAlone_data();
    void choosesTheModemAlone();
    void readsOperators_data();
    void readsOperators();
    void readsNetworks_data();
    void readsNetworks();
    void readsHomeNetworks_data();
    void readsHomeNetworks();
    void readsCells_data();
    void readsCells();
    void readsCellsOfEveryService();
    void readsImsi_data();
    void readsImsi();
    void readsIccid_data();
    void readsIccid();
    void readsImei_data();
    void readsImei();
    void readsOwnNumber_data();
    void readsOwnNumber();
    void survivesNoise();
};

void TestAtAnswers::readsTexts_data()
{
    QTest::addColumn<QByteArray>("field");
    QTest::addColumn<QString>("expected");
    QTest::newRow("quoted") << QByteArray("\"MegaFon\"") << QStringLiteral("MegaFon");
    QTest::newRow("bare") << QByteArray("MegaFon ") << QStringLiteral("MegaFon");
    QTest::newRow("UTF-8") << QByteArray("\"Билайн\"") << QStringLiteral("Билайн");
    QTest::newRow("UCS2, 27.007 5.5")
        << QByteArray("\"00420065006500200043\"") << QStringLiteral("Bee C");
    QTest::newRow("UCS2, Cyrillic") << QByteArray("\"041C04220421\"") << QStringLiteral("МТС");
    QTest::newRow("digits alone are no UCS2") << QByteArray("\"25001\"") << QStringLiteral("25001");
    QTest::newRow("a number that could be one character")
        << QByteArray("\"0412\"") << QStringLiteral("0412");
    QTest::newRow("control characters") << QByteArray("\"a\x01z\"") << QStringLiteral("az");
    QTest::newRow("empty") << QByteArray() << QString();
}

void TestAtAnswers::readsTexts()
{
    QFETCH(QByteArray, field);
    QTEST(parseAtText(field), "expected");
}

void TestAtAnswers::readsSignal_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("expected"); // 0: not known
    // 27.007 8.5
    QTest::newRow("weakest") << QByteArray("+CSQ: 0,0") << -113;
    QTest::newRow("next") << QByteArray("+CSQ: 1,99") << -111;
    QTest::newRow("good") << QByteArray("+CSQ: 21,99") << -71;
    QTest::newRow("strongest but one") << QByteArray("+CSQ: 30,99") << -53;
    QTest::newRow("strongest") << QByteArray("+CSQ: 31,0") << -51;
    QTest::newRow("without a blank") << QByteArray("+CSQ:17,99") << -79;
    QTest::newRow("without an error rate") << QByteArray("+CSQ: 17") << -79;
    QTest::newRow("blanks around the comma") << QByteArray("+CSQ: 17 , 0") << -79;
    QTest::newRow("TD-SCDMA, weakest") << QByteArray("+CSQ: 100,99") << -116;
    QTest::newRow("TD-SCDMA, strongest") << QByteArray("+CSQ: 191,99") << -25;
    QTest::newRow("not known") << QByteArray("+CSQ: 99,99") << 0;
    QTest::newRow("TD-SCDMA, not known") << QByteArray("+CSQ: 199,99") << 0;
    QTest::newRow("not in the table") << QByteArray("+CSQ: 32,99") << 0;
    QTest::newRow("below zero") << QByteArray("+CSQ: -1,99") << 0;
    QTest::newRow("cut off") << QByteArray("+CS") << 0;
    QTest::newRow("empty") << QByteArray("+CSQ:") << 0;
}

void TestAtAnswers::readsSignal()
{
    QFETCH(QByteArray, line);
    QTEST(parseSignalLevel({line}).value_or(0), "expected");
}

void TestAtAnswers::readsExtendedSignal_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("expected"); // 0: not known
    // 27.007 8.69
    QTest::newRow("LTE, weakest") << QByteArray("+CESQ: 99,99,255,255,0,0") << -141;
    QTest::newRow("LTE") << QByteArray("+CESQ: 99,99,255,255,20,44") << -97;
    QTest::newRow("LTE, strongest") << QByteArray("+CESQ: 99,99,255,255,34,97") << -44;
    QTest::newRow("UMTS") << QByteArray("+CESQ: 99,99,50,30,255,255") << -71;
    QTest::newRow("GSM") << QByteArray("+CESQ: 40,0,255,255,255,255") << -71;
    QTest::newRow("not known") << QByteArray("+CESQ: 99,99,255,255,255,255") << 0;
    QTest::newRow("not in the table") << QByteArray("+CESQ: 64,99,97,255,255,98") << 0;
    QTest::newRow("below zero") << QByteArray("+CESQ: -1,99,-1,255,255,-1") << 0;
    QTest::newRow("cut off") << QByteArray("+CESQ: 99,99") << 0;
    QTest::newRow("another answer") << QByteArray("+CSQ: 17,99") << 0;
}

void TestAtAnswers::readsExtendedSignal()
{
    QFETCH(QByteArray, line);
    QTEST(parseExtendedSignalLevel({line}).value_or(0), "expected");
}

void TestAtAnswers::readsStores_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<Lines>("expected");
    // 27.005 3.2.2
    QTest::newRow("one") << Lines{"+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20"} << Lines{"SM"};
    QTest::newRow("bare") << Lines{"+CPMS: SM,1,20,SM,1,20,SM,1,20"} << Lines{"SM"};
    QTest::newRow("new ones elsewhere")
        << Lines{"+CPMS: \"SM\",1,20,\"SM\",1,20,\"ME\",3,99"} << Lines{"SM", "ME"};
    QTest::newRow("both at once") << Lines{"+CPMS: \"MT\",1,119,\"SM\",1,20,\"ME\",3,99"}
                                  << Lines{"MT"};
    QTest::newRow("the first alone") << Lines{"+CPMS: \"SM\",1,20"} << Lines{"SM"};
    QTest::newRow("empty") << Lines{"+CPMS: "} << Lines();
    QTest::newRow("no answer") << Lines{"+CMGF: 0"} << Lines();
}

void TestAtAnswers::readsStores()
{
    QFETCH(Lines, lines);
    QTEST(parseSmsStores(lines), "expected");
}

void TestAtAnswers::choosesTheModemAlone_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray command = "AT^SETPORT=\"FF;";
    QTest::newRow("LTE stick") << Lines{"^SETPORT:3: 3G DIAG", "^SETPORT:10: 4G MODEM",
        "^SETPORT:12: 4G PCUI", "^SETPORT:16: NCM", "^SETPORT:A1: CDROM", "^SETPORT:A2: SD"}
                               << command + "10,12\"";
    QTest::newRow("UMTS stick") << Lines{"^SETPORT:1: 3G MODEM", "^SETPORT:2: 3G PCUI",
        "^SETPORT:A1: CDROM"} << command + "1,2\"";
    QTest::newRow("the elder of two") << Lines{"^SETPORT:1: 3G MODEM", "^SETPORT:2: 3G PCUI",
        "^SETPORT:10: 4G MODEM", "^SETPORT:12: 4G PCUI"}
                                      << command + "1,2\"";
    QTest::newRow("no control port") << Lines{"^SETPORT:1: MODEM"} << command + "1\"";
    QTest::newRow("no modem") << Lines{"^SETPORT:16: NCM", "^SETPORT:12: 4G PCUI"} << QByteArray();
    QTest::newRow("no device by that number") << Lines{"^SETPORT:1G: 3G MODEM"} << QByteArray();
    QTest::newRow("nothing") << Lines() << QByteArray();
}

void TestAtAnswers::choosesTheModemAlone()
{
    QFETCH(Lines, lines);
    QTEST(modemAlone("AT^SETPORT", lines).value_or(QByteArray()), "expected");
}

void TestAtAnswers::readsOperators_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const Lines &lines, const char *expected) {
        QTest::newRow(name) << lines << QString::fromUtf8(expected);
    };
    // 27.007 7.3; expected: mode, name, country, network, technology
    row("numeric", {"+COPS: 0,2,\"25001\",2"}, "0||250|1|2");
    row("numeric, GSM modem", {"+COPS: 0,2,\"25002\""}, "0||250|2|-");
    row("numeric, three digits", {"+COPS: 1,2,\"310410\",7"}, "1||310|410|7");
    row("numeric, bare", {"+COPS: 0,2,25020"}, "0||250|20|-");
    row("numeric in UCS2", {"+COPS: 0,2,\"00320035003000300031\""}, "0||250|1|-");
    row("long name", {"+COPS: 0,0,\"Beeline, RUS\",0"}, "0|Beeline, RUS|-|-|0");
    row("short name", {"+COPS: 0,1,\"MTS\""}, "0|MTS|-|-|-");
    row("name in UCS2", {"+COPS: 0,0,\"041C04220421\",2"}, "0|МТС|-|-|2");
    row("no network", {"+COPS: 0"}, "0||-|-|-");
    row("deregistered", {"+COPS: 2"}, "2||-|-|-");
    row("without a blank, with another line", {"^RSSI:3", "+COPS:4,2,\"25099\",0"}, "4||250|99|0");
    row("numeric without digits", {"+COPS: 0,2,\"\",0"}, "0||-|-|0");
    row("numeric, cut", {"+COPS: 0,2,\"2500\""}, "0||-|-|-");
    row("unknown mode", {"+COPS: 9"}, "none");
    row("unknown format", {"+COPS: 0,5,\"MTS\""}, "none");
    row("list of networks, the test form", {"+COPS: (2,\"MTS\",\"MTS\",\"25001\")"}, "none");
    row("nothing", {}, "none");
    row("empty", {"+COPS:"}, "none");
}

void TestAtAnswers::readsOperators()
{
    QFETCH(Lines, lines);
    const auto number
        = [](bool has, int value) { return has ? QString::number(value) : QStringLiteral("-"); };
    const auto found = parseOperator(lines);
    QString actual = QStringLiteral("none");
    if (found) {
        const MobileNetwork network = found->network.value_or(MobileNetwork());
        actual = QStringList{QString::number(static_cast<int>(found->mode)), found->name,
            number(found->network.has_value(), network.mcc),
            number(found->network.has_value(), network.mnc),
            number(found->technology.has_value(), found->technology.value_or(0))}
                     .join(QLatin1Char('|'));
    }
    QTEST(actual, "expected");
}

void TestAtAnswers::readsNetworks_data()
{
    QTest::addColumn<QByteArray>("digits");
    QTest::addColumn<bool>("valid");
    QTest::newRow("two digits") << QByteArray("25001") << true;
    QTest::newRow("three digits") << QByteArray("310410") << true;
    QTest::newRow("too short") << QByteArray("2500") << false;
    QTest::newRow("too long") << QByteArray("2500100") << false;
    QTest::newRow("not digits") << QByteArray("25O01") << false;
    QTest::newRow("sign") << QByteArray("-2500") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestAtAnswers::readsNetworks()
{
    QFETCH(QByteArray, digits);
    QTEST(parseNetwork(digits).has_value(), "valid");
}

void TestAtAnswers::readsHomeNetworks_data()
{
    QTest::addColumn<QByteArray>("imsi");
    QTest::addColumn<int>("mcc");
    QTest::addColumn<int>("mnc");
    QTest::newRow("Russia") << QByteArray("250017123456789") << 250 << 1;
    QTest::newRow("Kazakhstan") << QByteArray("401777123456789") << 401 << 77;
    QTest::newRow("Ukraine") << QByteArray("255067123456789") << 255 << 6;
    QTest::newRow("USA, three digits") << QByteArray("310410123456789") << 310 << 410;
    QTest::newRow("Canada, three digits") << QByteArray("302720123456789") << 302 << 720;
    QTest::newRow("Germany") << QByteArray("262011234567890") << 262 << 1;
    QTest::newRow("too short") << QByteArray("25001") << -1 << -1;
    QTest::newRow("too long") << QByteArray("2500171234567890") << -1 << -1;
    QTest::newRow("not digits") << QByteArray("25001712345678X") << -1 << -1;
}

void TestAtAnswers::readsHomeNetworks()
{
    QFETCH(QByteArray, imsi);
    QFETCH(int, mcc);
    QFETCH(int, mnc);
    QCOMPARE(networkOfImsi(imsi).value_or(MobileNetwork{-1, -1}), (MobileNetwork{mcc, mnc}));
}

void TestAtAnswers::readsCells_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("expected"); // state, area, cell, technology
    const auto row = [](const char *name, const Lines &lines, const char *expected) {
        QTest::newRow(name) << lines << QString::fromLatin1(expected);
    };
    // 27.007 7.2
    row("quoted, two octets", {"+CREG: 2,1,\"00C3\",\"A12F\""}, "1|00C3|A12F|-");
    row("quoted, four octets", {"+CREG: 2,1,\"00C3\",\"0A12F3B4\",6"}, "1|00C3|A12F3B4|6");
    row("four octets with zeros in front", {"+CREG: 2,1,\"000000C3\",\"0000A12F\",0"},
        "1|00C3|A12F|0");
    row("lower case", {"+CREG: 2,1,\"00c3\",\"0a12f3b4\",7"}, "1|00C3|A12F3B4|7");
    row("bare", {"+CREG: 2,1,00C3,A12F"}, "1|00C3|A12F|-");
    // Huawei's data sticks
    row("bare, with blanks", {"+CREG: 2,1, A1C8, 00B0A21D"}, "1|A1C8|B0A21D|-");
    row("bare, digits alone", {"+CREG: 2,5,1234,5678,2"}, "5|1234|5678|2");
    row("three digits", {"+CREG: 2,1,\"1F4\",\"D4F\""}, "1|01F4|0D4F|-");
    row("28 bits", {"+CREG: 2,1,\"1F40\",\"FFFFFFE\",2"}, "1|1F40|FFFFFFE|2");
    row("roaming", {"+CREG: 2,5,\"00C3\",\"A12F\",2"}, "5|00C3|A12F|2");
    row("with a cause behind", {"+CREG: 2,1,\"00C3\",\"A12F\",7,,"}, "1|00C3|A12F|7");
    row("setting 1: no codes", {"+CREG: 1,1"}, "1|||-");
    row("searching", {"+CREG: 2,2"}, "2|||-");
    row("searching, empty codes", {"+CREG: 2,2,\"\",\"\""}, "2|||-");
    row("codes not known: all ones", {"+CREG: 2,1,\"FFFF\",\"FFFFFFFF\",7"}, "1|||7");
    row("cell not known: 28 ones", {"+CREG: 2,1,\"1F40\",\"0FFFFFFF\",2"}, "1|||2");
    row("codes not known: zero", {"+CREG: 2,0,\"0000\",\"00000000\""}, "0|||-");
    row("area without a cell", {"+CREG: 2,1,\"00C3\""}, "1|||-");
    row("garbled codes", {"+CREG: 2,1,\"00G3\",\"A12F\""}, "1|||-");
    row("endless codes", {"+CREG: 2,1,\"00C3\",\"A12F00000000000000\""}, "1|||-");
    row("unsolicited", {"+CREG: 1,\"00C3\",\"A12F\",2"}, "1|00C3|A12F|2");
    row("unsolicited, bare", {"+CREG: 1,00C3,A12F"}, "1|00C3|A12F|-");
    row("unsolicited state alone", {"+CREG: 1"}, "1|||-");
    row("unsolicited one before the answer",
        {"+CREG: 5,\"1111\",\"2222\"", "+CREG: 2,1,\"00C3\",\"A12F\""}, "1|00C3|A12F|-");
    row("unsolicited one behind the answer",
        {"+CREG: 2,1,\"00C3\",\"A12F\"", "+CREG: 5,\"1111\",\"2222\""}, "1|00C3|A12F|-");
    row("no blank", {"+CREG:2,1,\"00C3\",\"A12F\""}, "1|00C3|A12F|-");
    row("unknown state", {"+CREG: 2,17,\"00C3\",\"A12F\""}, "none");
    row("garbled", {"+CREG: x"}, "none");
    row("empty", {"+CREG:"}, "none");
    row("of another service", {"+CGREG: 2,1,\"00C3\",\"A12F\""}, "none");
    row("nothing", {}, "none");
}

void TestAtAnswers::readsCells()
{
    QFETCH(Lines, lines);
    const auto cell = parseCell("+CREG", lines);
    QString actual = QStringLiteral("none");
    if (cell)
        actual = QStringList{QString::number(static_cast<int>(cell->registration)), cell->area,
            cell->cell, cell->technology ? QString::number(*cell->technology) : QStringLiteral("-")}
                     .join(QLatin1Char('|'));
    QTEST(actual, "expected");
}

void TestAtAnswers::readsCellsOfEveryService()
{
    // 27.007 10.1.20 adds the routing area, 10.1.22 has a tracking area in its place.
    for (const QByteArray &name :
        {QByteArray("+CREG"), QByteArray("+CGREG"), QByteArray("+CEREG")}) {
        const auto cell = parseCell(name, {name + ": 2,1,\"2E11\",\"A1B2C3\",7,\"01\""});
        QVERIFY(cell);
        QCOMPARE(cell->registration, AtRegistration::Home);
        QCOMPARE(cell->area, QStringLiteral("2E11"));
        QCOMPARE(cell->cell, QStringLiteral("A1B2C3"));
        QCOMPARE(cell->technology.value_or(-1), 7);
    }
}

void TestAtAnswers::readsImsi_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray imsi = "250017123456789";
    // 27.007 5.6
    QTest::newRow("bare") << Lines{imsi} << imsi;
    QTest::newRow("named") << Lines{"+CIMI: " + imsi} << imsi;
    QTest::newRow("named and quoted") << Lines{"+CIMI: \"" + imsi + "\""} << imsi;
    QTest::newRow("behind another line") << Lines{"^RSSI: 17", imsi} << imsi;
    QTest::newRow("fourteen digits") << Lines{imsi.left(14)} << imsi.left(14);
    QTest::newRow("too long") << Lines{imsi + "0"} << QByteArray();
    QTest::newRow("no country begins so") << Lines{"050017123456789"} << QByteArray();
    QTest::newRow("letters") << Lines{"25001712345678A"} << QByteArray();
    QTest::newRow("nothing") << Lines() << QByteArray();
}

void TestAtAnswers::readsImsi()
{
    QFETCH(Lines, lines);
    QTEST(parseImsi(lines), "expected");
}

void TestAtAnswers::readsIccid_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray iccid = "8970199123456789012";
    // Names as in the makers' AT manuals.
    QTest::newRow("bare (SIMCom)") << Lines{iccid} << iccid;
    QTest::newRow("bare with a filler (SIMCom)") << Lines{iccid + "f"} << iccid;
    QTest::newRow("+CCID quoted (Sierra)") << Lines{"+CCID: \"" + iccid + "\""} << iccid;
    QTest::newRow("+CCID (u-blox)") << Lines{"+CCID: " + iccid} << iccid;
    QTest::newRow("^ICCID (Huawei)") << Lines{"^ICCID: " + iccid + "F"} << iccid;
    QTest::newRow("+ICCID (SIMCom LTE)") << Lines{"+ICCID: " + iccid} << iccid;
    QTest::newRow("+QCCID (Quectel)") << Lines{"+QCCID: " + iccid + "F"} << iccid;
    QTest::newRow("#CCID (Telit)") << Lines{"#CCID: " + iccid} << iccid;
    QTest::newRow("ICCID (ZTE)") << Lines{"ICCID: " + iccid} << iccid;
    QTest::newRow("^SCID (Cinterion)") << Lines{"^SCID: " + iccid} << iccid;
    QTest::newRow("no blank") << Lines{"^ICCID:" + iccid} << iccid;
    QTest::newRow("twenty digits")
        << Lines{"89701991234567890123"} << QByteArray("89701991234567890123");
    QTest::newRow("pairs of digits as they lie on the card")
        << Lines{"^ICCID: 980791193254769810F2"} << iccid;
    QTest::newRow("behind another line") << Lines{"+CSQ: 1,99", iccid} << iccid;
    QTest::newRow("not of a telephone card") << Lines{"7070199123456789012"} << QByteArray();
    QTest::newRow("too short") << Lines{"897019912345678"} << QByteArray();
    QTest::newRow("too long") << Lines{"8970199123456789012345"} << QByteArray();
    QTest::newRow("filler within") << Lines{"897019912345678F012"} << QByteArray();
    QTest::newRow("nothing") << Lines() << QByteArray();
}

void TestAtAnswers::readsIccid()
{
    QFETCH(Lines, lines);
    QTEST(parseIccid(lines), "expected");
}

void TestAtAnswers::readsImei_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QByteArray>("expected");
    const QByteArray imei = "356938035643809";
    // 27.007 5.4
    QTest::newRow("bare") << Lines{imei} << imei;
    QTest::newRow("quoted") << Lines{"\"" + imei + "\""} << imei;
    QTest::newRow("named") << Lines{"+CGSN: " + imei} << imei;
    QTest::newRow("named and quoted") << Lines{"+CGSN: \"" + imei + "\""} << imei;
    QTest::newRow("by its name") << Lines{"IMEI: " + imei} << imei;
    QTest::newRow("with another field behind (Sierra)") << Lines{imei + ",7F1A2B"} << imei;
    QTest::newRow("with software version") << Lines{imei + "0"} << imei + "0";
    QTest::newRow("without a check digit") << Lines{imei.left(14)} << imei.left(14);
    QTest::newRow("too long") << Lines{imei + "00"} << QByteArray();
    QTest::newRow("too short") << Lines{imei.left(13)} << QByteArray();
    QTest::newRow("nothing") << Lines() << QByteArray();
}

void TestAtAnswers::readsImei()
{
    QFETCH(Lines, lines);
    QTEST(parseImei(lines), "expected");
}

void TestAtAnswers::readsOwnNumber_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("expected");
    const QString number = QStringLiteral("+79168999100");
    // 27.007 7.1
    QTest::newRow("international") << Lines{"+CNUM: \"Own\",\"+79168999100\",145"} << number;
    QTest::newRow("international by its type alone")
        << Lines{"+CNUM: ,\"79168999100\",145"} << number;
    QTest::newRow("national") << Lines{"+CNUM: \"\",\"89168999100\",129"}
                              << QStringLiteral("89168999100");
    QTest::newRow("with service fields")
        << Lines{"+CNUM: \"Own\",\"+79168999100\",145,7,4"} << number;
    QTest::newRow("name with a comma")
        << Lines{"+CNUM: \"Line 1, own\",\"+79168999100\",145"} << number;
    QTest::newRow("the first of two that is there")
        << Lines{"+CNUM: \"1\",\"\",129", "+CNUM: \"2\",\"+79168999100\",145"} << number;
    QTest::newRow("UCS2")
        << Lines{"+CNUM: \"\",\"002B00370039003100360038003900390039003100300030\",145"} << number;
    QTest::newRow("bare") << Lines{"+CNUM: ,+79168999100,145"} << number;
    QTest::newRow("empty") << Lines{"+CNUM: \"\",\"\",129"} << QString();
    QTest::newRow("not a number") << Lines{"+CNUM: \"\",\"unknown\",129"} << QString();
    QTest::newRow("cut off") << Lines{"+CNUM: \"Own\""} << QString();
    QTest::newRow("nothing") << Lines() << QString();
}

void TestAtAnswers::readsOwnNumber()
{
    QFETCH(Lines, lines);
    QTEST(parseOwnNumber(lines), "expected");
}

void TestAtAnswers::survivesNoise()
{
    std::mt19937 random(27007);
    const Lines names{"+CSQ: ", "+COPS: ", "+CREG: ", "+CNUM: ", "^ICCID: ", "+CGSN: ", "+CIMI: "};
    const QByteArray alphabet("0123456789FF89,,\"\"+ \xff:");
    for (int round = 0; round < 5000; ++round) {
        QByteArray line = names.at(static_cast<int>(random() % 7));
        for (unsigned int size = random() % 40; size > 0; --size)
            line += alphabet.at(
                static_cast<int>(random() % static_cast<unsigned int>(alphabet.size())));
        const Lines lines{line};
        const auto level = parseSignalLevel(lines);
        QVERIFY(!level || (*level >= -116 && *level <= -25));
        const auto found = parseOperator(lines);
        if (found && found->network)
            QVERIFY(found->network->mcc <= 999 && found->network->mnc <= 999);
        const auto cell = parseCell("+CREG", lines);
        QVERIFY(!cell || cell->area.isEmpty() == cell->cell.isEmpty());
        const QByteArray iccid = parseIccid(lines);
        QVERIFY(iccid.isEmpty() || iccid.startsWith("89"));
        QVERIFY(parseImei(lines).size() <= 16);
        QVERIFY(parseImsi(lines).size() <= 15);
        QVERIFY(parseOwnNumber(lines).size() <= 22);
    }
}

QTEST_APPLESS_MAIN(TestAtAnswers)
#include "tst_atanswers.moc"
