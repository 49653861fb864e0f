// SPDX-License-Identifier: MIT
#include "sysinfo/processor_count_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <bit>

namespace ky::impl::native
{

std::uint64_t processorsInAffinity()
{
    DWORD_PTR ours = 0;
    DWORD_PTR all = 0;
    // Masks cover one group of 64 processors. They are 0 for a process with threads in several groups.
    if (!GetProcessAffinityMask(GetCurrentProcess(), &ours, &all) || ours == 0 ||
        (ours == all && GetActiveProcessorGroupCount() > 1))
        return GetActiveProcessorCount(ALL_PROCESSOR_GROUPS);
    return static_cast<std::uint64_t>(std::popcount(static_cast<std::uint64_t>(ours)));
}

std::uint64_t processorsInQuota() { return 0; }

bool setVariableIfEmpty(const char* name, const char* value)
{
    const std::wstring wideName = widen(name);
    wchar_t current[2];
    return GetEnvironmentVariableW(wideName.c_str(), current, 2) == 0 &&
           SetEnvironmentVariableW(wideName.c_str(), widen(value).c_str()) != 0;
}

} // namespace ky::impl::native
