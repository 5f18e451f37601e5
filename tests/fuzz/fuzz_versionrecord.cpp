// Version records: files of other programs, and those that this one writes.

#include "appversion.h"
#include "fuzzinput.h"
#include "versionmanager.h"

#include <QFile>

namespace {

void requireOrdered(const AppVersion &one, const AppVersion &other)
{
    require(
        !(one < AppVersion(one)) && !(other < AppVersion(other)), "nothing comes before itself");
    require(!(one < other) || !(other < one), "of two one is the lower");
}

void read(FuzzInput &input)
{
    const QString path = fuzzFile(QStringLiteral("fuzzed.ver"), input.rest());
    const AppVersion before(QStringLiteral("1.2"), QStringLiteral("3"));
    AppVersion version = before;
    QString application = QStringLiteral("as it was");
    QVariantMap record{{QStringLiteral("as"), QStringLiteral("it was")}};
    const bool isRead = VersionManager::loadVersionFromFile(path, application, version);
    require(isRead == VersionManager::loadVersionFromFile(path, record), "a record is one or not");
    if (isRead)
        requireOrdered(version, before);
    else
        require(application == QLatin1String("as it was") && version.version() == before.version()
                && version.build() == before.build() && record.size() == 1,
            "what is no record changes nothing");
    QMap<QString, AppVersion> versions;
    require(VersionManager::loadVersions(versions) && versions.size() == (isRead ? 1 : 0),
        "the directory holds what is a record");
    QString highest;
    VersionManager::loadVersion(highest);
}

void writeAndRead(FuzzInput &input)
{
    const QString version = input.text();
    const QString build = input.text();
    const QString path = input.text();
    const QString name = QStringLiteral("written");
    require(VersionManager::saveAppVersion(name, version, build, path), "a record can be written");
    QVariantMap record;
    require(VersionManager::loadVersion(name, record), "a record that was written is read");
    QFile::remove(fuzzDirectory() + QStringLiteral("/written.ver"));
    if (version.isValidUtf16() && build.isValidUtf16() && path.isValidUtf16())
        require(record.value(QStringLiteral("version")) == version
                && record.value(QStringLiteral("build")) == build
                && record.value(QStringLiteral("exepath")) == path
                && record.value(QStringLiteral("application")) == name,
            "it says what it said");
    requireOrdered(AppVersion(version, build), AppVersion(build, version));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    readOrWrite(input, read, writeAndRead);
    return 0;
}
