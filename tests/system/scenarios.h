#pragma once

#include <functional>

class QString;

/** The walk through the scenario of that name, given where pictures go; empty without one. */
std::function<void(const QString &pictures)> walkThrough(const QString &scenario);
