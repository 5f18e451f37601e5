#pragma once

#include "clientsettings.h"
#include "clientstate.h"

#include <QByteArray>
#include <QHash>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace tavbus {

/**
 * Keeps settings records and last states in an SQLite database of its own.
 *
 * A change that was reported done outlives a kill or a power cut at any moment; one that failed has
 * changed nothing. States are also held in memory, since they are read every second. One store may
 * have a database open at a time. Belongs to one thread.
 */
class Store
{
    Q_DISABLE_COPY_MOVE(Store)

public:
    static constexpr int kVersion = 1; ///< of the schema, in the database's user_version
    static constexpr int kMaxOwners = 256; ///< of settings; as many of states

    enum class Change { Done, Full, Failed };
    enum class Look { Found, Missing, Failed };

    Store();
    ~Store();

    /// Opens \a file, made with its directory when missing. A damaged database is moved aside (to
    /// FILE.damaged-TIME, logged) and an empty one takes its place. False with errorText() when
    /// it belongs to a later version, is in use, or cannot be made.
    bool open(const QString &file);
    /// How long open() waits for a former broker to let go of the database, 5 s at first.
    void setPatience(std::chrono::milliseconds patience) { m_patience = patience; }
    QString errorText() const { return m_error; }

    Change saveSettings(const ClientSettings &settings);
    Look loadSettings(const QString &owner, ClientSettings &settings);
    Change removeSettings(const QString &owner, bool withState);

    Change saveState(const QString &agent, const ClientState &state);
    std::optional<ClientState> state(const QString &agent) const;

private:
    enum class Opened { Yes, No, Damaged };

    /// The statements in use, prepared once.
    struct Statements;

    /// Packed: taken apart, small values need ten times the room, and any agent may publish some.
    struct KeptState
    {
        qint64 stamp = 0;
        QByteArray body;
    };

    Opened tryOpen(const QString &file);
    Opened prepareSchema();
    Opened readAll();
    bool setAside(const QString &file);
    Opened failed(const QSqlError &error);
    bool run(QSqlQuery &query);
    void close();

    std::chrono::milliseconds m_patience{5000};
    QString m_error;
    QSqlDatabase m_database;
    std::unique_ptr<Statements> m_statements;
    QSet<QString> m_owners; // of settings
    QHash<QString, KeptState> m_states; // by agent
};

} // namespace tavbus
