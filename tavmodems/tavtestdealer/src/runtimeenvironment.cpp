#include "runtimeenvironment.h"

#include "runtimedirectory.h"

#include <QDebug>
#include <QDir>

void RuntimeEnvironment::prepare()
{
    qputenv("LD_BIND_NOW", "1");
    constexpr char kGlIntegration[] = "QT_XCB_GL_INTEGRATION";
    if (!qEnvironmentVariableIsSet(kGlIntegration))
        qputenv(kGlIntegration, "none");
    const QString directory = privateTempDir();
    if (directory.isEmpty())
        qWarning("No private temporary directory can be made: files in %s may be swapped by others",
            qPrintable(QDir::tempPath()));
    else
        RuntimeDirectory::setTemporary(directory);
}

QString RuntimeEnvironment::privateTempDir(const QString &shared)
{
    if (RuntimeDirectory::isSafe(shared, RuntimeDirectory::Owner::SelfOrRoot))
        return shared;
    const QString runtime = RuntimeDirectory::path();
    QString own
        = runtime.isEmpty() ? QString() : RuntimeDirectory::own(runtime + QStringLiteral("/ovrel"));
    return own.isEmpty() ? RuntimeDirectory::lastResort() : own;
}
