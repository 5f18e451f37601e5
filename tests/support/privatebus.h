#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

/**
 * A real D-Bus daemon for one test, on which the broker is started as soon as somebody asks for it.
 *
 * While it lives, the "session" bus of this process and its children is this one. All files, the
 * broker's database among them, are in a directory of its own; processes and directory end with the
 * object. Every function that fails does so with a qFatal, naming what went wrong.
 */
class PrivateBus
{
    Q_DISABLE_COPY_MOVE(PrivateBus)

public:
    struct Options
    {
        QString policy{}; ///< a policy file of D-Bus in place of "everybody may everything"
        bool withBroker = true; ///< false: nothing starts the broker
        QString brokerCommand{}; ///< started in place of the real broker
        bool forOtherUsers = false; ///< reachable by processes of other users
        int maxConnections = 0; ///< in place of the daemon's own limits, 0 for those
    };

    PrivateBus();
    explicit PrivateBus(const Options &options);
    ~PrivateBus();

    QString address() const { return m_address; }
    QString directory() const { return m_directory.path(); }
    QString databaseFile() const { return m_directory.filePath(QStringLiteral("tavbus.db")); }

    /// The bus daemon itself. The address stays over a restart.
    void start();
    void stop();
    void freeze();
    void thaw();
    qint64 pid() const { return m_daemon->processId(); }
    /// How many connections it has, the broker's included.
    int connections() const;

    /// The broker: 0 when none runs. Asking does not start it.
    qint64 brokerPid() const;
    /// Starts it if need be, as any call to it would; returns its pid.
    qint64 startBroker() const;
    /// kill -9; returns when its name is free again. Without a broker nothing happens.
    void killBroker() const;
    /// SIGTERM; returns when its name is free again.
    void endBroker() const;
    void freezeBroker() const;
    void thawBroker() const;

private:
    void writeConfiguration(const Options &options) const;
    void signalBroker(int number) const;

    QTemporaryDir m_directory;
    QString m_address;
    QByteArray m_formerAddress; // of the environment
    bool m_hadFormerAddress = false;
    std::unique_ptr<QProcess> m_daemon;
};
