// SPDX-License-Identifier: MIT
#include "sysinfo/program_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <psapi.h>
#include <shellapi.h>

namespace ky::impl::native
{

const std::string_view pathSeparators = R"(\/)";

std::int64_t privateMemory()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    if (!K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)))
        return 0;
    return static_cast<std::int64_t>(counters.PagefileUsage);
}

std::string userName()
{
    wchar_t name[257] = {}; // UNLEN + 1
    DWORD size = static_cast<DWORD>(std::size(name));
    return GetUserNameW(name, &size) ? narrow(name) : std::string();
}

std::string computerName()
{
    // The name of the network protocol is not cut at 15 characters, the older one is.
    for (const COMPUTER_NAME_FORMAT format : {ComputerNamePhysicalDnsHostname, ComputerNamePhysicalNetBIOS})
    {
        wchar_t name[256] = {};
        DWORD size = static_cast<DWORD>(std::size(name));
        if (GetComputerNameExW(format, name, &size) && size > 0)
            return narrow(name);
    }
    return {};
}

std::string programPath()
{
    std::wstring path(MAX_PATH, L'\0');
    for (;;)
    {
        const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length < path.size())
            return narrow(std::wstring_view(path).substr(0, length));
        if (path.size() > 0x10000)
            return {};
        path.resize(path.size() * 2);
    }
}

std::vector<std::string> commandLine()
{
    int count = 0;
    wchar_t** const cut = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> arguments;
    for (int i = 0; cut != nullptr && i < count; ++i)
        arguments.push_back(narrow(cut[i]));
    LocalFree(cut);
    return arguments;
}

} // namespace ky::impl::native
