// SPDX-License-Identifier: MIT
#include "sysinfo/memory_blocks.h"

#include "sysinfo/system_text.h"

#include <algorithm>

namespace ky::impl
{

namespace
{

constexpr char folder[] = "/sys/devices/system/memory";
constexpr std::string_view blockPrefix = "memory";

bool isBlock(const std::string& name)
{
    return name.compare(0, blockPrefix.size(), blockPrefix) == 0 &&
           parseNumber(std::string_view(name).substr(blockPrefix.size()), 10);
}

} // namespace

std::uint64_t installedMemory(const SystemTree& tree)
{
    // The kernel keeps a part of the memory for itself and leaves it out of its own sum. The blocks in which memory is
    // plugged in count all of it, in units of at most 2 GB or so.
    constexpr std::uint64_t largestBlock = std::uint64_t{64} << 30;
    const std::uint64_t managed = memoryInfoBytes(tree.read("/proc/meminfo"), "MemTotal").value_or(0);
    const std::uint64_t block = parseNumber(tree.read(std::string(folder) + "/block_size_bytes"), 16).value_or(0);
    if (block == 0 || block > largestBlock)
        return managed;
    const std::vector<std::string> names = tree.list(folder);
    const std::uint64_t plugged =
        block * static_cast<std::uint64_t>(std::count_if(names.begin(), names.end(), isBlock));
    const bool isPlausible = plugged >= managed && (managed == 0 || plugged - managed <= managed / 2 + 2 * block);
    return isPlausible ? plugged : managed;
}

} // namespace ky::impl
