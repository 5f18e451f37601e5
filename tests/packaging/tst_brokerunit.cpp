#include "privatebus.h"

#include <QRegularExpression>
#include <QTest>

#include <unistd.h>

namespace {

// %S of systemd.unit(5) for a unit of the system.
const QString kStateDirectories = QStringLiteral("/var/lib");

// Runs a command where it can write to one directory, below /var/lib, and to nothing else of the
// file system, as ProtectSystem=strict and StateDirectory= have it. As root of a user namespace,
// unless it is root already; the command is the user again, for the bus asks who it is.
const QString kConfine = QStringLiteral(R"(
set -eu
directory=$1 user=$2 group=$3
shift 3
mount -t tmpfs tmpfs /var/lib
mkdir -p "$directory"
mount -t tmpfs -o mode=700 tmpfs "$directory"
mount -o remount,bind,ro /var/lib
mount -o remount,bind,ro /
[ "$user" = 0 ] || exec unshare --user --map-user="$user" --map-group="$group" "$@"
exec "$@"
)");

QStringList ownNamespace()
{
    QStringList options{
        QStringLiteral("--mount"), QStringLiteral("--propagation"), QStringLiteral("private")};
    if (::geteuid() != 0)
        options += {QStringLiteral("--user"), QStringLiteral("--map-root-user")};
    return options;
}

/// The value of a key of a unit or of a D-Bus service file.
QString valueOf(const QString &path, const char *key)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    static const QRegularExpression setting(
        QStringLiteral("^([A-Za-z]+)=(.*)$"), QRegularExpression::MultilineOption);
    QRegularExpressionMatchIterator matches
        = setting.globalMatch(QString::fromUtf8(file.readAll()));
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        if (match.captured(1) == QLatin1String(key))
            return match.captured(2).replace(QLatin1String("%S"), kStateDirectories);
    }
    return {};
}

const QString kUnit = QStringLiteral(SERVICE_FILES "/tavbusd.service");
const QString kActivation = QStringLiteral(SERVICE_FILES "/org.ovrel.TavBus.service");

QString stateDirectory()
{
    return kStateDirectories + QLatin1Char('/') + valueOf(kUnit, "StateDirectory");
}

} // namespace

class BrokerUnitTest : public QObject
{
    Q_OBJECT

private slots:
    void systemdAndTheBusStartItAlike()
    {
        QVERIFY(!valueOf(kUnit, "ExecStart").isEmpty());
        QCOMPARE(valueOf(kUnit, "ExecStart"), valueOf(kActivation, "Exec"));
        QCOMPARE(valueOf(kUnit, "BusName"), valueOf(kActivation, "Name"));
        QCOMPARE(valueOf(kActivation, "SystemdService"), QStringLiteral("tavbusd.service"));
    }

    void storeIsWhereTheUnitLetsItWrite()
    {
        QCOMPARE(valueOf(kUnit, "ProtectSystem"), QStringLiteral("strict"));
        QVERIFY(!valueOf(kUnit, "StateDirectory").isEmpty());
        const QStringList command = valueOf(kUnit, "ExecStart").split(QLatin1Char(' '));
        const QString store = command.value(command.indexOf(QStringLiteral("--database")) + 1);
        QVERIFY2(store.startsWith(stateDirectory() + QLatin1Char('/')), qUtf8Printable(store));
    }

    void startsWhereItCanWriteNothingElse()
    {
        if (QProcess::execute(QStringLiteral("unshare"), ownNamespace() << QStringLiteral("true"))
            != 0)
            QSKIP("no namespaces can be made here");
        PrivateBus::Options options;
        options.withBroker = false;
        const PrivateBus bus(options);

        QProcess broker;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        // Nothing of a user's, which a service of the system does not have.
        for (const char *name : {"HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "TAV_TERMINAL_CONF"})
            environment.remove(QLatin1String(name));
        environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
        broker.setProcessEnvironment(environment);
        QStringList command = valueOf(kUnit, "ExecStart").split(QLatin1Char(' '));
        command[0] = QStringLiteral(TAVBUSD); // it is not installed
        broker.start(QStringLiteral("unshare"),
            ownNamespace()
                + QStringList{QStringLiteral("sh"), QStringLiteral("-c"), kConfine,
                    QStringLiteral("sh"), stateDirectory(), QString::number(::geteuid()),
                    QString::number(::getegid())}
                + command);
        QTRY_VERIFY_WITH_TIMEOUT(
            bus.brokerPid() != 0 || broker.state() == QProcess::NotRunning, 30000);
        QVERIFY2(bus.brokerPid() != 0, broker.readAllStandardError().constData());
        bus.endBroker();
        QVERIFY(broker.waitForFinished());
        QCOMPARE(broker.exitCode(), 0);
    }
};

QTEST_GUILESS_MAIN(BrokerUnitTest)
#include "tst_brokerunit.moc"
