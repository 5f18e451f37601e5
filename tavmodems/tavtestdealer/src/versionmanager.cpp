#include "versionmanager.h"

#include "appversion.h"
#include "initconfig.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <vector>

const QString VersionManager::QT_APP_NAME = QStringLiteral("Qt");

namespace {

const QString kOwnName = QStringLiteral("tavtestdialer");

QString applicationKey()
{
    return QStringLiteral("application");
}

QString versionKey()
{
    return QStringLiteral("version");
}

QString buildKey()
{
    return QStringLiteral("build");
}

QString recordPath(const QString &application)
{
    return QStringLiteral("%1/%2.ver").arg(InitConfig().versionsPath(), application);
}

QFileInfoList recordFiles()
{
    return QDir(InitConfig().versionsPath())
        .entryInfoList({QStringLiteral("*.ver")}, QDir::Files, QDir::NoSort);
}

AppVersion toAppVersion(const QVariantMap &record)
{
    return AppVersion(record.value(versionKey()).toString(), record.value(buildKey()).toString());
}

} // namespace

bool VersionManager::saveAppVersion(int argc, char **argv)
{
    if (argc < 1)
        return false;
    const QString exepath = QString::fromLocal8Bit(argv[0]);
    if (!QFileInfo::exists(exepath))
        return false;
    return saveAppVersion(kOwnName, AppVersion::VERSION, AppVersion::BUILD, exepath);
}

bool VersionManager::saveAppVersion(const QString &application, const QString &version,
    const QString &build, const QString &exepath)
{
    const QJsonObject record{
        {versionKey(), version},
        {buildKey(), build},
        {QStringLiteral("exepath"), exepath},
        {applicationKey(), application},
    };
    QFile file(recordPath(application));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    // In a directory that a group shares, the next to write it, perhaps for a newer program, may be
    // another user of the group. Of another user's file this changes nothing.
    if (QFileInfo(InitConfig().versionsPath()).permission(QFile::WriteGroup))
        file.setPermissions(file.permissions() | QFile::ReadGroup | QFile::WriteGroup);
    file.write(QJsonDocument(record).toJson(QJsonDocument::Compact));
    return true;
}

bool VersionManager::saveQtVersion()
{
    return saveAppVersion(QT_APP_NAME, QString::fromLatin1(qVersion()), QString(), QString());
}

bool VersionManager::loadVersionFromFile(
    const QString &path, QString &application, AppVersion &version)
{
    QVariantMap record;
    if (!loadVersionFromFile(path, record))
        return false;
    application = record.value(applicationKey()).toString();
    version = toAppVersion(record);
    return true;
}

bool VersionManager::loadVersionFromFile(const QString &path, QMap<QString, QVariant> &record)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QJsonParseError error{};
    const QJsonObject object = QJsonDocument::fromJson(file.readAll(), &error).object();
    if (error.error != QJsonParseError::NoError)
        return false;
    if (!object.contains(versionKey()) || !object.contains(buildKey())
        || !object.contains(applicationKey()))
        return false;
    record = object.toVariantMap();
    return true;
}

bool VersionManager::loadVersion(const QString &application, QMap<QString, QVariant> &record)
{
    return loadVersionFromFile(recordPath(application), record);
}

bool VersionManager::loadVersions(QMap<QString, QVariant> &records, bool keepApplication)
{
    records.clear();
    const QFileInfoList files = recordFiles();
    for (const QFileInfo &file : files) {
        QVariantMap record;
        if (!loadVersionFromFile(file.absoluteFilePath(), record))
            continue;
        const QString application = record.value(applicationKey()).toString();
        if (!keepApplication)
            record.remove(applicationKey());
        records.insert(application, record);
    }
    return !files.isEmpty();
}

bool VersionManager::loadVersions(QMap<QString, AppVersion> &versions)
{
    versions.clear();
    const QFileInfoList files = recordFiles();
    for (const QFileInfo &file : files) {
        QVariantMap record;
        if (loadVersionFromFile(file.absoluteFilePath(), record))
            versions.insert(record.value(applicationKey()).toString(), toAppVersion(record));
    }
    return !files.isEmpty();
}

bool VersionManager::loadVersion(QString &version)
{
    QMap<QString, QVariant> records;
    if (!loadVersions(records, true))
        return false;
    records.remove(QT_APP_NAME);
    std::vector<AppVersion> versions;
    for (const QVariant &record : qAsConst(records))
        versions.push_back(toAppVersion(record.toMap()));
    const auto highest = std::max_element(versions.cbegin(), versions.cend());
    if (highest == versions.cend())
        return false;
    version = highest->version();
    return true;
}
