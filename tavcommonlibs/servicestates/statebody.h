#pragma once

#include <QVariantMap>

#include <optional>

/// How the bodies of states are read: strictly. A service that sends "6" or 6.0 where a number
/// belongs is broken, and a state that is guessed is worse than none.
namespace statebody {

/// The whole number under `key`, of whichever integer type; nothing when it is missing, of another
/// type, or too large.
std::optional<int> integer(const QVariantMap &body, const QString &key);

std::optional<bool> boolean(const QVariantMap &body, const QString &key);

} // namespace statebody
