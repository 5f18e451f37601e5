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

std::optional<int> parseExtendedSignalLevel(const QList<QByteArray> &lines)
{
    const auto value = atfields::valueOf("+CESQ", lines);
    if (!value)
        return std::nullopt;
    const QList<QByteArray> fields = atfields::split(*value);
    // <rxlev>, <ber>, <rscp>, <ecno>, <rsrq>, <rsrp>: the steps of a decibel above a lowest level.
    struct Scale
    {
        int field;
        int most;
        int lowest;
    };
    for (const Scale scale : {Scale{5, 97, -141}, Scale{2, 96, -121}, Scale{0, 63, -111}}) {
        bool ok = false;
        const int steps = fields.value(scale.field).toInt(&ok);
        if (ok && steps >= 0 && steps <= scale.most)
            return scale.lowest + steps;
    }
    return std::nullopt; // 99 and 255: not known
}
