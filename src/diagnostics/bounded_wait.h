// SPDX-License-Identifier: MIT
#pragma once

#include "diagnostics/crash_output_native.h"
#include "platform/clock_native.h"

#include <cstdint>

namespace ky::impl
{

/// Tries until it succeeds or the time is over; at least once. Safe in a crash if `attempt` is.
template <typename Try>
bool tryFor(int milliseconds, Try attempt) noexcept
{
    // By the clock: on a busy machine each pause lasts many times as long as it should.
    const std::int64_t end = native::ticksSinceStartMs() + milliseconds;
    while (!attempt())
    {
        if (native::ticksSinceStartMs() >= end)
            return false;
        native::pauseBriefly();
    }
    return true;
}

} // namespace ky::impl
