// SPDX-License-Identifier: MIT
#include "sysinfo/machine_native.h"

#include "sysinfo/memory_blocks.h"
#include "sysinfo/system_tree_linux.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace ky::impl::native
{

std::size_t readEnvironment(const char* name, char* buffer, std::size_t size)
{
    const char* const value = std::getenv(name);
    if (value == nullptr)
        return 0;
    const std::size_t length = std::strlen(value);
    std::memcpy(buffer, value, std::min(length + 1, size));
    return length;
}

std::uint32_t queryInstalledMemory(std::uint64_t& kilobytes)
{
    kilobytes = installedMemory(systemTree()) / 1024;
    return kilobytes == 0 ? ENODATA : 0;
}

} // namespace ky::impl::native
