// SPDX-License-Identifier: MIT
#include "filesystem/path_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <array>
#include <shellapi.h>
#include <shlwapi.h>

namespace ky::impl::native
{

bool isRelativePath(const std::string& path) { return PathIsRelativeW(widen(path).c_str()) != 0; }

bool isNetworkPath(const std::string& path) { return PathIsNetworkPathW(widen(path).c_str()) != 0; }

std::string absolutePath(const std::string& path)
{
    std::array<wchar_t, 4096> buffer{};
    const DWORD length =
        GetFullPathNameW(widen(path).c_str(), static_cast<DWORD>(buffer.size()), buffer.data(), nullptr);
    return length < buffer.size() ? narrow({buffer.data(), length}) : std::string();
}

// The name that the shell shows, which is the stored one as a rule; it may be translated or lack its extension.
std::string storedName(const PathComponent& component)
{
    SHFILEINFOW info = {};
    if (SHGetFileInfoW(widen(component.typedPath).c_str(), 0, &info, sizeof info, SHGFI_DISPLAYNAME) == 0)
        return {};
    return narrow(info.szDisplayName);
}

} // namespace ky::impl::native
