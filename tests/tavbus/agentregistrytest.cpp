#include "agentregistry.h"

#include <QTest>

using tavbus::AgentRegistry;
using Answer = AgentRegistry::Answer;

namespace {

const QString kAgent = QStringLiteral("tavmodems");
const QString kFirst = QStringLiteral(":1.1");
const QString kSecond = QStringLiteral(":1.2");
constexpr uint kRoot = 0;
constexpr uint kUser = 1000;
constexpr uint kOther = 1001;

} // namespace

class AgentRegistryTest : public QObject
{
    Q_OBJECT

private slots:
    void secondConnectionOfAName_data();
    void secondConnectionOfAName();
    void nameIsFreeOnceItsHolderHasGone();
    void rootKeepsANameItJoined();
    void onlyListenersAreListed();
    void registeringAgainChangesListening();
    void leavingEndsAllNames();
    void agentsOfAConnectionAreBounded();
    void connectionsOfAnAgentAreBounded();
};

void AgentRegistryTest::secondConnectionOfAName_data()
{
    QTest::addColumn<uint>("first");
    QTest::addColumn<uint>("second");
    QTest::addColumn<bool>("admitted");

    QTest::newRow("same user") << kUser << kUser << true;
    QTest::newRow("root beside a user") << kUser << kRoot << true;
    QTest::newRow("root twice") << kRoot << kRoot << true;
    QTest::newRow("another user") << kUser << kOther << false;
    QTest::newRow("a user where root is") << kRoot << kUser << false;
}

void AgentRegistryTest::secondConnectionOfAName()
{
    QFETCH(const uint, first);
    QFETCH(const uint, second);
    QFETCH(const bool, admitted);
    AgentRegistry agents;
    QCOMPARE(agents.add(kAgent, kFirst, first, true), Answer::Registered);
    QCOMPARE(
        agents.add(kAgent, kSecond, second, true), admitted ? Answer::Registered : Answer::Taken);
    QCOMPARE(agents.speaksAs(kSecond, kAgent), admitted);
    QCOMPARE(agents.isKnown(kSecond), admitted);
    QCOMPARE(agents.listeners(kAgent).contains(kSecond), admitted);
    QVERIFY(agents.speaksAs(kFirst, kAgent));
}

void AgentRegistryTest::nameIsFreeOnceItsHolderHasGone()
{
    AgentRegistry agents;
    agents.add(kAgent, kFirst, kUser, true);
    agents.removeConnection(kFirst);
    QVERIFY(!agents.isKnown(kFirst));
    QCOMPARE(agents.add(kAgent, kSecond, kOther, true), Answer::Registered);
    QCOMPARE(agents.listeners(kAgent), QStringList(kSecond));
}

void AgentRegistryTest::rootKeepsANameItJoined()
{
    AgentRegistry agents;
    agents.add(kAgent, kFirst, kUser, true);
    agents.add(kAgent, kSecond, kRoot, true);
    agents.removeConnection(kFirst);
    QCOMPARE(agents.add(kAgent, kFirst, kUser, true), Answer::Taken);
}

void AgentRegistryTest::onlyListenersAreListed()
{
    AgentRegistry agents;
    agents.add(kAgent, kFirst, kUser, false);
    agents.add(kAgent, kSecond, kUser, true);
    QCOMPARE(agents.listeners(kAgent), QStringList(kSecond));
    QVERIFY(agents.speaksAs(kFirst, kAgent));
    QCOMPARE(agents.listeners(QStringLiteral("nobody")), QStringList());
}

void AgentRegistryTest::registeringAgainChangesListening()
{
    AgentRegistry agents;
    agents.add(kAgent, kFirst, kUser, true);
    QCOMPARE(agents.add(kAgent, kFirst, kUser, true), Answer::Registered);
    QCOMPARE(agents.listeners(kAgent), QStringList(kFirst));
    QCOMPARE(agents.add(kAgent, kFirst, kUser, false), Answer::Registered);
    QCOMPARE(agents.listeners(kAgent), QStringList());
}

void AgentRegistryTest::leavingEndsAllNames()
{
    AgentRegistry agents;
    const QString other = QStringLiteral("watchdogs");
    agents.add(kAgent, kFirst, kUser, true);
    agents.add(other, kFirst, kUser, true);
    agents.removeConnection(kFirst);
    QVERIFY(!agents.speaksAs(kFirst, other));
    QCOMPARE(agents.listeners(kAgent) + agents.listeners(other), QStringList());
    agents.removeConnection(QStringLiteral(":1.99")); // never known
}

void AgentRegistryTest::agentsOfAConnectionAreBounded()
{
    AgentRegistry agents;
    for (int i = 0; i < AgentRegistry::kMaxAgentsOfConnection; ++i)
        QCOMPARE(agents.add(QString::number(i), kFirst, kUser, true), Answer::Registered);
    QCOMPARE(agents.add(kAgent, kFirst, kUser, true), Answer::TooMany);
    QCOMPARE(agents.add(QStringLiteral("0"), kFirst, kUser, true), Answer::Registered);
    QCOMPARE(agents.add(kAgent, kSecond, kOther, true), Answer::Registered);
}

void AgentRegistryTest::connectionsOfAnAgentAreBounded()
{
    AgentRegistry agents;
    for (int i = 0; i < AgentRegistry::kMaxConnectionsOfAgent; ++i)
        QCOMPARE(
            agents.add(kAgent, QStringLiteral(":1.%1").arg(i), kUser, true), Answer::Registered);
    QCOMPARE(agents.add(kAgent, QStringLiteral(":2.1"), kUser, true), Answer::TooMany);
    QVERIFY(!agents.isKnown(QStringLiteral(":2.1")));
}

QTEST_APPLESS_MAIN(AgentRegistryTest)
#include "agentregistrytest.moc"
