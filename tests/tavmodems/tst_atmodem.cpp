#include "atmodem.h"
#include "otheruser.h"
#include "scriptedmodem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <atomic>

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
    void takesABareName();
    void opensAgain();
    void refusesWhatIsNoPort_data();
    void refusesWhatIsNoPort();
    void isBoundedWhenTheModemIsSilent_data();
    void isBoundedWhenTheModemIsSilent();
    void isNotTakenInByOtherThings_data();
    void isNotTakenInByOtherThings();
    void makesAQuietOrTerseModemSpeak_data();
    void makesAQuietOrTerseModemSpeak();
    void callsAModemBackFromACall();
    void speaksGenericallyToAModemThatDoesNotTell_data();
    void speaksGenericallyToAModemThatDoesNotTell();
    void runsNoEventLoop();
    void hasThePortForItself();
    void givesThePortFree_data();
    void givesThePortFree();
    void namesTheHolderOfALockedPort();
    void namesTheHolderOfAnExclusivePort();
    void endsWhenTheModemVanishes_data();
    void endsWhenTheModemVanishes();
    void endsWhenBrokenOff_data();
    void endsWhenBrokenOff();
    void isBoundedWhenTheModemHangs();
    void resetsWithTheMakersProfile();
    void resetsAModemThatSaysNothingWhileItRestarts();
    void switchesTheRadioOn();
    void waitsUntilTheCardIsReady();
    void doesNotWaitWithoutACard_data();
    void doesNotWaitWithoutACard();
    void waitsUntilTheModemIsRegistered_data();
    void waitsUntilTheModemIsRegistered();
    void saysWhyThereIsNoNetwork_data();
    void saysWhyThereIsNoNetwork();
};

namespace {

using namespace std::chrono_literals;

constexpr int kBaudrate = 57600;
constexpr qint64 kAtOnce = 900; // ms: less than any limit of the driver

// Not patient enough for a real network.
class QuickModem : public AtModem
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QuickModem)

public:
    using AtModem::AtModem;

protected:
    std::chrono::milliseconds registrationLimit() const override { return 300ms; }
};

struct Bench
{
    QTemporaryDir locks;
    ScriptedModem modem;
    QuickModem driver{nullptr, locks.path()};
    QElapsedTimer clock;

    Bench() { clock.start(); }

    QStringList lockFiles() const { return QDir(locks.path()).entryList(QDir::Files); }

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

void TestAtModem::takesABareName()
{
    Bench bench;
    bench.modem.start();
    QVERIFY(bench.modem.path().startsWith(QStringLiteral("/dev/")));
    const QString bare = bench.modem.path().mid(5);
    QVERIFY2(bench.driver.open(bare, kBaudrate, 3), qPrintable(bench.driver.lastError()));
}

void TestAtModem::opensAgain()
{
    Bench bench;
    QVERIFY(bench.open());
    QVERIFY(bench.driver.open(bench.modem.path(), 9600, 1));
    QVERIFY(bench.driver.isOpen());
    QVERIFY(!bench.driver.open(QStringLiteral("/dev/none"), kBaudrate, 1));
    QVERIFY(!bench.driver.isOpen());
    QCOMPARE(bench.driver.gsmDialect(), QString());
    QCOMPARE(bench.driver.modemName(), QString());
    QCOMPARE(bench.lockFiles(), QStringList());
    QVERIFY(bench.driver.open(bench.modem.path(), kBaudrate, 1));
    QCOMPARE(bench.driver.lastError(), QString());
}

void TestAtModem::refusesWhatIsNoPort_data()
{
    QTest::addColumn<QString>("port");
    QTest::addColumn<int>("baudrate");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const char *port, int baudrate, const char *error) {
        QTest::newRow(name) << QString::fromLatin1(port) << baudrate << QString::fromLatin1(error);
    };
    row("no name", "", kBaudrate, "No port is chosen.");
    row("missing", "ttyNone0", kBaudrate, "There is no port /dev/ttyNone0.");
    row("missing path", "/none/tty", kBaudrate, "There is no port /none/tty.");
    row("device that is no terminal", "/dev/null", kBaudrate, "/dev/null is not a serial port.");
    row("folder", "/dev", kBaudrate, "The port /dev cannot be opened: Is a directory.");
    row("speed 0", "/dev/none", 0, "0 is not a line speed.");
    row("negative speed", "/dev/none", -5, "-5 is not a line speed.");
}

void TestAtModem::refusesWhatIsNoPort()
{
    QFETCH(QString, port);
    QFETCH(int, baudrate);
    Bench bench;
    QVERIFY(!bench.driver.open(port, baudrate, 3));
    QVERIFY(bench.clock.elapsed() < kAtOnce);
    QVERIFY(!bench.driver.isOpen());
    QTEST(bench.driver.lastError(), "error");
    QCOMPARE(bench.driver.error(), AtModem::Error::Port);
    QCOMPARE(bench.lockFiles(), QStringList());
}

void TestAtModem::isBoundedWhenTheModemIsSilent_data()
{
    QTest::addColumn<int>("attempts");
    QTest::addColumn<int>("asked");
    QTest::newRow("one attempt") << 1 << 1;
    QTest::newRow("three attempts") << 3 << 3;
    QTest::newRow("negative is one") << -3 << 1;
}

void TestAtModem::isBoundedWhenTheModemIsSilent()
{
    QFETCH(int, attempts);
    QFETCH(int, asked);
    Bench bench;
    bench.modem.silent = true;
    QVERIFY(!bench.open(attempts));
    QVERIFY2(bench.clock.elapsed() >= 1000LL * asked,
        qPrintable(QString::number(bench.clock.elapsed())));
    QVERIFY2(bench.clock.elapsed() < 1000LL * asked + 2500,
        qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The modem on %1 does not answer.").arg(bench.modem.path()));
    QCOMPARE(bench.driver.error(), AtModem::Error::NoAnswer);
    QVERIFY(!bench.driver.isOpen());
    QCOMPARE(bench.lockFiles(), QStringList());
}

void TestAtModem::isNotTakenInByOtherThings_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QByteArray>("endless");
    QTest::addColumn<bool>("echo");
    QTest::addColumn<QString>("error");
    const QString notAModem
        = QStringLiteral("What answers on %1 is not a modem, or its speed is another.");
    const QByteArray none;
    QTest::newRow("garbage") << QByteArray("\x80\xff\x01~}#\r\n") << none << false << notAModem;
    QTest::newRow("echo alone") << QByteArray(" ") << none << true << notAModem;
    QTest::newRow("another protocol") << QByteArray("login: ") << none << false << notAModem;
    QTest::newRow("lines without end")
        << none << QByteArray("\r\n^RSSI:17\r\n") << false << notAModem;
    QTest::newRow("bytes without a line end")
        << none << QByteArray(1000, 'x') << false << notAModem;
    QTest::newRow("errors alone") << QByteArray("\r\nERROR\r\n") << none << false
                                  << QStringLiteral("The modem on %1 refuses every command.");
}

void TestAtModem::isNotTakenInByOtherThings()
{
    QFETCH(QByteArray, answer);
    QFETCH(QByteArray, endless);
    QFETCH(bool, echo);
    QFETCH(QString, error);
    Bench bench;
    bench.modem.echo = echo;
    bench.modem.answerToAll = answer;
    bench.modem.endless = endless;
    if (!endless.isEmpty())
        bench.modem.answers = {{"AT", ""}, {"ATQ0V1", ""}};
    QVERIFY(!bench.open(1));
    QVERIFY2(bench.clock.elapsed() < 5000, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.driver.lastError(), error.arg(bench.modem.path()));
    QCOMPARE(bench.driver.error(),
        error.contains(QLatin1String("refuses")) ? AtModem::Error::Refused
                                                 : AtModem::Error::NoAnswer);
}

void TestAtModem::makesAQuietOrTerseModemSpeak_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("results off") << QByteArray();
    QTest::newRow("results as numbers") << QByteArray("0\r");
}

void TestAtModem::makesAQuietOrTerseModemSpeak()
{
    QFETCH(QByteArray, answer);
    Bench bench;
    bench.modem.answers["AT"] = answer;
    QVERIFY2(bench.open(), qPrintable(bench.driver.lastError()));
    QCOMPARE(bench.modem.commands().mid(0, 2), QList<QByteArray>({"AT", "ATQ0V1"}));
}

void TestAtModem::callsAModemBackFromACall()
{
    Bench bench;
    bench.modem.online = true;
    QVERIFY2(bench.open(1), qPrintable(bench.driver.lastError()));
    QVERIFY(bench.clock.elapsed() < 3000);
    QCOMPARE(bench.modem.commands().mid(0, 2), QList<QByteArray>({"ATH", "AT"}));
}

void TestAtModem::speaksGenericallyToAModemThatDoesNotTell_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<QByteArray>("information");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("dialect");
    const QString generic = QStringLiteral("generic 3GPP");
    const QByteArray error = "\r\nERROR\r\n";
    QTest::newRow("refuses to tell") << error << error << QString() << generic;
    QTest::newRow("tells nothing")
        << ScriptedModem::ok() << ScriptedModem::ok() << QString() << generic;
    QTest::newRow("goes silent") << QByteArray() << QByteArray() << QString() << generic;
    QTest::newRow("tells by ATI") << error
                                  << ScriptedModem::ok(
                                         "Manufacturer: ZTE CORPORATION\r\nModel: MF192")
                                  << QStringLiteral("ZTE CORPORATION MF192")
                                  << QStringLiteral("ZTE");
    QTest::newRow("unheard of") << ScriptedModem::ok("Somebody") << error
                                << QStringLiteral("Somebody") << generic;
}

void TestAtModem::speaksGenericallyToAModemThatDoesNotTell()
{
    QFETCH(QByteArray, maker);
    QFETCH(QByteArray, information);
    Bench bench;
    bench.modem.answers["AT+CGMI"] = maker;
    bench.modem.answers["AT+CGMM"] = "\r\nERROR\r\n";
    bench.modem.answers["ATI"] = information;
    QVERIFY(bench.open());
    QTEST(bench.driver.modemName(), "name");
    QTEST(bench.driver.gsmDialect(), "dialect");
}

void TestAtModem::runsNoEventLoop()
{
    Bench bench;
    bool ran = false;
    QTimer::singleShot(0, &bench.driver, [&ran] { ran = true; });
    QVERIFY(bench.open());
    bench.driver.reset(true);
    bench.driver.beforeDial();
    bench.driver.close();
    QVERIFY(!ran);
    QTRY_VERIFY(ran);
}

void TestAtModem::hasThePortForItself()
{
    Bench bench;
    QVERIFY(bench.open());
    const QString number = bench.modem.path().section(QLatin1Char('/'), -1);
    QCOMPARE(bench.lockFiles(),
        QStringList(
            {QStringLiteral("LCK..%1").arg(number), QStringLiteral("LCK..pts_%1").arg(number)}));

    AtModem second(nullptr, bench.locks.path());
    QVERIFY(!second.open(bench.modem.path(), kBaudrate, 1));
    QCOMPARE(second.lastError(),
        QStringLiteral("The port %1 is in use by this program itself.").arg(bench.modem.path()));
    const QTemporaryDir otherLocks;
    AtModem careless(nullptr, otherLocks.path());
    QVERIFY(!careless.open(bench.modem.path(), kBaudrate, 1));
    QCOMPARE(careless.lastError(),
        QStringLiteral("The port %1 is in use by another program.").arg(bench.modem.path()));
    QVERIFY(bench.driver.isOpen());
}

void TestAtModem::givesThePortFree_data()
{
    QTest::addColumn<bool>("byClosing");
    QTest::newRow("closed") << true;
    QTest::newRow("destroyed") << false;
}

void TestAtModem::givesThePortFree()
{
    QFETCH(bool, byClosing);
    Bench bench;
    bench.modem.start();
    auto driver = std::make_unique<AtModem>(nullptr, bench.locks.path());
    QVERIFY(driver->open(bench.modem.path(), kBaudrate, 1));
    if (byClosing)
        driver->close();
    else
        driver.reset();
    QCOMPARE(bench.lockFiles(), QStringList());
    const int port
        = ::open(QFile::encodeName(bench.modem.path()).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    QVERIFY(port >= 0);
    int exclusive = 1;
    QCOMPARE(::ioctl(port, TIOCGEXCL, &exclusive), 0);
    QCOMPARE(exclusive, 0);
    ::close(port);
}

void TestAtModem::namesTheHolderOfALockedPort()
{
    Bench bench;
    const OtherUser other(bench.modem.path());
    QFile lock(bench.locks.filePath(
        QStringLiteral("LCK..%1").arg(bench.modem.path().section(QLatin1Char('/'), -1))));
    QVERIFY(lock.open(QFile::WriteOnly));
    lock.write(QByteArray::number(other.pid()).rightJustified(10) + '\n');
    lock.close();
    QVERIFY(!bench.open());
    QVERIFY(bench.clock.elapsed() < kAtOnce);
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The port %1 is in use by tst_atmodem (process %2).")
            .arg(bench.modem.path())
            .arg(other.pid()));
    QCOMPARE(bench.driver.error(), AtModem::Error::Port);
    QVERIFY(bench.modem.commands().isEmpty());
}

void TestAtModem::namesTheHolderOfAnExclusivePort()
{
    Bench bench;
    const OtherUser other(bench.modem.path());
    QVERIFY(!bench.open());
    QVERIFY(bench.clock.elapsed() < kAtOnce);
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The port %1 is in use by tst_atmodem (process %2).")
            .arg(bench.modem.path())
            .arg(other.pid()));
    QCOMPARE(bench.driver.error(), AtModem::Error::Port);
    QVERIFY(bench.modem.commands().isEmpty());
    QCOMPARE(bench.lockFiles(), QStringList());
}

void TestAtModem::endsWhenTheModemVanishes_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<bool>("opens");
    const auto row = [](const char *command, bool opens) {
        QTest::newRow(command) << QByteArray(command) << opens;
    };
    row("AT", false);
    row("AT+CGMI", false);
    row("AT+CGMM", false);
    row("ATZ", true);
    row("AT+CMEE", true);
    row("AT+CFUN", true);
    row("AT+CPIN", true);
    row("AT+CREG?", true);
    row("AT+CREG=0", true);
    row("AT^CURC", true);
}

void TestAtModem::endsWhenTheModemVanishes()
{
    QFETCH(QByteArray, command);
    Bench bench;
    bench.modem.hangUpOn = command;
    QTEST(bench.open(), "opens");
    bench.driver.reset(true);
    bench.driver.beforeDial();
    QVERIFY2(bench.clock.elapsed() < kAtOnce, qPrintable(QString::number(bench.clock.elapsed())));
    QVERIFY(!bench.driver.isOpen());
    QCOMPARE(bench.driver.gsmDialect(), QString());
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The modem on %1 has gone: its port was unplugged or hung up.")
            .arg(bench.modem.path()));
    QCOMPARE(bench.lockFiles(), QStringList());
    QVERIFY(bench.modem.commands().last().startsWith(command));
}

void TestAtModem::endsWhenBrokenOff_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"AT", "AT+CGMI", "AT+CGMM", "ATZ", "AT+CREG?", "AT+CREG=0"})
        QTest::newRow(command) << QByteArray(command);
}

void TestAtModem::endsWhenBrokenOff()
{
    QFETCH(QByteArray, command);
    std::atomic<bool> abort{false};
    Bench bench;
    bench.modem.answers[command].clear();
    bench.modem.onCommand = [&](const QByteArray &heard) {
        if (heard == command)
            abort = true;
    };
    bench.driver.setAbortFlag(&abort);
    bench.open();
    bench.driver.reset(true);
    bench.driver.beforeDial();
    QVERIFY2(bench.clock.elapsed() < kAtOnce, qPrintable(QString::number(bench.clock.elapsed())));
    QVERIFY(!bench.driver.isOpen());
    QCOMPARE(bench.driver.lastError(),
        QStringLiteral("The work with the modem on %1 was broken off.").arg(bench.modem.path()));
    QCOMPARE(bench.lockFiles(), QStringList());
    QVERIFY(!bench.driver.open(bench.modem.path(), kBaudrate, 3));
    QCOMPARE(bench.modem.commands().last(), command);
}

void TestAtModem::isBoundedWhenTheModemHangs()
{
    Bench bench;
    bench.modem.onCommand = [&bench](const QByteArray &command) {
        if (command == "AT+CGMM") // the last of open()
            bench.modem.silent = true;
    };
    QVERIFY(bench.open());
    bench.clock.start();
    bench.driver.reset(true);
    QVERIFY2(bench.clock.elapsed() < 5000, qPrintable(QString::number(bench.clock.elapsed())));
    const QString error
        = QStringLiteral("The modem on %1 no longer answers.").arg(bench.modem.path());
    QCOMPARE(bench.driver.lastError(), error);
    bench.clock.start();
    bench.driver.beforeDial();
    QVERIFY2(bench.clock.elapsed() < 2000, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.driver.lastError(), error);
    bench.clock.start();
    bench.driver.close();
    QVERIFY(bench.clock.elapsed() < kAtOnce);
}

void TestAtModem::resetsWithTheMakersProfile()
{
    Bench bench;
    bench.modem.answers["ATZ"] = "\r\nERROR\r\n";
    bench.modem.answers["AT&F"] = ScriptedModem::ok();
    QVERIFY(bench.open());
    bench.driver.reset(false);
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(
        bench.modem.commands().mid(3), QList<QByteArray>({"ATZ", "AT&F", "ATQ0V1E0", "AT+CMEE=1"}));
}

void TestAtModem::resetsAModemThatSaysNothingWhileItRestarts()
{
    Bench bench;
    bench.modem.answers["ATZ"] = QByteArray();
    QVERIFY(bench.open());
    bench.driver.reset(false);
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(
        bench.modem.commands().mid(3), QList<QByteArray>({"ATZ", "AT", "ATQ0V1E0", "AT+CMEE=1"}));
}

void TestAtModem::switchesTheRadioOn()
{
    Bench bench;
    bench.modem.answers["AT+CFUN?"] = ScriptedModem::ok("+CFUN: 4");
    bench.modem.answers["AT+CFUN=1"] = ScriptedModem::ok();
    QVERIFY(bench.open());
    bench.driver.reset(true);
    QCOMPARE(bench.driver.lastError(), QString());
    QVERIFY(bench.modem.commands().contains("AT+CFUN=1"));
}

void TestAtModem::waitsUntilTheCardIsReady()
{
    Bench bench;
    int asked = 0;
    bench.modem.onCommand = [&](const QByteArray &command) {
        if (command == "AT+CPIN?")
            bench.modem.answers[command]
                = ++asked < 3 ? "\r\n+CME ERROR: 14\r\n" : ScriptedModem::ok("+CPIN: READY");
    };
    QVERIFY(bench.open());
    bench.driver.reset(true);
    QCOMPARE(bench.driver.lastError(), QString());
    QCOMPARE(bench.modem.commands().count("AT+CPIN?"), 3);
}

void TestAtModem::doesNotWaitWithoutACard_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<qint64>("longest");
    QTest::addColumn<QString>("error");
    const qint64 appears = 5000;
    QTest::newRow("PIN asked") << ScriptedModem::ok("+CPIN: SIM PIN") << kAtOnce
                               << QStringLiteral("The SIM card asks for its PIN.");
    QTest::newRow("PUK asked") << QByteArray("\r\n+CME ERROR: SIM PUK required\r\n") << kAtOnce
                               << QStringLiteral("The SIM card is locked: it asks for its PUK.");
    QTest::newRow("no card") << QByteArray("\r\n+CME ERROR: 10\r\n") << appears
                             << QStringLiteral("There is no SIM card in the modem.");
    QTest::newRow("card broken") << QByteArray("\r\n+CME ERROR: 13\r\n") << appears
                                 << QStringLiteral("The SIM card does not work in this modem.");
    QTest::newRow("no word on the card")
        << QByteArray("\r\nERROR\r\n") << appears
        << QStringLiteral("The modem does not tell the state of its SIM card.");
}

void TestAtModem::doesNotWaitWithoutACard()
{
    QFETCH(QByteArray, answer);
    QFETCH(qint64, longest);
    Bench bench;
    bench.modem.answers["AT+CPIN?"] = answer;
    QVERIFY(bench.open());
    bench.clock.start();
    bench.driver.reset(true);
    QVERIFY2(bench.clock.elapsed() < longest, qPrintable(QString::number(bench.clock.elapsed())));
    QTEST(bench.driver.lastError(), "error");
    QVERIFY(bench.driver.isOpen());
    QVERIFY(!bench.modem.commands().contains("AT+CREG?"));
}

void TestAtModem::waitsUntilTheModemIsRegistered_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<QByteArray>("answer");
    QTest::newRow("voice network") << QByteArray("AT+CREG?") << ScriptedModem::ok("+CREG: 0,1");
    QTest::newRow("packet network") << QByteArray("AT+CGREG?") << ScriptedModem::ok("+CGREG: 0,5");
    QTest::newRow("LTE") << QByteArray("AT+CEREG?") << ScriptedModem::ok("+CEREG: 0,1");
}

void TestAtModem::waitsUntilTheModemIsRegistered()
{
    QFETCH(QByteArray, command);
    QFETCH(QByteArray, answer);
    QTemporaryDir locks;
    ScriptedModem modem;
    modem.answers["AT+CREG?"] = ScriptedModem::ok("+CREG: 0,2");
    int asked = 0;
    modem.onCommand = [&](const QByteArray &heard) {
        if (heard == command && ++asked == 2)
            modem.answers[command] = answer;
    };
    modem.start();
    AtModem driver(nullptr, locks.path());
    QVERIFY(driver.open(modem.path(), kBaudrate, 1));
    driver.reset(true);
    QCOMPARE(driver.lastError(), QString());
    QCOMPARE(modem.commands().count(command), 2);
}

void TestAtModem::saysWhyThereIsNoNetwork_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("error");
    QTest::newRow("searching") << ScriptedModem::ok("+CREG: 0,2")
                               << QStringLiteral("The modem finds no network.");
    QTest::newRow("denied") << ScriptedModem::ok("+CREG: 0,3")
                            << QStringLiteral("The network refuses the SIM card.");
    QTest::newRow("does not tell")
        << QByteArray("\r\nERROR\r\n") << QStringLiteral("The modem finds no network.");
}

void TestAtModem::saysWhyThereIsNoNetwork()
{
    QFETCH(QByteArray, answer);
    Bench bench;
    bench.modem.answers["AT+CREG?"] = answer;
    QVERIFY(bench.open());
    bench.driver.reset(true);
    QTEST(bench.driver.lastError(), "error");
    QVERIFY(bench.driver.isOpen());
}

QTEST_GUILESS_MAIN(TestAtModem)

#include "tst_atmodem.moc"
