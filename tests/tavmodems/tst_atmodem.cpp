#include "atmodem.h"
#include "scriptedmodem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

class TestAtModem : public QObject
{
    Q_OBJECT

private slots:
    void isClosedAtFirst();
    void doesNothingWhileClosed();
    void opensAModem_data();
    void opensAModem();
};

namespace {

constexpr int kBaudrate = 57600;

struct Bench
{
    QTemporaryDir locks;
    ScriptedModem modem;
    AtModem driver{nullptr, locks.path()};

    bool open(int attempts = 3)
    {
        modem.start();
        return driver.open(modem.path(), kBaudrate, attempts);
    }
};

} // namespace

void TestAtModem::isClosedAtFirst()
{
    const AtModem driver;
    QVERIFY(!driver.isOpen());
    QCOMPARE(driver.gsmDialect(), QString());
    QCOMPARE(driver.modemName(), QString());
    QCOMPARE(driver.lastError(), QString());
}

void TestAtModem::doesNothingWhileClosed()
{
    AtModem driver;
    QElapsedTimer clock;
    clock.start();
    driver.reset(true);
    driver.beforeDial();
    driver.close();
    QVERIFY(clock.elapsed() < 100);
    QVERIFY(!driver.isOpen());
}

void TestAtModem::opensAModem_data()
{
    QTest::addColumn<bool>("echo");
    QTest::addColumn<bool>("byteByByte");
    QTest::newRow("echo on") << true << false;
    QTest::newRow("echo off") << false << false;
    QTest::newRow("echo on, byte by byte") << true << true;
    QTest::newRow("echo off, byte by byte") << false << true;
}

void TestAtModem::opensAModem()
{
    QFETCH(bool, echo);
    QFETCH(bool, byteByByte);
    Bench bench;
    bench.modem.echo = echo;
    bench.modem.byteByByte = byteByByte;
    QVERIFY2(bench.open(), qPrintable(bench.driver.lastError()));
    QVERIFY(bench.driver.isOpen());
    QCOMPARE(bench.driver.gsmDialect(), QStringLiteral("Huawei"));
    QCOMPARE(bench.driver.modemName(), QStringLiteral("huawei E1550"));
    QCOMPARE(bench.driver.lastError(), QString());
    bench.driver.reset(true);
    QCOMPARE(bench.driver.lastError(), QString());
    bench.driver.beforeDial();
    QCOMPARE(bench.driver.lastError(), QString());
    bench.driver.close();
    QVERIFY(!bench.driver.isOpen());
    QCOMPARE(bench.modem.commands(),
        QList<QByteArray>({"AT", "AT+CGMI", "AT+CGMM", "ATZ", "ATQ0V1E0", "AT+CMEE=1", "AT+CFUN?",
            "AT+CPIN?", "AT+CREG?", "AT+CREG=0", "AT+CGREG=0", "AT+CEREG=0", "AT^CURC=0"}));
}

QTEST_GUILESS_MAIN(TestAtModem)

#include "tst_atmodem.moc"
