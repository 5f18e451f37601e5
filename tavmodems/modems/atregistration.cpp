#include "atregistration.h"

#include "atfields.h"

std::optional<AtRegistration> parseRegistration(
    const QByteArray &name, const QList<QByteArray> &lines)
{
    for (const QByteArray &line : lines) {
        const auto value = atfields::valueOf(name, {line});
        if (!value)
            continue;
        const QList<QByteArray> fields = atfields::split(*value);
        if (fields.size() < 2)
            continue;
        bool isMode = false;
        bool isStat = false;
        const int mode = fields.at(0).toInt(&isMode);
        const int stat = fields.at(1).toInt(&isStat);
        if (isMode && isStat && mode >= 0 && stat >= 0
            && stat <= static_cast<int>(AtRegistration::RoamingNoFallback))
            return static_cast<AtRegistration>(stat);
    }
    return std::nullopt;
}

bool isRegistered(AtRegistration registration)
{
    switch (registration) {
    case AtRegistration::Home:
    case AtRegistration::Roaming:
    case AtRegistration::HomeNoFallback:
    case AtRegistration::RoamingNoFallback:
        return true;
    case AtRegistration::NotSearching:
    case AtRegistration::Searching:
    case AtRegistration::Denied:
    case AtRegistration::Unknown:
    case AtRegistration::SmsOnlyHome:
    case AtRegistration::SmsOnlyRoaming:
    case AtRegistration::EmergencyOnly:
        break;
    }
    return false;
}
