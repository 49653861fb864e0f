// SPDX-License-Identifier: MIT
#include "log_floor_native.h"

#include <windows.h>

namespace ky::bench
{

KernelLock::KernelLock(const std::string&) : mHandle(CreateMutexW(nullptr, FALSE, L"Local\\ky-bench-log")) {}

KernelLock::~KernelLock() { CloseHandle(mHandle); }

void KernelLock::lock() { WaitForSingleObject(mHandle, INFINITE); }

void KernelLock::unlock() { ReleaseMutex(mHandle); }

void appendBare(const char* path, const char* data, unsigned size)
{
    const HANDLE file = CreateFileA(path, FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    WriteFile(file, data, size, &written, nullptr);
    CloseHandle(file);
}

} // namespace ky::bench
