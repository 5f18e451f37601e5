#include "modemsettings.h"
#include "modemsfinder.h"
#include "otheruser.h"
#include "scriptedmodem.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <vector>

#include <sys/resource.h>
#include <unistd.h>

class TestModemsFinder : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void findsModems();
    void knowsAModemByItsImei();
    void findsWhatEachDialectSays_data();
    void findsWhatEachDialectSays();
    void fillsInTheOperator_data();
    void fillsInTheOperator();
    void asksAndChangesNothing();
    void asksAtTheSpeedOfTheKnownRecord();
    void givesSilentPortsUpSideBySide();
    void doesNotBlockTheEventLoop();
    void isNotTakenInByOtherThings_data();
    void isNotTakenInByOtherThings();
    void passesOverPortsHeldByOthers_data();
    void passesOverPortsHeldByOthers();
    void saysWhyThereAreNone_data();
    void saysWhyThereAreNone();
    void endsWhenModemsVanish();
    void findsAModemThatHangs_data();
    void findsAModemThatHangs();
    void endsWithoutThreadsToSpare();
    void leavesNothingOpen();
    void ignoresAStartWhileRunning();
    void searchesAgainFromItsOwnSignals();
    void mayBeDeletedInItsOwnSignals_data();
    void mayBeDeletedInItsOwnSignals();
    void endsWithTheFinder();
    void looksAtTheConfiguredPorts();
};

namespace {

constexpr int kLongest = 20000; // ms, no search of these takes that long
constexpr qint64 kAtOnce = 900; // ms: less than a silent port takes
constexpr qint64 kSilent = 3000; // ms: what a silent port may take
const QByteArray IMEI = "353142033840706";
const QByteArray OTHER_IMEI = "866884040012345";

// Looks at the ports of the test only.
class Finder : public ModemsFinder
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Finder)

public:
    using ModemsFinder::ModemsFinder;
    QList<SearchPort> searched;

protected:
    QList<SearchPort> ports() const override { return searched; }
};

struct Bench
{
    QTemporaryDir locks;
    std::vector<std::unique_ptr<ScriptedModem>> modems;
    std::unique_ptr<Finder> finder = std::make_unique<Finder>(nullptr, locks.path());
    QSignalSpy found{finder.get(), &ModemsFinder::devicesFinded};
    QSignalSpy none{finder.get(), &ModemsFinder::noDevices};
    QSignalSpy finished{finder.get(), &ModemsFinder::finished};
    QElapsedTimer clock;

    ScriptedModem &add(const QByteArray &imei = IMEI, int interface = -1)
    {
        modems.push_back(std::make_unique<ScriptedModem>());
        ScriptedModem &modem = *modems.back();
        modem.answers["AT+CGSN"] = ScriptedModem::ok(imei);
        modem.answers["AT+CIMI"] = ScriptedModem::ok("250011234567890");
        modem.answers["AT+COPS=3,2"] = ScriptedModem::ok();
        modem.answers["AT+COPS?"] = ScriptedModem::ok("+COPS: 0,2,\"25001\",2");
        finder->searched << searchPortOf(modem.path());
        finder->searched.last().usbInterface = interface;
        return modem;
    }
    void start()
    {
        for (const auto &modem : modems)
            modem->start();
        clock.start();
        finder->start();
    }
    // Whether it ended, with as many signals as there must be.
    bool search()
    {
        start();
        return finished.wait(kLongest) && finished.size() == 1 && found.size() + none.size() == 1;
    }
    QList<ModemInfo> records() const { return found.value(0).value(0).value<QList<ModemInfo>>(); }
    QString reason() const { return none.value(0).value(0).toString(); }
    QStringList lockFiles() const { return QDir(locks.path()).entryList(QDir::Files); }
};

int entries(const char *folder)
{
    return QDir(QLatin1String(folder)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot).size();
}

QString expectedName(const char *model, const ScriptedModem &modem)
{
    return QStringLiteral("%1-pts_%2")
        .arg(QLatin1String(model), modem.path().section(QLatin1Char('/'), -1));
}

} // namespace

void TestModemsFinder::init()
{
    ModemSettings().setModems({});
}

void TestModemsFinder::findsModems()
{
    Bench bench;
    const ScriptedModem &first = bench.add();
    ScriptedModem &second = bench.add(OTHER_IMEI);
    second.answers["AT+CGMI"] = ScriptedModem::ok("SIMCOM_Ltd");
    second.answers["AT+CGMM"] = ScriptedModem::ok("SIMCOM_SIM800");
    int foundBefore = -1;
    connect(bench.finder.get(), &ModemsFinder::finished, this,
        [&] { foundBefore = bench.found.size(); });
    QVERIFY(bench.search());
    QCOMPARE(foundBefore, 1);
    QVERIFY(bench.clock.elapsed() < kAtOnce);
    QVERIFY(!bench.finder->isRunning());

    QMap<QString, ModemInfo> records;
    const auto all = bench.records();
    for (const ModemInfo &info : all)
        records.insert(info.connectionName(), info);
    QCOMPARE(records.keys(),
        QStringList({expectedName("E1550", first), expectedName("SIMCOM_SIM800", second)}));
    ModemInfo expected;
    expected.setConnectionName(expectedName("E1550", first));
    expected.setPortName(first.path());
    OperatorData data;
    QVERIFY(ModemSettings().getOperatorData(250, 1, data));
    expected.setInitLines({data.modemInitLine()});
    expected.setUserName(data.userName());
    expected.setPassword(data.password());
    QCOMPARE(records.value(expected.connectionName()), expected);

    const auto found = bench.finder->found();
    QCOMPARE(found.size(), 2);
    QCOMPARE(found.first().manufacturer, QStringLiteral("huawei"));
    QCOMPARE(found.first().model, QStringLiteral("E1550"));
    QCOMPARE(found.first().imei, QString::fromLatin1(IMEI));
    QCOMPARE(bench.lockFiles(), QStringList());
}

void TestModemsFinder::knowsAModemByItsImei()
{
    Bench bench;
    for (const QByteArray &imei : {IMEI, OTHER_IMEI}) {
        for (const int interface : {2, 0, 1})
            bench.add(imei, interface);
    }
    QVERIFY(bench.search());
    const auto found = bench.finder->found();
    QCOMPARE(found.size(), 2);
    QCOMPARE(bench.records().size(), 2);
    for (const FoundModem &modem : found) {
        QCOMPARE(modem.ports.size(), 3);
        const std::size_t dataPort = modem.imei.toLatin1() == IMEI ? 1 : 4;
        QCOMPARE(modem.info.portName(), bench.modems.at(dataPort)->path());
    }
}

void TestModemsFinder::findsWhatEachDialectSays_data()
{
    QTest::addColumn<QByteArray>("maker");
    QTest::addColumn<QByteArray>("model");
    QTest::addColumn<int>("dataInterface");
    QTest::newRow("Huawei") << QByteArray("huawei") << QByteArray("E173") << 0;
    QTest::newRow("Quectel") << QByteArray("Quectel") << QByteArray("EC25") << 3;
    QTest::newRow("SIMCom") << QByteArray("SIMCOM INCORPORATED") << QByteArray("SIM7600E-H") << 3;
    QTest::newRow("ZTE") << QByteArray("ZTE CORPORATION") << QByteArray("MF180") << 3;
    QTest::newRow("Sierra") << QByteArray("Sierra Wireless") << QByteArray("MC7304") << 3;
    QTest::newRow("Telit") << QByteArray("Telit") << QByteArray("LE910") << 0;
}

void TestModemsFinder::findsWhatEachDialectSays()
{
    QFETCH(QByteArray, maker);
    QFETCH(QByteArray, model);
    QFETCH(int, dataInterface);
    Bench bench;
    for (int interface = 0; interface < 4; ++interface) {
        ScriptedModem &modem = bench.add(IMEI, interface);
        modem.answers["AT+CGMI"] = ScriptedModem::ok(maker);
        modem.answers["AT+CGMM"] = ScriptedModem::ok(model);
    }
    QVERIFY(bench.search());
    QCOMPARE(bench.records().size(), 1);
    const ScriptedModem &expected = *bench.modems.at(static_cast<std::size_t>(dataInterface));
    QCOMPARE(bench.records().first().portName(), expected.path());
    QCOMPARE(bench.records().first().connectionName(), expectedName(model.constData(), expected));
}

void TestModemsFinder::fillsInTheOperator_data()
{
    QTest::addColumn<QByteArray>("selected"); // answer to AT+COPS?
    QTest::addColumn<QByteArray>("imsi");
    QTest::addColumn<int>("mnc"); // of Russia; 0: no operator
    const QByteArray here = ScriptedModem::ok("+COPS: 0,2,\"25001\",2");
    const QByteArray nowhere = ScriptedModem::ok("+COPS: 0");
    const QByteArray mts = ScriptedModem::ok("250011234567890");
    const QByteArray error = "\r\nERROR\r\n";
    QTest::newRow("registered at home") << here << mts << 1;
    QTest::newRow("not registered: the card's") << nowhere << mts << 1;
    QTest::newRow("roaming: the card's") << ScriptedModem::ok("+COPS: 0,2,\"26201\",2") << mts << 1;
    QTest::newRow("card asks for its PIN") << nowhere << QByteArray("\r\n+CME ERROR: 11\r\n") << 0;
    QTest::newRow("card does not tell, registered") << here << error << 1;
    QTest::newRow("nothing is told") << error << error << 0;
    QTest::newRow("unknown operator")
        << ScriptedModem::ok("+COPS: 0,2,\"00101\",2") << ScriptedModem::ok("001011234567890") << 0;
    QTest::newRow("unknown card in a known network")
        << here << ScriptedModem::ok("001011234567890") << 1;
}

void TestModemsFinder::fillsInTheOperator()
{
    QFETCH(QByteArray, selected);
    QFETCH(QByteArray, imsi);
    QFETCH(int, mnc);
    Bench bench;
    ScriptedModem &modem = bench.add();
    modem.answers["AT+COPS?"] = selected;
    modem.answers["AT+CIMI"] = imsi;
    QVERIFY(bench.search());
    QCOMPARE(bench.records().size(), 1);
    OperatorData data;
    QCOMPARE(ModemSettings().getOperatorData(250, mnc, data), mnc != 0);
    const ModemInfo info = bench.records().first();
    QCOMPARE(info.initLines(), mnc != 0 ? QStringList(data.modemInitLine()) : QStringList());
    QCOMPARE(info.userName(), data.userName());
    QCOMPARE(info.password(), data.password());
}

void TestModemsFinder::asksAndChangesNothing()
{
    Bench bench;
    ScriptedModem &modem = bench.add();
    modem.answers["AT+CPIN?"] = ScriptedModem::ok("+CPIN: SIM PIN");
    modem.answers["AT+CIMI"] = "\r\n+CME ERROR: 11\r\n";
    QVERIFY(bench.search());
    QCOMPARE(bench.records().size(), 1);
    const auto commands = modem.commands();
    for (const QByteArray &command : commands) {
        // The form of the operator's name is no more than the form of an answer.
        const bool isQuestion = command == "AT" || command == "AT+CGMI" || command == "AT+CGMM"
            || command == "AT+CGSN" || command == "AT+CIMI" || command == "AT+COPS=3,2"
            || command == "AT+COPS?";
        QVERIFY2(isQuestion, command.constData());
    }
}

void TestModemsFinder::asksAtTheSpeedOfTheKnownRecord()
{
    Bench bench;
    const ScriptedModem &known = bench.add();
    const ScriptedModem &broken = bench.add(OTHER_IMEI);
    ModemInfo record;
    record.setPortName(known.path());
    record.setBaudrate(115200);
    ModemInfo brokenRecord;
    brokenRecord.setPortName(broken.path());
    brokenRecord.setBaudrate(0);
    ModemSettings().setModems({{QStringLiteral("a"), record}, {QStringLiteral("b"), brokenRecord}});
    QVERIFY(bench.search());
    const auto records = bench.records();
    QCOMPARE(records.size(), 2);
    for (const ModemInfo &info : records)
        QCOMPARE(info.baudrate(), info.portName() == known.path() ? 115200 : 57600);
}

void TestModemsFinder::givesSilentPortsUpSideBySide()
{
    Bench bench;
    for (int i = 0; i < 8; ++i)
        bench.add().silent = i < 7;
    QVERIFY(bench.search());
    QVERIFY2(bench.clock.elapsed() < kSilent, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.records().size(), 1);
    QCOMPARE(bench.finder->failures().size(), 7);
    for (int i = 0; i < 7; ++i) {
        QCOMPARE(bench.finder->failures().at(i).port, bench.modems.at(std::size_t(i))->path());
        QCOMPARE(bench.finder->failures().at(i).error, AtError::NoAnswer);
    }
}

void TestModemsFinder::doesNotBlockTheEventLoop()
{
    Bench bench;
    for (int i = 0; i < 8; ++i)
        bench.add().silent = i < 4;
    QElapsedTimer sinceTurn;
    qint64 longest = 0;
    QTimer turns;
    connect(&turns, &QTimer::timeout, this, [&] { longest = qMax(longest, sinceTurn.restart()); });
    turns.start(5);
    sinceTurn.start();
    bench.start();
    QVERIFY2(bench.clock.elapsed() < 100, qPrintable(QString::number(bench.clock.elapsed())));
    QVERIFY(bench.finished.wait(kLongest));
    QVERIFY2(longest < 250, qPrintable(QString::number(longest)));
}

void TestModemsFinder::isNotTakenInByOtherThings_data()
{
    QTest::addColumn<QByteArray>("endless");
    QTest::addColumn<QByteArray>("answerToAll");
    QTest::newRow("garbage") << QByteArray("\xff\x00\x81noise", 8) << QByteArray();
    QTest::newRow("lines without end")
        << QByteArray("$GPGGA,123519,4807.038,N\r\n") << QByteArray();
    QTest::newRow("refuses everything") << QByteArray() << QByteArray("\r\nERROR\r\n");
    QTest::newRow("a shell") << QByteArray() << QByteArray("sh: command not found\r\n$ ");
}

void TestModemsFinder::isNotTakenInByOtherThings()
{
    QFETCH(QByteArray, endless);
    QFETCH(QByteArray, answerToAll);
    Bench bench;
    ScriptedModem &thing = bench.add();
    thing.endless = endless;
    thing.silent = !endless.isEmpty();
    thing.answerToAll = answerToAll;
    const ScriptedModem &modem = bench.add();
    QVERIFY(bench.search());
    QVERIFY2(bench.clock.elapsed() < kSilent, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.records().size(), 1);
    QCOMPARE(bench.records().first().portName(), modem.path());
    QCOMPARE(bench.finder->failures().size(), 1);
    QCOMPARE(bench.finder->failures().first().port, thing.path());
}

void TestModemsFinder::passesOverPortsHeldByOthers_data()
{
    QTest::addColumn<bool>("byLockFile");
    QTest::newRow("lock file") << true;
    QTest::newRow("opened exclusively") << false;
}

void TestModemsFinder::passesOverPortsHeldByOthers()
{
    QFETCH(bool, byLockFile);
    Bench bench;
    const ScriptedModem &held = bench.add();
    const ScriptedModem &free = bench.add(OTHER_IMEI);
    // The lock is this other program's; what it has open is then another terminal.
    const ScriptedModem elsewhere;
    const OtherUser other(byLockFile ? elsewhere.path() : held.path());
    if (byLockFile) {
        QFile lock(bench.locks.filePath(
            QStringLiteral("LCK..%1").arg(held.path().section(QLatin1Char('/'), -1))));
        QVERIFY(lock.open(QFile::WriteOnly));
        lock.write(QByteArray::number(other.pid()).rightJustified(10) + '\n');
    }
    const QString text = QStringLiteral("The port %1 is in use by tst_modemsfinde (process %2).")
                             .arg(held.path())
                             .arg(other.pid());
    QTest::ignoreMessage(QtInfoMsg,
        QRegularExpression(
            QRegularExpression::escape(QStringLiteral("%1: %2").arg(held.path(), text))));
    QVERIFY(bench.search());
    QVERIFY(bench.clock.elapsed() < kAtOnce);
    QCOMPARE(bench.records().size(), 1);
    QCOMPARE(bench.records().first().portName(), free.path());
    QCOMPARE(held.commands(), QList<QByteArray>());
    QCOMPARE(bench.finder->failures().size(), 1);
    QCOMPARE(bench.finder->failures().first().text, text);
    QCOMPARE(bench.finder->failures().first().error, AtError::Port);
}

void TestModemsFinder::saysWhyThereAreNone_data()
{
    QTest::addColumn<int>("silent");
    QTest::addColumn<bool>("held");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no ports") << 0 << false
                              << QStringLiteral(
                                     "This machine has no serial ports. Is the modem plugged in?");
    QTest::newRow("a silent port") << 1 << false << QStringLiteral("No modem answers on any port.");
    QTest::newRow("silent ports") << 2 << false << QStringLiteral("No modem answers on any port.");
    QTest::newRow("a port that another program holds")
        << 1 << true
        << QStringLiteral("No modem answers on any port.\n"
                          "The port %1 is in use by tst_modemsfinde (process %2).");
}

void TestModemsFinder::saysWhyThereAreNone()
{
    QFETCH(int, silent);
    QFETCH(bool, held);
    QFETCH(QString, reason);
    Bench bench;
    for (int i = 0; i < silent; ++i)
        bench.add().silent = true;
    std::unique_ptr<OtherUser> other;
    if (held) {
        const ScriptedModem &modem = bench.add();
        other = std::make_unique<OtherUser>(modem.path());
        reason = reason.arg(modem.path()).arg(other->pid());
    }
    QVERIFY(bench.search());
    QCOMPARE(bench.reason(), reason);
    QVERIFY(bench.finder->found().isEmpty());
}

// The modem is pulled out at each command of a search in turn.
void TestModemsFinder::endsWhenModemsVanish()
{
    const QByteArray unknownCard = ScriptedModem::ok("001011234567890");
    QList<QByteArray> commands;
    {
        Bench bench;
        ScriptedModem &modem = bench.add();
        modem.answers["AT+CIMI"] = unknownCard; // so that the network is asked too
        QVERIFY(bench.search());
        commands = modem.commands();
    }
    QCOMPARE(commands.size(), 7);
    const int descriptors = entries("/proc/self/fd");
    for (const QByteArray &command : qAsConst(commands)) {
        Bench bench;
        const ScriptedModem &stays = bench.add();
        ScriptedModem &goes = bench.add(OTHER_IMEI);
        goes.answers["AT+CIMI"] = unknownCard;
        goes.hangUpOn = command;
        QVERIFY2(bench.search(), command.constData());
        QVERIFY2(bench.clock.elapsed() < kAtOnce, command.constData());
        QCOMPARE(bench.records().size(), 1);
        QCOMPARE(bench.records().first().portName(), stays.path());
        QCOMPARE(bench.finder->failures().size(), 1);
        QCOMPARE(bench.finder->failures().first().text,
            QStringLiteral("The modem on %1 has gone: its port was unplugged or hung up.")
                .arg(goes.path()));
        QCOMPARE(bench.lockFiles(), QStringList());
    }
    QCOMPARE(entries("/proc/self/fd"), descriptors);
}

void TestModemsFinder::findsAModemThatHangs_data()
{
    QTest::addColumn<QByteArray>("command");
    for (const char *command : {"AT+CGMM", "AT+CGSN", "AT+CIMI"})
        QTest::newRow(command) << QByteArray(command);
}

// It is there, and is not asked question after question.
void TestModemsFinder::findsAModemThatHangs()
{
    QFETCH(QByteArray, command);
    Bench bench;
    ScriptedModem &modem = bench.add();
    modem.onCommand = [&](const QByteArray &heard) { modem.silent |= heard == command; };
    modem.answers[command].clear();
    QVERIFY(bench.search());
    QVERIFY2(bench.clock.elapsed() < 8000, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.records().size(), 1);
    QCOMPARE(bench.records().first().portName(), modem.path());
}

// What is left of the address space is too little for the stacks of so many.
void TestModemsFinder::endsWithoutThreadsToSpare()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("sanitizers take address space of their own");
#endif
    Bench bench;
    for (int i = 0; i < 16; ++i)
        bench.add().silent = true;
    for (const auto &modem : bench.modems)
        modem->start();
    QFile status(QStringLiteral("/proc/self/statm"));
    QVERIFY(status.open(QFile::ReadOnly));
    const auto pages = status.readAll().split(' ').first().toULong();
    rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_AS, &before), 0);
    const auto pageSize = static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
    const rlimit tight = {pages * pageSize + 4UL * 1024 * 1024, before.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_AS, &tight), 0);
    bench.finder->start();
    QCOMPARE(::setrlimit(RLIMIT_AS, &before), 0);
    QVERIFY(bench.finished.wait(kLongest));
    QCOMPARE(bench.none.size(), 1);
    const auto failures = bench.finder->failures();
    QCOMPARE(failures.size(), 16);
    QVERIFY(std::any_of(failures.begin(), failures.end(), [](const PortFailure &failure) {
        return failure.text.endsWith(QStringLiteral("the system has no thread to spare."));
    }));
}

void TestModemsFinder::leavesNothingOpen()
{
    Bench bench;
    for (int i = 0; i < 6; ++i)
        bench.add(i < 3 ? IMEI : OTHER_IMEI).silent = i == 5;
    QVERIFY(bench.search());
    const int descriptors = entries("/proc/self/fd");
    const int threads = entries("/proc/self/task");
    for (int round = 0; round < 3; ++round) {
        bench.finder->start();
        QVERIFY(bench.finished.wait(kLongest));
        QCOMPARE(bench.lockFiles(), QStringList());
        QCOMPARE(entries("/proc/self/fd"), descriptors);
        // One that has ended is listed for a moment longer, and may have been at first, too.
        QTRY_VERIFY(entries("/proc/self/task") <= threads);
    }
}

void TestModemsFinder::ignoresAStartWhileRunning()
{
    Bench bench;
    const ScriptedModem &modem = bench.add();
    bench.start();
    QVERIFY(bench.finder->isRunning());
    bench.finder->start();
    connect(
        bench.finder.get(), &ModemsFinder::devicesFinded, bench.finder.get(), &ModemsFinder::start);
    QVERIFY(bench.finished.wait(kLongest));
    QCOMPARE(bench.found.size(), 1);
    QVERIFY(!bench.finder->isRunning());
    QCOMPARE(modem.commands().count("AT"), 1);
}

void TestModemsFinder::searchesAgainFromItsOwnSignals()
{
    Bench bench;
    bench.add();
    connect(bench.finder.get(), &ModemsFinder::finished, this, [&] {
        if (bench.finished.size() < 3)
            bench.finder->start();
    });
    bench.start();
    QTRY_COMPARE_WITH_TIMEOUT(bench.finished.size(), 3, kLongest);
    QCOMPARE(bench.found.size(), 3);
}

void TestModemsFinder::mayBeDeletedInItsOwnSignals_data()
{
    QTest::addColumn<int>("when");
    QTest::newRow("modems found") << 0;
    QTest::newRow("no modems") << 1;
    QTest::newRow("finished") << 2;
}

void TestModemsFinder::mayBeDeletedInItsOwnSignals()
{
    QFETCH(int, when);
    Bench bench;
    bench.add().answerToAll = when == 1 ? "\r\nERROR\r\n" : "";
    const QPointer<Finder> finder = bench.finder.get();
    const auto drop = [&] { bench.finder.reset(); };
    if (when == 0)
        connect(finder, &ModemsFinder::devicesFinded, this, drop);
    else if (when == 1)
        connect(finder, &ModemsFinder::noDevices, this, drop);
    else
        connect(finder, &ModemsFinder::finished, this, drop);
    bench.start();
    QTRY_VERIFY_WITH_TIMEOUT(finder.isNull(), kLongest);
    QCOMPARE(bench.finished.size(), when == 2 ? 1 : 0);
}

void TestModemsFinder::endsWithTheFinder()
{
    const int threads = entries("/proc/self/task");
    Bench bench;
    for (int i = 0; i < 8; ++i)
        bench.add().silent = true;
    bench.add().answers["AT+CGMM"].clear(); // silent in the middle
    const int withModems = threads + static_cast<int>(bench.modems.size());
    bench.start();
    QTRY_VERIFY(bench.modems.back()->commands().contains("AT+CGMM"));
    bench.clock.start();
    bench.finder.reset();
    QVERIFY2(bench.clock.elapsed() < kAtOnce, qPrintable(QString::number(bench.clock.elapsed())));
    QCOMPARE(bench.finished.size() + bench.found.size() + bench.none.size(), 0);
    QCOMPARE(bench.lockFiles(), QStringList());
    QTRY_COMPARE(entries("/proc/self/task"), withModems);
}

void TestModemsFinder::looksAtTheConfiguredPorts()
{
    class Configured : public ModemsFinder
    {
    public:
        using ModemsFinder::ports;
    };
    QStringList before;
    const auto listed = Configured().ports();
    for (const SearchPort &port : listed)
        before << port.name;

    const QTemporaryDir folder;
    const QString name = folder.filePath(QStringLiteral("terminal.conf"));
    QFile file(name);
    QVERIFY(file.open(QFile::WriteOnly));
    file.write("[modems]\nextraPorts=/dev/ttyOfTheTest, /dev/pts/ofTheTest\n");
    file.close();
    const QByteArray usual = qgetenv("TAV_TERMINAL_CONF");
    qputenv("TAV_TERMINAL_CONF", QFile::encodeName(name));
    QStringList names;
    const auto all = Configured().ports();
    for (const SearchPort &port : all)
        names << port.name;
    qputenv("TAV_TERMINAL_CONF", usual);
    QCOMPARE(names,
        before
            + QStringList({QStringLiteral("ttyOfTheTest"), QStringLiteral("/dev/pts/ofTheTest")}));
}

QTEST_GUILESS_MAIN(TestModemsFinder)

#include "tst_modemsfinder.moc"
