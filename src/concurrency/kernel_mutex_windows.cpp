// SPDX-License-Identifier: MIT
#include "concurrency/kernel_mutex_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

static_assert(noTimeLimit == INFINITE);

struct KernelMutex
{
    HANDLE handle;
};

KernelMutex* createKernelMutex() { return new KernelMutex{CreateMutexW(nullptr, FALSE, nullptr)}; }

void destroy(KernelMutex* mutex) noexcept
{
    if (mutex->handle != nullptr)
        CloseHandle(mutex->handle);
    delete mutex;
}

Locked acquire(KernelMutex& mutex, std::uint32_t limitMs) noexcept
{
    switch (WaitForSingleObject(mutex.handle, limitMs))
    {
    case WAIT_OBJECT_0: return Locked::Yes;
    case WAIT_ABANDONED: return Locked::Abandoned;
    case WAIT_TIMEOUT: return Locked::TimedOut;
    default: return Locked::Failed;
    }
}

void release(KernelMutex& mutex) noexcept { ReleaseMutex(mutex.handle); }

} // namespace ky::impl::native
