#include "atmodem.h"
#include "scriptedmodem.h"

#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

/** What a modem is asked for once its port is open: everything of a query, over a line. */
class TestModemQuery : public QObject
{
    Q_OBJECT

private slots:
    void asksEverything();
};

namespace {

constexpr int kBaudrate = 57600;

struct Bench
{
    QTemporaryDir locks;
    ScriptedModem modem;
    AtModem driver{nullptr, locks.path()};
    QElapsedTimer clock;

    Bench()
    {
        const auto ok = [](const QByteArray &text = {}) { return ScriptedModem::ok(text); };
        const QMap<QByteArray, QByteArray> more{
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
            {"AT+CPMS?", ok("+CPMS: \"SM\",1,20,\"SM\",1,20,\"SM\",1,20")},
            {"AT+CMGL=4", ok("+CMGL: 3,0,,24\r\n0004049186930000120101211020020501")},
            {"AT+CMGD=3", ok()},
        };
        for (auto answer = more.cbegin(); answer != more.cend(); ++answer)
            modem.answers.insert(answer.key(), answer.value());
        clock.start();
    }

    bool open()
    {
        modem.start();
        return driver.open(modem.path(), kBaudrate, 3);
    }
};

} // namespace

void TestModemQuery::asksEverything()
{
    Bench bench;
    AtModem &driver = bench.driver;
    QVERIFY2(bench.open(), qPrintable(driver.lastError()));
    driver.reset(true);
    QCOMPARE(driver.lastError(), QString());
    int mcc = 0;
    int mnc = 0;
    QVERIFY2(driver.getMnc(mcc, mnc), qPrintable(driver.lastError()));
    QCOMPARE(mcc, 250);
    QCOMPARE(mnc, 1);
    QString lac;
    QString cid;
    QVERIFY2(driver.getGsmCells(lac, cid), qPrintable(driver.lastError()));
    QCOMPARE(lac, QStringLiteral("1A2B"));
    QCOMPARE(cid, QStringLiteral("C3F4D5"));
    QMap<QString, QVariant> info;
    QVERIFY2(driver.getInfo(info), qPrintable(driver.lastError()));
    QCOMPARE(
        info.value(QStringLiteral("iccid")).toString(), QStringLiteral("89012103000000001012"));
    QString answer;
    QVERIFY2(driver.sendUSSD(QStringLiteral("*100#"), answer), qPrintable(driver.lastError()));
    QCOMPARE(AtModem::parseModemBalance(answer), 150.5);
    int level = 0;
    QVERIFY2(driver.getSignalLevel(level), qPrintable(driver.lastError()));
    QCOMPARE(level, -71);
    QList<AtModem::SSms> messages;
    QVERIFY2(driver.takeMessages(messages), qPrintable(driver.lastError()));
    QVERIFY(messages.isEmpty()); // a cut one, which is left where it is
    QVERIFY(!bench.modem.commands().contains("AT+CMGD=3"));
}

QTEST_GUILESS_MAIN(TestModemQuery)

#include "tst_modemquery.moc"
