#include "busconnection.h"
#include "buserrors.h"
#include "busnames.h"
#include "privatebus.h"
#include "tavbusqueryhandler.h"

#include <QDBusError>
#include <QFile>
#include <QProcess>
#include <QTest>

#include <grp.h>
#include <unistd.h>

using namespace tavbus;

namespace {

const QString kNoError;
// D-Bus refuses users without an entry in the list of users; Debian has these two everywhere.
constexpr uint kUser = 65534; // nobody
constexpr uint kOther = 1; // daemon

/// A client of the broker that runs as another user; needs root, as itself otherwise.
class Client
{
    Q_DISABLE_COPY_MOVE(Client)

public:
    Client(const PrivateBus &bus, const QString &agent, uint user, uint group)
    {
        // Copied to where every user can reach it.
        const QString program = bus.directory() + QStringLiteral("/busclient");
        if (!QFile::exists(program) && !QFile::copy(QStringLiteral(BUSCLIENT), program))
            qFatal("cannot copy the client");
        auto environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        if (::geteuid() == user)
            m_process.start(program, {agent});
        else
            m_process.start(QStringLiteral("setpriv"),
                {QStringLiteral("--reuid=%1").arg(user), QStringLiteral("--regid=%1").arg(user),
                    QStringLiteral("--groups=%1").arg(group), program, agent});
        if (!m_process.waitForReadyRead())
            qFatal("the client says nothing: %s", qUtf8Printable(m_process.errorString()));
        m_error = QString::fromLatin1(m_process.readLine()).trimmed();
    }
    ~Client() { leave(); }

    /// The error that registering ended with, empty for none.
    QString error() const { return m_error; }

    void leave()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
    QString m_error;
};

// A group of this machine that this user is not in: stands in for "ovrel", which need not exist
// here.
const group &foreignGroup()
{
    static const group *const found = [] {
        ::setgrent();
        const group *next = ::getgrent();
        while (next && (next->gr_gid == ::getegid() || ::group_member(next->gr_gid) != 0))
            next = ::getgrent();
        return next;
    }();
    if (!found)
        qFatal("no group");
    return *found;
}

// The installed policy for that group.
QString policyFor(const group &members, const QString &file)
{
    QFile policy(QStringLiteral(POLICY));
    QFile adjusted(file);
    if (!policy.open(QIODevice::ReadOnly) || !adjusted.open(QIODevice::WriteOnly))
        qFatal("no policy");
    QByteArray text = policy.readAll();
    if (text.count("group=\"ovrel\"") != 1)
        qFatal("the policy does not name the group once");
    text.replace("group=\"ovrel\"", "group=\"" + QByteArray(members.gr_name) + '"');
    adjusted.write(text);
    return file;
}

} // namespace

/// Who may use the bus, and who may speak as whom. Run by root it changes to other users; run by
/// another user it can only show that this one is refused and what it shares with itself.
class OtherUsersTest : public QObject
{
    Q_OBJECT

private slots:
    void policyLetsInRootAndTheGroupAlone_data();
    void policyLetsInRootAndTheGroupAlone();
    void nobodyElseMayBeTheBroker();
    void nameBelongsToTheUserWhoCameFirst();

private:
    const bool m_isRoot = ::geteuid() == 0;
};

void OtherUsersTest::policyLetsInRootAndTheGroupAlone_data()
{
    QTest::addColumn<uint>("user");
    QTest::addColumn<uint>("group");
    QTest::addColumn<QString>("error");

    const QString denied = QDBusError::errorString(QDBusError::AccessDenied);
    if (m_isRoot) {
        QTest::newRow("root") << 0U << 0U << kNoError;
        QTest::newRow("member of the group") << kUser << uint(foreignGroup().gr_gid) << kNoError;
        QTest::newRow("another user") << kUser << kUser << denied;
    } else {
        QTest::newRow("another user") << uint(::geteuid()) << uint(::getegid()) << denied;
    }
}

void OtherUsersTest::policyLetsInRootAndTheGroupAlone()
{
    QFETCH(const uint, user);
    QFETCH(const uint, group);
    QFETCH(const QString, error);
    const QTemporaryDir directory;
    PrivateBus::Options options;
    options.policy = policyFor(foreignGroup(), directory.filePath(QStringLiteral("policy.conf")));
    options.forOtherUsers = true;
    const PrivateBus bus(options);
    const Client client(bus, BUSNAME_TESTDEALER, user, group);
    QCOMPARE(client.error(), error);
}

void OtherUsersTest::nobodyElseMayBeTheBroker()
{
    const QTemporaryDir directory;
    PrivateBus::Options options;
    options.policy = policyFor(foreignGroup(), directory.filePath(QStringLiteral("policy.conf")));
    options.forOtherUsers = true;
    const PrivateBus bus(options);
    const QString program = bus.directory() + QStringLiteral("/tavbusd");
    QVERIFY(QFile::copy(QStringLiteral(TAVBUSD), program));
    const QString database = bus.directory() + QStringLiteral("/other/tavbus.db");
    QVERIFY(QDir().mkdir(bus.directory() + QStringLiteral("/other")));
    QStringList command{program, QStringLiteral("--address"), bus.address(),
        QStringLiteral("--database"), database};
    if (m_isRoot) {
        const QByteArray place = QFile::encodeName(QFileInfo(database).path());
        QCOMPARE(::chown(place.constData(), kUser, kUser), 0);
        command = QStringList{QStringLiteral("setpriv"), QStringLiteral("--reuid=%1").arg(kUser),
                      QStringLiteral("--regid=%1").arg(kUser),
                      QStringLiteral("--groups=%1").arg(foreignGroup().gr_gid)}
            + command;
    }
    QProcess broker;
    broker.start(command.takeFirst(), command);
    QVERIFY(broker.waitForFinished());
    QCOMPARE(broker.exitCode(), 1);
    const QByteArray said = broker.readAllStandardError();
    QVERIFY2(said.contains("cannot take the name"), said.constData());
}

void OtherUsersTest::nameBelongsToTheUserWhoCameFirst()
{
    PrivateBus::Options options;
    options.forOtherUsers = true;
    const PrivateBus bus(options);
    const uint self = ::geteuid();
    const uint user = m_isRoot ? kUser : self;

    Client first(bus, BUSNAME_TAVMODEMS, user, user);
    QCOMPARE(first.error(), kNoError);
    const Client sameUser(bus, BUSNAME_TAVMODEMS, user, user);
    QCOMPARE(sameUser.error(), kNoError);
    if (!m_isRoot)
        return;
    QCOMPARE(Client(bus, BUSNAME_TAVMODEMS, kOther, kOther).error(), ERROR_NAME_TAKEN);
    QCOMPARE(Client(bus, BUSNAME_WATCHDOGS, kOther, kOther).error(), kNoError);
    QCOMPARE(Client(bus, BUSNAME_TAVMODEMS, 0, 0).error(), kNoError);
    first.leave();
    QCOMPARE(Client(bus, BUSNAME_TAVMODEMS, kOther, kOther).error(), ERROR_NAME_TAKEN);

    // "watchdogs" is free again, since its client has left.
    TavBusQueryHandler handler(BUSNAME_WATCHDOGS);
    QVERIFY(handler.open());
    QTRY_COMPARE(Client(bus, BUSNAME_WATCHDOGS, kUser, kUser).error(), ERROR_NAME_TAKEN);
    handler.close();
    QTRY_COMPARE(Client(bus, BUSNAME_WATCHDOGS, kUser, kUser).error(), kNoError);
}

QTEST_GUILESS_MAIN(OtherUsersTest)
#include "otheruserstest.moc"
