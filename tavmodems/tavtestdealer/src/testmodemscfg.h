#pragma once

#include "modeminfo.h"

#include <QMap>
#include <QMutex>
#include <QString>

/// The dialer's configuration file of the dial test, "modems/testmodems.cfg" in the terminal's work
/// directory: apart from the terminal's own settings, so that a test never disturbs a live set-up.
///
/// The path and the name of the active modem are shared by the whole process. All operations may be
/// called from any thread, hasConfig() once the path has been found. Make an instance, use it and
/// drop it: each reads the file as it stands.
class TestModemsCfg
{
    Q_DISABLE_COPY_MOVE(TestModemsCfg)

public:
    // Keys of the dialer's file, as its manual page gives them.
    static const QString CONNECTION_PREFIX;
    static const QString PORT;
    static const QString PHONE;
    static const QString INIT_LINE;
    static const QString BAUDRATE;
    static const QString USERNAME;
    static const QString PASSWORD;
    static const QString DIAL_COMMAND;
    static const QString NEW_PPPD;
    static const QString STUPID_MODE;
    static const QString ISDN;
    static const QString MODEM_TYPE;

    TestModemsCfg();

    /// Finds the path and makes its directory, once a process; the constructor does it.
    static void setConfigPath();
    static QString configPath();
    static bool hasConfig();

    static QString activeModemName();
    /// Also lets the owner's group write the file, where there is one.
    static void setActiveModemName(const QString &name);

    /// Rewrites the whole file: a section for each record that has a connection name, ascending.
    /// Says nothing about a failure but through lastError(); no part of a record is left behind.
    void setModems(const QMap<QString, ModemInfo> &modems);

    /// The records of the file by connection name; none when there is no file.
    QMap<QString, ModemInfo> modems() const;

    /// Why the last setModems() wrote nothing; empty when it wrote all.
    QString lastError() const { return m_lastError; }

private:
    static QString _configPath;
    static QString _activeModemName;
    static QMutex _configMutex; // the file
    static QMutex _pathMutex; // the two names above

    QString m_lastError;
};
