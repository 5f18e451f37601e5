#pragma once

#include <QString>

/**
 * The agents of the terminal, and where the broker is found.
 */
namespace tavbus {

inline const QString BUSNAME_TESTDEALER = QStringLiteral("testdealer");
inline const QString BUSNAME_TAVMODEMS = QStringLiteral("tavmodems");
inline const QString BUSNAME_ACCEPTORS = QStringLiteral("acceptors");
inline const QString BUSNAME_PRINTSERVICE = QStringLiteral("printservice");
inline const QString BUSNAME_WATCHDOGS = QStringLiteral("watchdogs");
inline const QString BUSNAME_TERMINAL_GUI = QStringLiteral("terminalgui");

inline const QString BROKER_SERVICE = QStringLiteral("org.ovrel.TavBus");
inline const QString BROKER_PATH = QStringLiteral("/org/ovrel/TavBus");
inline const QString BROKER_INTERFACE = QStringLiteral("org.ovrel.TavBus1");

} // namespace tavbus
