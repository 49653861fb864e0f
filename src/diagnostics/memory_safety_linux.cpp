// SPDX-License-Identifier: MIT
#include "diagnostics/memory_safety_linux.h"

#include <algorithm>
#include <atomic>
#include <dlfcn.h>
#include <iterator>
#include <link.h>

namespace ky::impl::native
{

namespace
{

struct Range
{
    std::uintptr_t low = 0;
    std::uintptr_t high = 0;
};

/// Modules of malloc() and free(), of operator new, and of the run-time linker.
constexpr const char* functions[] = {"malloc", "free", "_Znwm", "_ZdlPv", "__tls_get_addr"};
Range sRanges[std::size(functions)];
std::atomic<bool> sLocated{false};

struct Search
{
    std::uintptr_t address;
    Range found;
};

int findModule(dl_phdr_info* module, std::size_t, void* argument)
{
    Search& search = *static_cast<Search*>(argument);
    Range range{UINTPTR_MAX, 0};
    for (int i = 0; i < module->dlpi_phnum; ++i)
    {
        const ElfW(Phdr)& part = module->dlpi_phdr[i];
        if (part.p_type != PT_LOAD)
            continue;
        range.low = std::min<std::uintptr_t>(range.low, module->dlpi_addr + part.p_vaddr);
        range.high = std::max<std::uintptr_t>(range.high, module->dlpi_addr + part.p_vaddr + part.p_memsz);
    }
    if (search.address < range.low || search.address >= range.high)
        return 0;
    search.found = range;
    return 1;
}

bool mayHoldLocks(std::uintptr_t address) noexcept
{
    return std::any_of(std::begin(sRanges), std::end(sRanges),
                       [&](const Range& range) { return address >= range.low && address < range.high; });
}

} // namespace

void locateAllocator() noexcept
{
    if (sLocated.load(std::memory_order_acquire))
        return;
    bool all = true;
    for (std::size_t i = 0; i < std::size(functions); ++i)
    {
        Search search{reinterpret_cast<std::uintptr_t>(dlsym(RTLD_DEFAULT, functions[i])), {}};
        all = all && search.address != 0 && dl_iterate_phdr(&findModule, &search) != 0;
        sRanges[i] = search.found;
    }
    sLocated.store(all, std::memory_order_release);
}

bool isMemorySafe(const WalkedCall& call) noexcept
{
    if (!call.isWhole || !sLocated.load(std::memory_order_acquire))
        return false;
    // A function without a frame calls nobody: it can have taken no lock. The C library's string functions are such.
    for (std::size_t i = call.startsFrameless ? 1 : 0; i < call.count; ++i)
    {
        if (mayHoldLocks(call.frames.at[i]))
            return false;
    }
    return true;
}

} // namespace ky::impl::native
