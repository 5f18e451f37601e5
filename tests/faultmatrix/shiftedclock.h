#pragma once

#include <atomic>

/// By how many seconds this process sees the wall clock ahead of the machine's. The clocks that
/// measure time (CLOCK_MONOTONIC) are not touched, as when somebody sets the date. The date of the
/// machine cannot be set in a namespace; so the C library's functions are replaced in this program.
extern std::atomic<int> clockShift;
