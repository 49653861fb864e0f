// SPDX-License-Identifier: MIT
// What a platform owes to the wait condition that is made of events.
#pragma once

#include "concurrency/sync_native.h"

namespace ky::impl::native
{

enum class Woken
{
    ByOne,
    ByAll,
    TimedOut,
    Failed
};

/// Two adjacent events. Wake-one resets itself when it has released one thread; wake-all stays signalled until it is
/// reset. A signal releases threads that wait at that moment, whatever happens to the event afterwards.
struct EventPair;
EventPair* createEventPair();
void destroy(EventPair* events) noexcept;
void signalOne(EventPair& events) noexcept;
void signalAll(EventPair& events) noexcept;
void resetAll(EventPair& events) noexcept;

/// Waits for either event; wake-one goes first when both are signalled.
Woken waitEither(EventPair& events, std::uint32_t limitMs) noexcept;

} // namespace ky::impl::native
