#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/**
 * The signal's strength in dBm from the answer to AT+CSQ (3GPP TS 27.007 8.5): -113 to -51, or
 * -116 to -25 from a TD-SCDMA modem, the ends standing for all beyond. None when the modem does
 * not know it.
 */
std::optional<int> parseSignalLevel(const QList<QByteArray> &lines);

/** The same from the answer to AT+CESQ (27.007 8.69), of whichever network the modem measures. */
std::optional<int> parseExtendedSignalLevel(const QList<QByteArray> &lines);
