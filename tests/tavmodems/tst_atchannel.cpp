#include "atchannel.h"
#include "atfinalresult.h"
#include "atlines.h"
#include "atunsolicited.h"
#include "scripteddevice.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QTest>

#include <random>

using namespace std::chrono_literals;

namespace {

using Status = AtReply::Status;
using Lines = QList<QByteArray>;

constexpr std::chrono::milliseconds kShort = 50ms;
constexpr std::chrono::milliseconds kLong = 60s;

QStringList *theLog = nullptr;

void keepLog(QtMsgType, const QMessageLogContext &, const QString &text)
{
    *theLog << text;
}

// What the traffic's log says while it lives.
class LogOfTraffic
{
    Q_DISABLE_COPY_MOVE(LogOfTraffic)

public:
    LogOfTraffic()
    {
        theLog = &m_lines;
        QLoggingCategory::setFilterRules(QStringLiteral("atmodem.debug=true"));
        m_before = qInstallMessageHandler(keepLog);
    }
    ~LogOfTraffic() { qInstallMessageHandler(m_before); }
    QString text() const { return m_lines.join(QLatin1Char('\n')); }

private:
    QStringList m_lines;
    QtMessageHandler m_before = nullptr;
};

struct Bench
{
    ScriptedDevice device;
    AtChannel channel{&device, QStringLiteral("test")};

    AtReply ask(const QByteArray &command, const Lines &pieces)
    {
        device.answers[command + '\r'] = pieces;
        return channel.send(command, pieces.isEmpty() ? kShort : kLong);
    }
};

Lines pieces(const QByteArray &bytes, int size)
{
    Lines result;
    for (int at = 0; at < bytes.size(); at += size)
        result << bytes.mid(at, size);
    return result;
}

} // namespace

Q_DECLARE_METATYPE(AtReply::Status)

class TestAtChannel : public QObject
{
    Q_OBJECT

private slots:
    void cutsLines_data();
    void cutsLines();
    void dropsLinesLongerThanAnyAnswer();
    void knowsFinalResults_data();
    void knowsFinalResults();
    void knowsUnsolicitedLines_data();
    void knowsUnsolicitedLines();
    void knowsWhatBelongsToUnsolicitedLines_data();
    void knowsWhatBelongsToUnsolicitedLines();
    void readsAnswers_data();
    void readsAnswers();
    void readsAnswersCutAnywhere();
    void sendsCommandWithCarriageReturn();
    void sendsATextWhenAskedForIt_data();
    void sendsATextWhenAskedForIt();
    void sendsNoTextUnasked_data();
    void sendsNoTextUnasked();
    void leavesATextThatIsNotTaken();
    void sendsNoTextWithControlCharacters();
    void sendsNoControlCharacters_data();
    void sendsNoControlCharacters();
    void leavesOldInputOutOfTheAnswer();
    void leavesATextThatDidNotEndBehind();
    void waitsForQuietAfterALostAnswer();
    void endsAtTheLimit_data();
    void endsAtTheLimit();
    void endsWhenTheAnswerIsEndless_data();
    void endsWhenTheAnswerIsEndless();
    void endsAtOnceWhenTheDeviceGoes_data();
    void endsAtOnceWhenTheDeviceGoes();
    void endsWhenTheDeviceTakesNothing();
    void takesTheAnswerThatCameBeforeTheDeviceWent();
    void escapesWithPlusSignsAlone();
    void waitsForUnsolicitedLines();
    void keepsSecretsOutOfTheLog_data();
    void keepsSecretsOutOfTheLog();
    void showsTrafficInTheLog();
    void saysInTheLogWhyAnAnswerHasNoEnd();
    void doesNotFillTheLog();
    void survivesNoise();
};

void TestAtChannel::cutsLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Lines>("expected");
    QTest::newRow("verbose framing") << QByteArray("\r\nOK\r\n") << Lines{"OK"};
    QTest::newRow("CR alone") << QByteArray("\rOK\r") << Lines{"OK"};
    QTest::newRow("LF alone") << QByteArray("\nOK\n") << Lines{"OK"};
    QTest::newRow("CR doubled by a terminal") << QByteArray("\r\r\nOK\r\r\n") << Lines{"OK"};
    QTest::newRow("LF before CR") << QByteArray("\n\rOK\n\r") << Lines{"OK"};
    QTest::newRow("blanks around") << QByteArray("\r\n OK \t\r\n") << Lines{"OK"};
    QTest::newRow("NUL bytes") << QByteArray("\0\0\r\nO\0K\r\n", 9) << Lines{"OK"};
    QTest::newRow("two lines") << QByteArray("a\r\nb\r\n") << Lines{"a", "b"};
    QTest::newRow("text of the network, its lines as they are")
        << QByteArray("\r\n+CUSD: 0,\"a\r\n\r\n b \r\n\",15\r\n\r\nOK\r\n")
        << Lines{"+CUSD: 0,\"a", "", " b ", "\",15", "OK"};
    QTest::newRow("text in one line")
        << QByteArray("+CUSD: 0,\"a\",15\r\n\r\nOK\r\n") << Lines{"+CUSD: 0,\"a\",15", "OK"};
    QTest::newRow("unfinished") << QByteArray("\r\nOK") << Lines();
    QTest::newRow("nothing") << QByteArray() << Lines();
}

void TestAtChannel::cutsLines()
{
    QFETCH(QByteArray, bytes);
    AtLines whole;
    QTEST(whole.feed(bytes), "expected");

    AtLines single;
    Lines lines;
    for (const char c : bytes)
        lines += single.feed(QByteArray(1, c));
    QTEST(lines, "expected");
}

void TestAtChannel::dropsLinesLongerThanAnyAnswer()
{
    AtLines lines;
    for (int i = 0; i < 1000; ++i)
        QCOMPARE(lines.feed(QByteArray(1024, 'x')), Lines());
    QCOMPARE(lines.feed("end\r\nOK\r\n"), Lines{"OK"});
    const QByteArray longest(AtLines::kMaxLine, 'y');
    QCOMPARE(lines.feed(longest + '\r'), Lines{longest});
    QCOMPARE(lines.feed(longest + "y\r"), Lines());
}

void TestAtChannel::knowsFinalResults_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("isFinal");
    QTest::addColumn<Status>("status");
    QTest::addColumn<int>("code");
    const auto final = [](const char *line, const char *command, Status status, int code = -1) {
        QTest::addRow("%s to %s", line, command)
            << QByteArray(line) << QByteArray(command) << true << status << code;
    };
    const auto other = [](const char *line, const char *command) {
        QTest::addRow("%s to %s is none", line, command)
            << QByteArray(line) << QByteArray(command) << false << Status::Ok << -1;
    };
    final("OK", "AT", Status::Ok);
    final("ERROR", "AT", Status::Error);
    final("+CME ERROR: 10", "AT+CPIN?", Status::Error, 10);
    final("+CME ERROR:10", "AT+CPIN?", Status::Error, 10);
    final("+CME ERROR: SIM not inserted", "AT+CPIN?", Status::Error, 10);
    final("+CME ERROR: SIM PIN required", "AT+CPIN?", Status::Error, 11);
    final("+CME ERROR: sim busy", "AT+CPIN?", Status::Error, 14);
    final("+CME ERROR: something else", "AT", Status::Error);
    final("+CME ERROR: -5", "AT", Status::Error);
    final("+CME ERROR:", "AT", Status::Error);
    final("+CMS ERROR: 310", "AT+CMGL=4", Status::Error, 310);
    final("COMMAND NOT SUPPORT", "AT^CURC=0", Status::Error);
    final("TOO MANY PARAMETERS", "AT^CURC=0,1", Status::Error);
    final("CONNECT", "ATDT*99#", Status::Connect);
    final("CONNECT 115200", "ATD*99#", Status::Connect);
    final("NO CARRIER", "ATD*99#", Status::NoCarrier);
    final("NO CARRIER", "atd*99#", Status::NoCarrier);
    final("NO CARRIER", "+++", Status::NoCarrier);
    final("BUSY", "ATD1", Status::Busy);
    final("NO ANSWER", "ATD1", Status::NoAnswer);
    final("NO DIALTONE", "ATD1", Status::NoDialtone);
    final("NO DIAL TONE", "ATD1", Status::NoDialtone);
    final("NO CARRIER", "ATA", Status::NoCarrier);
    final("CONNECT", "ATO", Status::Connect);
    other("NO CARRIER", "AT+CSQ");
    other("BUSY", "ATI");
    other("CONNECT", "AT");
    other("CONNECTED", "ATD1");
    other("OK then", "AT");
    other("ok", "AT");
    other("ERRORS", "AT");
    other("+CSQ: 17,99", "AT+CSQ");
    other("RING", "AT");
}

void TestAtChannel::knowsFinalResults()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, command);
    QFETCH(bool, isFinal);
    const auto result = parseFinalResult(line, command);
    QCOMPARE(result.has_value(), isFinal);
    if (!isFinal)
        return;
    QTEST(result->status, "status");
    QTEST(result->errorCode, "code");
    const bool isFailure = result->status != Status::Ok && result->status != Status::Connect;
    QCOMPARE(result->errorText, isFailure ? line : QByteArray());
}

void TestAtChannel::knowsUnsolicitedLines_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *line, const char *command, bool expected) {
        QTest::addRow("%s in %s", line, command)
            << QByteArray(line) << QByteArray(command) << expected;
    };
    row("RING", "AT+CSQ", true);
    row("^RSSI: 17", "AT+CSQ", true);
    row("^RSSI:17", "AT+CSQ", true);
    row("^BOOT:10449242,0,0,0,75", "AT", true);
    row("+CREG: 1", "AT+CSQ", true);
    row("+CREG: 2,1", "AT+CREG?", false);
    row("+creg: 2,1", "AT+CREG?", false);
    row("+CREG: 2,1", "at+creg?", false);
    row("+CMTI: \"SM\",3", "AT+CREG?", true);
    row("Call Ready", "AT+CGMM", true);
    row("NO CARRIER", "AT+CGMM", true);
    row("+CPIN: READY", "AT+CPIN?", false);
    row("+CPIN: READY", "AT+CGMI", true);
    row("+CSQ: 17,99", "AT+CSQ", false);
    row("huawei", "AT+CGMI", false);
    row("Manufacturer: huawei", "ATI", false);
    row("+GCAP: +CGSM,+DS,+ES", "ATI", false);
    row(":", "AT", false);
    row("", "AT", false);
    row("^RSSI: 17", "", true);
}

void TestAtChannel::knowsUnsolicitedLines()
{
    QFETCH(QByteArray, line);
    QFETCH(QByteArray, command);
    QTEST(isUnsolicited(line, command), "expected");
}

void TestAtChannel::knowsWhatBelongsToUnsolicitedLines_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<Lines>("answer");
    const QByteArray imsi = "250011234567890";
    // 27.005 3.4.1: <length> counts the octets behind the service centre's address
    QTest::newRow("message handed on")
        << QByteArray("AT+CIMI") << Lines{"+CMT: ,4", "0004AABBCC", imsi} << Lines{imsi};
    QTest::newRow("message with a name")
        << QByteArray("AT+CIMI") << Lines{"+CMT: \"Me\",4", "0004aabbcc", imsi} << Lines{imsi};
    QTest::newRow("status report, broadcast")
        << QByteArray("AT+CIMI") << Lines{"+CDS: 4", "0004AABBCC", "+CBM: 4", "0004AABBCC", imsi}
        << Lines{imsi};
    QTest::newRow("without its PDU")
        << QByteArray("AT+CIMI") << Lines{"+CMT: ,24", imsi} << Lines{imsi};
    QTest::newRow("an announced message longer than numbers go")
        << QByteArray("AT+CIMI") << Lines{"+CMT: ,1234567890", imsi} << Lines{imsi};
    QTest::newRow("report between heading and PDU of a list")
        << QByteArray("AT+CMGL=4") << Lines{"+CMGL: 1,1,,4", "+CMT: ,4", "0004AABBCC", "0004112233"}
        << Lines{"+CMGL: 1,1,,4", "0004112233"};
    QTest::newRow("report in text mode")
        << QByteArray("AT+CIMI") << Lines{"+CDS: 6,123,\"+7916\",145", imsi} << Lines{imsi};
    // 27.007 7.15, the text as it came over the network
    QTest::newRow("text over several lines")
        << QByteArray("AT+CIMI") << Lines{"+CUSD: 0,\"Balans", "5 rub", "Bye\",15", imsi}
        << Lines{imsi};
    QTest::newRow("text in one line")
        << QByteArray("AT+CIMI") << Lines{"+CUSD: 0,\"Balans\",15", imsi} << Lines{imsi};
    QTest::newRow("text that does not end")
        << QByteArray("AT+CSQ") << Lines{"+CUSD: 0,\"Balans", "5 rub", "+CSQ: 17,99", "more"}
        << Lines{"+CSQ: 17,99", "more"};
    QTest::newRow("a text that was asked for")
        << QByteArray("AT+CUSD=1,\"*100#\",15") << Lines{"+CUSD: 0,\"Balans", "5 rub\",15"}
        << Lines{"+CUSD: 0,\"Balans", "5 rub\",15"};
}

void TestAtChannel::knowsWhatBelongsToUnsolicitedLines()
{
    QFETCH(QByteArray, command);
    QFETCH(Lines, lines);
    AtUnsolicited unsolicited(command);
    Lines answer;
    for (const QByteArray &line : qAsConst(lines)) {
        if (!unsolicited.takes(line))
            answer << line;
    }
    QTEST(answer, "answer");
}

void TestAtChannel::readsAnswers_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Status>("status");
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<Lines>("unsolicited");
    const Lines none;
    QTest::newRow("echo off") << QByteArray("AT") << QByteArray("\r\nOK\r\n") << Status::Ok << none
                              << none;
    QTest::newRow("echo on") << QByteArray("AT") << QByteArray("AT\r\r\nOK\r\n") << Status::Ok
                             << none << none;
    QTest::newRow("echo after what the modem had before")
        << QByteArray("AT") << QByteArray("+++AT\r\r\nOK\r\n") << Status::Ok << none << none;
    QTest::newRow("one line") << QByteArray("AT+CSQ")
                              << QByteArray("AT+CSQ\r\r\n+CSQ: 17,99\r\n\r\nOK\r\n") << Status::Ok
                              << Lines{"+CSQ: 17,99"} << none;
    QTest::newRow("line that looks like the echo of a listed command")
        << QByteArray("AT+CLAC") << QByteArray("AT+CLAC\r\r\nAT\r\nAT+CLAC\r\n\r\nOK\r\n")
        << Status::Ok << Lines{"AT", "AT+CLAC"} << none;
    QTest::newRow("unsolicited line before the answer")
        << QByteArray("AT+CSQ") << QByteArray("\r\n^RSSI:17\r\n\r\n+CSQ: 17,99\r\n\r\nOK\r\n")
        << Status::Ok << Lines{"+CSQ: 17,99"} << Lines{"^RSSI:17"};
    QTest::newRow("unsolicited line before the echo")
        << QByteArray("AT+CSQ") << QByteArray("\r\nRING\r\nAT+CSQ\r\r\n+CSQ: 17,99\r\n\r\nOK\r\n")
        << Status::Ok << Lines{"+CSQ: 17,99"} << Lines{"RING"};
    QTest::newRow("unsolicited line inside the answer")
        << QByteArray("AT+CSQ")
        << QByteArray("\r\n+CSQ: 17,99\r\n\r\n+CMTI: \"SM\",1\r\n\r\nOK\r\n") << Status::Ok
        << Lines{"+CSQ: 17,99"} << Lines{"+CMTI: \"SM\",1"};
    QTest::newRow("end of another call inside the answer")
        << QByteArray("AT+CSQ") << QByteArray("\r\nNO CARRIER\r\n\r\n+CSQ: 17,99\r\n\r\nOK\r\n")
        << Status::Ok << Lines{"+CSQ: 17,99"} << Lines{"NO CARRIER"};
    QTest::newRow("error") << QByteArray("AT+X") << QByteArray("\r\nERROR\r\n") << Status::Error
                           << none << none;
    QTest::newRow("numbered error")
        << QByteArray("AT+CPIN?") << QByteArray("\r\n+CME ERROR: 10\r\n") << Status::Error << none
        << none;
    QTest::newRow("call that fails") << QByteArray("ATD*99#") << QByteArray("\r\nNO CARRIER\r\n")
                                     << Status::NoCarrier << none << none;
    QTest::newRow("call that is up")
        << QByteArray("ATD*99#") << QByteArray("\r\nCONNECT 7200000\r\n") << Status::Connect << none
        << none;
    QTest::newRow("bytes that are no text")
        << QByteArray("AT") << QByteArray("\xff\xfe\r\n\x80\r\nOK\r\n") << Status::Ok
        << Lines{"\xff\xfe", "\x80"} << none;
}

void TestAtChannel::readsAnswers()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, bytes);
    Bench bench;
    const AtReply reply = bench.ask(command, {bytes});
    QTEST(reply.status, "status");
    QTEST(reply.lines, "lines");
    QTEST(reply.unsolicited, "unsolicited");
    QVERIFY(reply.heard);
}

void TestAtChannel::readsAnswersCutAnywhere()
{
    const QByteArray bytes
        = "AT+CSQ\r\r\n^RSSI:17\r\n\r\n+CSQ: 17,99\r\n\r\n+CREG: 1\r\n\r\n+CME ERROR: 14\r\n";
    for (int cut = 1; cut < bytes.size(); ++cut) {
        Bench bench;
        const AtReply reply = bench.ask("AT+CSQ", {bytes.left(cut), bytes.mid(cut)});
        QCOMPARE(reply.status, Status::Error);
        QCOMPARE(reply.errorCode, 14);
        QCOMPARE(reply.lines, Lines{"+CSQ: 17,99"});
        QCOMPARE(reply.unsolicited, Lines({"^RSSI:17", "+CREG: 1"}));
    }
    Bench bench;
    QCOMPARE(bench.ask("AT+CSQ", pieces(bytes, 1)).lines, Lines{"+CSQ: 17,99"});
}

void TestAtChannel::sendsCommandWithCarriageReturn()
{
    Bench bench;
    QVERIFY(bench.ask("AT+CSQ", {"\r\nOK\r\n"}).isOk());
    QCOMPARE(bench.device.written, Lines{"AT+CSQ\r"});
}

void TestAtChannel::sendsATextWhenAskedForIt_data()
{
    QTest::addColumn<Lines>("prompt");
    QTest::addColumn<Lines>("answer");
    const QByteArray done = "\r\n+CMGS: 5\r\n\r\nOK\r\n";
    // 27.005 4.3
    QTest::newRow("as the standard has it") << Lines{"\r\n> "} << Lines{done};
    QTest::newRow("byte by byte") << Lines{"\r", "\n", ">", " "} << pieces(done, 1);
    QTest::newRow("with echo") << Lines{"AT+CMGS=2\r\r\n> "} << Lines{"0011\x1a" + done};
    QTest::newRow("with echo in pieces")
        << Lines{"AT+CM", "GS=2\r\r\n> "} << Lines{"00", "11\x1a", done};
    QTest::newRow("without a blank") << Lines{"\r\n>"} << Lines{" ", done};
    QTest::newRow("in a line of its own") << Lines{"\r\n>\r\n"} << Lines{done};
    QTest::newRow("unsolicited lines around")
        << Lines{"\r\n^RSSI:17\r\n", "\r\n> "} << Lines{"\r\nRING\r\n", done};
}

void TestAtChannel::sendsATextWhenAskedForIt()
{
    QFETCH(Lines, prompt);
    QFETCH(Lines, answer);
    Bench bench;
    bench.device.answers["AT+CMGS=2\r"] = prompt;
    bench.device.answers["0011\x1a"] = answer;
    const AtReply reply = bench.channel.sendText("AT+CMGS=2", "0011", kLong);
    QCOMPARE(reply.status, Status::Ok);
    QCOMPARE(reply.lines, Lines{"+CMGS: 5"});
    QCOMPARE(bench.device.written, Lines({"AT+CMGS=2\r", "0011\x1a"}));
}

void TestAtChannel::sendsNoTextUnasked_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<Status>("status");
    QTest::addColumn<Lines>("behind");
    QTest::newRow("refused") << QByteArray("\r\n+CMS ERROR: 330\r\n") << Status::Error << Lines();
    QTest::newRow("done at once") << QByteArray("\r\nOK\r\n") << Status::Ok << Lines();
    QTest::newRow("silence, called back") << QByteArray() << Status::Timeout << Lines{"\x1b"};
    QTest::newRow("another line") << QByteArray("\r\n> no\r\n") << Status::Timeout << Lines{"\x1b"};
}

void TestAtChannel::sendsNoTextUnasked()
{
    QFETCH(QByteArray, answer);
    QFETCH(Lines, behind);
    Bench bench;
    bench.device.answers["AT+CMGS=2\r"] = {answer};
    const AtReply reply = bench.channel.sendText("AT+CMGS=2", "0011", kShort);
    QTEST(reply.status, "status");
    QCOMPARE(bench.device.written, Lines{"AT+CMGS=2\r"} + behind);
}

void TestAtChannel::leavesATextThatIsNotTaken()
{
    Bench bench;
    bench.device.answers["AT+CMGS=2\r"] = {"\r\n> "};
    QCOMPARE(bench.channel.sendText("AT+CMGS=2", "0011", kShort).status, Status::Timeout);
    QCOMPARE(bench.device.written, Lines({"AT+CMGS=2\r", "0011\x1a", "\x1b"}));
}

void TestAtChannel::sendsNoTextWithControlCharacters()
{
    Bench bench;
    QTest::ignoreMessage(QtWarningMsg, "test a command with control characters is not sent");
    QCOMPARE(bench.channel.sendText("AT+CMGS=2", "00\x1a", kLong).status, Status::Refused);
    QVERIFY(bench.device.written.isEmpty());
}

void TestAtChannel::sendsNoControlCharacters_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::newRow("line end") << QByteArray("AT+CSQ\nAT+CFUN=0");
    QTest::newRow("carriage return") << QByteArray("AT+CSQ\rAT+CFUN=0");
    QTest::newRow("Ctrl-Z") << QByteArray("text\x1a");
    QTest::newRow("Escape") << QByteArray("\x1b"
                                          "AT");
    QTest::newRow("NUL") << QByteArray("AT\0+CSQ", 7);
    QTest::newRow("Delete") << QByteArray("AT\x7f");
    QTest::newRow("nothing") << QByteArray();
}

void TestAtChannel::sendsNoControlCharacters()
{
    QFETCH(QByteArray, command);
    Bench bench;
    QTest::ignoreMessage(QtWarningMsg, "test a command with control characters is not sent");
    QCOMPARE(bench.channel.send(command, kLong).status, Status::Refused);
    QVERIFY(bench.device.written.isEmpty());
}

void TestAtChannel::leavesOldInputOutOfTheAnswer()
{
    Bench bench;
    bench.device.pending = {"\r\n+CSQ: 1,99\r\n\r\nOK\r\n", "\r\nERROR\r\n"};
    const AtReply reply = bench.ask("AT+CSQ", {"\r\n+CSQ: 17,99\r\n\r\nOK\r\n"});
    QVERIFY(reply.isOk());
    QCOMPARE(reply.lines, Lines{"+CSQ: 17,99"});
}

void TestAtChannel::leavesATextThatDidNotEndBehind()
{
    Bench bench;
    QVERIFY(bench.ask("AT", {"\r\nOK\r\n\r\n+CUSD: 0,\"half\r\n"}).isOk());
    const AtReply reply = bench.ask("AT+CSQ", {"\r\n+CSQ: 17,99\r\n\r\nOK\r\n"});
    QCOMPARE(reply.lines, Lines{"+CSQ: 17,99"}); // without the empty lines
}

void TestAtChannel::waitsForQuietAfterALostAnswer()
{
    Bench bench;
    QCOMPARE(bench.ask("AT+COPS=?", {}).status, Status::Timeout);
    bench.device.pending = {"\r\n+COPS: (1,\"a\")", "\r\n\r\n", "OK\r\n"};
    const AtReply reply = bench.ask("AT+CSQ", {"\r\n+CSQ: 17,99\r\n\r\nOK\r\n"});
    QVERIFY(reply.isOk());
    QCOMPARE(reply.lines, Lines{"+CSQ: 17,99"});
}

void TestAtChannel::endsAtTheLimit_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("heard");
    QTest::newRow("silence") << QByteArray() << false;
    QTest::newRow("echo alone") << QByteArray("AT\r") << true;
    QTest::newRow("result without its line end") << QByteArray("\r\nOK") << true;
    QTest::newRow("garbage") << QByteArray("\x80\x12\xff~}#!\r\n") << true;
}

void TestAtChannel::endsAtTheLimit()
{
    QFETCH(QByteArray, bytes);
    Bench bench;
    bench.device.answers["AT\r"] = {bytes};
    QElapsedTimer clock;
    clock.start();
    const AtReply reply = bench.channel.send("AT", kShort);
    QVERIFY(clock.elapsed() >= kShort.count());
    QCOMPARE(reply.status, Status::Timeout);
    QTEST(reply.heard, "heard");
}

void TestAtChannel::endsWhenTheAnswerIsEndless_data()
{
    QTest::addColumn<QByteArray>("piece");
    QTest::newRow("lines") << QByteArray("\r\n+CSQ: 17,99\r\n");
    QTest::newRow("unsolicited lines") << QByteArray("\r\n^RSSI:17\r\n");
    QTest::newRow("no line end") << QByteArray(4096, 'x');
    QTest::newRow("line ends alone") << QByteArray(4096, '\n');
    QTest::newRow("NUL bytes") << QByteArray(4096, '\0');
}

void TestAtChannel::endsWhenTheAnswerIsEndless()
{
    QFETCH(QByteArray, piece);
    Bench bench;
    Lines input;
    for (int size = 0; size <= 4 * AtChannel::kMaxAnswer; size += piece.size())
        input << piece;
    const AtReply reply = bench.ask("AT+CSQ", input);
    QCOMPARE(reply.status, Status::Flood);
    qint64 kept = 0;
    for (const QByteArray &line : reply.lines + reply.unsolicited)
        kept += line.size();
    QVERIFY(kept <= 2LL * AtChannel::kMaxAnswer);
    QVERIFY(!bench.device.pending.isEmpty());
}

void TestAtChannel::endsAtOnceWhenTheDeviceGoes_data()
{
    QTest::addColumn<Lines>("input");
    QTest::newRow("before any answer") << Lines();
    QTest::newRow("inside the answer") << Lines{"AT+CSQ\r", "\r\n+CSQ"};
    QTest::newRow("between line and result") << Lines{"\r\n+CSQ: 17,99\r\n"};
}

void TestAtChannel::endsAtOnceWhenTheDeviceGoes()
{
    QFETCH(Lines, input);
    Bench bench;
    bench.device.answers["AT+CSQ\r"] = input;
    bench.device.pending = {"\r\n"}; // something old, so that the skipping does not end it
    AtReply reply;
    QElapsedTimer clock;
    clock.start();
    {
        // Gone once the script is through.
        AtChannel channel(&bench.device, QStringLiteral("test"),
            [&] { return bench.device.pending.isEmpty() && !bench.device.written.isEmpty(); });
        reply = channel.send("AT+CSQ", kLong);
    }
    QCOMPARE(reply.status, Status::PortGone);
    QVERIFY(clock.elapsed() < 1000);
}

void TestAtChannel::endsWhenTheDeviceTakesNothing()
{
    Bench bench;
    bench.device.takesNothing = true;
    QCOMPARE(bench.channel.send("AT", kShort).status, Status::Timeout);
    bench.device.close();
    QCOMPARE(bench.channel.send("AT", kLong).status, Status::PortGone);
    QCOMPARE(bench.channel.waitUnsolicited(kLong).status, Status::PortGone);
}

void TestAtChannel::takesTheAnswerThatCameBeforeTheDeviceWent()
{
    Bench bench;
    bench.device.answers["AT\r"] = {"\r\nOK\r\n"};
    const AtReply reply = bench.channel.send("AT", kLong);
    bench.device.goesAway = true;
    QVERIFY(reply.isOk());
    QCOMPARE(bench.channel.send("AT+CSQ", kLong).status, Status::PortGone);
}

void TestAtChannel::escapesWithPlusSignsAlone()
{
    Bench bench;
    bench.device.answers["+++"] = {"\r\nOK\r\n"};
    QVERIFY(bench.channel.sendEscape(kLong).isOk());
    QCOMPARE(bench.device.written, Lines{"+++"});
}

void TestAtChannel::waitsForUnsolicitedLines()
{
    Bench bench;
    QCOMPARE(bench.channel.waitUnsolicited(kShort).status, Status::Timeout);
    bench.device.pending = {"\r\n+CR", "EG: 1\r\n"};
    const AtReply reply = bench.channel.waitUnsolicited(kLong);
    QVERIFY(reply.isOk());
    QCOMPARE(reply.unsolicited, Lines{"+CREG: 1"});
}

void TestAtChannel::keepsSecretsOutOfTheLog_data()
{
    QTest::addColumn<QByteArray>("command");
    const auto row = [](const char *command) { QTest::newRow(command) << QByteArray(command); };
    row("AT+CPIN=\"s3cret\"");
    row("AT+CPIN=s3cret");
    row("at+cpin = s3cret");
    row("AT+CPIN=\"12345678\",\"s3cret\"");
    row("AT+CMEE=1;+CPIN=\"s3cret\"");
    row("AT^CPIN=\"s3cret\"");
    row("AT+CLCK=\"SC\",1,\"s3cret\"");
    row("AT+CPWD=\"SC\",\"1\",\"s3cret\"");
    row("AT+CGAUTH=1,2,\"user\",\"s3cret\"");
    row("AT$QCPDPP=1,1,\"s3cret\",\"user\"");
    row("AT^AUTHDATA=1,2,\"\",\"s3cret\",\"user\"");
    row("AT+CSTT=\"apn\",\"user\",\"s3cret\"");
    row("AT+QICSGP=1,1,\"apn\",\"user\",\"s3cret\",1");
    row("AT+UAUTHREQ=1,1,\"s3cret\",\"user\"");
    row("AT^SGAUTH=1,1,\"s3cret\",\"user\"");
}

void TestAtChannel::keepsSecretsOutOfTheLog()
{
    QFETCH(QByteArray, command);
    const QString secret = QStringLiteral("s3cret");
    const LogOfTraffic log;
    // Echoed, echoed in bits, said back, and late.
    Bench bench;
    bench.ask(command, {command + "\r\r\nOK\r\n"});
    bench.ask(command, {command.left(6) + "\r\n" + command.mid(6) + "\r\n\r\nERROR\r\n"});
    bench.ask(command, {"\r\nyou said s3cret\r\n\r\nOK\r\n"});
    bench.device.answers[command + '\r'] = {command.left(6) + "\r\n" + command.mid(6) + "\r\n"};
    QCOMPARE(bench.channel.send(command, kShort).status, Status::Timeout);
    bench.device.pending = {command.left(9) + "\r\n" + command.mid(9), "\r\n"};
    bench.ask("AT", {"\r\nOK\r\n"});
    bench.ask("AT+CGAUTH?", {"\r\n+CGAUTH: 1,2,\"user\",\"s3cret\"\r\n\r\nOK\r\n"});
    QVERIFY2(log.text().contains(QStringLiteral("OK")), qPrintable(log.text()));
    QVERIFY2(!log.text().contains(secret), qPrintable(log.text()));
    QVERIFY(!log.text().contains(QStringLiteral("12345678")));
}

void TestAtChannel::showsTrafficInTheLog()
{
    const LogOfTraffic log;
    Bench bench;
    bench.ask("AT+CPIN?", {"\r\n+CPIN: READY\r\n\r\nOK\r\n"});
    QCOMPARE(log.text(), QStringLiteral("test -> AT+CPIN?\ntest: +CPIN: READY\ntest: OK"));
}

void TestAtChannel::saysInTheLogWhyAnAnswerHasNoEnd()
{
    const LogOfTraffic log;
    Bench bench;
    bench.ask("AT", {});
    QCOMPARE(log.text(), QStringLiteral("test -> AT\ntest no end of answer: Timeout"));
}

void TestAtChannel::doesNotFillTheLog()
{
    const LogOfTraffic log;
    Bench bench;
    QByteArray answer;
    for (int i = 0; i < 5000; ++i)
        answer += "\r\n^RSSI:17\r\n";
    QVERIFY(bench.ask("AT", {answer + "\r\nOK\r\n"}).isOk());
    QVERIFY(log.text().count(QLatin1Char('\n')) < 500);
    QVERIFY(log.text().endsWith(QStringLiteral("test: and more, which is not shown")));
    QVERIFY(bench.ask("AT", {"\r\nOK\r\n"}).isOk());
    QVERIFY(log.text().endsWith(QStringLiteral("test -> AT\ntest: OK")));
}

void TestAtChannel::survivesNoise()
{
    std::mt19937 random(20221120); // fixed: a failure can be repeated
    const Lines words{"OK", "ERROR", "\r", "\n", "\r\n", "+CME ERROR:", "+CSQ: ", "AT+CSQ", "RING",
        ",", "\"", ":", QByteArray(1, '\0'), "NO CARRIER", "^", "999999999999999999999", "-1"};
    for (int round = 0; round < 2000; ++round) {
        Lines input;
        const auto count = random() % 20;
        for (unsigned i = 0; i < count; ++i) {
            if (random() % 2)
                input << words.at(static_cast<int>(random() % static_cast<unsigned>(words.size())));
            else
                input << QByteArray(1, static_cast<char>(random() % 256));
        }
        Bench bench;
        bench.device.answers["AT+CSQ\r"] = input;
        // The first wait, before anything is sent, must not end the device.
        bench.device.pending = {"\r\n"};
        AtChannel channel(&bench.device, QStringLiteral("noise"),
            [&] { return bench.device.pending.isEmpty() && !bench.device.written.isEmpty(); });
        const AtReply reply = channel.send("AT+CSQ", kLong);
        QVERIFY(reply.status == Status::Ok || reply.status == Status::Error
            || reply.status == Status::PortGone);
    }
}

QTEST_APPLESS_MAIN(TestAtChannel)

#include "tst_atchannel.moc"
