#include "busnames.h"
#include "privatebus.h"
#include "records.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <cerrno>
#include <cstring>
#include <functional>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tavbus;
using namespace std::chrono_literals;

using Call = std::function<bool(TavBusQueryHandler &)>;
Q_DECLARE_METATYPE(Call)

namespace {

constexpr std::chrono::milliseconds kShort = 300ms;
constexpr qint64 kMargin = 1500; // ms on top of a limit, for a busy machine

// What goes on when a slot has returned.
void turnTheLoop()
{
    QCoreApplication::processEvents();
}

// Connections that wait at the bus until no further one is taken.
class FullQueue
{
    Q_DISABLE_COPY_MOVE(FullQueue)

public:
    explicit FullQueue(const QString &address)
    {
        sockaddr_un to{};
        to.sun_family = AF_UNIX;
        const QByteArray path = address.section(QLatin1String("path="), 1).toLocal8Bit();
        std::strncpy(to.sun_path, path.constData(), sizeof(to.sun_path) - 1);
        int error = 0;
        while (error == 0) {
            m_sockets.append(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            if (::connect(m_sockets.constLast(), reinterpret_cast<sockaddr *>(&to), sizeof(to)))
                error = errno;
        }
        m_isFull = error == EAGAIN;
    }
    ~FullQueue()
    {
        for (const int socket : qAsConst(m_sockets))
            ::close(socket);
    }

    bool isFull() const { return m_isFull; }

private:
    QList<int> m_sockets;
    bool m_isFull = false;
};

} // namespace

/// Broker and bus that are there but do not answer: no call takes longer than its limit.
class FrozenBusTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void callsToAFrozenBrokerEndAtTheLimit_data();
    void callsToAFrozenBrokerEndAtTheLimit();
    void callsOfOneTurnShareOneLimit();
    void opensOfOneTurnShareOneLimit();
    void brokerThatDiesInACallIsStartedAndAskedAgain();
    void threadWithoutALoopIsHeardAgain();
    void limitIsFiveSeconds();
    void openAtAFrozenBusEndsAtTheLimit();
    void openAtAFrozenBusWithAFullQueueEndsAtTheLimit();
    void busThatFreezesLaterEndsCallsAtTheLimit();
    void openEndsAtTheLimitWhenTheBrokerNeverComesUp();
    void severalRecordsShareOneLimit();
    void agentOfAFrozenBrokerPublishesLater();

private:
    void verifyEnded(std::chrono::milliseconds limit) const;

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<TavBusQueryHandler> m_handler; // closed
    QElapsedTimer m_clock;
};

void FrozenBusTest::init()
{
    m_bus = std::make_unique<PrivateBus>();
    m_handler = std::make_unique<TavBusQueryHandler>(BUSNAME_TESTDEALER);
    QCOMPARE(m_handler->timeLimit(), 5s);
}

void FrozenBusTest::cleanup()
{
    m_handler.reset();
    m_bus.reset();
}

void FrozenBusTest::verifyEnded(std::chrono::milliseconds limit) const
{
    const qint64 elapsed = m_clock.elapsed(); // by Qt's coarse timers: some 5 % more or less
    QVERIFY2(elapsed >= limit.count() * 9 / 10, qPrintable(QString::number(elapsed)));
    QVERIFY2(elapsed < limit.count() + kMargin, qPrintable(QString::number(elapsed)));
}

void FrozenBusTest::callsToAFrozenBrokerEndAtTheLimit_data()
{
    QTest::addColumn<Call>("call");

    QTest::newRow("save") << Call([](TavBusQueryHandler &handler) {
        return handler.saveSettings(records::settings(BUSNAME_TAVMODEMS, {2}));
    });
    QTest::newRow("load") << Call([](TavBusQueryHandler &handler) {
        ClientSettings settings;
        return handler.loadSettings(BUSNAME_TAVMODEMS, settings);
    });
    QTest::newRow("remove") << Call([](TavBusQueryHandler &handler) {
        return handler.removeSettings(BUSNAME_TAVMODEMS, false);
    });
    QTest::newRow("state") << Call([](TavBusQueryHandler &handler) {
        ClientState state;
        return handler.loadState(BUSNAME_TAVMODEMS, state);
    });
    QTest::newRow("command") << Call([](TavBusQueryHandler &handler) {
        return handler.sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}});
    });
    QTest::newRow("open") << Call([](TavBusQueryHandler &handler) {
        handler.close();
        return handler.open();
    });
}

void FrozenBusTest::callsToAFrozenBrokerEndAtTheLimit()
{
    QFETCH(const Call, call);
    QVERIFY(m_handler->open());
    m_handler->setTimeLimit(kShort);
    m_bus->freezeBroker();
    m_clock.start();
    QVERIFY(!call(*m_handler));
    verifyEnded(kShort);

    m_bus->thawBroker();
    turnTheLoop();
    m_handler->setTimeLimit(5s);
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {3})));
}

void FrozenBusTest::callsOfOneTurnShareOneLimit()
{
    QVERIFY(m_handler->open());
    m_handler->setTimeLimit(kShort);
    m_bus->freezeBroker();
    ClientSettings settings;
    ClientState state;
    m_clock.start();
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    QVERIFY(!m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QVERIFY(!m_handler->removeSettings(BUSNAME_TAVMODEMS, false));
    QVERIFY(!m_handler->loadState(BUSNAME_TAVMODEMS, state));
    for (int i = 0; i < 20; ++i)
        QVERIFY(!m_handler->sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}}));
    QVERIFY(m_handler->isOpen());
    m_handler->close();
    QVERIFY(!m_handler->open());
    verifyEnded(kShort);

    // The next turn asks again: in vain first, then with success.
    turnTheLoop();
    m_clock.start();
    QVERIFY(!m_handler->open());
    verifyEnded(kShort);
    m_bus->thawBroker();
    turnTheLoop();
    m_handler->setTimeLimit(5s);
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {3})));
}

void FrozenBusTest::opensOfOneTurnShareOneLimit()
{
    m_handler->setTimeLimit(kShort);
    m_bus->freeze();
    m_clock.start();
    for (int i = 0; i < 20; ++i)
        QVERIFY(!m_handler->open());
    verifyEnded(kShort);
    m_bus->thaw();
}

void FrozenBusTest::brokerThatDiesInACallIsStartedAndAskedAgain()
{
    QVERIFY(m_handler->open());
    const auto broker = pid_t(m_bus->brokerPid());
    m_bus->freezeBroker();
    QProcess killer; // in mid-call, while this thread is blocked
    killer.start(QStringLiteral("sh"),
        {QStringLiteral("-c"), QStringLiteral("sleep 0.2; kill -9 %1").arg(broker)});
    QVERIFY(killer.waitForStarted());
    m_clock.start();
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    QVERIFY(m_clock.elapsed() < 4'000);
    QVERIFY(m_bus->brokerPid() != broker);
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings(), QVariantList{2});
    QVERIFY(killer.waitForFinished());
}

void FrozenBusTest::threadWithoutALoopIsHeardAgain()
{
    QVERIFY(m_handler->open());
    m_handler->setTimeLimit(kShort);
    m_bus->freezeBroker();
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    m_bus->thawBroker();
    bool saved = false;
    m_clock.start();
    while (!saved && m_clock.elapsed() < kMargin)
        saved = m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {3}));
    QVERIFY(saved);
}

void FrozenBusTest::limitIsFiveSeconds()
{
    QVERIFY(m_handler->open());
    m_bus->freezeBroker();
    m_clock.start();
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    verifyEnded(5s);
    m_bus->freeze();
    m_handler->close();
    turnTheLoop();
    m_clock.start();
    QVERIFY(!m_handler->open());
    verifyEnded(5s);
    m_bus->thaw();
    m_bus->thawBroker();
}

void FrozenBusTest::openAtAFrozenBusEndsAtTheLimit()
{
    m_handler->setTimeLimit(kShort);
    m_bus->freeze();
    for (int i = 0; i < 3; ++i) {
        m_clock.start();
        QVERIFY(!m_handler->open());
        verifyEnded(kShort);
        turnTheLoop();
    }
    m_bus->thaw();
    m_handler->setTimeLimit(5s);
    QVERIFY(m_handler->open());
}

void FrozenBusTest::openAtAFrozenBusWithAFullQueueEndsAtTheLimit()
{
    m_handler->setTimeLimit(kShort);
    m_bus->freeze();
    {
        const FullQueue queue(m_bus->address());
        QVERIFY(queue.isFull());
        m_clock.start();
        QVERIFY(!m_handler->open());
        verifyEnded(kShort);
    }
    m_bus->thaw();
    turnTheLoop();
    m_handler->setTimeLimit(5s);
    QVERIFY(m_handler->open());
}

void FrozenBusTest::busThatFreezesLaterEndsCallsAtTheLimit()
{
    QVERIFY(m_handler->open());
    m_handler->setTimeLimit(kShort);
    m_bus->freeze();
    m_clock.start();
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {2})));
    verifyEnded(kShort);
    m_clock.start();
    m_handler->close();
    QVERIFY(!m_handler->isOpen());
    m_handler.reset();
    QVERIFY(m_clock.elapsed() < kMargin);
    m_bus->thaw();
}

void FrozenBusTest::openEndsAtTheLimitWhenTheBrokerNeverComesUp()
{
    PrivateBus::Options options;
    options.brokerCommand = QStringLiteral("/bin/sleep 5");
    m_bus.reset();
    m_bus = std::make_unique<PrivateBus>(options);
    m_handler->setTimeLimit(kShort);
    m_clock.start();
    QVERIFY(!m_handler->open());
    verifyEnded(kShort);
    QVERIFY(!m_handler->isOpen());
}

void FrozenBusTest::severalRecordsShareOneLimit()
{
    QVERIFY(m_handler->open());
    m_handler->setTimeLimit(kShort);
    m_bus->freezeBroker();
    QStringList owners;
    for (int i = 0; i < 20; ++i)
        owners.append(QString::number(i));
    QList<ClientSettings> list;
    m_clock.start();
    QVERIFY(!m_handler->loadSettings(owners, list));
    verifyEnded(kShort);
    m_bus->thawBroker();
}

void FrozenBusTest::agentOfAFrozenBrokerPublishesLater()
{
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QSignalSpy closed(&agent, &TavBusAgent::closed);
    m_bus->freezeBroker();
    m_clock.start();
    QVERIFY(!agent.publishState(QVariantMap()));
    verifyEnded(5s);
    m_bus->thawBroker();
    turnTheLoop();
    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    QCOMPARE(closed.count(), 0);
}

QTEST_GUILESS_MAIN(FrozenBusTest)
#include "frozenbustest.moc"
