// SPDX-License-Identifier: MIT
// What a platform owes to the mutex with a time limit.
#pragma once

#include "concurrency/sync_native.h"

namespace ky::impl::native
{

enum class Locked
{
    Yes,
    Abandoned, ///< the caller owns it; the thread that owned it before has ended without giving it up
    TimedOut,
    Failed
};

/// Recursive mutex with a time limit that notices when its owner ends.
struct KernelMutex;
KernelMutex* createKernelMutex();
void destroy(KernelMutex* mutex) noexcept;
Locked acquire(KernelMutex& mutex, std::uint32_t limitMs) noexcept;
/// Nothing happens when the caller is not the owner.
void release(KernelMutex& mutex) noexcept;

} // namespace ky::impl::native
