#pragma once

#include <QString>

#include <optional>

/**
 * The amount of money on the account that an operator tells in free words: in Russian, Ukrainian,
 * Belarusian, Kazakh, Uzbek or English, in their own letters or in Latin ones. It is known by the
 * words around it (balance, rest, account...) and by its currency; dates, times, phone numbers,
 * codes, minutes, megabytes, percentages, bonuses, tariffs, prices and limits are not taken for
 * it. None when the text has no such amount. Any thread may use it.
 */
std::optional<double> findBalance(const QString &answer);
