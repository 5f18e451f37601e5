#pragma once

#include <QHash>
#include <QLocale>
#include <QString>
#include <QUrl>
#include <QVariant>

/// Reader of the terminal's configuration: an INI file in UTF-8, "/etc/ovrel/terminalV4.conf" or
/// what the environment variable TAV_TERMINAL_CONF names.
///
/// The file is read once, at construction; readers are cheap and made where a value is needed. A
/// missing, unreadable or broken file, and a missing or empty key, give the defaults, so that the
/// program starts on any machine. Values follow the rules of INI files as Qt reads them: one that
/// holds a comma, a semicolon, a quote or a backslash stands in double quotes, with \" and
/// \\ inside. May be used in any thread.
class InitConfig
{
public:
    explicit InitConfig(const QString &path = defaultPath());
    virtual ~InitConfig();

    static QString defaultPath();

    QString path() const { return m_path; } ///< of the configuration file itself

    /// Directories, not created here. Where a default one ("/var/lib/ovrel", "/var/log/ovrel",
    /// "/var/lib/ovrel/versions") can neither be written nor created by this user, the answer is a
    /// directory "ovrel" of the user's own, or one in it. Who writes there creates it first; only
    /// the versions directory is not created by its user, since it belongs to the installation.
    QString workDir() const; ///< paths/workDir
    QString loggerPath() const; ///< paths/logger; may also name a file
    QString versionsPath() const; ///< paths/versions

    /// paths/translations, default "/usr/share/ovrel/translations"; only read, so the user's own
    /// directory stands in where the system has none.
    QString translationsPath() const;

    QLocale locale() const; ///< locale/name, default the system's
    QString busAddress() const; ///< bus/address: "system" (default), "session" or a D-Bus address

    /// Pages fetched to see whether the Internet can be reached: plain HTTP, so that no certificate
    /// and no wrong clock stands in the way.
    QUrl makerPage() const; ///< internet/makerPage
    QUrl publicPage() const; ///< internet/publicPage

    QString touchStopCommand() const; ///< touch/stopCommand, a program with arguments; may be empty

protected:
    /// The value of "group/key" as the file has it.
    QVariant value(const QString &key, const QVariant &fallback = {}) const;

private:
    QString text(const QString &key, const QString &fallback) const;
    QUrl page(const QString &key, const QString &fallback) const;

    QString m_path;
    QHash<QString, QVariant> m_values;
};
