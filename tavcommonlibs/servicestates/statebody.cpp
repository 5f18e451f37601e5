#include "statebody.h"

#include "wholenumber.h"

namespace statebody {

std::optional<int> integer(const QVariantMap &body, const QString &key)
{
    return wholeNumber(body.value(key));
}

std::optional<bool> boolean(const QVariantMap &body, const QString &key)
{
    const QVariant value = body.value(key);
    if (value.type() != QVariant::Bool)
        return std::nullopt;
    return value.toBool();
}

} // namespace statebody
