#pragma once

#include <QByteArray>
#include <QList>

#include <optional>

/**
 * The answer to AT+CFUN? (3GPP TS 27.007 8.2): 1 is full functionality, 0 and 4 have the radio
 * switched off.
 */
std::optional<int> parseFunctionality(const QList<QByteArray> &lines);
