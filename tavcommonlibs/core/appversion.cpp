#include "appversion.h"

#include "buildversion.h"

#include <QVersionNumber>

#include <tuple>

namespace {

/// Numbers come before other builds, and among themselves by value; the text decides the rest.
auto buildRank(const QString &build)
{
    bool isNumber = false;
    const qulonglong number = build.toULongLong(&isNumber);
    return std::make_tuple(!isNumber, isNumber ? number : 0, build);
}

} // namespace

const QString AppVersion::VERSION = QStringLiteral(TAV_VERSION);
const QString AppVersion::BUILD = QStringLiteral(TAV_BUILD);

AppVersion::AppVersion(const QString &version, const QString &build)
    : m_version(version)
    , m_build(build)
{
}

bool AppVersion::operator<(const AppVersion &other) const
{
    const auto mine = QVersionNumber::fromString(m_version);
    const auto its = QVersionNumber::fromString(other.m_version);
    if (mine != its)
        return mine < its;
    return buildRank(m_build) < buildRank(other.m_build);
}
