#include "wholenumber.h"

#include <limits>

std::optional<int> wholeNumber(const QVariant &value)
{
    constexpr int kMin = std::numeric_limits<int>::min();
    constexpr int kMax = std::numeric_limits<int>::max();
    switch (value.userType()) {
    case QMetaType::Int:
        return value.toInt();
    case QMetaType::LongLong:
        if (value.toLongLong() >= kMin && value.toLongLong() <= kMax)
            return value.toInt();
        break;
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        if (value.toULongLong() <= static_cast<qulonglong>(kMax))
            return value.toInt();
        break;
    default:
        break;
    }
    return std::nullopt;
}
