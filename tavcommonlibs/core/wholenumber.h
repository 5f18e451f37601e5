#pragma once

#include <QVariant>

#include <optional>

/**
 * The int in a variant that may hold anything, as what came over the bus does; none when it holds
 * another type than a whole number, or one beyond the range (QVariant::toInt cuts those off).
 */
std::optional<int> wholeNumber(const QVariant &value);
