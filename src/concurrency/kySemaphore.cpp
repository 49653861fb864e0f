// SPDX-License-Identifier: MIT
#include <ky/kySemaphore.h>

// Free resources and waiting threads share one word. Nobody waiting: one compare-exchange gives or takes, and the word
// is not touched again, so that the thread that was waited for may be destroying the semaphore already. Somebody
// waiting: a thread counts itself as waiting and looks for resources under the mutex, and whoever sees it counted
// gives under the mutex, too. The count of waiters and the resources change in one word: either the giver sees the
// waiter, or the waiter sees what was given. No wake is lost.

namespace ky
{

namespace
{

constexpr std::uint64_t oneWaiter = std::uint64_t{1} << 32;

unsigned int freeIn(std::uint64_t word) { return static_cast<unsigned int>(word); }

bool hasWaiters(std::uint64_t word) { return word >= oneWaiter; }

/// The number of resources wraps around as an unsigned int does and leaves the waiters alone.
std::uint64_t withGiven(std::uint64_t word, unsigned int n) { return (word - freeIn(word)) | (freeIn(word) + n); }

} // namespace

kySemaphore::kySemaphore(unsigned int resources) : mCount(resources) {}

bool kySemaphore::tryTake(unsigned int n, std::uint64_t waitersToRemove)
{
    std::uint64_t word = mCount.load(std::memory_order_relaxed);
    while (freeIn(word) >= n)
    {
        if (mCount.compare_exchange_weak(word, word - n - waitersToRemove, std::memory_order_acquire,
                                         std::memory_order_relaxed))
            return true;
    }
    return false;
}

void kySemaphore::acquire(unsigned int n)
{
    if (tryTake(n, 0))
        return;
    const kyMutexLocker locker(mMutex, true);
    mCount.fetch_add(oneWaiter, std::memory_order_relaxed);
    while (!tryTake(n, oneWaiter))
        mCondition.wait(&mMutex, 0xFFFFFFFF);
}

/// With the mutex held. False when nobody waits any more; nothing is given then.
bool kySemaphore::giveToWaiters(unsigned int n)
{
    std::uint64_t word = mCount.load(std::memory_order_relaxed);
    while (hasWaiters(word))
    {
        if (mCount.compare_exchange_weak(word, withGiven(word, n), std::memory_order_release,
                                         std::memory_order_relaxed))
        {
            mCondition.wakeAll();
            return true;
        }
    }
    return false;
}

void kySemaphore::release(unsigned int n)
{
    if (n == 0)
        return;
    for (;;)
    {
        std::uint64_t word = mCount.load(std::memory_order_relaxed);
        while (!hasWaiters(word))
        {
            if (mCount.compare_exchange_weak(word, withGiven(word, n), std::memory_order_release,
                                             std::memory_order_relaxed))
                return;
        }
        const kyMutexLocker locker(mMutex, true);
        if (giveToWaiters(n))
            return;
    }
}

unsigned int kySemaphore::getNoResources() const { return freeIn(mCount.load(std::memory_order_relaxed)); }

} // namespace ky
