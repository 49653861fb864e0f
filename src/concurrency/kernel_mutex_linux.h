// SPDX-License-Identifier: MIT
// Recursive mutex that the system hands on when its owner thread ends. For *_linux.cpp files only.
#pragma once

#include "concurrency/kernel_mutex_native.h"

#include <atomic>
#include <cstdint>
#include <pthread.h>

namespace ky::impl::native
{

/// Number of the calling thread. Unlike pthread_self() it never comes back with another thread.
inline std::uint64_t threadNumber() noexcept
{
    static std::atomic<std::uint64_t> last{0};
    thread_local const std::uint64_t number = ++last;
    return number;
}

/// All of it is atomic because the child of a fork starts it anew, whatever another thread was doing to it.
struct KernelMutex
{
    KernelMutex() noexcept { init(); }

    /// Makes the mutex free whatever it was.
    void init() noexcept
    {
        pthread_mutexattr_t kind;
        pthread_mutexattr_init(&kind);
        pthread_mutexattr_setrobust(&kind, PTHREAD_MUTEX_ROBUST);
        pthread_mutex_init(&mutex, &kind);
        pthread_mutexattr_destroy(&kind);
        owner = 0;
        depth = 0;
    }

    bool isMine() const noexcept { return owner.load(std::memory_order_relaxed) == threadNumber(); }

    pthread_mutex_t mutex;
    std::atomic<std::uint64_t> owner{0};
    std::atomic<std::uint32_t> depth{0}; ///< levels of ownership, changed by the owner alone
};

} // namespace ky::impl::native
