// SPDX-License-Identifier: MIT
#include "platform/wide_windows.h"

#include "platform/win32.h"

#include <algorithm>

namespace ky::impl::native
{

namespace
{

// Folders are limited to MAX_PATH - 12 characters without the prefix.
constexpr std::size_t longPathThreshold = 248;

bool isDriveAbsolute(std::wstring_view path) { return path.size() >= 3 && path[1] == L':' && path[2] == L'\\'; }

/// The prefixed form is passed to the file system without clean-up, so "." and ".." must be resolved before.
std::wstring fullPath(const std::wstring& path)
{
    const DWORD needed = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (needed == 0)
        return path;
    std::wstring full(needed, L'\0');
    const DWORD length = GetFullPathNameW(path.c_str(), needed, full.data(), nullptr);
    if (length == 0 || length >= needed)
        return path;
    full.resize(length);
    return full;
}

bool isPrefixed(const std::wstring& path) { return path.rfind(L"\\\\?\\", 0) == 0 || path.rfind(L"\\\\.\\", 0) == 0; }

std::wstring withPrefix(const std::wstring& path)
{
    if (isPrefixed(path))
        return path;
    if (isDriveAbsolute(path))
        return L"\\\\?\\" + fullPath(path);
    if (path.rfind(L"\\\\", 0) == 0)
        return L"\\\\?\\UNC\\" + fullPath(path).substr(2);
    return path;
}

std::wstring widenSeparators(std::string_view utf8)
{
    std::wstring path = widen(utf8);
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return path;
}

} // namespace

std::wstring widen(std::string_view utf8)
{
    if (utf8.empty())
        return {};
    const int size = static_cast<int>(std::min<std::size_t>(utf8.size(), 0x7fffffff));
    const int needed = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(std::max(needed, 0)), L'\0');
    if (needed > 0)
        MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), needed);
    return wide;
}

std::string narrow(std::wstring_view wide)
{
    if (wide.empty())
        return {};
    const int size = static_cast<int>(std::min<std::size_t>(wide.size(), 0x7fffffff));
    const int needed = WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(std::max(needed, 0)), '\0');
    if (needed > 0)
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, utf8.data(), needed, nullptr, nullptr);
    return utf8;
}

std::wstring widePath(std::string_view utf8)
{
    std::wstring path = widenSeparators(utf8);
    return path.size() < longPathThreshold ? path : withPrefix(path);
}

std::wstring exactPath(std::string_view utf8)
{
    std::wstring path = withPrefix(fullPath(widenSeparators(utf8)));
    while (!path.empty() && path.back() == L'\\')
        path.pop_back();
    return path;
}

} // namespace ky::impl::native
