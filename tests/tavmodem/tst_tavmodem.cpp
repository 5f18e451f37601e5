#include "scriptedmodem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <utility>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/types.h>
#include <unistd.h>

/** The program as a shell runs it, in a terminal whose modems and locks are its own. */
class TestTavmodem : public QObject
{
    Q_OBJECT

private slots:
    void answersInJson_data();
    void answersInJson();
    void answersInText_data();
    void answersInText();
    void listsModems();
    void listsOnePort();
    void choosesTheOnlyModem();
    void leavesMessagesUnlessTold();
    void timesHaveTheirOffset_data();
    void timesHaveTheirOffset();
    void tellsAnAmountOnlyWhereThereIsOne();
    void takesTheNumberFromTheOperator();
    void sendsModemOnly();
    void isWrongUse_data();
    void isWrongUse();
    void hasNoPort_data();
    void hasNoPort();
    void saysWhoHoldsThePort_data();
    void saysWhoHoldsThePort();
    void losesTheModem_data();
    void losesTheModem();
    void getsNoAnswer_data();
    void getsNoAnswer();
    void isRefused_data();
    void isRefused();
    void endsCleanlyWhenTold_data();
    void endsCleanlyWhenTold();
    void endsASearchWhenTold();
    void goesOnWhenTheSignalIsIgnored_data();
    void goesOnWhenTheSignalIsIgnored();
    void doesNotSteerTheTerminal();
    void saysWhenItCannotWrite();
    void keepsMessagesThatItCannotWrite_data();
    void keepsMessagesThatItCannotWrite();
    void showsTheTalkWhenAsked();
    void tellsOfItself();
    void isDocumentedWhole();
    void isCompleted_data();
    void isCompleted();
};

namespace {

constexpr int kLongest = 60000; // ms
const QString PROGRAM = QStringLiteral(TAVMODEM);
const QString HUAWEI = QStringLiteral("ttyUSB0"); // of the terminal
const QString SIMCOM = QStringLiteral("ttyUSB3");

struct Ended
{
    int status = -1;
    QByteArray out;
    QByteArray error;
};

bool finish(QProcess &process, Ended &ended)
{
    if (!process.waitForFinished(kLongest) || process.exitStatus() != QProcess::NormalExit)
        return false;
    ended = {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
    return true;
}

// In a locale that knows no other letters than ASCII: what comes out is UTF-8 all the same.
void prepare(QProcess &process, const QStringList &arguments)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    process.setProcessEnvironment(environment);
    process.setProgram(PROGRAM);
    process.setArguments(arguments);
}

Ended run(const QStringList &arguments)
{
    QProcess process;
    prepare(process, arguments);
    process.start();
    Ended ended;
    finish(process, ended);
    return ended;
}

Ended runOn(const QString &port, const QStringList &arguments)
{
    return run(QStringList({QStringLiteral("--port"), port}) + arguments);
}

using Preparation = std::function<void()>;

// A function runs in the child before the program does.
class PreparedProcess : public QProcess
{
public:
    explicit PreparedProcess(Preparation preparation)
        : m_preparation(std::move(preparation))
    {
    }

protected:
    void setupChildProcess() override { m_preparation(); }

private:
    const Preparation m_preparation;
};

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '));
}

// An error is one line that names the program, and nothing else comes out.
bool isOneLine(const Ended &ended)
{
    return ended.out.isEmpty() && ended.error.startsWith("tavmodem: ")
        && ended.error.count('\n') == 1 && ended.error.endsWith(".\n");
}

// What a modem of the tests says in every command of the program.
class FullModem : public ScriptedModem
{
public:
    FullModem()
    {
        const QMap<QByteArray, QByteArray> more{
            {"AT+COPS=3,2", ok()},
            {"AT+COPS=3,0", ok()},
            {"AT+COPS?", ok("+COPS: 0,2,\"25001\"")},
            {"AT+CREG=2", ok()},
            {"AT+CREG?", ok("+CREG: 2,1,\"1A2B\",\"00C3F4D5\"")},
            {"AT+CGMR", ok("11.126")},
            {"AT+CGSN", ok("353142031234567")},
            {"AT+CIMI", ok("250011234567890")},
            {"AT^ICCID?", ok("^ICCID: 98101230000000000121")},
            {"AT+CNUM", ok("+CNUM: ,\"79161234567\",145")},
            {"AT+CSCS=\"GSM\"", ok()},
            {"AT+CUSD=1,\"AA180C3602\",15",
                ok() + "\r\n+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",15\r\n"},
            {"AT+CSQ", ok("+CSQ: 21,99")},
            {"AT+CMGF=0", ok()},
            {"AT+CPMS?", ok("+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20")},
            {"AT+CMGL=4",
                ok("+CMGL: "
                   "3,0,,28\r\n07917283010010F5040BC87238880900F10000993092516195800AE8329BFD"
                   "4697D9EC37")},
            {"AT+CMGD=3", ok()},
            {"AT^SETPORT=?", ok("^SETPORT:10: 4G MODEM\r\n^SETPORT:12: 4G PCUI")},
        };
        for (auto answer = more.cbegin(); answer != more.cend(); ++answer)
            answers.insert(answer.key(), answer.value());
    }
};

QStringList lockFiles()
{
    return QDir(QStringLiteral("/run/lock")).entryList({QStringLiteral("LCK..*")});
}

} // namespace

Q_DECLARE_METATYPE(Preparation)

void TestTavmodem::answersInJson_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const QString &port, const char *command, const char *answer) {
        QTest::newRow(command) << port << words(command) << QByteArray(answer);
    };
    row(HUAWEI, "info",
        R"({"dialect":"Huawei","gsmCells":[{"cid":"A1B2C3","lac":"1F40","technology":"UMTS"}],
            "iccid":"89701010012345678901","imei":"353142033840706","imsi":"250011234567890",
            "manufacturer":"huawei","model":"E173","operator":"MTS RUS","registration":"home",
            "revision":"11.126.29.00.143","simNumber":"+79161234567","technology":"UMTS"})");
    row(HUAWEI, "cells", R"({"mcc":250,"mnc":1,"lac":"1F40","cid":"A1B2C3"})");
    row(HUAWEI, "signal", R"({"dbm":-77})");
    row(HUAWEI, "balance", R"({"answer":"Balance: 150.50 r.","balance":150.5})");
    row(HUAWEI, "number", R"({"number":"+79161234567"})");
    row(HUAWEI, "ussd *105#", R"({"answer":"Выберите:\n1 Баланс\n2 Номер"})");
    row(HUAWEI, "sms",
        R"([{"time":"2026-03-01T12:00:00+03:00","sender":"MTS","text":"Welcome!"},
            {"time":"2026-03-02T08:30:00+03:00","sender":"+79160000001",
             "text":"Баланс пополнен"}])");
    row(SIMCOM, "sms", "[]");
    row(SIMCOM, "balance", R"({"answer":"Try later","balance":null})");
    row(HUAWEI, "list",
        R"([{"name":"E173-ttyUSB0","port":"ttyUSB0","manufacturer":"huawei","model":"E173",
             "imei":"353142033840706"}])");
}

void TestTavmodem::answersInJson()
{
    QFETCH(QString, port);
    QFETCH(QStringList, command);
    QFETCH(QByteArray, answer);
    for (const QString &name : {port, QStringLiteral("/dev/%1").arg(port)}) {
        const Ended ended = runOn(name, QStringList(QStringLiteral("--json")) + command);
        QCOMPARE(ended.error, QByteArray());
        QCOMPARE(ended.status, 0);
        QJsonParseError expectedError;
        QJsonParseError error;
        const QJsonDocument expected = QJsonDocument::fromJson(answer, &expectedError);
        const QJsonDocument got = QJsonDocument::fromJson(ended.out, &error);
        QCOMPARE(expectedError.error, QJsonParseError::NoError);
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(got.toJson(), expected.toJson());
        QCOMPARE(ended.out.count('\n'), 1);
        QVERIFY(ended.out.endsWith('\n'));
    }
    QCOMPARE(lockFiles(), QStringList());
}

void TestTavmodem::answersInText_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("answer");
    const auto row = [](const char *command, const char *answer) {
        QTest::newRow(command) << words(command) << QByteArray(answer);
    };
    row("cells", "MCC  250\nMNC  1\nLAC  1F40\nCID  A1B2C3\n");
    row("signal", "-77 dBm\n");
    row("balance", "Balance: 150.50 r.\nBalance: 150.5\n");
    row("number", "+79161234567\n");
    row("ussd *105#", "Выберите:\n1 Баланс\n2 Номер\n");
    row("sms",
        "2026-03-01T12:00:00+03:00 MTS\n    Welcome!\n"
        "2026-03-02T08:30:00+03:00 +79160000001\n    Баланс пополнен\n");
    row("list",
        "NAME          PORT     MANUFACTURER  MODEL  IMEI\n"
        "E173-ttyUSB0  ttyUSB0  huawei        E173   353142033840706\n");
    row("info",
        "dialect       Huawei\n"
        "gsmCells      cid A1B2C3, lac 1F40, technology UMTS\n"
        "iccid         89701010012345678901\n"
        "imei          353142033840706\n"
        "imsi          250011234567890\n"
        "manufacturer  huawei\n"
        "model         E173\n"
        "operator      MTS RUS\n"
        "registration  home\n"
        "revision      11.126.29.00.143\n"
        "simNumber     +79161234567\n"
        "technology    UMTS\n");
}

void TestTavmodem::answersInText()
{
    QFETCH(QStringList, command);
    const Ended ended = runOn(HUAWEI, command);
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(ended.status, 0);
    QTEST(ended.out, "answer");
}

void TestTavmodem::listsModems()
{
    QElapsedTimer clock;
    clock.start();
    const Ended ended = run(words("--json list"));
    QVERIFY2(clock.elapsed() < 4000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.error, QByteArray());
    QStringList names;
    const auto modems = QJsonDocument::fromJson(ended.out).array();
    for (const QJsonValue &modem : modems)
        names << modem.toObject().value(QStringLiteral("name")).toString();
    QCOMPARE(names,
        QStringList({QStringLiteral("E173-ttyUSB0"), QStringLiteral("SIMCOM_SIM800-ttyUSB3")}));
}

void TestTavmodem::listsOnePort()
{
    FullModem modem;
    modem.start();
    Ended ended = runOn(modem.path(), words("list --json"));
    QCOMPARE(ended.status, 0);
    const auto modems = QJsonDocument::fromJson(ended.out).array();
    QCOMPARE(modems.size(), 1);
    QCOMPARE(modems.first().toObject().value(QStringLiteral("port")).toString(), modem.path());

    ScriptedModem silent;
    silent.silent = true;
    silent.start();
    ended = runOn(silent.path(), words("list"));
    QCOMPARE(ended.status, 4);
    QVERIFY2(isOneLine(ended), ended.error.constData());
    ended = runOn(QStringLiteral("/dev/nothing"), words("--json list"));
    QCOMPARE(ended.status, 3);
    QVERIFY2(isOneLine(ended), ended.error.constData());
}

// The terminal has two; nobody can say which is meant.
void TestTavmodem::choosesTheOnlyModem()
{
    const Ended ended = run(words("signal"));
    QCOMPARE(ended.status, 2);
    QCOMPARE(ended.error,
        QByteArray("tavmodem: There are several modems, on ttyUSB0, ttyUSB3: choose one with "
                   "--port.\n"));
    QCOMPARE(ended.out, QByteArray());

    QProcess held; // the one that is left is the only one
    const QString holder = QStringLiteral("exec 3<>/dev/ttyUSB3; printf '%10d\\n' $$ > "
                                          "/run/lock/LCK..ttyUSB3; echo; exec sleep 60");
    held.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), holder});
    QVERIFY(held.waitForReadyRead(kLongest));
    const Ended only = run(words("signal"));
    held.kill();
    held.waitForFinished(kLongest);
    QFile::remove(QStringLiteral("/run/lock/LCK..ttyUSB3"));
    QCOMPARE(only.error, QByteArray());
    QCOMPARE(only.out, QByteArray("-77 dBm\n"));
}

void TestTavmodem::leavesMessagesUnlessTold()
{
    FullModem modem;
    modem.start();
    const Ended left = runOn(modem.path(), words("--json sms"));
    QCOMPARE(left.status, 0);
    QVERIFY(!modem.commands().contains("AT+CMGD=3"));
    const Ended taken = runOn(modem.path(), words("--json sms --take"));
    QCOMPARE(taken.status, 0);
    QCOMPARE(taken.out, left.out);
    QVERIFY(modem.commands().contains("AT+CMGD=3"));
    QCOMPARE(QJsonDocument::fromJson(taken.out).array().size(), 1);
}

void TestTavmodem::timesHaveTheirOffset_data()
{
    QTest::addColumn<QByteArray>("zone"); // 3GPP TS 23.040 9.2.3.11
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("east") << QByteArray("80") << QByteArray("\"1999-03-29T15:16:59+02:00\"");
    QTest::newRow("west") << QByteArray("0A") << QByteArray("\"1999-03-29T15:16:59-05:00\"");
    QTest::newRow("Greenwich") << QByteArray("00") << QByteArray("\"1999-03-29T15:16:59+00:00\"");
    QTest::newRow("not told") << QByteArray("FF") << QByteArray("null");
}

void TestTavmodem::timesHaveTheirOffset()
{
    QFETCH(QByteArray, zone);
    QFETCH(QByteArray, expected);
    FullModem modem;
    modem.answers["AT+CMGL=4"].replace("99309251619580", "993092516195" + zone);
    modem.start();
    const Ended ended = runOn(modem.path(), words("--json sms"));
    QCOMPARE(ended.status, 0);
    QVERIFY2(ended.out.contains("\"time\":" + expected), ended.out.constData());
}

void TestTavmodem::tellsAnAmountOnlyWhereThereIsOne()
{
    const Ended ended = runOn(SIMCOM, words("balance"));
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(ended.out, QByteArray("Try later\n"));
    QCOMPARE(ended.status, 0);
}

void TestTavmodem::takesTheNumberFromTheOperator()
{
    QFile operators(QStringLiteral("/run/operators.xml"));
    QVERIFY(operators.open(QFile::WriteOnly));
    operators.write(R"(<serviceproviders format="2.0"><country code="ru"><provider><name>MTS</name>
        <gsm><network-id mcc="250" mnc="01"/><msisdn-query><ussd>*100#</ussd></msisdn-query></gsm>
        </provider></country></serviceproviders>)");
    operators.close();
    QFile configuration(QStringLiteral("/run/terminal.conf"));
    QVERIFY(configuration.open(QFile::WriteOnly));
    configuration.write("[modems]\noperators=/run/operators.xml\n");
    configuration.close();

    FullModem modem;
    modem.answers["AT+CNUM"] = ScriptedModem::ok();
    modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ScriptedModem::ok() + "\r\n+CUSD: 0,\"Your number is +79161234567\",15\r\n";
    modem.start();
    QProcess process;
    prepare(process, {QStringLiteral("--port"), modem.path(), QStringLiteral("number")});
    QProcessEnvironment environment = process.processEnvironment();
    environment.insert(QStringLiteral("TAV_TERMINAL_CONF"), configuration.fileName());
    process.setProcessEnvironment(environment);
    process.start();
    Ended ended;
    QVERIFY(finish(process, ended));
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(ended.out, QByteArray("+79161234567\n"));
    QCOMPARE(ended.status, 0);
}

void TestTavmodem::sendsModemOnly()
{
    FullModem modem;
    modem.answers["AT^SETPORT=\"FF;10,12\""] = ScriptedModem::ok();
    modem.start();
    Ended ended = runOn(modem.path(), words("--json modem-only"));
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(ended.out, QByteArray("{\"modemOnly\":true}\n"));
    QCOMPARE(ended.status, 0);
    QVERIFY(modem.commands().contains("AT^SETPORT=\"FF;10,12\""));
    ended = runOn(modem.path(), words("modem-only"));
    QVERIFY(ended.out.startsWith("The modem was switched"));
}

void TestTavmodem::isWrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    const auto row
        = [](const char *name, const QStringList &arguments) { QTest::newRow(name) << arguments; };
    row("nothing", {});
    row("no command", words("--port ttyUSB0"));
    row("unknown command", words("--port ttyUSB0 dance"));
    row("unknown option", words("--loud --port ttyUSB0 signal"));
    row("port without a value", words("signal --port"));
    row("empty port", {QStringLiteral("--port="), QStringLiteral("signal")});
    row("speed without a value", words("signal --baud"));
    row("speed that is none", words("--port ttyUSB0 --baud fast signal"));
    row("speed of nothing", words("--port ttyUSB0 --baud 0 signal"));
    row("negative speed", words("--port ttyUSB0 --baud=-9600 signal"));
    row("USSD without a code", words("--port ttyUSB0 ussd"));
    row("USSD with an empty code",
        {QStringLiteral("--port=ttyUSB0"), QStringLiteral("ussd"), QString()});
    row("USSD with two codes", words("--port ttyUSB0 ussd *100# *101#"));
    row("something behind a command", words("--port ttyUSB0 signal now"));
    row("taking what is not SMS", words("--port ttyUSB0 signal --take"));
    row("line end in a word", {QStringLiteral("dance\nwith me")});
}

void TestTavmodem::isWrongUse()
{
    QFETCH(QStringList, arguments);
    const Ended ended = run(arguments);
    QVERIFY2(isOneLine(ended), ended.error.constData());
    QCOMPARE(ended.status, 2);
}

void TestTavmodem::hasNoPort_data()
{
    QTest::addColumn<QString>("port");
    QTest::newRow("no such name") << QStringLiteral("ttyUSB77");
    QTest::newRow("no such path") << QStringLiteral("/dev/pts/777");
    QTest::newRow("a file") << QStringLiteral("/etc/hostname");
    QTest::newRow("a folder") << QStringLiteral("/dev");
    QTest::newRow("no terminal") << QStringLiteral("/dev/null");
}

void TestTavmodem::hasNoPort()
{
    QFETCH(QString, port);
    for (const char *option : {"signal", "--json sms"}) {
        const Ended ended = runOn(port, words(option));
        QVERIFY2(isOneLine(ended), ended.error.constData());
        QVERIFY2(ended.error.contains(QFile::encodeName(port)), ended.error.constData());
        QCOMPARE(ended.status, 3);
    }
}

void TestTavmodem::saysWhoHoldsThePort_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("lock file") << QStringLiteral(
        "printf '%10d\\n' $$ > /run/lock/LCK..ttyUSB3; echo; exec sleep 60");
    QTest::newRow("opened exclusively") << QStringLiteral(
        "exec python3 -c 'import fcntl, os, termios, time; "
        "fcntl.ioctl(os.open(\"/dev/ttyUSB3\", os.O_RDWR | os.O_NOCTTY), termios.TIOCEXCL); "
        "print(flush=True); time.sleep(60)'");
}

void TestTavmodem::saysWhoHoldsThePort()
{
    QFETCH(QString, how);
    QProcess holder;
    holder.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), how});
    QVERIFY(holder.waitForReadyRead(kLongest));
    const qint64 pid = holder.processId();
    const auto name = [pid] { // of the program that the shell becomes
        QFile file(QStringLiteral("/proc/%1/comm").arg(pid));
        return file.open(QFile::ReadOnly) ? file.readAll().trimmed() : QByteArray();
    };
    QTRY_VERIFY(name() != "sh");
    const QByteArray expected = "The port /dev/ttyUSB3 is in use by " + name() + " (process "
        + QByteArray::number(pid) + ").";
    const Ended ended = runOn(SIMCOM, words("--json signal"));
    const Ended listed = run(words("--json list"));
    holder.kill();
    holder.waitForFinished(kLongest);
    QFile::remove(QStringLiteral("/run/lock/LCK..ttyUSB3"));

    QVERIFY2(isOneLine(ended), ended.error.constData());
    QCOMPARE(ended.status, 3);
    QCOMPARE(ended.error, "tavmodem: " + expected + '\n');
    // A list goes on without it and says so.
    QCOMPARE(listed.status, 0);
    QCOMPARE(QJsonDocument::fromJson(listed.out).array().size(), 1);
    QCOMPARE(listed.error, ended.error);
}

void TestTavmodem::losesTheModem_data()
{
    QTest::addColumn<QStringList>("command");
    for (const char *command : {"info", "cells", "signal", "balance", "number", "ussd *100#",
             "sms --take", "modem-only", "list"})
        QTest::newRow(command) << words(command);
}

// The modem is pulled out at each command that the program sends.
void TestTavmodem::losesTheModem()
{
    QFETCH(QStringList, command);
    QList<QByteArray> sent;
    {
        FullModem modem;
        modem.answers["AT^SETPORT=\"FF;10,12\""] = ScriptedModem::ok();
        modem.start();
        const Ended whole = runOn(modem.path(), command);
        QVERIFY2(whole.status == 0, whole.error.constData());
        sent = modem.commands();
    }
    QVERIFY(sent.size() >= 4);
    for (const QByteArray &at : qAsConst(sent)) {
        FullModem modem;
        modem.hangUpOn = at;
        modem.start();
        const Ended ended = runOn(modem.path(), command);
        // Messages that were read are not kept back because one could not be deleted.
        if (at.startsWith("AT+CMGD")) {
            QCOMPARE(ended.status, 0);
            QVERIFY(ended.error.contains("has gone"));
            QVERIFY(!ended.out.isEmpty());
            continue;
        }
        QVERIFY2(isOneLine(ended), (ended.error + at).constData());
        QVERIFY2(ended.error.contains("has gone"), (ended.error + at).constData());
        QVERIFY2(ended.status == 3, at.constData());
    }
    QCOMPARE(lockFiles(), QStringList());
}

void TestTavmodem::getsNoAnswer_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("unanswered");
    QTest::newRow("nothing at all") << words("signal") << QByteArray();
    QTest::newRow("reset") << words("signal") << QByteArray("ATZ");
    QTest::newRow("signal") << words("signal") << QByteArray("AT+CSQ");
    QTest::newRow("cell") << words("cells") << QByteArray("AT+CREG?");
}

void TestTavmodem::getsNoAnswer()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, unanswered);
    FullModem modem;
    modem.silent = unanswered.isEmpty();
    modem.onCommand = [&](const QByteArray &heard) {
        if (heard == unanswered)
            modem.silent = true;
    };
    modem.answers[unanswered].clear();
    modem.start();
    const Ended ended = runOn(modem.path(), command);
    QVERIFY2(isOneLine(ended), ended.error.constData());
    QCOMPARE(ended.status, 4);
}

void TestTavmodem::isRefused_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("question");
    QTest::addColumn<QByteArray>("answer");
    const QByteArray error = "\r\nERROR\r\n";
    QTest::newRow("every command") << words("signal") << QByteArray() << error;
    QTest::newRow("signal not known")
        << words("signal") << QByteArray("AT+CSQ") << ScriptedModem::ok("+CSQ: 99,99");
    QTest::newRow("no SIM card") << words("balance") << QByteArray("AT+CPIN?")
                                 << QByteArray("\r\n+CME ERROR: 10\r\n");
    QTest::newRow("PIN asked") << words("ussd *100#") << QByteArray("AT+CPIN?")
                               << ScriptedModem::ok("+CPIN: SIM PIN");
    QTest::newRow("no cell") << words("cells") << QByteArray("AT+CREG=2") << error;
    QTest::newRow("USSD refused") << words("ussd *100#")
                                  << QByteArray("AT+CUSD=1,\"AA180C3602\",15")
                                  << QByteArray("\r\n+CME ERROR: 258\r\n");
    QTest::newRow("USSD ended by the network")
        << words("ussd *100#") << QByteArray("AT+CUSD=1,\"AA180C3602\",15")
        << ScriptedModem::ok() + "\r\n+CUSD: 4\r\n";
    QTest::newRow("unknown operator")
        << words("balance") << QByteArray("AT+CIMI") << ScriptedModem::ok("001019999999999");
    QTest::newRow("number that nobody knows")
        << words("number") << QByteArray("AT+CNUM") << ScriptedModem::ok();
    QTest::newRow("messages refused")
        << words("sms") << QByteArray("AT+CMGL=4") << QByteArray("\r\n+CMS ERROR: 310\r\n");
    QTest::newRow("modem that has no such mode")
        << words("modem-only") << QByteArray("AT^SETPORT=?") << error;
    QTest::newRow("code that cannot be sent")
        << QStringList({QStringLiteral("ussd"), QStringLiteral("\u4f60\u597d")}) << QByteArray()
        << QByteArray();
}

void TestTavmodem::isRefused()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, question);
    QFETCH(QByteArray, answer);
    FullModem modem;
    if (question.isEmpty())
        modem.answerToAll = answer;
    else
        modem.answers[question] = answer;
    if (question == "AT+CIMI")
        modem.answers["AT+COPS?"] = ScriptedModem::ok("+COPS: 0,2,\"00101\"");
    modem.start();
    const Ended ended = runOn(modem.path(), command);
    QVERIFY2(isOneLine(ended), ended.error.constData());
    QCOMPARE(ended.status, 1);
}

void TestTavmodem::endsCleanlyWhenTold_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
}

// While the network's answer is awaited, which would take half a minute.
void TestTavmodem::endsCleanlyWhenTold()
{
    QFETCH(int, signal);
    FullModem modem;
    modem.answers["AT+CUSD=1,\"AA180C3602\",15"] = ScriptedModem::ok();
    modem.start();
    PreparedProcess process([signal] { std::signal(signal, SIG_DFL); });
    prepare(process,
        {QStringLiteral("--port"), modem.path(), QStringLiteral("ussd"), QStringLiteral("*100#")});
    process.start();
    QTRY_VERIFY(modem.commands().contains("AT+CUSD=1,\"AA180C3602\",15"));
    QVERIFY(!lockFiles().isEmpty());
    QElapsedTimer clock;
    clock.start();
    ::kill(static_cast<pid_t>(process.processId()), signal);
    Ended ended;
    QVERIFY(finish(process, ended));
    QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
    QCOMPARE(ended.status, 128 + signal);
    QCOMPARE(ended.out, QByteArray());
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(lockFiles(), QStringList());
    const int port = ::open(QFile::encodeName(modem.path()).constData(), O_RDWR | O_NOCTTY);
    int exclusive = 1;
    QVERIFY(port >= 0 && ::ioctl(port, TIOCGEXCL, &exclusive) == 0);
    QCOMPARE(exclusive, 0);
    ::close(port);
}

void TestTavmodem::endsASearchWhenTold()
{
    ScriptedModem modem;
    modem.silent = true;
    modem.start();
    PreparedProcess process([] { std::signal(SIGINT, SIG_DFL); });
    prepare(process, {QStringLiteral("--port"), modem.path(), QStringLiteral("list")});
    process.start();
    QTRY_VERIFY(!lockFiles().isEmpty());
    ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    Ended ended;
    QVERIFY(finish(process, ended));
    QCOMPARE(ended.status, 128 + SIGINT);
    QCOMPARE(ended.error, QByteArray());
    QCOMPARE(lockFiles(), QStringList());
}

void TestTavmodem::goesOnWhenTheSignalIsIgnored_data()
{
    endsCleanlyWhenTold_data();
}

// As nohup has it, and a shell script for what it runs in the background.
void TestTavmodem::goesOnWhenTheSignalIsIgnored()
{
    QFETCH(int, signal);
    ScriptedModem modem;
    modem.silent = true;
    modem.start();
    PreparedProcess process([signal] { std::signal(signal, SIG_IGN); });
    prepare(process, {QStringLiteral("--port"), modem.path(), QStringLiteral("list")});
    process.start();
    QTRY_VERIFY(!lockFiles().isEmpty());
    ::kill(static_cast<pid_t>(process.processId()), signal);
    Ended ended;
    QVERIFY(finish(process, ended));
    QCOMPARE(ended.status, 4);
    QVERIFY2(isOneLine(ended), ended.error.constData());
}

// An operator's text, or who pretends to be one, must not write to the technician's screen.
void TestTavmodem::doesNotSteerTheTerminal()
{
    FullModem modem;
    // "\x1b[2J" and a bell in the packed septets of the answer have no place in GSM 03.38; as UCS2
    // they do.
    modem.answers["AT+CUSD=1,\"AA180C3602\",15"]
        = ScriptedModem::ok() + "\r\n+CUSD: 0,\"001B005B0032004A00070042\",72\r\n";
    modem.start();
    const Ended text = runOn(modem.path(), words("ussd *100#"));
    QCOMPARE(text.status, 0);
    QVERIFY(!text.out.contains('\x1b') && !text.out.contains('\x07'));
    QVERIFY2(text.out.contains("[2J") && text.out.contains("B\n"), text.out.constData());
    const Ended json = runOn(modem.path(), words("--json ussd *100#"));
    QVERIFY(!json.out.contains('\x1b'));
    QCOMPARE(QJsonDocument::fromJson(json.out).object().value(QStringLiteral("answer")).toString(),
        QStringLiteral("\x1b[2J\aB"));
}

void TestTavmodem::saysWhenItCannotWrite()
{
    QProcess process;
    prepare(process, words("--port ttyUSB0 signal"));
    process.setStandardOutputFile(QStringLiteral("/dev/full"));
    process.start();
    Ended ended;
    QVERIFY(finish(process, ended));
    QVERIFY2(isOneLine(ended), ended.error.constData());
    QCOMPARE(ended.status, 1);
}

void TestTavmodem::keepsMessagesThatItCannotWrite_data()
{
    QTest::addColumn<Preparation>("output");
    QTest::newRow("full disk") << Preparation([] { ::dup2(::open("/dev/full", O_WRONLY), 1); });
    QTest::newRow("closed") << Preparation([] { ::close(1); });
    QTest::newRow("nobody reads") << Preparation([] {
        int ends[2];
        if (::pipe(ends) == 0) {
            ::dup2(ends[1], 1);
            ::close(ends[0]);
        }
    });
}

void TestTavmodem::keepsMessagesThatItCannotWrite()
{
    QFETCH(Preparation, output);
    FullModem modem;
    modem.start();
    for (const char *form : {"sms --take", "--json sms --take"}) {
        PreparedProcess process(output);
        prepare(process, QStringList{QStringLiteral("--port"), modem.path()} + words(form));
        process.start();
        Ended ended;
        QVERIFY(finish(process, ended));
        QCOMPARE(ended.status, 1);
        QVERIFY2(isOneLine(ended), ended.error.constData());
        QVERIFY(modem.commands().contains("AT+CMGL=4"));
        QVERIFY(!modem.commands().contains("AT+CMGD=3"));
    }
    QCOMPARE(runOn(modem.path(), words("sms --take")).status, 0);
    QVERIFY(modem.commands().contains("AT+CMGD=3"));
}

void TestTavmodem::showsTheTalkWhenAsked()
{
    QProcess process;
    prepare(process, words("--port ttyUSB0 --json signal"));
    QProcessEnvironment environment = process.processEnvironment();
    environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("atmodem.debug=true"));
    process.setProcessEnvironment(environment);
    process.start();
    Ended ended;
    QVERIFY(finish(process, ended));
    QCOMPARE(ended.status, 0);
    QCOMPARE(ended.out, QByteArray("{\"dbm\":-77}\n"));
    QVERIFY2(ended.error.contains("-> AT+CSQ"), ended.error.constData());
}

void TestTavmodem::tellsOfItself()
{
    for (const char *option : {"--help", "-h"}) {
        const Ended ended = run(words(option));
        QCOMPARE(ended.status, 0);
        QCOMPARE(ended.error, QByteArray());
        QVERIFY(ended.out.contains("modem-only"));
    }
    const Ended version = run(words("--version"));
    QCOMPARE(version.status, 0);
    QVERIFY2(QRegularExpression(QStringLiteral("^tavmodem [0-9]+\\.[0-9]+\\.[0-9]+\n$"))
                 .match(QString::fromUtf8(version.out))
                 .hasMatch(),
        version.out.constData());
}

void TestTavmodem::isDocumentedWhole()
{
    QFile page(QStringLiteral(SOURCES "/tavmodem.1"));
    QVERIFY(page.open(QFile::ReadOnly));
    const QByteArray text = page.readAll().replace("\\-", "-");
    QFile completion(QStringLiteral(SOURCES "/tavmodem.bash"));
    QVERIFY(completion.open(QFile::ReadOnly));
    const QByteArray completed = completion.readAll();
    const QString help = QString::fromUtf8(run(words("--help")).out);
    QStringList names;
    auto found = QRegularExpression(QStringLiteral("--[a-z]+")).globalMatch(help);
    while (found.hasNext())
        names << found.next().captured();
    names << words("list info cells signal balance number ussd sms modem-only");
    QVERIFY(names.size() >= 15);
    for (const QString &name : qAsConst(names)) {
        QVERIFY2(help.contains(name), qPrintable(name));
        QVERIFY2(text.contains(name.toUtf8()), qPrintable(name));
        QVERIFY2(completed.contains(name.toUtf8()), qPrintable(name));
    }
}

void TestTavmodem::isCompleted_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QByteArray>("offered");
    const auto row = [](const char *line, const char *offered) {
        QTest::newRow(line) << QString::fromLatin1(line) << QByteArray(offered);
    };
    row("tavmodem ''", "list info cells signal balance number ussd sms modem-only");
    row("tavmodem s", "signal sms");
    row("tavmodem --port ttyUSB0 mo", "modem-only");
    row("tavmodem --port ttyUSB", "ttyUSB0 ttyUSB1 ttyUSB2 ttyUSB3");
    row("tavmodem --port /dev/ttyUSB3", "/dev/ttyUSB3");
    row("tavmodem --baud 115", "115200");
    row("tavmodem --j", "--json");
    row("tavmodem sms --t", "--take");
    row("tavmodem signal --t", "");
    row("tavmodem signal ''", "");
}

void TestTavmodem::isCompleted()
{
    QFETCH(QString, line);
    const QString script = QStringLiteral(
        ". '" SOURCES "/tavmodem.bash'; COMP_WORDS=(%1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
        "_tavmodem; echo ${COMPREPLY[*]}")
                               .arg(line);
    QProcess bash;
    bash.start(QStringLiteral("bash"), {QStringLiteral("-c"), script});
    Ended ended;
    QVERIFY(finish(bash, ended));
    QCOMPARE(ended.error, QByteArray());
    QTEST(ended.out.trimmed(), "offered");
}

QTEST_GUILESS_MAIN(TestTavmodem)

#include "tst_tavmodem.moc"
