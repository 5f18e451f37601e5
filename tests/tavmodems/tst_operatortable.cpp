#include "modemsettings.h"
#include "operatortable.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <thread>
#include <vector>

namespace {

QByteArray provider(
    const QByteArray &name, const QByteArray &gsm, const QByteArray &attributes = {})
{
    return "<provider " + attributes + "><name>" + name + "</name><gsm>" + gsm
        + "</gsm></provider>";
}

QByteArray document(const QByteArray &providers)
{
    return "<?xml version=\"1.0\"?><!DOCTYPE serviceproviders SYSTEM \"serviceproviders.2.dtd\">"
           "<serviceproviders format=\"2.0\"><country code=\"ru\"><name>Russia</name>"
        + providers + "</country></serviceproviders>";
}

QByteArray accessPoint(const QByteArray &name, const QByteArray &usage, const QByteArray &user = {})
{
    return "<apn value=\"" + name + "\">"
        + (usage.isEmpty() ? QByteArray() : "<usage type=\"" + usage + "\"/>")
        + (user.isEmpty() ? QByteArray()
                          : "<username>" + user + "</username><password>secret</password>")
        + "</apn>";
}

const QByteArray NETWORK = "<network-id mcc=\"250\" mnc=\"01\"/>";

} // namespace

class TestOperatorTable : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsOperator();
    void choosesAccessPoint_data();
    void choosesAccessPoint();
    void asksForTheOwnNumber_data();
    void asksForTheOwnNumber();
    void choosesProvider_data();
    void choosesProvider();
    void choosesName_data();
    void choosesName();
    void tellsCodesApart_data();
    void tellsCodesApart();
    void laysFilesOver();
    void keepsWhatStandsBeforeABreak_data();
    void keepsWhatStandsBeforeABreak();
    void keepsWhatWasThereBeforeABadFile();
    void refusesMissingFile();
    void passesOverWrongCodes();
    void neverBreaksOutOfTheLine();
    void readsThePackage();
    void settingsLookUp();
    void settingsLookUpInAnyThread();

private:
    QString write(const QByteArray &content);
    OperatorData only(const QByteArray &gsm);

    QTemporaryDir m_dir;
    int m_files = 0;
};

QString TestOperatorTable::write(const QByteArray &content)
{
    QFile file(m_dir.filePath(QStringLiteral("operators%1.xml").arg(++m_files)));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        return {};
    return file.fileName();
}

// What a file with one provider of network 250 01 tells of it.
OperatorData TestOperatorTable::only(const QByteArray &gsm)
{
    OperatorTable table;
    const bool read = table.read(write(document(provider("One", gsm))));
    return read ? table.find(250, 1).value_or(OperatorData()) : OperatorData();
}

void TestOperatorTable::initTestCase()
{
    QVERIFY(m_dir.isValid());
    // The process reads its table once, so its local file is there from the beginning.
    const QString local
        = write(document(provider("Ours",
                             "<network-id mcc=\"250\" mnc=\"01\"/><balance-check><ussd>*777#</ussd>"
                             "</balance-check>")
            + provider("Private",
                "<network-id mcc=\"999\" mnc=\"42\"/>" + accessPoint("lab", "internet"))));
    const QString configuration = m_dir.filePath(QStringLiteral("terminal.conf"));
    QFile file(configuration);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[modems]\noperators=" + local.toUtf8() + '\n');
    file.close();
    qputenv("TAV_TERMINAL_CONF", configuration.toUtf8());
}

void TestOperatorTable::readsOperator()
{
    const OperatorData data = only(NETWORK
        + "<msisdn-query><ussd>*111*0887#</ussd></msisdn-query>"
          "<voicemail>0860</voicemail><balance-check><dtmf>0890</dtmf><ussd>*100#</ussd>"
          "<ussd>*102#</ussd></balance-check>"
        + accessPoint("internet.one.ru", "internet", "mts"));
    QCOMPARE(data.name(), QStringLiteral("One"));
    QCOMPARE(data.modemInitLine(), QStringLiteral("AT+CGDCONT=1,\"IP\",\"internet.one.ru\""));
    QCOMPARE(data.userName(), QStringLiteral("mts"));
    QCOMPARE(data.password(), QStringLiteral("secret"));
    QCOMPARE(data.balancePhone(), QStringLiteral("*100#"));
    QCOMPARE(data.selfNumberPhone(), QStringLiteral("*111*0887#"));
    QVERIFY(!data.selfNumberFromSms());
}

void TestOperatorTable::choosesAccessPoint_data()
{
    QTest::addColumn<QByteArray>("points");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("user");
    QTest::newRow("none") << QByteArray() << QString() << QString();
    QTest::newRow("behind one for pictures")
        << accessPoint("mms", "mms", "m") + accessPoint("net", "internet") << QStringLiteral("net")
        << QString();
    QTest::newRow("the first of two")
        << accessPoint("a", "internet", "u") + accessPoint("b", "internet") << QStringLiteral("a")
        << QStringLiteral("u");
    QTest::newRow("without a purpose")
        << accessPoint("net", "", "u") << QStringLiteral("net") << QStringLiteral("u");
    QTest::newRow("one with the purpose before one without")
        << accessPoint("any", "", "u") + accessPoint("net", "internet") << QStringLiteral("net")
        << QString();
    QTest::newRow("one without the purpose behind it")
        << accessPoint("net", "internet") + accessPoint("any", "", "u") << QStringLiteral("net")
        << QString();
    QTest::newRow("only for pictures") << accessPoint("mms", "mms", "m") << QString() << QString();
}

void TestOperatorTable::choosesAccessPoint()
{
    QFETCH(QByteArray, points);
    QFETCH(QString, name);
    const OperatorData data = only(NETWORK + points);
    QCOMPARE(data.modemInitLine(),
        name.isEmpty() ? QString() : QStringLiteral("AT+CGDCONT=1,\"IP\",\"%1\"").arg(name));
    QTEST(data.userName(), "user");
}

void TestOperatorTable::asksForTheOwnNumber_data()
{
    QTest::addColumn<QByteArray>("query");
    QTest::addColumn<QString>("phone");
    QTest::addColumn<bool>("fromSms");
    const QByteArray ussd = "<ussd>*99#</ussd>";
    const QByteArray sms = "<sms text=\"NUM\">5050</sms>";
    QTest::newRow("by USSD") << ussd << QStringLiteral("*99#") << false;
    QTest::newRow("by SMS") << sms << QStringLiteral("5050 NUM") << true;
    QTest::newRow("by SMS of several words") << QByteArray("<sms text=\" MY NUMBER \">5050</sms>")
                                             << QStringLiteral("5050 MY NUMBER") << true;
    QTest::newRow("by SMS without a text")
        << QByteArray("<sms text=\"\">5050</sms>") << QStringLiteral("5050") << true;
    QTest::newRow("by both") << ussd + sms << QStringLiteral("*99#") << false;
    QTest::newRow("by both, SMS first") << sms + ussd << QStringLiteral("*99#") << false;
    QTest::newRow("by two codes") << ussd + "<ussd>*1#</ussd>" << QStringLiteral("*99#") << false;
    QTest::newRow("not at all") << QByteArray() << QString() << false;
}

void TestOperatorTable::asksForTheOwnNumber()
{
    QFETCH(QByteArray, query);
    const OperatorData data = only(NETWORK + "<msisdn-query>" + query + "</msisdn-query>");
    QTEST(data.selfNumberPhone(), "phone");
    QTEST(data.selfNumberFromSms(), "fromSms");
}

void TestOperatorTable::choosesProvider_data()
{
    QTest::addColumn<QByteArray>("providers");
    QTest::addColumn<QString>("name");
    const QByteArray primary = "primary=\"true\"";
    QTest::newRow("the first") << provider("A", NETWORK) + provider("B", NETWORK)
                               << QStringLiteral("A");
    QTest::newRow("the primary one")
        << provider("A", NETWORK) + provider("B", NETWORK, primary) << QStringLiteral("B");
    QTest::newRow("the first of two primary ones")
        << provider("A", NETWORK, primary) + provider("B", NETWORK, primary) << QStringLiteral("A");
    QTest::newRow("not a secondary one")
        << provider("A", NETWORK) + provider("B", NETWORK, "primary=\"false\"")
        << QStringLiteral("A");
}

void TestOperatorTable::choosesProvider()
{
    QFETCH(QByteArray, providers);
    OperatorTable table;
    QVERIFY(table.read(write(document(providers))));
    QVERIFY(table.find(250, 1));
    QTEST(table.find(250, 1)->name(), "name");
}

void TestOperatorTable::choosesName_data()
{
    QTest::addColumn<QByteArray>("names");
    QTest::addColumn<QString>("expected");
    const QByteArray local = "<name xml:lang=\"ru\">Один</name>";
    QTest::newRow("without a language") << QByteArray("<name>One</name>") << QStringLiteral("One");
    QTest::newRow("before one in a language")
        << "<name>One</name>" + local << QStringLiteral("One");
    QTest::newRow("behind one in a language")
        << local + "<name>One</name>" << QStringLiteral("One");
    QTest::newRow("only in a language") << local << QStringLiteral("Один");
    QTest::newRow("blanks around") << QByteArray("<name>\n One </name>") << QStringLiteral("One");
    QTest::newRow("with an entity")
        << QByteArray("<name>A &amp; B</name>") << QStringLiteral("A & B");
}

void TestOperatorTable::choosesName()
{
    QFETCH(QByteArray, names);
    OperatorTable table;
    QVERIFY(table.read(
        write(document("<provider>" + names + "<gsm>" + NETWORK + "</gsm></provider>"))));
    QVERIFY(table.find(250, 1));
    QTEST(table.find(250, 1)->name(), "expected");
}

void TestOperatorTable::tellsCodesApart_data()
{
    QTest::addColumn<int>("mcc");
    QTest::addColumn<int>("mnc");
    QTest::addColumn<QString>("name");
    QTest::newRow("known") << 250 << 1 << QStringLiteral("A");
    QTest::newRow("another network of it") << 250 << 20 << QStringLiteral("A");
    QTest::newRow("three digits") << 310 << 410 << QStringLiteral("B");
    QTest::newRow("another country") << 251 << 1 << QString();
    QTest::newRow("another network") << 250 << 10 << QString();
    QTest::newRow("the same digits") << 25 << 1001 << QString();
    QTest::newRow("below zero") << 251 << -999 << QString();
    QTest::newRow("all zero") << 0 << 0 << QString();
    QTest::newRow("beyond the codes") << 2147483 << 2147483647 << QString();
}

void TestOperatorTable::tellsCodesApart()
{
    QFETCH(int, mcc);
    QFETCH(int, mnc);
    OperatorTable table;
    QVERIFY(
        table.read(write(document(provider("A", NETWORK + "<network-id mcc=\"250\" mnc=\"20\"/>")
            + provider("B", "<network-id mcc=\"310\" mnc=\"410\"/>")))));
    QCOMPARE(table.size(), 3);
    const auto data = table.find(mcc, mnc);
    QTEST(data ? data->name() : QString(), "name");
}

void TestOperatorTable::laysFilesOver()
{
    OperatorTable table;
    QVERIFY(table.read(write(
        document(provider("Lower",
                     NETWORK
                         + "<msisdn-query><sms text=\"N\">5050</sms></msisdn-query><balance-check>"
                           "<ussd>*100#</ussd></balance-check>"
                         + accessPoint("lower", "internet", "u"))
            + provider("Stays", "<network-id mcc=\"250\" mnc=\"02\"/>")))));
    const QByteArray upperGsm = NETWORK + accessPoint("upper", "internet");
    QVERIFY(table.read(write(document(provider("Upper", upperGsm)))));
    const OperatorData data = table.find(250, 1).value_or(OperatorData());
    QCOMPARE(data.name(), QStringLiteral("Upper"));
    QCOMPARE(data.modemInitLine(), QStringLiteral("AT+CGDCONT=1,\"IP\",\"upper\""));
    QCOMPARE(data.userName(), QString()); // those of the other access point would be wrong
    QCOMPARE(data.password(), QString());
    QCOMPARE(data.balancePhone(), QStringLiteral("*100#"));
    QCOMPARE(data.selfNumberPhone(), QStringLiteral("5050 N"));
    QVERIFY(data.selfNumberFromSms());
    QCOMPARE(table.find(250, 2)->name(), QStringLiteral("Stays"));
}

void TestOperatorTable::keepsWhatStandsBeforeABreak_data()
{
    QTest::addColumn<QByteArray>("behind");
    QTest::newRow("cut off within a provider")
        << QByteArray("<provider><name>B</name><gsm><network-id mcc=\"250\" mnc=\"02\"/>");
    QTest::newRow("cut off within a tag") << QByteArray("<provi");
    QTest::newRow("wrongly nested") << QByteArray("<provider><name>B</gsm></provider>");
    QTest::newRow("unknown entity") << QByteArray("<provider><name>&what;</name></provider>");
}

void TestOperatorTable::keepsWhatStandsBeforeABreak()
{
    QFETCH(QByteArray, behind);
    const QByteArray whole = document(provider("A", NETWORK));
    const QString path = write(whole.left(whole.indexOf("</country>")) + behind);
    OperatorTable table;
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^The operators in %1 end early: line \\d+: .+")
                               .arg(QRegularExpression::escape(path))));
    QVERIFY(!table.read(path));
    QCOMPARE(table.size(), 1);
    QCOMPARE(table.find(250, 1)->name(), QStringLiteral("A"));
}

void TestOperatorTable::keepsWhatWasThereBeforeABadFile()
{
    for (const QByteArray &content : {QByteArray(), QByteArray("<other/>"),
             QByteArray("operators: none"), document("\xff\xfe")}) {
        OperatorTable table;
        QVERIFY(table.read(write(document(provider("A", NETWORK)))));
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(QStringLiteral("^The operators in .* end early: ")));
        QVERIFY(!table.read(write(content)));
        QCOMPARE(table.size(), 1);
    }
}

void TestOperatorTable::refusesMissingFile()
{
    OperatorTable table;
    QTest::ignoreMessage(QtWarningMsg,
        QRegularExpression(QStringLiteral("^The operators in .*absent.* cannot be read: .+")));
    QVERIFY(!table.read(m_dir.filePath(QStringLiteral("absent.xml"))));
    QVERIFY(!table.find(250, 1));
}

void TestOperatorTable::passesOverWrongCodes()
{
    OperatorTable table;
    for (int i = 0; i < 3; ++i)
        QTest::ignoreMessage(
            QtWarningMsg, QRegularExpression(QStringLiteral("^A network's codes are not numbers")));
    QVERIFY(table.read(write(document(provider("A",
        "<network-id mcc=\"x\" mnc=\"01\"/><network-id/><network-id mcc=\"250\" mnc=\"1000\"/>"
            + NETWORK)))));
    QCOMPARE(table.size(), 1);
    QVERIFY(table.find(250, 1));
}

void TestOperatorTable::neverBreaksOutOfTheLine()
{
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("^An access point cannot be used")));
    QTest::ignoreMessage(
        QtWarningMsg, QRegularExpression(QStringLiteral("^An access point cannot be used")));
    const OperatorData data = only(NETWORK + accessPoint("a&quot;;+CFUN=0", "internet")
        + accessPoint("a&#13;AT+CFUN=0", "internet")
        + accessPoint("good", "internet", "user&#10;name"));
    QCOMPARE(data.modemInitLine(), QStringLiteral("AT+CGDCONT=1,\"IP\",\"good\""));
    QCOMPARE(data.userName(), QStringLiteral("username"));
}

void TestOperatorTable::readsThePackage()
{
    OperatorTable table;
    QVERIFY(table.read(OperatorTable::SYSTEM_FILE));
    QVERIFY(table.size() > 500);
    const auto data = table.find(250, 2);
    QVERIFY(data);
    QVERIFY(!data->name().isEmpty());
    QVERIFY(data->modemInitLine().startsWith(QLatin1String("AT+CGDCONT=1,\"IP\",\"")));
    QVERIFY(data->balancePhone().startsWith(QLatin1Char('*')));
}

void TestOperatorTable::settingsLookUp()
{
    OperatorData data;
    QVERIFY(ModemSettings().getOperatorData(250, 2, data));
    QVERIFY(!data.name().isEmpty());
    QVERIFY(ModemSettings().getOperatorData(250, 1, data));
    QCOMPARE(data.name(), QStringLiteral("Ours"));
    QCOMPARE(data.balancePhone(), QStringLiteral("*777#"));
    QVERIFY(!data.modemInitLine().isEmpty()); // the package's
    QVERIFY(ModemSettings().getOperatorData(999, 42, data));
    QCOMPARE(data.name(), QStringLiteral("Private"));
    const OperatorData before = data;
    QVERIFY(!ModemSettings().getOperatorData(999, 43, data));
    QCOMPARE(data, before);

    constexpr int kTimes = 10000;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < kTimes; ++i)
        ModemSettings().getOperatorData(250, 2, data);
    QVERIFY2(timer.elapsed() < kTimes / 10, qPrintable(QString::number(timer.elapsed())));
}

void TestOperatorTable::settingsLookUpInAnyThread()
{
    std::vector<int> known(8);
    std::vector<std::thread> threads;
    threads.reserve(known.size());
    for (int &count : known)
        threads.emplace_back([&count] {
            for (int mnc = 0; mnc < 1000; ++mnc) {
                OperatorData data;
                count += ModemSettings().getOperatorData(250, mnc, data) ? 1 : 0;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    for (const int count : known) {
        QVERIFY(count > 5);
        QCOMPARE(count, known.front());
    }
}

QTEST_GUILESS_MAIN(TestOperatorTable)
#include "tst_operatortable.moc"
