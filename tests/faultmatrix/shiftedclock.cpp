#include "shiftedclock.h"

#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

std::atomic<int> clockShift{0};

// Those that Qt and the C++ library go through.
extern "C" {

int clock_gettime(clockid_t clock, timespec *time) noexcept
{
    const long result = ::syscall(SYS_clock_gettime, clock, time);
    if (result == 0 && (clock == CLOCK_REALTIME || clock == CLOCK_REALTIME_COARSE))
        time->tv_sec += clockShift;
    return static_cast<int>(result);
}

int gettimeofday(timeval *time, void * /*zone*/) noexcept
{
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {now.tv_sec, now.tv_nsec / 1000};
    return result;
}

time_t time(time_t *result) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}
}
