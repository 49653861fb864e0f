// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Counting semaphore.

#include <ky/kyExport.h>
#include <ky/kyMutex.h>
#include <ky/kyWaitCondition.h>

#include <atomic>
#include <cstdint>

namespace ky
{

/// Counting semaphore whose users take and give back any number of resources at once. All functions may be called from
/// any thread at any time; the thread whose acquire() returned last may destroy it. Its mutex and its wait condition
/// write their messages when it is constructed before full initialization of the library.
class KY_API kySemaphore
{
public:
    /// Starts with `resources` free resources.
    explicit kySemaphore(unsigned int resources);
    kySemaphore(const kySemaphore&) = delete;
    kySemaphore& operator=(const kySemaphore&) = delete;

    /// Takes `n` resources; waits without limit until so many are free at once. A request for more than will ever be
    /// free blocks for ever. No order is kept among those who wait.
    void acquire(unsigned int n);

    /// Gives `n` resources back and lets all waiting threads check again. 0 does nothing.
    void release(unsigned int n);

    /// Number of free resources, read without locking: it may have changed when the caller looks at it.
    [[nodiscard]] unsigned int getNoResources() const;

private:
    bool tryTake(unsigned int n, std::uint64_t waitersToRemove);
    bool giveToWaiters(unsigned int n);

    kyMutex mMutex;
    kyWaitCondition mCondition;
    std::atomic<std::uint64_t> mCount; ///< free resources in the low half, waiting threads in the high half
};

} // namespace ky
