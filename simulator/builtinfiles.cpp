#include "builtinfiles.h"

#include <QDir>

// Resources of a static library have to be asked for, and outside any namespace.
static void useResources()
{
    Q_INIT_RESOURCE(simulator);
}

namespace {

constexpr int kMostBytes = 1024 * 1024; // a scenario of a hundred modems takes a tenth of it

QString folderOf(BuiltInFiles::Kind kind)
{
    useResources();
    return kind == BuiltInFiles::Kind::Scenario ? QStringLiteral(":/terminalsim/scenarios/")
                                                : QStringLiteral(":/terminalsim/profiles/");
}

} // namespace

bool BuiltInFiles::load(Kind kind, const QString &nameOrPath,
    const std::function<bool(const QByteArray &content, QString *error)> &parse, QString *error)
{
    const bool isPath
        = nameOrPath.contains(QLatin1Char('/')) || nameOrPath.endsWith(QLatin1String(".json"));
    QFile file(isPath ? nameOrPath : folderOf(kind) + nameOrPath + QStringLiteral(".json"));
    if (!file.open(QIODevice::ReadOnly)) {
        *error = isPath ? QStringLiteral("cannot read %1: %2").arg(nameOrPath, file.errorString())
                        : QStringLiteral("there is no \"%1\"; there are: %2")
                              .arg(nameOrPath, names(kind).join(QStringLiteral(", ")));
        return false;
    }
    const QByteArray content = file.read(kMostBytes + 1); // a device may have no end
    if (content.size() > kMostBytes) {
        *error = QStringLiteral("cannot read %1: larger than 1 MB").arg(nameOrPath);
        return false;
    }
    if (parse(content, error))
        return true;
    *error
        = QStringLiteral("%1 %2: %3")
              .arg(kind == Kind::Scenario ? QStringLiteral("scenario") : QStringLiteral("profile"),
                  nameOrPath, *error);
    return false;
}

QStringList BuiltInFiles::names(Kind kind)
{
    QStringList names = QDir(folderOf(kind)).entryList({QStringLiteral("*.json")}, QDir::Files);
    for (QString &name : names)
        name.chop(5);
    return names;
}
