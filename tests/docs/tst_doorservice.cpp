#include "privatebus.h"
#include "tavbuscommand.h"
#include "tavbusqueryhandler.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>

namespace {

const QString kAgent = QStringLiteral("door");

} // namespace

/// The service that docs/writing-a-service.md explains, seen from a tool.
class DoorServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bus = std::make_unique<PrivateBus>();
        m_tool = std::make_unique<tavbus::TavBusQueryHandler>(QStringLiteral("testdealer"));
        QVERIFY(m_tool->open());
        setSensor("0");
        tavbus::ClientSettings settings;
        settings.setOwner(kAgent);
        settings.setDt(QDateTime::currentDateTime());
        settings.setSettings(
            {QVariantMap{{QStringLiteral("sensor"), m_sensor}, {QStringLiteral("periodMs"), 20}}});
        QVERIFY(m_tool->saveSettings(settings));
    }
    void cleanup()
    {
        if (m_service.state() != QProcess::NotRunning) {
            m_service.terminate();
            QVERIFY(m_service.waitForFinished());
        }
        m_tool.reset();
        m_bus.reset();
    }

    void tellsWhetherTheDoorIsOpen()
    {
        startService();
        QTRY_VERIFY(isTold(kRunning, false));
        setSensor("1");
        QTRY_VERIFY(isTold(kRunning, true));
        setSensor("0");
        QTRY_VERIFY(isTold(kRunning, false));
    }

    void stopsAndRestarts()
    {
        startService();
        QTRY_VERIFY(isTold(kRunning, false));
        QVERIFY(command("stop"));
        QTRY_VERIFY(isTold(kStopped, false));
        setSensor("1");
        QTest::qWait(100); // five times as long as a running one takes to see it
        QVERIFY(isTold(kStopped, false));
        QVERIFY(command("restart"));
        QTRY_VERIFY(isTold(kRunning, true));
    }

    void outlivesTheBroker()
    {
        startService();
        QTRY_VERIFY(isTold(kRunning, false));
        m_bus->killBroker();
        QTRY_VERIFY(command("stop"));
        QTRY_VERIFY(isTold(kStopped, false));
    }

    void endsWithoutABus()
    {
        m_tool->close();
        m_bus->stop();
        startService();
        QVERIFY(m_service.waitForFinished());
        QCOMPARE(m_service.exitStatus(), QProcess::NormalExit);
        QCOMPARE(m_service.exitCode(), 1);
    }

private:
    static constexpr int kRunning = 1;
    static constexpr int kStopped = 2;

    void startService()
    {
        m_service.setProcessChannelMode(QProcess::ForwardedChannels);
        m_service.start(QStringLiteral(DOORSERVICE), QStringList());
        QVERIFY(m_service.waitForStarted());
    }

    // In one go: the service never reads half of it.
    void setSensor(const QByteArray &value)
    {
        QFile next(m_directory.filePath(QStringLiteral("next")));
        QVERIFY(next.open(QIODevice::WriteOnly) && next.write(value) == value.size());
        next.close();
        QCOMPARE(std::rename(QFile::encodeName(next.fileName()).constData(),
                     QFile::encodeName(m_sensor).constData()),
            0);
    }

    bool isTold(int mode, bool open)
    {
        tavbus::ClientState state;
        return m_tool->loadState(kAgent, state)
            && state.body()
            == QVariantMap{{QStringLiteral("mode"), mode}, {QStringLiteral("open"), open}};
    }

    bool command(const char *name)
    {
        TavBusCommand command;
        command.setAgent(kAgent);
        command.setName(QString::fromLatin1(name));
        return m_tool->sendMessage(command.toOutgoingMessage());
    }

    QTemporaryDir m_directory;
    const QString m_sensor = m_directory.filePath(QStringLiteral("sensor"));
    QProcess m_service;
    std::unique_ptr<PrivateBus> m_bus;
    std::unique_ptr<tavbus::TavBusQueryHandler> m_tool;
};

QTEST_GUILESS_MAIN(DoorServiceTest)
#include "tst_doorservice.moc"
