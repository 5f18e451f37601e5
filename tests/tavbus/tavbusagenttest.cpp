#include "tavbusagent.h"
#include "busnames.h"
#include "privatebus.h"
#include "records.h"
#include "tavbusqueryhandler.h"

#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace tavbus;

namespace {

const QString kStop = QStringLiteral("stop");

} // namespace

class TavBusAgentTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void signalsTellOfOpeningAndClosing();
    void commandsComeInOrderAndOnlyForTheAgent();
    void everyConnectionOfTheAgentHearsACommand();
    void agentCanCommandItself();
    void stateIsStampedNow();
    void closedAgentHearsAndPublishesNothing();
    void registersAgainAfterTheBrokerWasKilled();
    void commandGivenWhileTheBrokerIsAwayArrives();
    void connectsAgainAfterTheBusWasRestarted();
    void openFailsWithoutABusAndGivesUp();
    void closeDuringAGapEndsTheTrying();
    void deletedInsideItsOwnSignals();

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<TavBusAgent> m_agent; // the modem service's, open
    std::unique_ptr<TavBusQueryHandler> m_handler; // open
};

void TavBusAgentTest::init()
{
    m_bus = std::make_unique<PrivateBus>();
    m_agent = std::make_unique<TavBusAgent>(BUSNAME_TAVMODEMS);
    QVERIFY(m_agent->open());
    m_handler = std::make_unique<TavBusQueryHandler>(BUSNAME_TESTDEALER);
    QVERIFY(m_handler->open());
}

void TavBusAgentTest::cleanup()
{
    m_handler.reset();
    m_agent.reset();
    m_bus.reset();
}

void TavBusAgentTest::signalsTellOfOpeningAndClosing()
{
    TavBusAgent agent(BUSNAME_WATCHDOGS);
    QCOMPARE(agent.agent(), BUSNAME_WATCHDOGS);
    QSignalSpy opened(&agent, &TavBusAgent::opened);
    QSignalSpy closed(&agent, &TavBusAgent::closed);
    QVERIFY(!agent.isOpen());
    QVERIFY(agent.open());
    QVERIFY(agent.open());
    QVERIFY(agent.isOpen());
    QCOMPARE(opened.count(), 1);
    agent.close();
    agent.close();
    QVERIFY(!agent.isOpen());
    QCOMPARE(closed.count(), 1);
    QVERIFY(agent.open());
    QCOMPARE(opened.count(), 2);
}

void TavBusAgentTest::commandsComeInOrderAndOnlyForTheAgent()
{
    TavBusAgent other(BUSNAME_WATCHDOGS);
    QVERIFY(other.open());
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    QSignalSpy receivedByOther(&other, &TavBusAgent::commandReceived);
    constexpr int kCommands = 200;
    for (int i = 0; i < kCommands; ++i)
        QVERIFY(
            m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {{QStringLiteral("thread_id"), i}}}));
    QTRY_COMPARE(received.count(), kCommands);
    for (int i = 0; i < kCommands; ++i)
        QCOMPARE(received.at(i).at(0).value<TavBusCommand>(),
            records::command(BUSNAME_TAVMODEMS, kStop, {{QStringLiteral("thread_id"), i}}));
    QCOMPARE(receivedByOther.count(), 0);
}

void TavBusAgentTest::everyConnectionOfTheAgentHearsACommand()
{
    TavBusAgent second(BUSNAME_TAVMODEMS);
    QVERIFY(second.open());
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    QSignalSpy receivedBySecond(&second, &TavBusAgent::commandReceived);
    QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
    QTRY_COMPARE(received.count(), 1);
    QTRY_COMPARE(receivedBySecond.count(), 1);
    second.close();
    QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
    QTRY_COMPARE(received.count(), 2);
    QCOMPARE(receivedBySecond.count(), 1);
}

void TavBusAgentTest::agentCanCommandItself()
{
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    TavBusQueryHandler handler(BUSNAME_TAVMODEMS);
    QVERIFY(handler.open());
    QVERIFY(handler.sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
    QTRY_COMPARE(received.count(), 1);
}

void TavBusAgentTest::stateIsStampedNow()
{
    const QDateTime before = QDateTime::currentDateTime();
    QVERIFY(m_agent->publishState({{QStringLiteral("serviceMode"), 2}}));
    const QDateTime after = QDateTime::currentDateTime();
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QVERIFY(state.dt() >= before && state.dt() <= after);
    QVERIFY(m_agent->publishState(QVariantMap()));
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QVERIFY(state.body().isEmpty());
}

void TavBusAgentTest::closedAgentHearsAndPublishesNothing()
{
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    m_agent->close();
    QVERIFY(!m_agent->publishState(QVariantMap()));
    QTRY_VERIFY(!m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
    QCOMPARE(received.count(), 0);
}

void TavBusAgentTest::registersAgainAfterTheBrokerWasKilled()
{
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    QSignalSpy opened(m_agent.get(), &TavBusAgent::opened);
    QSignalSpy closed(m_agent.get(), &TavBusAgent::closed);
    for (int i = 1; i <= 3; ++i) {
        m_bus->killBroker();
        QTRY_COMPARE(closed.count(), i);
        QTRY_COMPARE(opened.count(), i); // nobody but the agent started the broker
        QVERIFY(m_agent->isOpen());
        QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
        QTRY_COMPARE(received.count(), i);
        QVERIFY(m_agent->publishState({{QStringLiteral("serviceMode"), i}}));
    }
}

void TavBusAgentTest::commandGivenWhileTheBrokerIsAwayArrives()
{
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    for (int i = 1; i <= 5; ++i) {
        m_bus->killBroker();
        // From a thread of its own: the agent needs this one's event loop meanwhile.
        bool sent = false;
        std::unique_ptr<QThread> tool(QThread::create([&sent] {
            TavBusQueryHandler handler(BUSNAME_TESTDEALER);
            sent = handler.open() && handler.sendMessage({BUSNAME_TAVMODEMS, kStop, {}});
        }));
        tool->start();
        QTRY_VERIFY(tool->isFinished());
        QVERIFY(sent);
        QTRY_COMPARE(received.count(), i);
    }
}

void TavBusAgentTest::connectsAgainAfterTheBusWasRestarted()
{
    QSignalSpy received(m_agent.get(), &TavBusAgent::commandReceived);
    QSignalSpy opened(m_agent.get(), &TavBusAgent::opened);
    QSignalSpy closed(m_agent.get(), &TavBusAgent::closed);
    m_bus->stop();
    QTRY_COMPARE(closed.count(), 1);
    QVERIFY(!m_agent->isOpen());
    QVERIFY(!m_agent->publishState(QVariantMap()));
    m_bus->start();
    QTRY_COMPARE(opened.count(), 1);
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->sendMessage({BUSNAME_TAVMODEMS, kStop, {}}));
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(closed.count(), 1);
}

void TavBusAgentTest::openFailsWithoutABusAndGivesUp()
{
    m_agent->close();
    m_bus->stop();
    QSignalSpy opened(m_agent.get(), &TavBusAgent::opened);
    QVERIFY(!m_agent->open());
    QVERIFY(!m_agent->isOpen());
    m_bus->start();
    QVERIFY(!opened.wait(1500));
    QVERIFY(m_agent->open());
}

void TavBusAgentTest::closeDuringAGapEndsTheTrying()
{
    QSignalSpy opened(m_agent.get(), &TavBusAgent::opened);
    QSignalSpy closed(m_agent.get(), &TavBusAgent::closed);
    m_bus->stop();
    QTRY_COMPARE(closed.count(), 1);
    m_agent->close();
    QCOMPARE(closed.count(), 1);
    m_bus->start();
    QVERIFY(!opened.wait(1500));
}

void TavBusAgentTest::deletedInsideItsOwnSignals()
{
    QPointer<TavBusAgent> agent = new TavBusAgent(BUSNAME_WATCHDOGS, this);
    connect(agent, &TavBusAgent::opened, agent, [agent] { QVERIFY(agent->isOpen()); });
    QVERIFY(agent->open());
    connect(agent, &TavBusAgent::commandReceived, agent, [agent] { delete agent.data(); });
    QVERIFY(m_handler->sendMessage({BUSNAME_WATCHDOGS, kStop, {}}));
    QTRY_VERIFY(!agent);

    agent = new TavBusAgent(BUSNAME_WATCHDOGS, this);
    QVERIFY(agent->open());
    connect(agent, &TavBusAgent::closed, agent, [agent] { delete agent.data(); });
    m_bus->killBroker();
    QTRY_VERIFY(!agent);

    agent = new TavBusAgent(BUSNAME_WATCHDOGS, this);
    QVERIFY(agent->open());
    connect(agent, &TavBusAgent::opened, agent, [agent] { delete agent.data(); });
    m_bus->killBroker();
    QTRY_VERIFY(!agent);

    agent = new TavBusAgent(BUSNAME_WATCHDOGS, this);
    QVERIFY(agent->open());
    connect(agent, &TavBusAgent::closed, agent, [agent] { delete agent.data(); });
    m_bus->stop();
    QTRY_VERIFY(!agent);
}

QTEST_GUILESS_MAIN(TavBusAgentTest)
#include "tavbusagenttest.moc"
