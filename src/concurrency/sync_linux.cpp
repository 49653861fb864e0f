// SPDX-License-Identifier: MIT
#include "concurrency/futex_linux.h"
#include "concurrency/sync_native.h"

#include "platform/compiler.h"

namespace ky::impl::native
{

namespace
{

enum LockState : std::uint32_t
{
    Free = 0,
    Taken = 1,
    TakenWithSleepers = 2
};

/// Looks at the lock before a thread goes to sleep, the pauses between them doubling: about the cost of one sleep and
/// wake. Rare looks leave the lock's memory with the processor of the owner.
constexpr int spinLooks = 6;

/// Its address names the calling thread, also in a child that the thread forks.
thread_local constinit char tSelf KY_STATIC_TLS = 0;

} // namespace

/// `depth` counts the levels beyond the first and belongs to the owner.
struct RecursiveLock
{
    std::atomic<std::uint32_t> state{Free};
    std::uint32_t depth = 0;
    std::atomic<const char*> owner{};
};

RecursiveLock* createRecursiveLock() { return new RecursiveLock; }
void destroy(RecursiveLock* lock) noexcept { delete lock; }

namespace
{

bool take(RecursiveLock& lock) noexcept
{
    std::uint32_t expected = Free;
    return lock.state.compare_exchange_strong(expected, Taken, std::memory_order_acquire, std::memory_order_relaxed);
}

/// Whoever has slept cannot know whether others still do: it takes the lock as one with sleepers.
void takeAsleep(RecursiveLock& lock) noexcept
{
    const Deadline never(noTimeLimit);
    while (lock.state.exchange(TakenWithSleepers, std::memory_order_acquire) != Free)
        futexWait(lock.state, TakenWithSleepers, never);
}

KY_NOINLINE void takeSlowly(RecursiveLock& lock) noexcept
{
    for (int look = 0; look < spinLooks; ++look)
    {
        for (int pauses = 1 << look; pauses > 0; --pauses)
            KY_SPIN_PAUSE();
        const std::uint32_t state = lock.state.load(std::memory_order_relaxed);
        if (state == Free && take(lock))
            return;
        if (state == TakenWithSleepers)
            break;
    }
    takeAsleep(lock);
}

} // namespace

void enter(RecursiveLock& lock) noexcept
{
    const char* const self = &tSelf;
    if (lock.owner.load(std::memory_order_relaxed) == self)
    {
        ++lock.depth;
        return;
    }
    if (KY_UNLIKELY(!take(lock)))
        takeSlowly(lock);
    lock.owner.store(self, std::memory_order_relaxed);
}

bool tryEnter(RecursiveLock& lock) noexcept
{
    const char* const self = &tSelf;
    if (lock.owner.load(std::memory_order_relaxed) == self)
    {
        ++lock.depth;
        return true;
    }
    if (!take(lock))
        return false;
    lock.owner.store(self, std::memory_order_relaxed);
    return true;
}

void leave(RecursiveLock& lock) noexcept
{
    if (lock.depth != 0)
    {
        --lock.depth;
        return;
    }
    lock.owner.store(nullptr, std::memory_order_relaxed);
    if (lock.state.exchange(Free, std::memory_order_release) == TakenWithSleepers)
        futexWake(lock.state, 1);
}

bool isInside(const RecursiveLock& lock) noexcept { return lock.owner.load(std::memory_order_relaxed) == &tSelf; }

/// A sleeper waits for a change of `sequence`. Wakers that change the predicate under the lock see every sleeper
/// counted that read the predicate before, because sleepers count themselves under the lock.
struct ConditionVariable
{
    std::atomic<std::uint32_t> sequence{0};
    std::atomic<std::uint32_t> sleepers{0};
};

bool findConditionVariables() noexcept { return true; }
ConditionVariable* createConditionVariable() { return new ConditionVariable; }
void destroy(ConditionVariable* condition) noexcept { delete condition; }

bool sleep(ConditionVariable& condition, RecursiveLock& lock, std::uint32_t limitMs) noexcept
{
    const Deadline deadline(limitMs);
    condition.sleepers.fetch_add(1, std::memory_order_relaxed);
    const std::uint32_t seen = condition.sequence.load(std::memory_order_relaxed);
    leave(lock);
    int result = EINTR;
    while (result == EINTR)
        result = futexWait(condition.sequence, seen, deadline);
    const bool woken = result != ETIMEDOUT || condition.sequence.load(std::memory_order_relaxed) != seen;
    condition.sleepers.fetch_sub(1, std::memory_order_relaxed);
    // The waker may hold the lock for a while yet: spinning now would only keep it from its processor.
    if (!take(lock))
        takeAsleep(lock);
    lock.owner.store(&tSelf, std::memory_order_relaxed);
    return woken;
}

namespace
{

void wake(ConditionVariable& condition, int count) noexcept
{
    if (condition.sleepers.load(std::memory_order_relaxed) == 0)
        return;
    condition.sequence.fetch_add(1, std::memory_order_relaxed);
    futexWake(condition.sequence, count);
}

} // namespace

void wakeOne(ConditionVariable& condition) noexcept { wake(condition, 1); }
void wakeAll(ConditionVariable& condition) noexcept { wake(condition, INT_MAX); }

std::uint32_t currentThreadId() noexcept { return static_cast<std::uint32_t>(::gettid()); }

} // namespace ky::impl::native
