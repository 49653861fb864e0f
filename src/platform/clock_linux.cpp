// SPDX-License-Identifier: MIT
#include "platform/clock_native.h"

#include <clocale>
#include <locale.h>
#include <time.h>

namespace ky::impl::native
{

namespace
{

constexpr std::int64_t unixEpoch100ns = 116444736000000000;

locale_t cLocale() noexcept
{
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return locale;
}

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

bool breakDownTime(std::int64_t seconds, bool localTime, std::tm& out) noexcept
{
    const time_t value = static_cast<time_t>(seconds);
    return (localTime ? localtime_r(&value, &out) : gmtime_r(&value, &out)) != nullptr;
}

std::size_t formatTime(char* buffer, std::size_t size, const char* format, const std::tm& time) noexcept
{
    return strftime_l(buffer, size, format, &time, cLocale());
}

} // namespace ky::impl::native
