// SPDX-License-Identifier: MIT
#include "concurrency/event_pair_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

struct EventPair
{
    HANDLE handles[2]; // wake-one, wake-all
};

EventPair* createEventPair()
{
    auto* const events = new EventPair{};
    events->handles[0] = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    events->handles[1] = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    return events;
}

void destroy(EventPair* events) noexcept
{
    for (const HANDLE handle : events->handles)
    {
        if (handle != nullptr)
            CloseHandle(handle);
    }
    delete events;
}

void signalOne(EventPair& events) noexcept { SetEvent(events.handles[0]); }
void signalAll(EventPair& events) noexcept { SetEvent(events.handles[1]); }
void resetAll(EventPair& events) noexcept { ResetEvent(events.handles[1]); }

Woken waitEither(EventPair& events, std::uint32_t limitMs) noexcept
{
    static_assert(noTimeLimit == INFINITE);
    switch (WaitForMultipleObjects(2, events.handles, FALSE, limitMs))
    {
    case WAIT_OBJECT_0: return Woken::ByOne;
    case WAIT_OBJECT_0 + 1: return Woken::ByAll;
    case WAIT_TIMEOUT: return Woken::TimedOut;
    default: return Woken::Failed;
    }
}

} // namespace ky::impl::native
