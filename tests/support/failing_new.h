// SPDX-License-Identifier: MIT
// A program that is linked with failing_new.cpp has every operator new and delete counted, and failed at will.
#pragma once

#include <atomic>

namespace ky::test
{

struct MemoryRequests
{
    std::atomic<int> made{0};
    std::atomic<int> failFrom{0}; ///< number of the first request that fails, counted from 1
    std::atomic<int> failTo{0};   ///< number of the first one behind it that does not
    std::atomic<long> live{0};    ///< blocks that are handed out

    /// Counts from 0 again; the n-th request fails, or all from the n-th on.
    void failAt(int number, bool forEver = false)
    {
        made = 0;
        failFrom = number;
        failTo = forEver ? 1'000'000 : number + 1;
    }
    void failNoMore() { failFrom = failTo = 0; }
};

extern MemoryRequests memoryRequests;

} // namespace ky::test
