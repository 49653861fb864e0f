// SPDX-License-Identifier: MIT
#include "sysinfo/registry_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

namespace ky::impl::native
{

bool readRegistry(RegistryHive hive, const std::string& key, const std::string& name, RegistryData& data)
{
    const HKEY root = hive == RegistryHive::LocalMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
    HKEY opened = nullptr;
    if (RegOpenKeyExW(root, widen(key).c_str(), 0, KEY_QUERY_VALUE | KEY_WOW64_64KEY, &opened) != ERROR_SUCCESS)
        return false;
    const std::wstring wideName = widen(name);
    DWORD type = REG_NONE;
    LSTATUS result = ERROR_MORE_DATA;
    data.bytes.resize(256);
    // The value may grow between two calls.
    for (int attempt = 0; attempt < 8 && result == ERROR_MORE_DATA; ++attempt)
    {
        DWORD size = static_cast<DWORD>(data.bytes.size());
        result = RegQueryValueExW(opened, wideName.c_str(), nullptr, &type, data.bytes.data(), &size);
        if (result == ERROR_SUCCESS || result == ERROR_MORE_DATA)
            data.bytes.resize(size);
    }
    RegCloseKey(opened);
    data.type = type;
    return result == ERROR_SUCCESS;
}

} // namespace ky::impl::native
