// SPDX-License-Identifier: MIT
#pragma once

/// \file
/// Condition variable for use with kyMutex.

#include <ky/kyExport.h>

namespace ky
{

class kyMutex;
class kyWaitConditionPrivate;

/// Lets threads that hold a kyMutex sleep until another thread has changed what they wait for.
///
/// Wakes may be spurious: wait in a loop on a predicate that is guarded by the mutex. Wakers should hold the mutex
/// while they change the predicate. All functions may be called from any thread at any time; the destructor only when
/// nobody waits any more. Constructed before full initialization of the library it writes the CRITICAL message
/// "WaitCondition created before full init of kySystem" and works regardless, on the slower implementation made of
/// events.
class KY_API kyWaitCondition
{
public:
    kyWaitCondition();
    virtual ~kyWaitCondition();
    kyWaitCondition(const kyWaitCondition&) = delete;
    kyWaitCondition& operator=(const kyWaitCondition&) = delete;

    /// Releases `m`, waits until woken or for `timeoutMs` milliseconds, and locks `m` again before it returns.
    /// 0xFFFFFFFF (and above): without limit. The caller must hold `m` exactly once; `m` is not owned.
    /// False when the time ended without a wake; true otherwise.
    bool wait(kyMutex* m, unsigned long timeoutMs);

    /// Wakes one waiting thread, if there is one.
    void wakeOne();

    /// Wakes all threads that wait now.
    void wakeAll();

    /// Selects the implementation of the wait conditions made from now on: the system's own condition variables where
    /// it has them, events otherwise. Earlier wait conditions keep theirs. Called by the full initialization of the
    /// library.
    static void FindBestImplementation();

private:
    kyWaitConditionPrivate* mImplementation; ///< owned
};

} // namespace ky
