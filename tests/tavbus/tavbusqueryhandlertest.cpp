#include "tavbusqueryhandler.h"
#include "busnames.h"
#include "privatebus.h"
#include "records.h"
#include "tavbusagent.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>

#include <limits>

using namespace tavbus;
using namespace std::chrono_literals;

class TavBusQueryHandlerTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void nothingConnectsBeforeOpen();
    void callsFailWhileClosed();
    void openTwiceIsOpen();
    void closeEndsTheConnection();
    void agentWithABadNameCannotOpen();

    void typesSurvive_data();
    void typesSurvive();
    void recordSurvivesWhole();
    void missingRecordLeavesTheArgumentAlone();
    void severalRecordsComeInTheOrderAsked();
    void removedRecordIsGone();
    void removingAlsoForgetsTheStateWhenAsked();
    void valuesThatCannotCrossAreRefused_data();
    void valuesThatCannotCrossAreRefused();
    void largestRecordPassesAndALargerOneIsRefused();

    void stateKeepsItsTimeStamp_data();
    void stateKeepsItsTimeStamp();
    void stateOutlivesItsAgent();
    void messageNeedsALiveReceiver();
    void failuresAreNotLogged();

    void recordsSurviveAKilledBroker();
    void brokerThatDiedIsStartedUnnoticed();
    void brokerEndsCleanlyWhenTold();
    void noBrokerAndNothingToStartIt();
    void noBus();
    void busThatRefusesIsTriedAgainByEachCall();
    void busThatVanishesClosesTheHandler();

private:
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<TavBusQueryHandler> m_handler; // not open at first
};

void TavBusQueryHandlerTest::init()
{
    m_bus = std::make_unique<PrivateBus>();
    m_handler = std::make_unique<TavBusQueryHandler>(BUSNAME_TESTDEALER);
}

void TavBusQueryHandlerTest::cleanup()
{
    m_handler.reset();
    m_bus.reset();
}

void TavBusQueryHandlerTest::nothingConnectsBeforeOpen()
{
    QVERIFY(!m_handler->isOpen());
    QCOMPARE(m_bus->brokerPid(), 0);
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->isOpen());
    QVERIFY(m_bus->brokerPid() > 0);
}

void TavBusQueryHandlerTest::callsFailWhileClosed()
{
    ClientSettings settings = records::settings(BUSNAME_TAVMODEMS, {1});
    QList<ClientSettings> list;
    ClientState state;
    QVERIFY(!m_handler->saveSettings(settings));
    QVERIFY(!m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QVERIFY(!m_handler->loadSettings(QStringList(BUSNAME_TAVMODEMS), list));
    QVERIFY(!m_handler->removeSettings(BUSNAME_TAVMODEMS, true));
    QVERIFY(!m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QVERIFY(!m_handler->sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}}));
    QCOMPARE(m_bus->brokerPid(), 0);
}

void TavBusQueryHandlerTest::openTwiceIsOpen()
{
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
}

void TavBusQueryHandlerTest::closeEndsTheConnection()
{
    const int others = m_bus->connections();
    QVERIFY(m_handler->open());
    QCOMPARE(m_bus->connections(), others + 2); // the broker's as well
    m_handler->close();
    QVERIFY(!m_handler->isOpen());
    QTRY_COMPARE(m_bus->connections(), others + 1);
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
    m_handler->close();
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
}

void TavBusQueryHandlerTest::agentWithABadNameCannotOpen()
{
    TavBusQueryHandler handler(QStringLiteral("not a name"));
    QVERIFY(!handler.open());
    QVERIFY(!handler.isOpen());
}

void TavBusQueryHandlerTest::typesSurvive_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("bool") << QVariant(false);
    QTest::newRow("int") << QVariant(std::numeric_limits<int>::min());
    QTest::newRow("uint") << QVariant(std::numeric_limits<uint>::max());
    QTest::newRow("qlonglong") << QVariant(std::numeric_limits<qlonglong>::min());
    QTest::newRow("qulonglong") << QVariant(std::numeric_limits<qulonglong>::max());
    QTest::newRow("double") << QVariant(0.1);
    QTest::newRow("text") << QVariant(QStringLiteral("*99# \u00e4 \U0001F4DE"));
    QTest::newRow("empty text") << QVariant(QStringLiteral(""));
    QTest::newRow("bytes") << QVariant(QByteArray("\0\xff\r\n", 4));
    QTest::newRow("empty bytes") << QVariant(QByteArray(""));
    QTest::newRow("string list") << QVariant(QStringList({QStringLiteral("AT"), QString()}));
    QTest::newRow("empty string list") << QVariant(QStringList());
    QTest::newRow("list") << QVariant(QVariantList({1, 2U, QStringLiteral("3")}));
    QTest::newRow("empty list") << QVariant(QVariantList());
    QTest::newRow("map") << QVariant(QVariantMap({{QStringLiteral("a"), 1}, {QString(), 2U}}));
    QTest::newRow("empty map") << QVariant(QVariantMap());
    QTest::newRow("nested") << QVariant(QVariantMap({{QStringLiteral("a"),
        QVariantList({QVariantMap({{QStringLiteral("b"), QStringList()}}), QVariantList(),
            QVariantList({QVariantList({QByteArray("c")})})})}}));
    QVariant lists = 1;
    QVariant maps = 1;
    for (int i = 0; i < 15; ++i) {
        lists = QVariantList({lists});
        maps = QVariantMap({{QStringLiteral("a"), maps}});
    }
    QTest::newRow("as deep as may be, of lists") << lists;
    QTest::newRow("as deep as may be, of maps") << maps;
}

void TavBusQueryHandlerTest::typesSurvive()
{
    QFETCH(const QVariant, value);
    QVERIFY(m_handler->open());

    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {value})));
    ClientSettings settings;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings.settings().size(), 1);
    QCOMPARE(settings.settings().constFirst().userType(), value.userType());
    QCOMPARE(settings.settings().constFirst(), value);

    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QSignalSpy received(&agent, &TavBusAgent::commandReceived);
    const QVariantMap body{{QStringLiteral("value"), value}};
    QVERIFY(agent.publishState(body));
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body(), body);
    QCOMPARE(state.body().first().userType(), value.userType());

    const auto command = records::command(BUSNAME_TAVMODEMS, QStringLiteral("stop"), body);
    QVERIFY(m_handler->sendMessage(command.toOutgoingMessage()));
    QTRY_COMPARE(received.count(), 1);
    QCOMPARE(received.at(0).at(0).value<TavBusCommand>(), command);
    QCOMPARE(
        received.at(0).at(0).value<TavBusCommand>().data().first().userType(), value.userType());
}

void TavBusQueryHandlerTest::recordSurvivesWhole()
{
    QVERIFY(m_handler->open());
    ClientSettings saved = records::settings(BUSNAME_TAVMODEMS, {});
    saved.setDescription(QStringLiteral("\u041e\u0442 test dealer"));
    QVERIFY(m_handler->saveSettings(saved));
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, saved);

    saved.setDt(QDateTime());
    saved.setDescription(QString());
    QVERIFY(m_handler->saveSettings(saved));
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, saved);
    QVERIFY(!loaded.dt().isValid());
}

void TavBusQueryHandlerTest::missingRecordLeavesTheArgumentAlone()
{
    QVERIFY(m_handler->open());
    const ClientSettings former = records::settings(BUSNAME_WATCHDOGS, {1});
    ClientSettings settings = former;
    QVERIFY(!m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    QCOMPARE(settings, former);
    ClientState state = records::state(QDateTime::currentDateTime(), 4);
    QVERIFY(!m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state.body().value(QStringLiteral("serviceMode")), QVariant(4));
}

void TavBusQueryHandlerTest::severalRecordsComeInTheOrderAsked()
{
    QVERIFY(m_handler->open());
    const ClientSettings modems = records::settings(BUSNAME_TAVMODEMS, {1});
    const ClientSettings watchdogs = records::settings(BUSNAME_WATCHDOGS, {2});
    QVERIFY(m_handler->saveSettings(modems));
    QVERIFY(m_handler->saveSettings(watchdogs));

    QList<ClientSettings> list;
    QVERIFY(
        m_handler->loadSettings({BUSNAME_WATCHDOGS, BUSNAME_ACCEPTORS, BUSNAME_TAVMODEMS}, list));
    QCOMPARE(list, QList<ClientSettings>({watchdogs, modems}));
    QVERIFY(!m_handler->loadSettings({BUSNAME_WATCHDOGS, QStringLiteral("no name")}, list));
    QCOMPARE(list.size(), 2);
    QVERIFY(m_handler->loadSettings(QStringList(), list));
    QCOMPARE(list.size(), 0);
}

void TavBusQueryHandlerTest::removedRecordIsGone()
{
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
    ClientSettings settings;
    for (int repeated = 0; repeated < 2; ++repeated) {
        QVERIFY(m_handler->removeSettings(BUSNAME_TAVMODEMS, false));
        QVERIFY(!m_handler->loadSettings(BUSNAME_TAVMODEMS, settings));
    }
}

void TavBusQueryHandlerTest::removingAlsoForgetsTheStateWhenAsked()
{
    QVERIFY(m_handler->open());
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    ClientState state;
    QVERIFY(m_handler->removeSettings(BUSNAME_TAVMODEMS, false));
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QVERIFY(m_handler->removeSettings(BUSNAME_TAVMODEMS, true));
    QVERIFY(!m_handler->loadState(BUSNAME_TAVMODEMS, state));
}

void TavBusQueryHandlerTest::valuesThatCannotCrossAreRefused_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("invalid") << QVariant();
    QTest::newRow("text with NUL") << QVariant(QString(QChar(QChar::Null)));
    QTest::newRow("half a surrogate pair") << QVariant(QString(QChar(0xdc00)));
    QTest::newRow("date and time") << QVariant(QDateTime::currentDateTime());
    QVariant deep = 1;
    for (int i = 0; i < 40; ++i)
        deep = QVariantList({deep});
    QTest::newRow("nested too deep") << deep;
}

void TavBusQueryHandlerTest::valuesThatCannotCrossAreRefused()
{
    QFETCH(const QVariant, value);
    QVERIFY(m_handler->open());
    const ClientSettings former = records::settings(BUSNAME_TAVMODEMS, {1});
    QVERIFY(m_handler->saveSettings(former));
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {value})));
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, former);

    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(!agent.publishState({{QStringLiteral("value"), value}}));
    QVERIFY(!m_handler->sendMessage(
        {BUSNAME_TAVMODEMS, QStringLiteral("stop"), {{QStringLiteral("value"), value}}}));
}

void TavBusQueryHandlerTest::largestRecordPassesAndALargerOneIsRefused()
{
    QVERIFY(m_handler->open());
    // Packed, a list of one byte array takes 18 bytes beside the bytes.
    const ClientSettings largest
        = records::settings(BUSNAME_TAVMODEMS, {QByteArray(1024 * 1024 - 18, 'x')});
    QVERIFY(m_handler->saveSettings(largest));
    QVERIFY(!m_handler->saveSettings(
        records::settings(BUSNAME_TAVMODEMS, {QByteArray(1024 * 1024 - 17, 'y')})));
    QVERIFY(!m_handler->saveSettings(
        records::settings(BUSNAME_TAVMODEMS, {QByteArray(200 * 1024 * 1024, 'z')})));
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, largest);
}

void TavBusQueryHandlerTest::stateKeepsItsTimeStamp_data()
{
    QTest::addColumn<QDateTime>("dt");

    const QDateTime now = QDateTime::currentDateTime();
    QTest::newRow("now") << now;
    QTest::newRow("a day old") << now.addDays(-1);
    QTest::newRow("to come") << now.addDays(1);
    QTest::newRow("none") << QDateTime();
}

void TavBusQueryHandlerTest::stateKeepsItsTimeStamp()
{
    QFETCH(const QDateTime, dt);
    QVERIFY(m_handler->open());
    TavBusAgent agent(BUSNAME_TAVMODEMS);
    QVERIFY(agent.open());
    QVERIFY(agent.publishState(records::state(dt, 6)));
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state, records::state(dt, 6));
    m_bus->killBroker();
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QCOMPARE(state, records::state(dt, 6));
}

void TavBusQueryHandlerTest::stateOutlivesItsAgent()
{
    QVERIFY(m_handler->open());
    const QDateTime before = QDateTime::currentDateTime();
    {
        TavBusAgent agent(BUSNAME_TAVMODEMS);
        QVERIFY(agent.open());
        QVERIFY(agent.publishState({{QStringLiteral("serviceMode"), 6}}));
    }
    ClientState state;
    QVERIFY(m_handler->loadState(BUSNAME_TAVMODEMS, state));
    QVERIFY(state.dt() >= before && state.dt() <= QDateTime::currentDateTime());
}

void TavBusQueryHandlerTest::messageNeedsALiveReceiver()
{
    QVERIFY(m_handler->open());
    const auto message
        = records::command(BUSNAME_TAVMODEMS, QStringLiteral("stop")).toOutgoingMessage();
    QVERIFY(message.data.isEmpty());
    QVERIFY(!m_handler->sendMessage(message));
    {
        TavBusAgent agent(BUSNAME_TAVMODEMS);
        QVERIFY(agent.open());
        QVERIFY(m_handler->sendMessage(message));
    }
    QTRY_VERIFY(!m_handler->sendMessage(message));
    // A tool that only speaks as the agent hears nothing.
    TavBusQueryHandler speaker(BUSNAME_TAVMODEMS);
    QVERIFY(speaker.open());
    QVERIFY(!m_handler->sendMessage(message));
}

void TavBusQueryHandlerTest::failuresAreNotLogged()
{
    static QStringList messages;
    messages.clear();
    const auto former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext &, const QString &text) { messages << text; });
    m_handler->open();
    ClientSettings settings;
    m_handler->loadSettings(BUSNAME_TAVMODEMS, settings);
    m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {QVariant()}));
    m_handler->sendMessage({BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}});
    m_bus->stop();
    m_handler->loadSettings(BUSNAME_TAVMODEMS, settings);
    m_handler->open();
    m_handler->close();
    qInstallMessageHandler(former);
    QCOMPARE(messages, QStringList());
}

void TavBusQueryHandlerTest::recordsSurviveAKilledBroker()
{
    QVERIFY(m_handler->open());
    const ClientSettings saved = records::settings(BUSNAME_TAVMODEMS, {QStringLiteral("kept")});
    QVERIFY(m_handler->saveSettings(saved));
    const qint64 former = m_bus->brokerPid();
    m_bus->killBroker();
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
    QCOMPARE(loaded, saved);
    QVERIFY(m_bus->brokerPid() != former);
}

void TavBusQueryHandlerTest::brokerThatDiedIsStartedUnnoticed()
{
    QVERIFY(m_handler->open());
    for (int i = 0; i < 3; ++i) {
        m_bus->killBroker();
        QVERIFY(m_handler->isOpen());
        QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {i})));
        m_bus->killBroker();
        QVERIFY(m_handler->removeSettings(BUSNAME_TAVMODEMS, false));
    }
}

void TavBusQueryHandlerTest::brokerEndsCleanlyWhenTold()
{
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
    const QString log = m_bus->databaseFile() + QStringLiteral("-wal");
    QVERIFY(QFile::exists(log));
    m_bus->endBroker();
    QVERIFY(!QFile::exists(log)); // all of it is in the database
    ClientSettings loaded;
    QVERIFY(m_handler->loadSettings(BUSNAME_TAVMODEMS, loaded));
}

void TavBusQueryHandlerTest::noBrokerAndNothingToStartIt()
{
    m_bus.reset();
    PrivateBus::Options options;
    options.withBroker = false;
    m_bus = std::make_unique<PrivateBus>(options);
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!m_handler->open());
    QVERIFY(!m_handler->isOpen());
    QVERIFY(clock.elapsed() < 2000);
}

void TavBusQueryHandlerTest::noBus()
{
    m_bus->stop();
    QElapsedTimer clock;
    clock.start();
    QVERIFY(!m_handler->open());
    QVERIFY(!m_handler->isOpen());
    QVERIFY(clock.elapsed() < 2000);
}

void TavBusQueryHandlerTest::busThatRefusesIsTriedAgainByEachCall()
{
    m_bus->stop();
    QVERIFY(!m_handler->open());
    QVERIFY(!m_handler->open());
    m_bus->start();
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
}

void TavBusQueryHandlerTest::busThatVanishesClosesTheHandler()
{
    QVERIFY(m_handler->open());
    m_bus->stop();
    QTRY_VERIFY(!m_handler->isOpen());
    QVERIFY(!m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
    QVERIFY(!m_handler->open());
    m_bus->start();
    QVERIFY(m_handler->open());
    QVERIFY(m_handler->saveSettings(records::settings(BUSNAME_TAVMODEMS, {1})));
}

QTEST_GUILESS_MAIN(TavBusQueryHandlerTest)
#include "tavbusqueryhandlertest.moc"
