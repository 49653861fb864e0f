// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace ky::bench
{

/// Keeps threads and processes apart as the library's named mutex does in the kernel, with nothing around it.
class KernelLock
{
public:
    explicit KernelLock(const std::string& path);
    ~KernelLock();
    KernelLock(const KernelLock&) = delete;
    KernelLock& operator=(const KernelLock&) = delete;

    void lock();
    void unlock();

private:
    void* mHandle;
};

/// Opens, appends and closes: the system calls of one line and nothing else.
void appendBare(const char* path, const char* data, unsigned size);

} // namespace ky::bench
