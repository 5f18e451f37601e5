#include "modemservicestate.h"

#include <QTest>

class TestModemServiceState : public QObject
{
    Q_OBJECT

private slots:
    void isUnknownAtFirst();
    void readsTheMode_data();
    void readsTheMode();
    void publishesWhatItReads_data();
    void publishesWhatItReads();
};

namespace {

tavbus::ClientState state(const QVariant &mode)
{
    tavbus::ClientState result;
    result.setBody({{QStringLiteral("serviceMode"), mode}});
    return result;
}

} // namespace

void TestModemServiceState::isUnknownAtFirst()
{
    QCOMPARE(ModemServiceState().serviceMode(), 0);
}

void TestModemServiceState::readsTheMode_data()
{
    QTest::addColumn<QVariant>("mode");
    QTest::addColumn<int>("expected");
    for (int mode = 0; mode <= 6; ++mode)
        QTest::addRow("mode %d", mode) << QVariant(mode) << mode;
    QTest::newRow("wide number") << QVariant(6LL) << 6;
    QTest::newRow("below the list") << QVariant(-1) << 0;
    QTest::newRow("above the list") << QVariant(7) << 0;
    QTest::newRow("text") << QVariant(QStringLiteral("6")) << 0;
    QTest::newRow("nothing") << QVariant() << 0;
    QTest::newRow("number beyond int") << QVariant(0x100000006LL) << 0;
}

void TestModemServiceState::readsTheMode()
{
    QFETCH(QVariant, mode);
    ModemServiceState read;
    read.setServiceMode(ModemServiceState::Connected);
    read.setClientState(state(mode));
    QTEST(read.serviceMode(), "expected");
}

void TestModemServiceState::publishesWhatItReads_data()
{
    QTest::addColumn<int>("mode");
    for (int mode = 0; mode <= 6; ++mode)
        QTest::addRow("mode %d", mode) << mode;
}

void TestModemServiceState::publishesWhatItReads()
{
    QFETCH(int, mode);
    ModemServiceState written;
    written.setServiceMode(static_cast<ModemServiceState::Mode>(mode));
    const QVariantMap body = written.toStateBody();
    QCOMPARE(body, QVariantMap({{QStringLiteral("serviceMode"), mode}}));

    tavbus::ClientState published;
    published.setBody(body);
    ModemServiceState read;
    read.setClientState(published);
    QCOMPARE(read.serviceMode(), mode);
}

QTEST_APPLESS_MAIN(TestModemServiceState)

#include "tst_modemservicestate.moc"
