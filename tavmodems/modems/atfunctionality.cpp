#include "atfunctionality.h"

#include "atfields.h"

std::optional<int> parseFunctionality(const QList<QByteArray> &lines)
{
    const auto value = atfields::valueOf("+CFUN", lines);
    if (!value)
        return std::nullopt;
    bool isNumber = false;
    const int level = atfields::split(*value).first().toInt(&isNumber);
    if (!isNumber || level < 0)
        return std::nullopt;
    return level;
}
