#pragma once

#include <QMap>
#include <QString>
#include <QVariant>

class AppVersion;

/// The version records of the terminal: one small JSON file per program, "APPLICATION.ver", in the
/// versions directory of the terminal's configuration. The terminal's other software reads there
/// which versions are installed.
///
/// Stateless; every operation reads the configuration anew and needs no application object. A
/// failure is a false result only: no program may fail to start for want of a record.
class VersionManager
{
public:
    VersionManager() = delete;

    /// Application name of the record of the Qt run-time.
    static const QString QT_APP_NAME;

    /// Records this program under the path that it was started by. False when that path names no
    /// file, as after a start through PATH.
    static bool saveAppVersion(int argc, char **argv);
    static bool saveAppVersion(const QString &application, const QString &version,
        const QString &build, const QString &exepath);
    static bool saveQtVersion();

    static bool loadVersionFromFile(const QString &path, QString &application, AppVersion &version);
    static bool loadVersionFromFile(const QString &path, QMap<QString, QVariant> &record);
    static bool loadVersion(const QString &application, QMap<QString, QVariant> &record);

    /// All records by application; the maps keep their "application" member when asked to.
    static bool loadVersions(QMap<QString, QVariant> &records, bool keepApplication);
    static bool loadVersions(QMap<QString, AppVersion> &versions);

    /// The highest version among all records but that of the Qt run-time.
    static bool loadVersion(QString &version);
};
