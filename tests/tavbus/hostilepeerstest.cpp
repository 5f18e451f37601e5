#include "busconnection.h"
#include "buserrors.h"
#include "busnames.h"
#include "privatebus.h"
#include "rawbus.h"
#include "records.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

using namespace tavbus;

// What one client does to the others: attacks run while a well-behaved client works. The latter is
// answered, the broker stays small and is the same afterwards. TAV_HOSTILE_SECONDS makes each
// attack last so long, with ten times as many calls, and asks for every answer within the tenth of
// a second that they have on a machine with nothing else to do; a busy one is asked for half of
// them in time.

namespace {

constexpr qint64 kAnswerLimit = 100; // ms
constexpr qint64 kBusyLimit = 1000; // ms
constexpr int kMemoryLimit = 64 * 1024; // kB
constexpr int kConnections = 1000;

int strictSeconds()
{
    return qEnvironmentVariableIntValue("TAV_HOSTILE_SECONDS");
}

bool isSanitized()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#else
    return false;
#endif
}

/// The highest that the resident memory of a process has been, in kB.
qint64 peakOf(qint64 pid)
{
    QFile file(QStringLiteral("/proc/%1/status").arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray status = file.readAll();
    const int at = status.indexOf("VmHWM:");
    return status.mid(at + 6, 30).simplified().split(' ').first().toLongLong();
}

/// The arguments of a call as D-Bus has them on the wire.
class Body
{
public:
    Body &string(const QByteArray &text)
    {
        align(4);
        m_bytes += RawBus::string(text);
        return *this;
    }
    Body &number(quint32 number)
    {
        align(4);
        for (int i = 0; i < 4; ++i)
            m_bytes += static_cast<char>(number >> (8 * i));
        return *this;
    }
    Body &stamp()
    {
        align(8);
        m_bytes += QByteArray(8, 0);
        return *this;
    }
    /// a{sv} with one array of bytes; none when there is none
    Body &map(int size)
    {
        QByteArray entry;
        if (size > 0) {
            Body inner;
            inner.string("a");
            inner.m_bytes += QByteArray("\2ay\0", 4);
            inner.number(static_cast<quint32>(size));
            entry = inner.m_bytes + QByteArray(size, 'x');
        }
        number(static_cast<quint32>(entry.size()));
        align(8);
        m_bytes += entry;
        return *this;
    }
    /// av with one array of bytes
    Body &list(int size)
    {
        Body inner;
        inner.m_bytes += QByteArray("\2ay\0", 4);
        inner.number(static_cast<quint32>(size));
        number(static_cast<quint32>(inner.m_bytes.size() + size));
        m_bytes += inner.m_bytes + QByteArray(size, 'x');
        return *this;
    }
    QByteArray bytes() const { return m_bytes; }

private:
    void align(int to)
    {
        while (m_bytes.size() % to != 0)
            m_bytes += '\0';
    }

    QByteArray m_bytes;
};

/// A call of the broker that wants no answer: nothing then bounds how many are under way.
QByteArray call(const char *method, const QByteArray &signature, const QByteArray &body)
{
    QByteArray bytes = RawBus::methodCall(BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE,
        QString::fromLatin1(method), signature, body);
    bytes[2] = 1;
    return bytes;
}

/// Sends the same over and over from a connection of its own, in a thread of its own.
class Attacker
{
    Q_DISABLE_COPY_MOVE(Attacker)

public:
    /// `perSecond` is how often.
    Attacker(const QString &address, const QByteArray &bytes, int perSecond)
        : m_bus(address)
        , m_bytes(bytes)
        , m_perSecond(perSecond)
    {
        const QByteArray hello
            = call("registerAgent", "sb", Body().string("evil").number(1).bytes());
        if (!m_bus.open() || !m_bus.send(hello))
            qFatal("the attacker does not get on the bus");
        m_thread = std::thread([this] { run(); });
    }
    ~Attacker()
    {
        m_isOver = true;
        m_bus.hangUp();
        m_thread.join();
    }
    qint64 sent() const { return m_sent; }

private:
    void run()
    {
        QElapsedTimer time;
        time.start();
        while (!m_isOver) {
            const qint64 due = m_perSecond * time.elapsed() / 1000;
            for (; m_sent < due && !m_isOver; ++m_sent) {
                if (!m_bus.send(m_bytes))
                    return; // thrown out
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }

    RawBus m_bus;
    const QByteArray m_bytes;
    const int m_perSecond;
    std::atomic<qint64> m_sent{0};
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

struct Attack
{
    QByteArray bytes;
    int perSecond = 0;
    int attackers = 1;
};

} // namespace

Q_DECLARE_METATYPE(Attack)

class HostilePeersTest : public QObject
{
    Q_OBJECT

private slots:
    void othersAreAnsweredMeanwhile_data();
    void othersAreAnsweredMeanwhile();
    void manyConnectionsLeaveRoomForOthers();
    void fullStoreIsHeldInLittleMemory();

private:
    void work(const PrivateBus &bus, qint64 broker);
};

void HostilePeersTest::othersAreAnsweredMeanwhile_data()
{
    QTest::addColumn<Attack>("attack");
    const auto row
        = [](const char *name, const QByteArray &bytes, int perSecond, int attackers = 1) {
              QTest::newRow(name) << Attack{bytes, perSecond, attackers};
          };
    constexpr int megabyte = 1 << 20;
    const int often = strictSeconds() > 0 ? 10000 : 1000; // a second
    const int large = strictSeconds() > 0 ? 50 : 5;
    const QByteArray evil = "evil";
    const QByteArray command
        = call("sendCommand", "ssa{sv}", Body().string(evil).string("stop").map(0).bytes());
    row("commands", command, often);
    row("commands from four", command, often / 4, 4);
    row("large commands",
        call("sendCommand", "ssa{sv}", Body().string(evil).string("stop").map(60000).bytes()),
        large);
    row("saves",
        call("saveSettings", "ssxav", Body().string(evil).string("").stamp().list(9).bytes()),
        often);
    row("saves of nearly a megabyte",
        call("saveSettings", "ssxav",
            Body().string(evil).string("").stamp().list(megabyte - 1000).bytes()),
        large);
    row("states", call("publishState", "sxa{sv}", Body().string(evil).stamp().map(9).bytes()),
        often);
    row("states of a megabyte",
        call("publishState", "sxa{sv}", Body().string(evil).stamp().map(megabyte).bytes()), large);
    row("states of another agent",
        call("publishState", "sxa{sv}", Body().string("tavmodems").stamp().map(9).bytes()), often);
    row("names of a megabyte",
        call("loadState", "s", Body().string(QByteArray(megabyte, 'a')).bytes()), large);
    row("wrong types", call("saveSettings", "s", Body().string(evil).bytes()), often);
    row("unknown method", call("formatDisk", "s", Body().string(evil).bytes()), often);
    row("registering again", call("registerAgent", "sb", Body().string(evil).number(1).bytes()),
        often);
}

void HostilePeersTest::othersAreAnsweredMeanwhile()
{
    QFETCH(const Attack, attack);
    const PrivateBus bus;
    const qint64 broker = bus.startBroker();
    std::vector<std::unique_ptr<Attacker>> attackers;
    attackers.reserve(static_cast<std::size_t>(attack.attackers));
    for (int i = 0; i < attack.attackers; ++i)
        attackers.push_back(
            std::make_unique<Attacker>(bus.address(), attack.bytes, attack.perSecond));
    work(bus, broker);
    qint64 sent = 0;
    for (const auto &attacker : attackers)
        sent += attacker->sent();
    std::fprintf(stderr, "    sent meanwhile: %lld\n", sent);
    QVERIFY(sent > 0);
}

void HostilePeersTest::manyConnectionsLeaveRoomForOthers()
{
    PrivateBus::Options options;
    options.maxConnections = kConnections + 100;
    const PrivateBus bus(options);
    const qint64 broker = bus.startBroker();
    std::vector<std::unique_ptr<RawBus>> connections;
    for (int i = 0; i < kConnections; ++i) {
        connections.push_back(std::make_unique<RawBus>(bus.address()));
        QVERIFY(connections.back()->open());
        for (int agent = 0; agent < 20; ++agent) {
            const QByteArray name = "evil" + QByteArray::number((i * 20 + agent) % 300);
            QVERIFY(connections.back()->send(
                call("registerAgent", "sb", Body().string(name).number(1).bytes())));
        }
    }
    work(bus, broker);
    connections.clear();
    QTRY_VERIFY(bus.connections() < 10);
    work(bus, broker);
}

void HostilePeersTest::fullStoreIsHeldInLittleMemory()
{
    const PrivateBus bus;
    const qint64 broker = bus.startBroker();
    BusConnection connection;
    QVERIFY(connection.open(bus.address(), QDeadlineTimer(5000)));
    const auto ask = [&](const QString &method, const QVariantList &arguments) {
        auto message
            = QDBusMessage::createMethodCall(BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE, method);
        message.setArguments(arguments);
        return connection.bus().call(message).errorName();
    };
    // As many small values as fit: what is largest unpacked.
    QVariantList values;
    for (int i = 0; i < 10000; ++i)
        values.append(true);
    const QVariantMap body{{QStringLiteral("a"), values}};
    QString agent;
    for (int i = 0; i < 256; ++i) {
        if (i % 16 == 0) { // as many names as a connection may have
            connection.close();
            QVERIFY(connection.open(bus.address(), QDeadlineTimer(5000)));
        }
        agent = QStringLiteral("evil%1").arg(i);
        QCOMPARE(ask(QStringLiteral("registerAgent"), {agent, false}), QString());
        QCOMPARE(ask(QStringLiteral("publishState"), {agent, Q_INT64_C(0), body}), QString());
    }
    TavBusQueryHandler handler(BUSNAME_TESTDEALER);
    QVERIFY(handler.open());
    ClientState state;
    QVERIFY(handler.loadState(agent, state));
    QCOMPARE(state.body(), body);
    if (!isSanitized())
        QVERIFY2(peakOf(broker) < kMemoryLimit, QByteArray::number(peakOf(broker)).constData());
}

// Everything a tool and a service do with the bus.
void HostilePeersTest::work(const PrivateBus &bus, qint64 broker)
{
    TavBusAgent agent(BUSNAME_WATCHDOGS);
    QVERIFY(agent.open());
    TavBusQueryHandler handler(BUSNAME_TESTDEALER);
    QVERIFY(handler.open());
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);
    int commands = 0;
    std::vector<qint64> times;
    QElapsedTimer whole;
    whole.start();
    const qint64 duration = strictSeconds() > 0 ? strictSeconds() * 1000 : 1500;
    const std::vector<std::pair<const char *, std::function<bool()>>> steps{
        {"publish",
            [&] {
                return agent.publishState({{QStringLiteral("serviceMode"), 6}});
            }},
        {"state",
            [&] {
                ClientState state;
                return handler.loadState(BUSNAME_WATCHDOGS, state) && state.body().size() == 1;
            }},
        {"save", [&] { return handler.saveSettings(records::settings(BUSNAME_WATCHDOGS, {1})); }},
        {"settings",
            [&] {
                ClientSettings settings;
                return handler.loadSettings(BUSNAME_WATCHDOGS, settings);
            }},
        {"command",
            [&] {
                ++commands;
                return handler.sendMessage({BUSNAME_WATCHDOGS, QStringLiteral("stop"), {}});
            }},
    };
    while (whole.elapsed() < duration || times.size() < 10) {
        for (const auto &[what, step] : steps) {
            QElapsedTimer time;
            time.start();
            QVERIFY2(step(), what);
            times.push_back(time.elapsed());
        }
        QTest::qWait(10);
    }
    QTRY_COMPARE(received.count(), commands);
    QCOMPARE(bus.brokerPid(), broker);
    std::sort(times.begin(), times.end());
    const qint64 half = times[times.size() / 2];
    const qint64 peak = peakOf(broker);
    std::fprintf(stderr,
        "%s %s: %zu answers, half within %lld ms, 99 %% within %lld ms, all within %lld ms; broker"
        " at most %lld kB\n",
        QTest::currentTestFunction(), QTest::currentDataTag() ? QTest::currentDataTag() : "",
        times.size(), half, times[times.size() * 99 / 100], times.back(), peak);
    QVERIFY2(half < kBusyLimit, "answered too late");
    if (strictSeconds() > 0)
        QVERIFY2(times.back() < kAnswerLimit, "answered too late");
    if (!isSanitized())
        QVERIFY2(peak < kMemoryLimit, "the broker has grown too large");
}

QTEST_GUILESS_MAIN(HostilePeersTest)
#include "hostilepeerstest.moc"
