#include "atchannel.h"
#include "atdialect.h"
#include "atidentity.h"
#include "gsmcodec.h"
#include "ussd.h"

#include <QElapsedTimer>
#include <QTest>

#include <random>

using Lines = QList<QByteArray>;

Q_DECLARE_METATYPE(UssdForm)

class TestUssd : public QObject
{
    Q_OBJECT

private slots:
    void readsText_data();
    void readsText();
    void readsStatus_data();
    void readsStatus();
    void waitsForTheEnd_data();
    void waitsForTheEnd();
    void tellsWhetherTheTextIsWhole_data();
    void tellsWhetherTheTextIsWhole();
    void writesCommands_data();
    void writesCommands();
    void refusesCodes_data();
    void refusesCodes();
    void readsWhatItWrites();
    void dialectsHaveTheirForm();
    void survivesNoise();
    void givesUpATextWithoutEnd_data();
    void givesUpATextWithoutEnd();
};

void TestUssd::readsText_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const Lines &lines, const char *text) {
        QTest::newRow(name) << lines << QString::fromUtf8(text);
    };
    // 27.007 7.15: the text in the character set of AT+CSCS.
    row("plain", {"+CUSD: 0,\"Balans 150.50 rub\",15"}, "Balans 150.50 rub");
    row("no blank", {"+CUSD:0,\"Balans 150.50 rub\",15"}, "Balans 150.50 rub");
    row("without a coding scheme", {"+CUSD: 0,\"Balans 5\""}, "Balans 5");
    row("with an empty coding scheme", {"+CUSD: 0,\"Balans 5\","}, "Balans 5");
    row("blanks around the coding scheme", {"+CUSD: 0, \"Balans 5\" , 15 "}, "Balans 5");
    row("UTF-8", {"+CUSD: 0,\"Баланс 5\",15"}, "Баланс 5");
    row("Latin-1",
        {"+CUSD: 0,\"cr\xe9"
         "dit 5\",15"},
        "crédit 5");
    row("comma in the text", {"+CUSD: 0,\"Balans 10,15 rub, tarif X\",15"},
        "Balans 10,15 rub, tarif X");
    row("not in quotes", {"+CUSD: 0,Balans 10,15"}, "Balans 10,15");
    row("number alone", {"+CUSD: 0,\"150\",15"}, "150");
    row("number of an even length alone", {"+CUSD: 0,\"9161234567\",15"}, "9161234567");
    row("number with a point", {"+CUSD: 0,\"150.50\",15"}, "150.50");
    // Several lines, as operators' menus come through modems that do not encode them.
    row("over two lines", {"+CUSD: 0,\"Balans 5 rub", "Tarif: X\",15"}, "Balans 5 rub\nTarif: X");
    row("over three lines with quotes within",
        {"+CUSD: 0,\"Tarif \"X\"", "Balans 5 rub", "Info *100#\",15"},
        "Tarif \"X\"\nBalans 5 rub\nInfo *100#");
    row("quote alone in the last line", {"+CUSD: 0,\"Balans 5 rub", "\",15"}, "Balans 5 rub");
    row("among other lines", {"^RSSI:17", "+CUSD: 0,\"Balans 5\",15", "^BOOT:1,2"}, "Balans 5");
    row("text after a notice without one", {"+CUSD: 0", "+CUSD: 1,\"Balans 5\",15"}, "Balans 5");
    row("session ended behind the text", {"+CUSD: 0,\"Balans 5\",15", "+CUSD: 2"}, "Balans 5");
    row("notice right behind an open text", {"+CUSD: 0,\"Balans 5\"", "+CUSD: 2"}, "Balans 5");
    // Packed septets: Huawei E1550 and its family (23.038 6.1.2.3).
    row("packed", {"+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",15"}, "Balans 150.50 rub");
    row("packed, lower case", {"+CUSD: 0,\"c2303bec9e83623598ab0603c9eb62\",15"},
        "Balans 150.50 rub");
    row("packed, without a coding scheme", {"+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\""},
        "Balans 150.50 rub");
    row("packed, scheme 0", {"+CUSD: 0,\"C2303BEC9E83623598AB0603C9EB62\",0"}, "Balans 150.50 rub");
    row("packed, seven bits filled with a return", {"+CUSD: 0,\"C2303BEC1E971B\",15"}, "Balance");
    row("packed, seven bits filled with zeros", {"+CUSD: 0,\"C2303BEC1E9701\",15"}, "Balance");
    row("packed, an at sign elsewhere", {"+CUSD: 0,\"C2303BEC1E0364\",15"}, "Balanc@2");
    row("packed, not in quotes", {"+CUSD: 0,C2303BEC9E83623598AB0603C9EB62,15"},
        "Balans 150.50 rub");
    row("packed, language in front (scheme 16)", {"+CUSD: 0,\"F27A43186687DD73500D\",16"},
        "Balans 5");
    // UCS2: Huawei with Cyrillic answers, ZTE and SIMCom after AT+CSCS="UCS2".
    row("UCS2",
        {"+CUSD: 0,\"04110430043B0430043D0441003A0020003100350030002C0035003000200440002E\",72"},
        "Баланс: 150,50 р.");
    row("UCS2, scheme 8",
        {"+CUSD: 0,\"04110430043B0430043D0441003A0020003100350030002C0035003000200440002E\",8"},
        "Баланс: 150,50 р.");
    row("UCS2 under the scheme of packed septets",
        {"+CUSD: 0,\"04110430043B0430043D0441003A0020003100350030002C0035003000200440002E\",15"},
        "Баланс: 150,50 р.");
    row("UCS2, no scheme",
        {"+CUSD: 0,\"04110430043b0430043d0441003a0020003100350030002c0035003000200440002e\""},
        "Баланс: 150,50 р.");
    row("UCS2, digits alone", {"+CUSD: 0,\"0031003500300030\",15"}, "1500");
    row("UCS2, language in front (scheme 17)", {"+CUSD: 0,\"F23A041104300031\",17"}, "Ба1");
    row("UCS2 beyond the basic plane", {"+CUSD: 0,\"0041D83DDE00\",72"}, "A😀");
    row("UCS2 cut within a character", {"+CUSD: 0,\"0411043\",72"}, "0411043");
    row("8 bit", {"+CUSD: 0,\"42616C616E73\",68"}, "Balans");
    row("hexadecimal over two lines is not one", {"+CUSD: 0,\"04110430", "0031\",72"},
        "04110430\n0031");
    row("empty", {"+CUSD: 0,\"\",15"}, "");
}

void TestUssd::readsText()
{
    QFETCH(Lines, lines);
    const auto answer = parseUssdAnswer(lines);
    QVERIFY(answer);
    QTEST(answer->text, "text");
    QCOMPARE(answer->error().isEmpty(), !answer->text.isEmpty());
}

void TestUssd::readsStatus_data()
{
    using Status = UssdAnswer::Status;
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const char *line, Status status, const char *error) {
        QTest::newRow(name) << QByteArray(line) << static_cast<int>(status)
                            << QString::fromUtf8(error);
    };
    // <m> of 27.007 7.15
    row("done", "+CUSD: 0,\"x\",15", Status::Done, "");
    row("done without a text", "+CUSD: 0", Status::Done, "the answer is empty");
    row("a choice is asked", "+CUSD: 1,\"1. Balans\",15", Status::ReplyWanted, "");
    row("terminated", "+CUSD: 2", Status::Terminated, "the network ended the session");
    row("terminated with a text", "+CUSD: 2,\"Oshibka\",15", Status::Terminated, "");
    row("terminated, empty fields", "+CUSD: 2,\"\",0", Status::Terminated,
        "the network ended the session");
    row("other client", "+CUSD: 3", Status::OtherClient, "another program answered");
    row("not supported", "+CUSD: 4", Status::NotSupported, "the network does not know the request");
    row("timeout", "+CUSD: 5", Status::NetworkTimeout, "the network did not answer in time");
}

void TestUssd::readsStatus()
{
    QFETCH(QByteArray, line);
    const auto answer = parseUssdAnswer({line});
    QVERIFY(answer);
    QTEST(static_cast<int>(answer->status), "status");
    QTEST(answer->error(), "error");
}

void TestUssd::waitsForTheEnd_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::newRow("nothing") << Lines();
    QTest::newRow("another line") << Lines{"+CSQ: 1,99"};
    QTest::newRow("text still open") << Lines{"+CUSD: 0,\"Balans 5", "Tarif"};
    QTest::newRow("status missing") << Lines{"+CUSD:"};
    QTest::newRow("status garbled") << Lines{"+CUSD: x,\"Balans\",15"};
    QTest::newRow("status unknown") << Lines{"+CUSD: 6,\"Balans\",15"};
    QTest::newRow("status below zero") << Lines{"+CUSD: -1"};
}

void TestUssd::waitsForTheEnd()
{
    QFETCH(Lines, lines);
    QVERIFY(!parseUssdAnswer(lines));
}

void TestUssd::tellsWhetherTheTextIsWhole_data()
{
    QTest::addColumn<Lines>("lines");
    QTest::addColumn<bool>("isWhole");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const Lines &lines, bool isWhole, const char *text) {
        QTest::newRow(name) << lines << isWhole << QString::fromUtf8(text);
    };
    row("coding scheme", {"+CUSD: 0,\"Tarif \"X\",15"}, true, "Tarif \"X");
    row("one pair of quotes", {"+CUSD: 0,\"Balans 5\""}, true, "Balans 5");
    row("pairs within", {"+CUSD: 0,\"Tarif \"X\" and \"Y\"\""}, true, "Tarif \"X\" and \"Y\"");
    row("a pair that ends the line", {"+CUSD: 0,\"Tarif \"X\""}, false, "Tarif \"X");
    row("its end", {"+CUSD: 0,\"Tarif \"X\"", "Balans 5\""}, true, "Tarif \"X\"\nBalans 5");
    row("without quotes", {"+CUSD: 0,Balans 5"}, true, "Balans 5");
    row("no text", {"+CUSD: 2"}, true, "");
}

void TestUssd::tellsWhetherTheTextIsWhole()
{
    QFETCH(Lines, lines);
    const auto answer = parseUssdAnswer(lines);
    QVERIFY(answer);
    QTEST(answer->isWhole, "isWhole");
    QTEST(answer->text, "text");
}

void TestUssd::writesCommands_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<UssdForm>("form");
    QTest::addColumn<QByteArray>("expected");
    const QString code = QStringLiteral("*100#");
    QTest::newRow("plain") << code << UssdForm::Plain << QByteArray("AT+CUSD=1,\"*100#\",15");
    QTest::newRow("packed, as Huawei's manual has it")
        << code << UssdForm::PackedHex << QByteArray("AT+CUSD=1,\"AA180C3602\",15");
    QTest::newRow("packed, seven characters are filled up with a return, 23.038 6.1.2.3.1")
        << QStringLiteral("*111*1#") << UssdForm::PackedHex
        << QByteArray("AT+CUSD=1,\"AA582CA68A8D1A\",15");
    QTest::newRow("packed, eight fill it") << QStringLiteral("12345678") << UssdForm::PackedHex
                                           << QByteArray("AT+CUSD=1,\"31D98C56B3DD70\",15");
    QTest::newRow("UCS2") << code << UssdForm::Ucs2Hex
                          << QByteArray("AT+CUSD=1,\"002A0031003000300023\",15");
    QTest::newRow("reply to a menu")
        << QStringLiteral("1") << UssdForm::Plain << QByteArray("AT+CUSD=1,\"1\",15");
}

void TestUssd::writesCommands()
{
    QFETCH(QString, code);
    QFETCH(UssdForm, form);
    QFETCH(QByteArray, expected);
    QCOMPARE(ussdCommand(code, form).value_or("none"), expected);
}

void TestUssd::refusesCodes_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<bool>("plainAlone");
    QTest::newRow("empty") << QString() << false;
    QTest::newRow("second command in it") << QStringLiteral("*100#\rATD123") << false;
    QTest::newRow("end of a line") << QStringLiteral("*100#\n") << false;
    QTest::newRow("quote") << QStringLiteral("*100#\",15;+X=\"") << true;
    QTest::newRow("not of the alphabet") << QStringLiteral("*100№") << false;
    QTest::newRow("not ASCII") << QStringLiteral("é") << true;
    QTest::newRow("too long") << QString(183, QLatin1Char('1')) << false;
}

void TestUssd::refusesCodes()
{
    QFETCH(QString, code);
    QFETCH(bool, plainAlone);
    QVERIFY(!ussdCommand(code, UssdForm::Plain));
    QCOMPARE(ussdCommand(code, UssdForm::PackedHex).has_value(), plainAlone);
    QCOMPARE(ussdCommand(code, UssdForm::Ucs2Hex).has_value(), plainAlone);
}

void TestUssd::readsWhatItWrites()
{
    // What is packed for the network is read by the same rules, whatever its length.
    QString text = QStringLiteral("Balans: 150,50 r. Tarif Vse i srazu. ");
    text += text + text + text;
    for (int length = 4; length <= 148; ++length) {
        const QString part = text.left(length).trimmed();
        for (const UssdForm form : {UssdForm::PackedHex, UssdForm::Ucs2Hex}) {
            const auto command = ussdCommand(part, form);
            QVERIFY(command);
            const auto answer = parseUssdAnswer({"+CUSD: 0," + command->mid(10)});
            QVERIFY(answer);
            QCOMPARE(answer->text, part);
        }
    }
}

void TestUssd::dialectsHaveTheirForm()
{
    QCOMPARE(findDialect({QStringLiteral("huawei"), QStringLiteral("E1550")}).ussdForms.first(),
        UssdForm::PackedHex);
    QCOMPARE(
        findDialect({QStringLiteral("SIMCOM_Ltd"), QStringLiteral("SIM800")}).ussdForms.first(),
        UssdForm::Plain);
    QCOMPARE(allDialects().last().ussdForms.first(), UssdForm::Plain);
}

void TestUssd::survivesNoise()
{
    std::mt19937 random(27007);
    const QByteArray alphabet("+CUSD: 0125,\"\"04AF\xd0\xb1\\ \t#*");
    int answers = 0;
    for (int round = 0; round < 5000; ++round) {
        Lines lines;
        for (unsigned int count = random() % 5; count > 0; --count) {
            QByteArray line;
            if (random() % 2 == 0)
                line = "+CUSD: " + QByteArray::number(static_cast<int>(random() % 7)) + ",\"";
            for (unsigned int size = random() % 40; size > 0; --size)
                line += alphabet.at(
                    static_cast<int>(random() % static_cast<unsigned int>(alphabet.size())));
            lines << line;
        }
        const auto answer = parseUssdAnswer(lines);
        if (answer) {
            ++answers;
            QVERIFY(static_cast<int>(answer->status) <= 5);
        }
    }
    QVERIFY(answers > 0);
}

void TestUssd::givesUpATextWithoutEnd_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("letters") << QByteArray("a");
    QTest::newRow("quotes") << QByteArray("\"");
    QTest::newRow("what looks like the end") << QByteArray("\"\",");
}

// As many short lines as an answer may have: each used to have all those before it read again.
void TestUssd::givesUpATextWithoutEnd()
{
    QFETCH(const QByteArray, line);
    Lines lines{"+CUSD: 0,\"Balans 5"};
    while (lines.size() < AtChannel::kMaxAnswer / (line.size() + 1))
        lines << line;
    QElapsedTimer timer;
    timer.start();
    const auto answer = parseUssdAnswer(lines);
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!answer || answer->text.size() < 5000);
}

QTEST_APPLESS_MAIN(TestUssd)
#include "tst_ussd.moc"
