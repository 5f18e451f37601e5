#include "atmodem.h"
#include "gsmcodec.h"
#include "scriptedmodem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <functional>
#include <random>

/** What a modem is asked for once its port is open, over a line: everything of a query. */
class TestModemQuery : public QObject
{
    Q_OBJECT

private slots:
    void failsWhileClosed();
    void asksEverything_data();
    void asksEverything();
    void endsWhenTheModemVanishes_data();
    void endsWhenTheModemVanishes();
    void isBoundedWhenTheModemHangs();
    void passesOverAQuestionThatIsNotAnswered();
    void tellsTheNetwork_data();
    void tellsTheNetwork();
    void tellsTheCell_data();
    void tellsTheCell();
    void tellsFacts_data();
    void tellsFacts();
    void tellsTheSignal_data();
    void tellsTheSignal();
    void sendsUssd_data();
    void sendsUssd();
    void writesUssdAsTheModemWants_data();
    void writesUssdAsTheModemWants();
    void setsAgainWhatMayHaveGone_data();
    void setsAgainWhatMayHaveGone();
    void waitsForTheEndOfAText();
    void callsOffAMenu();
    void isNotFooledByALateAnswer();
    void doesNotTakeALateAnswerForTheNext_data();
    void doesNotTakeALateAnswerForTheNext();
    void doesNotListenForEver_data();
    void doesNotListenForEver();
    void takesMessages_data();
    void takesMessages();
    void readsEverythingBeforeItDeletes();
    void deletesNothingWhenReadingFails();
    void deliversWhatItCouldNotDelete();
    void deliversWhenTheModemVanishesInBetween();
    void readsWithoutTaking();
    void readsBothStores();
    void findsTheNumberByUssd_data();
    void findsTheNumberByUssd();
    void findsTheNumberByMessage_data();
    void findsTheNumberByMessage();
    void givesUpOnTheNumber_data();
    void givesUpOnTheNumber();
    void switchesToModemOnly_data();
    void switchesToModemOnly();
    void survivesNoise();
};

namespace {

using namespace std::chrono_literals;
using Error = AtModem::Error;
using Answers = QMap<QByteArray, QByteArray>;

constexpr int kBaudrate = 57600;
constexpr qint64 kAtOnce = 900; // ms: less than any limit of the driver
constexpr qint64 kWithoutWaiting = 1900; // ms: less than the driver lets pass between two looks

const QByteArray ERROR_LINE = "\r\nERROR\r\n";

const char CENTRE[] = "07919730071111F1"; // +79037011111
const char SENDER[] = "0B919761989901F0"; // +79168999100
const char NAMED[] = "06D04DEA14"; // "MTS" in three septets, 23.040 9.1.2.5
const char NOON[] = "62110221000021"; // 2026-11-20 12:00:00 +03:00
const char NOON_TEXT[] = "2026-11-20T12:00:00+03:00";

QByteArray ok(const QByteArray &text = {})
{
    return ScriptedModem::ok(text);
}

QByteArray hexOctet(int value)
{
    return QByteArray(1, static_cast<char>(value)).toHex().toUpper();
}

// A received message (3GPP TS 23.040 9.2.2.1); the header is given without its length octet.
QByteArray message(const QString &text, const QByteArray &header = {},
    const QByteArray &sender = SENDER, const QByteArray &time = NOON)
{
    const auto septets = gsmcodec::encoded(text);
    const QByteArray withLength = header.isEmpty() ? header : hexOctet(header.size() / 2) + header;
    const int octets = withLength.size() / 2;
    const int headerSeptets = (8 * octets + 6) / 7;
    const QByteArray data = septets ? gsmcodec::packed(*septets, 7 * headerSeptets - 8 * octets)
                                    : gsmcodec::toUcs2(text);
    const int length = septets ? headerSeptets + septets->size() : octets + data.size();
    return CENTRE + QByteArray(header.isEmpty() ? "04" : "44") + sender + "00"
        + (septets ? "00" : "08") + time + hexOctet(length) + withLength + data.toHex().toUpper();
}

// Lines of the answer to AT+CMGL in PDU mode, 3GPP TS 27.005 3.4.2
QByteArray entry(int index, const QByteArray &pdu)
{
    const int centre = static_cast<int>(qstrlen(CENTRE)) / 2;
    return "+CMGL: " + QByteArray::number(index) + ",1,,"
        + QByteArray::number(pdu.size() / 2 - centre) + "\r\n" + pdu;
}

// Lines as people would write them: time, sender, text.
QStringList written(const QList<AtModem::SSms> &list)
{
    QStringList lines;
    for (const AtModem::SSms &sms : list)
        lines
            << QStringLiteral("%1 %2 %3").arg(sms.time.toString(Qt::ISODate), sms.sender, sms.text);
    return lines;
}

int openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}

// Not patient enough for a real network.
class QuickModem : public AtModem
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QuickModem)

public:
    using AtModem::AtModem;

protected:
    std::chrono::milliseconds ussdLimit() const override { return 300ms; }
    std::chrono::milliseconds messageLimit() const override { return 300ms; }
};

struct Bench
{
    QTemporaryDir locks;
    ScriptedModem modem;
    QuickModem driver{nullptr, locks.path()};
    QElapsedTimer clock;

    Bench()
    {
        const Answers more{
            {"AT+COPS=3,2", ok()},
            {"AT+COPS?", ok("+COPS: 0,2,\"25001\"")},
            {"AT+CREG=2", ok()},
            {"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"00C3F4D5\"")},
            {"AT+CGMR", ok("11.126.10.00.00")},
            {"AT+CGSN", ok("353142031234567")},
            {"AT+CIMI", ok("250011234567890")},
            {"AT^ICCID?", ok("^ICCID: 98101230000000000121")},
            {"AT+CNUM", ok("+CNUM: ,\"79161234567\",145")},
            {"AT+COPS=3,0", ok()},
            {"AT+CSCS=\"GSM\"", ok()},
            {"AT+CUSD=1,\"AA180C3602\",15",
                ok() + "\r\n+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",15\r\n"},
            {"AT+CSQ", ok("+CSQ: 21,99")},
            {"AT+CMGF=0", ok()},
            {"AT+CPMS?", ok("+CPMS: \"SM\",2,20,\"SM\",2,20,\"SM\",2,20")},
            {"AT+CMGL=4",
                ok(entry(3, message(QStringLiteral("Hello"))) + "\r\n"
                    + entry(7, message(QStringLiteral("Привет"))))},
            {"AT+CMGD=3", ok()},
            {"AT+CMGD=7", ok()},
        };
        answer(more);
        clock.start();
    }

    void answer(const Answers &answers)
    {
        for (auto it = answers.cbegin(); it != answers.cend(); ++it)
            modem.answers.insert(it.key(), it.value());
    }

    bool open()
    {
        modem.start();
        return driver.open(modem.path(), kBaudrate, 3);
    }

    // What was asked for after the modem had told what it is.
    QList<QByteArray> asked() const { return modem.commands().mid(3); }
};

// The whole query, in the order of its page. False as soon as the modem has gone.
bool query(AtModem &driver, QStringList *results = nullptr)
{
    const auto note = [&](const char *name, const QString &value) {
        if (results)
            *results << QStringLiteral("%1 %2").arg(QLatin1String(name), value);
        return driver.isOpen();
    };
    driver.reset(true);
    int mcc = 0;
    int mnc = 0;
    if (!driver.getMnc(mcc, mnc) || !note("network", QStringLiteral("%1 %2").arg(mcc).arg(mnc)))
        return false;
    QString lac;
    QString cid;
    if (!driver.getGsmCells(lac, cid) || !note("cell", lac + QLatin1Char(' ') + cid))
        return false;
    QMap<QString, QVariant> info;
    if (!driver.getInfo(info)
        || !note("info",
            QString::fromUtf8(QJsonDocument::fromVariant(info).toJson(QJsonDocument::Compact))))
        return false;
    QString answer;
    if (!driver.sendUSSD(QStringLiteral("*100#"), answer) || !note("ussd", answer))
        return false;
    int level = 0;
    if (!driver.getSignalLevel(level) || !note("signal", QString::number(level)))
        return false;
    QList<AtModem::SSms> list;
    if (!driver.takeMessages(list) || !note("sms", written(list).join(QLatin1Char('|'))))
        return false;
    driver.beforeDial();
    return driver.isOpen();
}

} // namespace

Q_DECLARE_METATYPE(Answers)
Q_DECLARE_METATYPE(AtError)
Q_DECLARE_METATYPE(std::function<QByteArray(const QByteArray &)>)

void TestModemQuery::failsWhileClosed()
{
    AtModem driver;
    int number = 5;
    QString text = QStringLiteral("as it was");
    QString other = text;
    QMap<QString, QVariant> info{{text, 1}};
    QList<AtModem::SSms> list{AtModem::SSms()};
    const QString error = QStringLiteral("No port is open.");
    const auto check = [&](bool result) {
        QVERIFY(!result);
        QCOMPARE(driver.lastError(), error);
        QCOMPARE(driver.error(), Error::Port);
    };
    QCOMPARE(driver.error(), Error::None);
    check(driver.getMnc(number, number));
    check(driver.getImei(text));
    check(driver.getGsmCells(text, other));
    check(driver.getInfo(info));
    check(driver.requestSelfNumber(true, QStringLiteral("1"), text));
    check(driver.requestSelfNumber(false, QStringLiteral("*1#"), text));
    check(driver.sendUSSD(QStringLiteral("*1#"), text));
    check(driver.getSignalLevel(number));
    check(driver.takeMessages(list));
    check(driver.readMessages(list));
    check(driver.toModemOnly());
    QCOMPARE(number, 5);
    QCOMPARE(text, QStringLiteral("as it was"));
    QCOMPARE(other, text);
    QCOMPARE(info.size(), 1);
    QCOMPARE(list.size(), 1);
}

void TestModemQuery::asksEverything_data()
{
    using Dress = std::function<QByteArray(const QByteArray &)>;
    QTest::addColumn<bool>("echo");
    QTest::addColumn<bool>("byteByByte");
    QTest::addColumn<Dress>("dress");
    const Dress plain = [](const QByteArray &answer) { return answer; };
    // ITU-T V.250 5.7.1 has CR LF around each line; S3 and S4 and hurried firmware have others.
    const Dress bareCr
        = [](const QByteArray &answer) { return QByteArray(answer).replace("\r\n", "\r"); };
    const Dress bareLf
        = [](const QByteArray &answer) { return QByteArray(answer).replace("\r\n", "\n"); };
    const Dress doubled
        = [](const QByteArray &answer) { return QByteArray(answer).replace("\r\n", "\r\r\n"); };
    // 3GPP TS 27.007 7.2, 27.005 3.4.1, Huawei's periodic reports; a ring in between.
    const Dress interrupted = [](const QByteArray &answer) {
        return "\r\n^RSSI:17\r\n"
            + QByteArray(answer).replace(
                "\r\n\r\nOK", "\r\n\r\n+CREG: 1\r\n\r\nRING\r\n\r\n+CMTI: \"SM\",9\r\n\r\nOK");
    };
    // A message that is not stored but handed on, 27.005 3.4.1, and a late text of the network.
    const Dress spokenInto = [](const QByteArray &answer) {
        const QByteArray pdu = message(QStringLiteral("+CSQ: 1"));
        return "\r\n+CMT: ," + QByteArray::number(pdu.size() / 2 - 8) + "\r\n" + pdu + "\r\n"
            + answer;
    };
    const auto row = [](const char *name, const Dress &dress) {
        QTest::addRow("%s", name) << true << false << dress;
        QTest::addRow("%s, echo off", name) << false << false << dress;
        QTest::addRow("%s, byte by byte", name) << true << true << dress;
    };
    row("as the standard has it", plain);
    row("CR alone", bareCr);
    row("LF alone", bareLf);
    row("CR twice", doubled);
    row("unsolicited lines within", interrupted);
    row("a message within", spokenInto);
}

void TestModemQuery::asksEverything()
{
    QFETCH(bool, echo);
    QFETCH(bool, byteByByte);
    QFETCH(std::function<QByteArray(const QByteArray &)>, dress);
    Bench bench;
    bench.modem.echo = echo;
    bench.modem.byteByByte = byteByByte;
    for (QByteArray &answer : bench.modem.answers)
        answer = dress(answer);
    QVERIFY2(bench.open(), qPrintable(bench.driver.lastError()));
    QStringList results;
    QVERIFY2(query(bench.driver, &results), qPrintable(bench.driver.lastError()));
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(bench.driver.error(), Error::None);
    QCOMPARE(results,
        QStringList({QStringLiteral("network 250 1"), QStringLiteral("cell 1A2B C3F4D5"),
            QStringLiteral(
                "info {\"gsmCells\":[{\"cid\":\"C3F4D5\",\"lac\":\"1A2B\"}],"
                "\"iccid\":\"89012103000000001012\",\"imei\":\"353142031234567\","
                "\"imsi\":\"250011234567890\",\"manufacturer\":\"huawei\",\"model\":\"E1550\","
                "\"registration\":\"home\",\"revision\":\"11.126.10.00.00\","
                "\"simNumber\":\"+79161234567\"}"),
            QStringLiteral("ussd Balans 150.50 rub"), QStringLiteral("signal -71"),
            QStringLiteral("sms %1 +79168999100 Hello|%1 +79168999100 Привет")
                .arg(QLatin1String(NOON_TEXT))}));
    QVERIFY2(bench.clock.elapsed() < kAtOnce, qPrintable(QString::number(bench.clock.elapsed())));
    // Each question once, and none that is not needed.
    QCOMPARE(bench.asked(),
        QList<QByteArray>({"ATZ", "ATQ0V1E0", "AT+CMEE=1", "AT+CFUN?", "AT+CPIN?", "AT+CREG?",
            "AT+COPS=3,2", "AT+COPS?", "AT+CREG=2", "AT+CREG?", "AT+CGMR", "AT+CGSN", "AT+CIMI",
            "AT^ICCID?", "AT+CNUM", "AT+COPS=3,0", "AT+COPS?", "AT+CREG?", "AT+CSCS=\"GSM\"",
            "AT+CUSD=1,\"AA180C3602\",15", "AT+CSQ", "AT+CMGF=0", "AT+CPMS?", "AT+CMGL=4",
            "AT+CMGD=3", "AT+CMGD=7", "AT+CREG=0", "AT+CGREG=0", "AT+CEREG=0", "AT^CURC=0"}));
}

void TestModemQuery::endsWhenTheModemVanishes_data()
{
    QTest::addColumn<int>("place");
    Bench bench;
    QVERIFY(bench.open());
    QVERIFY(query(bench.driver));
    const QList<QByteArray> commands = bench.modem.commands();
    for (int i = 0; i < commands.size(); ++i)
        QTest::addRow("%d %s", i, commands.at(i).constData()) << i;
}

void TestModemQuery::endsWhenTheModemVanishes()
{
    QFETCH(int, place);
    const int files = openFiles();
    {
        Bench bench;
        int heard = 0;
        bench.modem.onCommand = [&](const QByteArray &command) {
            if (heard++ == place)
                bench.modem.hangUpOn = command;
        };
        const bool opened = bench.open();
        QCOMPARE(opened, place > 2);
        if (opened)
            QVERIFY(!query(bench.driver));
        QVERIFY2(
            bench.clock.elapsed() < kAtOnce, qPrintable(QString::number(bench.clock.elapsed())));
        QVERIFY(!bench.driver.isOpen());
        QCOMPARE(bench.driver.error(), Error::Port);
        QCOMPARE(bench.driver.lastError(),
            QStringLiteral("The modem on %1 has gone: its port was unplugged or hung up.")
                .arg(bench.modem.path()));
        QCOMPARE(QDir(bench.locks.path()).entryList(QDir::Files), QStringList());
        QCOMPARE(bench.modem.commands().size(), place + 1);
    }
    QCOMPARE(openFiles(), files);
}

void TestModemQuery::isBoundedWhenTheModemHangs()
{
    Bench bench;
    std::atomic<bool> hangs{false};
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (hangs) {
            bench.modem.silent = true;
            bench.modem.answers[command] = QByteArray();
        }
    };
    QVERIFY(bench.open());
    bench.driver.reset(false);
    hangs = true;
    const auto check = [&](bool result, qint64 longest) {
        QVERIFY(!result);
        QVERIFY2(
            bench.clock.elapsed() < longest, qPrintable(QString::number(bench.clock.elapsed())));
        QCOMPARE(bench.driver.error(), Error::NoAnswer);
        QCOMPARE(bench.driver.lastError(),
            QStringLiteral("The modem on %1 no longer answers.").arg(bench.modem.path()));
        QVERIFY(bench.driver.isOpen());
        bench.clock.start();
    };
    QMap<QString, QVariant> info;
    bench.clock.start();
    check(bench.driver.getInfo(info), 5000);
    int level = 0;
    check(bench.driver.getSignalLevel(level), 5000);
    QList<AtModem::SSms> list;
    check(bench.driver.takeMessages(list), 2000);
    QString answer;
    check(bench.driver.sendUSSD(QStringLiteral("*100#"), answer), 2000);
    check(bench.driver.toModemOnly(), 5000);
    bench.driver.close();
    QVERIFY(bench.clock.elapsed() < kAtOnce);
}

void TestModemQuery::passesOverAQuestionThatIsNotAnswered()
{
    Bench bench;
    bench.modem.answers["AT+CGMR"] = QByteArray();
    QVERIFY(bench.open());
    QMap<QString, QVariant> info;
    QVERIFY2(bench.driver.getInfo(info), qPrintable(bench.driver.lastError()));
    QCOMPARE(bench.driver.lastError(), QString());
    QVERIFY(!info.contains(QStringLiteral("revision")));
    QCOMPARE(info.value(QStringLiteral("imei")).toString(), QStringLiteral("353142031234567"));
}

void TestModemQuery::tellsTheNetwork_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<int>("mcc");
    QTest::addColumn<int>("mnc");
    QTest::addColumn<QString>("error");
    const auto row
        = [](const char *name, const Answers &answers, int mcc, int mnc, const char *error = "") {
              QTest::newRow(name) << answers << mcc << mnc << QString::fromLatin1(error);
          };
    // 3GPP TS 27.007 7.3
    row("two digits", {{"AT+COPS?", ok("+COPS: 0,2,\"25001\"")}}, 250, 1);
    row("three digits", {{"AT+COPS?", ok("+COPS: 0,2,\"310410\",7")}}, 310, 410);
    row("bare, with technology", {{"AT+COPS?", ok("+COPS: 0,2,25002,2")}}, 250, 2);
    row("roaming", {{"AT+COPS?", ok("+COPS: 0,2,\"25501\"")}}, 255, 1);
    // Modems that take AT+COPS=3,2 and tell the name all the same (older ZTE).
    row("the name alone, so the card's", {{"AT+COPS?", ok("+COPS: 0,0,\"MTS RUS\",0")}}, 250, 1);
    row("not registered, so the card's", {{"AT+COPS?", ok("+COPS: 0")}}, 250, 1);
    row("refused, so the card's", {{"AT+COPS?", "\r\n+CME ERROR: 30\r\n"}}, 250, 1);
    row("a card of three digits",
        {{"AT+COPS?", ok("+COPS: 0")}, {"AT+CIMI", ok("310410123456789")}}, 310, 410);
    row("a card that tells its name",
        {{"AT+COPS?", ok("+COPS: 0")}, {"AT+CIMI", ok("+CIMI: 250021234567890")}}, 250, 2);
    row("no card", {{"AT+COPS?", "\r\n+CME ERROR: 10\r\n"}, {"AT+CIMI", "\r\n+CME ERROR: 10\r\n"}},
        0, 0, "The modem does not tell its network: +CME ERROR: 10.");
    row("error in words",
        {{"AT+COPS?", ERROR_LINE}, {"AT+CIMI", "\r\n+CME ERROR: SIM not inserted\r\n"}}, 0, 0,
        "The modem does not tell its network: +CME ERROR: SIM not inserted.");
}

void TestModemQuery::tellsTheNetwork()
{
    QFETCH(Answers, answers);
    QFETCH(QString, error);
    Bench bench;
    bench.answer(answers);
    QVERIFY(bench.open());
    int mcc = 0;
    int mnc = 0;
    QCOMPARE(bench.driver.getMnc(mcc, mnc), error.isEmpty());
    QTEST(mcc, "mcc");
    QTEST(mnc, "mnc");
    QCOMPARE(bench.driver.lastError(), error);
    QCOMPARE(bench.driver.error(), error.isEmpty() ? Error::None : Error::Refused);
}

void TestModemQuery::tellsTheCell_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const Answers &answers, const char *cell,
                         const char *error = "") {
        QTest::newRow(name) << answers << QString::fromLatin1(cell) << QString::fromLatin1(error);
    };
    const auto creg = [](const char *line) { return Answers{{"AT+CREG?", ok(line)}}; };
    // 3GPP TS 27.007 7.2: <lac> of two octets, <ci> of two (GSM) or four (UTRAN, E-UTRAN).
    row("two octets, quoted", creg("+CREG: 2,1,\"1A2B\",\"C3D4\""), "1A2B C3D4");
    row("two octets, bare", creg("+CREG: 2,1,1A2B,C3D4"), "1A2B C3D4");
    row("lower case", creg("+CREG: 2,1,\"1a2b\",\"c3d4\""), "1A2B C3D4");
    row("four octets", creg("+CREG: 2,1,\"1A2B\",\"00C3F4D5\",2"), "1A2B C3F4D5");
    row("seven digits, E-UTRAN", creg("+CREG: 2,5,\"1A2B\",\"0C3F4D5\",7"), "1A2B C3F4D5");
    row("nothing", creg("+CREG: 2,0"), " ", "The modem is in no network.");
    row("registered, not told", creg("+CREG: 2,1"), " ", "The modem does not tell its cell.");
    // An LTE modem without circuit-switched service, 27.007 10.1.22.
    row("LTE alone",
        {{"AT+CREG?", ok("+CREG: 2,2")}, {"AT+CGREG=2", ok()}, {"AT+CGREG?", ok("+CGREG: 2,0")},
            {"AT+CEREG=2", ok()}, {"AT+CEREG?", ok("+CEREG: 2,1,\"00C3\",\"0A12F3B4\",7")}},
        "00C3 A12F3B4");
    row("packet service alone",
        {{"AT+CREG=2", ERROR_LINE}, {"AT+CGREG=2", ok()},
            {"AT+CGREG?", ok("+CGREG: 2,1,\"1A2B\",\"C3D4\"")}},
        "1A2B C3D4");
    row("a change of the cell within",
        creg("+CREG: 1,\"1111\",\"2222\"\r\n\r\n+CREG: 2,1,\"1A2B\",\"C3D4\""), "1A2B C3D4");
    row("none of the commands", {{"AT+CREG=2", ERROR_LINE}}, " ",
        "The modem does not tell its cell.");
}

void TestModemQuery::tellsTheCell()
{
    QFETCH(Answers, answers);
    QFETCH(QString, error);
    Bench bench;
    bench.answer(answers);
    QVERIFY(bench.open());
    QString lac;
    QString cid;
    QCOMPARE(bench.driver.getGsmCells(lac, cid), error.isEmpty());
    QTEST(lac + QLatin1Char(' ') + cid, "cell");
    QCOMPARE(bench.driver.lastError(), error);
    QCOMPARE(bench.driver.error(), error.isEmpty() ? Error::None : Error::Refused);
}

void TestModemQuery::tellsFacts_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("value");
    const auto row
        = [](const char *name, const Answers &answers, const char *key, const QVariant &value) {
              QTest::newRow(name) << answers << QString::fromLatin1(key) << value;
          };
    const Answers none;
    const Answers generic{{"AT+CGMI", ok("Somebody")}, {"AT+CGMM", ok("Something")}};
    const auto with = [](Answers answers, const Answers &more) {
        for (auto it = more.cbegin(); it != more.cend(); ++it)
            answers.insert(it.key(), it.value());
        return answers;
    };
    row("number without a type", {{"AT+CNUM", ok("+CNUM: \"Own\",\"89161234567\",129")}},
        "simNumber", QStringLiteral("89161234567"));
    // 27.007 7.1: an empty list where the card has none.
    row("no number on the card", {{"AT+CNUM", ok()}}, "simNumber", QVariant());
    row("number refused", {{"AT+CNUM", "\r\n+CME ERROR: 22\r\n"}}, "simNumber", QVariant());
    row("operator in UCS2", {{"AT+COPS?", ok("+COPS: 0,0,\"041C0422042100200052\",2")}}, "operator",
        QStringLiteral("МТС R"));
    row("operator's codes instead of its name", none, "operator", QVariant());
    row("roaming", {{"AT+CREG?", ok("+CREG: 2,5,\"1A2B\",\"C3D4\",7")}}, "registration",
        QStringLiteral("roaming"));
    const auto registration = [&](const char *stat, const char *text) {
        row(text, {{"AT+CREG?", ok("+CREG: 2," + QByteArray(stat))}}, "registration",
            QString::fromLatin1(text));
    };
    registration("0", "not searching");
    registration("2", "searching");
    registration("3", "denied");
    registration("4", "unknown");
    registration("8", "emergency calls only");
    row("registered in one of two networks",
        {{"AT+CREG?", ok("+CREG: 2,2")}, {"AT+CGREG=2", ok()}, {"AT+CGREG?", ok("+CGREG: 2,1")}},
        "registration", QStringLiteral("home"));
    row("LTE", {{"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"C3D4\",7")}}, "technology",
        QStringLiteral("LTE"));
    row("HSPA", {{"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"C3D4\",6")}}, "technology",
        QStringLiteral("UMTS"));
    row("EDGE", {{"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"C3D4\",3")}}, "technology",
        QStringLiteral("GSM"));
    row("5G", {{"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"C3D4\",11")}}, "technology",
        QStringLiteral("5G"));
    row("technology at the operator alone (Huawei E173)",
        {{"AT+COPS?", ok("+COPS: 0,0,\"MTS RUS\",2")}}, "technology", QStringLiteral("UMTS"));
    row("revision behind a word", {{"AT+CGMR", ok("Revision:1418B05SIM800L24")}}, "revision",
        QStringLiteral("1418B05SIM800L24"));
    row("cells", {{"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"C3D4\",2")}}, "gsmCells",
        QVariantList{QVariantMap{{QStringLiteral("lac"), QStringLiteral("1A2B")},
            {QStringLiteral("cid"), QStringLiteral("C3D4")},
            {QStringLiteral("technology"), QStringLiteral("UMTS")}}});
    row("no cells", {{"AT+CREG?", ok("+CREG: 2,2")}}, "gsmCells", QVariantList());
    row("revision behind a name", {{"AT+CGMR", ok("+CGMR: 11.608.14")}}, "revision",
        QStringLiteral("11.608.14"));
    // The card's number, by each maker's command.
    const QString iccid = QStringLiteral("8970101234567890123");
    const auto maker = [&](const char *name, const char *makerName, const char *model,
                           const char *command, const char *answer) {
        row(name, {{"AT+CGMI", ok(makerName)}, {"AT+CGMM", ok(model)}, {command, ok(answer)}},
            "iccid", iccid);
    };
    maker("card, ZTE", "ZTE CORPORATION", "MF180", "AT+ZGETICCID",
        "+ZGETICCID: 8970101234567890123F");
    maker("card, SIMCom", "SIMCOM_Ltd", "SIMCOM_SIM800", "AT+CCID", "8970101234567890123f");
    maker("card, Quectel", "Quectel", "EC25", "AT+QCCID", "+QCCID: 8970101234567890123F");
    maker("card, Telit", "Telit", "LE910", "AT#CCID", "#CCID: 8970101234567890123");
    maker("card, Sierra", "Sierra Wireless, Incorporated", "MC7304", "AT+ICCID",
        "ICCID: 8970101234567890123");
    maker("card, u-blox", "u-blox", "SARA-U270", "AT+CCID", "+CCID: 8970101234567890123");
    maker("card, Cinterion", "Cinterion", "BGS2-W", "AT^SCID", "^SCID: 8970101234567890123");
    // 27.007 8.18: the file on the card, digits as they lie there.
    row("card read itself",
        with(generic, {{"AT+CRSM=176,12258,0,0,10", ok("+CRSM: 144,0,\"980701214365870921F3\"")}}),
        "iccid", iccid);
    row("card not readable",
        with(generic, {{"AT+CRSM=176,12258,0,0,10", ok("+CRSM: 106,130,\"\"")}}), "iccid",
        QVariant());
}

void TestModemQuery::tellsFacts()
{
    QFETCH(Answers, answers);
    QFETCH(QString, key);
    QFETCH(QVariant, value);
    Bench bench;
    bench.answer(answers);
    QVERIFY(bench.open());
    QMap<QString, QVariant> info;
    QVERIFY2(bench.driver.getInfo(info), qPrintable(bench.driver.lastError()));
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(info.value(key), value);
    QCOMPARE(info.contains(key), value.isValid());
    QVERIFY(!QJsonDocument::fromVariant(info.value(QStringLiteral("gsmCells"))).isNull());
}

void TestModemQuery::tellsTheSignal_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<int>("level");
    // 27.007 8.5
    QTest::newRow("strongest") << Answers{{"AT+CSQ", ok("+CSQ: 31,0")}} << -51;
    QTest::newRow("weakest") << Answers{{"AT+CSQ", ok("+CSQ: 0,99")}} << -113;
    // 27.007 8.69
    QTest::newRow("LTE alone") << Answers{{"AT+CSQ", ok("+CSQ: 99,99")},
        {"AT+CESQ", ok("+CESQ: 99,99,255,255,20,44")}}
                               << -97;
    QTest::newRow("unknown") << Answers{{"AT+CSQ", ok("+CSQ: 99,99")}} << 0;
    QTest::newRow("refused") << Answers{{"AT+CSQ", ERROR_LINE}} << 0;
}

void TestModemQuery::tellsTheSignal()
{
    QFETCH(Answers, answers);
    QFETCH(int, level);
    Bench bench;
    bench.answer(answers);
    QVERIFY(bench.open());
    int told = 0;
    QCOMPARE(bench.driver.getSignalLevel(told), level != 0);
    QCOMPARE(told, level);
    QCOMPARE(bench.driver.error(), level != 0 ? Error::None : Error::Refused);
    QCOMPARE(bench.driver.lastError(),
        level != 0 ? QString()
                   : QStringLiteral("The modem does not know the strength of the signal."));
}

void TestModemQuery::sendsUssd_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<AtError>("kind");
    QTest::addColumn<QString>("error");
    const auto good = [](const char *name, const QByteArray &bytes, const char *answer) {
        QTest::newRow(name) << bytes << QString::fromUtf8(answer) << Error::None << QString();
    };
    const auto bad = [](const char *name, const QByteArray &bytes, Error kind, const char *error) {
        QTest::newRow(name) << bytes << QString() << kind << QString::fromUtf8(error);
    };
    const auto line = [](const QByteArray &text) { return "\r\n" + text + "\r\n"; };
    // 27.007 7.15
    good("plain, behind OK", ok() + line("+CUSD: 0,\"Balans 150.50 rub\",15"), "Balans 150.50 rub");
    good("plain, before OK", line("+CUSD: 0,\"Balans 150.50 rub\",15") + ok(), "Balans 150.50 rub");
    good("packed (Huawei E1550)", ok() + line("+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",15"),
        "Balans 150.50 rub");
    good("UCS2 (Huawei, ZTE)",
        ok() + line("+CUSD: 0,\"04110430043B0430043D0441003A0020003100350030002C00350030\",72"),
        "Баланс: 150,50");
    good("no coding scheme (SIMCom)", ok() + line("+CUSD: 0, \"Balans 5\""), "Balans 5");
    good("several lines behind OK", ok() + line("+CUSD: 0,\"Balans 5 rub\r\nTarif: X\r\nBye\",15"),
        "Balans 5 rub\nTarif: X\nBye");
    good("several lines before OK", line("+CUSD: 0,\"Balans 5 rub\nTarif: X\",15") + ok(),
        "Balans 5 rub\nTarif: X");
    good("empty lines behind OK",
        ok() + line("+CUSD: 0,\"Balans 5\r\n\r\n  Tarif: X \r\n\r\n\r\nBye\",15"),
        "Balans 5\n\n  Tarif: X \n\n\nBye");
    good("empty lines before OK", line("+CUSD: 0,\"Balans 5\n\nTarif: X\",15") + ok(),
        "Balans 5\n\nTarif: X");
    good("empty lines, doubled CR", ok() + line("+CUSD: 0,\"Balans 5\r\r\n\r\r\nTarif: X\",15"),
        "Balans 5\n\nTarif: X");
    good("empty lines, CR alone", ok() + line("+CUSD: 0,\"Balans 5\r\rTarif: X\",15"),
        "Balans 5\n\nTarif: X");
    good("a lone quote in the text", line("+CUSD: 0,\"Ekran 5\" 1 rub\",15") + ok(),
        "Ekran 5\" 1 rub");
    good("OK in the middle of the text", line("+CUSD: 0,\"Otvet\nOK\nBalans 5\",15") + ok(),
        "Otvet\nBalans 5");
    good("reports within the text", ok() + line("+CUSD: 0,\"Balans 5\r\n^RSSI:17\r\nTarif X\",15"),
        "Balans 5\nTarif X");
    good("reports in between",
        ok() + line("^RSSI:17") + line("+CREG: 1") + line("+CUSD: 0,\"5\",15"), "5");
    good("ended with a text", ok() + line("+CUSD: 2,\"Balans 5\",15"), "Balans 5");
    bad("ended by the network", ok() + line("+CUSD: 2"), Error::Refused,
        "The USSD request came to nothing: the network ended the session.");
    bad("another program", ok() + line("+CUSD: 3"), Error::Refused,
        "The USSD request came to nothing: another program answered.");
    bad("unknown to the network", ok() + line("+CUSD: 4"), Error::Refused,
        "The USSD request came to nothing: the network does not know the request.");
    bad("late network", ok() + line("+CUSD: 5"), Error::NoAnswer,
        "The USSD request came to nothing: the network did not answer in time.");
    bad("empty text", ok() + line("+CUSD: 0,\"\",15"), Error::Refused,
        "The USSD request came to nothing: the answer is empty.");
    bad("no text at all", ok(), Error::NoAnswer,
        "The network did not answer the USSD request in time.");
    bad("text that does not end", ok() + line("+CUSD: 0,\"Balans"), Error::NoAnswer,
        "The network did not answer the USSD request in time.");
    // 27.007 9.2
    bad("no network", "\r\n+CME ERROR: 30\r\n", Error::Refused,
        "The USSD request was refused: +CME ERROR: 30.");
    bad("no network, in words", "\r\n+CME ERROR: no network service\r\n", Error::Refused,
        "The USSD request was refused: +CME ERROR: no network service.");
    bad("silence", QByteArray(), Error::NoAnswer, "The modem on %1 no longer answers.");
}

void TestModemQuery::sendsUssd()
{
    QFETCH(QByteArray, bytes);
    QFETCH(AtError, kind);
    QFETCH(QString, error);
    for (const bool byteByByte : {false, true}) {
        Bench bench;
        bench.modem.byteByByte = byteByByte;
        bench.modem.answers["AT+CUSD=1,\"AA180C3602\",15"] = bytes;
        QVERIFY(bench.open());
        QString answer;
        QCOMPARE(bench.driver.sendUSSD(QStringLiteral("*100#"), answer), kind == Error::None);
        QTEST(answer, "answer");
        QCOMPARE(bench.driver.error(), kind);
        QCOMPARE(bench.driver.lastError(),
            error.contains(QLatin1String("%1")) ? error.arg(bench.modem.path()) : error);
    }
}

void TestModemQuery::writesUssdAsTheModemWants_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QList<QByteArray>>("asked");
    const QByteArray packed = "AT+CUSD=1,\"AA180C3602\",15";
    const QByteArray plain = "AT+CUSD=1,\"*100#\",15";
    const QByteArray charset = "AT+CSCS=\"GSM\"";
    const QByteArray text = ok() + "\r\n+CUSD: 0,\"Balans 5\",15\r\n";
    const QString code = QStringLiteral("*100#");
    using Asked = QList<QByteArray>;
    QTest::newRow("Huawei") << QByteArray("huawei") << Answers{{packed, text}} << code
                            << Asked{charset, packed};
    QTest::newRow("Huawei in plain mode")
        << QByteArray("huawei") << Answers{{plain, text}} << code << Asked{charset, packed, plain};
    for (const char *maker : {"ZTE", "SIMCOM_Ltd", "Quectel", "Telit", "Sierra Wireless", "u-blox",
             "Cinterion", "Somebody"})
        QTest::newRow(maker) << QByteArray(maker) << Answers{{plain, text}} << code
                             << Asked{charset, plain};
    QTest::newRow("unknown maker, packed")
        << QByteArray("Somebody") << Answers{{plain, "\r\n+CME ERROR: 50\r\n"}, {packed, text}}
        << code << Asked{charset, plain, packed};
    QTest::newRow("refused by the network, not written again")
        << QByteArray("huawei") << Answers{{packed, "\r\n+CME ERROR: 30\r\n"}} << code
        << Asked{charset, packed};
    QTest::newRow("refused in the only form")
        << QByteArray("Telit") << Answers{{plain, ERROR_LINE}} << code << Asked{charset, plain};
    QTest::newRow("another character set")
        << QByteArray("Quectel")
        << Answers{{charset, ERROR_LINE}, {"AT+CSCS=\"IRA\"", ok()}, {plain, text}} << code
        << Asked{charset, "AT+CSCS=\"IRA\"", plain};
    QTest::newRow("no code") << QByteArray("huawei") << Answers() << QString() << Asked();
    QTest::newRow("no code, but commands")
        << QByteArray("huawei") << Answers() << QStringLiteral("*100#\"\rATD112;") << Asked();
}

void TestModemQuery::writesUssdAsTheModemWants()
{
    QFETCH(QByteArray, maker);
    QFETCH(Answers, answers);
    QFETCH(QString, code);
    QFETCH(QList<QByteArray>, asked);
    Bench bench;
    bench.modem.answers["AT+CGMI"] = ok(maker);
    bench.modem.answers["AT+CGMM"] = ok("M1");
    bench.modem.answers.remove("AT+CUSD=1,\"AA180C3602\",15");
    bench.answer(answers);
    QVERIFY(bench.open());
    QString answer;
    const bool done = bench.driver.sendUSSD(code, answer);
    QCOMPARE(bench.asked(), asked);
    QCOMPARE(done, bench.modem.answers.value(asked.value(asked.size() - 1)).contains("+CUSD"));
    QCOMPARE(answer, done ? QStringLiteral("Balans 5") : QString());
    QCOMPARE(bench.driver.error(), done ? Error::None : Error::Refused);
    if (!done)
        return;
    // The character set is known by then.
    QVERIFY(bench.driver.sendUSSD(code, answer));
    QCOMPARE(bench.modem.commands().count("AT+CSCS=\"GSM\""), 1);
    QCOMPARE(bench.modem.commands().last(), asked.last());
    QCOMPARE(bench.asked().size(), asked.size() + 1);
}

// Without a coding scheme behind it, a quote at a line's end need not be the last.
void TestModemQuery::setsAgainWhatMayHaveGone_data()
{
    QTest::addColumn<bool>("isReset");
    QTest::newRow("by a reset") << true;
    QTest::newRow("before a dial") << false;
}

void TestModemQuery::setsAgainWhatMayHaveGone()
{
    QFETCH(bool, isReset);
    Bench bench;
    QVERIFY(bench.open());
    QString text;
    const auto ask = [&] {
        return bench.driver.getGsmCells(text, text)
            && bench.driver.sendUSSD(QStringLiteral("*100#"), text);
    };
    QVERIFY(ask() && ask());
    if (isReset)
        bench.driver.reset(false);
    else
        bench.driver.beforeDial();
    QVERIFY(ask() && ask());
    const QList<QByteArray> commands = bench.modem.commands();
    QCOMPARE(commands.count("AT+CREG=2"), 2);
    QCOMPARE(commands.count("AT+CSCS=\"GSM\""), isReset ? 2 : 1);
}

void TestModemQuery::waitsForTheEndOfAText()
{
    Bench bench;
    bench.modem.byteByByte = true;
    bench.modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ok() + "\r\n+CUSD: 0,\"Tarif \"X\"\r\nBalans 5\"\r\n";
    QVERIFY(bench.open());
    QString answer;
    QVERIFY2(bench.driver.sendUSSD(QStringLiteral("*100#"), answer),
        qPrintable(bench.driver.lastError()));
    QCOMPARE(answer, QStringLiteral("Tarif \"X\"\nBalans 5"));
}

void TestModemQuery::callsOffAMenu()
{
    Bench bench;
    bench.modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ok() + "\r\n+CUSD: 1,\"1. Balans\n2. Tarif\",15\r\n";
    bench.modem.answers["AT+CUSD=2"] = ok();
    QVERIFY(bench.open());
    QString answer;
    QVERIFY(bench.driver.sendUSSD(QStringLiteral("*100#"), answer));
    QCOMPARE(answer, QStringLiteral("1. Balans\n2. Tarif"));
    QCOMPARE(bench.modem.commands().last(), QByteArray("AT+CUSD=2"));
}

void TestModemQuery::isNotFooledByALateAnswer()
{
    Bench bench;
    bench.modem.answers["AT+CSQ"]
        = "\r\n+CUSD: 0,\"Zapros 1\r\n+CSQ\r\n1234567890123456\",15\r\n" + ok("+CSQ: 21,99");
    bench.modem.answers["AT+CIMI"]
        = "\r\n+CUSD: 0,\"Balans\r\n310410123456789\",15\r\n" + ok("250011234567890");
    bench.modem.answers["AT+COPS?"] = ok("+COPS: 0");
    QVERIFY(bench.open());
    int level = 0;
    QVERIFY(bench.driver.getSignalLevel(level));
    QCOMPARE(level, -71);
    int mcc = 0;
    int mnc = 0;
    QVERIFY(bench.driver.getMnc(mcc, mnc));
    QCOMPARE(mcc, 250);
}

void TestModemQuery::doesNotTakeALateAnswerForTheNext_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("late");
    const QByteArray text = "\r\n+CUSD: 0,\"Balans 5\",15\r\n";
    QTest::newRow("a text") << ok() << text;
    QTest::newRow("the end of the session") << ok() << QByteArray("\r\n+CUSD: 2\r\n");
    QTest::newRow("the request was not taken either") << QByteArray() << text;
}

void TestModemQuery::doesNotTakeALateAnswerForTheNext()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, late);
    Bench bench;
    bench.modem.answers["AT+CGMI"] = ok("Quectel");
    bench.modem.answers["AT+CUSD=1,\"*100#\",15"] = first;
    bench.modem.answers["AT+CUSD=2"] = ok();
    bench.modem.later["AT+CUSD=2"] = late;
    bench.modem.answers["AT+CUSD=1,\"*111#\",15"]
        = ok() + "\r\n+CUSD: 0,\"Vash nomer 79161234567\",15\r\n";
    QVERIFY(bench.open());
    QString answer;
    QVERIFY(!bench.driver.sendUSSD(QStringLiteral("*100#"), answer));
    QCOMPARE(bench.driver.error(), Error::NoAnswer);
    QCOMPARE(bench.modem.commands().last(), QByteArray("AT+CUSD=2"));
    QVERIFY2(bench.driver.sendUSSD(QStringLiteral("*111#"), answer),
        qPrintable(bench.driver.lastError()));
    QCOMPARE(answer, QStringLiteral("Vash nomer 79161234567"));
    // Once is enough.
    QVERIFY(bench.driver.sendUSSD(QStringLiteral("*111#"), answer));
    QCOMPARE(bench.modem.commands().count("AT+CUSD=2"), 1);
}

void TestModemQuery::doesNotListenForEver_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("lines without end") << QByteArray("Reklama\r\n");
    QTest::newRow("empty lines") << QByteArray("\r\n\r\n");
    QTest::newRow("no line end") << QByteArray("Reklama ");
}

void TestModemQuery::doesNotListenForEver()
{
    QFETCH(QByteArray, text);
    Bench bench;
    bench.modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ok() + "\r\n+CUSD: 0,\"" + text.repeated((1 << 20) / text.size());
    QVERIFY(bench.open());
    QElapsedTimer time;
    time.start();
    QString answer;
    QVERIFY(!bench.driver.sendUSSD(QStringLiteral("*100#"), answer));
    QVERIFY2(time.elapsed() < 10000, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(answer, QString());
}

void TestModemQuery::takesMessages_data()
{
    QTest::addColumn<QByteArray>("entries");
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QList<int>>("deleted");
    const auto row = [](const char *name, const QList<QByteArray> &entries,
                         const QStringList &texts, const QList<int> &deleted) {
        QByteArray lines;
        for (const QByteArray &one : entries)
            lines += one + "\r\n";
        QTest::newRow(name) << lines << texts << deleted;
    };
    const auto at = [](const char *time, const char *sender, const char *text) {
        return QStringLiteral("%1 %2 %3")
            .arg(QLatin1String(time), QLatin1String(sender), QString::fromUtf8(text));
    };
    const char number[] = "+79168999100";
    // 3GPP TS 23.040 9.2.3, 23.038 4
    row("none", {}, {}, {});
    row("7 bit", {entry(0, message(QStringLiteral("Hello [1] €")))},
        {at(NOON_TEXT, number, "Hello [1] €")}, {0});
    row("UCS2 with a pair of surrogates", {entry(1, message(QStringLiteral("Привет 😀")))},
        {at(NOON_TEXT, number, "Привет 😀")}, {1});
    row("8 bit", {entry(1, CENTRE + QByteArray("04") + SENDER + "0004" + NOON + "0548656C6C6F")},
        {at(NOON_TEXT, number, "Hello")}, {1});
    // 23.038 A.2.1: a Turkish single shift table
    row("national table", {entry(1, message(QStringLiteral("ab"), "240101"))},
        {at(NOON_TEXT, number, "ab")}, {1});
    // 23.040 9.1.2.5
    row("sender with a name", {entry(1, message(QStringLiteral("Hi"), {}, NAMED))},
        {at(NOON_TEXT, "MTS", "Hi")}, {1});
    // 23.040 9.2.3.11
    row("zone west of Greenwich",
        {entry(1, message(QStringLiteral("Hi"), {}, SENDER, "6211022100000A"))},
        {at("2026-11-20T12:00:00-05:00", number, "Hi")}, {1});
    row("a wrong time", {entry(1, message(QStringLiteral("Hi"), {}, SENDER, "62000221000021"))},
        {at("", number, "Hi")}, {1});
    // 23.040 9.2.3.24.1
    row("parts out of order",
        {entry(5, message(QStringLiteral("three"), "00037B0303")),
            entry(2, message(QStringLiteral("one "), "00037B0301")),
            entry(9, message(QStringLiteral("two "), "00037B0302"))},
        {at(NOON_TEXT, number, "one two three")}, {2, 5, 9});
    row("a part missing",
        {entry(5, message(QStringLiteral("three"), "00037B0303")),
            entry(2, message(QStringLiteral("one "), "00037B0301"))},
        {at(NOON_TEXT, number, "one …three")}, {2, 5});
    row("a part twice",
        {entry(5, message(QStringLiteral("two"), "00037B0202")),
            entry(6, message(QStringLiteral("two"), "00037B0202")),
            entry(2, message(QStringLiteral("one "), "00037B0201"))},
        {at(NOON_TEXT, number, "one two")}, {2, 5, 6});
    row("the earliest first",
        {entry(1, message(QStringLiteral("b"), {}, SENDER, "62110231000021")),
            entry(2, message(QStringLiteral("a")))},
        {at(NOON_TEXT, number, "a"), at("2026-11-20T13:00:00+03:00", number, "b")}, {1, 2});
    // What is not delivered stays: 23.040 9.2.2.3, and one that is cut.
    row("a status report",
        {"+CMGL: 4,1,,25\r\n" + QByteArray(CENTRE) + "067B" + SENDER + NOON + NOON + "00",
            entry(5, message(QStringLiteral("Hi")))},
        {at(NOON_TEXT, number, "Hi")}, {5});
    row("a sent one",
        {"+CMGL: 4,3,,14\r\n" + QByteArray(CENTRE) + "0100" + SENDER + "000002C834",
            entry(5, message(QStringLiteral("Hi")))},
        {at(NOON_TEXT, number, "Hi")}, {5});
    row("a broken one between two",
        {entry(1, message(QStringLiteral("a"))),
            entry(2, message(QStringLiteral("Hello")).chopped(6)),
            "+CMGL: 3,1,,30\r\nno PDU at all", "+CMGL: 4,1,,30",
            entry(5, message(QStringLiteral("b")))},
        {at(NOON_TEXT, number, "a"), at(NOON_TEXT, number, "b")}, {1, 5});
}

void TestModemQuery::takesMessages()
{
    QFETCH(QByteArray, entries);
    QFETCH(QStringList, texts);
    QFETCH(QList<int>, deleted);
    Bench bench;
    bench.modem.answers["AT+CMGL=4"] = ok(entries);
    QList<QByteArray> removals;
    for (const int index : deleted) {
        removals << "AT+CMGD=" + QByteArray::number(index);
        bench.modem.answers[removals.last()] = ok();
    }
    QVERIFY(bench.open());
    QList<AtModem::SSms> list{AtModem::SSms()};
    QVERIFY2(bench.driver.takeMessages(list), qPrintable(bench.driver.lastError()));
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(written(list), texts);
    QCOMPARE(bench.asked(), QList<QByteArray>({"AT+CMGF=0", "AT+CPMS?", "AT+CMGL=4"}) + removals);
}

// A modem that has a place for one more: what comes while messages are deleted is not.
void TestModemQuery::readsEverythingBeforeItDeletes()
{
    Bench bench;
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (command == "AT+CMGD=3")
            bench.modem.answers["AT+CMGL=4"] = ok(entry(3, message(QStringLiteral("New"))) + "\r\n"
                + entry(7, message(QStringLiteral("Привет"))));
        if (command == "AT+CMGD=7")
            bench.modem.answers["AT+CMGL=4"] = ok(entry(3, message(QStringLiteral("New"))));
    };
    QVERIFY(bench.open());
    QList<AtModem::SSms> list;
    QVERIFY(bench.driver.takeMessages(list));
    QCOMPARE(list.size(), 2);
    QCOMPARE(list.first().text, QStringLiteral("Hello"));
    QCOMPARE(bench.asked().mid(2), QList<QByteArray>({"AT+CMGL=4", "AT+CMGD=3", "AT+CMGD=7"}));
    QVERIFY(bench.driver.takeMessages(list));
    QCOMPARE(list.size(), 1);
    QCOMPARE(list.first().text, QStringLiteral("New"));
}

void TestModemQuery::deletesNothingWhenReadingFails()
{
    Bench bench;
    // 27.005 3.2.5: memory failure, in the middle of the list
    bench.modem.answers["AT+CMGL=4"]
        = "\r\n" + entry(3, message(QStringLiteral("Hello"))) + "\r\n\r\n+CMS ERROR: 320\r\n";
    QVERIFY(bench.open());
    QList<AtModem::SSms> list{AtModem::SSms()};
    QVERIFY(!bench.driver.takeMessages(list));
    QCOMPARE(list.size(), 1);
    QCOMPARE(bench.driver.error(), Error::Refused);
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The messages could not be read: +CMS ERROR: 320."));
    QCOMPARE(bench.asked().last(), QByteArray("AT+CMGL=4"));
}

void TestModemQuery::deliversWhatItCouldNotDelete()
{
    Bench bench;
    bench.modem.answers["AT+CMGD=3"] = "\r\n+CMS ERROR: 321\r\n";
    QVERIFY(bench.open());
    QList<AtModem::SSms> list;
    QVERIFY(bench.driver.takeMessages(list));
    QCOMPARE(list.size(), 2);
    QCOMPARE(bench.driver.error(), Error::Refused);
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("A message could not be deleted: +CMS ERROR: 321."));
    QCOMPARE(bench.asked().last(), QByteArray("AT+CMGD=7"));
}

void TestModemQuery::deliversWhenTheModemVanishesInBetween()
{
    Bench bench;
    bench.modem.hangUpOn = "AT+CMGD=7";
    QVERIFY(bench.open());
    QList<AtModem::SSms> list;
    QVERIFY(bench.driver.takeMessages(list));
    QCOMPARE(list.size(), 2);
    QCOMPARE(bench.driver.error(), Error::Port);
    QVERIFY(!bench.driver.isOpen());
}

void TestModemQuery::readsWithoutTaking()
{
    Bench bench;
    QVERIFY(bench.open());
    QList<AtModem::SSms> list;
    QVERIFY(bench.driver.readMessages(list));
    QCOMPARE(list.size(), 2);
    QCOMPARE(bench.asked(), QList<QByteArray>({"AT+CMGF=0", "AT+CPMS?", "AT+CMGL=4"}));
}

// 27.005 3.2.2: a modem that reads from the card and puts new messages into itself.
void TestModemQuery::readsBothStores()
{
    Bench bench;
    bench.modem.answers["AT+CPMS?"] = ok("+CPMS: \"SM\",1,20,\"SM\",1,20,\"ME\",1,99");
    bench.modem.answers["AT+CPMS=\"ME\""] = ok("+CPMS: 1,99,1,20,1,99");
    bench.modem.answers["AT+CPMS=\"SM\""] = ok("+CPMS: 1,20,1,20,1,99");
    bench.modem.answers["AT+CMGL=4"] = ok(entry(3, message(QStringLiteral("one "), "00037B0201")));
    const QByteArray inCard = bench.modem.answers["AT+CMGL=4"];
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (command == "AT+CPMS=\"ME\"")
            bench.modem.answers["AT+CMGL=4"]
                = ok(entry(3, message(QStringLiteral("two"), "00037B0202")));
        if (command == "AT+CPMS=\"SM\"")
            bench.modem.answers["AT+CMGL=4"] = inCard;
    };
    QVERIFY(bench.open());
    QList<AtModem::SSms> list;
    QVERIFY(bench.driver.readMessages(list));
    QCOMPARE(list.size(), 1);
    QCOMPARE(bench.asked().last(), QByteArray("AT+CPMS=\"SM\"")); // as the modem had it
    const int asked = bench.asked().size();
    QVERIFY(bench.driver.takeMessages(list));
    QCOMPARE(written(list),
        QStringList(QStringLiteral("%1 +79168999100 one two").arg(QLatin1String(NOON_TEXT))));
    QCOMPARE(bench.asked().mid(asked + 2),
        QList<QByteArray>({"AT+CMGL=4", "AT+CPMS=\"ME\"", "AT+CMGL=4", "AT+CPMS=\"SM\"",
            "AT+CMGD=3", "AT+CPMS=\"ME\"", "AT+CMGD=3", "AT+CPMS=\"SM\""}));
}

void TestModemQuery::findsTheNumberByUssd_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("number");
    QTest::newRow("told") << QByteArray("Vash nomer: 79161234567") << QStringLiteral("79161234567");
    QTest::newRow("told in UCS2") << QByteArray(
        "0412043004480020043D043E043C04350440002000380039003100360031003200330034003500360037")
                                  << QStringLiteral("89161234567");
    QTest::newRow("not told") << QByteArray("Zapros prinyat") << QString();
}

void TestModemQuery::findsTheNumberByUssd()
{
    QFETCH(QByteArray, text);
    QFETCH(QString, number);
    Bench bench;
    bench.modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ok() + "\r\n+CUSD: 0,\"" + text + "\",15\r\n";
    QVERIFY(bench.open());
    QString found;
    QCOMPARE(
        bench.driver.requestSelfNumber(false, QStringLiteral("*100#"), found), !number.isEmpty());
    QCOMPARE(found, number);
    QCOMPARE(bench.driver.error(), number.isEmpty() ? Error::Refused : Error::None);
}

void TestModemQuery::findsTheNumberByMessage_data()
{
    QTest::addColumn<bool>("byteByByte");
    QTest::addColumn<QByteArray>("firstList"); // behind the old message of the list
    QTest::addColumn<QByteArray>("sender");
    const QByteArray service = "04810550"; // 5050
    const QByteArray done = "\r\n\r\nOK\r\n";
    const QByteArray news = "\r\n+CMTI: \"SM\",8\r\n"; // 27.005 3.4.1
    QTest::newRow("there at once") << false << QByteArray() << service;
    QTest::newRow("told of later") << true << done + news << service;
    QTest::newRow("told of within the list") << true << news + done << service;
    QTest::newRow("told of right behind the list") << false << done + news << service;
    QTest::newRow("from a name") << false << QByteArray() << QByteArray(NAMED);
}

void TestModemQuery::findsTheNumberByMessage()
{
    QFETCH(bool, byteByByte);
    QFETCH(QByteArray, firstList);
    QFETCH(QByteArray, sender);
    Bench bench;
    bench.modem.byteByByte = byteByByte;
    bench.modem.answers["AT+CNMI=2,1"] = ok();
    bench.modem.promptOn = "AT+CMGS";
    bench.modem.answerToText = ok("+CMGS: 12");
    // One that was there before, and one of a subscriber that comes at the same time.
    const QByteArray old = entry(1, message(QStringLiteral("Number 79990000001"), {}, sender));
    const QByteArray other = entry(2, message(QStringLiteral("Call me: 79990000002")));
    const QByteArray answer
        = entry(8, message(QStringLiteral("Your number is 79161234567"), {}, sender));
    bench.modem.answers["AT+CMGL=4"] = ok(old);
    int lists = 0;
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (command != "AT+CMGL=4" || ++lists == 1)
            return;
        bench.modem.answers[command] = lists == 2 && !firstList.isEmpty()
            ? "\r\n" + old + firstList
            : ok(old + "\r\n" + other + "\r\n" + answer);
    };
    bench.modem.start();
    AtModem patient(nullptr, bench.locks.path());
    QVERIFY(patient.open(bench.modem.path(), kBaudrate, 1));
    QString number;
    QVERIFY2(patient.requestSelfNumber(true, QStringLiteral("5050 NUM"), number),
        qPrintable(patient.lastError()));
    QCOMPARE(number, QStringLiteral("79161234567"));
    QVERIFY2(bench.clock.elapsed() < kWithoutWaiting,
        qPrintable(QString::number(bench.clock.elapsed())));
    // 3GPP TS 23.040 9.2.2.2: SMS-SUBMIT to 5050, "NUM" in three septets. The answer stays there.
    QList<QByteArray> asked{"AT+CNMI=2,1", "AT+CMGF=0", "AT+CPMS?", "AT+CMGL=4", "AT+CMGS=12",
        "00010004810505000003CE6A13\x1a", "AT+CMGL=4"};
    if (!firstList.isEmpty())
        asked << "AT+CMGL=4";
    QCOMPARE(bench.asked(), asked);
}

void TestModemQuery::givesUpOnTheNumber_data()
{
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QByteArray>("answerToText");
    QTest::addColumn<QString>("phone");
    QTest::addColumn<AtError>("kind");
    QTest::addColumn<QString>("error");
    const Answers none;
    const QString phone = QStringLiteral("5050 NUM");
    QTest::newRow("no answer") << none << ok("+CMGS: 1") << phone << Error::NoAnswer
                               << QStringLiteral(
                                      "The operator did not answer the message to 5050 in time.");
    // 27.005 3.2.5
    QTest::newRow("not sent") << none << QByteArray("\r\n+CMS ERROR: 331\r\n") << phone
                              << Error::Refused
                              << QStringLiteral("The message could not be sent: +CMS ERROR: 331.");
    QTest::newRow("no messages") << Answers{{"AT+CMGF=0", ERROR_LINE}} << QByteArray() << phone
                                 << Error::Refused
                                 << QStringLiteral("The modem has no short messages: ERROR.");
    QTest::newRow("no service number") << none << QByteArray() << QString() << Error::Refused
                                       << QStringLiteral("There is no service number to write to.");
    QTest::newRow("no number") << none << QByteArray() << QStringLiteral("Operator NUM")
                               << Error::Refused
                               << QStringLiteral("A message to Operator cannot be written.");
}

void TestModemQuery::givesUpOnTheNumber()
{
    QFETCH(Answers, answers);
    QFETCH(QByteArray, answerToText);
    QFETCH(QString, phone);
    Bench bench;
    bench.modem.promptOn = "AT+CMGS";
    bench.modem.answerToText = answerToText;
    bench.answer(answers);
    QVERIFY(bench.open());
    QString number;
    QVERIFY(!bench.driver.requestSelfNumber(true, phone, number));
    QCOMPARE(number, QString());
    QTEST(bench.driver.error(), "kind");
    QTEST(bench.driver.lastError(), "error");
    QVERIFY2(bench.clock.elapsed() < 2000, qPrintable(QString::number(bench.clock.elapsed())));
}

void TestModemQuery::switchesToModemOnly_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<Answers>("answers");
    QTest::addColumn<QList<QByteArray>>("asked");
    QTest::addColumn<QString>("error");
    using Asked = QList<QByteArray>;
    const QString refused = QStringLiteral("The modem cannot be switched to modem only mode%1.");
    const QString done;
    QTest::newRow("Huawei") << QByteArray("huawei") << Answers{{"AT^U2DIAG=0", ok()}}
                            << Asked{"AT^U2DIAG=0"} << done;
    // The list of devices of LTE sticks
    QTest::newRow("newer Huawei")
        << QByteArray("huawei")
        << Answers{{"AT^SETPORT=?",
                       ok("^SETPORT:3: 3G DIAG\r\n^SETPORT:10: 4G MODEM\r\n^SETPORT:12: 4G PCUI\r\n"
                          "^SETPORT:13: 4G DIAG\r\n^SETPORT:16: NCM\r\n^SETPORT:A1: CDROM\r\n"
                          "^SETPORT:A2: SD")},
               {"AT^SETPORT=\"FF;10,12\"", ok()}}
        << Asked{"AT^U2DIAG=0", "AT^SETPORT=?", "AT^SETPORT=\"FF;10,12\""} << done;
    QTest::newRow("newer Huawei without a modem")
        << QByteArray("huawei") << Answers{{"AT^SETPORT=?", ok("^SETPORT:16: NCM")}}
        << Asked{"AT^U2DIAG=0", "AT^SETPORT=?"} << refused.arg(QStringLiteral(": ERROR"));
    QTest::newRow("ZTE") << QByteArray(
        "ZTE") << Answers{{"AT+ZCDRUN=8", ok("Close autorun state result(0:FAIL 1:SUCCESS):1")}}
                         << Asked{"AT+ZCDRUN=8"} << done;
    QTest::newRow("ZTE that fails")
        << QByteArray("ZTE")
        << Answers{{"AT+ZCDRUN=8", ok("Close autorun state result(0:FAIL 1:SUCCESS):0")}}
        << Asked{"AT+ZCDRUN=8"} << refused.arg(QString());
    for (const char *maker :
        {"SIMCOM_Ltd", "Quectel", "Telit", "Sierra Wireless", "u-blox", "Cinterion", "Somebody"})
        QTest::newRow(maker) << QByteArray(maker) << Answers() << Asked() << refused.arg(QString());
}

void TestModemQuery::switchesToModemOnly()
{
    QFETCH(QByteArray, maker);
    QFETCH(Answers, answers);
    QFETCH(QString, error);
    Bench bench;
    bench.modem.answers["AT+CGMI"] = ok(maker);
    bench.modem.answers["AT+CGMM"] = ok("M1");
    bench.answer(answers);
    QVERIFY(bench.open());
    QCOMPARE(bench.driver.toModemOnly(), error.isEmpty());
    QTEST(bench.asked(), "asked");
    QCOMPARE(bench.driver.lastError(), error);
    QCOMPARE(bench.driver.error(), error.isEmpty() ? Error::None : Error::Refused);
}

// Whatever a modem says, every call ends, and the line is in step again behind it.
void TestModemQuery::survivesNoise()
{
    std::mt19937 random(1);
    const QList<QByteArray> words{"+CREG: 2,", "+COPS: ", "+CUSD: 0,\"", "+CMGL: 1,1,,", "+CMT: ,9",
        "+CSQ: ", "+CPMS: ", "\"", ",", "\r\n", "0004", "FFFFFFFF", "99999999999", "\xff", "> ",
        "+CME ERROR: ", "+CRSM: 144,0,"};
    Bench bench;
    std::atomic<bool> isNoisy{false};
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (!isNoisy)
            return;
        QByteArray noise;
        for (unsigned count = random() % 12; count > 0; --count)
            noise += words.at(static_cast<int>(random() % unsigned(words.size())));
        bench.modem.answers[command] = ok(noise);
    };
    QVERIFY(bench.open());
    isNoisy = true;
    for (int round = 0; round < 50; ++round) {
        int number = 0;
        QString text;
        QMap<QString, QVariant> info;
        QList<AtModem::SSms> list;
        bench.driver.getMnc(number, number);
        bench.driver.getGsmCells(text, text);
        bench.driver.getInfo(info);
        bench.driver.getSignalLevel(number);
        bench.driver.takeMessages(list);
        bench.driver.toModemOnly();
        QVERIFY(bench.driver.isOpen());
    }
    bench.driver.close();
}

QTEST_GUILESS_MAIN(TestModemQuery)

#include "tst_modemquery.moc"
