// SPDX-License-Identifier: MIT
#include "diagnostics/debug_info_linux.h"

#include "concurrency/sync_native.h"
#include "diagnostics/libdw_linux.h"
#include "diagnostics/thread_guard_linux.h"
#include "platform/clock_native.h"
#include "platform/process_id_native.h"

#include <atomic>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace ky::impl::native
{

namespace
{

/// What the library takes at once for one line table, and a good deal more.
constexpr std::uintptr_t stackNeeded = 512 * 1024;
/// After this no further frame is looked up.
constexpr std::int64_t timeLimitMs = 1000;

/// Process and thread that read debug information, 0 for none. Guards what follows.
constinit std::atomic<std::uint64_t> sOwner{0};
constinit std::atomic<bool> sBroken{false};
constinit Libdw sLibdw;
constinit LibdwState sLibrary = LibdwState::Unknown;
constinit Dwfl* sSession = nullptr;
constinit std::int64_t sDeadline = 0;

std::uint64_t ownId() noexcept { return currentProcessId() << 32 | currentThreadId(); }

bool isOwner() noexcept { return sOwner.load(std::memory_order_relaxed) == ownId(); }

bool enter() noexcept
{
    std::uint64_t owner = sOwner.load(std::memory_order_relaxed);
    // A forked child may find an owner here that exists in its parent only.
    if (owner != 0 && owner >> 32 == currentProcessId())
        return false;
    return sOwner.compare_exchange_strong(owner, ownId(), std::memory_order_acquire);
}

void leave() noexcept { sOwner.store(0, std::memory_order_release); }

bool hasStack() noexcept
{
    char here = 0;
    const auto address = reinterpret_cast<std::uintptr_t>(&here);
    return tGuard != nullptr && address < tGuard->stackHigh && address > tGuard->stackLow + stackNeeded;
}

int findElf(Dwfl_Module* module, void** user, const char* name, Dwarf_Addr base, char** file, Elf** elf)
{
    return sLibdw.findElf(module, user, name, base, file, elf);
}

/// Debug information that was split off and lies where the system keeps it. The library's own search would also ask
/// servers.
int findDebugFile(Dwfl_Module* module, void**, const char*, Dwarf_Addr, const char*, const char*, GElf_Word,
                  char** name)
{
    const unsigned char* id = nullptr;
    GElf_Addr at = 0;
    const int size = sLibdw.buildId(module, &id, &at);
    if (size < 2)
        return -1;
    FixedText<256> path;
    path << "/usr/lib/debug/.build-id/";
    for (int n = 0; n < size; ++n)
    {
        path.hex(id[n] >> 4U).hex(id[n] & 0xFU);
        if (n == 0)
            path << "/";
    }
    path << std::string_view(".debug\0", 7);
    const int file = ::open(path.view().data(), O_RDONLY | O_CLOEXEC);
    if (file >= 0)
        *name = ::strdup(path.view().data()); // the library frees it, with a file only
    return file;
}

constexpr Dwfl_Callbacks callbacks = {&findElf, &findDebugFile, nullptr, nullptr};

bool beginSession() noexcept
{
    if (sLibrary == LibdwState::Unknown)
        sLibrary = loadLibdw(sLibdw);
    if (sLibrary != LibdwState::Ready)
        return false;
    sDeadline = ticksSinceStartMs() + timeLimitMs;
    sSession = sLibdw.begin(&callbacks);
    if (sSession == nullptr)
        return false;
    // Notes where modules are; opens none.
    if (sLibdw.report(sSession, ::getpid()) == 0 && sLibdw.reportEnd(sSession, nullptr, nullptr) == 0)
        return true;
    sLibdw.end(sSession);
    return false;
}

struct SourceLine
{
    const char* file = nullptr;
    int line = 0;
};

/// Asks unit after unit: Clang writes no table from addresses to units, which the library's own search goes by.
SourceLine lineInUnits(Dwfl_Module* module, std::uintptr_t address) noexcept
{
    SourceLine source;
    Dwarf_Addr bias = 0;
    Dwarf_Die* unit = sLibdw.nextUnit(module, nullptr, &bias);
    while (unit != nullptr && sLibdw.holds(unit, address - bias) <= 0)
        unit = ticksSinceStartMs() > sDeadline ? nullptr : sLibdw.nextUnit(module, unit, &bias);
    Dwarf_Line* const found = unit == nullptr ? nullptr : sLibdw.lineInUnit(unit, address - bias);
    if (found != nullptr && sLibdw.numberOf(found, &source.line) == 0)
        source.file = sLibdw.fileOf(found, nullptr, nullptr);
    return source;
}

SourceLine lineAt(Dwfl_Module* module, std::uintptr_t address) noexcept
{
    Dwfl_Line* const found = sLibdw.lineOf(module, address);
    if (found == nullptr)
        return lineInUnits(module, address);
    SourceLine source;
    source.file = sLibdw.lineInfo(found, nullptr, &source.line, nullptr, nullptr, nullptr);
    return source;
}

} // namespace

bool openDebugInfo() noexcept
{
    if (sBroken || !hasStack() || !enter())
        return false;
    if (beginSession())
        return true;
    leave();
    return false;
}

void closeDebugInfo() noexcept
{
    if (!isOwner())
        return;
    sLibdw.end(sSession);
    leave();
}

void abandonDebugInfo() noexcept
{
    if (!isOwner())
        return;
    sBroken = true;
    leave();
}

const char* readDebugInfo(std::uintptr_t address, FrameText& text) noexcept
{
    if (!isOwner() || ticksSinceStartMs() > sDeadline)
        return nullptr;
    Dwfl_Module* const module = sLibdw.moduleOf(sSession, address);
    if (module == nullptr)
        return nullptr;
    const SourceLine source = lineAt(module, address);
    if (source.file != nullptr && source.line > 0)
    {
        const char* const slash = std::strrchr(source.file, '/');
        text.file << (slash == nullptr ? source.file : slash + 1);
        text.line = static_cast<std::uint64_t>(source.line);
    }
    return sLibdw.nameOf(module, address);
}

} // namespace ky::impl::native
