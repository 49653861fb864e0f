// SPDX-License-Identifier: MIT
#include "sysinfo/processor_count_native.h"

#include "sysinfo/processor_quota.h"
#include "sysinfo/system_tree_linux.h"

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <sched.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

struct FreeSet
{
    void operator()(cpu_set_t* set) const { CPU_FREE(set); }
};

} // namespace

std::uint64_t processorsInAffinity()
{
    // The kernel refuses a set with less room than it has processors configured.
    for (unsigned room = 1024; room <= 1U << 20; room *= 2)
    {
        const std::unique_ptr<cpu_set_t, FreeSet> set(CPU_ALLOC(room));
        if (set == nullptr)
            break;
        const std::size_t size = CPU_ALLOC_SIZE(room);
        CPU_ZERO_S(size, set.get());
        if (::sched_getaffinity(0, size, set.get()) == 0)
            return static_cast<std::uint64_t>(CPU_COUNT_S(size, set.get()));
        if (errno != EINVAL)
            break;
    }
    const long online = ::sysconf(_SC_NPROCESSORS_ONLN);
    return online > 0 ? static_cast<std::uint64_t>(online) : 0;
}

std::uint64_t processorsInQuota() { return processorQuota(systemTree()); }

bool setVariableIfEmpty(const char* name, const char* value)
{
    const char* const current = std::getenv(name);
    return (current == nullptr || *current == '\0') && ::setenv(name, value, 1) == 0;
}

} // namespace ky::impl::native
