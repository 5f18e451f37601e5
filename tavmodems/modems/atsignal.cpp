#include "atsignal.h"

#include "atfields.h"

std::optional<int> parseSignalLevel(const QList<QByteArray> &lines)
{
    const auto value = atfields::valueOf("+CSQ", lines);
    if (!value)
        return std::nullopt;
    bool ok = false;
    const int strength = atfields::split(*value).first().toInt(&ok);
    if (ok && strength >= 0 && strength <= 31)
        return -113 + 2 * strength;
    if (ok && strength >= 100 && strength <= 191)
        return -116 + strength - 100;
    return std::nullopt; // 99 and 199: not known
}
