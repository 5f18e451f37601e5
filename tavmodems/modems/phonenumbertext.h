#pragma once

#include <QString>

#include <optional>

/**
 * The telephone number that an operator tells in free words, "Ваш номер +7 (916) 123-45-67": its 9
 * to 15 digits, with "+" in front when it has one there. A number with "+" comes first, then one
 * behind a word for "number", then the first one; amounts, dates, codes and short service numbers
 * are not taken for it. None when there is none. Any thread may use it.
 */
std::optional<QString> findPhoneNumber(const QString &text);
