#include "initconfig.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

// A configuration is written by hand; anything larger was never meant as one.
constexpr qint64 kLargestFile = 1'024'000;

QString dataHome()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
        + QLatin1String("/ovrel");
}

/// Where the XDG base directory specification puts logs; Qt 5 has no name for it.
QString stateHome()
{
    const QString home = qEnvironmentVariable("XDG_STATE_HOME");
    return (QDir::isAbsolutePath(home) ? home : QDir::homePath() + QLatin1String("/.local/state"))
        + QLatin1String("/ovrel");
}

/// The directory itself, or the one it would be created in.
bool isWritable(const QString &directory)
{
    QFileInfo info(directory);
    while (!info.exists() && !info.isRoot())
        info.setFile(info.path());
    return info.isDir() && info.isWritable();
}

QString writable(const QString &system, const QString &own)
{
    return isWritable(system) ? system : own;
}

} // namespace

InitConfig::InitConfig(const QString &path)
    : m_path(path)
{
    const QFileInfo info(path);
    if (!info.isFile() || info.size() > kLargestFile)
        return;
    QSettings settings(path, QSettings::IniFormat);
    settings.setIniCodec("UTF-8");
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        m_values.insert(key, settings.value(key));
}

InitConfig::~InitConfig() = default;

QString InitConfig::defaultPath()
{
    const QString named = qEnvironmentVariable("TAV_TERMINAL_CONF");
    return named.isEmpty() ? QStringLiteral("/etc/ovrel/terminalV4.conf") : named;
}

QString InitConfig::workDir() const
{
    return text(
        QStringLiteral("paths/workDir"), writable(QStringLiteral("/var/lib/ovrel"), dataHome()));
}

QString InitConfig::loggerPath() const
{
    return text(
        QStringLiteral("paths/logger"), writable(QStringLiteral("/var/log/ovrel"), stateHome()));
}

QString InitConfig::versionsPath() const
{
    return text(QStringLiteral("paths/versions"),
        writable(
            QStringLiteral("/var/lib/ovrel/versions"), dataHome() + QLatin1String("/versions")));
}

QString InitConfig::translationsPath() const
{
    const auto system = QStringLiteral("/usr/share/ovrel/translations");
    return text(QStringLiteral("paths/translations"),
        QFileInfo(system).isDir() ? system : dataHome() + QLatin1String("/translations"));
}

QLocale InitConfig::locale() const
{
    const QString name = text(QStringLiteral("locale/name"), QString());
    const QLocale locale(name);
    // QLocale answers every name that it does not know with "C".
    const bool isKnown = locale.language() != QLocale::C || name == QLatin1String("C");
    return isKnown ? locale : QLocale::system();
}

QString InitConfig::busAddress() const
{
    return text(QStringLiteral("bus/address"), QStringLiteral("system"));
}

QUrl InitConfig::makerPage() const
{
    return page(QStringLiteral("internet/makerPage"), QStringLiteral("http://neverssl.com/"));
}

QUrl InitConfig::publicPage() const
{
    return page(QStringLiteral("internet/publicPage"), QStringLiteral("http://example.com/"));
}

QString InitConfig::touchStopCommand() const
{
    return text(QStringLiteral("touch/stopCommand"), QString());
}

QVariant InitConfig::value(const QString &key, const QVariant &fallback) const
{
    return m_values.value(key, fallback);
}

QString InitConfig::text(const QString &key, const QString &fallback) const
{
    // An unquoted comma makes a list of a value; nobody means that in a text.
    const QString given = value(key).toStringList().join(QLatin1Char(',')).trimmed();
    return given.isEmpty() ? fallback : given;
}

QUrl InitConfig::page(const QString &key, const QString &fallback) const
{
    const QUrl url(text(key, fallback), QUrl::StrictMode);
    const bool isPage = url.isValid() && !url.host().isEmpty()
        && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
    return isPage ? url : QUrl(fallback);
}
