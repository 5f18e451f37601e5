// What the broker costs, measured against the least that could be done in its place:
//  - loadState() against a bare call of a D-Bus method that returns the same bytes;
//  - a durable saveSettings() against the same SQLite transaction made directly, plus a bare call
//    of a D-Bus method that takes the same bytes.
// Prints medians and ratios; exits with 1 when a ratio is over its limit.

#include "busconnection.h"
#include "busnames.h"
#include "privatebus.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDataStream>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStorageInfo>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace tavbus;

namespace {

constexpr int kWarmUp = 100;
constexpr int kLoads = 4000;
constexpr int kSaves = 1500;
constexpr double kMostForALoad = 2.0;
constexpr double kMostForASave = 1.3;

QVariantMap stateBody()
{
    return {{QStringLiteral("serviceMode"), 4}, {QStringLiteral("port"), QStringLiteral("ttyUSB0")},
        {QStringLiteral("operator"), QStringLiteral("MTS RUS")}, {QStringLiteral("level"), 17},
        {QStringLiteral("cells"), QVariantList({11, 12, 13})}};
}

// Three modems, each as a service keeps one. The number makes every record another one: SQLite does
// not write what is there already.
QVariantList settingsList(int number)
{
    QVariantList list{QVariantMap({{QStringLiteral("version"), number},
        {QStringLiteral("order"),
            QStringList({QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c")})}})};
    for (const QString &port :
        {QStringLiteral("ttyUSB0"), QStringLiteral("ttyUSB3"), QStringLiteral("ttyACM0")})
        list.append(QVariantMap({{QStringLiteral("name"), QStringLiteral("E173-") + port},
            {QStringLiteral("port"), port}, {QStringLiteral("baudRate"), 57600},
            {QStringLiteral("user"), QStringLiteral("mts")},
            {QStringLiteral("phones"), QStringList(QStringLiteral("*99#"))},
            {QStringLiteral("init"),
                QStringList({QStringLiteral("ATZ"),
                    QStringLiteral("AT+CGDCONT=1,\"IP\",\"internet.mts.ru\"")})},
            {QStringLiteral("dial"), QStringLiteral("ATDT")},
            {QStringLiteral("type"), QStringLiteral("Analog Modem")},
            {QStringLiteral("newPppd"), true}, {QStringLiteral("stupidMode"), true}}));
    return list;
}

QDBusMessage bareCall(const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(QStringLiteral("org.ovrel.Bare"),
        QStringLiteral("/org/ovrel/Bare"), QStringLiteral("org.ovrel.Bare1"), method);
    message.setArguments(arguments);
    return message;
}

void require(bool condition, const char *what)
{
    if (!condition)
        qFatal("%s", what);
}

/// The same table, journal and transaction as the broker's, without the broker.
class DirectStore
{
    Q_DISABLE_COPY_MOVE(DirectStore)

public:
    explicit DirectStore(const QString &file)
    {
        auto database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
        database.setDatabaseName(file);
        require(database.open(), "cannot open the direct store");
        for (const char *const statement : {"PRAGMA locking_mode = EXCLUSIVE",
                 "PRAGMA journal_mode = WAL", "PRAGMA synchronous = FULL",
                 "CREATE TABLE settings (owner TEXT PRIMARY KEY, description TEXT NOT NULL,"
                 " stamp INTEGER NOT NULL, body BLOB NOT NULL) WITHOUT ROWID"})
            require(QSqlQuery().exec(QLatin1String(statement)), statement);
        m_save = QSqlQuery(database);
        m_save.prepare(QStringLiteral(
            "INSERT INTO settings (owner, description, stamp, body) VALUES (?, ?, ?, ?)"
            " ON CONFLICT (owner) DO UPDATE SET description = excluded.description,"
            " stamp = excluded.stamp, body = excluded.body"));
    }

    void save(const ClientSettings &settings)
    {
        QByteArray body;
        QDataStream stream(&body, QIODevice::WriteOnly);
        stream << QVariant(settings.settings());
        m_save.addBindValue(settings.owner());
        m_save.addBindValue(settings.description());
        m_save.addBindValue(settings.dt().toMSecsSinceEpoch());
        m_save.addBindValue(body);
        require(m_save.exec(), "the direct store fails");
        m_save.finish();
    }

private:
    QSqlQuery m_save;
};

/// Runs both, turn about, so that whatever else the machine does meets both; prints and judges.
bool compare(const char *name, int rounds, double most, const std::function<void()> &ours,
    const std::function<void()> &bare)
{
    std::vector<qint64> took[2];
    QElapsedTimer clock;
    for (int i = 0; i < kWarmUp + rounds; ++i) {
        for (const bool isBare : {false, true}) {
            clock.start();
            isBare ? bare() : ours();
            if (i >= kWarmUp)
                took[isBare ? 1 : 0].push_back(clock.nsecsElapsed());
        }
    }
    double median[2];
    for (int i = 0; i < 2; ++i) {
        const auto middle = took[i].begin() + rounds / 2;
        std::nth_element(took[i].begin(), middle, took[i].end());
        median[i] = double(*middle) / 1000;
    }
    const double ratio = median[0] / median[1];
    const bool good = ratio <= most;
    std::printf("%-14s %5d rounds: broker %8.1f us, bare %8.1f us (medians), ratio %.2f, at most"
                " %.1f: %s\n",
        name, rounds, median[0], median[1], ratio, most, good ? "good" : "TOO SLOW");
    return good;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const PrivateBus bus;
    qputenv("TAV_TERMINAL_CONF", "/nonexistent");
    qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toUtf8());
    const QByteArray fileSystem = QStorageInfo(bus.directory()).fileSystemType();
    std::printf("databases in %s (%s)\n", qPrintable(bus.directory()), fileSystem.constData());
    require(fileSystem != "tmpfs", "a durable save cannot be measured in memory: set TMPDIR");

    QProcess service;
    service.setProcessChannelMode(QProcess::ForwardedChannels);
    service.start(QStringLiteral(BARE_SERVICE), {bus.address()});
    BusConnection connection;
    require(connection.open(bus.address(), QDeadlineTimer(5000)), "no bus");
    const QDBusConnection caller = connection.bus();
    while (!caller.interface()->isServiceRegistered(QStringLiteral("org.ovrel.Bare")))
        require(service.state() != QProcess::NotRunning, "the bare service does not run");

    TavBusAgent agent(BUSNAME_TAVMODEMS);
    TavBusQueryHandler handler(BUSNAME_TESTDEALER);
    require(agent.open() && handler.open(), "no broker");
    ClientState state;
    state.setDt(QDateTime::currentDateTime());
    state.setBody(stateBody());
    require(agent.publishState(state), "cannot publish");
    caller.call(bareCall(
        QStringLiteral("setState"), {state.dt().toMSecsSinceEpoch(), QVariant(state.body())}));
    const bool loadsWell = compare(
        "loadState", kLoads, kMostForALoad,
        [&] {
            ClientState loaded;
            require(handler.loadState(BUSNAME_TAVMODEMS, loaded), "loadState fails");
        },
        [&] {
            const auto reply
                = caller.call(bareCall(QStringLiteral("loadState"), {BUSNAME_TAVMODEMS}));
            require(reply.type() == QDBusMessage::ReplyMessage, "the bare call fails");
        });

    DirectStore direct(bus.directory() + QStringLiteral("/direct.db"));
    ClientSettings settings;
    settings.setOwner(BUSNAME_TAVMODEMS);
    settings.setDescription(QStringLiteral("From test dealer"));
    settings.setDt(QDateTime::currentDateTime());
    QList<QVariantList> lists;
    for (int i = 0; i < 2 * (kWarmUp + kSaves); ++i)
        lists.append(settingsList(i));
    const bool savesWell = compare(
        "saveSettings", kSaves, kMostForASave,
        [&] {
            settings.setSettings(lists.takeLast());
            require(handler.saveSettings(settings), "saveSettings fails");
        },
        [&] {
            settings.setSettings(lists.takeLast());
            direct.save(settings);
            const auto reply = caller.call(bareCall(QStringLiteral("saveSettings"),
                {settings.owner(), settings.description(), settings.dt().toMSecsSinceEpoch(),
                    QVariant(settings.settings())}));
            require(reply.type() == QDBusMessage::ReplyMessage, "the bare call fails");
        });

    service.terminate();
    service.waitForFinished();
    return loadsWell && savesWell ? 0 : 1;
}
