// SPDX-License-Identifier: MIT
// Recursive mutex that the system hands on when its owner thread ends. For *_linux.cpp files only.
#pragma once

#include "concurrency/sync_native.h"

#include <pthread.h>

namespace ky::impl::native
{

struct KernelMutex
{
    KernelMutex() noexcept { init(); }

    /// Makes the mutex free whatever it was: for the child of a fork, where no other thread is left to own it.
    void init() noexcept
    {
        pthread_mutexattr_t kind;
        pthread_mutexattr_init(&kind);
        pthread_mutexattr_settype(&kind, PTHREAD_MUTEX_RECURSIVE);
        pthread_mutexattr_setrobust(&kind, PTHREAD_MUTEX_ROBUST);
        pthread_mutex_init(&mutex, &kind);
        pthread_mutexattr_destroy(&kind);
    }

    pthread_mutex_t mutex;
};

} // namespace ky::impl::native
