// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// A stopwatch in milliseconds.

#include <ky/kyExport.h>

#include <cstdint>

namespace ky
{

/// Milliseconds since a moment that was snapped, by the system's monotonic tick count (time asleep included): changes
/// of the clock on the wall do not matter. The tick count advances in steps of up to 16 ms on Windows, 1 ms on Linux.
///
/// A timer that is not snapped counts as having run for ever. A value type: copy it freely; no locking of its own.
class KY_API kyTimer
{
public:
    /// Snapped to now, or not snapped.
    explicit kyTimer(bool snapNow);

    /// Snaps to now.
    void snapTime();

    /// Back to not snapped.
    void clearTime() { mSnapped = NotSnapped; }

    /// Whether there is a moment to count from.
    [[nodiscard]] bool isTimeSnapped() const { return mSnapped != NotSnapped; }

    /// Milliseconds since the snap; 0x7FFFFFFFFFFFFFFF when not snapped.
    [[nodiscard]] long long getElapsedMs() const;

    /// The same; with `resnap` the timer is then snapped to a fresh reading of the clock.
    long long getElapsedMs(bool resnap);

    /// Whether strictly more than `ms` milliseconds have passed.
    [[nodiscard]] bool isElapsedMs(long long ms) const { return getElapsedMs() > ms; }

    /// Whether strictly more than `seconds` seconds have passed. Any value is taken; there is no overflow.
    [[nodiscard]] bool isElapsedSec(long long seconds) const;

private:
    static constexpr std::int64_t NotSnapped = INT64_MIN;

    std::int64_t mSnapped;
};

} // namespace ky
