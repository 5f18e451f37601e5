#include "busconnection.h"
#include "buserrors.h"
#include "busnames.h"
#include "privatebus.h"
#include "rawbus.h"
#include "records.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QPoint>
#include <QProcess>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <vector>

#include <sys/resource.h>

using namespace tavbus;

namespace {

// What a broker that cannot run says.
QByteArray lastWords(const QString &address, const QString &database)
{
    QProcess broker;
    broker.start(QStringLiteral(TAVBUSD),
        {QStringLiteral("--address"), address, QStringLiteral("--database"), database});
    if (!broker.waitForFinished() || broker.exitStatus() != QProcess::NormalExit
        || broker.exitCode() != 1)
        return "it ran or crashed";
    return broker.readAllStandardError();
}

} // namespace

/// The broker against clients that do not use the library, or mean harm.
class BrokerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void callsOfTheUnregisteredAreRefused_data();
    void callsOfTheUnregisteredAreRefused();
    void everybodyMayRead();
    void badArgumentsAreRefused_data();
    void badArgumentsAreRefused();
    void wrongSignaturesAreRefused_data();
    void wrongSignaturesAreRefused();
    void stateOfAnotherAgentIsRefused();
    void typedContainersOfOtherClientsAreTaken();
    void ownersAreBounded();
    void agentsOfAConnectionAreBounded();
    void forgedCommandIsNotHeard();
    void floodOfCommandsIsRefused();
    void bytesOfGoodFormAreAnswered();
    void garbageOnTheWireHurtsNobodyElse_data();
    void garbageOnTheWireHurtsNobodyElse();
    void secondBrokerGivesWay();
    void brokerWithoutABusEnds();
    void laterDatabaseIsNotTouched();
    void damagedRecordIsTold();
    void fullDiskIsTold_data();
    void fullDiskIsTold();
    void commandForAnAgentThatNeverComesIsRefused();

private:
    void setUp(const PrivateBus::Options &options);
    // Calls the broker from the raw connection; the error's name, or empty.
    QString call(const QString &method, const QVariantList &arguments);

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<TavBusQueryHandler> m_handler; // open, registered
    std::unique_ptr<BusConnection> m_raw; // open, not registered
    QVariantList m_answer; // of the last call
};

void BrokerTest::init()
{
    setUp(PrivateBus::Options());
}

void BrokerTest::setUp(const PrivateBus::Options &options)
{
    m_bus = std::make_unique<PrivateBus>(options);
    m_handler = std::make_unique<TavBusQueryHandler>(BUSNAME_TESTDEALER);
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
    m_raw = std::make_unique<BusConnection>();
    QVERIFY(m_raw->open(m_bus->address(), QDeadlineTimer(5000)));
}

void BrokerTest::cleanup()
{
    m_raw.reset();
    m_handler.reset();
    m_bus.reset();
}

QString BrokerTest::call(const QString &method, const QVariantList &arguments)
{
    auto message
        = QDBusMessage::createMethodCall(BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE, method);
    message.setArguments(arguments);
    const QDBusMessage reply = m_raw->bus().call(message);
    m_answer = reply.arguments();
    return reply.errorName();
}

void BrokerTest::callsOfTheUnregisteredAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");

    QTest::newRow("save") << QStringLiteral("saveSettings")
                          << QVariantList(
                                 {BUSNAME_TAVMODEMS, QString(), Q_INT64_C(0), QVariantList({2})});
    QTest::newRow("remove") << QStringLiteral("removeSettings")
                            << QVariantList({BUSNAME_TAVMODEMS, true});
    QTest::newRow("publish") << QStringLiteral("publishState")
                             << QVariantList({BUSNAME_TAVMODEMS, Q_INT64_C(0), QVariantMap()});
    QTest::newRow("command") << QStringLiteral(
        "sendCommand") << QVariantList({BUSNAME_TAVMODEMS, QStringLiteral("stop"), QVariantMap()});
}

void BrokerTest::callsOfTheUnregisteredAreRefused()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);

    QCOMPARE(call(method, arguments), ERROR_NOT_REGISTERED);
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList({1}));
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body().size(), 1);

    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, false}), QString());
    QCOMPARE(call(method, arguments), QString());
    // One round trip of the agent's after which a command would have come.
    QVERIFY(agent.publishState(QVariantMap()));
    QTRY_COMPARE(received.count(), method == QLatin1String("sendCommand") ? 1 : 0);
}

void BrokerTest::everybodyMayRead()
{
    QCOMPARE(call(QStringLiteral("loadSettings"), {BUSNAME_TAVMODEMS}), QString());
    QCOMPARE(m_answer.size(), 3);
    QCOMPARE(call(QStringLiteral("loadSettings"), {BUSNAME_WATCHDOGS}), ERROR_NOT_FOUND);
    QCOMPARE(call(QStringLiteral("loadState"), {BUSNAME_WATCHDOGS}), ERROR_NOT_FOUND);
}

void BrokerTest::badArgumentsAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");

    const QString save = QStringLiteral("saveSettings");
    const QString publish = QStringLiteral("publishState");
    const QString command = QStringLiteral("sendCommand");
    const QString stop = QStringLiteral("stop");
    const QStringList badNames{QString(), QStringLiteral("a b"), QStringLiteral("a/../b"),
        QStringLiteral("a\n"), QStringLiteral("\u00e4"), QString(256, QLatin1Char('a')),
        QString(1024 * 1024, QLatin1Char('a'))};
    for (const QString &name : badNames) {
        const QByteArray shown = name.left(10).toUtf8() + ' ' + QByteArray::number(name.size());
        const auto row = [&](const char *what) -> QTestData & {
            return QTest::newRow((what + (": name \"" + shown + '"')).constData());
        };
        row("register") << QStringLiteral("registerAgent") << QVariantList({name, true});
        row("save") << save << QVariantList({name, QString(), Q_INT64_C(0), QVariantList()});
        row("load") << QStringLiteral("loadSettings") << QVariantList({name});
        row("remove") << QStringLiteral("removeSettings") << QVariantList({name, true});
        row("publish") << publish << QVariantList({name, Q_INT64_C(0), QVariantMap()});
        row("state") << QStringLiteral("loadState") << QVariantList({name});
        row("command to") << command << QVariantList({name, stop, QVariantMap()});
        row("command") << command << QVariantList({BUSNAME_TAVMODEMS, name, QVariantMap()});
    }

    QTest::newRow("description too long")
        << save
        << QVariantList(
               {BUSNAME_TAVMODEMS, QString(4097, QLatin1Char('a')), Q_INT64_C(0), QVariantList()});
    const QVector<QPair<const char *, QVariant>> badValues{
        {"record too large", QByteArray(1024 * 1024, 'x')},
        {"record far too large", QByteArray(20 * 1024 * 1024, 'x')},
        {"nested too deep", records::nested(17)},
        {"nested as deep as D-Bus goes", records::nested(30)},
        {"structure", QVariant(QPoint(1, 2))},
        {"map by numbers", QVariant::fromValue(QMap<int, QString>({{1, QString()}}))},
        {"object path", QVariant::fromValue(QDBusObjectPath(QStringLiteral("/")))},
        {"byte", QVariant::fromValue(uchar(1))},
        {"16-bit number", QVariant::fromValue(short(1))},
    };
    for (const auto &[what, value] : badValues) {
        const QVariantMap map{{QStringLiteral("a"), value}};
        const auto row = [what = QByteArray(what)](const char *method) -> QTestData & {
            return QTest::newRow((method + (": " + what)).constData());
        };
        row("save") << save
                    << QVariantList(
                           {BUSNAME_TAVMODEMS, QString(), Q_INT64_C(0), QVariantList({value})});
        row("publish") << publish << QVariantList({BUSNAME_TAVMODEMS, Q_INT64_C(0), map});
        row("command") << command << QVariantList({BUSNAME_TAVMODEMS, stop, map});
    }
}

void BrokerTest::badArgumentsAreRefused()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, false}), QString());

    QCOMPARE(call(method, arguments), QDBusError::errorString(QDBusError::InvalidArgs));
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList({1}));
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body(), QVariantMap({{QStringLiteral("serviceMode"), 6}}));
    QCoreApplication::processEvents();
    QCOMPARE(received.count(), 0);
}

void BrokerTest::wrongSignaturesAreRefused_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");

    QTest::newRow("no arguments") << QStringLiteral("saveSettings") << QVariantList();
    QTest::newRow("number for a name") << QStringLiteral("loadState") << QVariantList({1});
    QTest::newRow("text for the settings")
        << QStringLiteral("saveSettings")
        << QVariantList({BUSNAME_TAVMODEMS, QString(), Q_INT64_C(0), QStringLiteral("x")});
    QTest::newRow("list for a map") << QStringLiteral(
        "sendCommand") << QVariantList({BUSNAME_TAVMODEMS, QStringLiteral("stop"), QVariantList()});
    QTest::newRow("no such method") << QStringLiteral("deleteLater") << QVariantList();
    QTest::newRow("the class's own slots") << QStringLiteral("start") << QVariantList();
}

void BrokerTest::wrongSignaturesAreRefused()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, true}), QString());
    const qint64 broker = m_bus->brokerPid();
    QCOMPARE(call(method, arguments), QDBusError::errorString(QDBusError::UnknownMethod));
    QCOMPARE(m_bus->brokerPid(), broker);
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList({1}));
}

void BrokerTest::stateOfAnotherAgentIsRefused()
{
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 4}}));
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_WATCHDOGS, true}), QString());
    QCOMPARE(
        call(QStringLiteral("publishState"),
            {BUSNAME_TAVMODEMS, Q_INT64_C(1), QVariantMap({{QStringLiteral("serviceMode"), 6}})}),
        QDBusError::errorString(QDBusError::AccessDenied));
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body().value(QStringLiteral("serviceMode")), QVariant(4));
}

void BrokerTest::typedContainersOfOtherClientsAreTaken()
{
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, true}), QString());
    const QVariantList settings{QVariant::fromValue(QList<int>({1, 2})),
        QVariant::fromValue(QMap<QString, QString>({{QStringLiteral("a"), QStringLiteral("b")}})),
        QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(3))))};
    QCOMPARE(call(QStringLiteral("saveSettings"),
                 {BUSNAME_TAVMODEMS, QString(), Q_INT64_C(0), settings}),
        QString());
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded.settings(),
        QVariantList(
            {QVariantList({1, 2}), QVariantMap({{QStringLiteral("a"), QStringLiteral("b")}}), 3}));
}

void BrokerTest::ownersAreBounded()
{
    int saved = 1; // init() did
    while (saved < 1000 && m_handler->saveSettings(records::settings(QString::number(saved), {})))
        ++saved;
    QCOMPARE(saved, 256);
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TESTDEALER, false}), QString());
    QCOMPARE(call(QStringLiteral("saveSettings"),
                 {BUSNAME_WATCHDOGS, QString(), Q_INT64_C(0), QVariantList()}),
        QDBusError::errorString(QDBusError::LimitsExceeded));
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
}

void BrokerTest::agentsOfAConnectionAreBounded()
{
    const QString method = QStringLiteral("registerAgent");
    for (int i = 0; i < 16; ++i)
        QCOMPARE(call(method, {QString::number(i), true}), QString());
    QCOMPARE(call(method, {BUSNAME_WATCHDOGS, true}),
        QDBusError::errorString(QDBusError::LimitsExceeded));
}

void BrokerTest::forgedCommandIsNotHeard()
{
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);
    // To every name on the bus, the agent's among them.
    const QStringList names = m_raw->bus().interface()->registeredServiceNames();
    for (const QString &name : names) {
        auto forged = QDBusMessage::createTargetedSignal(
            name, BROKER_PATH, BROKER_INTERFACE, QStringLiteral("commandReceived"));
        forged.setArguments({BUSNAME_TAVMODEMS, QStringLiteral("forged"), QVariantMap()});
        QVERIFY(m_raw->bus().send(forged));
    }
    QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}}));
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(received.at(0).at(0).value<TavBusCommand>().name(), QStringLiteral("stop"));
}

void BrokerTest::floodOfCommandsIsRefused()
{
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);
    QCOMPARE(call(QStringLiteral("registerAgent"), {QStringLiteral("evil"), false}), QString());
    auto message = QDBusMessage::createMethodCall(
        BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE, QStringLiteral("sendCommand"));
    message.setArguments({BUSNAME_TAVMODEMS, QStringLiteral("stop"), QVariantMap()});
    constexpr int sent = 5000;
    std::vector<QDBusPendingCall> flood;
    flood.reserve(sent);
    for (int i = 0; i < sent; ++i)
        flood.push_back(m_raw->bus().asyncCall(message));
    int refused = 0;
    for (QDBusPendingCall &one : flood) {
        one.waitForFinished();
        if (!one.isError())
            continue;
        QCOMPARE(one.error().type(), QDBusError::LimitsExceeded);
        ++refused;
    }
    QVERIFY(refused > 0);
    // Others still may.
    QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("restart"), {}}));
    QTRY_VERIFY(!received.isEmpty()
        && received.constLast().at(0).value<TavBusCommand>().name() == QLatin1String("restart"));
    QVERIFY(sent - refused >= 1000);
    QCOMPARE(received.count(), sent - refused + 1);
}

void BrokerTest::bytesOfGoodFormAreAnswered()
{
    RawBus raw(m_bus->address());
    QVERIFY(raw.open());
    QVERIFY(raw.send(RawBus::methodCall(BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE,
        QStringLiteral("loadState"), "s", RawBus::string("watchdogs"))));
    QVERIFY(raw.hears("Error.NotFound"));
}

void BrokerTest::garbageOnTheWireHurtsNobodyElse_data()
{
    QTest::addColumn<QByteArray>("bytes");

    const QString path = BROKER_PATH;
    const auto call = [&](const QByteArray &signature, const QByteArray &body) {
        return RawBus::methodCall(BROKER_SERVICE, path, BROKER_INTERFACE,
            signature == "s" ? QStringLiteral("loadState") : QStringLiteral("saveSettings"),
            signature, body);
    };
    QTest::newRow("invalid UTF-8") << call("s", RawBus::string("\xff\xfe"));
    QTest::newRow("overlong UTF-8") << call("s", RawBus::string("\xc0\xaf"));
    QTest::newRow("half a surrogate pair") << call("s", RawBus::string("\xed\xa0\x80"));
    QTest::newRow("NUL in a string") << call("s", RawBus::string(QByteArray("a\0b", 3)));
    QTest::newRow("string longer than its message") << call("s", QByteArray("\xff\xff\xff\x7f", 4));
    QTest::newRow("body of another signature") << call("sxav", RawBus::string("a"));
    QTest::newRow("no D-Bus at all") << QByteArray("GET / HTTP/1.1\r\n\r\n");
    QTest::newRow("size beyond all bounds")
        << QByteArray("l\1\0\1\xff\xff\xff\xff\1\0\0\0\xff\xff\xff\xff", 16);
}

void BrokerTest::garbageOnTheWireHurtsNobodyElse()
{
    QFETCH(const QByteArray, bytes);
    const qint64 broker = m_bus->brokerPid();
    RawBus raw(m_bus->address());
    QVERIFY(raw.open());
    QVERIFY(raw.send(bytes));
    QVERIFY(raw.isDisconnected());
    QCOMPARE(m_bus->brokerPid(), broker);
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList({1}));
}

void BrokerTest::secondBrokerGivesWay()
{
    const qint64 broker = m_bus->brokerPid();
    const QByteArray said
        = lastWords(m_bus->address(), m_bus->directory() + QStringLiteral("/second.db"));
    QVERIFY2(said.contains("cannot take the name"), said.constData());
    QCOMPARE(m_bus->brokerPid(), broker);
}

void BrokerTest::brokerWithoutABusEnds()
{
    const QByteArray said
        = lastWords(QStringLiteral("unix:path=") + m_bus->directory() + QStringLiteral("/none"),
            m_bus->directory() + QStringLiteral("/second.db"));
    QVERIFY2(said.contains("cannot connect to the bus"), said.constData());
}

void BrokerTest::laterDatabaseIsNotTouched()
{
    m_bus->endBroker();
    {
        QFile database(m_bus->databaseFile());
        QVERIFY(database.open(QIODevice::ReadWrite));
        QVERIFY(database.seek(60)); // the schema's version in the file's header, big-endian
        QCOMPARE(database.write(QByteArray("\0\0\0\7", 4)), 4);
    }
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    const QByteArray said = lastWords(m_bus->address(), m_bus->databaseFile());
    QVERIFY2(said.contains("later version"), said.constData());
}

void BrokerTest::damagedRecordIsTold()
{
    m_bus->endBroker();
    const QString name = QStringLiteral("behind");
    {
        auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setDatabaseName(m_bus->databaseFile());
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(QStringLiteral("UPDATE settings SET body = x'00000009'")));
    }
    QSqlDatabase::removeDatabase(name);
    QCOMPARE(call(QStringLiteral("loadSettings"), {BUSNAME_TAVMODEMS}), ERROR_STORE_FAILED);
    QVERIFY(m_answer.value(0).toString().contains(BUSNAME_TAVMODEMS));
    // To the tool it is no record of nothing, which it would take for "no modems yet".
    QList<ClientSettings> list{records::settings(BUSNAME_WATCHDOGS, {})};
    QVERIFY(!m_handler->loadSettings(QStringList(BUSNAME_TAVMODEMS), list));
    QCOMPARE(list.size(), 1);
}

void BrokerTest::fullDiskIsTold_data()
{
    QTest::addColumn<QString>("method");
    QTest::addColumn<QVariantList>("arguments");

    QTest::newRow("save") << QStringLiteral("saveSettings")
                          << QVariantList(
                                 {BUSNAME_TAVMODEMS, QString(), Q_INT64_C(0), QVariantList({2})});
    QTest::newRow("remove") << QStringLiteral("removeSettings")
                            << QVariantList({BUSNAME_TAVMODEMS, true});
    QTest::newRow("publish") << QStringLiteral("publishState")
                             << QVariantList({BUSNAME_TAVMODEMS, Q_INT64_C(0), QVariantMap()});
}

void BrokerTest::fullDiskIsTold()
{
    QFETCH(const QString, method);
    QFETCH(const QVariantList, arguments);
    cleanup();
    PrivateBus::Options options;
    // As a terminal starts it, with bus and database from the configuration. A limit of what it may
    // write stands in for the disk, and would end it by a signal otherwise.
    options.brokerCommand = QStringLiteral("/bin/sh -c \"trap '' XFSZ; exec '" TAVBUSD "'\"");
    setUp(options);
    QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, false}), QString());
    const auto broker = pid_t(m_bus->brokerPid());
    rlimit former{};
    QCOMPARE(::prlimit(broker, RLIMIT_FSIZE, nullptr, &former), 0);
    const rlimit full{0, former.rlim_max};
    QCOMPARE(::prlimit(broker, RLIMIT_FSIZE, &full, nullptr), 0);

    QCOMPARE(call(method, arguments), ERROR_STORE_FAILED);
    QVERIFY(!m_answer.value(0).toString().isEmpty());
    QCOMPARE(pid_t(m_bus->brokerPid()), broker);
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList({1}));

    QCOMPARE(::prlimit(broker, RLIMIT_FSIZE, &former, nullptr), 0);
    QCOMPARE(call(method, arguments), QString());
}

void BrokerTest::commandForAnAgentThatNeverComesIsRefused()
{
    m_bus->killBroker();
    QVERIFY(!m_handler->sendMessage({BUSNAME_WATCHDOGS, QStringLiteral("stop"), {}}));
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    qDBusRegisterMetaType<QList<int>>();
    qDBusRegisterMetaType<QMap<QString, QString>>();
    qDBusRegisterMetaType<QMap<int, QString>>();
    BrokerTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "brokertest.moc"
