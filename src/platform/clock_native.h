// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <ctime>

namespace ky::impl::native
{

/// System time in units of 100 ns since 1601-01-01 00:00:00 UTC.
std::int64_t systemTime100ns() noexcept;

/// Milliseconds since the system started, time asleep included; never goes back.
std::int64_t ticksSinceStartMs() noexcept;

/// A counter that never goes back, and the number of its ticks in a second.
std::int64_t performanceCounter() noexcept;
std::int64_t performanceFrequency() noexcept;

/// Calendar form of seconds since 1970-01-01 UTC; false when the year does not fit.
bool breakDownTime(std::int64_t seconds, bool localTime, std::tm& out) noexcept;

} // namespace ky::impl::native
