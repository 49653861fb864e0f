// SPDX-License-Identifier: MIT
#include "sysinfo/machine_native.h"

#include "platform/win32.h"

namespace ky::impl::native
{

std::size_t readEnvironment(const char* name, char* buffer, std::size_t size)
{
    return GetEnvironmentVariableA(name, buffer, static_cast<DWORD>(size));
}

std::uint32_t queryInstalledMemory(std::uint64_t& kilobytes)
{
    ULONGLONG value = 0;
    if (!GetPhysicallyInstalledSystemMemory(&value))
        return GetLastError();
    kilobytes = value;
    return 0;
}

} // namespace ky::impl::native
