#include "store.h"
#include "fulldisk.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlError>
#include <QTemporaryDir>
#include <QTest>

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

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
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
    void damagedDatabaseThatCannotBeKeptAsideIsLeftAlone();
    void databaseOfAnotherProgramIsRefused_data();
    void databaseOfAnotherProgramIsRefused();
    void directoryInTheDatabasesPlace();
    void damagedRecordIsReportedNotMissing();
    void damageThatComesLaterIsReported();
    void damagedStateCostsNothingElse();
    void databaseInUseIsRefusedNotSetAside();
    void directoryThatCannotBeMade();
    void fullDiskMakesNoDatabase_data();
    void fullDiskMakesNoDatabase();
    void fullDiskKeepsTheFormerRecord();
    void fullDiskKeepsTheFormerState();
    void fullDiskRemovesNothing();

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
    const QByteArray content = contentOf(file());

    QTest::ignoreMessage(
        QtCriticalMsg, QRegularExpression(QStringLiteral("tavbus.db is damaged .* kept as")));
    Store store;
    QVERIFY2(store.open(file()), qPrintable(store.errorText()));
    QCOMPARE(store.saveSettings(record(kOwner, {2})), Store::Change::Done);

    const QDir directory(QFileInfo(file()).path());
    const QStringList aside = directory.entryList({QStringLiteral("tavbus.db.damaged-*")});
    QCOMPARE(aside.size(), 1);
    QCOMPARE(contentOf(directory.filePath(aside.constFirst())), content);
}

void StoreTest::damagedDatabaseThatCannotBeKeptAsideIsLeftAlone()
{
    // A name so long that there is no room for another ending: also root cannot rename it.
    const QString name = m_directory->filePath(QString(240, QLatin1Char('a')));
    const QByteArray content = "[settings]\nowner=tavmodems\n";
    overwrite(name, 0, content);

    QTest::ignoreMessage(
        QtCriticalMsg, QRegularExpression(QStringLiteral("a is damaged .* cannot be kept as")));
    Store store;
    QVERIFY(!store.open(name));
    QVERIFY2(
        store.errorText().contains(QLatin1String("not a database")), qPrintable(store.errorText()));
    QCOMPARE(contentOf(name), content);
}

void StoreTest::databaseOfAnotherProgramIsRefused_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("error");

    const QString missing = QStringLiteral("no such table");
    QTest::newRow("no settings") << QStringLiteral("DROP TABLE settings") << missing;
    QTest::newRow("no states") << QStringLiteral("DROP TABLE states") << missing;
    QTest::newRow("tables and no version")
        << QStringLiteral("PRAGMA user_version = 0") << QStringLiteral("already exists");
}

void StoreTest::databaseOfAnotherProgramIsRefused()
{
    QFETCH(const QString, change);
    QFETCH(const QString, error);
    {
        Store store;
        QVERIFY(store.open(file()));
    }
    sql(file(), change);
    const QByteArray content = contentOf(file());
    Store store;
    QVERIFY(!store.open(file()));
    QVERIFY2(store.errorText().contains(error), qPrintable(store.errorText()));
    QCOMPARE(contentOf(file()), content);
    QCOMPARE(QDir(QFileInfo(file()).path()).entryList(QDir::Files),
        QStringList(QStringLiteral("tavbus.db")));
}

void StoreTest::directoryInTheDatabasesPlace()
{
    QVERIFY(QDir().mkpath(file()));
    Store store;
    QVERIFY(!store.open(file()));
    QVERIFY2(
        store.errorText().contains(QLatin1String("unable to open")), qPrintable(store.errorText()));
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

// Found when it is read, not when the database was opened: more than SQLite keeps in memory.
void StoreTest::damageThatComesLaterIsReported()
{
    const QString large = QStringLiteral("large");
    {
        Store store;
        QVERIFY(store.open(file()));
        QCOMPARE(store.saveSettings(record(large, {QByteArray(8 * 1024 * 1024, 'x')})),
            Store::Change::Done);
    }
    Store store;
    QVERIFY(store.open(file()));
    QVERIFY(QFile::resize(file(), 4096));
    ClientSettings loaded = record(kOwner, {1});
    QCOMPARE(store.loadSettings(large, loaded), Store::Look::Failed);
    QVERIFY2(store.errorText().contains(QLatin1String("malformed")), qPrintable(store.errorText()));
    QCOMPARE(loaded, record(kOwner, {1}));
    QCOMPARE(store.removeSettings(large, false), Store::Change::Failed);
    QCOMPARE(store.loadSettings(large, loaded), Store::Look::Failed); // still there
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

void StoreTest::fullDiskMakesNoDatabase_data()
{
    QTest::addColumn<rlim_t>("room");

    QTest::newRow("no room at all") << rlim_t(0);
    QTest::newRow("room for the file, not for the tables") << rlim_t(8192);
}

void StoreTest::fullDiskMakesNoDatabase()
{
    QFETCH(const rlim_t, room);
    Store store;
    {
        const FullDisk disk(room);
        QVERIFY(!store.open(file()));
        QVERIFY(!store.errorText().isEmpty());
    }
    QVERIFY2(store.open(file()), qPrintable(store.errorText()));
    QCOMPARE(store.saveSettings(record(kOwner, {1})), Store::Change::Done);
}

void StoreTest::fullDiskKeepsTheFormerRecord()
{
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveSettings(record(kOwner, {1})), Store::Change::Done);

    Store::Change change{};
    {
        const FullDisk disk(262144);
        change = store.saveSettings(record(kOwner, {QByteArray(512 * 1024, 'x')}));
    }
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

void StoreTest::fullDiskKeepsTheFormerState()
{
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveState(kOwner, stateOf(2)), Store::Change::Done);
    {
        const FullDisk disk(0);
        QCOMPARE(store.saveState(kOwner, stateOf(6)), Store::Change::Failed);
        QVERIFY(!store.errorText().isEmpty());
    }
    for (int reopened = 0; reopened < 2; ++reopened) {
        QCOMPARE(store.state(kOwner).value_or(ClientState()), stateOf(2));
        QVERIFY(store.open(file()));
    }
    QCOMPARE(store.saveState(kOwner, stateOf(6)), Store::Change::Done);
}

void StoreTest::fullDiskRemovesNothing()
{
    Store store;
    QVERIFY(store.open(file()));
    QCOMPARE(store.saveSettings(record(kOwner, {1})), Store::Change::Done);
    QCOMPARE(store.saveState(kOwner, stateOf(6)), Store::Change::Done);
    {
        const FullDisk disk(0);
        QCOMPARE(store.removeSettings(kOwner, true), Store::Change::Failed);
        QVERIFY(!store.errorText().isEmpty());
    }
    for (int reopened = 0; reopened < 2; ++reopened) {
        ClientSettings loaded;
        QCOMPARE(store.loadSettings(kOwner, loaded), Store::Look::Found);
        QCOMPARE(store.state(kOwner).value_or(ClientState()), stateOf(6));
        QVERIFY(store.open(file()));
    }
    QCOMPARE(store.removeSettings(kOwner, true), Store::Change::Done);
}

QTEST_GUILESS_MAIN(StoreTest)
#include "storetest.moc"
