// SPDX-License-Identifier: MIT
#include <ky/kyMutex.h>

#include "concurrency/early_mutex.h"
#include "concurrency/kernel_mutex_native.h"
#include "concurrency/sync_native.h"

namespace ky
{

using namespace impl;

kyMutex::kyMutex() : mLock(native::createRecursiveLock()) { checkEarlyMutex(); }

kyMutex::~kyMutex()
{
    checkFork();
    native::destroy(mLock);
}

void kyMutex::lock() { native::enter(*mLock); }

void kyMutex::unlock() { native::leave(*mLock); }

bool kyMutex::tryLock() { return native::tryEnter(*mLock); }

void* kyMutex::getMutexData() const { return mLock; }

kyMutex2::kyMutex2() : mMutex(native::createKernelMutex()) { checkEarlyMutex(); }

kyMutex2::~kyMutex2()
{
    checkFork();
    native::destroy(mMutex);
}

void kyMutex2::lock() { native::acquire(*mMutex, native::noTimeLimit); }

void kyMutex2::unlock() { native::release(*mMutex); }

bool kyMutex2::tryLock(unsigned int timeoutMs)
{
    const native::Locked result = native::acquire(*mMutex, timeoutMs);
    // An abandoned mutex has been obtained, but the answer is no: the caller, who will not unlock, must not keep it.
    if (result == native::Locked::Abandoned)
        native::release(*mMutex);
    return result == native::Locked::Yes;
}

} // namespace ky
