#include "statebody.h"

#include <limits>

namespace statebody {

std::optional<int> integer(const QVariantMap &body, const QString &key)
{
    const QVariant value = body.value(key);
    qlonglong number = 0;
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
        number = value.toLongLong();
        break;
    case QMetaType::ULongLong: {
        bool fits = false;
        number = value.toLongLong(&fits);
        if (!fits || number < 0)
            return std::nullopt;
        break;
    }
    default:
        return std::nullopt;
    }
    if (number < std::numeric_limits<int>::min() || number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(number);
}

std::optional<bool> boolean(const QVariantMap &body, const QString &key)
{
    const QVariant value = body.value(key);
    if (value.type() != QVariant::Bool)
        return std::nullopt;
    return value.toBool();
}

} // namespace statebody
