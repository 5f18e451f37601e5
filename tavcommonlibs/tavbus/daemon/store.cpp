#include "store.h"

#include "wire.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QVariant>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavbus {

namespace {

const QString kConnection = QStringLiteral("tavbus-store");
// Result codes of SQLite: SQLITE_CORRUPT, SQLITE_NOTADB; extended codes have these low bytes.
constexpr int kCorrupt = 11;
constexpr int kNotADatabase = 26;

bool meansDamage(const QSqlError &error)
{
    const int code = error.nativeErrorCode().toInt() & 0xff;
    return code == kCorrupt || code == kNotADatabase;
}

} // namespace

struct Store::Statements
{
    explicit Statements(const QSqlDatabase &database)
        : saveSettings(database)
        , loadSettings(database)
        , removeSettings(database)
        , saveState(database)
        , removeState(database)
    {
        saveSettings.prepare(QStringLiteral(
            "INSERT INTO settings (owner, description, stamp, body) VALUES (?, ?, ?, ?)"
            " ON CONFLICT (owner) DO UPDATE SET description = excluded.description,"
            " stamp = excluded.stamp, body = excluded.body"));
        loadSettings.prepare(
            QStringLiteral("SELECT description, stamp, body FROM settings WHERE owner = ?"));
        loadSettings.setForwardOnly(true);
        removeSettings.prepare(QStringLiteral("DELETE FROM settings WHERE owner = ?"));
        saveState.prepare(
            QStringLiteral("INSERT INTO states (agent, stamp, body) VALUES (?, ?, ?)"
                           " ON CONFLICT (agent) DO UPDATE SET stamp = excluded.stamp,"
                           " body = excluded.body"));
        removeState.prepare(QStringLiteral("DELETE FROM states WHERE agent = ?"));
    }

    QSqlQuery saveSettings;
    QSqlQuery loadSettings;
    QSqlQuery removeSettings;
    QSqlQuery saveState;
    QSqlQuery removeState;
};

Store::Store() = default;

Store::~Store()
{
    close();
}

bool Store::open(const QString &file)
{
    if (!QDir().mkpath(QFileInfo(file).absolutePath())) {
        m_error = QStringLiteral("cannot make the directory of %1").arg(file);
        return false;
    }
    Opened opened = tryOpen(file);
    if (opened == Opened::Damaged && setAside(file))
        opened = tryOpen(file);
    if (opened != Opened::Yes)
        close();
    return opened == Opened::Yes;
}

Store::Change Store::saveSettings(const ClientSettings &settings)
{
    if (!m_owners.contains(settings.owner()) && m_owners.size() >= kMaxOwners)
        return Change::Full;
    QSqlQuery &query = m_statements->saveSettings;
    query.addBindValue(settings.owner());
    query.addBindValue(settings.description());
    query.addBindValue(wire::fromDateTime(settings.dt()));
    query.addBindValue(wire::packed(settings.settings()));
    if (!run(query))
        return Change::Failed;
    m_owners.insert(settings.owner());
    return Change::Done;
}

Store::Look Store::loadSettings(const QString &owner, ClientSettings &settings)
{
    if (!m_owners.contains(owner))
        return Look::Missing;
    QSqlQuery &query = m_statements->loadSettings;
    query.addBindValue(owner);
    if (!query.exec() || !query.next()) {
        failed(query.lastError());
        query.finish();
        return Look::Failed;
    }
    const auto body = wire::unpacked(query.value(2).toByteArray());
    settings.setOwner(owner);
    settings.setDescription(query.value(0).toString());
    settings.setDt(wire::toDateTime(query.value(1).toLongLong()));
    query.finish();
    if (!body) {
        m_error = QStringLiteral("the record of %1 is damaged").arg(owner);
        return Look::Failed;
    }
    settings.setSettings(body->toList());
    return Look::Found;
}

Store::Change Store::removeSettings(const QString &owner, bool withState)
{
    const bool alsoState = withState && m_states.contains(owner);
    if (!m_owners.contains(owner) && !alsoState)
        return Change::Done;
    m_database.transaction();
    m_statements->removeSettings.addBindValue(owner);
    bool done = run(m_statements->removeSettings);
    if (done && alsoState) {
        m_statements->removeState.addBindValue(owner);
        done = run(m_statements->removeState);
    }
    if (!done || !m_database.commit()) {
        if (done)
            failed(m_database.lastError());
        m_database.rollback();
        return Change::Failed;
    }
    m_owners.remove(owner);
    if (alsoState)
        m_states.remove(owner);
    return Change::Done;
}

Store::Change Store::saveState(const QString &agent, const ClientState &state)
{
    if (!m_states.contains(agent) && m_states.size() >= kMaxOwners)
        return Change::Full;
    const KeptState kept{wire::fromDateTime(state.dt()), wire::packed(state.body())};
    QSqlQuery &query = m_statements->saveState;
    query.addBindValue(agent);
    query.addBindValue(kept.stamp);
    query.addBindValue(kept.body);
    if (!run(query))
        return Change::Failed;
    m_states.insert(agent, kept);
    return Change::Done;
}

std::optional<ClientState> Store::state(const QString &agent) const
{
    const auto found = m_states.constFind(agent);
    const auto body = found == m_states.constEnd() ? std::nullopt : wire::unpacked(found->body);
    if (!body)
        return std::nullopt;
    ClientState state;
    state.setDt(wire::toDateTime(found->stamp));
    state.setBody(body->toMap());
    return state;
}

Store::Opened Store::tryOpen(const QString &file)
{
    close();
    // Records hold passwords. SQLite gives its other files the permissions of this one.
    const int created = ::open(
        QFile::encodeName(file).constData(), O_CREAT | O_RDONLY | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (created >= 0)
        ::close(created);
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), kConnection);
    m_database.setDatabaseName(file);
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(m_patience.count()));
    if (!m_database.open())
        return failed(m_database.lastError());
    Opened opened = prepareSchema();
    if (opened == Opened::Yes)
        opened = readAll();
    return opened;
}

Store::Opened Store::prepareSchema()
{
    QSqlQuery query(m_database);
    // Exclusive: a second broker on the same file is refused, and no shared memory is needed.
    for (const char *const pragma : {"PRAGMA locking_mode = EXCLUSIVE", "PRAGMA journal_mode = WAL",
             "PRAGMA synchronous = FULL", "BEGIN IMMEDIATE", "PRAGMA quick_check"}) {
        if (!query.exec(QLatin1String(pragma)))
            return failed(query.lastError());
    }
    if (!query.next() || query.value(0).toString() != QLatin1String("ok")) {
        m_error = query.value(0).toString().simplified();
        return Opened::Damaged;
    }
    if (!query.exec(QStringLiteral("PRAGMA user_version")) || !query.next())
        return failed(query.lastError());
    const int version = query.value(0).toInt();
    query.finish();
    if (version > kVersion) {
        m_error = QStringLiteral("%1 was written by a later version (schema %2, this one knows %3)")
                      .arg(m_database.databaseName())
                      .arg(version)
                      .arg(kVersion);
        return Opened::No;
    }
    if (version == 0) {
        for (const char *const step :
            {"CREATE TABLE settings (owner TEXT PRIMARY KEY, description TEXT NOT NULL,"
             " stamp INTEGER NOT NULL, body BLOB NOT NULL) WITHOUT ROWID",
                "CREATE TABLE states (agent TEXT PRIMARY KEY, stamp INTEGER NOT NULL,"
                " body BLOB NOT NULL) WITHOUT ROWID",
                "PRAGMA user_version = 1"}) {
            if (!query.exec(QLatin1String(step)))
                return failed(query.lastError());
        }
    }
    if (!query.exec(QStringLiteral("COMMIT")))
        return failed(query.lastError());
    return Opened::Yes;
}

Store::Opened Store::readAll()
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT owner FROM settings")))
        return failed(query.lastError());
    while (query.next())
        m_owners.insert(query.value(0).toString());
    if (!query.exec(QStringLiteral("SELECT agent, stamp, body FROM states")))
        return failed(query.lastError());
    while (query.next()) {
        const QByteArray body = query.value(2).toByteArray();
        if (!wire::unpacked(body)) {
            // Its agent will publish another; no reason to give up everybody's settings.
            qCritical("the state of %s is damaged and left out",
                qUtf8Printable(query.value(0).toString()));
            continue;
        }
        m_states.insert(query.value(0).toString(), {query.value(1).toLongLong(), body});
    }
    query.finish();
    m_statements = std::make_unique<Statements>(m_database);
    return Opened::Yes;
}

bool Store::setAside(const QString &file)
{
    close();
    const QString aside = file + QStringLiteral(".damaged-")
        + QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMddTHHmmsszzz"));
    // The log goes with it: without it the last changes could not be saved from the old file.
    const QString log = QStringLiteral("-wal");
    const bool isKept = (!QFile::exists(file + log) || QFile::rename(file + log, aside + log))
        && QFile::rename(file, aside);
    if (isKept)
        qCritical("%s is damaged (%s) and is kept as %s", qUtf8Printable(file),
            qUtf8Printable(m_error), qUtf8Printable(aside));
    else
        qCritical("%s is damaged (%s) and cannot be kept as %s", qUtf8Printable(file),
            qUtf8Printable(m_error), qUtf8Printable(aside));
    return isKept;
}

Store::Opened Store::failed(const QSqlError &error)
{
    m_error = error.text();
    return meansDamage(error) ? Opened::Damaged : Opened::No;
}

bool Store::run(QSqlQuery &query)
{
    const bool done = query.exec();
    if (!done)
        failed(query.lastError());
    query.finish();
    return done;
}

void Store::close()
{
    m_statements.reset();
    m_owners.clear();
    m_states.clear();
    if (!m_database.isValid())
        return;
    m_database.close();
    m_database = QSqlDatabase();
    QSqlDatabase::removeDatabase(kConnection);
}

} // namespace tavbus
