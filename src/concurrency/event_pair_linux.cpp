// SPDX-License-Identifier: MIT
#include "concurrency/event_pair_native.h"
#include "concurrency/futex_linux.h"

#include <mutex>

namespace ky::impl::native
{

namespace
{

enum Answer : std::uint32_t
{
    None,
    One,
    All
};

struct Waiter
{
    Waiter* next = nullptr;
    std::atomic<std::uint32_t> answer{None};
};

Woken toWoken(std::uint32_t answer) noexcept { return answer == One ? Woken::ByOne : Woken::ByAll; }

} // namespace

/// Waiters stand in a queue, first come first, and get their answer from the signalling thread: a signal cannot be lost
/// by a reset that follows at once.
struct EventPair
{
    std::mutex mutex;
    bool oneSignalled = false;
    bool allSignalled = false;
    Waiter* first = nullptr;
};

EventPair* createEventPair() { return new EventPair; }
void destroy(EventPair* events) noexcept { delete events; }

namespace
{

void append(EventPair& events, Waiter& waiter) noexcept
{
    Waiter** end = &events.first;
    while (*end != nullptr)
        end = &(*end)->next;
    *end = &waiter;
}

void remove(EventPair& events, const Waiter& waiter) noexcept
{
    Waiter** link = &events.first;
    while (*link != &waiter)
        link = &(*link)->next;
    *link = waiter.next;
}

/// With the mutex held: the waiter cannot go away before it has held it, too.
void releaseFirst(EventPair& events, Answer answer) noexcept
{
    Waiter& waiter = *events.first;
    events.first = waiter.next;
    waiter.answer.store(answer, std::memory_order_release);
    futexWake(waiter.answer, 1);
}

void sleepUntilAnswered(const Waiter& waiter, const Deadline& deadline) noexcept
{
    while (waiter.answer.load(std::memory_order_acquire) == None)
    {
        if (futexWait(waiter.answer, None, deadline) == ETIMEDOUT)
            return;
    }
}

} // namespace

void signalOne(EventPair& events) noexcept
{
    const std::lock_guard guard(events.mutex);
    if (events.first != nullptr)
        releaseFirst(events, One);
    else
        events.oneSignalled = true;
}

void signalAll(EventPair& events) noexcept
{
    const std::lock_guard guard(events.mutex);
    events.allSignalled = true;
    while (events.first != nullptr)
        releaseFirst(events, All);
}

void resetAll(EventPair& events) noexcept
{
    const std::lock_guard guard(events.mutex);
    events.allSignalled = false;
}

Woken waitEither(EventPair& events, std::uint32_t limitMs) noexcept
{
    const Deadline deadline(limitMs);
    std::unique_lock guard(events.mutex);
    if (events.oneSignalled)
    {
        events.oneSignalled = false;
        return Woken::ByOne;
    }
    if (events.allSignalled)
        return Woken::ByAll;
    if (limitMs == 0)
        return Woken::TimedOut;

    Waiter self;
    append(events, self);
    guard.unlock();
    sleepUntilAnswered(self, deadline);
    guard.lock();
    const std::uint32_t answer = self.answer.load(std::memory_order_relaxed);
    if (answer != None)
        return toWoken(answer);
    remove(events, self);
    return Woken::TimedOut;
}

} // namespace ky::impl::native
