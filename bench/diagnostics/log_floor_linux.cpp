// SPDX-License-Identifier: MIT
#include "log_floor_native.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ky::bench
{

namespace
{

int descriptor(void* handle) { return static_cast<int>(reinterpret_cast<std::intptr_t>(handle)); }

} // namespace

KernelLock::KernelLock(const std::string& path)
    : mHandle(reinterpret_cast<void*>(
          static_cast<std::intptr_t>(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600))))
{
}

KernelLock::~KernelLock() { close(descriptor(mHandle)); }

void KernelLock::lock() { flock(descriptor(mHandle), LOCK_EX); }

void KernelLock::unlock() { flock(descriptor(mHandle), LOCK_UN); }

void appendBare(const char* path, const char* data, unsigned size)
{
    const int file = open(path, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0666);
    if (write(file, data, size) < 0)
        return;
    close(file);
}

} // namespace ky::bench
