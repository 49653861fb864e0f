// SPDX-License-Identifier: MIT
#include "concurrency/named_mutex_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

struct NamedMutex
{
    HANDLE handle;
};

NamedMutex* openNamedMutex(const std::string& name, ErrorCode& error)
{
    const std::wstring wideName = widen(name);
    auto* const mutex = new NamedMutex{CreateMutexW(nullptr, FALSE, wideName.c_str())};
    if (mutex->handle != nullptr)
        return mutex;
    error = static_cast<ErrorCode>(GetLastError());
    delete mutex;
    return nullptr;
}

void closeNamedMutex(NamedMutex* mutex) noexcept
{
    CloseHandle(mutex->handle);
    delete mutex;
}

void acquire(NamedMutex& mutex) noexcept { WaitForSingleObject(mutex.handle, INFINITE); }

void release(NamedMutex& mutex) noexcept { ReleaseMutex(mutex.handle); }

} // namespace ky::impl::native
