// SPDX-License-Identifier: MIT
#include "concurrency/kernel_mutex_linux.h"

#include "concurrency/futex_linux.h"

namespace ky::impl::native
{

KernelMutex* createKernelMutex() { return new KernelMutex; }

void destroy(KernelMutex* mutex) noexcept
{
    // Still owned by another thread it stays linked into that thread's list of robust mutexes: rather lost than freed.
    const Locked state = acquire(*mutex, 0);
    if (state != Locked::Yes && state != Locked::Abandoned)
        return;
    while (mutex->isMine())
        release(*mutex);
    pthread_mutex_destroy(&mutex->mutex);
    delete mutex;
}

namespace
{

int take(KernelMutex& mutex, std::uint32_t limitMs) noexcept
{
    const int result = pthread_mutex_trylock(&mutex.mutex);
    if (result != EBUSY || limitMs == 0)
        return result;
    if (limitMs == noTimeLimit)
        return pthread_mutex_lock(&mutex.mutex);
    return pthread_mutex_clocklock(&mutex.mutex, CLOCK_MONOTONIC, Deadline(limitMs).time());
}

} // namespace

Locked acquire(KernelMutex& mutex, std::uint32_t limitMs) noexcept
{
    if (mutex.isMine())
    {
        ++mutex.depth;
        return Locked::Yes;
    }
    const int result = take(mutex, limitMs);
    if (result == EOWNERDEAD)
        pthread_mutex_consistent(&mutex.mutex);
    else if (result != 0)
        return result == EBUSY || result == ETIMEDOUT ? Locked::TimedOut : Locked::Failed;
    mutex.owner = threadNumber();
    mutex.depth = 1;
    return result == 0 ? Locked::Yes : Locked::Abandoned;
}

void release(KernelMutex& mutex) noexcept
{
    if (!mutex.isMine() || --mutex.depth != 0)
        return;
    mutex.owner = 0;
    pthread_mutex_unlock(&mutex.mutex);
}

} // namespace ky::impl::native
