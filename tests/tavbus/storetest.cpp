#include "store.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlError>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace tavbus;

namespace {

const QString kOwner = QStringLiteral("tavmodems");

ClientSettings record(const QString &owner, const QVariantList &settings)
{
    ClientSettings result;
    result.setOwner(owner);
    result.setDescription(QStringLiteral("From test dealer"));
    result.setDt(QDateTime::fromMSecsSinceEpoch(1700000000123));
    result.setSettings(settings);
    return result;
}

ClientState stateOf(int mode)
{
    ClientState state;
    state.setDt(QDateTime::fromMSecsSinceEpoch(1700000000456));
    state.setBody({{QStringLiteral("serviceMode"), mode}});
    return state;
}

// Runs one statement in the database behind the store's back.
QVariant sql(const QString &file, const QString &statement)
{
    QVariant result;
    {
        auto database
            = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("behind"));
        database.setDatabaseName(file);
        database.open();
        QSqlQuery query(database);
        if (!query.exec(statement))
            qWarning("%s", qUtf8Printable(query.lastError().text()));
        else if (query.next())
            result = query.value(0);
    }
    QSqlDatabase::removeDatabase(QStringLiteral("behind"));
    return result;
}

void overwrite(const QString &path, qint64 from, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(from));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

class StoreTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void recordsOutliveTheStore();
    void savingAgainReplacesTheRecord();
    void removeSettings_data();
    void removeSettings();
    void ownersAreBounded();
    void agentsWithStatesAreBounded();
    void databaseIsSetUpToLast();
    void laterSchemaIsRefusedAndLeftAlone();
    void damagedDatabaseIsKeptAside_data();
    void damagedDatabaseIsKeptAside();
    void damagedRecordIsReportedNotMissing();
    void damagedStateCostsNothingElse();
    void databaseInUseIsRefusedNotSetAside();
    void directoryThatCannotBeMade();
    void fullDiskKeepsTheFormerRecord();

private:
    QString file() const { return m_directory->filePath(QStringLiteral("deep/down/tavbus.db")); }

    std::unique_ptr<QTemporaryDir> m_directory;
};

void StoreTest::init()
{
    m_directory = std::make_unique<QTemporaryDir>();
}

void StoreTest::recordsOutliveTheStore()
{
    const ClientSettings settings = record(kOwner,
        {1, 2U, Q_INT64_C(-3), Q_UINT64_C(4), 0.5, true, QStringLiteral("\u00e4"),
            QByteArray("\0\xff", 2), QStringList(), QVariantList(),
            QVariantMap({{QStringLiteral("a"), QVariantMap()}})});
    {
        Store store;
        QVERIFY2(store.open(file()), qPrintable(store.errorText()));
        QCOMPARE(store.saveSettings(settings), Store::Change::Done);
        QCOMPARE(store.saveState(kOwner, stateOf(6)), Store::Change::Done);
    }
    Store store;
    QVERIFY(store.open(file()));
    ClientSettings loaded;
    QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
    QCOMPARE(loaded, settings);
    for (int i = 0; i < loaded.settings().size(); ++i)
        QCOMPARE(loaded.settings().at(i).userType(), settings.settings().at(i).userType());
    QCOMPARE(store.state(kOwner).value_or(ClientState()), stateOf(6));
    QVERIFY(!store.state(QStringLiteral("nobody")));
    QCOMPARE(store.loadSettings(QStringLiteral("nobody"), loaded), Store::Look::Missing);
    QCOMPARE(loaded, settings);
}

void StoreTest::savingAgainReplacesTheRecord()
{
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveSettings(record(kOwner, {1})), Store::Change::Done);
    QCOMPARE(store.saveSettings(record(kOwner, {})), Store::Change::Done);
    ClientSettings loaded;
    QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
    QCOMPARE(loaded, record(kOwner, {}));
}

void StoreTest::removeSettings_data()
{
    QTest::addColumn<bool>("hasSettings");
    QTest::addColumn<bool>("hasState");
    QTest::addColumn<bool>("withState");

    QTest::newRow("settings alone") << true << true << false;
    QTest::newRow("settings and state") << true << true << true;
    QTest::newRow("settings, no state") << true << false << true;
    QTest::newRow("state, no settings") << false << true << true;
    QTest::newRow("nothing there") << false << false << true;
}

void StoreTest::removeSettings()
{
    QFETCH(const bool, hasSettings);
    QFETCH(const bool, hasState);
    QFETCH(const bool, withState);
    const QString other = QStringLiteral("watchdogs");
    Store store;
    QVERIFY(store.open(file()));
    if (hasSettings)
        store.saveSettings(record(kOwner, {1}));
    if (hasState)
        store.saveState(kOwner, stateOf(6));
    store.saveSettings(record(other, {2}));
    store.saveState(other, stateOf(2));

    for (int repeated = 0; repeated < 2; ++repeated) {
        QCOMPARE(store.removeSettings(kOwner, withState), Store::Change::Done);
        for (int reopened = 0; reopened < 2; ++reopened) {
            ClientSettings loaded;
            QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Missing);
            QCOMPARE(store.state(kOwner).has_value(), hasState && !withState);
            QCOMPARE(store.loadSettings(other, loaded), Store::Look::Found);
            QVERIFY(store.state(other));
            QVERIFY(store.open(file()));
        }
    }
}

void StoreTest::ownersAreBounded()
{
    Store store;
    QVERIFY(store.open(file()));
    for (int i = 0; i < Store::kMaxOwners; ++i)
        QCOMPARE(store.saveSettings(record(QString::number(i), {})), Store::Change::Done);
    QCOMPARE(store.saveSettings(record(kOwner, {})), Store::Change::Full);
    QCOMPARE(store.saveSettings(record(QStringLiteral("7"), {1})), Store::Change::Done);
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveSettings(record(kOwner, {})), Store::Change::Full);
    QCOMPARE(store.removeSettings(QStringLiteral("7"), false), Store::Change::Done);
    QCOMPARE(store.saveSettings(record(kOwner, {})), Store::Change::Done);
}

void StoreTest::agentsWithStatesAreBounded()
{
    Store store;
    QVERIFY(store.open(file()));
    for (int i = 0; i < Store::kMaxOwners; ++i)
        QCOMPARE(store.saveState(QString::number(i), stateOf(i)), Store::Change::Done);
    QCOMPARE(store.saveState(kOwner, stateOf(6)), Store::Change::Full);
    QVERIFY(!store.state(kOwner));
    QCOMPARE(store.saveState(QStringLiteral("7"), stateOf(6)), Store::Change::Done);
}

void StoreTest::databaseIsSetUpToLast()
{
    {
        Store store;
        QVERIFY(store.open(file()));
        for (const QString &suffix : {QString(), QStringLiteral("-wal")}) {
            const auto others
                = QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther;
            QVERIFY(QFile::exists(file() + suffix));
            QCOMPARE(QFile::permissions(file() + suffix) & others, QFile::Permissions());
        }
    }
    QCOMPARE(sql(file(), QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));
    QCOMPARE(sql(file(), QStringLiteral("PRAGMA user_version")).toInt(), Store::kVersion);
}

void StoreTest::laterSchemaIsRefusedAndLeftAlone()
{
    {
        Store store;
        QVERIFY(store.open(file()));
        store.saveSettings(record(kOwner, {1}));
    }
    sql(file(), QStringLiteral("PRAGMA user_version = 2"));
    Store store;
    QVERIFY(!store.open(file()));
    QVERIFY2(
        store.errorText().contains(QLatin1String("later version")), qPrintable(store.errorText()));
    QVERIFY2(store.errorText().contains(file()), qPrintable(store.errorText()));
    QCOMPARE(sql(file(), QStringLiteral("SELECT count(*) FROM settings")).toInt(), 1);
    QCOMPARE(sql(file(), QStringLiteral("PRAGMA user_version")).toInt(), 2);
}

void StoreTest::damagedDatabaseIsKeptAside_data()
{
    QTest::addColumn<qint64>("from");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("header gone") << qint64(0) << QByteArray(100, 'x');
    QTest::newRow("root page of a table gone") << qint64(4096) << QByteArray(4096, '\xff');
    QTest::newRow("text file") << qint64(0) << QByteArray("[settings]\nowner=tavmodems\n");
}

void StoreTest::damagedDatabaseIsKeptAside()
{
    QFETCH(const qint64, from);
    QFETCH(const QByteArray, bytes);
    {
        Store store;
        QVERIFY(store.open(file()));
        store.saveSettings(record(kOwner, {1}));
    }
    overwrite(file(), from, bytes);
    QFile damaged(file());
    QVERIFY(damaged.open(QIODevice::ReadOnly));
    const QByteArray content = damaged.readAll();

    QTest::ignoreMessage(
        QtCriticalMsg, QRegularExpression(QStringLiteral("tavbus.db is damaged .* kept as")));
    Store store;
    QVERIFY2(store.open(file()), qPrintable(store.errorText()));
    QCOMPARE(store.saveSettings(record(kOwner, {2})), Store::Change::Done);

    const QDir directory(QFileInfo(file()).path());
    const QStringList aside = directory.entryList({QStringLiteral("tavbus.db.damaged-*")});
    QCOMPARE(aside.size(), 1);
    QFile kept(directory.filePath(aside.constFirst()));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), content);
}

void StoreTest::damagedRecordIsReportedNotMissing()
{
    {
        Store store;
        QVERIFY(store.open(file()));
        store.saveSettings(record(kOwner, {1}));
    }
    sql(file(), QStringLiteral("UPDATE settings SET body = x'00000009'"));
    Store store;
    QVERIFY(store.open(file()));
    ClientSettings loaded;
    QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Failed);
    QVERIFY(store.errorText().contains(kOwner));
    QCOMPARE(store.saveSettings(record(kOwner, {2})), Store::Change::Done);
    QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
}

void StoreTest::damagedStateCostsNothingElse()
{
    {
        Store store;
        QVERIFY(store.open(file()));
        store.saveSettings(record(kOwner, {1}));
        store.saveState(kOwner, stateOf(6));
    }
    sql(file(), QStringLiteral("UPDATE states SET body = x'00000008'"));
    QTest::ignoreMessage(
        QtCriticalMsg, QRegularExpression(QStringLiteral("state of tavmodems is damaged")));
    Store store;
    QVERIFY(store.open(file()));
    QVERIFY(!store.state(kOwner));
    ClientSettings loaded;
    QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
    QCOMPARE(store.saveState(kOwner, stateOf(2)), Store::Change::Done);
    QCOMPARE(store.state(kOwner).value_or(ClientState()), stateOf(2));
}

void StoreTest::databaseInUseIsRefusedNotSetAside()
{
    QDir().mkpath(QFileInfo(file()).path());
    {
        auto other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("other"));
        other.setDatabaseName(file());
        QVERIFY(other.open());
        QVERIFY(QSqlQuery(other).exec(QStringLiteral("BEGIN EXCLUSIVE")));
        Store store;
        store.setPatience(std::chrono::milliseconds(10));
        QVERIFY(!store.open(file()));
        QVERIFY2(
            store.errorText().contains(QLatin1String("locked")), qPrintable(store.errorText()));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("other"));
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(QDir(QFileInfo(file()).path()).entryList({QStringLiteral("*damaged*")}).size(), 0);
}

void StoreTest::directoryThatCannotBeMade()
{
    QFile blocked(m_directory->filePath(QStringLiteral("deep")));
    QVERIFY(blocked.open(QIODevice::WriteOnly));
    Store store;
    QVERIFY(!store.open(file()));
    QVERIFY2(store.errorText().contains(file()), qPrintable(store.errorText()));
}

void StoreTest::fullDiskKeepsTheFormerRecord()
{
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveSettings(record(kOwner, {1})), Store::Change::Done);

    // A file that may not grow stands in for the disk.
    rlimit former{};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &former), 0);
    rlimit small = former;
    small.rlim_cur = 262144;
    const auto formerHandler = std::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto change = store.saveSettings(record(kOwner, {QByteArray(512 * 1024, 'x')}));
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &former), 0);
    std::signal(SIGXFSZ, formerHandler);

    QCOMPARE(change, Store::Change::Failed);
    QVERIFY(!store.errorText().isEmpty());
    for (int reopened = 0; reopened < 2; ++reopened) {
        ClientSettings loaded;
        QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
        QCOMPARE(loaded, record(kOwner, {1}));
        QVERIFY(store.open(file()));
    }
    QCOMPARE(store.saveSettings(record(kOwner, {2})), Store::Change::Done);
}

QTEST_GUILESS_MAIN(StoreTest)
#include "storetest.moc"
