// SPDX-License-Identifier: MIT
#include <ky/kyThreadPeriodicalUpdater.h>

#include "concurrency/limited_list.h"
#include "concurrency/wait_limits.h"

#include <ky/kyException.h>

#include <algorithm>

namespace ky
{

namespace
{

constexpr unsigned int toPeriodMs(unsigned int seconds)
{
    return std::clamp(seconds, 1U, impl::waitWithoutLimit / 1000) * 1000;
}

} // namespace

kyThreadPeriodicalUpdater::kyThreadPeriodicalUpdater(unsigned int periodSeconds)
    : mPeriodMs(toPeriodMs(periodSeconds)),
      mStop(false),
      mIsRoundDue(false),
      mNext(mCallbacks.end())
{
    startThread(nullptr);
}

kyThreadPeriodicalUpdater::~kyThreadPeriodicalUpdater()
{
    // In a forked child the thread is gone and may have held the mutex.
    waitThread(-1);
    if (!isFinished())
    {
        const kyMutexLocker locker(mMutex);
        mStop = true;
        mWake.wakeAll();
    }
    waitThread(impl::joinWithoutLimit);
}

void kyThreadPeriodicalUpdater::addCallback(void (*fn)(void*), void* userData)
{
    const kyMutexLocker locker(mMutex);
    impl::appendLimited(mCallbacks, Callback{fn, userData}, mCallbacks.max_size());
    if (mNext == mCallbacks.end())
        --mNext;
    mIsRoundDue = true;
    mWake.wakeAll();
}

void kyThreadPeriodicalUpdater::removeCallback(void (*fn)(void*), void* userData)
{
    const kyMutexLocker locker(mMutex);
    const auto isMeant = [=](const Callback& callback)
    { return callback.function == fn && callback.userData == userData; };
    const auto found = std::find_if(mCallbacks.begin(), mCallbacks.end(), isMeant);
    if (found == mCallbacks.end())
        return;
    if (found == mNext)
        ++mNext;
    mCallbacks.erase(found);
}

void kyThreadPeriodicalUpdater::run()
{
    // Outside the guarded part: a callback that crashes does not leave the mutex locked.
    const kyMutexLocker locker(mMutex);
    exception::ExecGuardedCode(&RunRounds, this);
}

void kyThreadPeriodicalUpdater::RunRounds(void* updater)
{
    auto& self = *static_cast<kyThreadPeriodicalUpdater*>(updater);
    while (!self.mStop)
    {
        // What was registered before the thread came here has found nobody to wake.
        if (!self.mIsRoundDue)
            self.mWake.wait(&self.mMutex, self.mCallbacks.empty() ? impl::waitWithoutLimit : self.mPeriodMs);
        self.callAll();
        self.mIsRoundDue = false;
    }
}

/// A callback may register and remove callbacks, itself included.
void kyThreadPeriodicalUpdater::callAll()
{
    for (mNext = mCallbacks.begin(); mNext != mCallbacks.end();)
    {
        const Callback callback = *mNext;
        ++mNext;
        callback.function(callback.userData);
    }
}

} // namespace ky
