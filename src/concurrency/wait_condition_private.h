// SPDX-License-Identifier: MIT
#pragma once

#include "concurrency/event_pair_native.h"
#include "concurrency/sync_native.h"

#include <cstdint>
#include <set>

namespace ky
{

/// What a wait condition is made of. The order of the virtual operations is fixed.
class kyWaitConditionPrivate
{
public:
    kyWaitConditionPrivate() = default;
    virtual ~kyWaitConditionPrivate();
    kyWaitConditionPrivate(const kyWaitConditionPrivate&) = delete;
    kyWaitConditionPrivate& operator=(const kyWaitConditionPrivate&) = delete;

    /// `section`: the caller's lock, entered once. False when the time ended without a wake.
    virtual bool wait(impl::native::RecursiveLock& section, unsigned long timeoutMs) = 0;
    virtual void wakeAll() = 0;
    virtual void wakeOne() = 0;
};

/// On a condition variable of the system.
class kyWaitConditionPrivateVista final : public kyWaitConditionPrivate
{
public:
    kyWaitConditionPrivateVista();
    ~kyWaitConditionPrivateVista() override;
    bool wait(impl::native::RecursiveLock& section, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    impl::native::Owned<impl::native::ConditionVariable> mCondition;
};

/// On two events.
class kyWaitConditionPrivateEvent final : public kyWaitConditionPrivate
{
public:
    kyWaitConditionPrivateEvent();
    ~kyWaitConditionPrivateEvent() override;
    bool wait(impl::native::RecursiveLock& section, unsigned long timeoutMs) override;
    void wakeAll() override;
    void wakeOne() override;

private:
    bool endWait(impl::native::Woken woken);
    std::int64_t waiters();

    std::int64_t mWaiters;
    impl::native::Owned<impl::native::RecursiveLock> mInternalLock; ///< guards mWaiters and mReleased
    impl::native::Owned<impl::native::EventPair> mEvents;
    std::set<std::uint32_t> mReleased; ///< threads that the present broadcast has released
};

namespace impl
{

using WaitConditionFactory = kyWaitConditionPrivate* (*)();

kyWaitConditionPrivate* makeEventWaitCondition();
kyWaitConditionPrivate* makeVistaWaitCondition();

/// The factory of the wait conditions made from now on.
void setWaitConditionFactory(WaitConditionFactory factory) noexcept;
WaitConditionFactory waitConditionFactory() noexcept;

} // namespace impl

} // namespace ky
