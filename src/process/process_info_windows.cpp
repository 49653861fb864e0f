// SPDX-License-Identifier: MIT
#include "process/process_info_native.h"

#include "platform/wide_windows.h"
#include "process/process_windows.h"

#include <psapi.h>
#include <tlhelp32.h>

namespace ky::impl::native
{

namespace
{

/// The entry of the calling process among those that run.
bool findOwnEntry(PROCESSENTRY32W& entry)
{
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
    if (snapshot == INVALID_HANDLE_VALUE)
        return false;
    entry = {};
    entry.dwSize = sizeof(entry);
    bool found = false;
    const DWORD own = GetCurrentProcessId();
    for (BOOL more = Process32FirstW(snapshot, &entry); more && !found;)
    {
        found = entry.th32ProcessID == own;
        if (!found)
            more = Process32NextW(snapshot, &entry);
    }
    CloseHandle(snapshot);
    return found;
}

std::string programOf(HANDLE process)
{
    std::wstring path(0x8000, L'\0');
    DWORD length = static_cast<DWORD>(path.size());
    return QueryFullProcessImageNameW(process, 0, path.data(), &length) ? narrow(path.substr(0, length)) : "";
}

HANDLE handleOf(const Process& process)
{
    return process.handle != noHandle ? asHandle(process.handle) : GetCurrentProcess();
}

} // namespace

bool findCurrentProcess(Process& process)
{
    PROCESSENTRY32W entry;
    if (!findOwnEntry(entry))
        return false;
    process = Process();
    process.id = entry.th32ProcessID;
    return true;
}

bool openParentProcess(Process& process, std::string& program)
{
    PROCESSENTRY32W entry;
    if (!findOwnEntry(entry))
        return false;
    const HANDLE handle = OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, entry.th32ParentProcessID);
    if (handle == nullptr)
        return false;
    process = Process();
    process.handle = asNumber(handle);
    process.id = entry.th32ParentProcessID;
    program = programOf(handle);
    return true;
}

std::uint64_t privateMemory(const Process& process)
{
    PROCESS_MEMORY_COUNTERS counters = {};
    return GetProcessMemoryInfo(handleOf(process), &counters, sizeof(counters)) ? counters.PagefileUsage : 0;
}

bool limitPhysicalMemory(const Process& process, std::uint64_t maxBytes) noexcept
{
    constexpr SIZE_T minBytes = 1024;
    return SetProcessWorkingSetSizeEx(handleOf(process), minBytes, static_cast<SIZE_T>(maxBytes),
                                      QUOTA_LIMITS_HARDWS_MAX_ENABLE) != FALSE;
}

std::vector<std::string> currentEnvironment()
{
    std::vector<std::string> variables;
    wchar_t* const block = GetEnvironmentStringsW();
    for (const wchar_t* entry = block; entry != nullptr && *entry != L'\0';)
    {
        const std::wstring_view text(entry);
        variables.push_back(narrow(text));
        entry += text.size() + 1;
    }
    if (block != nullptr)
        FreeEnvironmentStringsW(block);
    return variables;
}

} // namespace ky::impl::native
