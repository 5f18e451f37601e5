#pragma once

#include <QString>

/// Names of the errors that the broker answers with, beside D-Bus's own.
namespace tavbus {

inline const QString ERROR_NOT_REGISTERED = QStringLiteral("org.ovrel.TavBus1.Error.NotRegistered");
inline const QString ERROR_NAME_TAKEN = QStringLiteral("org.ovrel.TavBus1.Error.NameTaken");
inline const QString ERROR_NOT_FOUND = QStringLiteral("org.ovrel.TavBus1.Error.NotFound");
inline const QString ERROR_STORE_FAILED = QStringLiteral("org.ovrel.TavBus1.Error.StoreFailed");

} // namespace tavbus
