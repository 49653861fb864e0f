// SPDX-License-Identifier: MIT
#include "diagnostics/crash_output_native.h"

#include "platform/win32.h"

#include <atomic>

namespace ky::impl::native
{

namespace
{

constexpr DWORD lifeLimitMs = 1000;

/// Counts beginnings; the watch of an older one lets go.
std::atomic<unsigned> sLimits{0};

DWORD WINAPI endLater(void* limit)
{
    Sleep(lifeLimitMs);
    if (sLimits == reinterpret_cast<std::uintptr_t>(limit))
        TerminateProcess(GetCurrentProcess(), 3);
    return 0;
}

} // namespace

void printDirectly(std::string_view text) noexcept
{
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
}

void pauseBriefly() noexcept { Sleep(1); }

void beginLifeLimit(int) noexcept
{
    const std::uintptr_t limit = ++sLimits;
    const HANDLE thread = CreateThread(nullptr, 0, &endLater, reinterpret_cast<void*>(limit), 0, nullptr);
    if (thread != nullptr)
        CloseHandle(thread);
}

void endLifeLimit() noexcept { ++sLimits; }

} // namespace ky::impl::native
