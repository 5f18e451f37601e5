#include "busnames.h"
#include "fakeservice.h"
#include "privatebus.h"
#include "sentcommands.h"
#include "servicescontroller.h"
#include "tavbusqueryhandler.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QtTest>

#include <limits>
#include <memory>

using namespace tavbus;

namespace {

ClientSettings record(const QString &owner)
{
    ClientSettings settings;
    settings.setOwner(owner);
    settings.setDescription(QStringLiteral("From test dealer"));
    settings.setDt(QDateTime::fromMSecsSinceEpoch(1'700'000'000'000));
    settings.setSettings({1, QStringLiteral("two"), QVariantMap{{QStringLiteral("three"), 3}}});
    return settings;
}

} // namespace

/// Reading, writing and sending.
class TestBusAccess : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        m_controller = std::make_unique<ServicesController>(BUSNAME_TESTDEALER);
    }

    void cleanup()
    {
        m_controller.reset();
        m_bus.reset();
    }

    void settingsAreKept()
    {
        QVERIFY(m_controller->saveSettings(record(BUSNAME_TAVMODEMS)));
        QVERIFY(m_controller->saveSettings(record(BUSNAME_ACCEPTORS)));
        ClientSettings one;
        QVERIFY(m_controller->loadSettings(BUSNAME_TAVMODEMS, one));
        QCOMPARE(one, record(BUSNAME_TAVMODEMS));
        QList<ClientSettings> several;
        QVERIFY(
            m_controller->loadSettings(QStringList{BUSNAME_ACCEPTORS, BUSNAME_TAVMODEMS}, several));
        QCOMPARE(
            several, QList<ClientSettings>({record(BUSNAME_ACCEPTORS), record(BUSNAME_TAVMODEMS)}));
    }

    void removedSettingsAreGone()
    {
        QVERIFY(m_controller->saveSettings(record(BUSNAME_TAVMODEMS)));
        QVERIFY(m_controller->removeSettings(BUSNAME_TAVMODEMS, false));
        ClientSettings settings;
        QVERIFY(!m_controller->loadSettings(BUSNAME_TAVMODEMS, settings));
    }

    void removalPassesTheFlagOn_data()
    {
        QTest::addColumn<bool>("flag");
        QTest::newRow("with the state") << true;
        QTest::newRow("settings alone") << false;
    }

    void removalPassesTheFlagOn()
    {
        QFETCH(bool, flag);
        FakeService modems(BUSNAME_TAVMODEMS);
        modems.publish(modemsBody(2));
        QVERIFY(m_controller->removeSettings(BUSNAME_TAVMODEMS, flag));
        ClientState state;
        QCOMPARE(m_controller->getClientState(BUSNAME_TAVMODEMS, state), !flag);
    }

    void aStateIsUsableByItsAge_data()
    {
        QTest::addColumn<int>("age");
        QTest::addColumn<bool>("isUsable");
        QTest::newRow("just published") << 0 << true;
        QTest::newRow("60 s old") << 60 << true;
        QTest::newRow("61 s old") << 61 << false;
        QTest::newRow("from yesterday") << 24 * 3600 << false;
        QTest::newRow("from 1970") << int(QDateTime::currentSecsSinceEpoch()) << false;
        QTest::newRow("a little in the future") << -5 << true;
        QTest::newRow("far in the future") << -10 * 365 * 24 * 3600 << true;
    }

    void aStateIsUsableByItsAge()
    {
        QFETCH(int, age);
        QFETCH(bool, isUsable);
        FakeService modems(BUSNAME_TAVMODEMS);
        ClientState before;
        before.setBody(modemsBody(1));
        ClientState state;
        bool isGiven = false;
        QElapsedTimer clock;
        do { // again when the machine was so busy that the state grew a second older
            clock.start();
            state = before;
            modems.publish(modemsBody(4), age);
            isGiven = m_controller->getClientState(BUSNAME_TAVMODEMS, state);
        } while (clock.elapsed() > 900);
        QCOMPARE(isGiven, isUsable);
        if (isUsable)
            QCOMPARE(state.body(), modemsBody(4));
        else
            QCOMPARE(state, before);
    }

    void aStateWithoutAStampIsNone()
    {
        FakeService modems(BUSNAME_TAVMODEMS);
        ClientState unstamped;
        unstamped.setBody(modemsBody(6));
        QVERIFY(modems.agent().publishState(unstamped));
        ClientState state;
        QVERIFY(!m_controller->getClientState(BUSNAME_TAVMODEMS, state));
    }

    void aStampBeyondReasonIsNone_data()
    {
        QTest::addColumn<qint64>("stamp");
        QTest::newRow("smallest") << std::numeric_limits<qint64>::min() + 1;
        QTest::newRow("largest") << std::numeric_limits<qint64>::max();
    }

    void aStampBeyondReasonIsNone()
    {
        // Not by our own library, which would not send it.
        QFETCH(qint64, stamp);
        const QString name = QStringLiteral("another client");
        QDBusConnection client = QDBusConnection::connectToBus(m_bus->address(), name);
        const auto call = [&client](const QString &method, const QVariantList &arguments) {
            auto message = QDBusMessage::createMethodCall(
                BROKER_SERVICE, BROKER_PATH, BROKER_INTERFACE, method);
            message.setArguments(arguments);
            return client.call(message).type();
        };
        QCOMPARE(call(QStringLiteral("registerAgent"), {BUSNAME_TAVMODEMS, true}),
            QDBusMessage::ReplyMessage);
        QCOMPARE(call(QStringLiteral("publishState"),
                     {BUSNAME_TAVMODEMS, QVariant::fromValue(stamp), QVariantMap(modemsBody(2))}),
            QDBusMessage::ReplyMessage);
        ClientState state;
        QVERIFY(!m_controller->getClientState(BUSNAME_TAVMODEMS, state));
        client = QDBusConnection(QString());
        QDBusConnection::disconnectFromBus(name);
    }

    void aServiceThatNeverPublishedHasNoState()
    {
        const FakeService modems(BUSNAME_TAVMODEMS);
        ClientState state;
        QVERIFY(!m_controller->getClientState(BUSNAME_TAVMODEMS, state));
        QVERIFY(!m_controller->getClientState(QStringLiteral("nobody"), state));
    }

    void aCommandCarriesItsData()
    {
        SentCommands sent(m_bus->address());
        FakeService modems(BUSNAME_TAVMODEMS);
        QSignalSpy heard(&modems.agent(), &TavBusAgent::commandReceived);
        const QMap<QString, QVariant> data = {{QStringLiteral("thread_id"), -1}};
        QVERIFY(
            m_controller->sendTavBusCommand(BUSNAME_TAVMODEMS, QStringLiteral("disable"), data));
        QVERIFY(m_controller->sendTavBusCommand(BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}));
        QTRY_COMPARE(heard.count(), 2);
        QCOMPARE(heard[0][0].value<TavBusCommand>().data(), data);
        QVERIFY(heard[1][0].value<TavBusCommand>().data().isEmpty());
        QCOMPARE(sent.take(),
            QStringList({QStringLiteral("tavmodems disable thread_id=int32 -1"),
                QStringLiteral("tavmodems stop")}));
    }

    void aCommandToNobodyFails()
    {
        QVERIFY(!m_controller->sendTavBusCommand(BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}));
    }

    void eachCallTriesToOpenAgain()
    {
        m_bus->stop();
        expectEverythingToFail();
        m_bus->start();
        QVERIFY(m_controller->saveSettings(record(BUSNAME_TAVMODEMS)));
        QVERIFY(handler()->isOpen());
    }

    void theConnectionStaysOpen()
    {
        QVERIFY(!handler()->isOpen());
        QVERIFY(m_controller->saveSettings(record(BUSNAME_TAVMODEMS)));
        QVERIFY(handler()->isOpen());
        ClientState state;
        QVERIFY(!m_controller->getClientState(BUSNAME_TAVMODEMS, state));
        QVERIFY(handler()->isOpen());
    }

    void withoutABrokerEverythingFails()
    {
        PrivateBus::Options options;
        options.withBroker = false;
        m_bus = std::make_unique<PrivateBus>(options);
        expectEverythingToFail();
    }

    void withoutAClientEverythingFails()
    {
        delete handler();
        expectEverythingToFail();
    }

private:
    TavBusQueryHandler *handler() const { return m_controller->findChild<TavBusQueryHandler *>(); }

    void expectEverythingToFail()
    {
        ClientSettings settings;
        QList<ClientSettings> list;
        ClientState state;
        QVERIFY(!m_controller->saveSettings(record(BUSNAME_TAVMODEMS)));
        QVERIFY(!m_controller->loadSettings(BUSNAME_TAVMODEMS, settings));
        QVERIFY(!m_controller->loadSettings(QStringList(BUSNAME_TAVMODEMS), list));
        QVERIFY(!m_controller->removeSettings(BUSNAME_TAVMODEMS, true));
        QVERIFY(!m_controller->getClientState(BUSNAME_TAVMODEMS, state));
        QVERIFY(!m_controller->sendTavBusCommand(BUSNAME_TAVMODEMS, QStringLiteral("stop"), {}));
    }

    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<ServicesController> m_controller;
};

QTEST_GUILESS_MAIN(TestBusAccess)
#include "tst_busaccess.moc"
