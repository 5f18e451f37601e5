#include "busnames.h"
#include "privatebus.h"
#include "tavbusagent.h"
#include "tavbusqueryhandler.h"

#include <QSignalSpy>
#include <QTest>

using namespace tavbus;

namespace {

ClientSettings record(const QString &owner)
{
    ClientSettings settings;
    settings.setOwner(owner);
    settings.setDescription(QStringLiteral("From test dealer"));
    settings.setDt(QDateTime::currentDateTime());
    settings.setSettings({1, QStringLiteral("two")});
    return settings;
}

} // namespace

class TavBusTest : public QObject
{
    Q_OBJECT

private slots:
    void settingsComeBackAsSaved();
    void commandReachesTheAgent();
};

void TavBusTest::settingsComeBackAsSaved()
{
    const PrivateBus bus;
    TavBusQueryHandler handler(BUSNAME_TESTDEALER);
    QVERIFY(!handler.isOpen());
    QVERIFY(handler.open());
    QVERIFY(handler.isOpen());
    const ClientSettings saved = record(BUSNAME_TAVMODEMS);
    QVERIFY(handler.saveSettings(saved));
    ClientSettings loaded;
    QVERIFY(handler.loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, saved);
    QVERIFY(!handler.loadSettings(BUSNAME_TESTDEALER, loaded));
}

void TavBusTest::commandReachesTheAgent()
{
    const PrivateBus bus;
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QSignalSpy spy(&agent, &TavBusAgent::commandReceived);
    TavBusQueryHandler handler(BUSNAME_TESTDEALER);
    QVERIFY(handler.open());
    TavBusCommand command;
    command.setAgent(BUSNAME_TAVMODEMS);
    command.setName(QStringLiteral("stop"));
    QVERIFY(handler.sendMessage(command.toOutgoingMessage()));
    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).value<TavBusCommand>(), command);

    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    ClientState state;
    QVERIFY(handler.loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body(), QVariantMap({{QStringLiteral("serviceMode"), 6}}));
}

QTEST_GUILESS_MAIN(TavBusTest)
#include "tavbustest.moc"
