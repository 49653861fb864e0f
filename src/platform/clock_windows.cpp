// SPDX-License-Identifier: MIT
#include "platform/clock_native.h"

#include "platform/win32.h"

#include <time.h>

namespace ky::impl::native
{

std::int64_t systemTime100ns() noexcept
{
    FILETIME now = {};
    GetSystemTimeAsFileTime(&now);
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(now.dwHighDateTime) << 32) | now.dwLowDateTime);
}

std::int64_t ticksSinceStartMs() noexcept { return static_cast<std::int64_t>(GetTickCount64()); }

std::int64_t performanceCounter() noexcept
{
    LARGE_INTEGER ticks = {};
    QueryPerformanceCounter(&ticks);
    return ticks.QuadPart;
}

std::int64_t performanceFrequency() noexcept
{
    LARGE_INTEGER frequency = {};
    QueryPerformanceFrequency(&frequency);
    return frequency.QuadPart;
}

bool breakDownTime(std::int64_t seconds, bool localTime, std::tm& out) noexcept
{
    const __time64_t value = seconds;
    return (localTime ? _localtime64_s(&out, &value) : _gmtime64_s(&out, &value)) == 0;
}

} // namespace ky::impl::native
