// SPDX-License-Identifier: MIT
#include "diagnostics/log_file_native.h"

#include "platform/wide_windows.h"
#include "platform/win32.h"

#include <algorithm>
#include <utility>

namespace ky::impl::native
{

namespace
{

constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

HANDLE toHandle(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

} // namespace

PathKind pathKind(const std::string& pathUtf8)
{
    const DWORD attributes = GetFileAttributesW(widePath(pathUtf8).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
    {
        if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
            return PathKind::Folder;
        return (attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? PathKind::Other : PathKind::File;
    }
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME;
    return missing ? PathKind::Nothing : PathKind::Unknown;
}

AppendFile::AppendFile(const std::string& pathUtf8)
{
    const std::wstring path = widePath(pathUtf8);
    // Without FILE_WRITE_DATA every write is an atomic append at the current end.
    const DWORD append = FILE_APPEND_DATA | FILE_READ_ATTRIBUTES | SYNCHRONIZE;
    for (const DWORD access : {append | FILE_READ_DATA, append})
    {
        mHandle = reinterpret_cast<std::intptr_t>(
            CreateFileW(path.c_str(), access, shareAll, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        if (isOpen() || GetLastError() != ERROR_ACCESS_DENIED)
            return;
    }
}

std::int64_t AppendFile::end() const
{
    LARGE_INTEGER size = {};
    return GetFileSizeEx(toHandle(mHandle), &size) != 0 ? size.QuadPart : -1;
}

std::size_t AppendFile::write(const char* data, std::size_t size)
{
    std::size_t total = 0;
    DWORD count = 1;
    while (total < size && count != 0)
    {
        const DWORD wanted = static_cast<DWORD>(std::min<std::size_t>(size - total, 0x7ffff000));
        if (WriteFile(toHandle(mHandle), data + total, wanted, &count, nullptr) == 0)
            return total;
        total += count;
    }
    return total;
}

bool AppendFile::readAt(std::int64_t position, char* data, std::size_t size) const
{
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    at.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD count = 0;
    return ReadFile(toHandle(mHandle), data, static_cast<DWORD>(size), &count, &at) != 0 && count == size;
}

void AppendFile::close()
{
    if (isOpen())
        CloseHandle(toHandle(std::exchange(mHandle, invalidHandle)));
}

bool cutFile(const std::string& pathUtf8, std::int64_t size)
{
    const HANDLE file = CreateFileW(widePath(pathUtf8).c_str(), GENERIC_WRITE, shareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    const bool ok = SetFilePointerEx(file, end, nullptr, FILE_BEGIN) != 0 && SetEndOfFile(file) != 0;
    CloseHandle(file);
    return ok;
}

} // namespace ky::impl::native
