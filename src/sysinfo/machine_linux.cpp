// SPDX-License-Identifier: MIT
#include "sysinfo/machine_native.h"

#include "sysinfo/machine_linux.h"

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

std::uint32_t installedMemory(const SystemFiles& files, std::uint64_t& kilobytes)
{
    const std::string folder = "/sys/devices/system/memory";
    const auto managed = memoryInfoBytes(files.read("/proc/meminfo"), "MemTotal");
    // The kernel keeps a part of the memory for itself and leaves it out of its own sum. The blocks in which memory is
    // plugged in count all of it, in units of up to 2 GB, hence the bound.
    const std::uint64_t block = files.number(folder + "/block_size_bytes", 16).value_or(0);
    constexpr std::uint64_t largestBlock = std::uint64_t{64} << 30;
    const std::uint64_t installed = block <= largestBlock ? block * files.countNumbered(folder, "memory") : 0;
    const std::uint64_t known = managed.value_or(0);
    const bool plausible = installed >= known && (known == 0 || installed - known <= known / 2 + 2 * block);
    const std::uint64_t bytes = plausible ? installed : known;
    if (bytes == 0)
        return ENODATA;
    kilobytes = bytes / 1024;
    return 0;
}

std::uint32_t queryInstalledMemory(std::uint64_t& kilobytes) { return installedMemory(SystemFiles(), kilobytes); }

} // namespace ky::impl::native
