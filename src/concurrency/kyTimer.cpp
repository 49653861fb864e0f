// SPDX-License-Identifier: MIT
#include <ky/kyTimer.h>

#include "platform/clock_native.h"

#include <limits>

namespace ky
{

namespace
{

constexpr long long longest = std::numeric_limits<long long>::max();
constexpr long long shortest = std::numeric_limits<long long>::min();

} // namespace

kyTimer::kyTimer(bool snapNow) : mSnapped(snapNow ? impl::native::ticksSinceStartMs() : NotSnapped) {}

void kyTimer::snapTime() { mSnapped = impl::native::ticksSinceStartMs(); }

long long kyTimer::getElapsedMs() const
{
    return isTimeSnapped() ? impl::native::ticksSinceStartMs() - mSnapped : longest;
}

long long kyTimer::getElapsedMs(bool resnap)
{
    const long long elapsed = getElapsedMs();
    if (resnap)
        snapTime();
    return elapsed;
}

bool kyTimer::isElapsedSec(long long seconds) const
{
    if (seconds > longest / 1000)
        return isElapsedMs(longest);
    return isElapsedMs(seconds < shortest / 1000 ? shortest : seconds * 1000);
}

} // namespace ky
