// SPDX-License-Identifier: MIT
#include "concurrency/wait_condition_private.h"

namespace ky
{

using namespace impl;
using native::Inside;
using native::Woken;

namespace
{

/// `unsigned long` is wider than the systems' limits on some platforms.
std::uint32_t toLimit(unsigned long timeoutMs) noexcept
{
    return timeoutMs < native::noTimeLimit ? static_cast<std::uint32_t>(timeoutMs) : native::noTimeLimit;
}

/// Leaves a lock for a scope.
class Outside
{
public:
    explicit Outside(native::RecursiveLock& lock) noexcept : mLock(lock) { native::leave(mLock); }
    ~Outside() { native::enter(mLock); }
    Outside(const Outside&) = delete;
    Outside& operator=(const Outside&) = delete;

private:
    native::RecursiveLock& mLock;
};

} // namespace

kyWaitConditionPrivate::~kyWaitConditionPrivate() = default;

kyWaitConditionPrivateVista::kyWaitConditionPrivateVista() : mCondition(native::createConditionVariable()) {}

kyWaitConditionPrivateVista::~kyWaitConditionPrivateVista() = default;

bool kyWaitConditionPrivateVista::wait(native::RecursiveLock& section, unsigned long timeoutMs)
{
    return native::sleep(*mCondition, section, toLimit(timeoutMs));
}

void kyWaitConditionPrivateVista::wakeAll() { native::wakeAll(*mCondition); }

void kyWaitConditionPrivateVista::wakeOne() { native::wakeOne(*mCondition); }

kyWaitConditionPrivateEvent::kyWaitConditionPrivateEvent()
    : mWaiters(0),
      mInternalLock(native::createRecursiveLock()),
      mEvents(native::createEventPair())
{
}

kyWaitConditionPrivateEvent::~kyWaitConditionPrivateEvent() = default;

bool kyWaitConditionPrivateEvent::wait(native::RecursiveLock& section, unsigned long timeoutMs)
{
    {
        const Inside inside(*mInternalLock);
        ++mWaiters;
    }
    const Outside outside(section);
    const Woken woken = native::waitEither(*mEvents, toLimit(timeoutMs));
    if (endWait(woken))
        native::resetAll(*mEvents);
    // A failed wait counts as a wake: callers loop on their own predicate.
    return woken != Woken::TimedOut;
}

/// Whether the broadcast has come to its end and its event is to be reset: when it has released every waiter, or finds
/// a thread again that it had released before. A broadcast that others still wait for stays signalled.
bool kyWaitConditionPrivateEvent::endWait(Woken woken)
{
    const Inside inside(*mInternalLock);
    --mWaiters;
    if (woken != Woken::ByAll)
        return woken == Woken::ByOne;
    const bool isNew = mReleased.insert(native::currentThreadId()).second;
    if (isNew && mWaiters > 0)
        return false;
    mReleased.clear();
    return true;
}

std::int64_t kyWaitConditionPrivateEvent::waiters()
{
    const Inside inside(*mInternalLock);
    return mWaiters;
}

void kyWaitConditionPrivateEvent::wakeOne()
{
    const std::int64_t count = waiters();
    native::resetAll(*mEvents);
    if (count != 0)
        native::signalOne(*mEvents);
}

void kyWaitConditionPrivateEvent::wakeAll()
{
    std::int64_t count = 0;
    {
        const Inside inside(*mInternalLock);
        mReleased.clear();
        count = mWaiters;
    }
    if (count != 0)
        native::signalAll(*mEvents);
}

namespace impl
{

kyWaitConditionPrivate* makeEventWaitCondition() { return new kyWaitConditionPrivateEvent; }

kyWaitConditionPrivate* makeVistaWaitCondition() { return new kyWaitConditionPrivateVista; }

} // namespace impl

} // namespace ky
