// SPDX-License-Identifier: MIT
#include "platform/clock_native.h"

#include <time.h>

namespace ky::impl::native
{

namespace
{

constexpr std::int64_t unixEpoch100ns = 116444736000000000;

} // namespace

std::int64_t systemTime100ns() noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    return unixEpoch100ns + static_cast<std::int64_t>(now.tv_sec) * 10000000 + now.tv_nsec / 100;
}

std::int64_t ticksSinceStartMs() noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

std::int64_t performanceCounter() noexcept
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * performanceFrequency() + now.tv_nsec;
}

std::int64_t performanceFrequency() noexcept { return 1000000000; }

bool breakDownTime(std::int64_t seconds, bool localTime, std::tm& out) noexcept
{
    const time_t value = static_cast<time_t>(seconds);
    return (localTime ? localtime_r(&value, &out) : gmtime_r(&value, &out)) != nullptr;
}

} // namespace ky::impl::native
