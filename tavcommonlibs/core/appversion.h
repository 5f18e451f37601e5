#pragma once

#include <QString>

/// Version and build of one program, ordered: by version number first (so 1.10 follows 1.9), then
/// by build (numbers as numbers, before any that is not one).
class AppVersion
{
public:
    static const QString VERSION; ///< of the running software
    static const QString BUILD; ///< of the running software: short commit hash, or "unknown"

    AppVersion() = default;
    AppVersion(const QString &version, const QString &build);

    QString version() const { return m_version; }
    QString build() const { return m_build; }

    bool operator<(const AppVersion &other) const;

private:
    QString m_version;
    QString m_build;
};
